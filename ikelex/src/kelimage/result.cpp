// The names and meanings of results. Hosts show the texts. One table decides them.
#include <ikelex/result.h>

namespace {

struct Entry {
    KelResult nResult;
    const char* pszName;
    const char* pszMeaning;
};

constexpr Entry kEntries[] = {
    {KEL_OK, "KEL_OK", "success"},
    {KEL_ERR_FAIL, "KEL_ERR_FAIL",
     "the picture's format is not recognised, or its depth cannot be written in that format"},
    {KEL_ERR_SAVE_FORMAT, "KEL_ERR_SAVE_FORMAT", "there is no writer for the format asked for"},
    {KEL_ERR_OPEN_FORMAT, "KEL_ERR_OPEN_FORMAT",
     "the picture's format is recognised but cannot be read"},
    {KEL_ERR_FILTER_TYPE, "KEL_ERR_FILTER_TYPE", "there is no such filter"},
    {KEL_ERR_PARAM, "KEL_ERR_PARAM",
     "an argument, the image's state or the picture's header is invalid"},
    {KEL_ERR_MEMORY, "KEL_ERR_MEMORY", "not enough memory"},
    {KEL_ERR_FILE, "KEL_ERR_FILE", "the file could not be opened, read or written"},
    {KEL_ERR_CODEC, "KEL_ERR_CODEC", "the JPEG or PNG data is damaged or cannot be processed"},
    {KEL_ERR_NOT_IMPLEMENTED, "KEL_ERR_NOT_IMPLEMENTED", "writing this format is not implemented"},
};

const Entry* Find(KelResult nResult) {
    for (const Entry& entry : kEntries) {
        if (entry.nResult == nResult) {
            return &entry;
        }
    }
    return nullptr;
}

}  // namespace

const char* KelResultName(KelResult nResult) {
    const Entry* pEntry = Find(nResult);
    return pEntry != nullptr ? pEntry->pszName : "unknown result";
}

const char* KelResultMeaning(KelResult nResult) {
    const Entry* pEntry = Find(nResult);
    return pEntry != nullptr ? pEntry->pszMeaning : "a value that is no result of this library";
}
