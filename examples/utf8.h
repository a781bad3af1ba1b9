// Paths as UTF-8, which is what the library takes on every system. Windows programs get their
// arguments, and keep their paths, in another encoding.
#ifndef EXAMPLES_UTF8_H
#define EXAMPLES_UTF8_H

#include <filesystem>
#include <string>

#ifdef _WIN32
#include <windows.h>

#include <shellapi.h>

#include <vector>
#endif

inline std::string Utf8Of(const std::filesystem::path& path) {
    const auto strUtf8 = path.u8string();
    return std::string(strUtf8.begin(), strUtf8.end());
}

inline std::filesystem::path PathOf(const std::string& strUtf8) {
#ifdef _WIN32
    std::wstring strWide(strUtf8.size(), L'\0');  // never more units than bytes
    strWide.resize(static_cast<std::size_t>(
        MultiByteToWideChar(CP_UTF8, 0, strUtf8.data(), static_cast<int>(strUtf8.size()),
                            strWide.data(), static_cast<int>(strWide.size()))));
    return strWide;
#else
    return strUtf8;
#endif
}

// Replaces main's arguments by the same ones as UTF-8.
inline void TakeUtf8Arguments([[maybe_unused]] int& nCount, [[maybe_unused]] char**& ppArguments) {
#ifdef _WIN32
    static std::vector<std::string> texts;
    static std::vector<char*> pointers;
    wchar_t** const ppWide = CommandLineToArgvW(GetCommandLineW(), &nCount);
    for (int i = 0; i < nCount; ++i) {
        texts.push_back(Utf8Of(ppWide[i]));
    }
    LocalFree(ppWide);
    for (std::string& strText : texts) {
        pointers.push_back(strText.data());
    }
    pointers.push_back(nullptr);
    ppArguments = pointers.data();
#endif
}

#endif  // EXAMPLES_UTF8_H
