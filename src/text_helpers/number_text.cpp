// Numbers, times and booleans as text and back.
#include "text_helpers/number_text.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include <zksupt/status.h>

#include "format/engine.h"
#include "text_helpers/hex_digits.h"
#include "text/utf8_string.h"

namespace zksupt::text_helpers {
namespace {

void setStatus(uint32_t *status, uint32_t value) noexcept
{
    if (status != nullptr)
        *status = value;
}

bool isDecimalDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

// Digits of s from its start, counted while accept holds.
template <class Accept> std::size_t digitRun(const char *s, Accept accept) noexcept
{
    std::size_t n = 0;
    while (accept(s[n]))
        ++n;
    return n;
}

const char *skipHexPrefix(const char *s) noexcept
{
    return s[0] == '0' && (s[1] == 'x' || s[1] == 'X') ? s + 2 : s;
}

// The check each number format makes before converting; maxHexDigits is 8
// for the 32-bit functions and 16 for the 64-bit ones.
bool passesCheck(const char *text, uint32_t format, std::size_t maxHexDigits) noexcept
{
    if (text == nullptr)
        return false;
    switch (format) {
    case kNumberDecimal:
    case kNumberDecimalToo: {
        const char *digits = text + (*text == '+' || *text == '-');
        return digits[digitRun(digits, isDecimalDigit)] == '\0';
    }
    case kNumberOctal: {
        const std::size_t n = digitRun(text, [](char c) { return c >= '0' && c <= '7'; });
        return n > 0 && text[n] == '\0';
    }
    case kNumberHex: {
        const char *digits = skipHexPrefix(text);
        const std::size_t n = digitRun(digits, [](char c) { return hexDigitValue(c) >= 0; });
        return n > 0 && n <= maxHexDigits && digits[n] == '\0';
    }
    default:
        return false;
    }
}

// passesCheck, reported through status: 0 when the text may be converted,
// 0x10F when it may not.
bool accepted(const char *text, uint32_t format, std::size_t maxHexDigits, uint32_t *status) noexcept
{
    const bool passes = passesCheck(text, format, maxHexDigits);
    setStatus(status, passes ? SM_STATUS_SUCCESS : SM_STATUS_INVALID_PARAMETER);
    return passes;
}

struct Reading {
    bool negative;
    uint64_t magnitude;  // saturates above 32 bits
};

// What a 32-bit strtol or strtoul sees in a checked text: its sign and the
// magnitude of its digits in the format's radix.
Reading readChecked(const char *text, uint32_t format) noexcept
{
    Reading reading{false, 0};
    if (*text == '+' || *text == '-')
        reading.negative = *text++ == '-';
    const uint32_t radix = format == kNumberOctal ? 8 : format == kNumberHex ? 16 : 10;
    if (format == kNumberHex)
        text = skipHexPrefix(text);
    for (; *text != '\0'; ++text)
        reading.magnitude = std::min<uint64_t>(reading.magnitude * radix + static_cast<uint64_t>(hexDigitValue(*text)),
                                               uint64_t{1} << 33);
    return reading;
}

}  // namespace

// ---- 64-bit decimal text ----------------------------------------------------

void uint64ToDecimal(char *dst, uint64_t value) noexcept
{
    char *p = dst;
    do {
        *p++ = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    *p = '\0';
    text::utf8Reverse(dst);
}

void int64ToDecimal(char *dst, int64_t value) noexcept
{
    if (value < 0) {
        *dst++ = '-';
        uint64ToDecimal(dst, 0 - static_cast<uint64_t>(value));
    } else {
        uint64ToDecimal(dst, static_cast<uint64_t>(value));
    }
}

namespace {

// Both decimal readings: white space, the sign, then digits while they last.
uint64_t accumulateDecimal(const char *text, bool acceptMinus, bool *negative) noexcept
{
    *negative = false;
    if (text == nullptr)
        return 0;
    while (std::isspace(static_cast<unsigned char>(*text)))
        ++text;
    if (*text == '-') {
        if (!acceptMinus)
            return 0;
        *negative = true;
        ++text;
    } else if (*text == '+') {
        ++text;
    }
    uint64_t value = 0;
    for (; isDecimalDigit(*text); ++text)
        value = value * 10 + static_cast<uint64_t>(*text - '0');
    return value;
}

}  // namespace

int64_t decimalToInt64(const char *text) noexcept
{
    bool negative = false;
    const uint64_t value = accumulateDecimal(text, true, &negative);
    return static_cast<int64_t>(negative ? 0 - value : value);
}

uint64_t decimalToUint64(const char *text) noexcept
{
    bool negative = false;
    return accumulateDecimal(text, false, &negative);
}

// ---- Integer, time and double to text ---------------------------------------

void int32ToRadixText(int32_t value, char *dst, uint32_t radix) noexcept
{
    const auto pattern = static_cast<uint32_t>(value);
    constexpr std::size_t kRoom = 33;  // 32 binary digits and the terminator
    std::to_chars_result result{dst, std::errc{}};
    switch (radix) {
    case 2:
        if (pattern != 0)
            result = std::to_chars(dst, dst + kRoom, pattern, 2);
        break;
    case 8:
    case 16:
        result = std::to_chars(dst, dst + kRoom, pattern, static_cast<int>(radix));
        break;
    default:
        result = std::to_chars(dst, dst + kRoom, value);
        break;
    }
    *result.ptr = '\0';
}

int32_t timeToText(const time_t *t, char *dst, uint32_t size) noexcept
{
    struct tm local {};
    if (t == nullptr || dst == nullptr || size == 0 || localtime_r(t, &local) == nullptr)
        return SM_STATUS_FAILURE;
    // ctime refuses years it cannot write in four digits.
    if (local.tm_year < -1900 || local.tm_year > 9999 - 1900)
        return SM_STATUS_FAILURE;
    static constexpr char kDays[] = "SunMonTueWedThuFriSat";
    static constexpr char kMonths[] = "JanFebMarAprMayJunJulAugSepOctNovDec";
    char text[32];
    format::formatText(text, sizeof text, "%.3s %.3s%3d %.2d:%.2d:%.2d %d", kDays + 3 * local.tm_wday,
                       kMonths + 3 * local.tm_mon, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
                       local.tm_year + 1900);
    const std::size_t n = std::min<std::size_t>(std::strlen(text), size - 1);
    std::memcpy(dst, text, n);
    dst[n] = '\0';
    return SM_STATUS_SUCCESS;
}

int32_t doubleToText(char *dst, uint32_t size, double value) noexcept
{
    return format::formatText(dst, size, "%.3f", value);
}

// ---- Text to numbers -------------------------------------------------------

int32_t textToInt32(const char *text, uint32_t format, uint32_t *status) noexcept
{
    if (!accepted(text, format, 8, status))
        return 0;
    const Reading r = readChecked(text, format);
    if (r.negative)
        return r.magnitude > uint64_t{1} << 31 ? INT32_MIN : static_cast<int32_t>(0 - r.magnitude);
    return r.magnitude > INT32_MAX ? INT32_MAX : static_cast<int32_t>(r.magnitude);
}

uint32_t textToUint32(const char *text, uint32_t format, uint32_t *status) noexcept
{
    if (!accepted(text, format, 8, status))
        return 0;
    const Reading r = readChecked(text, format);
    if (r.magnitude > UINT32_MAX)
        return UINT32_MAX;
    const auto magnitude = static_cast<uint32_t>(r.magnitude);
    return r.negative ? 0u - magnitude : magnitude;
}

int64_t textToInt64(const char *text, uint32_t format, uint32_t *status) noexcept
{
    if (format == kNumberOctal || format == kNumberHex) {
        setStatus(status, SM_STATUS_NOT_SERVED);
        return 0;
    }
    if (!accepted(text, format, 16, status))
        return 0;
    return decimalToInt64(text);
}

uint64_t textToUint64(const char *text, uint32_t format, uint32_t *status) noexcept
{
    if (format == kNumberOctal) {
        setStatus(status, SM_STATUS_NOT_SERVED);
        return 0;
    }
    if (!accepted(text, format, 16, status))
        return 0;
    if (format != kNumberHex)
        return decimalToUint64(text);
    // The check allows at most 16 digits, so the value fits in one pass.
    uint64_t value = 0;
    for (const char *digit = skipHexPrefix(text); *digit != '\0'; ++digit)
        value = value << 4 | static_cast<uint64_t>(hexDigitValue(*digit));
    return value;
}

uint32_t textToBoolean(const char *text, uint32_t *status) noexcept
{
    if (text != nullptr && strcasecmp(text, "true") == 0) {
        setStatus(status, SM_STATUS_SUCCESS);
        return 1;
    }
    setStatus(status,
              text != nullptr && strcasecmp(text, "false") == 0 ? SM_STATUS_SUCCESS : SM_STATUS_INVALID_PARAMETER);
    return 0;
}

double textToDouble(const char *text) noexcept
{
    return text == nullptr ? 0.0 : std::strtod(text, nullptr);
}

double textToDoubleByFormat(const char *text, uint32_t format, uint32_t *status) noexcept
{
    uint32_t own = 0;
    const int64_t whole = textToInt64(text, format, &own);
    setStatus(status, SM_STATUS_SUCCESS);
    if (own != SM_STATUS_SUCCESS)
        return textToDouble(text);
    return static_cast<double>(whole);
}

}  // namespace zksupt::text_helpers
