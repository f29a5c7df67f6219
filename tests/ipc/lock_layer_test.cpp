// The lock layer: object names, the permission mapping, and file locks
// between threads and between processes.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <thread>

#include <zksupt/digest.h>
#include <zksupt/status.h>

#include "lock/file_lock.h"
#include "lock/object_name.h"
#include "lock/permission.h"
#include "processes.h"
#include "support/sandbox.h"

namespace zksupt::lock {
namespace {

using test::Child;
using test::sandbox;

// Lock files live in the sandbox's IPC directory, as the name registry's
// start makes it known.
void useSandboxIpcDirectory()
{
    ASSERT_TRUE(setIpcDirectory(sandbox().ipcDir()));
}

// The digest text through the public MD5 functions, name and NUL included.
std::string digestOf(const std::string &name)
{
    SMRFC1321Context context;
    SMRFC1321Load(&context);
    SMRFC1321AddMsg(&context, name.c_str(), static_cast<uint32_t>(name.size() + 1));
    SMRFC1321ComputeMsgDigest(&context);
    std::string text;
    char hex[3];
    for (const uint8_t byte : context.digest) {
        std::snprintf(hex, sizeof hex, "%02X", byte);
        text += hex;
    }
    return text;
}

std::string nameOf(uint32_t kind, const char *name)
{
    const auto form = objectName(kind, name);
    return form ? std::string(form->view()) : "(none)";
}

TEST(ObjectNames, EachKindHasItsForm)
{
    useSandboxIpcDirectory();
    const std::string dir = sandbox().ipcDir();
    const std::string digest = digestOf("Lock");
    const struct {
        uint32_t kind;
        std::string expected;
    } cases[] = {
        {kMutexKind, dir + "/.zksupmtx" + digest},
        {kSemaphoreKind, "zksupsmp" + digest},
        {kSharedMemoryKind, "zksupshm" + digest},
        {kEventKind, "zksupevt" + digest},
        {kRwLockKind, "zksuprwl" + digest},
        {kFileLockKind, dir + "/.zksupflk" + digest},
        {0, "(none)"},
        {7, "(none)"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(nameOf(c.kind, "Lock"), c.expected) << "kind " << c.kind;
#if !ZKSUPT_TARGET_BIG_ENDIAN
    // On a little-endian host the library's MD5 is the standard one.
    EXPECT_EQ(nameOf(kSemaphoreKind, "Lock"), "zksupsmp0C8985063416226949ECE3FA77EC8E95");
#endif
    EXPECT_NE(nameOf(kSemaphoreKind, "lock"), nameOf(kSemaphoreKind, "Lock"));
    EXPECT_EQ(nameOf(kSemaphoreKind, ""), "(none)");
    EXPECT_EQ(nameOf(kSemaphoreKind, nullptr), "(none)");
    // Any length of name gives the same length of object name.
    EXPECT_EQ(nameOf(kSemaphoreKind, std::string(5000, 'n').c_str()).size(), 40u);
}

// Lock-file forms take the directory's length: 256 bytes with the NUL at most.
TEST(ObjectNames, LockFileFormsEndAt256Bytes)
{
    useSandboxIpcDirectory();
    const std::string saved = ipcDirectory();
    for (const std::size_t length : {213u, 214u}) {
        ASSERT_TRUE(setIpcDirectory(std::string(length, 'd')));
        const auto form = objectName(kFileLockKind, "x");
        EXPECT_EQ(form.has_value(), length == 213) << length;
        if (form) {
            EXPECT_EQ(form->length + 1, 256u);
        }
        EXPECT_TRUE(objectName(kSemaphoreKind, "x").has_value());
    }
    clearIpcDirectory();
    EXPECT_FALSE(objectName(kMutexKind, "x").has_value());
    ASSERT_TRUE(setIpcDirectory(saved));
}

TEST(Permission, DescriptorsMapToModes)
{
    const struct {
        int32_t permission;
        mode_t mode;
    } cases[] = {
        {-1, 0664},         {0, 0600},          {0x06000000, 0600},           {0x04000000, 0200}, {0x01000000, 0700},
        {0x0F000000, 0700}, {0x08000000, 0100}, {0x06040200, 0624},           {0x00010000, 0070}, {0x00000100, 0007},
        {0x0A0A0A00, 0555}, {0x060000FF, 0600}, {0x70000000 | 0x20000, 0040},
    };
    for (const auto &c : cases)
        EXPECT_EQ(modeOfPermission(c.permission), c.mode) << std::hex << c.permission;
}

class FileLocks : public test::NoLeftovers {
  protected:
    void SetUp() override
    {
        useSandboxIpcDirectory();
        NoLeftovers::SetUp();
    }
    std::string data(const char *name) { return sandbox().path(std::string("var/data/") + name); }
};

TEST_F(FileLocks, OneObjectPerPathWithItsLockFile)
{
    const std::string a = data("a.ini");
    const std::string b = data("b.ini");
    FileLock *first = getFileLock(a.c_str());
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(getFileLock(a.c_str()), first);
    FileLock *other = getFileLock(b.c_str());
    EXPECT_NE(other, first);
    EXPECT_EQ(getFileLock(a.c_str()), first);
    EXPECT_EQ(first->lockPath, sandbox().ipcDir() + "/.zksupflk" + digestOf(a));
    EXPECT_EQ(access(first->lockPath.c_str(), F_OK), 0);
    EXPECT_EQ(getFileLock(nullptr), nullptr);
}

TEST_F(FileLocks, ModesAndBadArguments)
{
    FileLock *lock = getFileLock(data("modes.ini").c_str());
    ASSERT_NE(lock, nullptr);
    EXPECT_EQ(acquireFileLock(nullptr, kShared, 1), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(releaseFileLock(nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(acquireFileLock(lock, 3, 1), SM_STATUS_INVALID_PARAMETER);
    // The refused mode left the thread mutex free.
    for (const uint32_t mode : {kShared, kExclusive}) {
        ASSERT_EQ(acquireFileLock(lock, mode, 0), SM_STATUS_SUCCESS);
        EXPECT_EQ(lock->mode, mode);
        EXPECT_EQ(releaseFileLock(lock), SM_STATUS_SUCCESS);
        EXPECT_EQ(lock->fd, -1);
    }
}

TEST_F(FileLocks, AnotherThreadOfTheProcessWaitsForTheHolder)
{
    FileLock *lock = getFileLock(data("threads.ini").c_str());
    ASSERT_EQ(acquireFileLock(lock, kShared, 1), SM_STATUS_SUCCESS);
    test::runBounded([lock] {
        // Record locks belong to the process; the thread mutex keeps even
        // shared holders of one process apart.
        EXPECT_EQ(acquireFileLock(lock, kShared, 0), SM_STATUS_TIMEOUT);
    });
    releaseFileLock(lock);
}

// Between processes: readers share, a writer excludes, and the kernel frees
// the lock of a killed holder at once.
TEST_F(FileLocks, ProcessesShareReadsAndExcludeWrites)
{
    const std::string path = data("shared.ini");
    Child reader([&](Child &self) {
        if (acquireFileLock(getFileLock(path.c_str()), kShared, 1) != SM_STATUS_SUCCESS)
            return 1;
        self.tell();
        pause();
        return 0;
    });
    ASSERT_EQ(reader.heard(), '!');
    FileLock *lock = getFileLock(path.c_str());
    EXPECT_EQ(acquireFileLock(lock, kShared, 0), SM_STATUS_SUCCESS);
    releaseFileLock(lock);
    EXPECT_EQ(acquireFileLock(lock, kExclusive, 0), SM_STATUS_TIMEOUT);
    reader.kill();

    Child writer([&](Child &self) {
        if (acquireFileLock(getFileLock(path.c_str()), kExclusive, 1) != SM_STATUS_SUCCESS)
            return 1;
        self.tell();
        pause();
        return 0;
    });
    ASSERT_EQ(writer.heard(), '!');
    EXPECT_EQ(acquireFileLock(lock, kShared, 0), SM_STATUS_TIMEOUT);
    writer.kill();
    EXPECT_EQ(acquireFileLock(lock, kExclusive, 0), SM_STATUS_SUCCESS);
    releaseFileLock(lock);
}

TEST_F(FileLocks, AWaiterGetsTheLockWhenTheHolderReleases)
{
    const std::string path = data("handover.ini");
    Child holder([&](Child &self) {
        FileLock *held = getFileLock(path.c_str());
        if (acquireFileLock(held, kExclusive, 1) != SM_STATUS_SUCCESS)
            return 1;
        self.tell();
        usleep(100000);  // lets the parent start waiting (it succeeds either way)
        releaseFileLock(held);
        pause();
        return 0;
    });
    ASSERT_EQ(holder.heard(), '!');
    FileLock *lock = getFileLock(path.c_str());
    test::runBounded([lock] {
        ASSERT_EQ(acquireFileLock(lock, kExclusive, 1), SM_STATUS_SUCCESS);
        releaseFileLock(lock);
    });
}

TEST_F(FileLocks, TheLockFileFollowsTheDataFilesPermissions)
{
    const std::string path = sandbox().writeFile("var/data/perm.ini", "[s]\n");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    FileLock *lock = getFileLock(path.c_str());
    ASSERT_NE(lock, nullptr);
    struct stat status {};
    ASSERT_EQ(stat(lock->lockPath.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);

    ASSERT_EQ(acquireFileLock(lock, kExclusive, 1), SM_STATUS_SUCCESS);
    ASSERT_EQ(chmod(path.c_str(), 0604), 0);
    releaseFileLock(lock);
    ASSERT_EQ(stat(lock->lockPath.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0604u);

    // A shared hold leaves the bits alone.
    ASSERT_EQ(acquireFileLock(lock, kShared, 1), SM_STATUS_SUCCESS);
    ASSERT_EQ(chmod(path.c_str(), 0600), 0);
    releaseFileLock(lock);
    ASSERT_EQ(stat(lock->lockPath.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0604u);
}

}  // namespace
}  // namespace zksupt::lock
