#include "processes.h"

#include "support/sandbox.h"

#include <dirent.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <sstream>
#include <string>
#include <thread>

namespace zksupt::test {

Child::Child(const std::function<int(Child &)> &body)
{
    if (::pipe(toParent_) != 0)
        return;
    pid_ = ::fork();
    if (pid_ == 0) {
        ::close(toParent_[0]);
        toParent_[0] = -1;
        _exit(body(*this));  // no gtest teardown, no atexit handlers in the child
    }
    ::close(toParent_[1]);
    toParent_[1] = -1;
}

Child::~Child()
{
    if (pid_ > 0 && !reaped_)
        kill();
    if (toParent_[0] >= 0)
        ::close(toParent_[0]);
}

void Child::tell(char what)
{
    if (::write(toParent_[1], &what, 1) != 1)
        _exit(120);
}

char Child::heard()
{
    pollfd ready{toParent_[0], POLLIN, 0};
    char what = 0;
    if (::poll(&ready, 1, kBoundSeconds * 1000) == 1 && ::read(toParent_[0], &what, 1) == 1)
        return what;
    return 0;
}

int Child::wait()
{
    if (pid_ <= 0)
        return -1;
    int status = 0;
    for (int waited = 0; waited < kBoundSeconds * 100; ++waited) {
        const pid_t done = ::waitpid(pid_, &status, WNOHANG);
        if (done == pid_) {
            reaped_ = true;
            return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        }
        ::usleep(10000);
    }
    kill();
    ADD_FAILURE() << "child " << pid_ << " overstayed and was killed";
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

namespace {

std::string ipcDirectoryAway()
{
    return sandbox().ipcDir() + ".away";
}

}  // namespace

KeylessRegistry::KeylessRegistry()
{
    std::filesystem::rename(sandbox().ipcDir(), ipcDirectoryAway());
    std::ofstream{sandbox().ipcDir()};
}

KeylessRegistry::~KeylessRegistry()
{
    std::filesystem::remove(sandbox().ipcDir());
    std::filesystem::rename(ipcDirectoryAway(), sandbox().ipcDir());
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

}  // namespace

std::set<int> semaphoreSets()
{
    return identifiersIn("/proc/sysvipc/sem");
}

std::set<int> sharedSegments()
{
    return identifiersIn("/proc/sysvipc/shm");
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

namespace {

// The whole program leaves no semaphore set, segment or descriptor behind, tests
// without the NoLeftovers fixture included. Registered before main adds
// the library's environment, so it looks before the attach and after the
// detach.
class NothingLeftBehind : public ::testing::Environment {
  public:
    void SetUp() override
    {
        sets_ = semaphoreSets();
        segments_ = sharedSegments();
        descriptors_ = openDescriptors();
    }
    void TearDown() override
    {
        EXPECT_EQ(semaphoreSets(), sets_) << "the test program left semaphore sets behind";
        EXPECT_EQ(sharedSegments(), segments_) << "the test program left shared-memory segments behind";
        EXPECT_EQ(openDescriptors(), descriptors_) << "the test program left descriptors open";
    }

  private:
    std::set<int> sets_;
    std::set<int> segments_;
    int descriptors_ = 0;
};

[[maybe_unused]] ::testing::Environment *const nothingLeftBehind =
    ::testing::AddGlobalTestEnvironment(new NothingLeftBehind);

}  // namespace

void NoLeftovers::SetUp()
{
    sets_ = semaphoreSets();
    segments_ = sharedSegments();
    descriptors_ = openDescriptors();
}

void NoLeftovers::TearDown()
{
    EXPECT_EQ(semaphoreSets(), sets_) << "semaphore sets were left behind";
    EXPECT_EQ(sharedSegments(), segments_) << "shared-memory segments were left behind";
    EXPECT_EQ(openDescriptors(), descriptors_) << "descriptors were left open";
}

}  // namespace zksupt::test
