// Floating-point conversions: 'e', 'E', 'f', 'g' and 'G'.
#pragma once

#include "format/field.h"
#include "format/output.h"

namespace zksupt::format {

// Prints value for the conversion letter. Without '#', the exponent form
// prints only the significant digits ("1e+00", "1.5e+00"); 'f' with a
// precision other than 0 behaves as if '#' were given, which keeps C's
// output for it. Infinities print "Inf" ('-' when negative), NaNs "NaN";
// minus zero prints without a sign.
void printFloating(Output &out, Directive d, char conversion, double value) noexcept;

}  // namespace zksupt::format
