// The format engine's one process-wide lock, held for the whole of every
// formatting call, and module 7 of the library, which provides it. Calls made
// while the module is not started run without it.
#pragma once

#include "sync/mutex.h"

namespace zksupt::format {

// Module start: makes the lock ready (on the first start only) and reports
// whether it is. Module stop: retires it. The loader serialises both.
bool startEngine() noexcept;
void stopEngine() noexcept;

// The engine's lock for one call: held while the module is started, nothing
// otherwise.
sync::Guard lockEngine() noexcept;

}  // namespace zksupt::format
