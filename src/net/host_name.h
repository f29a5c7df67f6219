// The host's name and its DNS suffix.
#pragma once

#include <cstdint>

#include <zksupt/types.h>

namespace zksupt::net {

// SMGetIPHostName: the name cut to *size - 1 bytes, as gethostname leaves it
// in a buffer of that capacity; *size gets the stored length + 1. There is no
// byte to put a name in for *size 0: then 0x10 and the whole name's size.
int32_t hostName(char *buffer, uint32_t *size) noexcept;

// SMUCS2GetIPHostName: the name cut to 63 bytes, converted under the UTF-8 to
// UCS-2 converter's rules (*size in bytes, a null buffer asks for the size).
int32_t hostNameUcs2(ucs2 *buffer, uint32_t *size) noexcept;

// SMGetDNSSuffixNameName: the suffix of the host's official name.
int32_t dnsSuffix(char *buffer, uint32_t *size) noexcept;

// The suffix of an official name: its text after the first ".", or the empty
// text when there is none, under the network functions' size rule (a null
// buffer asks for the size: frame::NullBuffer::sizeQuery).
int32_t dnsSuffixOf(const char *officialName, char *buffer, uint32_t *size) noexcept;

}  // namespace zksupt::net
