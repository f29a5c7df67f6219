#include "format/floating.h"

#include <algorithm>
#include <cfloat>
#include <limits>

#include "format/decimal.h"

namespace zksupt::format {
namespace {

// The digits a conversion prints: the significant digits, then zeros up to
// count in all (the alternate form's trailing zeros).
struct DigitString {
    Decimal decimal;
    int64_t count;

    // Adds the digits at positions [from, to) to text.
    void addTo(Pieces &text, int64_t from, int64_t to) const noexcept
    {
        const int64_t stored = decimal.length;
        if (from < stored)
            text.text(decimal.digits + from, static_cast<uint64_t>(std::min(to, stored) - from));
        text.zeros(to - std::max(from, stored));
    }
};

// "e+05", "E-123": the letter, the sign and at least two digits.
uint64_t writeExponent(char letter, int32_t exponent, char (&text)[8]) noexcept
{
    char *p = text;
    *p++ = letter;
    *p++ = exponent < 0 ? '-' : '+';
    auto magnitude = static_cast<uint32_t>(exponent < 0 ? -exponent : exponent);  // at most 324
    if (magnitude >= 100) {
        *p++ = static_cast<char>('0' + magnitude / 100);
        magnitude %= 100;
    }
    *p++ = static_cast<char>('0' + magnitude / 10);
    *p++ = static_cast<char>('0' + magnitude % 10);
    return static_cast<uint64_t>(p - text);
}

// d.ddd and the exponent; the point only when more digits follow or with '#'.
void exponentForm(Pieces &text, const DigitString &digits, bool alternate, char letter, char (&exponent)[8]) noexcept
{
    digits.addTo(text, 0, 1);
    if (digits.count > 1 || alternate) {
        text.text(".", 1);
        digits.addTo(text, 1, digits.count);
    }
    text.text(exponent, writeExponent(letter, digits.decimal.point - 1, exponent));
}

// ddd.ddd; a point that no digit follows only with '#'. Zero prints "0", or
// with '#' and a precision "0." and its zeros.
void fixedForm(Pieces &text, const DigitString &digits, bool alternate, bool zero, int32_t precision) noexcept
{
    const int64_t point = digits.decimal.point;
    if (zero) {
        text.text("0", 1);
        if (precision != 0 && alternate) {
            text.text(".", 1);
            text.zeros(digits.count - 1);
        }
    } else if (point <= 0) {
        text.text("0.", 2);
        text.zeros(-point);
        digits.addTo(text, 0, digits.count);
    } else if (point >= digits.count) {
        digits.addTo(text, 0, digits.count);
        text.zeros(point - digits.count);
        if (alternate)
            text.text(".", 1);
    } else {
        digits.addTo(text, 0, point);
        text.text(".", 1);
        digits.addTo(text, point, digits.count);
    }
}

int32_t clamped(int64_t count) noexcept
{
    return static_cast<int32_t>(std::min<int64_t>(count, std::numeric_limits<int32_t>::max()));
}

}  // namespace

void printFloating(Output &out, Directive d, char conversion, double value) noexcept
{
    const bool general = conversion == 'g' || conversion == 'G';
    const bool exponential = conversion == 'e' || conversion == 'E';
    int32_t precision = d.precision < 0 ? 6 : d.precision;
    if (general && precision == 0)
        precision = 1;
    if (conversion == 'f' && precision != 0)
        d.alternate = true;

    char sign = d.sign;
    Pieces text;
    if (value != value) {
        text.text("NaN", 3);
    } else if (value > DBL_MAX || value < -DBL_MAX) {
        if (value < 0)
            sign = '-';
        text.text("Inf", 3);
    }
    if (text.size() != 0) {
        layOut(out, d, sign, '\0', 0, text);
        return;
    }

    if (value < 0) {
        sign = '-';
        value = -value;
    }
    // 'f' counts digits after the point, the others significant digits: the
    // precision's after the first one for 'e', the precision itself for 'g'.
    const int64_t wanted = exponential ? int64_t{precision} + 1 : precision;
    DecimalBuffer buffer;
    const Decimal decimal = conversion == 'f' ? roundToFraction(value, precision, buffer)
                                              : roundToSignificant(value, clamped(wanted), buffer);
    DigitString digits{decimal, decimal.length};
    // Only '#' (or 'f' with a precision) brings the trailing zeros back, up
    // to the precision; for 'f' that counts from the point.
    if (d.alternate)
        digits.count = std::max(digits.count, wanted + (conversion == 'f' ? decimal.point : 0));

    char exponent[8];
    if (exponential || (general && (decimal.point - 1 < -4 || decimal.point > precision)))
        exponentForm(text, digits, d.alternate, conversion == 'E' || conversion == 'G' ? 'E' : 'e', exponent);
    else
        fixedForm(text, digits, d.alternate, value == 0, precision);
    layOut(out, d, sign, '\0', 0, text);
}

}  // namespace zksupt::format
