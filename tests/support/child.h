// Runs part of a test in a forked child, so that it may change process-wide
// state (attach, detach, the environment) without touching the test
// program's own.
#pragma once

#include <functional>

namespace zksupt::test {

// Runs body in a child process and returns its exit status: body's result,
// or -1 when the child did not exit normally. A child still running after
// 120 seconds is killed (SIGKILL), so a hang fails the test instead of the
// run. body must not throw.
int runInChild(const std::function<int()> &body);

}  // namespace zksupt::test
