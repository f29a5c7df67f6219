// Small helpers for UTF-8 strings. They work byte by byte: a multi-byte
// sequence is neither recognised nor kept whole.
#pragma once

#include <cstdint>

namespace zksupt::text {

// Each byte through toupper/tolower of the calling thread's C locale.
char *utf8UpperCase(char *s) noexcept;
char *utf8LowerCase(char *s) noexcept;
void utf8Reverse(char *s) noexcept;

// Trimming knows four blanks: TAB, LF, CR and SPACE. The left trim writes
// zeros over the blanks it skips, so the caller's own pointer then addresses
// an empty string and only the returned one holds the text. Null gives null.
char *utf8TrimLeft(char *s) noexcept;
char *utf8TrimRight(char *s) noexcept;
char *utf8Trim(char *s) noexcept;

// A heap copy of s (free with SMFreeMem), or null when s is null or memory
// runs out. allocated, when given, receives the block's size (length + 1),
// or 0 with a null result.
char *utf8Duplicate(const char *s, uint32_t *allocated = nullptr) noexcept;

// Compares at most n bytes as unsigned, folding only 'A'-'Z' to 'a'-'z';
// stops at the end of a or at the first difference and returns the last
// pair's folded difference a - b (0 for n = 0).
int32_t utf8CompareFoldedN(const char *a, const char *b, uint32_t n) noexcept;

// First position of s where strncasecmp over the length of sub finds it;
// s itself for an empty sub; null when either is null or sub is not found.
char *utf8FindCaseless(const char *s, const char *sub) noexcept;

}  // namespace zksupt::text
