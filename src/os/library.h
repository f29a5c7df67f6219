// Shared libraries through the dynamic loader: the library record callers
// hold, and the lookups through it.
#pragma once

#include <cstdint>

#include <zksupt/os.h>

// A loaded library, one block from the C allocator: the kind word of every
// handle of the library (0 for a library), the path it was loaded from (the
// text is stored right behind the record) and the loader's handle.
struct SMLibrary {
    uint32_t kind;
    char *path;
    void *handle;
};

namespace zksupt::os {

inline constexpr uint32_t kLibraryKind = 0;

// A record of the library kind with a loader handle.
bool isLibrary(const SMLibrary *library) noexcept;

// Loads the library at path with every symbol bound now; null when the path
// is null, the loader refuses it or memory runs out.
SMLibrary *loadLibrary(const char *path) noexcept;
// Closes the library and frees its record: 0; FAILURE when the loader refuses
// (the record is kept); INVALID_PARAMETER for null; BAD_OBJECT for a record
// that is not a library.
int32_t unloadLibrary(SMLibrary *library) noexcept;
// The address of a symbol of the library, or null when the loader reports
// an error, the record is null or not a library, or the symbol is null.
void *linkToExport(SMLibrary *library, const char *symbol) noexcept;
// Letting go of an address needs nothing from the loader; only the
// arguments are checked: INVALID_PARAMETER for null, BAD_OBJECT for a record
// that is not a library, else 0.
int32_t unlinkFromExport(SMLibrary *library, const void *address) noexcept;

}  // namespace zksupt::os
