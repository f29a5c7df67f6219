// What both event logs do to their files: the size check against the
// limit, the move to the single backup, and opening and writing a log with
// the permissions it keeps. Callers hold the log's file lock for all but the
// first check.
#pragma once

#include <sys/uio.h>

#include <cstdint>
#include <optional>
#include <span>

#include "file/descriptor.h"

namespace zksupt::log {

// The size of the log at path; empty when there is none.
std::optional<uint64_t> logSize(const char *path) noexcept;

// Whether the log exists and its size plus adding reaches limit.
inline bool reachesLimit(std::optional<uint64_t> size, uint64_t adding, uint32_t limit) noexcept
{
    return size.has_value() && *size + adding >= limit;
}

// A log that exists has its directory; for one that does not, makes its
// directory when it is missing (one level, mode 0755): SUCCESS or FAILURE.
int32_t haveDirectory(const char *path, std::optional<uint64_t> size) noexcept;

// With the log's lock held: when the log still reaches its limit (another
// writer may have moved it aside since the caller looked), deletes the old
// backup and renames the log to the backup name. True when the log moved.
bool moveToBackup(const char *path, uint64_t adding, uint32_t limit) noexcept;

// A log opened for writing, and its size when it was opened.
struct OpenLog {
    file::Descriptor fd;
    uint64_t size;
};

enum class OpenFor { append, update };

// Opens the log (appending, or for reading and writing in place), making it
// when it cannot be opened as it is. The file keeps its old permission bits
// limited to read, write and the sticky bit; a new one gets 0664. fd is -1
// when neither open succeeds.
OpenLog openLog(const char *path, OpenFor use) noexcept;

// Writes every byte of the pieces, in one system call unless the system
// takes fewer bytes; at offset, or at the end for a log opened to append.
// SUCCESS, or LIMIT_REACHED when a write stops short (what was written
// stays).
int32_t writeWhole(int fd, std::span<iovec> pieces, int64_t offset) noexcept;
inline constexpr int64_t kAtEnd = -1;

}  // namespace zksupt::log
