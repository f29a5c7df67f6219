// Module 3 of the library: the network-ready mark that every function of the
// subsystem checks before it does anything.
#pragma once

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

}  // namespace zksupt::net
