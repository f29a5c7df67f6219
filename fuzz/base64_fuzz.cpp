// Any text through the Base64 decoder into a buffer of exactly the size it
// may fill, and any bytes through an encode/decode round trip.
#include <cstdint>
#include <cstring>
#include <vector>

#include "digest/base64.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto length = static_cast<uint32_t>(size);
    std::vector<uint8_t> decoded(3 * (length / 4) + 1);
    zksupt::digest::base64Decode(decoded.data(), reinterpret_cast<const char *>(data), length);

    // The encoder reads the byte after an incomplete last group: give it a
    // zero there, as a string's terminator would be, and it is standard Base64.
    std::vector<uint8_t> source(data, data + size);
    source.push_back(0);
    std::vector<char> text(4 * ((length + 2) / 3) + 1);
    zksupt::digest::base64Encode(text.data(), source.data(), length, nullptr);
    const auto textLength = static_cast<uint32_t>(std::strlen(text.data()));
    if (textLength != text.size() - 1)
        __builtin_trap();
    std::vector<uint8_t> back(3 * (textLength / 4) + 1);
    zksupt::digest::base64Decode(back.data(), text.data(), textLength);
    if (std::memcmp(back.data(), data, size) != 0)
        __builtin_trap();
    return 0;
}
