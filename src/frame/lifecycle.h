// The library's attach/detach counting and the start and stop of its modules
// (lifecycle.cpp); the library's own module table and lifecycle
// (modules.cpp).
#pragma once

#include <atomic>
#include <cstdint>
#include <span>

namespace zksupt::frame {

// One internal module. A start returns true on success. A slot whose
// subsystem is not built yet has no functions and is skipped.
struct Module {
    const char *name;
    bool (*start)();
    void (*stop)();
};

// The slot of a subsystem that is not built yet: it starts and stops nothing.
constexpr Module notBuiltYet(const char *name)
{
    return {name, nullptr, nullptr};
}

// Attach and detach as the loader runs them. The counts are plain integers:
// the dynamic loader serialises load and unload, and the modules' own locks
// are created during the first attach, before any other thread can call in.
class Lifecycle {
  public:
    explicit Lifecycle(std::span<const Module> modules) : modules_(modules) {}

    // Returns 1 when attached, 0 when starting the modules failed. A failed
    // attach leaves the attach count as it was.
    int attach();
    // Returns 1 when a matching attach was counted, else 0.
    int detach();

    int32_t attachCount() const { return attachCount_; }
    int32_t moduleStartCount() const { return moduleStartCount_; }
    int16_t unloading() const { return unloading_.load(std::memory_order_relaxed); }

  private:
    bool startModules();
    void stopModules();
    void stopFirst(std::size_t count);

    std::span<const Module> modules_;
    int32_t attachCount_ = 0;
    // Counts every attempt to start, including failed ones: after a failed
    // start the modules stay down and later attaches succeed without them.
    int32_t moduleStartCount_ = 0;
    // Written only by attach and detach, but read by waits on other threads.
    std::atomic<int16_t> unloading_{0};
};

// modules.cpp. The library's own lifecycle over its module table.
Lifecycle &library();

// modules.cpp. The unloading flag of the library: 1 from the last detach on. Waits that
// loop read it and give up when it is set.
int16_t unloading();

}  // namespace zksupt::frame
