/// @file
/// What leaves the shared library, and the library's version.
#ifndef IKELEX_EXPORT_H
#define IKELEX_EXPORT_H

// IKELEX_API marks what leaves the shared library, IKELEX_LOCAL a member of such a class that does
// not. GNU linkers on Windows find the names of either library without any definition. A host that
// links the static library with other tools there defines IKELEX_STATIC.
#if defined(_WIN32) && defined(IKELEX_BUILDS_DLL)
#define IKELEX_API __declspec(dllexport)
#define IKELEX_LOCAL
#elif defined(_WIN32) && !defined(IKELEX_STATIC) && !defined(__GNUC__)
#define IKELEX_API __declspec(dllimport)
#define IKELEX_LOCAL
#elif !defined(_WIN32) && defined(__GNUC__)
/// Marks what leaves the shared library.
#define IKELEX_API __attribute__((visibility("default")))
/// Marks a member of such a class that does not.
#define IKELEX_LOCAL __attribute__((visibility("hidden")))
#else
#define IKELEX_API
#define IKELEX_LOCAL
#endif

/// The version of these headers, which is major * 10000 + minor * 100 + patch.
#define IKELEX_VERSION 10000
/// The same as text.
#define IKELEX_VERSION_STRING "1.0.0"

extern "C" {

/// The version of the library in use, in the form of IKELEX_VERSION. Any thread.
IKELEX_API int GetKelVersion();

}  // extern "C"

#endif  // IKELEX_EXPORT_H
