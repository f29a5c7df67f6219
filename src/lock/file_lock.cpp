#include "lock/file_lock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include <zksupt/status.h>

#include "containers/typed_tree.h"
#include "lock/object_name.h"
#include "lock/record_lock.h"

namespace zksupt::lock {
namespace {

struct ByDataPath {
    int operator()(std::string_view key, const FileLock &lock) const { return key.compare(lock.dataPath); }
};

// The table of module 1. Every member is guarded by tableMutex.
sync::Mutex tableMutex;
containers::Tree<FileLock, std::string_view, ByDataPath> table;
FileLock *lastUsed = nullptr;
bool started = false;

// Permission bits of a file; 0644 for one that does not exist.
mode_t permissionBits(const char *path) noexcept
{
    struct stat status {};
    return ::stat(path, &status) == 0 ? (status.st_mode & 0777) : 0644;
}

// The lock file takes the data file's permission bits, so that whoever may
// write the data may take its lock exclusively.
void followDataPermissions(const FileLock &lock) noexcept
{
    const mode_t wanted = permissionBits(lock.dataPath.c_str());
    if (permissionBits(lock.lockPath.c_str()) != wanted)
        ::chmod(lock.lockPath.c_str(), wanted);
}

FileLock *makeFileLock(const char *dataPath) noexcept
{
    const std::optional<ObjectName> name = objectName(kFileLockKind, dataPath);
    if (!name)
        return nullptr;
    FileLock *lock = table.emplace(dataPath, name->view(), dataPath).item;
    if (lock == nullptr)
        return nullptr;
    if (::access(lock->lockPath.c_str(), F_OK) != 0) {
        const int fd = ::open(lock->lockPath.c_str(), O_CREAT | O_RDONLY | O_CLOEXEC, 0600);
        if (fd >= 0)
            ::close(fd);
    }
    followDataPermissions(*lock);
    return lock;
}

}  // namespace

FileLock::~FileLock()
{
    if (fd >= 0)
        ::close(fd);
}

bool startFileLocks() noexcept
{
    const sync::Guard guard(tableMutex);
    table.clear();
    lastUsed = nullptr;
    started = true;
    return true;
}

void stopFileLocks() noexcept
{
    const sync::Guard guard(tableMutex);
    started = false;
    lastUsed = nullptr;
    table.clear();
}

FileLock *getFileLock(const char *dataPath) noexcept
{
    if (dataPath == nullptr)
        return nullptr;
    const sync::Guard guard(tableMutex);
    if (!started)
        return nullptr;
    if (lastUsed != nullptr && lastUsed->dataPath == dataPath)
        return lastUsed;
    FileLock *lock = table.find(dataPath);
    if (lock == nullptr)
        lock = makeFileLock(dataPath);
    if (lock != nullptr)
        lastUsed = lock;
    return lock;
}

int32_t acquireFileLock(FileLock *lock, uint32_t mode, int32_t wait) noexcept
{
    if (lock == nullptr || lock->kind != kFileLockKind)
        return SM_STATUS_INVALID_PARAMETER;
    const int32_t timeout = wait == 1 ? -1 : 0;
    const int32_t locked = lock->threadMutex.lock(timeout);
    if (locked != SM_STATUS_SUCCESS)
        return locked;
    if (mode != kShared && mode != kExclusive) {
        lock->threadMutex.unlock();
        return SM_STATUS_INVALID_PARAMETER;
    }
    const int flags = mode == kShared ? O_CREAT | O_RDONLY : O_CREAT | O_WRONLY;
    const int fd = ::open(lock->lockPath.c_str(), flags | O_CLOEXEC, 0600);
    if (fd < 0) {
        const int32_t status = errno == EACCES ? SM_STATUS_ACCESS_DENIED : SM_STATUS_FAILURE;
        lock->threadMutex.unlock();
        return status;
    }
    const RecordLockResult result = lockWholeFile(fd, mode == kShared ? F_RDLCK : F_WRLCK, timeout);
    if (result.status != SM_STATUS_SUCCESS) {
        ::close(fd);
        lock->threadMutex.unlock();
        return result.status;
    }
    lock->fd = fd;
    lock->mode = mode;
    return SM_STATUS_SUCCESS;
}

int32_t releaseFileLock(FileLock *lock) noexcept
{
    if (lock == nullptr || lock->kind != kFileLockKind)
        return SM_STATUS_INVALID_PARAMETER;
    if (lock->mode == kExclusive)
        followDataPermissions(*lock);  // a rewrite may have changed the data file's bits
    lock->mode = kNotHeld;
    if (lock->fd >= 0) {
        unlockWholeFile(lock->fd);
        ::close(lock->fd);
        lock->fd = -1;
    }
    lock->threadMutex.unlock();
    return SM_STATUS_SUCCESS;
}

FileLockHold::FileLockHold(const char *dataPath, uint32_t mode, int32_t wait) noexcept
    : lock_(getFileLock(dataPath)), status_(SM_STATUS_NO_MEMORY)
{
    if (lock_ == nullptr)
        return;
    status_ = acquireFileLock(lock_, mode, wait);
    if (status_ != SM_STATUS_SUCCESS)
        lock_ = nullptr;
}

FileLockHold::~FileLockHold()
{
    if (lock_ != nullptr)
        releaseFileLock(lock_);
}

}  // namespace zksupt::lock
