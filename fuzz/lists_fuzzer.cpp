// Parameter lists from any bytes: copied, searched, given to every reader of options, released.
#include <string>

#include "fuzz.h"
#include "kelencoder/kelencoder.h"
#include "kelscale/kelfilter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    static const char* const kNames[] = {"quality", "width", "height", "type", "", "Width"};
    fuzz::Input input(pData, nSize);
    std::vector<tagKelParameterItem> items(input.Byte() % 8);
    for (tagKelParameterItem& item : items) {
        const int nName = input.Byte() % 8;
        std::string strName = nName < 6 ? kNames[nName] : std::string(input.Byte(), 'x');
        item.strName = CVamString(strName.c_str());
        unsigned long long nValue = 0;
        for (int k = 0; k < 64; k += 8) {
            nValue |= static_cast<unsigned long long>(input.Byte()) << k;
        }
        item.varValue.Set(input.Byte() % 16, nValue);
    }
    tagKelParameters params = {static_cast<unsigned int>(items.size()), items.data()}, copy;
    InitParameters(copy);
    fuzz::Require(CopyParameters(&params, &copy) == 1 && copy.nCount == params.nCount, "the copy");
    for (const char* pszName : kNames) {
        CVamVariant* pFound = GetParameter(copy, pszName);
        CVamVariant* pOriginal = GetParameter(params, pszName);
        fuzz::Require((pFound == nullptr) == (pOriginal == nullptr), "a name is lost");
        fuzz::Require(
            pFound == nullptr || (pFound != pOriginal && pFound->m_Value == pOriginal->m_Value),
            "a value is lost");
    }
    CKelImageFilterScale filter;
    filter.SetParameters(&copy);
    filter.SetParameters(&params);  // the first copy is released
    CKelJpegEncoder encoder;
    encoder.SetParameters(&copy);
    DestroyParameters(copy);
    const int nWidth = filter.GetScaleWidth(17), nHeight = filter.GetScaleHeight(23);
    filter.GetScaleType();
    CKelImage source, target;
    source.Create(17, 23, 24);
    // Sizes of 0 and below are refused; large ones are the host's to bound.
    if (nWidth <= fuzz::kMaxSide && nHeight <= fuzz::kMaxSide) {
        const KelResult nResult = filter.Apply(&source, &target);
        fuzz::Require(nResult == (nWidth > 0 && nHeight > 0 ? KEL_OK : KEL_ERR_PARAM), "Apply");
        fuzz::CheckImage(target);
    }
    CVamArchiveMemory archive;
    fuzz::CheckResult(encoder.Do(&archive, &source));
    return 0;
}
