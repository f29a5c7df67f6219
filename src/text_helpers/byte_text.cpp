// Binary values as text: byte lists ("0x01,0xFF") and hex strings ("01FF"),
// and their parsers.
#include "text_helpers/byte_text.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>

#include "frame/memory.h"
#include "frame/owned.h"
#include "text_helpers/hex_digits.h"

namespace zksupt::text_helpers {
namespace {

constexpr uint32_t kByteListWidth = 5;  // "0x" two digits ','

// The end of the text: its terminator or size bytes, whichever comes first.
const char *textEnd(const char *text, uint32_t size) noexcept
{
    const void *nul = std::memchr(text, 0, size);
    return nul != nullptr ? static_cast<const char *>(nul) : text + size;
}

// A value above 255: no bytes at all.
uint8_t *fail(uint32_t *len) noexcept
{
    *len = 0;
    return nullptr;
}

}  // namespace

bool scanHex(const char *p, const char *end, uint32_t *value) noexcept
{
    while (p < end && std::isspace(static_cast<unsigned char>(*p)))
        ++p;
    bool negative = false;
    if (p < end && (*p == '+' || *p == '-'))
        negative = *p++ == '-';
    bool any = false;
    if (end - p >= 2 && p[0] == '0' && (p[1] == 'x' || p[1] == 'X')) {
        any = true;  // the '0' is a digit even when no other follows
        p += 2;
    }
    uint64_t magnitude = 0;
    for (int digit; p < end && (digit = hexDigitValue(*p)) >= 0; ++p) {
        any = true;
        magnitude = std::min<uint64_t>(magnitude * 16 + static_cast<uint64_t>(digit), uint64_t{1} << 32);
    }
    if (!any)
        return false;
    if (magnitude > UINT32_MAX)
        *value = UINT32_MAX;
    else
        *value = negative ? 0u - static_cast<uint32_t>(magnitude) : static_cast<uint32_t>(magnitude);
    return true;
}

char *byteListText(const uint8_t *data, uint32_t *len) noexcept
{
    if (data == nullptr || len == nullptr || *len > (UINT32_MAX - 1) / kByteListWidth)
        return nullptr;
    const uint32_t count = *len;
    auto *text = static_cast<char *>(frame::allocate(count * kByteListWidth + 1));
    if (text == nullptr)
        return nullptr;
    char *out = text;
    for (uint32_t i = 0; i < count; ++i, out += kByteListWidth) {
        out[0] = '0';
        out[1] = 'x';
        writeHexDigits(out + 2, data[i], 2);
        out[4] = ',';
    }
    if (count == 0) {
        *text = '\0';
        *len = 1;
    } else {
        out[-1] = '\0';
        *len = count * kByteListWidth;
    }
    return text;
}

uint8_t *byteListParse(char *text, uint32_t *len) noexcept
{
    if (text == nullptr || len == nullptr || *len % kByteListWidth != 0)
        return nullptr;
    const uint32_t capacity = *len / kByteListWidth;
    frame::Owned<uint8_t> bytes = frame::allocateOwned<uint8_t>(capacity == 0 ? 1 : capacity);
    if (bytes == nullptr)
        return nullptr;
    char *const end = const_cast<char *>(textEnd(text, *len));
    uint32_t stored = 0;
    for (char *p = text; stored < capacity; ++p) {
        while (p < end && *p == ',')
            ++p;
        if (p == end)
            break;
        char *tokenEnd = static_cast<char *>(std::memchr(p, ',', static_cast<std::size_t>(end - p)));
        if (tokenEnd == nullptr)
            tokenEnd = end;
        else
            *tokenEnd = '\0';
        uint32_t value = 0;
        if (!scanHex(p, tokenEnd, &value))
            break;
        if (value > 0xFF)
            return fail(len);
        bytes.get()[stored++] = static_cast<uint8_t>(value);
        p = tokenEnd;
        if (p == end)
            break;
    }
    *len = stored;
    return bytes.release();
}

char *hexStringText(const uint8_t *data, uint32_t *len) noexcept
{
    if (data == nullptr || len == nullptr || *len > (UINT32_MAX - 1) / 2)
        return nullptr;
    const uint32_t count = *len;
    auto *text = static_cast<char *>(frame::allocate(count * 2 + 1));
    if (text == nullptr)
        return nullptr;
    for (uint32_t i = 0; i < count; ++i)
        writeHexDigits(text + 2 * i, data[i], 2);
    text[count * 2] = '\0';
    *len = count * 2 + 1;
    return text;
}

uint8_t *hexStringParse(const char *text, uint32_t *len) noexcept
{
    if (text == nullptr || len == nullptr)
        return nullptr;
    frame::Owned<uint8_t> bytes = frame::allocateOwned<uint8_t>(*len / 2 + 1);
    if (bytes == nullptr)
        return nullptr;
    const char *const end = textEnd(text, *len);
    uint32_t stored = 0;
    for (const char *p = text; p < end; p += 2) {
        uint32_t value = 0;
        if (!scanHex(p, std::min(p + 2, end), &value))
            break;
        if (value > 0xFF)
            return fail(len);
        bytes.get()[stored++] = static_cast<uint8_t>(value);
    }
    *len = stored;
    return bytes.release();
}

}  // namespace zksupt::text_helpers
