// Making and removing single directory levels.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include <zksupt/status.h>

#include "file/operations.h"

namespace zksupt::file {

int32_t makeDirectory(const char *path) noexcept
{
    if (path == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    // Whatever is already at the path counts as done: callers make the
    // directories they need before each use and do not care who made them.
    if (::mkdir(path, 0755) == 0 || errno == EEXIST || ::access(path, F_OK) == 0)
        return SM_STATUS_SUCCESS;
    return SM_STATUS_FAILURE;
}

int32_t removeDirectory(const char *path) noexcept
{
    if (path == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    if (::rmdir(path) == 0)
        return SM_STATUS_SUCCESS;
    switch (errno) {
    case ENOTEMPTY:
    case EEXIST:  // POSIX allows either for a directory that is not empty
        return SM_STATUS_BAD_OBJECT;
    case ENOENT:
        return SM_STATUS_NOT_FOUND;
    default:
        return SM_STATUS_FAILURE;
    }
}

}  // namespace zksupt::file
