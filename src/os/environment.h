// Copies of the process's environment for callers.
#pragma once

#include <cstdint>

namespace zksupt::os {

// A malloc'ed copy of the variable's value, with its size (NUL included)
// stored in *size when size is not null; null, *size untouched, when the
// name is null, the variable is not set or memory runs out. An empty
// variable gives "" and size 1.
char *duplicateEnvironmentValue(const char *name, uint32_t *size) noexcept;

}  // namespace zksupt::os
