// Single directory entries: existence, size and deletion.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include <zksupt/status.h>

#include "file/operations.h"
#include "file/stream.h"

namespace zksupt::file {

bool entryExists(const char *path) noexcept
{
    struct stat64 status;
    return ::lstat64(path, &status) == 0;
}

int32_t sizeOfFile(const char *path, uint32_t *size) noexcept
{
    if (size == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    *size = 0;
    if (path == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    const Stream stream{::fopen64(path, "rbe")};
    if (!stream)
        return SM_STATUS_FAILURE;
    // The size is where the end is; a stream that cannot seek stays at 0.
    (void)::fseeko64(stream.get(), 0, SEEK_END);
    const off64_t end = ::ftello64(stream.get());
    if (end < 0 || end > static_cast<off64_t>(UINT32_MAX))
        return SM_STATUS_FAILURE;
    *size = static_cast<uint32_t>(end);
    return SM_STATUS_SUCCESS;
}

int32_t deleteFile(const char *path) noexcept
{
    if (path == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    return ::unlink(path) == 0 ? SM_STATUS_SUCCESS : SM_STATUS_FAILURE;
}

}  // namespace zksupt::file
