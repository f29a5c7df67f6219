#include "log/limits.h"

#include <atomic>
#include <cstring>
#include <string_view>

#include <zksupt/status.h>

#include "containers/typed_tree.h"
#include "os/system_info.h"
#include "sync/mutex.h"

namespace zksupt::log {
namespace {

struct LimitEntry {
    LimitEntry(std::string_view text, uint32_t value) noexcept : limit(value)
    {
        std::memcpy(path, text.data(), text.size());
        path[text.size()] = '\0';
    }
    char path[kLimitPathSize];
    uint32_t limit;
};

struct ByPath {
    int operator()(std::string_view key, const LimitEntry &entry) const { return key.compare(entry.path); }
};

// Every member is guarded by tableMutex.
sync::Mutex tableMutex;
containers::Tree<LimitEntry, std::string_view, ByPath> table;
bool started = false;
// Read without the mutex by every record writer; written only by the start.
std::atomic<uint32_t> processDefault{kDefaultLimit};

int32_t insertLimit(std::string_view path, uint32_t limit) noexcept
{
    if (!started)
        return SM_STATUS_NOT_READY;
    const int32_t status = table.emplace(path, path, limit).status;
    if (status == SM_STATUS_DUPLICATE)
        return SM_STATUS_SUCCESS;  // the first limit set for a path stays
    if (status == SM_STATUS_NO_MEMORY)
        return SM_STATUS_NO_MEMORY;
    return status == SM_STATUS_SUCCESS ? SM_STATUS_SUCCESS : SM_STATUS_FAILURE;
}

}  // namespace

uint32_t defaultLimitFor(int32_t osType) noexcept
{
    return osType == os::kOsVmwareEsx ? kEsxDefaultLimit : kDefaultLimit;
}

bool startLogLimits() noexcept
{
    const sync::Guard guard(tableMutex);
    table.clear();
    processDefault.store(defaultLimitFor(os::osType()), std::memory_order_relaxed);
    started = true;
    return true;
}

void stopLogLimits() noexcept
{
    const sync::Guard guard(tableMutex);
    started = false;
    table.clear();
}

uint32_t defaultLimit() noexcept
{
    return processDefault.load(std::memory_order_relaxed);
}

int32_t setLogMaxSize(const char *path, uint32_t limit, int32_t lockFlag) noexcept
{
    if (path == nullptr || limit < defaultLimit() || limit > kLimitUpperBound)
        return SM_STATUS_INVALID_PARAMETER;
    const std::size_t length = strnlen(path, kLimitPathSize);
    if (length == 0 || length >= kLimitPathSize)
        return SM_STATUS_INVALID_PARAMETER;
    const sync::Guard guard(tableMutex, lockFlag == 1);
    return insertLimit({path, length}, limit);
}

int32_t getLogMaxSize(const char *path, uint32_t *limit) noexcept
{
    if (path == nullptr || *path == '\0' || limit == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const sync::Guard guard(tableMutex);
    if (!started)
        return SM_STATUS_NOT_READY;
    if (const LimitEntry *entry = table.find(path); entry != nullptr) {
        *limit = entry->limit;
        return SM_STATUS_SUCCESS;
    }
    // A path too long for the table keeps no entry, but still has the default.
    *limit = defaultLimit();
    setLogMaxSize(path, *limit, 0);
    return SM_STATUS_SUCCESS;
}

}  // namespace zksupt::log
