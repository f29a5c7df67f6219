#include "config/replace_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

#include <zksupt/status.h>

#include "file/stream.h"
#include "file/operations.h"

namespace zksupt::config {
namespace {

constexpr std::size_t kLongPath = 251;
constexpr std::size_t kLongPathKept = 252;
constexpr std::size_t kStreamBuffer = 64 * 1024;

// Closes out, reporting whether everything written reached the file. A copy
// that is to replace the old file is first flushed to the disk, so that a
// crash soon after the renames finds the whole new contents under the name,
// never an empty or partly written file.
bool closeWritten(file::Stream &out, bool toReplace) noexcept
{
    bool written = std::fflush(out.get()) == 0 && std::ferror(out.get()) == 0;
    if (written && toReplace)
        written = ::fsync(fileno(out.get())) == 0;
    return std::fclose(out.release()) == 0 && written;
}

}  // namespace

std::string backupName(const std::string &path)
{
    if (path.size() >= kLongPath)
        return path.substr(0, kLongPathKept) + "bak";
    const std::size_t dot = path.rfind('.');
    return dot == std::string::npos ? path + ".bak" : path.substr(0, dot + 1) + "bak";
}

std::string directoryOf(const std::string &path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

int32_t recoverBackup(const char *path) noexcept
{
    // The path arrives as a C string: its copy is made here, where running
    // out of memory is an answer, not at every caller.
    try {
        const std::string backup = backupName(path);
        if (file::entryExists(backup.c_str()))
            std::rename(backup.c_str(), path);
        return SM_STATUS_SUCCESS;
    } catch (...) {
        return SM_STATUS_NO_MEMORY;
    }
}

int32_t replaceFile(const std::string &path, Rewriter &rewriter) noexcept
{
    try {
        const std::string directory = directoryOf(path);
        char name[16];
        uint32_t nameSize = sizeof name;
        if (file::temporaryName(directory.c_str(), name, &nameSize) != SM_STATUS_SUCCESS)
            return SM_STATUS_FAILURE;
        const std::string temporary = (directory == "/" ? "" : directory) + "/" + name;
        const std::string backup = backupName(path);

        file::Stream in{std::fopen(path.c_str(), "r")};
        if (!in)
            return SM_STATUS_FILE_OPEN_FAILED;
        struct stat old {};
        const mode_t mode = ::fstat(fileno(in.get()), &old) == 0 ? (old.st_mode & kKeptModeBits) : kNewFileMode;
        const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        file::Stream out{fd >= 0 ? ::fdopen(fd, "w") : nullptr};
        if (!out) {
            if (fd >= 0) {
                ::close(fd);
                ::unlink(temporary.c_str());
            }
            return SM_STATUS_FILE_NOT_FOUND;
        }
        ::fchmod(fd, mode);
        std::setvbuf(in.get(), nullptr, _IOFBF, kStreamBuffer);
        std::setvbuf(out.get(), nullptr, _IOFBF, kStreamBuffer);

        Rewrite result = rewriter.rewrite(in.get(), out.get());
        in.reset();
        if (!closeWritten(out, result.status == SM_STATUS_SUCCESS) && result.status == SM_STATUS_SUCCESS)
            result = {SM_STATUS_LIMIT_REACHED, result.keepCopy};
        if (result.status != SM_STATUS_SUCCESS) {
            if (!result.keepCopy)
                ::unlink(temporary.c_str());
            return result.status;
        }

        if (std::rename(path.c_str(), backup.c_str()) != 0) {
            ::unlink(temporary.c_str());
            return SM_STATUS_FAILURE;
        }
        if (std::rename(temporary.c_str(), path.c_str()) != 0) {
            // The backup is the old file; the next call moves it back.
            ::unlink(temporary.c_str());
            return SM_STATUS_DUPLICATE;
        }
        ::chmod(path.c_str(), mode);
        return ::unlink(backup.c_str()) == 0 ? SM_STATUS_SUCCESS : SM_STATUS_ACCESS_DENIED;
    } catch (...) {
        return SM_STATUS_NO_MEMORY;
    }
}

}  // namespace zksupt::config
