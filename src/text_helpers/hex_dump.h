// Hex dumps of binary data (hex_dump.cpp), for the typed-value text and the
// event logs (which write them in UCS-2).
//
// One line per run of 16 bytes (the last may be shorter), 81 characters and
// CR LF: "0x%08X: " of base + offset, the bytes' upper-case digits with ':'
// before the 5th, 9th and 13th byte, the bytes themselves from column 62
// (0x20-0x7A as they are, anything else '.'). No data or len 0: no lines.
#pragma once

#include <cstdint>

#include <zksupt/text.h>

namespace zksupt::text_helpers {

// Appends the lines to a UTF-8 sized string: SUCCESS, or FAILURE when one
// could not be appended (no buffer, no memory).
int32_t hexDumpAppend(SMSizedString *dst, const uint8_t *data, uint32_t len, uint32_t base) noexcept;

// The dump as new text (malloc). *len: in the data bytes, out the text bytes
// with the terminator. Null when len is null or memory runs out.
char *hexDumpText(const uint8_t *data, uint32_t *len, uint32_t base) noexcept;

// Characters in one line of the dump, its CR LF included.
inline constexpr uint32_t kHexDumpLineLength = 81;

// The characters the dump of len bytes takes.
constexpr uint64_t hexDumpLength(uint32_t len) noexcept
{
    return (uint64_t{len} + 15) / 16 * kHexDumpLineLength;
}

// The dump as UCS-2 units into out, which holds hexDumpLength(len) of them.
void hexDumpUcs2(const uint8_t *data, uint32_t len, uint32_t base, ucs2 *out) noexcept;

}  // namespace zksupt::text_helpers
