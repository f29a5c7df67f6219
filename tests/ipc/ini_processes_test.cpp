// File locks, and the INI engine under them: processes and threads writing
// one file at once lose no write, and readers never see a torn file.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <zksupt/config.h>
#include <zksupt/status.h>

#include "lock/file_lock.h"
#include "lock/object_name.h"
#include "processes.h"
#include "support/sandbox.h"

namespace zksupt::test {
namespace {

using namespace lock;

class FileLocks : public NoLeftovers {};

TEST_F(FileLocks, OneObjectPerPathTakenInEitherMode)
{
    const std::string a = sandbox().path("var/data/a.ini");
    FileLock *lock = getFileLock(a.c_str());
    ASSERT_NE(lock, nullptr);
    EXPECT_NE(getFileLock(sandbox().path("var/data/b.ini").c_str()), lock);
    EXPECT_EQ(getFileLock(a.c_str()), lock);
    EXPECT_EQ(lock->lockPath, objectName(kFileLockKind, a.c_str())->view());
    EXPECT_EQ(access(lock->lockPath.c_str(), F_OK), 0);
    EXPECT_EQ(getFileLock(nullptr), nullptr);
    EXPECT_EQ(acquireFileLock(nullptr, kShared, 1), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(releaseFileLock(nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(acquireFileLock(lock, 3, 1), SM_STATUS_INVALID_PARAMETER);
    for (const uint32_t mode : {kShared, kExclusive}) {
        ASSERT_EQ(acquireFileLock(lock, mode, 0), SM_STATUS_SUCCESS);
        EXPECT_EQ(lock->mode, mode);
        // Record locks belong to the process: the thread mutex keeps even
        // shared holders of one process apart.
        runBounded([lock] { EXPECT_EQ(acquireFileLock(lock, kShared, 0), SM_STATUS_TIMEOUT); });
        EXPECT_EQ(releaseFileLock(lock), SM_STATUS_SUCCESS);
        EXPECT_EQ(lock->fd, -1);
    }
}

// The lock file's bits follow the data file's when it is made and after
// every exclusive hold; a shared hold leaves them alone.
TEST_F(FileLocks, TheLockFileFollowsTheDataFilesPermissions)
{
    const std::string path = sandbox().writeFile("var/data/perm.ini", "[s]\n");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    FileLock *lock = getFileLock(path.c_str());
    ASSERT_NE(lock, nullptr);
    const auto lockFileMode = [lock] {
        struct stat status {};
        return stat(lock->lockPath.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
    };
    EXPECT_EQ(lockFileMode(), 0640u);
    const struct {
        uint32_t mode;
        mode_t dataMode, lockMode;
    } holds[] = {{kExclusive, 0604, 0604}, {kShared, 0600, 0604}};
    for (const auto &hold : holds) {
        ASSERT_EQ(acquireFileLock(lock, hold.mode, 1), SM_STATUS_SUCCESS);
        ASSERT_EQ(chmod(path.c_str(), hold.dataMode), 0);
        releaseFileLock(lock);
        EXPECT_EQ(lockFileMode(), hold.lockMode) << "after mode " << hold.mode;
    }
}

constexpr int kWriters = 3, kThreads = 3, kKeys = 8;

std::string keyName(int process, int thread, int key)
{
    return "p" + std::to_string(process) + "t" + std::to_string(thread) + "k" + std::to_string(key);
}

const char *sectionOf(int thread)
{
    return thread % 2 == 0 ? "even" : "odd";
}

// How many keys a listing of the section's names shows; -1 when the listing
// failed other than by the file or section not being there yet.
int keysListed(const std::string &path, const char *section)
{
    std::vector<char> names(16384);
    uint32_t size = static_cast<uint32_t>(names.size());
    const int32_t status =
        SMReadINIPathFileValue(section, nullptr, 1, names.data(), &size, nullptr, 0, path.c_str(), 1);
    if (status == SM_STATUS_SECTION_NOT_FOUND || status == SM_STATUS_FILE_OPEN_FAILED)
        return 0;
    int count = status == SM_STATUS_SUCCESS ? 0 : -1;
    for (const char *name = names.data(); count >= 0 && *name != '\0'; name += std::strlen(name) + 1)
        ++count;
    return count;
}

TEST(IniAcrossProcesses, ConcurrentWritersLoseNothingAndNothingTears)
{
    const std::string dir = sandbox().path("var/concurrent");
    std::filesystem::create_directories(dir);
    const std::string path = dir + "/shared.ini";
    std::vector<std::unique_ptr<Child>> writers;
    for (int p = 0; p < kWriters; ++p)
        writers.push_back(std::make_unique<Child>([&path, p](Child &) {
            std::atomic<int> failures{0};
            std::vector<std::thread> threads;
            for (int t = 0; t < kThreads; ++t)
                threads.emplace_back([&, t] {
                    for (int k = 0; k < kKeys; ++k) {
                        const std::string key = keyName(p, t, k);
                        failures += SMWriteINIPathFileValue(sectionOf(t), key.c_str(), 1, key.c_str(),
                                                            static_cast<uint32_t>(key.size() + 1), path.c_str(),
                                                            1) != SM_STATUS_SUCCESS;
                    }
                });
            for (std::thread &thread : threads)
                thread.join();
            return failures.load();
        }));
    // A reader sees each section grow and never fail.
    Child reader([&path](Child &) {
        int seen[2] = {0, 0};
        while (seen[0] + seen[1] < kWriters * kThreads * kKeys)
            for (int s = 0; s < 2; ++s) {
                const int now = keysListed(path, sectionOf(s));
                if (now < seen[s])
                    return 1;
                seen[s] = now;
            }
        return 0;
    });
    for (auto &writer : writers)
        EXPECT_EQ(writer->wait(), 0) << "writes failed";
    EXPECT_EQ(reader.wait(), 0) << "a reading failed or went backwards";

    for (int p = 0; p < kWriters; ++p)
        for (int t = 0; t < kThreads; ++t)
            for (int k = 0; k < kKeys; ++k) {
                const std::string key = keyName(p, t, k);
                char value[32] = {};
                uint32_t size = sizeof value;
                EXPECT_EQ(
                    SMReadINIPathFileValue(sectionOf(t), key.c_str(), 1, value, &size, nullptr, 0, path.c_str(), 1),
                    SM_STATUS_SUCCESS);
                EXPECT_STREQ(value, key.c_str());
            }
    EXPECT_EQ(keysListed(path, "even") + keysListed(path, "odd"), kWriters * kThreads * kKeys);
    // No temporary file or backup was left beside it.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir), std::filesystem::directory_iterator()), 1);
    std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace zksupt::test
