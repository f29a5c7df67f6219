#include "processes.h"

#include <dirent.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <future>
#include <sstream>
#include <string>
#include <thread>

namespace zksupt::test {

Child::Child(const std::function<int(Child &)> &body)
{
    if (::pipe(pipe_) != 0)
        return;
    pid_ = ::fork();
    if (pid_ == 0) {
        ::close(pipe_[0]);
        _exit(body(*this));  // no gtest teardown, no atexit handlers in the child
    }
    ::close(pipe_[1]);
}

Child::~Child()
{
    if (pid_ > 0 && !reaped_)
        kill();
    ::close(pipe_[0]);
}

void Child::tell(char what)
{
    if (::write(pipe_[1], &what, 1) != 1)
        _exit(120);
}

char Child::heard()
{
    pollfd ready{pipe_[0], POLLIN, 0};
    char what = 0;
    if (::poll(&ready, 1, kBoundSeconds * 1000) == 1 && ::read(pipe_[0], &what, 1) == 1)
        return what;
    return 0;
}

int Child::wait()
{
    int status = 0;
    for (int waited = 0; pid_ > 0 && waited < kBoundSeconds * 100; ++waited, ::usleep(10000)) {
        if (::waitpid(pid_, &status, WNOHANG) == pid_) {
            reaped_ = true;
            return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        }
    }
    ADD_FAILURE() << "child " << pid_ << " overstayed and was killed";
    kill();
    return -1;
}

void Child::kill()
{
    ::kill(pid_, SIGKILL);
    int status = 0;
    while (::waitpid(pid_, &status, 0) < 0) {
    }
    reaped_ = true;
}

std::vector<int> inChildren(int count, const std::function<int(int)> &body)
{
    std::vector<std::unique_ptr<Child>> children;
    for (int i = 0; i < count; ++i)
        children.push_back(std::make_unique<Child>([&body, i](Child &) { return body(i); }));
    std::vector<int> statuses;
    for (auto &child : children)
        statuses.push_back(child->wait());
    return statuses;
}

std::unique_ptr<Child> holding(const std::function<bool()> &take)
{
    auto holder = std::make_unique<Child>([&take](Child &self) {
        if (!take())
            return 1;
        self.tell();
        pause();
        return 0;
    });
    return holder->heard() == '!' ? std::move(holder) : nullptr;
}

std::vector<void *> ForeignHandles::except(uint32_t own, std::initializer_list<void *> more)
{
    std::vector<void *> handles;
    for (Record &record : records_) {
        if (record.kind != own)
            handles.push_back(&record);
    }
    handles.insert(handles.end(), more);
    return handles;
}

void runBounded(const std::function<void()> &f)
{
    std::packaged_task<void()> task(f);
    std::future<void> done = task.get_future();
    std::thread runner(std::move(task));
    if (done.wait_for(std::chrono::seconds(kBoundSeconds)) != std::future_status::ready) {
        std::fprintf(stderr, "a bounded test step did not finish in %d s\n", kBoundSeconds);
        std::abort();
    }
    runner.join();
}

void inThreads(int count, const std::function<void(int)> &body)
{
    runBounded([&] {
        std::vector<std::thread> threads;
        for (int t = 0; t < count; ++t)
            threads.emplace_back(body, t);
        for (std::thread &thread : threads)
            thread.join();
    });
}

namespace {

// The identifiers (second column) of a /proc/sysvipc table.
std::set<int> identifiersIn(const char *path)
{
    std::set<int> ids;
    std::ifstream table(path);
    std::string line;
    std::getline(table, line);  // the heading
    while (std::getline(table, line)) {
        std::istringstream fields(line);
        long key = 0;
        int id = 0;
        if (fields >> key >> id)
            ids.insert(id);
    }
    return ids;
}

int openDescriptors()
{
    int count = 0;
    if (DIR *dir = ::opendir("/proc/self/fd")) {
        while (::readdir(dir) != nullptr)
            ++count;
        ::closedir(dir);
    }
    return count;
}

}  // namespace

std::set<int> semaphoreSets()
{
    return identifiersIn("/proc/sysvipc/sem");
}

std::set<int> sharedSegments()
{
    return identifiersIn("/proc/sysvipc/shm");
}

// What a test or the whole program may not leave behind.
struct Snapshot {
    std::set<int> sets = semaphoreSets(), segments = sharedSegments();
    int descriptors = openDescriptors();
};

namespace {

void expectUnchanged(const Snapshot &before)
{
    const Snapshot now;
    EXPECT_EQ(now.sets, before.sets) << "semaphore sets were left behind";
    EXPECT_EQ(now.segments, before.segments) << "shared-memory segments were left behind";
    EXPECT_EQ(now.descriptors, before.descriptors) << "descriptors were left open";
}

// Registered before main adds the library's environment, it looks before
// the attach and after the detach.
class NothingLeftBehind : public ::testing::Environment {
    void SetUp() override { before_ = std::make_shared<Snapshot>(); }
    void TearDown() override { expectUnchanged(*before_); }
    std::shared_ptr<Snapshot> before_;
};

[[maybe_unused]] ::testing::Environment *const nothingLeftBehind =
    ::testing::AddGlobalTestEnvironment(new NothingLeftBehind);

}  // namespace

NoLeftovers::NoLeftovers() : before_(std::make_shared<Snapshot>()) {}

void NoLeftovers::TearDown()
{
    expectUnchanged(*before_);
}

}  // namespace zksupt::test
