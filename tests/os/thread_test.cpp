// A thread kill ends the whole process; missing arguments are refused.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>

#include <zksupt/os.h>
#include <zksupt/status.h>

#include "support/child.h"

namespace {

TEST(Threads, RefusedArgumentsAndAKillThatEndsTheWholeProcess)
{
    EXPECT_EQ(SMThreadStart(nullptr, nullptr), nullptr);
    EXPECT_EQ(SMThreadStartAndRelease(nullptr, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMThreadStop(nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMThreadKill(nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMThreadSetName(nullptr), SM_STATUS_INVALID_PARAMETER);
    const zksupt::test::ChildEnd end = zksupt::test::runInChildBounded(
        [] {
            SMThread *thread = SMThreadStart(
                [](void *) {
                    for (;;)
                        pause();
                },
                nullptr);
            if (thread == nullptr)
                return 2;
            SMThreadKill(thread);
            sleep(60);
            return 3;  // still alive: the kill did not end the process
        },
        std::chrono::seconds(120));
    ASSERT_TRUE(end.finished);
    ASSERT_TRUE(WIFSIGNALED(end.status)) << "exit code " << WEXITSTATUS(end.status);
    EXPECT_EQ(WTERMSIG(end.status), SIGKILL);
}

}  // namespace
