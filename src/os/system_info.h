// What the library tells about the system it runs on: the operating-system
// type, a waiting console key and the long-file-name switch.
#pragma once

#include <cstdint>

namespace zksupt::os {

// Operating-system type codes.
inline constexpr int32_t kOsLinux = 3;
inline constexpr int32_t kOsVmwareEsx = 4;

// kOsVmwareEsx when the kernel is named "VMkernel" (in any case), else kOsLinux.
int32_t osTypeOf(const char *kernelName) noexcept;
// The running system's type from uname; kOsLinux when uname fails.
int32_t osType() noexcept;

// 1 when standard input can be read without blocking, 0 otherwise and on
// error. Reads nothing.
int32_t keyWaiting() noexcept;

// File names are always long here: switching them on or off does nothing
// and succeeds.
int32_t switchLongFileNames() noexcept;

}  // namespace zksupt::os
