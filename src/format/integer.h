// Integer conversions: digits in base 8, 10 or 16, laid into their field.
#pragma once

#include <cstdint>

#include "format/field.h"
#include "format/output.h"

namespace zksupt::format {

enum class Radix { octal, decimal, lowerHex, upperHex };

// Prints magnitude in radix with the given sign character ('\0' for none) or
// hexadecimal prefix. A precision is the minimum number of digits and cancels
// zero padding; value 0 with precision 0 prints no digits. The alternate form
// of octal starts the digits with '0'. Decimal values are 32-bit; the others
// may be as wide as a pointer.
void printInteger(Output &out, const Directive &d, uintptr_t magnitude, Radix radix, char sign,
                  char hexPrefix) noexcept;

}  // namespace zksupt::format
