// Caller threads: start and join with the library stack and names, the
// thread kill that ends the process, and refused arguments.
#include <gtest/gtest.h>

#include <pthread.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <string>
#include <thread>

#include <zksupt/os.h>
#include <zksupt/status.h>

#include "support/child.h"

namespace {

constexpr auto kBound = std::chrono::seconds(60);

// What a test thread saw of itself; it then waits until the test lets it go.
struct Worker {
    const char *name = nullptr;
    std::promise<void> started, released;
    pid_t tid = 0;
    std::size_t stackSize = 0;
    int detachState = -1;
};

void work(void *argument)
{
    auto *worker = static_cast<Worker *>(argument);
    if (worker->name != nullptr)
        SMThreadSetName(worker->name);
    pthread_attr_t attributes;
    if (pthread_getattr_np(SMThreadGetID(), &attributes) == 0) {
        pthread_attr_getstacksize(&attributes, &worker->stackSize);
        pthread_attr_getdetachstate(&attributes, &worker->detachState);
        pthread_attr_destroy(&attributes);
    }
    worker->tid = static_cast<pid_t>(syscall(SYS_gettid));
    std::future<void> released = worker->released.get_future();
    worker->started.set_value();
    released.wait_for(kBound);
}

// Whether the thread is gone from the process; an emulator may take a moment
// after the join to retire its host thread, so this waits a bounded while.
bool ended(pid_t tid)
{
    const std::string task = "/proc/self/task/" + std::to_string(tid);
    for (int waited = 0; waited < 5000 && std::filesystem::exists(task); ++waited)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return !std::filesystem::exists(task);
}

TEST(Threads, StartedThreadIsNamedJoinableWithTheLibraryStackAndStopJoinsIt)
{
    Worker worker;
    worker.name = "zksupt-worker-with-a-long-name";
    SMThread *thread = SMThreadStart(work, &worker);
    ASSERT_NE(thread, nullptr);
    ASSERT_EQ(worker.started.get_future().wait_for(kBound), std::future_status::ready);
#if defined(__SANITIZE_THREAD__)
    EXPECT_GE(worker.stackSize, 0x20000u);  // the thread sanitizer enlarges every stack
#else
    EXPECT_EQ(worker.stackSize, 0x20000u);
#endif
    EXPECT_EQ(worker.detachState, PTHREAD_CREATE_JOINABLE);
    std::string comm;  // the kernel keeps 15 bytes of the name
    std::getline(std::ifstream("/proc/self/task/" + std::to_string(worker.tid) + "/comm"), comm);
    EXPECT_EQ(comm, "zksupt-worker-w");
    worker.released.set_value();
    EXPECT_EQ(SMThreadStop(thread), SM_STATUS_SUCCESS);
    EXPECT_TRUE(ended(worker.tid));
}

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
