// Any text through the value-text parser for every type code and format
// flag: a parse never writes past the capacity it was given nor a print past
// its buffer, and without a flag a printed value that reads back prints the
// same text again.
#include <cstdint>
#include <cstring>
#include <string>

#include "file_installation.h"
#include "sdo/type_text.h"

namespace {

namespace sdo = zksupt::sdo;
using zksupt::fuzz::check;

constexpr uint32_t kCapacity = 256;
constexpr uint8_t kCanary = 0xA5;

// The value of text parsed into a buffer of kCapacity bytes; its size, or 0
// when the parser refused the text.
uint32_t parse(const std::string &text, uint32_t type, uint8_t (&value)[kCapacity + 8])
{
    std::memset(value, kCanary, sizeof value);
    uint32_t size = kCapacity;
    const int32_t status = sdo::textToTypeValue(text.c_str(), value, &size, type);
    for (uint32_t at = kCapacity; at < sizeof value; ++at)
        check(value[at] == kCanary);
    if (status != 0)
        return 0;
    check(size <= kCapacity);
    return size;
}

// The text of a value; empty when it cannot be printed.
std::string print(const uint8_t *value, uint32_t size, uint32_t type)
{
    char text[4 * kCapacity + 64];
    std::memset(text, kCanary, sizeof text);
    uint32_t textSize = sizeof text - 8;
    if (sdo::typeValueToText(value, size, text, &textSize, type) != 0)
        return {};
    check(textSize >= 1 && textSize <= sizeof text - 8 && text[textSize - 1] == '\0');
    check(static_cast<uint8_t>(text[sizeof text - 1]) == kCanary);
    return std::string(text, textSize - 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1 || size > 1024)
        return 0;
    const uint32_t type = (data[0] % (sdo::kLastTypeCode + 1)) | ((data[0] >> 5) % 5) * 0x100;
    const std::string text(reinterpret_cast<const char *>(data + 1), size - 1);
    const std::string cut = text.substr(0, text.find('\0'));

    uint8_t value[kCapacity + 8];
    const uint32_t parsed = parse(cut, type, value);
    if (parsed == 0)
        return 0;
    const std::string printed = print(value, parsed, type);
    if (printed.empty())
        return 0;
    // Without a format flag the printed form of most types reads back; where
    // it does, it is a fixed point. (The flags are not symmetric: a 64-bit
    // value read as hexadecimal prints in decimal, a byte dump does not read;
    // locale codes, times and UCS-2 made of broken UTF-8 print as text of
    // their own.)
    uint8_t again[kCapacity + 8];
    const uint32_t reparsed = parse(printed, type, again);
    const uint32_t code = type & 0xFF;
    // Locale names, ctime, lenient UCS-2, and doubles (negative zero prints
    // without its sign while a tiny negative prints "-0.000").
    const bool textOnly = code == 9 || code == 10 || code == 11 || code == 14;
    if ((type & 0xFF00) == 0 && !textOnly && reparsed != 0)
        check(print(again, reparsed, type) == printed);
    return 0;
}
