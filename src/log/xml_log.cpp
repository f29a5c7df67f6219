#include "log/xml_log.h"

#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include <zksupt/status.h>

#include "file/operations.h"
#include "lock/file_lock.h"
#include "log/log_file.h"
#include "log/paths.h"
#include "log/xml_entry.h"

namespace zksupt::log {
namespace {

constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
constexpr std::string_view kOpenRoot = "<EventLog>";
constexpr std::string_view kCloseRoot = "</EventLog>";
constexpr std::string_view kCloseEntry = "</LogEntry>";
// A log no longer than this is started afresh from its first byte.
constexpr uint64_t kLongestFreshLog = 37;
// The closing tag is looked for at this position and after it.
constexpr uint64_t kFirstTagPosition = kDeclaration.size();
constexpr std::size_t kSearchBlock = 4096;

constexpr std::size_t kMaxNameLength = 511;
constexpr std::size_t kMaxDescriptionLength = 8191;

constexpr const char *kHelpLink =
    "help/nrx/en/msgguide/wwhelp/wwhimpl/common/html/wwhelp.htm?context=Messages_Guide&topic=0000";

// Absent text passes; present text must hold 1 to most bytes.
bool lengthFits(const char *text, std::size_t most) noexcept
{
    if (text == nullptr)
        return true;
    const std::size_t length = strnlen(text, most + 1);
    return length >= 1 && length <= most;
}

// The checks, the directory and the entry of one append to a log of the
// given size.
int32_t entryFor(const char *path, std::optional<uint64_t> size, const Event &event, XmlBuffer &entry) noexcept
{
    if (path == nullptr || (event.dataLength != 0 && (event.data == nullptr || event.dataLength > kMaxDataLength)) ||
        !lengthFits(event.userInfo, kMaxNameLength) || !lengthFits(event.source, kMaxNameLength) ||
        !lengthFits(event.description, kMaxDescriptionLength))
        return SM_STATUS_BAD_ARGUMENT;
    if (const int32_t status = haveDirectory(path, size); status != SM_STATUS_SUCCESS)
        return status;
    return buildEntry(event, entry);
}

// The position of the last tag (a closing tag of 11 bytes) at
// kFirstTagPosition or after it, read backwards a block at a time; -1 when
// there is none or a read comes up short.
int64_t lastTagPosition(int fd, uint64_t size, std::string_view tag) noexcept
{
    static_assert(kCloseEntry.size() == kCloseRoot.size());
    char block[kSearchBlock];
    if (size < kFirstTagPosition + kCloseRoot.size())
        return -1;
    // Candidate positions from highest down to lowest; each block holds the
    // positions [lowest, highest] and the tag's length past the highest.
    auto highest = static_cast<int64_t>(size - kCloseRoot.size());
    const auto first = static_cast<int64_t>(kFirstTagPosition);
    const auto span = static_cast<int64_t>(kSearchBlock - kCloseRoot.size() + 1);
    while (highest >= first) {
        const int64_t lowest = std::max(first, highest - span + 1);
        const auto bytes = static_cast<std::size_t>(highest - lowest) + kCloseRoot.size();
        if (::pread64(fd, block, bytes, lowest) != static_cast<ssize_t>(bytes))
            return -1;
        for (int64_t at = highest; at >= lowest; --at)
            if (std::memcmp(block + (at - lowest), tag.data(), tag.size()) == 0)
                return at;
        highest = lowest - 1;
    }
    return -1;
}

iovec piece(const void *bytes, std::size_t size) noexcept
{
    return {const_cast<void *>(bytes), size};  // only ever read through the vector
}

// With the log's lock held: writes the entry and the closing tag over the
// old closing tag, or starts the document in a log of 37 bytes or less. The
// file is not truncated: old bytes past what is written stay, but for the
// remains of a cut splice.
int32_t splice(const char *path, const SMXGBuf &entry) noexcept
{
    const OpenLog log = openLog(path, OpenFor::update);
    if (!log.fd)
        return SM_STATUS_FAILURE;
    iovec pieces[] = {piece(kDeclaration.data(), kDeclaration.size()), piece(kOpenRoot.data(), kOpenRoot.size()),
                      piece(entry.buf, entry.length), piece(kCloseRoot.data(), kCloseRoot.size())};
    if (log.size <= kLongestFreshLog)
        return writeWhole(log.fd.get(), pieces, 0);
    const std::span<iovec> spliced = std::span<iovec>(pieces).subspan(2);
    if (const int64_t at = lastTagPosition(log.fd.get(), log.size, kCloseRoot); at >= 0)
        return writeWhole(log.fd.get(), spliced, at);
    // A writer killed in the middle of its splice (a write the kernel cut at
    // a page boundary) leaves the log without its closing tag, after the
    // entries written whole. The entry goes after the last whole one, and
    // what is left of the cut one goes, so that the log is a document again.
    const int64_t lastEntry = lastTagPosition(log.fd.get(), log.size, kCloseEntry);
    if (lastEntry < 0)
        return SM_STATUS_BAD_OBJECT;
    const auto at = static_cast<int64_t>(lastEntry + kCloseEntry.size());
    const int32_t status = writeWhole(log.fd.get(), spliced, at);
    if (status == SM_STATUS_SUCCESS &&
        ::ftruncate64(log.fd.get(), at + static_cast<int64_t>(entry.length + kCloseRoot.size())) != 0)
        return SM_STATUS_FAILURE;
    return status;
}

// Moves a full log to its backup and starts the new one with an entry that
// says so; whatever fails here, the caller's entry is written all the same.
void backUpFullLog(const char *path, uint64_t adding, uint32_t limit, const Event &event) noexcept
{
    const lock::FileLockHold hold(path, lock::kExclusive, 1);
    if (hold.status() != SM_STATUS_SUCCESS || !moveToBackup(path, adding, limit))
        return;
    XmlBuffer entry;
    if (entryFor(path, std::nullopt,
                 {.type = kInformationType,
                  .category = kBackupCategory,
                  .eventId = kBackupEventId,
                  .userInfo = event.userInfo,
                  .source = event.source,
                  .description = kBackupDescription},
                 entry) == SM_STATUS_SUCCESS)
        splice(path, *entry);
}

}  // namespace

int32_t appendToXmlLog(const char *path, const Event &event, uint32_t limit) noexcept
{
    const std::optional<uint64_t> size = path == nullptr ? std::nullopt : logSize(path);
    XmlBuffer entry;
    if (const int32_t status = entryFor(path, size, event, entry); status != SM_STATUS_SUCCESS)
        return status;
    if (reachesLimit(size, entry->length, limit))
        backUpFullLog(path, entry->length, limit, event);
    const lock::FileLockHold hold(path, lock::kExclusive, 1);
    if (hold.status() != SM_STATUS_SUCCESS)
        return hold.status();
    return splice(path, *entry);
}

int32_t clearXmlLog(const char *path, uint16_t category, const char *userInfo, const char *source) noexcept
{
    const lock::FileLockHold hold(path, lock::kExclusive, 1);
    if (hold.status() != SM_STATUS_SUCCESS)
        return hold.status();
    if (path == nullptr || ::unlink(path) != 0)
        return SM_STATUS_FAILURE;
    // The new log starts with the entry, before any other writer gets the lock.
    XmlBuffer entry;
    if (const int32_t status = entryFor(path, std::nullopt,
                                        {.type = kInformationType,
                                         .category = category,
                                         .eventId = kClearedEventId,
                                         .userInfo = userInfo,
                                         .source = source,
                                         .description = kClearedDescription,
                                         .link = kHelpLink},
                                        entry);
        status != SM_STATUS_SUCCESS)
        return status;
    return splice(path, *entry);
}

int32_t forceXmlLogExists(const char *path) noexcept
{
    uint32_t size = 0;
    file::sizeOfFile(path, &size);  // the answer is not used: nothing is made
    return SM_STATUS_SUCCESS;
}

}  // namespace zksupt::log
