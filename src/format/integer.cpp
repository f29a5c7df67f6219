#include "format/integer.h"

#include <algorithm>
#include <array>
#include <cstring>

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

}  // namespace

void printInteger(Output &out, Directive d, uintptr_t magnitude, Radix radix, char sign, char hexPrefix) noexcept
{
    // Octal digits of the widest value, and the alternate form's '0'.
    char buffer[sizeof(uintptr_t) * 8 / 3 + 2];
    char *const end = buffer + sizeof buffer;
    char *first = end;
    if (d.precision >= 0)
        d.zeroPad = false;
    if (magnitude != 0 || d.precision != 0) {
        switch (radix) {
        case Radix::decimal:
            first = decimalDigits(static_cast<uint32_t>(magnitude), end);
            break;
        case Radix::octal:
            first = powerOfTwoDigits<3>(magnitude, kLowerDigits, end);
            if (d.alternate && *first != '0')
                *--first = '0';
            break;
        case Radix::lowerHex:
            first = powerOfTwoDigits<4>(magnitude, kLowerDigits, end);
            break;
        case Radix::upperHex:
            first = powerOfTwoDigits<4>(magnitude, kUpperDigits, end);
            break;
        }
    }
    Pieces text;
    text.text(first, static_cast<uint64_t>(end - first));
    layOut(out, d, sign, hexPrefix, std::max(d.precision, 0), text);
}

}  // namespace zksupt::format
