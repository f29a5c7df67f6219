#include "os/environment.h"

#include "frame/bounds_checked.h"
#include "frame/owned.h"

namespace zksupt::os {

char *duplicateEnvironmentValue(const char *name, uint32_t *size) noexcept
{
    uint32_t needed = 0;
    if (frame::getenvS(&needed, nullptr, 0, name) != 0 || needed == 0)
        return nullptr;
    frame::Owned<char> copy = frame::allocateOwned<char>(needed);
    if (!copy)
        return nullptr;
    // The variable may have changed since it was measured; the copy holds
    // what was read now.
    uint32_t copied = 0;
    if (frame::getenvS(&copied, copy.get(), needed, name) != 0 || copied == 0)
        return nullptr;
    if (size != nullptr)
        *size = copied;
    return copy.release();
}

}  // namespace zksupt::os
