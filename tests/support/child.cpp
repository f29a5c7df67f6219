#include "support/child.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace zksupt::test {
namespace {

// Far more than any body needs, even under an emulator; a child still running
// then is hung, and is killed so that the test fails instead of waiting.
constexpr auto kChildBound = std::chrono::minutes(5);

}  // namespace

int runInChild(const std::function<int()> &body)
{
    const ChildEnd end = runInChildBounded(body, kChildBound);
    return end.finished && WIFEXITED(end.status) ? WEXITSTATUS(end.status) : -1;
}

int startChild(const std::function<int()> &body)
{
    const pid_t pid = fork();
    if (pid == 0)
        _exit(body());
    return pid;
}

ChildEnd waitForChild(int pid, std::chrono::seconds bound)
{
    if (pid < 0)
        return {false, 0};
    const auto deadline = std::chrono::steady_clock::now() + bound;
    int status = 0;
    while (std::chrono::steady_clock::now() < deadline) {
        const pid_t ended = waitpid(pid, &status, WNOHANG);
        if (ended == pid)
            return {true, status};
        if (ended < 0)
            return {false, 0};
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    kill(pid, SIGKILL);
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return {false, status};
}

ChildEnd runInChildBounded(const std::function<int()> &body, std::chrono::seconds bound)
{
    return waitForChild(startChild(body), bound);
}

bool succeeded(const ChildEnd &end)
{
    return end.finished && WIFEXITED(end.status) && WEXITSTATUS(end.status) == 0;
}

}  // namespace zksupt::test
