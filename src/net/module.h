// Module 3 of the library: the network-ready mark that every function of the
// subsystem checks before it does anything.
#pragma once

#include <cstdint>
#include <initializer_list>

namespace zksupt::net {

// Module start: runs the platform's network set-up once per process and
// reports whether the network is ready. Module stop clears only the started
// mark: the set-up is never run again, so readiness stays.
bool startNetwork() noexcept;
void stopNetwork() noexcept;

// Whether the set-up has succeeded; false before the first start.
bool networkReady() noexcept;
// Whether the module is started (between a start and a stop).
bool networkStarted() noexcept;

// What every function checks first: 0x11 while the network is not ready,
// then 0x2 when one of its required pointers is null, else 0.
int32_t checkCall(std::initializer_list<const void *> required) noexcept;

}  // namespace zksupt::net
