// Snapshots of a file's state. A caller that keeps a file's contents in
// memory (a configuration it parsed) asks before each use whether to read
// the file again.
#include <sys/stat.h>

#include <cstring>
#include <new>

#include <zksupt/status.h>

#include "file/process_files.h"
#include "frame/owned.h"

namespace zksupt::file {
namespace {

// What a change of the file changes. Access time, link count and status
// change time are left out: reading or linking the file is no change.
struct FileState {
    bool exists = false;
    uint64_t device = 0;
    uint64_t inode = 0;
    uint64_t size = 0;
    int64_t seconds = 0;
    int64_t nanoseconds = 0;
    uint32_t mode = 0;

    bool operator==(const FileState &) const = default;
};

// A snapshot is one block: the state, then the path with its terminator.
char *pathOf(FileState *state) noexcept
{
    return reinterpret_cast<char *>(state + 1);
}

FileState stateOf(const char *path) noexcept
{
    struct stat64 status;
    FileState state;
    if (::stat64(path, &status) != 0)
        return state;
    state.exists = true;
    state.device = status.st_dev;
    state.inode = status.st_ino;
    state.size = static_cast<uint64_t>(status.st_size);
    state.seconds = status.st_mtim.tv_sec;
    state.nanoseconds = status.st_mtim.tv_nsec;
    state.mode = status.st_mode;
    return state;
}

}  // namespace

void *snapshotFile(const char *path) noexcept
{
    if (path == nullptr)
        return nullptr;
    const std::size_t length = std::strlen(path);
    frame::Owned<FileState> snapshot = frame::allocateOwned<FileState>(sizeof(FileState) + length + 1);
    if (snapshot == nullptr)
        return nullptr;
    new (snapshot.get()) FileState(stateOf(path));
    std::memcpy(pathOf(snapshot.get()), path, length + 1);
    return snapshot.release();
}

int32_t fileChanged(void *handle) noexcept
{
    if (handle == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    auto *snapshot = static_cast<FileState *>(handle);
    const FileState now = stateOf(pathOf(snapshot));
    if (now == *snapshot)
        return 0;
    *snapshot = now;
    return 1;
}

void freeSnapshot(void *snapshot) noexcept
{
    std::free(snapshot);
}

}  // namespace zksupt::file
