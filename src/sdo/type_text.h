// Typed values as text and back (the value-type codes 0-16 and their format
// flags), shared by the name-value parameters and the XML writer.
#pragma once

#include <cstdint>
#include <string_view>

namespace zksupt::sdo {

// The value-type codes (bits 0-7 of the type word) that code names.
enum TypeCode : uint32_t {
    kTypeBoolean = 0,
    kTypeInt64 = 4,
    kTypeUint16 = 6,
    kTypeUint32 = 7,
    kTypeTime = 11,
    kTypeBytes = 12,
    kTypeUtf8 = 13,
    kTypeUcs2 = 14,
    kTypeIpv4 = 15,
    kTypeHexBytes = 16,
    kLastTypeCode = 16,
};

// Format flags (bits 8-15 of the type word).
inline constexpr uint32_t kFlagBinary = 0x100;
inline constexpr uint32_t kFlagOctal = 0x200;
inline constexpr uint32_t kFlagDecimal = 0x300;
inline constexpr uint32_t kFlagHex = 0x400;

// SMXLTUTF8ToTypeValue: checks in the order null pointers, type code,
// capacity, text. *size ends holding the size the type needs (or produced).
int32_t textToTypeValue(const char *text, void *buffer, uint32_t *size, uint32_t type) noexcept;

// SMXLTTypeValueToUTF8: valueSize must cover the type's width (0x10F);
// *size below the type's minimum gives 0x10 with the minimum (or the exact
// need for the variable forms) stored. No value is read past valueSize: a
// UTF-8 or UCS-2 text without its terminator ends there.
int32_t typeValueToText(const void *value, uint32_t valueSize, char *text, uint32_t *size, uint32_t type) noexcept;

// The language code of a locale name of the table that code 10 uses
// ("en_US" 1033, "de" 1031, ...), compared exactly; false for a name the
// table does not hold.
bool localeCode(std::string_view name, uint32_t &code) noexcept;

}  // namespace zksupt::sdo
