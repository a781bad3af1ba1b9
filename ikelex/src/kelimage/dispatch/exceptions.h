// Exceptions become result codes here, because nothing throws across the interface.
#ifndef DISPATCH_EXCEPTIONS_H
#define DISPATCH_EXCEPTIONS_H

#include <ikelex/result.h>

#include <new>

namespace kel {

// The result of fnWork, or the code of its exception. That is KEL_ERR_MEMORY for std::bad_alloc and
// KEL_ERR_FILE for any other, which comes from the host's stream. fnFailed runs after an exception.
// What it throws is dropped.
template <typename Work, typename Failed>
KelResult Guard(Work fnWork, Failed fnFailed) noexcept {
    KelResult nResult = KEL_ERR_FILE;
    try {
        return fnWork();
    } catch (const std::bad_alloc&) {
        nResult = KEL_ERR_MEMORY;
    } catch (...) {
    }
    try {
        fnFailed();
    } catch (...) {
    }
    return nResult;
}

template <typename Work>
KelResult Guard(Work fnWork) noexcept {
    return Guard(fnWork, [] {});
}

}  // namespace kel

#endif  // DISPATCH_EXCEPTIONS_H
