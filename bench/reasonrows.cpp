// Parts of other rows alone. They show what a row cannot save where it stays over its reach.
#include <platform/vamarchivememory.h>

#include <cstring>
#include <memory>
#include <vector>

#include "machinelimits.h"

namespace bench {

namespace {

// The calls that the library makes of a stream.
class RecordingArchive : public CVamArchive {
  public:
    struct Call {
        enum class What { kRead, kWrite, kSeek, kPosition, kFlush } eWhat;
        long long nArgument;
    };

    explicit RecordingArchive(CVamArchive& archive) : m_Archive(archive) {}

    unsigned int Read(void* pBuffer, unsigned int nCount) override {
        m_Calls.push_back({Call::What::kRead, nCount});
        return m_Archive.Read(pBuffer, nCount);
    }
    unsigned int Write(const void* pBuffer, unsigned int nCount) override {
        m_Calls.push_back({Call::What::kWrite, nCount});
        return m_Archive.Write(pBuffer, nCount);
    }
    bool Seek(long long nPosition, int nOrigin) override {
        m_Calls.push_back({Call::What::kSeek, nPosition});
        return m_Archive.Seek(nPosition, nOrigin);
    }
    long long GetPosition() override {
        m_Calls.push_back({Call::What::kPosition, 0});
        return m_Archive.GetPosition();
    }
    bool Flush() override {
        m_Calls.push_back({Call::What::kFlush, 0});
        return m_Archive.Flush();
    }

    const std::vector<Call>& Calls() const { return m_Calls; }

  private:
    CVamArchive& m_Archive;
    std::vector<Call> m_Calls;
};

void Repeat(const std::vector<RecordingArchive::Call>& calls, CVamArchive& archive,
            unsigned char* pBuffer) {
    using What = RecordingArchive::Call::What;
    for (const auto& [eWhat, nArgument] : calls) {
        switch (eWhat) {
            case What::kRead:
                archive.Read(pBuffer, static_cast<unsigned int>(nArgument));
                break;
            case What::kWrite:
                archive.Write(pBuffer, static_cast<unsigned int>(nArgument));
                break;
            case What::kSeek:
                archive.Seek(nArgument, 0);
                break;
            case What::kPosition:
                archive.GetPosition();
                break;
            case What::kFlush:
                archive.Flush();
                break;
        }
    }
}

// The calls of one picture's opening or saving, without the library, beside the whole.
Sides StreamSides(Size size, bool bOpen) {
    const SharedImage pImage = Scene(size, 24);
    const auto pFile = std::make_shared<support::Bytes>(Saved(*pImage, KEL_IMAGE_BMP));
    const auto work = [=](CVamArchive& archive) {
        CKelImage image;
        Check(bOpen ? image.Open(&archive) : pImage->Save(&archive, KEL_IMAGE_BMP, nullptr));
    };
    const auto makeArchive = [=] {
        return bOpen ? std::make_unique<CVamArchiveMemory>(pFile->data(), pFile->size())
                     : std::make_unique<CVamArchiveMemory>();
    };
    const auto pArchive = makeArchive();
    RecordingArchive recorder(*pArchive);
    work(recorder);
    const auto pBuffer = std::make_shared<support::Bytes>(pFile->size());
    return {Timed([=, calls = recorder.Calls()] {
                Repeat(calls, *makeArchive(), pBuffer->data());
                Use(pBuffer->data());
            }),
            {{Kind::kOwn, "the whole", Timed([=] { work(*makeArchive()); })}}};
}

// The three copies of each pair of rows through a scratch row.
Sides ThreeCopySides(Size size) {
    const SharedImage pImage = Scene(size, 24);
    const std::size_t nBytes = PictureSize(24, {size.nWidth, 1});
    const auto pScratch = std::make_shared<support::Bytes>(nBytes);
    return {Timed([=] {
                unsigned char** const ppRows = pImage->GetLineArray();
                for (int y = 0; y < size.nHeight / 2; ++y) {
                    unsigned char* const pBottom = ppRows[size.nHeight - 1 - y];
                    std::memcpy(pScratch->data(), ppRows[y], nBytes);
                    std::memcpy(ppRows[y], pBottom, nBytes);
                    std::memcpy(pBottom, pScratch->data(), nBytes);
                }
            }),
            {ExchangeLimit(pImage)}};
}

}  // namespace

void AddReasonRows(std::vector<Row>& rows, const Options& options) {
    const Size large = options.Large(), small = {64, 64};
    rows.push_back({"part: squares of " + large.Text() + ", 24 bits, to their places", {}, [=] {
                        const SharedImage pImage = Scene(large, 24);
                        const SharedImage pRotated = Copy(*pImage);
                        return Sides{
                            CopySquares(pImage).side,
                            {{Kind::kOwn, "the whole", Timed([=] { pRotated->Rotate(0); })}}};
                    }});
    rows.push_back({"part: three copies a pair of rows, " + large.Text(), {}, [=] {
                        return ThreeCopySides(large);
                    }});
    for (const bool bOpen : {true, false}) {
        rows.push_back({std::string("part: stream calls, ") + (bOpen ? "open" : "save") + " BMP " +
                            small.Text(),
                        {},
                        [=] { return StreamSides(small, bOpen); }});
    }
}

}  // namespace bench
