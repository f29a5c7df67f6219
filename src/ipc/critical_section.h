// Critical sections (module 5): every thread that runs the same function
// through executeCritical runs it one at a time.
#pragma once

#include <cstdint>

namespace zksupt::ipc {

using CriticalFunction = int32_t (*)(void *);

bool startCriticalSections() noexcept;
void stopCriticalSections() noexcept;

// SMCriticalSectionExecute: calls function(argument) under the function's
// own mutex and returns 0 once it has run (its result is not passed on).
// Only time-out -1 is served; a null function, another time-out or a
// stopped module give INVALID_PARAMETER without calling it.
int32_t executeCritical(CriticalFunction function, void *argument, int32_t timeoutMs) noexcept;

}  // namespace zksupt::ipc
