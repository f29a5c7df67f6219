// Mutexes between threads and processes, critical sections, and what a
// killed holder of a mutex, file lock or semaphore unit leaves behind.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <zksupt/ipc.h>
#include <zksupt/status.h>

#include "ipc/critical_section.h"
#include "ipc/mutex.h"
#include "ipc/registry.h"
#include "ipc/semaphore_set.h"
#include "lock/file_lock.h"
#include "processes.h"
#include "support/sandbox.h"

namespace zksupt::ipc {
namespace {

using test::Child;
using test::sandbox;

MutexRecord *recordOf(void *mutex)
{
    return static_cast<MutexRecord *>(mutex);
}

mode_t modeOf(const std::string &path)
{
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

// Runs body(0) to body(count - 1) in threads at once.
void inThreads(int count, const std::function<void(int)> &body)
{
    test::runBounded([&] {
        std::vector<std::thread> threads;
        for (int t = 0; t < count; ++t)
            threads.emplace_back(body, t);
        for (std::thread &thread : threads)
            thread.join();
    });
}

class Mutexes : public test::NoLeftovers {};

// Record locks belong to the process: a named mutex keeps the process's own
// threads apart with its thread mutex, as an unnamed one does.
TEST_F(Mutexes, ThreadsTakeAMutexInTurn)
{
    for (const char *name : {static_cast<const char *>(nullptr), "threads in turn"}) {
        SCOPED_TRACE(name != nullptr ? "named" : "unnamed");
        void *mutex = SMMutexCreate(name);
        ASSERT_NE(mutex, nullptr);
        ASSERT_EQ(SMMutexLock(mutex, -1), SM_STATUS_SUCCESS);
        inThreads(1, [mutex](int) {
            EXPECT_EQ(SMMutexLock(mutex, 0), SM_STATUS_TIMEOUT);
            EXPECT_EQ(SMMutexLock(mutex, 20), SM_STATUS_TIMEOUT);
        });
        EXPECT_EQ(SMMutexUnLock(mutex), SM_STATUS_SUCCESS);
        int counter = 0;  // guarded by the mutex alone
        inThreads(4, [&](int) {
            for (int i = 0; i < 200; ++i) {
                ASSERT_EQ(SMMutexLock(mutex, -1), SM_STATUS_SUCCESS);
                ++counter;
                SMMutexUnLock(mutex);
            }
        });
        EXPECT_EQ(counter, 800);
        SMMutexDestroy(mutex);
    }
}

// A holder in another process keeps this one out (time-out 0 tries once);
// killed, it frees what it held at once: the kernel drops its record locks
// and gives back the semaphore units it took with undo.
TEST_F(Mutexes, AKilledHolderReleasesAtOnce)
{
    const char *name = "held across processes";
    void *mutex = SMMutexCreate(name);
    lock::FileLock *file = lock::getFileLock(sandbox().path("var/data/held.ini").c_str());
    const int32_t set = createSet(keyOf("zksupsmpHeld"), 1, 1, 0);
    ASSERT_TRUE(mutex != nullptr && file != nullptr && set != 0);
    const auto lockOnce = [mutex](int32_t timeout) {
        const int32_t status = SMMutexLock(mutex, timeout);
        if (status == SM_STATUS_SUCCESS)
            SMMutexUnLock(mutex);
        return status;
    };
    const auto fileOnce = [file](uint32_t mode) {
        const int32_t status = lock::acquireFileLock(file, mode, 0);
        if (status == SM_STATUS_SUCCESS)
            lock::releaseFileLock(file);
        return status;
    };
    const auto takeMutex = [name] { return SMMutexLock(SMMutexOpen(name), -1) == SM_STATUS_SUCCESS; };
    const auto takeFile = [file](uint32_t mode) { return lock::acquireFileLock(file, mode, 1) == SM_STATUS_SUCCESS; };
    const struct {
        const char *what;
        std::function<bool()> take;        // in the holder
        std::function<int32_t()> tryOnce;  // here
        int32_t whileHeld;
    } cases[] = {
        {"named mutex", takeMutex, [&] { return lockOnce(0); }, SM_STATUS_TIMEOUT},
        {"named mutex, timed", takeMutex, [&] { return lockOnce(30); }, SM_STATUS_TIMEOUT},
        {"exclusive file lock", [&] { return takeFile(lock::kExclusive); }, [&] { return fileOnce(lock::kShared); },
         SM_STATUS_TIMEOUT},
        {"shared file lock", [&] { return takeFile(lock::kShared); }, [&] { return fileOnce(lock::kExclusive); },
         SM_STATUS_TIMEOUT},
        {"shared file lock, shared", [&] { return takeFile(lock::kShared); }, [&] { return fileOnce(lock::kShared); },
         SM_STATUS_SUCCESS},
        {"semaphore unit taken with undo", [set] { return waitSet(set, 0, true) == SM_STATUS_SUCCESS; },
         [set] { return setValue(set) == 1 ? SM_STATUS_SUCCESS : SM_STATUS_TIMEOUT; }, SM_STATUS_TIMEOUT},
    };
    for (const auto &c : cases) {
        Child holder([&c](Child &self) {
            if (!c.take())
                return 1;
            self.tell();
            pause();
            return 0;
        });
        ASSERT_EQ(holder.heard(), '!') << c.what;
        EXPECT_EQ(c.tryOnce(), c.whileHeld) << c.what;
        holder.kill();
        EXPECT_EQ(c.tryOnce(), SM_STATUS_SUCCESS) << c.what << ", its holder killed";
    }
    removeSet(set);
    SMMutexDestroy(mutex);
}

// A lock file gets the mode its permission maps to, whatever the umask; an
// existing one keeps its mode, and stays when the mutex is destroyed.
TEST_F(Mutexes, LockFilesGetTheModeAskedFor)
{
    const mode_t saved = umask(077);
    const struct {
        int32_t permission;
        mode_t mode;
    } cases[] = {
        {-1, 0664},         {0, 0600},          {0x04000000, 0200}, {0x0F000000, 0700}, {0x08000000, 0100},
        {0x06040200, 0624}, {0x00010000, 0070}, {0x0A0A0A00, 0555}, {0x060000FF, 0600}, {0x70020000, 0040},
    };
    for (const auto &c : cases) {
        void *mutex = c.permission == -1 ? SMMutexCreate("mode") : SMMutexCreate_s("mode", c.permission);
        ASSERT_NE(mutex, nullptr);
        const std::string path = recordOf(mutex)->header.name;
        EXPECT_EQ(modeOf(path), c.mode) << std::hex << c.permission;
        SMMutexDestroy(mutex);
        SMMutexDestroy(SMMutexCreate_s("mode", 0x0F0F0F00));
        EXPECT_EQ(modeOf(path), c.mode) << std::hex << c.permission;
        std::filesystem::remove(path);
    }
    umask(saved);
}

// Open finds an existing lock file; a descriptor closed behind the mutex's
// back is opened again.
TEST_F(Mutexes, OpenAndALostDescriptor)
{
    EXPECT_EQ(SMMutexOpen("never made"), nullptr);
    void *created = SMMutexCreate("made once");
    void *opened = SMMutexOpen("made once");
    ASSERT_NE(opened, nullptr);
    EXPECT_STREQ(recordOf(opened)->header.name, recordOf(created)->header.name);
    EXPECT_EQ(recordOf(opened)->lockType, 1);
    close(recordOf(opened)->fd);
    EXPECT_EQ(SMMutexLock(opened, 0), SM_STATUS_SUCCESS);
    EXPECT_GE(recordOf(opened)->fd, 0);
    SMMutexUnLock(opened);
    SMMutexDestroy(opened);
    SMMutexDestroy(created);
}

// A lock file read-only for its user takes shared record locks, so two such
// processes hold the mutex together; its owner's lock is exclusive.
TEST_F(Mutexes, AReadOnlyLockFileIsSharedBetweenItsHolders)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root to run the holders as another user";
    const char *name = "read only for others";
    void *mutex = SMMutexCreate_s(name, 0x06020200);  // 0644
    ASSERT_NE(mutex, nullptr);
    EXPECT_EQ(recordOf(mutex)->lockType, 1);
    std::vector<std::pair<std::string, mode_t>> dirs;
    for (const char *dir : {"", "/var", "/var/data", "/var/data/.ipc"}) {
        dirs.emplace_back(sandbox().root() + dir, modeOf(sandbox().root() + dir));
        chmod(dirs.back().first.c_str(), 0711);
    }
    const auto holdAsNobody = [name](Child &self) {
        if (setgid(65534) != 0 || setuid(65534) != 0)
            return 1;
        void *opened = SMMutexOpen(name);
        if (opened == nullptr || recordOf(opened)->lockType != 0 || SMMutexLock(opened, 0) != SM_STATUS_SUCCESS)
            return 2;
        self.tell();
        pause();
        return 0;
    };
    Child first(holdAsNobody);
    EXPECT_EQ(first.heard(), '!');
    Child second(holdAsNobody);
    EXPECT_EQ(second.heard(), '!');
    for (const auto &[dir, mode] : dirs)
        chmod(dir.c_str(), mode);
    SMMutexDestroy(mutex);
}

int32_t countAlone(void *argument)
{
    auto *state = static_cast<std::pair<std::atomic<int>, int> *>(argument);
    if (state->first.fetch_add(1) != 0)
        ADD_FAILURE() << "two threads inside at once";
    ++state->second;  // a plain count: only safe one thread at a time
    state->first.fetch_sub(1);
    return 7;
}

int32_t neverCalled(void *)
{
    ADD_FAILURE() << "a refused critical section ran its function";
    return 0;
}

TEST(CriticalSections, ThreadsRunAFunctionOneAtATimeWithoutTimeOut)
{
    std::pair<std::atomic<int>, int> state{0, 0};
    inThreads(4, [&state](int) {
        for (int i = 0; i < 250; ++i)
            EXPECT_EQ(SMCriticalSectionExecute(countAlone, &state, -1), SM_STATUS_SUCCESS);
    });
    EXPECT_EQ(state.second, 1000);
    EXPECT_EQ(SMCriticalSectionExecute(nullptr, nullptr, -1), SM_STATUS_INVALID_PARAMETER);
    for (const int32_t timeout : {0, 1000, -2})
        EXPECT_EQ(SMCriticalSectionExecute(neverCalled, nullptr, timeout), SM_STATUS_INVALID_PARAMETER);
    stopCriticalSections();
    EXPECT_EQ(SMCriticalSectionExecute(neverCalled, nullptr, -1), SM_STATUS_INVALID_PARAMETER);
    ASSERT_TRUE(startCriticalSections());
}

}  // namespace
}  // namespace zksupt::ipc
