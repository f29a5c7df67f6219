// The correctly rounded decimal digits of a double, in the form the classic
// dtoa conversion gives them: the digits without trailing zeros and the
// position of the decimal point. std::to_chars does the exact rounding; it
// keeps no state and allocates nothing, so formatting needs no shared pool.
#pragma once

#include <array>
#include <cstdint>

namespace zksupt::format {

struct Decimal {
    // No trailing zeros; "0" for zero; empty when a fixed rounding leaves no
    // digit (0.0004 to three places), with point then at -fraction.
    const char *digits;
    uint32_t length;
    // Where the point stands relative to the first digit: 1 for "1.5",
    // -2 for 0.00125 ("125").
    int32_t point;
};

// The exact expansion of a double never has more than 1074 digits after the
// point nor more than 767 significant ones: asking for more only adds zeros.
inline constexpr int32_t kMaxFractionDigits = 1074;
inline constexpr int32_t kMaxSignificantDigits = 800;
// Holds the longest text: 309 integer digits, the point, 1074 fraction digits.
using DecimalBuffer = std::array<char, 309 + 1 + kMaxFractionDigits + 16>;

// magnitude (finite, not negative) rounded to fraction digits after the point.
Decimal roundToFraction(double magnitude, int32_t fraction, DecimalBuffer &buffer) noexcept;
// magnitude (finite, not negative) rounded to significant digits, at least 1.
Decimal roundToSignificant(double magnitude, int32_t significant, DecimalBuffer &buffer) noexcept;

}  // namespace zksupt::format
