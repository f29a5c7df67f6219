// Copying a finished text into a caller's buffer under the in/out size rule.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include <zksupt/status.h>

namespace zksupt::net {

// *size gets text's length + 1 in every case. With a buffer the text and its
// NUL are copied when they fit in *size bytes, else nothing is written and
// the result is 0x10; a null buffer only asks for the size.
inline int32_t copyText(std::string_view text, char *buffer, uint32_t *size) noexcept
{
    const auto needed = static_cast<uint32_t>(text.size() + 1);
    int32_t status = SM_STATUS_SUCCESS;
    if (buffer != nullptr) {
        if (needed <= *size) {
            std::memcpy(buffer, text.data(), text.size());
            buffer[text.size()] = '\0';
        } else {
            status = SM_STATUS_BUFFER_TOO_SMALL;
        }
    }
    *size = needed;
    return status;
}

}  // namespace zksupt::net
