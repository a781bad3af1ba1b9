// Where exceptions become result codes: nothing throws across the interface.
#ifndef DISPATCH_EXCEPTIONS_H
#define DISPATCH_EXCEPTIONS_H

#include <ikelex/result.h>

namespace kel {

// The code of the exception being handled; to be called inside catch (...). KEL_ERR_MEMORY for
// std::bad_alloc, and KEL_ERR_FILE for all others: they come from the host's stream.
KelResult ResultOfException() noexcept;

}  // namespace kel

#endif  // DISPATCH_EXCEPTIONS_H
