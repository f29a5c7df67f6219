#include "config/ini_values.h"

#include <cctype>
#include <cstring>
#include <memory>
#include <new>

#include <zksupt/status.h>

#include "config/ini.h"
#include "format/engine.h"
#include "frame/owned.h"
#include "frame/size_out.h"
#include "frame/unaligned.h"
#include "text_helpers/byte_text.h"
#include "text_helpers/number_text.h"

namespace zksupt::config {
namespace {

constexpr uint32_t kByteListLimit = 2048;

// Large enough for "%.8f" of any double.
template <class... Values> std::string formatted(const char *format, Values... values)
{
    char text[400];
    format::formatText(text, sizeof text, format, values...);
    return text;
}

// A number stored into the caller's value, *size the bytes stored.
template <class T> void store(void *value, uint32_t *size, T v) noexcept
{
    frame::storeAs(value, v);
    *size = sizeof v;
}

// What "%ld" or "%lu" of scanf reads: white space, a sign, the digits.
std::string numberPrefix(const char *text)
{
    while (std::isspace(static_cast<unsigned char>(*text)))
        ++text;
    std::size_t n = *text == '+' || *text == '-';
    while (std::isdigit(static_cast<unsigned char>(text[n])))
        ++n;
    return std::string(text, n);
}

// The first word of the text, ended by a blank, tab, CR or LF.
std::string firstWord(const char *text)
{
    const std::string_view all(text);
    const std::size_t start = all.find_first_not_of(" \t\r\n");
    if (start == std::string_view::npos)
        return {};
    return std::string(all.substr(start, all.find_first_of(" \t\r\n", start) - start));
}

}  // namespace

uint32_t ucs2Size(const void *units, uint32_t limit) noexcept
{
    const auto *bytes = static_cast<const uint8_t *>(units);
    for (uint32_t at = 0; at + 1 < limit; at += 2) {
        if (frame::loadAs<ucs2>(bytes + at) == 0)
            return at + 2;
    }
    return 0;
}

uint32_t iniTypeWidth(uint32_t type) noexcept
{
    switch (type) {
    case kIniBoolean:
        return 2;
    case kIniUint32:
    case kIniInt32:
        return 4;
    case kIniUint64:
    case kIniInt64:
    case kIniDouble:
        return 8;
    default:
        return 0;
    }
}

int32_t encodeIniValue(uint32_t type, const void *value, uint32_t size, std::string &text)
{
    if (value == nullptr)
        return SM_STATUS_BAD_LENGTH;
    if (type == kIniUcs2 || type == kIniBinary) {
        if (size < 1 || size > kByteListLimit)
            return SM_STATUS_BAD_LENGTH;
        if (type == kIniUcs2 && size != ucs2Size(value, size))
            return SM_STATUS_BAD_LENGTH;
        uint32_t length = size;
        const frame::Owned<char> list{text_helpers::byteListText(static_cast<const uint8_t *>(value), &length)};
        if (!list)
            return SM_STATUS_NO_MEMORY;
        text = list.get();
        return SM_STATUS_SUCCESS;
    }
    // The numbers' sizes are checked as they always were: a boolean needs 2
    // bytes, the 32-bit numbers more than 3, the 64-bit ones more than 7.
    if (size < (type == kIniBoolean ? 2 : iniTypeWidth(type)))
        return SM_STATUS_BAD_LENGTH;
    char digits[24];
    switch (type) {
    case kIniBoolean:
        text = frame::loadAs<uint16_t>(value) == 1 ? "TRUE" : "FALSE";
        break;
    case kIniUint32:
        text = formatted("%lu", frame::loadAs<uint32_t>(value));
        break;
    case kIniInt32:
        text = formatted("%ld", frame::loadAs<int32_t>(value));
        break;
    case kIniUint64:
        text_helpers::uint64ToDecimal(digits, frame::loadAs<uint64_t>(value));
        text = digits;
        break;
    case kIniInt64:
        text_helpers::int64ToDecimal(digits, frame::loadAs<int64_t>(value));
        text = digits;
        break;
    default:
        text = formatted("%.8f", frame::loadAs<double>(value));
        break;
    }
    return SM_STATUS_SUCCESS;
}

int32_t decodeIniValue(uint32_t type, char *text, uint32_t length, void *value, uint32_t *size) noexcept
{
    try {
        switch (type) {
        case kIniBoolean: {
            uint32_t status = 0;
            const uint32_t truth = text_helpers::textToBoolean(firstWord(text).c_str(), &status);
            if (status != SM_STATUS_SUCCESS)
                return SM_STATUS_BAD_LENGTH;
            store(value, size, static_cast<uint16_t>(truth));
            return SM_STATUS_SUCCESS;
        }
        case kIniUint32:
            store(value, size,
                  text_helpers::textToUint32(numberPrefix(text).c_str(), text_helpers::kNumberDecimal, nullptr));
            return SM_STATUS_SUCCESS;
        case kIniInt32:
            store(value, size,
                  text_helpers::textToInt32(numberPrefix(text).c_str(), text_helpers::kNumberDecimal, nullptr));
            return SM_STATUS_SUCCESS;
        case kIniUint64:
            store(value, size, text_helpers::decimalToUint64(text));
            return SM_STATUS_SUCCESS;
        case kIniInt64:
            store(value, size, text_helpers::decimalToInt64(text));
            return SM_STATUS_SUCCESS;
        case kIniDouble:
            store(value, size, text_helpers::textToDouble(text));
            return SM_STATUS_SUCCESS;
        default:
            break;
        }
    } catch (const std::bad_alloc &) {
        return SM_STATUS_NO_MEMORY;
    }
    uint32_t count = length + 1;
    const frame::Owned<uint8_t> bytes{text_helpers::byteListParse(text, &count)};
    if (!bytes)
        return SM_STATUS_FAILURE;
    if (count == 0)
        return SM_STATUS_BAD_LENGTH;
    return frame::copyOutBytes(value, size, bytes.get(), count);
}

}  // namespace zksupt::config
