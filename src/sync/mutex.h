// The library's unnamed mutex: a default-attribute pthread mutex that
// serialises the threads of one process. Every module's process-wide state
// sits behind one; the named mutex wraps one too, for its threads.
#pragma once

#include <pthread.h>

#include <cstdint>

namespace zksupt::sync {

class Mutex {
  public:
    // Constant-initialised and never destroyed: a Mutex at namespace scope
    // exists before the first attach and after the last detach, even when
    // the unload destructor runs after static objects are gone at exit. A
    // default-attribute mutex holds no resource that destroying would free.
    constexpr Mutex() noexcept = default;
    Mutex(const Mutex &) = delete;
    Mutex &operator=(const Mutex &) = delete;

    // Blocking lock and unlock, so std::lock_guard and std::unique_lock work.
    void lock() noexcept { ::pthread_mutex_lock(&mutex_); }
    void unlock() noexcept { ::pthread_mutex_unlock(&mutex_); }
    bool try_lock() noexcept { return ::pthread_mutex_trylock(&mutex_) == 0; }

    // Lock with a time-out in milliseconds: -1 blocks (a failing lock gives
    // FAILURE); otherwise tries under the poll counter's rule and gives
    // TIMEOUT when it runs out. SUCCESS once held.
    int32_t lock(int32_t timeoutMs) noexcept;

  private:
    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
};

// Holds a Mutex for a scope. A guard made with take false holds nothing: a
// module's lock that calls made while the module is stopped go without.
class Guard {
  public:
    explicit Guard(Mutex &mutex, bool take = true) noexcept : mutex_(take ? &mutex : nullptr)
    {
        if (mutex_ != nullptr)
            mutex_->lock();
    }
    ~Guard()
    {
        if (mutex_ != nullptr)
            mutex_->unlock();
    }
    Guard(const Guard &) = delete;
    Guard &operator=(const Guard &) = delete;

  private:
    Mutex *mutex_;
};

}  // namespace zksupt::sync
