// Mutexes, named and unnamed, between threads and between processes; the
// library's unnamed mutex underneath.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include <zksupt/ipc.h>
#include <zksupt/status.h>

#include "ipc/mutex.h"
#include "lock/object_name.h"
#include "processes.h"
#include "support/sandbox.h"
#include "sync/mutex.h"

namespace zksupt::ipc {
namespace {

using test::Child;
using test::sandbox;

mode_t modeOf(const char *path)
{
    struct stat status {};
    return stat(path, &status) == 0 ? status.st_mode & 07777 : 0;
}

const char *lockFileOf(void *mutex)
{
    return static_cast<MutexRecord *>(mutex)->header.name;
}

TEST(UnnamedMutexBelow, ATimedLockTriesOnceAtZeroAndGivesUp)
{
    sync::Mutex mutex;
    ASSERT_EQ(mutex.lock(-1), SM_STATUS_SUCCESS);
    test::runBounded([&mutex] {
        EXPECT_EQ(mutex.lock(0), SM_STATUS_TIMEOUT);
        EXPECT_EQ(mutex.lock(12), SM_STATUS_TIMEOUT);
    });
    mutex.unlock();
    test::runBounded([&mutex] {
        ASSERT_EQ(mutex.lock(0), SM_STATUS_SUCCESS);
        mutex.unlock();
    });
}

class Mutexes : public test::NoLeftovers {};

TEST_F(Mutexes, UnnamedMutexKeepsOtherThreadsOut)
{
    void *mutex = SMMutexCreate(nullptr);
    ASSERT_NE(mutex, nullptr);
    EXPECT_EQ(lockFileOf(mutex), nullptr);
    EXPECT_EQ(SMMutexLock(mutex, -1), SM_STATUS_SUCCESS);
    test::runBounded([mutex] {
        EXPECT_EQ(SMMutexLock(mutex, 0), SM_STATUS_TIMEOUT);
        EXPECT_EQ(SMMutexLock(mutex, 20), SM_STATUS_TIMEOUT);
    });
    EXPECT_EQ(SMMutexUnLock(mutex), SM_STATUS_SUCCESS);
    SMMutexDestroy(mutex);
}

TEST_F(Mutexes, ThreadsOfOneProcessTakeANamedMutexInTurn)
{
    void *mutex = SMMutexCreate("threads in turn");
    ASSERT_NE(mutex, nullptr);
    int counter = 0;  // guarded by the mutex alone
    test::runBounded([&] {
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&] {
                for (int i = 0; i < 200; ++i) {
                    ASSERT_EQ(SMMutexLock(mutex, -1), SM_STATUS_SUCCESS);
                    ++counter;
                    SMMutexUnLock(mutex);
                }
            });
        for (std::thread &thread : threads)
            thread.join();
    });
    EXPECT_EQ(counter, 800);
    SMMutexDestroy(mutex);
}

// A holder in another process blocks; when it is killed the kernel drops
// its record lock and the next try gets the mutex at once.
TEST_F(Mutexes, AKilledHolderReleasesANamedMutexAtOnce)
{
    const char *name = "held across processes";
    Child holder([name](Child &self) {
        void *held = SMMutexCreate(name);
        if (held == nullptr || SMMutexLock(held, -1) != SM_STATUS_SUCCESS)
            return 1;
        self.tell();
        pause();
        return 0;
    });
    ASSERT_EQ(holder.heard(), '!');
    void *mutex = SMMutexOpen(name);
    ASSERT_NE(mutex, nullptr);
    EXPECT_EQ(SMMutexLock(mutex, 0), SM_STATUS_TIMEOUT);
    EXPECT_EQ(SMMutexLock(mutex, 30), SM_STATUS_TIMEOUT);
    holder.kill();
    EXPECT_EQ(SMMutexLock(mutex, 0), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMMutexUnLock(mutex), SM_STATUS_SUCCESS);
    SMMutexDestroy(mutex);
}

TEST_F(Mutexes, AWaitingProcessGetsTheMutexWhenItIsUnlocked)
{
    const char *name = "handed over";
    void *mutex = SMMutexCreate(name);
    ASSERT_NE(mutex, nullptr);
    ASSERT_EQ(SMMutexLock(mutex, -1), SM_STATUS_SUCCESS);
    Child waiter([name](Child &self) {
        void *opened = SMMutexOpen(name);
        self.tell();
        const int result = opened != nullptr && SMMutexLock(opened, -1) == SM_STATUS_SUCCESS ? 0 : 1;
        SMMutexUnLock(opened);
        SMMutexDestroy(opened);
        return result;
    });
    ASSERT_EQ(waiter.heard(), '!');
    usleep(50000);  // the waiter is most likely blocked by now; it passes either way
    SMMutexUnLock(mutex);
    EXPECT_EQ(waiter.wait(), 0);
    SMMutexDestroy(mutex);
}

