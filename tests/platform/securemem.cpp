// The platform's own bounded memory functions; the test programs replace them by failing ones.
#include <platform/securemem.h>

#include <cstdio>
#include <cstring>
#include <string>

int main() {
    struct {
        bool bDest;
        std::size_t nRoom;
        bool bSource;
        std::size_t nCount;
        int nCopied, nSet;  // the results
    } const rows[] = {{true, 3, true, 3, 0, 0},    {true, 3, true, 2, 0, 0},
                      {true, 2, true, 3, 34, 34},  {true, 3, false, 3, 22, 0},
                      {false, 3, true, 3, 22, 22}, {false, 0, true, 3, 22, 22},
                      {false, 0, false, 0, 0, 22}, {true, 0, true, 0, 0, 0}};
    int nWrong = 0;
    for (const auto& row : rows) {
        char szCopied[] = "-----";
        char szSet[] = "-----";
        const int nCopied = memcpy_s(row.bDest ? szCopied : nullptr, row.nRoom,
                                     row.bSource ? "abc" : nullptr, row.nCount);
        const int nSet = memset_s(row.bDest ? szSet : nullptr, row.nRoom, 'x', row.nCount);
        const auto expected = [&row](int nResult, const char* pszFull) {
            const std::size_t nDone = nResult == 0 && row.bDest ? row.nCount : 0;
            return std::string(pszFull, nDone) + std::string(5 - nDone, '-');
        };
        if (nCopied != row.nCopied || nSet != row.nSet ||
            szCopied != expected(row.nCopied, "abc") || szSet != expected(row.nSet, "xxx")) {
            std::printf("row %d: %d %s, %d %s\n", static_cast<int>(&row - rows), nCopied, szCopied,
                        nSet, szSet);
            ++nWrong;
        }
    }
    return nWrong;
}
