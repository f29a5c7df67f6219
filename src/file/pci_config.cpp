// PCI configuration space as the kernel shows it under sysfs.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include <zksupt/status.h>

#include "file/descriptor.h"
#include "file/process_files.h"

namespace zksupt::file {
namespace {

constexpr uint32_t kLastDevice = 31;
constexpr uint32_t kLastFunction = 7;

}  // namespace

int32_t readPciConfig(const char *root, uint32_t domain, uint32_t bus, uint32_t device, uint32_t function,
                      uint32_t offset, void *buffer, uint32_t *size) noexcept
{
    if (buffer == nullptr || size == nullptr || device > kLastDevice || function > kLastFunction)
        return SM_STATUS_INVALID_PARAMETER;
    char path[512];
    const int length =
        std::snprintf(path, sizeof path, "%s/%04x:%02x:%02x.%x/config", root, domain, bus, device, function);
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof path)
        return SM_STATUS_NOT_FOUND;
    const Descriptor fd{::open(path, O_RDONLY | O_CLOEXEC)};
    if (!fd)
        return errno == ENOENT || errno == ENOTDIR ? SM_STATUS_NOT_FOUND : SM_STATUS_FAILURE;
    auto *bytes = static_cast<unsigned char *>(buffer);
    uint32_t got = 0;
    while (got < *size) {
        const ssize_t read = ::pread64(fd.get(), bytes + got, *size - got, static_cast<off64_t>(offset) + got);
        if (read < 0 && errno == EINTR)
            continue;
        if (read < 0)
            return SM_STATUS_FAILURE;
        if (read == 0)
            break;
        got += static_cast<uint32_t>(read);
    }
    *size = got;
    return SM_STATUS_SUCCESS;
}

}  // namespace zksupt::file
