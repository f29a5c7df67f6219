#include "frame/bounds_checked.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace zksupt::frame {

int getenvS(uint32_t *needed, char *buffer, uint32_t capacity, const char *name) noexcept
{
    if (needed == nullptr || name == nullptr || (buffer == nullptr && capacity != 0))
        return EINVAL;
    if (buffer != nullptr && capacity != 0)
        buffer[0] = '\0';
    const char *value = std::getenv(name);
    if (value == nullptr) {
        *needed = 0;
        return 0;
    }
    const std::size_t length = std::strlen(value);
    if (length >= std::numeric_limits<uint32_t>::max()) {
        *needed = std::numeric_limits<uint32_t>::max();
        return ERANGE;
    }
    *needed = static_cast<uint32_t>(length + 1);
    if (buffer == nullptr)
        return 0;
    if (capacity < *needed)
        return ERANGE;
    std::memcpy(buffer, value, length + 1);
    return 0;
}

}  // namespace zksupt::frame
