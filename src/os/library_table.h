// The process-wide table of shared libraries that several users in one
// process load and resolve through by file name (module 8 of the library).
// A library is loaded once, whoever asks first, and unloaded when its user
// count drops below 1; resolved symbols are kept per library, so the loader
// is asked once per symbol.
#pragma once

#include <cstdint>

#include "os/library.h"

namespace zksupt::os {

// Module start and stop. The table counts its starts; the last stop unloads
// every library still in it.
bool startLibraryTable() noexcept;
void stopLibraryTable() noexcept;

// Loads file for user (once per file; a user is listed once) and returns the
// address of symbol in it, or the library's record for a null symbol. Null
// for a null user or file, a file that does not load, a symbol that is not
// found, when memory runs out, or while the table is not started.
void *linkShared(const char *user, const char *file, const char *symbol) noexcept;
// Lets go of file for user: the user is taken off the list and the user
// count drops by one (also for a user that was not listed); below 1 the
// library is unloaded and its entry dropped. 0 (also for a file not in the
// table, or while the table is not started); FAILURE when the final unload
// fails; INVALID_PARAMETER for a null user or file.
int32_t unloadShared(const char *user, const char *file) noexcept;

// How the table asks the loader for a symbol it has not kept yet. Tests put
// a counting lookup in its place; returns the one it replaces.
using SymbolLookup = void *(*)(SMLibrary *library, const char *symbol) noexcept;
SymbolLookup replaceSymbolLookup(SymbolLookup lookup) noexcept;

}  // namespace zksupt::os
