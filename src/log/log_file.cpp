#include "log/log_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

#include <zksupt/status.h>

#include "log/paths.h"

namespace zksupt::log {
namespace {

constexpr mode_t kNewLogMode = 0664;
constexpr mode_t kKeptBits = 01666;

}  // namespace

std::optional<uint64_t> logSize(const char *path) noexcept
{
    struct stat64 status;
    if (::stat64(path, &status) != 0)
        return std::nullopt;
    return static_cast<uint64_t>(status.st_size);
}

int32_t haveDirectory(const char *path, std::optional<uint64_t> size) noexcept
{
    return size.has_value() ? SM_STATUS_SUCCESS : makeLogDirectory(path);
}

bool moveToBackup(const char *path, uint64_t adding, uint32_t limit) noexcept
{
    FormedPath backup;
    if (!reachesLimit(logSize(path), adding, limit) || !backupNameOf(path, backup))
        return false;
    ::unlink(backup.text);
    return std::rename(path, backup.text) == 0;
}

OpenLog openLog(const char *path, OpenFor use) noexcept
{
    const int flags = O_CLOEXEC | (use == OpenFor::append ? O_WRONLY | O_APPEND : O_RDWR);
    bool created = false;
    int fd = ::open(path, flags);
    if (fd < 0) {
        fd = ::open(path, flags | O_CREAT | (use == OpenFor::update ? O_TRUNC : 0), kNewLogMode);
        created = true;
    }
    file::Descriptor opened(fd);
    struct stat64 status;
    if (fd < 0 || ::fstat64(fd, &status) != 0)
        return {file::Descriptor(-1), 0};  // a log of unknown size is not written
    // The process's umask does not decide a new log's bits.
    const mode_t wanted = created ? kNewLogMode : status.st_mode & kKeptBits;
    if ((status.st_mode & 07777) != wanted)
        ::fchmod(fd, wanted);
    return {std::move(opened), static_cast<uint64_t>(status.st_size)};
}

int32_t writeWhole(int fd, std::span<iovec> pieces, int64_t offset) noexcept
{
    for (;;) {
        while (!pieces.empty() && pieces.front().iov_len == 0)
            pieces = pieces.subspan(1);
        if (pieces.empty())
            return SM_STATUS_SUCCESS;
        const int count = static_cast<int>(pieces.size());
        const ssize_t written =
            offset == kAtEnd ? ::writev(fd, pieces.data(), count) : ::pwritev64(fd, pieces.data(), count, offset);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return SM_STATUS_LIMIT_REACHED;
        if (offset != kAtEnd)
            offset += written;
        // Step over what was taken; a piece taken in part goes on from there.
        auto left = static_cast<std::size_t>(written);
        while (left > 0) {
            iovec &piece = pieces.front();
            const std::size_t taken = std::min(left, piece.iov_len);
            piece.iov_base = static_cast<char *>(piece.iov_base) + taken;
            piece.iov_len -= taken;
            left -= taken;
            if (piece.iov_len == 0)
                pieces = pieces.subspan(1);
        }
    }
}

}  // namespace zksupt::log
