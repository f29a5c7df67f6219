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
    const pid_t pid = fork();
    if (pid < 0)
        return -1;
    if (pid == 0)
        _exit(body());  // no atexit handlers, no gtest teardown in the child
    int status = 0;
    const auto deadline = std::chrono::steady_clock::now() + kChildBound;
    for (;;) {
        const pid_t done = waitpid(pid, &status, WNOHANG);
        if (done == pid)
            break;
        if (done < 0 && errno != EINTR)
            return -1;
        if (std::chrono::steady_clock::now() > deadline) {
            kill(pid, SIGKILL);
            while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
            }
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace zksupt::test
