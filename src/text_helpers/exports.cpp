// Exported entries of the text helpers: sized strings and escaping.
#include <zksupt/text.h>

#include "text_helpers/escape.h"
#include "text_helpers/sized_string.h"

namespace th = zksupt::text_helpers;

// clang-format off
extern "C" {

int32_t SMUCS2ToEscape(char *dst, uint32_t *size, const ucs2 *src) noexcept { return th::escapeUcs2(dst, size, src); }

// The appenders answer with the record's buffer whatever happened; callers
// that must notice a failure compare lengths.
void *SMSSUCS2StrAlloc(SMSizedString *rec, uint32_t bytes) noexcept { return th::sizedAllocUcs2(rec, bytes); }
void *SMSSUTF8StrAlloc(SMSizedString *rec, uint32_t bytes) noexcept { return th::sizedAllocUtf8(rec, bytes); }
void *SMSSUCS2StrCatUCS2Str(SMSizedString *rec, const ucs2 *src) noexcept { th::appendUcs2(rec, src, 0); return th::sizedBuffer(rec); }
void *SMSSUCS2StrNCatUCS2Str(SMSizedString *rec, const ucs2 *src, uint32_t n) noexcept { th::appendUcs2(rec, src, n); return th::sizedBuffer(rec); }
void *SMSSUTF8StrCatUTF8Str(SMSizedString *rec, const char *src) noexcept { th::appendUtf8(rec, src, 0); return th::sizedBuffer(rec); }
void *SMSSUTF8StrNCatUTF8Str(SMSizedString *rec, const char *src, uint32_t n) noexcept { th::appendUtf8(rec, src, n); return th::sizedBuffer(rec); }
void *SMSSUCS2StrCatUTF8Str(SMSizedString *rec, const char *src) noexcept { th::appendUtf8AsUcs2(rec, src, 0); return th::sizedBuffer(rec); }
void *SMSSUCS2StrNCatUTF8Str(SMSizedString *rec, const char *src, uint32_t n) noexcept { th::appendUtf8AsUcs2(rec, src, n); return th::sizedBuffer(rec); }
void *SMSSUTF8StrCatUCS2Str(SMSizedString *rec, const ucs2 *src) noexcept { th::appendUcs2AsUtf8(rec, src, 0); return th::sizedBuffer(rec); }
void *SMSSUTF8StrNCatUCS2Str(SMSizedString *rec, const ucs2 *src, uint32_t n) noexcept { th::appendUcs2AsUtf8(rec, src, n); return th::sizedBuffer(rec); }
void SMSSUCS2StrFree(SMSizedString *rec) noexcept { th::sizedFree(rec); }
void SMSSUTF8StrFree(SMSizedString *rec) noexcept { th::sizedFree(rec); }

}  // extern "C"
// clang-format on
