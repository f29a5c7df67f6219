#include "lock/permission.h"

namespace zksupt::lock {
namespace {

// One nibble as the mode bits of its class, whose read bit is `read` (0400
// for the owner, 040 for the group, 04 for others).
mode_t classMode(uint32_t nibble, mode_t read) noexcept
{
    const mode_t write = read >> 1;
    const mode_t execute = read >> 2;
    if ((nibble & 0x1) != 0)
        return read | write | execute;
    return ((nibble & 0x2) != 0 ? read : 0) | ((nibble & 0x4) != 0 ? write : 0) | ((nibble & 0x8) != 0 ? execute : 0);
}

}  // namespace

mode_t modeOfPermission(int32_t permission) noexcept
{
    if (permission == -1)
        return 0664;
    if (permission == 0)
        return 0600;
    const auto bits = static_cast<uint32_t>(permission);
    return classMode((bits >> 24) & 0xF, 0400) | classMode((bits >> 16) & 0xF, 040) | classMode((bits >> 8) & 0xF, 04);
}

}  // namespace zksupt::lock
