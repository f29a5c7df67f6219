// Typed values as text and back.
#include "sdo/type_text.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <string_view>

#include <zksupt/status.h>

#include "format/engine.h"
#include "frame/owned.h"
#include "frame/size_out.h"
#include "frame/unaligned.h"
#include "net/address_text.h"
#include "text/convert.h"
#include "text_helpers/byte_text.h"
#include "text_helpers/hex_dump.h"
#include "text_helpers/number_text.h"

namespace zksupt::sdo {
namespace {

// Width in bytes of the fixed-size codes 0-11 and 15.
constexpr std::array<uint8_t, kLastTypeCode + 1> kWidth{2, 1, 2, 4, 8, 1, 2, 4, 8, 8, 4, 4, 0, 0, 0, 4, 0};

struct Locale {
    std::string_view name;
    uint32_t code;
};
constexpr std::array<Locale, 10> kLocales{{{"es", 1034},
                                           {"de", 1031},
                                           {"en_US", 1033},
                                           {"en_GB", 2057},
                                           {"fr", 1036},
                                           {"ja", 1041},
                                           {"ko", 2066},
                                           {"pt_BR", 1046},
                                           {"zh", 2052},
                                           {"zh_TW", 1028}}};

// Values of at most this many bytes fit the code-16 working area (two digits each and the terminator).
constexpr uint32_t kHexBytesLimit = 63;

// ---- Parsing ----------------------------------------------------------------

bool isSigned(uint32_t code) noexcept
{
    return code >= 1 && code <= 4;
}

// The flag as a number format of the text helpers; false for binary and unknown flags.
bool numberFormat(uint32_t flag, uint32_t *format) noexcept
{
    switch (flag) {
    case 0:
    case kFlagDecimal:
        *format = text_helpers::kNumberDecimal;
        return true;
    case kFlagOctal:
        *format = text_helpers::kNumberOctal;
        return true;
    case kFlagHex:
        *format = text_helpers::kNumberHex;
        return true;
    default:
        return false;
    }
}

// The helpers let an empty text and a lone sign through as 0; here they are no number.
bool hasDigits(const char *text, uint32_t format) noexcept
{
    if (format == text_helpers::kNumberDecimal)
        text += (*text == '+' || *text == '-');
    return *text != '\0';
}

// Codes 4 and 8: the text checked by the helpers for its radix (up to 16 hex digits),
// then read as the C library's 64-bit conversion reads it.
int32_t parse64(const char *text, uint32_t format, uint32_t code, void *buffer) noexcept
{
    uint32_t status = 0;
    if (format == text_helpers::kNumberOctal)
        text_helpers::textToUint32(text, format, &status);
    else
        text_helpers::textToUint64(text, format, &status);
    if (status != SM_STATUS_SUCCESS)
        return SM_STATUS_INVALID_PARAMETER;
    const int radix = format == text_helpers::kNumberOctal ? 8 : format == text_helpers::kNumberHex ? 16 : 10;
    if (code == 4)
        frame::storeAs<int64_t>(buffer, std::strtoll(text, nullptr, radix));
    else
        frame::storeAs<uint64_t>(buffer, std::strtoull(text, nullptr, radix));
    return SM_STATUS_SUCCESS;
}

// The low width bytes of a 32-bit value, in host order: the same bytes for a
// signed and an unsigned type of that width.
void storeNarrowed(void *buffer, uint32_t width, uint32_t value) noexcept
{
    if (width == 1)
        frame::storeAs(buffer, static_cast<uint8_t>(value));
    else if (width == 2)
        frame::storeAs(buffer, static_cast<uint16_t>(value));
    else
        frame::storeAs(buffer, value);
}

int32_t parseInteger(const char *text, uint32_t code, uint32_t flag, void *buffer) noexcept
{
    uint32_t format = 0;
    if (!numberFormat(flag, &format) || !hasDigits(text, format))
        return SM_STATUS_INVALID_PARAMETER;
    if (code == 4 || code == 8)
        return parse64(text, format, code, buffer);
    uint32_t status = 0;
    if (isSigned(code)) {
        const int32_t value = text_helpers::textToInt32(text, format, &status);
        if (status != SM_STATUS_SUCCESS)
            return SM_STATUS_INVALID_PARAMETER;
        const int32_t limit = code == 1 ? INT8_MAX : INT16_MAX;
        if (code != 3 && value > limit)
            return SM_STATUS_VALUE_TOO_LARGE;
        if (code != 3 && value < -limit - 1)
            return SM_STATUS_VALUE_TOO_SMALL;
        storeNarrowed(buffer, kWidth[code], static_cast<uint32_t>(value));
        return SM_STATUS_SUCCESS;
    }
    const uint32_t value = text_helpers::textToUint32(text, format, &status);
    if (status != SM_STATUS_SUCCESS)
        return SM_STATUS_INVALID_PARAMETER;
    if ((code == 5 && value > UINT8_MAX) || (code == 6 && value > UINT16_MAX))
        return SM_STATUS_VALUE_TOO_LARGE;
    storeNarrowed(buffer, kWidth[code], value);
    return SM_STATUS_SUCCESS;
}

// Byte strings: a digit string (two characters a byte, an odd last one alone)
// or a comma-separated list of "%x" pieces. Null when a piece has no value or
// a value above 255; *count gets the bytes.
frame::Owned<uint8_t> parseBytes(const char *text, bool list, uint32_t *count) noexcept
{
    const auto length = static_cast<uint32_t>(std::strlen(text));
    if (!list) {
        uint32_t n = length;
        frame::Owned<uint8_t> bytes{text_helpers::hexStringParse(text, &n)};
        if (bytes == nullptr || n != (length + 1) / 2)
            return nullptr;
        *count = n;
        return bytes;
    }
    const auto pieces = static_cast<uint32_t>(std::count(text, text + length, ',')) + 1;
    frame::Owned<uint8_t> bytes = frame::allocateOwned<uint8_t>(pieces);
    if (bytes == nullptr)
        return nullptr;
    const char *p = text;
    for (uint32_t i = 0; i < pieces; ++i) {
        const char *end = std::strchr(p, ',');
        if (end == nullptr)
            end = text + length;
        uint32_t value = 0;
        if (!text_helpers::scanHex(p, end, &value) || value > UINT8_MAX)
            return nullptr;
        bytes.get()[i] = static_cast<uint8_t>(value);
        p = end + 1;
    }
    *count = pieces;
    return bytes;
}

// The fixed-width codes once the capacity is known to hold their value.
int32_t parseFixed(const char *text, void *buffer, uint32_t code, uint32_t flag) noexcept
{
    uint32_t status = 0;
    switch (code) {
    case kTypeBoolean: {
        const uint32_t value = text_helpers::textToBoolean(text, &status);
        if (status != SM_STATUS_SUCCESS)
            return SM_STATUS_INVALID_PARAMETER;
        frame::storeAs(buffer, static_cast<uint16_t>(value));
        return SM_STATUS_SUCCESS;
    }
    case 9:
        frame::storeAs(buffer, text_helpers::textToDoubleByFormat(text, text_helpers::kNumberDecimal, &status));
        return SM_STATUS_SUCCESS;
    case 10: {
        uint32_t language = 0;
        if (!localeCode(text, language))
            return SM_STATUS_FAILURE;
        frame::storeAs(buffer, language);
        return SM_STATUS_SUCCESS;
    }
    case kTypeIpv4: {
        uint32_t address = 0;
        const int32_t result = net::ipv4FromText(text, &address);
        if (result == SM_STATUS_SUCCESS)
            frame::storeAs(buffer, address);
        return result;
    }
    default:
        return parseInteger(text, code, flag, buffer);
    }
}

// The buffer is null only with a capacity of 0 (checked first), which a
// byte string of no bytes fits: hence NullBuffer::capacityOnly there.
int32_t parseVariable(const char *text, void *buffer, uint32_t *size, uint32_t code, uint32_t flag) noexcept
{
    if (code == kTypeUtf8)
        return frame::copyOutText(static_cast<char *>(buffer), size, text);
    if (code == kTypeUcs2) {
        uint32_t need = 0;
        if (const int32_t status = text::utf8ToUcs2(nullptr, &need, text); status != SM_STATUS_SUCCESS)
            return status;
        if (const int32_t status = frame::reserveOut(buffer, size, need); status != SM_STATUS_SUCCESS)
            return status;
        return text::utf8ToUcs2(static_cast<ucs2 *>(buffer), size, text);
    }
    if (code == kTypeBytes && flag != 0 && flag != kFlagHex)
        return SM_STATUS_BAD_ARGUMENT;
    uint32_t count = 0;
    const frame::Owned<uint8_t> bytes = parseBytes(text, code == kTypeBytes && flag == kFlagHex, &count);
    if (bytes == nullptr)
        return SM_STATUS_FAILURE;
    return frame::copyOutBytes(buffer, size, bytes.get(), count, frame::NullBuffer::capacityOnly);
}

// ---- Formatting -------------------------------------------------------------

// Codes 1-3 sign-extended, 5-7 zero-extended, as 32 bits.
uint32_t load32(const void *value, uint32_t code) noexcept
{
    switch (code) {
    case 1:
        return static_cast<uint32_t>(static_cast<int32_t>(frame::loadAs<int8_t>(value)));
    case 2:
        return static_cast<uint32_t>(static_cast<int32_t>(frame::loadAs<int16_t>(value)));
    case 5:
        return frame::loadAs<uint8_t>(value);
    case 6:
        return frame::loadAs<uint16_t>(value);
    default:
        return frame::loadAs<uint32_t>(value);
    }
}

// Text of the integer codes 1-3 and 5-7 into work (at least 33 bytes).
void integerText(uint32_t bits, uint32_t code, uint32_t flag, char *work) noexcept
{
    switch (flag) {
    case kFlagBinary:
        text_helpers::int32ToRadixText(static_cast<int32_t>(bits), work, 2);
        break;
    case kFlagOctal:
        format::formatText(work, 33, "%o", bits);
        break;
    case kFlagHex:
        format::formatText(work, 33, "%#x", bits);
        break;
    default:
        if (isSigned(code))
            format::formatText(work, 33, "%d", static_cast<int32_t>(bits));
        else
            format::formatText(work, 33, "%u", bits);
        break;
    }
}

// The smallest capacity each fixed code accepts before it formats.
uint32_t minimumCapacity(uint32_t code, uint32_t flag, const void *value) noexcept
{
    switch (code) {
    case kTypeBoolean:
        return frame::loadAs<uint16_t>(value) == 1 ? 5 : 6;
    case 1:
    case 2:
    case 3:
        return flag == kFlagBinary ? 33 : 17;
    case 5:
    case 6:
    case 7:
        return flag == kFlagBinary ? 33 : 16;
    case 4:
        return 33;
    case 8:
    case 9:
        return 32;
    case 10:
        return 16;
    case kTypeTime:
        return 64;
    default:
        return 0;
    }
}

int32_t formatFixed(const void *value, char *text, uint32_t *size, uint32_t code, uint32_t flag) noexcept
{
    // Room for any of these texts; "%.3f" of the largest double takes 313 bytes.
    char work[330];
    switch (code) {
    case kTypeBoolean:
        return frame::copyOutText(text, size, frame::loadAs<uint16_t>(value) == 1 ? "true" : "false");
    case 4:
        text_helpers::int64ToDecimal(work, frame::loadAs<int64_t>(value));
        break;
    case 8:
        text_helpers::uint64ToDecimal(work, frame::loadAs<uint64_t>(value));
        break;
    case 9:
        text_helpers::doubleToText(work, sizeof work, frame::loadAs<double>(value));
        break;
    case 10: {
        const uint32_t id = frame::loadAs<uint32_t>(value);
        const auto *it = std::find_if(kLocales.begin(), kLocales.end(), [id](const Locale &l) { return l.code == id; });
        const std::string_view name = it == kLocales.end() ? kLocales[2].name : it->name;
        return frame::copyOutText(text, size, name);
    }
    case kTypeTime: {
        const time_t t = frame::loadAs<int32_t>(value);
        if (text_helpers::timeToText(&t, work, sizeof work) != SM_STATUS_SUCCESS)
            return SM_STATUS_FAILURE;
        break;
    }
    default:
        integerText(load32(value, code), code, flag, work);
        break;
    }
    return frame::copyOutText(text, size, work);
}

// The UCS-2 text of a value of size bytes. A value from elsewhere (another
// process, a binary block) need not hold a terminator within its size: its
// text then ends at the size, and is read from a terminated copy of its whole
// units made in copy. A size of 0 stands for a terminated string, as for
// UTF-8 text. Null when the copy cannot be had.
const ucs2 *ucs2Within(const void *value, uint32_t size, frame::Owned<ucs2> &copy) noexcept
{
    const auto *bytes = static_cast<const uint8_t *>(value);
    const uint32_t units = size / sizeof(ucs2);
    bool terminated = size == 0;
    for (uint32_t i = 0; i < units && !terminated; ++i)
        terminated = frame::loadAs<ucs2>(bytes + i * sizeof(ucs2)) == 0;
    if (terminated)
        return static_cast<const ucs2 *>(value);
    copy = frame::allocateOwned<ucs2>((units + 1) * sizeof(ucs2));
    if (copy == nullptr)
        return nullptr;
    std::memcpy(copy.get(), bytes, units * sizeof(ucs2));
    copy.get()[units] = 0;
    return copy.get();
}

int32_t formatVariable(const void *value, uint32_t valueSize, char *text, uint32_t *size, uint32_t code,
                       uint32_t flag) noexcept
{
    const auto *bytes = static_cast<const uint8_t *>(value);
    if (code == kTypeUtf8) {
        const auto *s = static_cast<const char *>(value);
        return frame::copyOutText(text, size, {s, valueSize == 0 ? std::strlen(s) : strnlen(s, valueSize)});
    }
    if (code == kTypeUcs2) {
        uint32_t need = 0;
        frame::Owned<ucs2> copy;
        const ucs2 *units = ucs2Within(value, valueSize, copy);
        if (units == nullptr)
            return SM_STATUS_NO_MEMORY;
        if (const int32_t status = text::ucs2ToUtf8(nullptr, &need, units); status != SM_STATUS_SUCCESS)
            return status;
        if (const int32_t status = frame::reserveOut(text, size, need); status != SM_STATUS_SUCCESS)
            return status;
        return text::ucs2ToUtf8(text, size, units);
    }
    if (code == kTypeIpv4)
        return net::ipv4ToText(frame::loadAs<uint32_t>(value), text, size);
    if (code == kTypeHexBytes && valueSize > kHexBytesLimit)
        return SM_STATUS_FAILURE;
    uint32_t length = valueSize;
    frame::Owned<char> produced;
    if (code == kTypeHexBytes || flag == 0)
        produced.reset(text_helpers::hexStringText(bytes, &length));
    else if (flag == kFlagHex)
        produced.reset(text_helpers::byteListText(bytes, &length));
    else if (flag == kFlagBinary)
        produced.reset(text_helpers::hexDumpText(bytes, &length, 0));
    else
        return SM_STATUS_BAD_ARGUMENT;
    if (produced == nullptr)
        return SM_STATUS_FAILURE;
    return frame::copyOutText(text, size, produced.get());
}

}  // namespace

bool localeCode(std::string_view name, uint32_t &code) noexcept
{
    const auto *it = std::find_if(kLocales.begin(), kLocales.end(), [name](const Locale &l) { return l.name == name; });
    if (it == kLocales.end())
        return false;
    code = it->code;
    return true;
}

int32_t textToTypeValue(const char *text, void *buffer, uint32_t *size, uint32_t type) noexcept
{
    if (text == nullptr || size == nullptr || (buffer == nullptr && *size != 0))
        return SM_STATUS_INVALID_PARAMETER;
    const uint32_t code = type & 0xFF;
    const uint32_t flag = type & 0xFF00;
    if (code > kLastTypeCode || code == kTypeTime)
        return SM_STATUS_BAD_ARGUMENT;
    if (kWidth[code] == 0)
        return parseVariable(text, buffer, size, code, flag);
    if (const int32_t status = frame::reserveOut(buffer, size, kWidth[code]); status != SM_STATUS_SUCCESS)
        return status;
    return parseFixed(text, buffer, code, flag);
}

int32_t typeValueToText(const void *value, uint32_t valueSize, char *text, uint32_t *size, uint32_t type) noexcept
{
    if (value == nullptr || size == nullptr || (text == nullptr && *size != 0))
        return SM_STATUS_INVALID_PARAMETER;
    const uint32_t code = type & 0xFF;
    const uint32_t flag = type & 0xFF00;
    if (code > kLastTypeCode)
        return SM_STATUS_BAD_ARGUMENT;
    if (valueSize < kWidth[code])
        return SM_STATUS_INVALID_PARAMETER;
    if (code == kTypeIpv4 || kWidth[code] == 0)
        return formatVariable(value, valueSize, text, size, code, flag);
    if (const int32_t status = frame::requireCapacity(size, minimumCapacity(code, flag, value));
        status != SM_STATUS_SUCCESS)
        return status;
    return formatFixed(value, text, size, code, flag);
}

}  // namespace zksupt::sdo
