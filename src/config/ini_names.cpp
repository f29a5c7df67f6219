// The plain INI entry points: bare file names under the ini directory of
// product 35.
#include <cstring>

#include <zksupt/status.h>

#include "config/ini.h"
#include "config/path_table.h"

namespace zksupt::config {
namespace {

constexpr uint32_t kDirectoryCapacity = 256;
constexpr std::size_t kPathCapacity = 256;

}  // namespace

int32_t iniPathOfName(const char *name, std::string &path)
{
    if (name == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    char directory[kDirectoryCapacity];
    uint32_t size = sizeof directory;
    if (pathByProductAndType(kMeridianProduct, kIniKind, directory, &size) != SM_STATUS_SUCCESS || *directory == '\0')
        return SM_STATUS_FAILURE;
    const std::size_t length = std::strlen(directory);
    if (length + 6 + std::strlen(name) > kPathCapacity)
        return SM_STATUS_BUFFER_TOO_SMALL;
    path.assign(directory).append("/ini/").append(name);
    return SM_STATUS_SUCCESS;
}

int32_t readNamedValue(const char *section, const char *key, uint32_t type, void *value, uint32_t *size,
                       const void *defaultValue, uint32_t defaultSize, const char *name, int16_t lockWait) noexcept
{
    try {
        std::string path;
        const int32_t status = iniPathOfName(name, path);
        return status != SM_STATUS_SUCCESS
                   ? status
                   : readValue(section, key, type, value, size, defaultValue, defaultSize, path.c_str(), lockWait);
    } catch (...) {
        return SM_STATUS_NO_MEMORY;
    }
}

int32_t writeNamedValue(const char *section, const char *key, uint32_t type, const void *value, uint32_t size,
                        const char *name, int16_t lockWait) noexcept
{
    try {
        std::string path;
        const int32_t status = iniPathOfName(name, path);
        return status != SM_STATUS_SUCCESS ? status
                                           : writeValue(section, key, type, value, size, path.c_str(), lockWait);
    } catch (...) {
        return SM_STATUS_NO_MEMORY;
    }
}

}  // namespace zksupt::config
