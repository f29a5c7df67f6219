// Which product registry file this process reads, chosen at attach.
#pragma once

#include <span>

namespace zksupt::config {

// The two places an installation keeps its registry file, in order of preference.
inline constexpr const char *kSystemRegistryFile = "/etc/qvreg.cfg";
inline constexpr const char *kVendorRegistryFile = "/usr/lib/ext/vexa/qvreg.cfg";

// The environment variable that points a whole installation elsewhere (a
// sandbox, a test tree). Set-user-ID programs ignore it.
inline constexpr const char *kRegistryOverrideVariable = "ZKSUPT_REGISTRY";

// The first candidate that exists (access F_OK), or null.
const char *firstExisting(std::span<const char *const> candidates);

// Chooses the registry file for the process: the override alone when it is
// set, else the system file, else the vendor file. Returns false, leaving the
// path unset, when the choice finds no file. A later call chooses again.
bool chooseRegistryFile();

// The chosen registry file, or null when none was chosen.
const char *registryFilePath();

}  // namespace zksupt::config
