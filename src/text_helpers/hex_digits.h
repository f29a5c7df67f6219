// Upper-case hexadecimal digits and their reading as scanf's "%x" does it,
// shared by the hex dumps, byte lists and hex strings.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zksupt::text {

// Writes the low `digits` hex digits of value, most significant first.
inline void writeHexDigits(char *dst, uint32_t value, int digits) noexcept
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (int i = digits - 1; i >= 0; --i, value >>= 4)
        dst[i] = kDigits[value & 0xF];
}

// Value of a hex digit, or -1.
constexpr int hexDigitValue(char c) noexcept
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// Reads [p, end) as scanf "%x" reads a field: white space, an optional sign,
// an optional "0x", then hex digits (a "0x" without digits reads as the 0).
// A '-' negates modulo 2^32, and a magnitude too large for 32 bits reads as
// 0xFFFFFFFF. False when no digit was read.
bool scanHex(const char *p, const char *end, uint32_t *value) noexcept;

}  // namespace zksupt::text
