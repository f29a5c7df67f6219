// Helpers of the text tests: UCS-2 strings from char16_t literals, and byte
// strings held in heap blocks of their exact size, so that the sanitizer
// build catches any read past a terminator.
#pragma once

#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <zksupt/types.h>

namespace zksupt::test {

// A UCS-2 string with its terminator, in a block of exactly that size.
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

// A copy of bytes and a terminator in a block of exactly that size.
inline std::unique_ptr<char[]> exactCopy(std::string_view bytes)
{
    auto block = std::make_unique<char[]>(bytes.size() + 1);
    std::memcpy(block.get(), bytes.data(), bytes.size());
    block[bytes.size()] = '\0';
    return block;
}

}  // namespace zksupt::test
