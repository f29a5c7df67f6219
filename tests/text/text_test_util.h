// Helpers of the text tests. Strings live in blocks of exactly their size,
// so that the sanitizer build catches any read past a terminator.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <zksupt/types.h>

namespace zksupt::test {

// A UCS-2 string and its terminator.
inline std::vector<ucs2> wide(std::u16string_view text)
{
    std::vector<ucs2> units;
    units.reserve(text.size() + 1);
    units.assign(text.begin(), text.end());
    units.push_back(0);
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
    std::vector<char> bytes;
    bytes.reserve(text.size() + 1);
    bytes.assign(text.begin(), text.end());
    bytes.push_back('\0');
    return bytes;
}

}  // namespace zksupt::test
