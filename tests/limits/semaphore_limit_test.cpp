// Named objects built on semaphore sets when the IPC namespace allows no
// more sets: the creation answers null, the system log is told why, and
// nothing is left half-made (no set, no list entry, no other file). The keys
// the names were given stay in the key file, as keys are never taken back,
// and so does the lock file of the RW lock's guard mutex, as every named
// mutex's lock file does.
#include <gtest/gtest.h>

#include <dirent.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include <zksupt/ipc.h>

#include "support/child.h"
#include "support/sandbox.h"
#include "support/system_log_socket.h"

namespace {

using zksupt::test::readFile;
using zksupt::test::sandbox;

constexpr const char *kLimits = "/proc/sys/kernel/sem";
constexpr int kNoNamespace = 70;  // the child could not see the test's socket as /dev/log

std::size_t semaphoreSets()
{
    std::ifstream in("/proc/sysvipc/sem");
    std::size_t lines = 0;
    for (std::string line; std::getline(in, line);)
        ++lines;
    return lines > 0 ? lines - 1 : 0;  // the first line names the columns
}

constexpr const char *kKeyFile = ".lxsuptIPCini";

// Every file under the IPC key directory with its contents, but mutex lock
// files; of the key file, what it holds beyond the keys of names.
std::map<std::string, std::string> ipcFiles()
{
    std::map<std::string, std::string> files;
    if (DIR *dir = opendir(sandbox().ipcDir().c_str())) {
        while (const dirent *entry = readdir(dir)) {
            const std::string name = entry->d_name;
            if (name == "." || name == ".." || name.starts_with(".zksupmtx"))
                continue;
            std::string text = readFile(sandbox().ipcDir() + "/" + name);
            if (name == kKeyFile) {
                const std::size_t list = text.find("[Semaphore List]");
                const std::size_t next = list == std::string::npos ? list : text.find("\n[", list);
                text = list == std::string::npos ? "" : text.substr(list, next - list);
            }
            files[name] = text;
        }
        closedir(dir);
    }
    files.try_emplace(kKeyFile);
    return files;
}

// Whether the program's main took an IPC namespace of its own: the one its
// parent runs in differs.
bool ownNamespace()
{
    char own[64] = {}, parent[64] = {};
    const std::string parentLink = "/proc/" + std::to_string(getppid()) + "/ns/ipc";
    return readlink("/proc/self/ns/ipc", own, sizeof own - 1) > 0 &&
           readlink(parentLink.c_str(), parent, sizeof parent - 1) > 0 && std::string(own) != parent;
}

// Sets the namespace's semaphore limits for its lifetime.
class SemaphoreLimits {
  public:
    SemaphoreLimits() : saved_(readFile(kLimits)) {}
    ~SemaphoreLimits() { set(saved_); }
    SemaphoreLimits(const SemaphoreLimits &) = delete;
    SemaphoreLimits &operator=(const SemaphoreLimits &) = delete;

    // Whether the limit on the number of sets could become sets.
    bool allowOnly(std::size_t sets)
    {
        std::istringstream fields(saved_);
        long perSet = 0, total = 0, perOperation = 0, ignored = 0;
        fields >> perSet >> total >> perOperation >> ignored;
        return set(std::to_string(perSet) + " " + std::to_string(total) + " " + std::to_string(perOperation) + " " +
                   std::to_string(sets));
    }

  private:
    static bool set(const std::string &text)
    {
        std::ofstream out(kLimits);
        out << text;
        out.flush();
        return static_cast<bool>(out);
    }
    std::string saved_;
};

TEST(SemaphoreLimit, CreationFailsWholeAndTellsTheSystemLog)
{
    if (!ownNamespace())
        GTEST_SKIP() << "the test program shares the machine's IPC namespace; its limits stay untouched";
    void *warm = SMSemaphoreCreate("limit-warm-up", 1);  // the library's own files and sets exist first
    ASSERT_NE(warm, nullptr);
    SMSemaphoreDestroy(warm);

    const zksupt::test::SystemLogSocket socket(sandbox().path("limit-dev-log"));
    ASSERT_TRUE(socket.bound());
    const std::size_t setsBefore = semaphoreSets();
    const auto filesBefore = ipcFiles();
    {
        SemaphoreLimits limits;
        if (!limits.allowOnly(setsBefore))
            GTEST_SKIP() << "kernel.sem cannot be written in this IPC namespace (no privilege in its user namespace)";
        const zksupt::test::ChildEnd end = zksupt::test::runInChildBounded(
            [&] {
                if (!zksupt::test::enterPrivateDevLog(socket.path()))
                    return kNoNamespace;
                int code = 0;
                if (SMSemaphoreCreate("limit-semaphore", 1) != nullptr)
                    code |= 1;
                if (SMEventCreate("limit-event", 1, 0) != nullptr)
                    code |= 2;
                if (SMRWLCreate("limit-rwlock") != nullptr)
                    code |= 4;
                return code;
            },
            std::chrono::seconds(120));
        ASSERT_TRUE(end.finished && WIFEXITED(end.status));
        if (WEXITSTATUS(end.status) == kNoNamespace)
            GTEST_SKIP() << "this machine allows no private mount namespace with a /dev of its own";
        EXPECT_EQ(WEXITSTATUS(end.status), 0) << "creations that succeeded past the limit (bits: semaphore, event, "
                                                 "RW lock)";
        const std::string logged = socket.receive(MSG_DONTWAIT);
        EXPECT_NE(logged.find("Node Steward (Shared Library): "), std::string::npos) << logged;
        EXPECT_NE(logged.find("A semaphore set has to be created but the system limit for the maximum number of "
                              "semaphore sets has been exceeded"),
                  std::string::npos)
            << logged;
        EXPECT_EQ(semaphoreSets(), setsBefore);
        EXPECT_EQ(ipcFiles(), filesBefore) << "a list entry or file was left behind";
    }
    void *semaphore = SMSemaphoreCreate("limit-semaphore", 1);  // the limit back: the same name works
    EXPECT_NE(semaphore, nullptr);
    SMSemaphoreDestroy(semaphore);
}

}  // namespace
