// Values as the tests compare them: the bytes of a number in host order, and
// UCS-2 and byte strings in blocks of exactly their size, so that the
// sanitizer build catches any read past a terminator.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <zksupt/types.h>

namespace zksupt::test {

using Bytes = std::vector<uint8_t>;

// The bytes of a value in host order.
template <class T> Bytes bytesOf(T value)
{
    Bytes bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

// A UCS-2 string and its terminator.
inline std::vector<ucs2> wide(std::u16string_view text)
{
    std::vector<ucs2> units(text.size() + 1);  // zeroed: the last is the terminator
    std::copy(text.begin(), text.end(), units.begin());
    return units;
}

// The units of a UCS-2 string before its terminator.
inline std::u16string units(const ucs2 *s)
{
    std::u16string text;
    for (; *s != 0; ++s)
        text.push_back(static_cast<char16_t>(*s));
    return text;
}

// A byte string and its terminator.
inline std::vector<char> narrow(std::string_view text)
{
    std::vector<char> bytes(text.size() + 1);
    std::copy(text.begin(), text.end(), bytes.begin());
    return bytes;
}

}  // namespace zksupt::test
