// The language of the process, from the environment variable LANG, and the
// files translated into it.
#pragma once

#include <cstdint>

namespace zksupt::config {

// SMGetLocalLanguageID: LANG without its codeset and modifier ("de_DE" of
// "de_DE.UTF-8@euro") as the code of the type/value text's locale table,
// else its first two letters' code; 1033 when LANG is unset, empty, "C",
// "POSIX" or names no language of the table. LANG is read on every call.
uint32_t localLanguageId() noexcept;

// SMGetLocalizedPathFileName: the first existing file of
// directory/<ll_CC>/fileName, directory/<ll>/fileName and directory/fileName,
// the language forms taken from LANG ("de_DE" and "de" of "de_DE.UTF-8");
// without a language only the last. 0 with the path, 0x100 when none
// exists, 0x10 with the needed size (also for a null buffer), 0x10F for a
// null directory, file name or size.
int32_t localizedPathFileName(const char *directory, const char *fileName, char *buffer, uint32_t *size) noexcept;

}  // namespace zksupt::config