TEST_F(Mutexes, LockFilesGetTheModeAskedForWhateverTheUmask)
{
    const mode_t saved = umask(077);
    const struct {
        const char *name;
        bool plain;
        int32_t permission;
        mode_t mode;
    } cases[] = {
        {"mode default", true, 0, 0664},
        {"mode owner rw", false, 0x06000000, 0600},
        {"mode all read", false, 0x02020200, 0444},
    };
    for (const auto &c : cases) {
        void *mutex = c.plain ? SMMutexCreate(c.name) : SMMutexCreate_s(c.name, c.permission);
        ASSERT_NE(mutex, nullptr) << c.name;
        const std::string path = lockFileOf(mutex);
        EXPECT_EQ(modeOf(path.c_str()), c.mode) << c.name;
        SMMutexDestroy(mutex);
        EXPECT_EQ(access(path.c_str(), F_OK), 0) << "the lock file stays";
        // An existing lock file keeps its mode.
        mutex = SMMutexCreate_s(c.name, -1);
        EXPECT_EQ(modeOf(path.c_str()), c.mode) << c.name;
        SMMutexDestroy(mutex);
        std::filesystem::remove(path);
    }
    umask(saved);
}

TEST_F(Mutexes, OpenNeedsAnExistingLockFile)
{
    EXPECT_EQ(SMMutexOpen("never made"), nullptr);
    EXPECT_EQ(SMMutexOpen(nullptr), nullptr);
    void *created = SMMutexCreate("made once");
    void *opened = SMMutexOpen("made once");
    ASSERT_NE(opened, nullptr);
    EXPECT_STREQ(lockFileOf(opened), lockFileOf(created));
    EXPECT_EQ(static_cast<MutexRecord *>(opened)->lockType, 1);
    SMMutexDestroy(opened);
    SMMutexDestroy(created);
}

// The lock file's descriptor closed behind the mutex's back is reopened.
TEST_F(Mutexes, ALostDescriptorIsReopened)
{
    void *mutex = SMMutexCreate("lost descriptor");
    ASSERT_NE(mutex, nullptr);
    close(static_cast<MutexRecord *>(mutex)->fd);
    EXPECT_EQ(SMMutexLock(mutex, 0), SM_STATUS_SUCCESS);
    EXPECT_GE(static_cast<MutexRecord *>(mutex)->fd, 0);
    SMMutexUnLock(mutex);
    SMMutexDestroy(mutex);
}

// A lock file that is read-only for the caller takes shared record locks,
// so two such processes hold the mutex together. Needs a user for whom the
// file is really read-only: root drops to "nobody" in the children.
TEST_F(Mutexes, AReadOnlyLockFileIsSharedBetweenItsHolders)
{
    void *mutex = SMMutexCreate_s("read only for others", 0x06020200);  // 0644
    ASSERT_NE(mutex, nullptr);
    const std::string root = sandbox().root();
    const std::vector<std::string> dirs{root, root + "/var", root + "/var/data", root + "/var/data/.ipc"};
    std::vector<mode_t> modes;
    for (const std::string &dir : dirs) {
        modes.push_back(modeOf(dir.c_str()));
        chmod(dir.c_str(), 0711);
    }
    const auto asOtherUser = [](const std::function<int(void *, Child &)> &body) {
        return [body](Child &self) {
            if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0))
                return 90;
            void *opened = SMMutexOpen("read only for others");
            if (opened == nullptr || static_cast<MutexRecord *>(opened)->lockType != 0)
                return 91;
            const int result = body(opened, self);
            SMMutexUnLock(opened);
            SMMutexDestroy(opened);
            return result;
        };
    };
    Child first(asOtherUser([](void *opened, Child &self) {
        if (SMMutexLock(opened, -1) != SM_STATUS_SUCCESS)
            return 1;
        self.tell();
        pause();
        return 0;
    }));
    ASSERT_EQ(first.heard(), '!');
    Child second(asOtherUser([](void *opened, Child &) { return SMMutexLock(opened, 0); }));
    const int result = second.wait();
    first.kill();
    for (std::size_t i = 0; i < dirs.size(); ++i)
        chmod(dirs[i].c_str(), modes[i]);
    if (result == 91 && geteuid() != 0)
        GTEST_SKIP() << "the owner may always write its own lock file";
    EXPECT_EQ(result, SM_STATUS_SUCCESS);
    // The owner writes, so its lock is exclusive.
    EXPECT_EQ(static_cast<MutexRecord *>(mutex)->lockType, 1);
    SMMutexDestroy(mutex);
}

}  // namespace
}  // namespace zksupt::ipc
