#include "support/child.h"

#include <sys/wait.h>
#include <unistd.h>

namespace zksupt::test {

int runInChild(const std::function<int()> &body)
{
    const pid_t pid = fork();
    if (pid < 0)
        return -1;
    if (pid == 0)
        _exit(body());  // no atexit handlers, no gtest teardown in the child
    int status = 0;
    while (waitpid(pid, &status, 0) < 0) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace zksupt::test
