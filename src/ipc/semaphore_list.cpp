#include "ipc/semaphore_list.h"

#include <sys/sem.h>
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <cstring>

#include <zksupt/status.h>

#include "config/ini.h"
#include "ipc/key_file.h"
#include "ipc/registry.h"

namespace zksupt::ipc {
namespace {

// The list is read whole, however long; this is the first try.
constexpr uint32_t kListBuffer = 8193;

bool processRuns(uint64_t pid) noexcept
{
    char directory[32];
    std::snprintf(directory, sizeof directory, "/proc/%llu", static_cast<unsigned long long>(pid));
    return ::access(directory, F_OK) == 0;
}

}  // namespace

void recordPrivateSet(int32_t id) noexcept
{
    char key[16];
    std::snprintf(key, sizeof key, "%d", id);
    const uint64_t owner = static_cast<uint64_t>(::getpid());
    config::writeValue(kSemaphoreListSection, key, config::kIniUint64, &owner, sizeof owner, keyFilePath(), 1);
}

void forgetSet(int32_t id) noexcept
{
    char key[16];
    std::snprintf(key, sizeof key, "%u", static_cast<uint32_t>(id));
    config::writeValue(kSemaphoreListSection, key, config::kIniText, nullptr, 0, keyFilePath(), 1);
}

void removeStaleSets() noexcept
{
    const NameList list = readSectionNames(kSemaphoreListSection, kListBuffer);
    list.forEach([](std::string_view name) {
        char key[24];  // an identifier's decimal text fits; longer names are no identifiers
        if (name.size() >= sizeof key)
            return;
        std::memcpy(key, name.data(), name.size());
        key[name.size()] = '\0';
        uint64_t owner = 0;
        uint32_t size = sizeof owner;
        if (config::readValue(kSemaphoreListSection, key, config::kIniUint64, &owner, &size, nullptr, 0, keyFilePath(),
                              1) != SM_STATUS_SUCCESS ||
            processRuns(owner))
            return;
        int32_t id = 0;
        const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), id);
        if (error != std::errc{} || ::semctl(id, 0, IPC_RMID) != 0)
            return;
        config::writeValue(kSemaphoreListSection, key, config::kIniText, nullptr, 0, keyFilePath(), 1);
    });
}

}  // namespace zksupt::ipc
