// Copy and append: one routine, told apart by how the destination is opened.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include <zksupt/status.h>

#include "file/descriptor.h"
#include "file/operations.h"
#include "frame/owned.h"

namespace zksupt::file {
namespace {

constexpr std::size_t kChunk = 8192;

enum class Kind { copy, append };

int32_t writeFailure(int error)
{
    return error == ENOSPC ? SM_STATUS_LIMIT_REACHED : SM_STATUS_FAILURE;
}

// Moves everything from in to out, one chunk per write.
int32_t pump(int in, int out)
{
    const frame::Owned<char> chunk = frame::allocateOwned<char>(kChunk);
    if (!chunk)
        return SM_STATUS_NO_MEMORY;
    for (;;) {
        const ssize_t got = ::read(in, chunk.get(), kChunk);
        if (got < 0) {
            if (errno == EINTR)
                continue;
            return SM_STATUS_FAILURE;
        }
        if (got == 0)
            return SM_STATUS_SUCCESS;
        ssize_t put;
        do
            put = ::write(out, chunk.get(), static_cast<std::size_t>(got));
        while (put < 0 && errno == EINTR);
        if (put < 0)
            return writeFailure(errno);
        // A short write counts as the whole chunk: the rest is not written
        // again. Callers have always had this behaviour and it is kept.
    }
}

int32_t transfer(const char *source, const char *destination, Kind kind, int32_t flag, Sync sync)
{
    if (source == nullptr || destination == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    const bool existed = entryExists(destination);
    if (kind == Kind::copy && existed && flag == 0)
        return SM_STATUS_DESTINATION_EXISTS;
    if (kind == Kind::append && !existed && flag == 0)
        return SM_STATUS_FILE_NOT_FOUND;

    const Descriptor in{::open(source, O_RDONLY | O_LARGEFILE | O_CLOEXEC)};
    if (!in)
        return SM_STATUS_FILE_NOT_FOUND;
    struct stat64 status;
    if (::fstat64(in.get(), &status) != 0)
        return SM_STATUS_SOURCE_UNREADABLE;
    const mode_t permissions = status.st_mode & 07777;
    // A file copied or appended onto itself, under whatever name, would be
    // emptied by the truncation or would read back its own growth forever.
    // It is refused before the destination is opened for writing.
    struct stat64 target;
    if (::stat64(destination, &target) == 0 && target.st_dev == status.st_dev && target.st_ino == status.st_ino)
        return SM_STATUS_INVALID_PARAMETER;

    const int how = O_RDWR | O_CREAT | O_LARGEFILE | O_CLOEXEC | (kind == Kind::copy ? O_TRUNC : O_APPEND);
    const Descriptor out{::open(destination, how, permissions)};
    if (!out)
        return writeFailure(errno);

    if (const int32_t result = pump(in.get(), out.get()); result != SM_STATUS_SUCCESS)
        return result;
    // The creation mode went through the umask; this gives the exact bits. A
    // file that was appended to keeps its own. Neither this nor the flush
    // changes the result: the bytes are already in place.
    if (kind == Kind::copy || !existed)
        (void)::fchmod(out.get(), permissions);
    if (sync == Sync::yes)
        (void)::fsync(out.get());
    return SM_STATUS_SUCCESS;
}

}  // namespace

int32_t copyFile(const char *source, const char *destination, int32_t overwrite, Sync sync) noexcept
{
    return transfer(source, destination, Kind::copy, overwrite, sync);
}

int32_t appendFile(const char *source, const char *destination, int32_t create, Sync sync) noexcept
{
    return transfer(source, destination, Kind::append, create, sync);
}

}  // namespace zksupt::file
