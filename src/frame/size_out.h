// The library's in/out size rule: *size holds the capacity of the caller's
// buffer on entry and the size needed or produced on return, terminator
// included; a null or too small buffer gives BUFFER_TOO_SMALL with the needed
// size stored and nothing copied. Families whose rule differs say so where
// they differ.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include <zksupt/status.h>

namespace zksupt::frame {

// Copies `needed` bytes of src into dst when they fit.
inline int32_t copyOutBytes(void *dst, uint32_t *size, const void *src, uint32_t needed) noexcept
{
    const uint32_t capacity = *size;
    *size = needed;
    if (dst == nullptr || capacity < needed)
        return SM_STATUS_BUFFER_TOO_SMALL;
    if (needed != 0)
        std::memcpy(dst, src, needed);
    return SM_STATUS_SUCCESS;
}

// Copies text and its terminating NUL into dst when they fit; the size is the
// text's length plus 1.
inline int32_t copyOutText(char *dst, uint32_t *size, std::string_view text) noexcept
{
    const auto needed = static_cast<uint32_t>(text.size() + 1);
    const uint32_t capacity = *size;
    *size = needed;
    if (dst == nullptr || capacity < needed)
        return SM_STATUS_BUFFER_TOO_SMALL;
    std::memcpy(dst, text.data(), text.size());
    dst[text.size()] = '\0';
    return SM_STATUS_SUCCESS;
}

}  // namespace zksupt::frame
