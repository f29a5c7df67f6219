#include "ipc/registry.h"

#include <climits>
#include <cstring>
#include <string_view>

#include "config/registry_file.h"
#include "config/registry_reader.h"
#include "ipc/semaphore_list.h"
#include "lock/object_name.h"

namespace zksupt::ipc {
namespace {

// Written only by the module's start and stop.
char keyFile[PATH_MAX];
char keyFileLock[PATH_MAX];

// Joins parts into out; false when they do not fit.
bool join(char (&out)[PATH_MAX], std::initializer_list<std::string_view> parts) noexcept
{
    std::size_t length = 0;
    for (const std::string_view part : parts) {
        if (length + part.size() >= sizeof out) {
            out[0] = '\0';
            return false;
        }
        std::memcpy(out + length, part.data(), part.size());
        length += part.size();
    }
    out[length] = '\0';
    return true;
}

// The var-data directory as the registry file names it for keellib, else
// for fenx; empty when it names none.
bool readVarDataDirectory(char (&out)[PATH_MAX]) noexcept
{
    try {
        config::Registry registry;
        const char *file = config::registryFilePath();
        if (file == nullptr || !registry.load(file))
            return false;
        std::string_view directory = registry.find("keellib.vardatapath");
        if (directory.empty())
            directory = registry.find("fenx.vardatapath");
        return !directory.empty() && join(out, {directory});
    } catch (...) {
        return false;
    }
}

}  // namespace

bool startRegistry() noexcept
{
    char varData[PATH_MAX];
    char directory[PATH_MAX];
    if (!readVarDataDirectory(varData) || !join(directory, {varData, "/", ".ipc"}) ||
        !join(keyFile, {directory, "/", ".lxsuptIPCini"}) || !join(keyFileLock, {keyFile, "Sem"}) ||
        !lock::setIpcDirectory(directory)) {
        stopRegistry();
        return false;
    }
    removeStaleSets();
    return true;
}

void stopRegistry() noexcept
{
    keyFile[0] = '\0';
    keyFileLock[0] = '\0';
    lock::clearIpcDirectory();
}

const char *keyFilePath() noexcept
{
    return keyFile[0] != '\0' ? keyFile : nullptr;
}

const char *keyFileLockPath() noexcept
{
    return keyFileLock[0] != '\0' ? keyFileLock : nullptr;
}

}  // namespace zksupt::ipc
