// The library's equivalents of the C library's bounds-checked functions
// (C11 Annex K), which the C library on this platform does not have. Each
// keeps the contract the library's callers rely on, never writes past the
// capacity it is given, and reports failure as a non-zero result.
#pragma once

#include <cstdint>

namespace zksupt::frame {

// getenv_s: *needed receives the size of the variable's value with its NUL,
// or 0 when the variable is not set. A null buffer with capacity 0 only asks
// for the size; otherwise the value is copied when it fits. Returns 0 when
// the size was answered or the value copied (an unset variable included,
// which leaves an empty text in a buffer that has room); EINVAL for a null
// name or size pointer, or a null buffer with a capacity; ERANGE when the
// value does not fit (the buffer then holds an empty text).
int getenvS(uint32_t *needed, char *buffer, uint32_t capacity, const char *name) noexcept;

}  // namespace zksupt::frame
