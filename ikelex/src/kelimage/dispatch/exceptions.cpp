#include "exceptions.h"

#include <new>

namespace kel {

KelResult ResultOfException() noexcept {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return KEL_ERR_MEMORY;
    } catch (...) {
        return KEL_ERR_FILE;
    }
}

}  // namespace kel
