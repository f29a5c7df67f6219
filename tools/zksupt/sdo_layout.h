// The layout of the SDO binary forms as the tool reads them from untrusted
// files: header fields, index slots, and a structural check that every
// offset and length stays inside its block before any library call reads it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace zktool::sdo {

constexpr size_t kHeaderSize = 8;
constexpr size_t kSlotSize = 8;
constexpr uint8_t kBaseNested = 12;  // a nested binary object or array, stored as a value
constexpr uint8_t kArrayFlag = 0x10;
constexpr uint8_t kStoredOutOfLine = 0x04;

// Fields are in host byte order with no alignment.
inline uint16_t load16(const unsigned char *p)
{
    uint16_t value;
    std::memcpy(&value, p, sizeof value);
    return value;
}

inline bool isObject(const unsigned char *p, size_t length)
{
    return length >= 4 && std::memcmp(p, "SDOB", 4) == 0;
}
inline bool isArray(const unsigned char *p, size_t length)
{
    return length >= 4 && std::memcmp(p, "SDAB", 4) == 0;
}

// True when the block at p (at most available bytes) is a well-formed binary
// object or array, nested values included; otherwise where names the first
// fault with its offset counted from origin.
bool checkBlock(const unsigned char *p, size_t available, size_t origin, std::string &where);

}  // namespace zktool::sdo
