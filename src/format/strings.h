// The conversions that print bytes: 'c', 's', 'S' and unknown characters.
#pragma once

#include <cstdint>

#include <zksupt/types.h>

#include "format/field.h"
#include "format/output.h"

namespace zksupt::format {

// length bytes, laid into the field.
void printBytes(Output &out, const Directive &d, const char *bytes, uint64_t length) noexcept;
// A string, or at most precision bytes of it (never reading further); a
// null pointer prints "(null)".
void printString(Output &out, const Directive &d, const char *s) noexcept;
// A UCS-2 string printed as printString prints its UTF-8 form. false when
// it cannot be converted or its buffer cannot be had: the output ends there.
bool printUcs2(Output &out, const Directive &d, const ucs2 *s) noexcept;

}  // namespace zksupt::format
