#include "format/engine_lock.h"

#include <atomic>

namespace zksupt::format {
namespace {

// The library's unnamed mutex: it exists before any attach and after the
// last detach, so a call that raced a stop still unlocks what it locked.
sync::Mutex engineMutex;
// Whether calls take the mutex; read by every call, so atomic.
std::atomic<bool> ready{false};
// Written only by module start and stop.
bool started = false;

}  // namespace

bool startEngine() noexcept
{
    if (!started) {
        started = true;
        ready.store(true, std::memory_order_release);
    }
    return ready.load(std::memory_order_relaxed);
}

void stopEngine() noexcept
{
    if (started) {
        started = false;
        ready.store(false, std::memory_order_release);
    }
}

sync::Guard lockEngine() noexcept
{
    return sync::Guard(engineMutex, ready.load(std::memory_order_acquire));
}

}  // namespace zksupt::format
