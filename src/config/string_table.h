// Messages of the suite by numeric string ID, kept per language in INI
// string tables: "ASCII EN_US DEFAULT STRING ID SECTION" holds the English
// texts under language 0, "MISCELLANEOUS STRING ID SECTION" those of every
// other language, each under the key "%X:%X" of language and ID.
#pragma once

#include <cstdint>

#include <zksupt/types.h>

namespace zksupt::config {

// SMGetUTF8StrFromIDPathFile: the first line of the string's text in the
// table at path. Languages 0, 437 and 1033 (and a null language) mean the
// English section; a string missing in another language is looked up there
// too, and *language becomes 0. The result is the bytes copied with the
// terminator, or 0 when the text is missing or does not fit *size (a size
// query included); it is also stored in *size. A null path gives the text
// "Invalid Path File Name" in place of the string.
uint32_t stringFromIdPathFile(uint32_t id, uint32_t *language, const char *path, char *buffer, uint32_t *size) noexcept;

// SMGetUCS2StrFromID: the string from the suite's own table, zksdst32.ini
// in product 35's ini directory, as UCS-2, after the OEM remapping of the
// ID. The result (also stored in *size): the bytes converted, the bytes
// needed when *size is below twice the UTF-8 size, the UTF-8 size without
// a buffer, or 0.
uint32_t ucs2StringFromId(uint32_t id, uint32_t *language, ucs2 *buffer, uint32_t *size) noexcept;

}  // namespace zksupt::config
