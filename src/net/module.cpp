#include "net/module.h"

#include <algorithm>
#include <atomic>

#include <zksupt/status.h>

namespace zksupt::net {
namespace {

// Read by every call on any thread, so atomic; written by start only.
std::atomic<int16_t> readyFlag{0};
// Written by start and stop, which the loader serialises.
std::atomic<bool> startedFlag{false};

// Sockets need no set-up on Linux; other platforms of the suite had one.
bool platformSetUp() noexcept
{
    return true;
}

}  // namespace

bool startNetwork() noexcept
{
    if (readyFlag.load(std::memory_order_acquire) == 0 && platformSetUp())
        readyFlag.store(1, std::memory_order_release);
    startedFlag.store(true, std::memory_order_relaxed);
    return networkReady();
}

void stopNetwork() noexcept
{
    startedFlag.store(false, std::memory_order_relaxed);
}

bool networkReady() noexcept
{
    return readyFlag.load(std::memory_order_acquire) != 0;
}

bool networkStarted() noexcept
{
    return startedFlag.load(std::memory_order_relaxed);
}

int32_t checkCall(std::initializer_list<const void *> required) noexcept
{
    if (!networkReady())
        return SM_STATUS_NOT_READY;
    if (std::find(required.begin(), required.end(), nullptr) != required.end())
        return SM_STATUS_BAD_ARGUMENT;
    return SM_STATUS_SUCCESS;
}

}  // namespace zksupt::net
