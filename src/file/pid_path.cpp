// File names that carry the calling process's ID, so that the processes of
// the suite each write their own file.
#include <unistd.h>

#include <string>

#include <zksupt/status.h>

#include "file/process_files.h"
#include "frame/size_out.h"

namespace zksupt::file {

int32_t pathByProcessId(const char *directory, const char *baseName, char *buffer, uint32_t *size) noexcept
{
    if (directory == nullptr || baseName == nullptr || size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    try {
        const std::string path = std::string(directory).append("/").append(baseName).append(".").append(
            std::to_string(static_cast<uint32_t>(::getpid())));
        return frame::copyOutText(buffer, size, path);
    } catch (...) {
        return SM_STATUS_NO_MEMORY;
    }
}

}  // namespace zksupt::file
