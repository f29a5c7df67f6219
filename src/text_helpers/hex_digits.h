// Upper-case hexadecimal digits and their values, shared by the hex dumps,
// byte lists, hex strings, number text and the if_inet6 reader. Header only.
#pragma once

#include <cstdint>

namespace zksupt::text_helpers {

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

}  // namespace zksupt::text_helpers
