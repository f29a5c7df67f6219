// Reading the key file: the names of one of its sections.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include "frame/owned.h"

namespace zksupt::ipc {

// The key names of a section: NUL-terminated texts ended by an empty one.
struct NameList {
    frame::Owned<char> names;
    uint32_t size;   // of the whole list, the closing NUL included
    int32_t status;  // SUCCESS, or what the INI engine refused the listing with

    // Calls visit(std::string_view) for each name. The list is walked to its
    // size, so that a line with an empty key does not end it early.
    template <class Visit> void forEach(Visit visit) const
    {
        if (!names || size == 0)
            return;
        const char *end = names.get() + size - 1;
        for (const char *name = names.get(); name < end; name += std::strlen(name) + 1)
            visit(std::string_view(name));
    }
};

// Lists a section of the key file into a buffer of `initial` bytes, grown
// once to the size the engine reports when that is too small.
NameList readSectionNames(const char *section, uint32_t initial) noexcept;

}  // namespace zksupt::ipc
