// The format engine: reads the format, converts each directive in turn and
// writes the result into the caller's buffer.
#pragma once

#include <cstdarg>
#include <cstdint>

namespace zksupt::format {

// What SMsnprintf and SMvsnprintf do: runEngine under the engine's lock.
int32_t formatArguments(char *dst, uint32_t size, const char *format, va_list args) noexcept;

// formatArguments with the arguments given in place: what the library's own
// code calls to format text it produces.
int32_t formatText(char *dst, uint32_t size, const char *format, ...) noexcept;

// The engine without the lock. Stores at most size - 1 bytes (none for a size
// of 0 or above 0x80000000), terminates a non-null dst and returns the number
// of bytes stored. truncated, when given, gets 1 if output had to be dropped,
// else 0. A null format formats nothing.
int32_t runEngine(char *dst, uint32_t size, const char *format, va_list args, uint32_t *truncated) noexcept;

}  // namespace zksupt::format
