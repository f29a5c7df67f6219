#include "format/engine_lock.h"

#include <atomic>
#include <mutex>

namespace zksupt::format {
namespace {

// A plain process-local mutex: constant-initialised, so it exists before
// any attach and after the last detach, and a call that raced a stop still
// unlocks what it locked.
std::mutex engineMutex;
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

EngineLock::EngineLock() noexcept : held_(ready.load(std::memory_order_acquire))
{
    if (held_)
        engineMutex.lock();
}

EngineLock::~EngineLock()
{
    if (held_)
        engineMutex.unlock();
}

}  // namespace zksupt::format
