#include "format/decimal.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace zksupt::format {
namespace {

constexpr Decimal kZero{"0", 1, 1};

// Drops the trailing zeros of [first, last).
Decimal trimmed(const char *first, const char *last, int32_t point) noexcept
{
    while (last != first && last[-1] == '0')
        --last;
    return {first, static_cast<uint32_t>(last - first), point};
}

}  // namespace

Decimal roundToFraction(double magnitude, int32_t fraction, DecimalBuffer &buffer) noexcept
{
    if (magnitude == 0)
        return kZero;
    char *const begin = buffer.data();
    char *end = std::to_chars(begin, begin + buffer.size(), magnitude, std::chars_format::fixed,
                              std::min(fraction, kMaxFractionDigits))
                    .ptr;
    // "123.456" becomes "123456" with the point after 3 digits.
    char *const dot = std::find(begin, end, '.');
    auto point = static_cast<int32_t>(dot - begin);
    if (dot != end) {
        std::memmove(dot, dot + 1, static_cast<std::size_t>(end - dot - 1));
        --end;
    }
    // Below 1 the text starts "0" and maybe more zeros, each moving the point
    // left; when nothing else is left, the point ends at -fraction.
    const char *first = begin;
    while (first != end && *first == '0') {
        ++first;
        --point;
    }
    return trimmed(first, end, point);
}

Decimal roundToSignificant(double magnitude, int32_t significant, DecimalBuffer &buffer) noexcept
{
    if (magnitude == 0)
        return kZero;
    char *const begin = buffer.data();
    char *const end = std::to_chars(begin, begin + buffer.size(), magnitude, std::chars_format::scientific,
                                    std::min(significant, kMaxSignificantDigits) - 1)
                          .ptr;
    // "1.2345e-07": the digits "12345" and the point one place after the
    // exponent.
    char *const e = std::find(begin, end, 'e');
    int32_t exponent = 0;
    std::from_chars(e + 2, end, exponent);
    if (e[1] == '-')
        exponent = -exponent;
    char *last = e;
    if (last - begin > 1) {
        std::memmove(begin + 1, begin + 2, static_cast<std::size_t>(last - begin - 2));
        --last;
    }
    return trimmed(begin, last, exponent + 1);
}

}  // namespace zksupt::format
