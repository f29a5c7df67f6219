// Exported entries of the format engine.
#include <zksupt/format.h>

#include "format/engine.h"

namespace fm = zksupt::format;

// clang-format off
extern "C" {

// A variadic entry cannot hand its arguments on as they are: it passes them
// as a va_list to the same implementation as SMvsnprintf.
int32_t SMsnprintf(char *dst, uint32_t size, const char *format, ...) noexcept
{
    va_list args;
    va_start(args, format);
    const int32_t stored = fm::formatArguments(dst, size, format, args);
    va_end(args);
    return stored;
}

int32_t SMvsnprintf(char *dst, uint32_t size, const char *format, va_list args) noexcept { return fm::formatArguments(dst, size, format, args); }

}  // extern "C"
// clang-format on
