#include "frame/lifecycle.h"

namespace zksupt::frame {

int Lifecycle::attach()
{
    if (attachCount_ < 1) {
        unloading_.store(0, std::memory_order_relaxed);
        if (!startModules())
            return 0;
    }
    ++attachCount_;
    return 1;
}

int Lifecycle::detach()
{
    if (attachCount_ < 1)
        return 0;
    if (attachCount_-- == 1) {
        unloading_.store(1, std::memory_order_relaxed);
        stopModules();
    }
    return 1;
}

bool Lifecycle::startModules()
{
    if (++moduleStartCount_ > 1)
        return true;
    for (std::size_t k = 0; k < modules_.size(); ++k) {
        const Module &module = modules_[k];
        if (module.start != nullptr && !module.start()) {
            stopFirst(k);
            return false;  // the start count keeps its increment
        }
    }
    return true;
}

void Lifecycle::stopModules()
{
    if (--moduleStartCount_ < 1)
        stopFirst(modules_.size());
}

// Stops modules count-1 down to 0.
void Lifecycle::stopFirst(std::size_t count)
{
    while (count > 0) {
        const Module &module = modules_[--count];
        if (module.stop != nullptr)
            module.stop();
    }
}

}  // namespace zksupt::frame
