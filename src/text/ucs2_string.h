// The UCS-2 string family (ucs2_string.cpp, the tokenizer in tokenizer.cpp):
// the C library's narrow string functions for 16-bit units. A unit argument is taken from the low 16 bits of a 32-bit
// value. Pointers are not checked: they are the caller's to get right.
#pragma once

#include <cstdint>

#include <zksupt/types.h>

namespace zksupt::text {

uint32_t ucs2Length(const ucs2 *s) noexcept;
ucs2 *ucs2Copy(ucs2 *dst, const ucs2 *src) noexcept;
// Copies up to n units and stops after a copied terminator: no padding, and
// no terminator of its own when it stops at n.
ucs2 *ucs2CopyN(ucs2 *dst, const ucs2 *src, uint32_t n) noexcept;
ucs2 *ucs2Append(ucs2 *dst, const ucs2 *src) noexcept;
// Appends at most n units and always terminates; n = 0 leaves dst alone.
ucs2 *ucs2AppendN(ucs2 *dst, const ucs2 *src, uint32_t n) noexcept;
// 0 for equal strings, else the first differing units' a - b modulo 65536.
uint32_t ucs2Compare(const ucs2 *a, const ucs2 *b) noexcept;
ucs2 *ucs2FindUnit(const ucs2 *s, uint32_t c) noexcept;
ucs2 *ucs2FindString(const ucs2 *s, const ucs2 *sub) noexcept;
uint32_t ucs2Span(const ucs2 *s, const ucs2 *set) noexcept;
uint32_t ucs2ComplementSpan(const ucs2 *s, const ucs2 *set) noexcept;
ucs2 *ucs2Fill(ucs2 *s, uint32_t c) noexcept;
// Writes exactly n units, whatever the length of s.
ucs2 *ucs2FillN(ucs2 *s, uint32_t c, uint32_t n) noexcept;
ucs2 *ucs2Reverse(ucs2 *s) noexcept;

// tokenizer.cpp. The tokenizer. Its saved position is a single process-wide pointer, shared
// by every thread and both exported entries: tokenizing two strings at once
// makes them disturb each other, which callers of this library expect.
ucs2 *ucs2Tokenize(ucs2 *s, const ucs2 *delims) noexcept;

}  // namespace zksupt::text
