// The bounded copy, alone in its file so that a program can replace it at link time.
#include <platform/securemem.h>

#include <cerrno>
#include <cstring>

int memcpy_s(void* dest, std::size_t destMax, const void* src, std::size_t count) {
    if (count == 0) {
        return 0;
    }
    if (dest == nullptr || src == nullptr) {
        return EINVAL;
    }
    if (count > destMax) {
        return ERANGE;
    }
    std::memcpy(dest, src, count);
    return 0;
}
