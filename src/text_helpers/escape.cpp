#include "text_helpers/escape.h"

#include <zksupt/status.h>

#include "frame/size_out.h"
#include "text_helpers/sized_string.h"

namespace zksupt::text_helpers {
namespace {

// The work string starts with room for 1,024 units of the longest escape.
constexpr uint32_t kInitialCapacity = 6144;

// The escaped form of one unit, written to out (room for 6 bytes); returns
// its length.
uint32_t escapeUnit(ucs2 unit, char *out) noexcept
{
    static constexpr char kHex[] = "0123456789abcdef";
    const char letter = unit == 0x09 ? 't' : unit == 0x0A ? 'n' : unit == 0x0D ? 'r' : unit == 0x5C ? '\\' : '\0';
    if (letter != '\0') {
        out[0] = '\\';
        out[1] = letter;
        return 2;
    }
    if (unit >= 0x20 && unit <= 0x7F) {
        out[0] = static_cast<char>(unit);
        return 1;
    }
    out[0] = '\\';
    out[1] = 'u';
    for (int i = 0; i < 4; ++i)
        out[2 + i] = kHex[(unit >> (12 - 4 * i)) & 0xF];
    return 6;
}

}  // namespace

int32_t escapeUcs2(char *dst, uint32_t *size, const ucs2 *src) noexcept
{
    if (src == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    OwnedSizedString text;
    if (sizedAllocUtf8(text.get(), kInitialCapacity) == nullptr)
        return SM_STATUS_FAILURE;
    for (; *src != 0; ++src) {
        char piece[6];
        if (!appendUtf8(text.get(), piece, escapeUnit(*src, piece)))
            return SM_STATUS_FAILURE;
    }
    // Without a size the copy is unchecked: the capacity is taken to be what
    // is needed.
    uint32_t unchecked = text->length + 1;
    return frame::copyOutText(dst, size != nullptr ? size : &unchecked,
                              {static_cast<const char *>(text->buf), text->length}, frame::NullBuffer::capacityOnly);
}

}  // namespace zksupt::text_helpers
