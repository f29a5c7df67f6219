#include "config/pid_path.h"

#include <string>

#include <zksupt/status.h>

#include "config/path_table.h"
#include "file/process_files.h"

namespace zksupt::config {
namespace {

constexpr int kQueries = 3;

}  // namespace

int32_t pathByProcessIdAndType(uint32_t productID, uint32_t pathType, const char *baseName, char *buffer,
                               uint32_t *size) noexcept
{
    if (baseName == nullptr || size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    try {
        // The first query asks for the directory's size. The table may be
        // rebuilt between two queries, so a path that grew is asked again.
        std::string directory;
        uint32_t directorySize = 0;
        int32_t status = pathByProductAndType(static_cast<int32_t>(productID), pathType, nullptr, &directorySize);
        for (int attempt = 0; attempt < kQueries && status == SM_STATUS_BUFFER_TOO_SMALL; ++attempt) {
            directory.assign(directorySize, '\0');
            status = pathByProductAndType(static_cast<int32_t>(productID), pathType, directory.data(), &directorySize);
        }
        if (status != SM_STATUS_SUCCESS)
            return status;
        return file::pathByProcessId(directory.c_str(), baseName, buffer, size);
    } catch (...) {
        return SM_STATUS_NO_MEMORY;
    }
}

}  // namespace zksupt::config
