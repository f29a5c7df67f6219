#include "format/integer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "frame/short_copy.h"

namespace zksupt::format {
namespace {

constexpr char kLowerDigits[] = "0123456789abcdef";
constexpr char kUpperDigits[] = "0123456789ABCDEF";

// "00" to "99": decimal digits come two at a time, halving the divisions.
constexpr std::array<char, 200> kDigitPairs = [] {
    std::array<char, 200> pairs{};
    for (int i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

constexpr std::array<uint32_t, 10> kPowersOfTen = {
    1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000,
};

// Each of these writes the digits backwards so that they end at end, and
// returns the first.
char *decimalDigits(uint32_t value, char *end) noexcept
{
    while (value >= 100) {
        end -= 2;
        std::memcpy(end, &kDigitPairs[2 * (value % 100)], 2);
        value /= 100;
    }
    if (value >= 10) {
        end -= 2;
        std::memcpy(end, &kDigitPairs[2 * value], 2);
    } else {
        *--end = static_cast<char>('0' + value);
    }
    return end;
}

template <unsigned BitsPerDigit> char *powerOfTwoDigits(uintptr_t value, const char *table, char *end) noexcept
{
    constexpr uintptr_t mask = (uintptr_t{1} << BitsPerDigit) - 1;
    do {
        *--end = table[value & mask];
        value >>= BitsPerDigit;
    } while (value != 0);
    return end;
}

// The digits of magnitude in radix, the alternate form's octal '0' included;
// none for value 0 with precision 0.
struct Digits {
    uintptr_t magnitude;
    Radix radix;
    bool octalZero;  // the alternate form's '0' in front of octal digits
    uint32_t length = 0;

    Digits(uintptr_t value, Radix base, const Directive &d) noexcept : magnitude(value), radix(base)
    {
        octalZero = radix == Radix::octal && d.alternate && magnitude != 0;
        if (magnitude == 0 && d.precision == 0)
            return;
        const auto bits = static_cast<uint32_t>(std::bit_width(magnitude | 1));
        switch (radix) {
        case Radix::decimal: {  // 32-bit values, so bits is at most 32
            // 1233 / 4096 is just above log10(2): a guess that is at most
            // one too high, put right by the table (0 counts as 1, and
            // setting bit 0 changes no other count, the powers being even).
            const uint32_t guess = (bits * 1233) >> 12;
            length = guess + 1 - ((static_cast<uint32_t>(magnitude) | 1) < kPowersOfTen[guess] ? 1 : 0);
            break;
        }
        case Radix::octal:
            length = (bits + 2) / 3 + (octalZero ? 1 : 0);
            break;
        case Radix::lowerHex:
        case Radix::upperHex:
            length = (bits + 3) / 4;
            break;
        }
    }

    // Writes the digits so that they end at end; returns their first byte.
    char *writeBefore(char *end) const noexcept
    {
        if (length == 0)
            return end;
        char *first = end;
        switch (radix) {
        case Radix::decimal:
            first = decimalDigits(static_cast<uint32_t>(magnitude), end);
            break;
        case Radix::octal:
            first = powerOfTwoDigits<3>(magnitude, kLowerDigits, end);
            if (octalZero)
                *--first = '0';
            break;
        case Radix::lowerHex:
            first = powerOfTwoDigits<4>(magnitude, kLowerDigits, end);
            break;
        case Radix::upperHex:
            first = powerOfTwoDigits<4>(magnitude, kUpperDigits, end);
            break;
        }
        return first;
    }
};

constexpr char kSixteenBlanks[17] = "                ";
constexpr char kSixteenZeros[17] = "0000000000000000";

// Writes count copies of a padding byte (none for 0 or less), exactly.
inline char *pad(char *at, const char (&sixteen)[17], int64_t count) noexcept
{
    for (; count > 16; count -= 16, at += 16)
        std::memcpy(at, sixteen, 16);
    if (count > 0) {
        frame::copyShort(at, sixteen, static_cast<std::size_t>(count));
        at += count;
    }
    return at;
}

}  // namespace

void printInteger(Output &out, const Directive &d, uintptr_t magnitude, Radix radix, char sign, char hexPrefix) noexcept
{
    const bool zeroPad = d.zeroPad && d.precision < 0;  // a precision cancels zero padding
    const Digits digits(magnitude, radix, d);
    const int32_t integerPrecision = std::max(d.precision, 0);
    const int64_t realSize = digits.length + (sign != '\0' ? 1 : hexPrefix != '\0' ? 2 : 0);
    const int64_t fieldSize = std::max<int64_t>(realSize, integerPrecision);
    const int64_t padding = d.width - fieldSize;

    // The usual case: the whole field fits, and is written in place in one
    // pass, digits included, so that no byte is copied twice.
    if (char *at = out.reserve(static_cast<uint64_t>(std::max<int64_t>(fieldSize, d.width)))) {
        if (!d.leftAdjust && !zeroPad)
            at = pad(at, kSixteenBlanks, padding);
        if (sign != '\0') {
            *at++ = sign;
        } else if (hexPrefix != '\0') {
            *at++ = '0';
            *at++ = hexPrefix;
        }
        if (!d.leftAdjust && zeroPad)
            at = pad(at, kSixteenZeros, padding);
        at = pad(at, kSixteenZeros, integerPrecision - realSize);
        at += digits.length;
        digits.writeBefore(at);
        if (d.leftAdjust)
            pad(at, kSixteenBlanks, padding);
        return;
    }

    // Output that only counts or does not fit goes piece by piece.
    char buffer[sizeof(uintptr_t) * 8 / 3 + 2];
    char *const end = buffer + sizeof buffer;
    const char *first = digits.writeBefore(end);
    Pieces text;
    text.text(first, static_cast<uint64_t>(end - first));
    Directive laid = d;
    laid.zeroPad = zeroPad;
    layOut(out, laid, sign, hexPrefix, integerPrecision, text);
}

}  // namespace zksupt::format
