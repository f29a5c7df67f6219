// The permission argument of the named-object creators as a Unix mode.
#pragma once

#include <sys/types.h>

#include <cstdint>

namespace zksupt::lock {

// -1 gives 0664 and 0 gives 0600. Any other value packs three nibbles,
// owner in bits 24-27, group in 16-19, others in 8-11, each meaning bit 0
// all, bit 1 read, bit 2 write, bit 3 execute. Other bits are ignored.
mode_t modeOfPermission(int32_t permission) noexcept;

}  // namespace zksupt::lock
