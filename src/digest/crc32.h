// CRC-32 over the reflected polynomial 0xEDB88320 (the checksum of zlib, PNG
// and Ethernet), and the library's older bitwise checksum of the same shape.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zksupt::digest {

inline constexpr uint32_t kCrc32Polynomial = 0xEDB88320;

// Continues a CRC-32: crc is the result over the bytes before (0 to start),
// the result is the CRC-32 of those bytes followed by these.
uint32_t crc32Update(uint32_t crc, const void *data, std::size_t length) noexcept;
// The same through sliced tables, eight bytes a step, on any processor: the
// whole job where carry-less multiply is missing, the tail of a buffer where
// it is not. Tests hold the two paths against each other.
uint32_t crc32UpdatePortable(uint32_t crc, const void *data, std::size_t length) noexcept;

// CRC-32 of length bytes.
uint32_t crc32OfBuffer(const void *data, uint32_t length) noexcept;
// CRC-32 of the bytes of a string before its terminator.
uint32_t crc32OfString(const char *text) noexcept;
// CRC-32 of a string with each byte first lowered by tolower of the calling
// thread's locale, so that names differing only in case hash alike.
uint32_t crc32OfStringNoCase(const char *text) noexcept;

// The library's bitwise checksum over total bytes (data's length bytes, then
// zeros). It is not CRC-32: each round tests the whole remaining byte, not one
// bit. Stored checksums depend on exactly this rule.
uint32_t generateCrc32(const uint8_t *data, uint32_t length, uint32_t total) noexcept;

// Module 9 of the library: the CRC-32 tables are compile-time constants, so
// there is nothing to build or free.
bool startCrcTable() noexcept;
void stopCrcTable() noexcept;

}  // namespace zksupt::digest
