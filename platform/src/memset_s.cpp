// The bounded fill, alone in its file so that a program can replace it at link time.
#include <platform/securemem.h>

#include <cerrno>
#include <cstring>

int memset_s(void* dest, std::size_t destMax, int value, std::size_t count) {
    if (dest == nullptr) {
        return EINVAL;
    }
    if (count > destMax) {
        return ERANGE;
    }
    std::memset(dest, value, count);
    return 0;
}
