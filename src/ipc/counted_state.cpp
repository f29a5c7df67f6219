#include "ipc/counted_state.h"

#include <zksupt/status.h>

#include "ipc/registry.h"
#include "ipc/semaphore_set.h"

namespace zksupt::ipc {

bool CountedState::create(const char *keyName, int32_t setSize, int32_t initial, int32_t permission) noexcept
{
    if (keyName == nullptr) {
        unnamed = sync::Semaphore::create(static_cast<uint32_t>(initial));
        return unnamed != nullptr;
    }
    const uint32_t key = keyOf(keyName);
    setId = key != 0 ? createSet(key, setSize, initial, permission) : 0;
    return setId != 0;
}

bool CountedState::open(const char *keyName) noexcept
{
    const uint32_t key = keyOf(keyName);
    setId = key != 0 ? openSet(key) : 0;
    return setId != 0;
}

void CountedState::remove() noexcept
{
    if (unnamed != nullptr)
        sync::Semaphore::destroy(unnamed);
    else
        removeSet(setId);
    unnamed = nullptr;
    setId = 0;
}

int32_t CountedState::wait(int32_t timeoutMs) noexcept
{
    return unnamed != nullptr ? unnamed->wait(timeoutMs) : waitSet(setId, timeoutMs, false);
}

int32_t CountedState::post(uint32_t count) noexcept
{
    return unnamed != nullptr ? unnamed->post(count) : postSet(setId, count);
}

int32_t CountedState::reset() noexcept
{
    if (unnamed == nullptr)
        return resetSet(setId);
    unnamed->drain();
    return SM_STATUS_SUCCESS;
}

int32_t CountedState::value() noexcept
{
    return unnamed != nullptr ? unnamed->value() : setValue(setId);
}

}  // namespace zksupt::ipc
