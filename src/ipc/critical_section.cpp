#include "ipc/critical_section.h"

#include <cstdint>

#include <zksupt/status.h>

#include "containers/typed_tree.h"
#include "sync/mutex.h"

namespace zksupt::ipc {
namespace {

// One function currently being run or waited for; gone when no thread is
// inside or waiting any more.
struct Section {
    explicit Section(CriticalFunction f) noexcept : function(f) {}
    CriticalFunction function;
    int32_t useCount = 0;
    sync::Mutex mutex;
};

struct ByFunction {
    int operator()(CriticalFunction key, const Section &section) const
    {
        const auto a = reinterpret_cast<std::uintptr_t>(key);
        const auto b = reinterpret_cast<std::uintptr_t>(section.function);
        return a < b ? -1 : a > b ? 1 : 0;
    }
};

// Guarded by moduleMutex.
sync::Mutex moduleMutex;
containers::Tree<Section, CriticalFunction, ByFunction> sections;
bool started = false;

// The function's entry with one more user, made when missing; null with
// the status when it cannot be made or the module is stopped.
Section *enter(CriticalFunction function, int32_t &status) noexcept
{
    const sync::Guard guard(moduleMutex);
    if (!started) {
        status = SM_STATUS_INVALID_PARAMETER;
        return nullptr;
    }
    Section *section = sections.find(function);
    if (section == nullptr) {
        const auto inserted = sections.emplace(function, function);
        status = inserted.status;
        section = inserted.item;
        if (section == nullptr)
            return nullptr;
    }
    ++section->useCount;
    return section;
}

void leave(CriticalFunction function) noexcept
{
    const sync::Guard guard(moduleMutex);
    Section *section = sections.find(function);
    if (section != nullptr && --section->useCount <= 0)
        sections.erase(function);
}

}  // namespace

bool startCriticalSections() noexcept
{
    const sync::Guard guard(moduleMutex);
    sections.clear();
    started = true;
    return true;
}

void stopCriticalSections() noexcept
{
    const sync::Guard guard(moduleMutex);
    started = false;
    sections.clear();
}

int32_t executeCritical(CriticalFunction function, void *argument, int32_t timeoutMs) noexcept
{
    if (function == nullptr || timeoutMs != -1)
        return SM_STATUS_INVALID_PARAMETER;
    int32_t status = SM_STATUS_SUCCESS;
    Section *section = enter(function, status);
    if (section == nullptr)
        return status;
    {
        const sync::Guard guard(section->mutex);
        function(argument);
    }
    leave(function);
    return SM_STATUS_SUCCESS;
}

}  // namespace zksupt::ipc
