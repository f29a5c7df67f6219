// The library's in/out size rule: *size holds the capacity of the caller's
// buffer on entry and the size needed or produced on return, terminator
// included; a null or too small buffer gives BUFFER_TOO_SMALL with the needed
// size stored and nothing copied.
//
// Two families keep their own answer to a null buffer, named where they call:
// NullBuffer::sizeQuery and NullBuffer::capacityOnly below. Calls that check a
// least capacity before their work and store the size after it use
// requireCapacity. The converters (text/conversion_output.h) and the listings
// of names (config/ini_reader.cpp) have rules of their own altogether and say
// so there.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include <zksupt/status.h>

#include "frame/short_copy.h"

namespace zksupt::frame {

// What a null buffer means.
enum class NullBuffer {
    // The library's rule: no room, BUFFER_TOO_SMALL with the needed size.
    noRoom,
    // A question for the size: SUCCESS with the needed size, whatever the
    // capacity (the network functions).
    sizeQuery,
    // The capacity alone decides, and nothing is copied (the product paths,
    // escaping, typed values whose buffer may be null only with capacity 0).
    capacityOnly,
};

// Stores the needed size and answers whether the output may be written:
// SUCCESS (write it when dst is not null) or BUFFER_TOO_SMALL. For output
// that is put together in pieces; the copies below build on it.
inline int32_t reserveOut(const void *dst, uint32_t *size, uint32_t needed,
                          NullBuffer rule = NullBuffer::noRoom) noexcept
{
    const uint32_t capacity = *size;
    *size = needed;
    if (dst == nullptr && rule == NullBuffer::sizeQuery)
        return SM_STATUS_SUCCESS;
    if ((dst == nullptr && rule == NullBuffer::noRoom) || capacity < needed)
        return SM_STATUS_BUFFER_TOO_SMALL;
    return SM_STATUS_SUCCESS;
}

// The up-front check of calls that store *size only once their work is done:
// a capacity below minimum gets the minimum stored and BUFFER_TOO_SMALL;
// otherwise *size is left as it is and SUCCESS comes back.
inline int32_t requireCapacity(uint32_t *size, uint32_t minimum) noexcept
{
    if (*size >= minimum)
        return SM_STATUS_SUCCESS;
    *size = minimum;
    return SM_STATUS_BUFFER_TOO_SMALL;
}

// Copies `needed` bytes of src into dst when they fit.
inline int32_t copyOutBytes(void *dst, uint32_t *size, const void *src, uint32_t needed,
                            NullBuffer rule = NullBuffer::noRoom) noexcept
{
    const int32_t status = reserveOut(dst, size, needed, rule);
    if (status == SM_STATUS_SUCCESS && dst != nullptr)
        copyShort(dst, src, needed);
    return status;
}

// Copies text and its terminating NUL into dst when they fit; the size is the
// text's length plus 1.
inline int32_t copyOutText(char *dst, uint32_t *size, std::string_view text,
                           NullBuffer rule = NullBuffer::noRoom) noexcept
{
    const int32_t status = reserveOut(dst, size, static_cast<uint32_t>(text.size() + 1), rule);
    if (status == SM_STATUS_SUCCESS && dst != nullptr) {
        std::memcpy(dst, text.data(), text.size());
        dst[text.size()] = '\0';
    }
    return status;
}

}  // namespace zksupt::frame
