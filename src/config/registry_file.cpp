#include "config/registry_file.h"

#include <array>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace zksupt::config {
namespace {

// A plain array, not a std::string: it must be usable from the load
// constructor, whatever the order in which static objects are built.
char chosenPath[PATH_MAX];

}  // namespace

const char *firstExisting(std::span<const char *const> candidates)
{
    for (const char *candidate : candidates) {
        if (candidate != nullptr && access(candidate, F_OK) == 0)
            return candidate;
    }
    return nullptr;
}

bool chooseRegistryFile()
{
    chosenPath[0] = '\0';
    const char *chosen = nullptr;
    if (const char *override = secure_getenv(kRegistryOverrideVariable)) {
        const std::array<const char *, 1> only{override};
        chosen = firstExisting(only);
    } else {
        const std::array<const char *, 2> fixed{kSystemRegistryFile, kVendorRegistryFile};
        chosen = firstExisting(fixed);
    }
    if (chosen == nullptr || std::strlen(chosen) >= sizeof chosenPath)
        return false;
    std::strcpy(chosenPath, chosen);
    return true;
}

const char *registryFilePath()
{
    return chosenPath[0] != '\0' ? chosenPath : nullptr;
}

}  // namespace zksupt::config
