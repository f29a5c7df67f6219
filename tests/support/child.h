// Runs a piece of a test in a forked child, so that it may change
// process-wide state (attach, detach, the environment) without touching the
// test program's own.
#pragma once

#include <chrono>
#include <functional>

namespace zksupt::test {

// Runs body in a child process and returns its exit status: body's result,
// or -1 when the child did not exit normally or was killed after running far
// longer than any test needs. body must not throw.
int runInChild(const std::function<int()> &body);

// How a child of runInChildBounded ended.
struct ChildEnd {
    bool finished;  // false: still running at the bound, so it was killed
    int status;     // the waitpid status of a finished child
};

// Runs body in a child process (its result is the exit code) and waits for
// it at most `bound`; a child still running then is killed with SIGKILL and
// reaped, so a hung child fails a test instead of hanging it. body must not
// throw.
ChildEnd runInChildBounded(const std::function<int()> &body, std::chrono::seconds bound);

// The two halves of runInChildBounded, for children that run side by side:
// startChild forks one running body (-1 when fork fails), waitForChild
// waits for it at most `bound` and kills and reaps it after that.
int startChild(const std::function<int()> &body);
ChildEnd waitForChild(int pid, std::chrono::seconds bound);

// Whether a child ended by returning 0.
bool succeeded(const ChildEnd &end);

}  // namespace zksupt::test
