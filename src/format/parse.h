// Reading a directive: flags, width, precision and size letters.
#pragma once

#include "format/arguments.h"
#include "format/field.h"

namespace zksupt::format {

// Reads what follows a '%' into d, taking '*' widths and precisions from
// args, and returns the conversion character with p after it; '\0' when the
// format ends first, with p left on the terminator.
char parseDirective(const char *&p, Directive &d, Arguments &args) noexcept;

}  // namespace zksupt::format
