#include "support/child.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zksupt::test {
namespace {

constexpr int kLongestRunMs = 120 * 1000;

}  // namespace

int runInChild(const std::function<int()> &body)
{
    const pid_t pid = fork();
    if (pid < 0)
        return -1;
    if (pid == 0)
        _exit(body());  // no atexit handlers, no gtest teardown in the child
    int status = 0;
    for (int waited = 0; waitpid(pid, &status, WNOHANG) == 0; waited += 10) {
        if (waited >= kLongestRunMs) {
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            return -1;
        }
        usleep(10 * 1000);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace zksupt::test
