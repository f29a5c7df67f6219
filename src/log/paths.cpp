#include "log/paths.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include <zksupt/status.h>

#include "config/path_table.h"
#include "config/products.h"
#include "file/operations.h"
#include "frame/size_out.h"

namespace zksupt::log {
namespace {

// The registry's log directory is fetched into this much room.
constexpr uint32_t kDirectorySize = 239;
constexpr uint32_t kLogPathKind = 8;
constexpr std::string_view kSubdirectory = "/log/";
constexpr std::string_view kTextLogName = "zksys32.log";
constexpr std::string_view kXmlLogName = "zksys32.xml";

}  // namespace

int32_t logPath(uint32_t target, char *buffer, uint32_t *size) noexcept
{
    if (target == 0)
        return SM_STATUS_BAD_ARGUMENT;
    if ((target & kTargetOs) != 0)
        return SM_STATUS_NOT_SERVED;  // the system log has no file
    if (size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (buffer == nullptr || *size < kLogPathSize) {
        *size = kLogPathSize;
        return SM_STATUS_BUFFER_TOO_SMALL;
    }
    char directory[kDirectorySize];
    uint32_t directorySize = sizeof directory;
    if (const int32_t status =
            config::pathByProductAndType(config::kMeridianProduct, kLogPathKind, directory, &directorySize);
        status != SM_STATUS_SUCCESS)
        return status;
    std::string_view name;
    if ((target & kTargetXml) != 0)
        name = kXmlLogName;
    else if ((target & kTargetText) != 0)
        name = kTextLogName;
    else
        return SM_STATUS_SUCCESS;
    // The directory takes at most 238 bytes, so the whole path fits in 256.
    const std::size_t length = std::strlen(directory);
    char *end = buffer;
    end = std::copy_n(directory, length, end);
    end = std::copy(kSubdirectory.begin(), kSubdirectory.end(), end);
    end = std::copy(name.begin(), name.end(), end);
    *end = '\0';
    *size = static_cast<uint32_t>(end - buffer + 1);
    return SM_STATUS_SUCCESS;
}

int32_t backupLogPath(uint32_t target, char *buffer, uint32_t *size) noexcept
{
    char path[kLogPathSize] = {};
    uint32_t pathSize = sizeof path;
    const int32_t status = logPath(target, path, &pathSize);
    if (status != SM_STATUS_SUCCESS || path[0] == '\0')
        return status;
    if (size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    backupPath(path, buffer, size);  // only the lookup's status is the answer
    return status;
}

int32_t backupPath(const char *path, char *buffer, uint32_t *size) noexcept
{
    const std::size_t length = path == nullptr ? 0 : std::strlen(path);
    if (length < 2 || size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const std::string_view whole(path, length);
    const int32_t status = frame::copyOutText(buffer, size, whole);
    if (status == SM_STATUS_SUCCESS)
        buffer[length - 1] = '_';
    return status;
}

bool backupNameOf(const char *path, FormedPath &out) noexcept
{
    uint32_t size = sizeof out.text;
    return backupPath(path, out.text, &size) == SM_STATUS_SUCCESS;
}

int32_t makeLogDirectory(const char *path) noexcept
{
    const char *slash = std::strrchr(path, '/');
    if (slash == nullptr || slash == path)
        return SM_STATUS_SUCCESS;  // the working directory or the root is there
    FormedPath directory;
    const std::size_t length = static_cast<std::size_t>(slash - path);
    if (length >= sizeof directory.text)
        return SM_STATUS_FAILURE;
    std::memcpy(directory.text, path, length);
    directory.text[length] = '\0';
    return file::makeDirectory(directory.text) == SM_STATUS_SUCCESS ? SM_STATUS_SUCCESS : SM_STATUS_FAILURE;
}

}  // namespace zksupt::log
