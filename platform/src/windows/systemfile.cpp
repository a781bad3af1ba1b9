// Files of Windows. The path is converted to UTF-16. The file is a system handle under a FILE of
// the C library. The bytes go through the handle, so that no text mode can change them.
#include "systemfile.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <cwchar>

namespace {

// More in one call fails on some network shares.
constexpr unsigned int kMostAtOnce = 16u << 20;

// The longest path that every Windows takes without the prefix that lifts its limits.
constexpr std::size_t kShortPath = 247;

// The longest path there is, its end included.
constexpr DWORD kMostUnits = 32768;

HANDLE HandleOf(std::FILE* pFile) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(pFile)));
}

// The absolute path in the form the system opens. It lies in the object, so opening allocates
// nothing.
class SystemPath {
  public:
    explicit SystemPath(const char* pszPath) {
        wchar_t szGiven[kMostUnits];
        const int nGiven = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, pszPath, -1, szGiven,
                                               static_cast<int>(kMostUnits));
        // This resolves "." and "..", which the prefix would stop.
        const DWORD nFull =
            nGiven > 0 ? GetFullPathNameW(szGiven, kMostUnits, m_szRoom + kPrefixRoom, nullptr) : 0;
        m_bUsable = nFull > 0 && nFull < kMostUnits;
        if (nFull > kShortPath && !StartsWith(L"\\\\?\\")) {
            if (StartsWith(L"\\\\")) {
                Prepend(L"\\\\?\\UNC\\", 2);
            } else {
                Prepend(L"\\\\?\\", 0);
            }
        }
    }

    // Null for a path that is no UTF-8 or too long, and for one that names a reserved device or a
    // volume.
    const wchar_t* Get() const {
        const bool bDevice = StartsWith(L"\\\\.\\") && !StartsWith(L"\\\\.\\pipe\\");
        return m_bUsable && !bDevice ? m_pszPath : nullptr;
    }

  private:
    static constexpr std::size_t kPrefixRoom = 8;

    bool StartsWith(const wchar_t* pszStart) const {
        return m_bUsable && std::wcsncmp(m_pszPath, pszStart, std::wcslen(pszStart)) == 0;
    }

    // Puts the prefix in place of the first nReplaced units.
    void Prepend(const wchar_t* pszPrefix, std::size_t nReplaced) {
        const std::size_t nPrefix = std::wcslen(pszPrefix);
        m_pszPath = static_cast<wchar_t*>(
            std::memcpy(m_pszPath + nReplaced - nPrefix, pszPrefix, nPrefix * sizeof(wchar_t)));
    }

    bool m_bUsable = false;
    wchar_t m_szRoom[kPrefixRoom + kMostUnits];
    wchar_t* m_pszPath = m_szRoom + kPrefixRoom;
};

// What a stream-open notation asks the system for.
struct Mode {
    DWORD nAccess = 0;
    DWORD nCreation = 0;
    bool bWritable = true;

    explicit Mode(const char* pszMode) {
        const bool bBoth = std::strchr(pszMode, '+') != nullptr;
        if (*pszMode == 'r') {
            nAccess = bBoth ? GENERIC_READ | GENERIC_WRITE : GENERIC_READ;
            nCreation = OPEN_EXISTING;
            bWritable = bBoth;
        } else if (*pszMode == 'w') {
            nAccess = bBoth ? GENERIC_READ | GENERIC_WRITE : GENERIC_WRITE;
            nCreation = std::strchr(pszMode, 'x') != nullptr ? CREATE_NEW : CREATE_ALWAYS;
        } else if (*pszMode == 'a') {
            // Without the right to write elsewhere every write goes to the end.
            nAccess = bBoth ? GENERIC_READ | FILE_APPEND_DATA : FILE_APPEND_DATA;
            nCreation = OPEN_ALWAYS;
        }
    }
};

}  // namespace

std::FILE* vam::OpenSystemFile(const char* pszPath, const char* pszMode, bool& bWritable) {
    const SystemPath path(pszPath);
    const Mode mode(pszMode);
    if (path.Get() == nullptr || mode.nCreation == 0) {
        return nullptr;
    }
    const HANDLE hFile = CreateFileW(path.Get(), mode.nAccess,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                     nullptr, mode.nCreation, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE) {
        return nullptr;
    }
    const DWORD nType = GetFileType(hFile);
    const int nDescriptor =
        nType == FILE_TYPE_DISK || nType == FILE_TYPE_PIPE
            ? _open_osfhandle(reinterpret_cast<std::intptr_t>(hFile), _O_BINARY | _O_NOINHERIT)
            : -1;
    if (nDescriptor < 0) {
        CloseHandle(hFile);
        return nullptr;
    }
    std::FILE* const pFile = _fdopen(nDescriptor, mode.bWritable ? "r+b" : "rb");
    if (pFile == nullptr) {
        _close(nDescriptor);
        return nullptr;
    }
    bWritable = mode.bWritable;
    return pFile;
}

// An error that delivered something (a message longer than asked for) counts as delivery.
unsigned int vam::ReadSystemFile(std::FILE* pFile, unsigned char* pBuffer, unsigned int nCount) {
    DWORD nGot = 0;
    ReadFile(HandleOf(pFile), pBuffer, std::min(nCount, kMostAtOnce), &nGot, nullptr);
    return nGot;
}

unsigned int vam::WriteSystemFile(std::FILE* pFile, const unsigned char* pBuffer,
                                  unsigned int nCount) {
    unsigned int nDone = 0;
    DWORD nPut = 1;
    while (nDone < nCount && nPut > 0) {
        const DWORD nAsked = std::min(nCount - nDone, kMostAtOnce);
        if (!WriteFile(HandleOf(pFile), pBuffer + nDone, nAsked, &nPut, nullptr)) {
            break;
        }
        nDone += nPut;
    }
    return nDone;
}

long long vam::SeekSystemFile(std::FILE* pFile, long long nPosition, int nOrigin) {
    const HANDLE hFile = HandleOf(pFile);
    LARGE_INTEGER nDistance = {}, nReached = {};
    nDistance.QuadPart = nPosition;
    if (GetFileType(hFile) != FILE_TYPE_DISK ||
        !SetFilePointerEx(hFile, nDistance, &nReached, static_cast<DWORD>(nOrigin))) {
        return -1;
    }
    return nReached.QuadPart;
}
