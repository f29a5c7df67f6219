// Exported entries of the text subsystem. The _s variants take a size for
// the caller's sake and ignore it: each behaves exactly as its plain twin.
#include <zksupt/text.h>

#include "text/convert.h"
#include "text/ucs2_string.h"
#include "text/utf8_string.h"

namespace tx = zksupt::text;

// clang-format off
extern "C" {

uint32_t SMUCS2Strlen(const ucs2 *s) noexcept { return tx::ucs2Length(s); }
ucs2 *SMUCS2Strcpy(ucs2 *dst, const ucs2 *src) noexcept { return tx::ucs2Copy(dst, src); }
ucs2 *SMUCS2Strcpy_s(ucs2 *dst, uint32_t /*dstSize*/, const ucs2 *src) noexcept { return tx::ucs2Copy(dst, src); }
ucs2 *SMUCS2Strncpy(ucs2 *dst, const ucs2 *src, uint32_t n) noexcept { return tx::ucs2CopyN(dst, src, n); }
ucs2 *SMUCS2Strncpy_s(ucs2 *dst, uint32_t /*dstSize*/, const ucs2 *src, uint32_t n) noexcept { return tx::ucs2CopyN(dst, src, n); }
ucs2 *SMUCS2Strcat(ucs2 *dst, const ucs2 *src) noexcept { return tx::ucs2Append(dst, src); }
ucs2 *SMUCS2Strcat_s(ucs2 *dst, uint32_t /*dstSize*/, const ucs2 *src) noexcept { return tx::ucs2Append(dst, src); }
ucs2 *SMUCS2Strncat(ucs2 *dst, const ucs2 *src, uint32_t n) noexcept { return tx::ucs2AppendN(dst, src, n); }
ucs2 *SMUCS2Strncat_s(ucs2 *dst, uint32_t /*dstSize*/, const ucs2 *src, uint32_t n) noexcept { return tx::ucs2AppendN(dst, src, n); }
uint32_t SMUCS2Strcmp(const ucs2 *a, const ucs2 *b) noexcept { return tx::ucs2Compare(a, b); }
ucs2 *SMUCS2Strchr(const ucs2 *s, uint32_t c) noexcept { return tx::ucs2FindUnit(s, c); }
ucs2 *SMUCS2Strstr(const ucs2 *s, const ucs2 *sub) noexcept { return tx::ucs2FindString(s, sub); }
uint32_t SMUCS2Strspn(const ucs2 *s, const ucs2 *set) noexcept { return tx::ucs2Span(s, set); }
uint32_t SMUCS2Strcspn(const ucs2 *s, const ucs2 *set) noexcept { return tx::ucs2ComplementSpan(s, set); }
ucs2 *SMUCS2Strtok(ucs2 *s, const ucs2 *delims) noexcept { return tx::ucs2Tokenize(s, delims); }
ucs2 *SMUCS2Strtok_s(ucs2 *s, const ucs2 *delims, ucs2 ** /*context*/) noexcept { return tx::ucs2Tokenize(s, delims); }
ucs2 *SMUCS2Strset(ucs2 *s, uint32_t c) noexcept { return tx::ucs2Fill(s, c); }
ucs2 *SMUCS2Strset_s(ucs2 *s, uint32_t /*size*/, uint32_t c) noexcept { return tx::ucs2Fill(s, c); }
ucs2 *SMUCS2Strnset(ucs2 *s, uint32_t c, uint32_t n) noexcept { return tx::ucs2FillN(s, c, n); }
ucs2 *SMUCS2Strnset_s(ucs2 *s, uint32_t /*size*/, uint32_t c, uint32_t n) noexcept { return tx::ucs2FillN(s, c, n); }
ucs2 *SMUCS2Strrev(ucs2 *s) noexcept { return tx::ucs2Reverse(s); }

int32_t SMUCS2StrToUTF8Str(char *dst, uint32_t *size, const ucs2 *src) noexcept { return tx::ucs2ToUtf8(dst, size, src); }
int32_t SMUTF8StrToUCS2Str(ucs2 *dst, uint32_t *size, const char *src) noexcept { return tx::utf8ToUcs2(dst, size, src); }

char *SMUTF8StrUpperCase(char *s) noexcept { return tx::utf8UpperCase(s); }
char *SMUTF8StrLowerCase(char *s) noexcept { return tx::utf8LowerCase(s); }
void SMUTF8Strrev(char *s) noexcept { tx::utf8Reverse(s); }
char *SMUTF8ltrim(char *s) noexcept { return tx::utf8TrimLeft(s); }
char *SMUTF8rtrim(char *s) noexcept { return tx::utf8TrimRight(s); }
char *SMUTF8trim(char *s) noexcept { return tx::utf8Trim(s); }
char *SMUTF8Strdup(const char *s) noexcept { return tx::utf8Duplicate(s); }
int32_t SMUTF8Strnicmp(const char *a, const char *b, uint32_t n) noexcept { return tx::utf8CompareFoldedN(a, b, n); }
char *SMUTF8Strstri(const char *s, const char *sub) noexcept { return tx::utf8FindCaseless(s, sub); }

}  // extern "C"
// clang-format on
