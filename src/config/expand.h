// Expansion of the install-path placeholder in callers' strings.
#pragma once

#include <cstdint>

namespace zksupt::config {

// Replaces the first "@qvinstallpath@" of input, in any case, by the suite's
// install path (SMExpandQvInstallPathString). *size is the capacity on entry
// and the result's size with its terminator on return.
int32_t expandInstallPath(const char *input, char *buffer, uint32_t *size) noexcept;

}  // namespace zksupt::config
