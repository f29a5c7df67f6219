// Runs a piece of a test in a forked child, so that it may change
// process-wide state (attach, detach, the environment) without touching the
// test program's own.
#pragma once

#include <functional>

namespace zksupt::test {

// Runs body in a child process and returns its exit status: body's result,
// or -1 when the child did not exit normally or was killed after running far
// longer than any test needs. body must not throw.
int runInChild(const std::function<int()> &body);

}  // namespace zksupt::test
