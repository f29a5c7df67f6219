// The format engine's one process-wide lock, held for the whole of every
// formatting call, and module 7 of the library, which provides it. Calls made
// while the module is not started run without it.
#pragma once

namespace zksupt::format {

// Module start: makes the lock ready (on the first start only) and reports
// whether it is. Module stop: retires it. The loader serialises both.
bool startEngine() noexcept;
void stopEngine() noexcept;

// Holds the engine's lock for its lifetime, when the lock is ready.
class EngineLock {
  public:
    EngineLock() noexcept;
    ~EngineLock();
    EngineLock(const EngineLock &) = delete;
    EngineLock &operator=(const EngineLock &) = delete;

  private:
    bool held_;
};

}  // namespace zksupt::format
