#include "log/rotated_log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string_view>

#include <zksupt/status.h>

#include "file/descriptor.h"
#include "file/operations.h"
#include "log/log_file.h"
#include "log/paths.h"

namespace zksupt::log {
namespace {

constexpr mode_t kNewLogMode = 0644;
constexpr std::size_t kPrefixSize = 128;

// "<path>.<generation>" into out; false when it does not fit.
bool generationName(const char *path, uint32_t generation, FormedPath &out) noexcept
{
    const std::size_t length = std::strlen(path);
    char *const end = out.text + sizeof out.text;
    if (length + 1 >= sizeof out.text)
        return false;
    std::memcpy(out.text, path, length);
    out.text[length] = '.';
    const std::to_chars_result digits = std::to_chars(out.text + length + 1, end, generation);
    if (digits.ec != std::errc{} || digits.ptr == end)
        return false;
    *digits.ptr = '\0';
    return true;
}

// Appends text to a prefix of at most kPrefixSize - 1 bytes.
class Prefix {
  public:
    void add(std::string_view text) noexcept
    {
        const std::size_t n = std::min(text.size(), sizeof text_ - 1 - length_);
        std::memcpy(text_ + length_, text.data(), n);
        length_ += n;
    }
    template <class Number> void addNumber(Number value) noexcept
    {
        char digits[24];
        add({digits, std::to_chars(digits, digits + sizeof digits, value).ptr});
    }
    std::string_view view() const noexcept { return {text_, length_}; }

  private:
    char text_[kPrefixSize];
    std::size_t length_ = 0;
};

void addTime(Prefix &prefix) noexcept
{
    const time_t now = std::time(nullptr);
    struct tm local {};
    if (::localtime_r(&now, &local) == nullptr) {
        prefix.add("[localtime error] ");
        return;
    }
    char text[kPrefixSize];
    const std::size_t length = std::strftime(text, sizeof text, "[%b %d %Y %H:%M:%S] ", &local);
    prefix.add(length != 0 ? std::string_view(text, length) : "[strftime error] ");
}

void addProcessThread(Prefix &prefix) noexcept
{
    prefix.add("[");
    prefix.addNumber(static_cast<uint32_t>(::getpid()));
    prefix.add(":");
    prefix.addNumber(static_cast<unsigned long long>(::gettid()));
    prefix.add("] ");
}

}  // namespace

int32_t rotateCheck(const char *path, uint32_t maxSize, uint32_t count) noexcept
{
    if (path == nullptr)
        return SM_STATUS_SUCCESS;
    struct stat64 status;
    if (::stat64(path, &status) != 0)
        return SM_STATUS_FAILURE;
    if (static_cast<uint64_t>(status.st_size) <= maxSize)
        return SM_STATUS_SUCCESS;
    if (count == 0)
        return file::deleteFile(path);
    // Each generation moves up one; the one at count is overwritten.
    FormedPath older;
    FormedPath newer;
    for (uint32_t generation = count; generation >= 2; --generation)
        if (generationName(path, generation - 1, newer) && generationName(path, generation, older) &&
            file::entryExists(newer.text))
            std::rename(newer.text, older.text);
    if (!generationName(path, 1, newer))
        return SM_STATUS_FAILURE;
    return std::rename(path, newer.text) == 0 ? SM_STATUS_SUCCESS : SM_STATUS_FAILURE;
}

int32_t logToRotated(const char *message, const char *path, uint32_t maxSize, uint32_t count, uint32_t flags) noexcept
{
    if (message == nullptr || path == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    Prefix prefix;
    if ((flags & kPrefixTime) != 0)
        addTime(prefix);
    if ((flags & kPrefixProcessThread) != 0)
        addProcessThread(prefix);
    const std::string_view suffix = (flags & kSuffixNewline) != 0 ? "\n" : "";

    // The next generation keeps the permissions the log has now.
    struct stat64 status;
    const mode_t mode = ::stat64(path, &status) == 0 ? status.st_mode & 07777 : kNewLogMode;
    rotateCheck(path, maxSize, count);
    const file::Descriptor fd(::open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, mode));
    if (!fd)
        return SM_STATUS_FAILURE;
    ::fchmod(fd.get(), mode);
    // One append of the whole message, so that no other writer's text comes
    // between its pieces.
    const std::string_view text = prefix.view();
    iovec pieces[] = {{const_cast<char *>(text.data()), text.size()},
                      {const_cast<char *>(message), std::strlen(message)},
                      {const_cast<char *>(suffix.data()), suffix.size()}};
    return writeWhole(fd.get(), pieces, kAtEnd);
}

int32_t deleteRotated(const char *path, int32_t deleteGenerations, uint32_t count) noexcept
{
    if (path == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (deleteGenerations == 1) {
        FormedPath generation;
        for (uint32_t n = count; n >= 1; --n)
            if (generationName(path, n, generation) && file::entryExists(generation.text))
                ::unlink(generation.text);
    }
    if (!file::entryExists(path))
        return SM_STATUS_FAILURE;
    return file::deleteFile(path);
}

}  // namespace zksupt::log
