#include "os/system_info.h"

#include <strings.h>
#include <sys/select.h>
#include <sys/utsname.h>

#include <zksupt/status.h>

namespace zksupt::os {

int32_t osTypeOf(const char *kernelName) noexcept
{
    return ::strcasecmp(kernelName, "VMkernel") == 0 ? kOsVmwareEsx : kOsLinux;
}

int32_t osType() noexcept
{
    utsname system{};
    if (::uname(&system) != 0)
        return kOsLinux;
    return osTypeOf(system.sysname);
}

int32_t keyWaiting() noexcept
{
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(0, &readable);
    timeval noWait{};
    return ::select(1, &readable, nullptr, nullptr, &noWait) > 0 && FD_ISSET(0, &readable) ? 1 : 0;
}

int32_t switchLongFileNames() noexcept
{
    return SM_STATUS_SUCCESS;
}

}  // namespace zksupt::os
