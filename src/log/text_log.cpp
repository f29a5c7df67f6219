#include "log/text_log.h"

#include <sys/uio.h>
#include <unistd.h>

#include <ctime>
#include <span>
#include <string_view>

#include <zksupt/status.h>

#include "frame/owned.h"
#include "lock/file_lock.h"
#include "log/log_file.h"
#include "log/paths.h"
#include "log/text_record.h"
#include "net/host_name.h"
#include "text/convert.h"
#include "text_helpers/number_text.h"

namespace zksupt::log {
namespace {

// Conversion buffers: 1,023 source units and 16,383 description units, each
// with its terminator.
constexpr uint32_t kSourceBytes = 2048;
constexpr uint32_t kDescriptionBytes = 32768;
constexpr uint32_t kComputerBytes = 128;
constexpr uint32_t kTimeTextSize = 32;

// An event's checked arguments, its texts in UCS-2.
struct Prepared {
    ucs2 sourceUnits[kSourceBytes / sizeof(ucs2)];
    std::span<const ucs2> source;
    frame::Owned<ucs2[]> descriptionUnits;
    std::span<const ucs2> description;
    std::string_view category;  // empty: a category the log does not know
};

// Converts text into dst of capacity bytes. Text longer than the buffer
// fails in the converter (BUFFER_TOO_SMALL); empty text is refused here.
int32_t convert(const char *text, ucs2 *dst, uint32_t capacity, std::span<const ucs2> &converted) noexcept
{
    uint32_t size = capacity;
    if (const int32_t status = text::utf8ToUcs2(dst, &size, text); status != SM_STATUS_SUCCESS)
        return status;
    const uint32_t units = size / sizeof(ucs2) - 1;
    if (units == 0)
        return SM_STATUS_BAD_ARGUMENT;
    converted = {dst, units};
    return SM_STATUS_SUCCESS;
}

int32_t prepare(const char *path, const Event &event, Prepared &prepared) noexcept
{
    if (path == nullptr || event.source == nullptr ||
        (event.dataLength != 0 && (event.data == nullptr || event.dataLength > kMaxDataLength)))
        return SM_STATUS_BAD_ARGUMENT;
    prepared.descriptionUnits = frame::allocateOwned<ucs2[]>(kDescriptionBytes);
    if (prepared.descriptionUnits == nullptr)
        return SM_STATUS_NO_MEMORY;
    if (const int32_t status = convert(event.source, prepared.sourceUnits, kSourceBytes, prepared.source);
        status != SM_STATUS_SUCCESS)
        return status;
    if (const int32_t status =
            convert(event.description, prepared.descriptionUnits.get(), kDescriptionBytes, prepared.description);
        status != SM_STATUS_SUCCESS)
        return status;
    prepared.category = categoryName(event.category);
    return SM_STATUS_SUCCESS;
}

// The record of a prepared event with a known type, at the present time on
// this host.
EncodedRecord encode(const Event &event, const Prepared &prepared, std::string_view type) noexcept
{
    const time_t now = std::time(nullptr);
    char time[kTimeTextSize] = "";
    text_helpers::timeToText(&now, time, sizeof time);
    ucs2 computer[kComputerBytes / sizeof(ucs2)];
    uint32_t computerSize = sizeof computer;
    std::span<const ucs2> computerName;
    if (net::hostNameUcs2(computer, &computerSize) == SM_STATUS_SUCCESS)
        computerName = {computer, computerSize / sizeof(ucs2) - 1};
    return encodeRecord({.eventId = event.eventId,
                         .source = prepared.source,
                         .category = prepared.category,
                         .typeLine = type,
                         .time = time,
                         .computer = computerName,
                         .description = prepared.description,
                         .data = {static_cast<const uint8_t *>(event.data), event.dataLength}});
}

// With the log's lock held: appends the record, led by the header block when
// the log holds less than one.
int32_t append(const char *path, const EncodedRecord &record) noexcept
{
    const OpenLog log = openLog(path, OpenFor::append);
    if (!log.fd)
        return SM_STATUS_FAILURE;
    // The header's bytes are constant and only ever read through the vector.
    iovec pieces[2] = {{const_cast<uint8_t *>(headerBlock().data()), kHeaderSize}, {record.units.get(), record.size}};
    std::span<iovec> write(pieces);
    if (log.size >= kHeaderSize)
        write = write.subspan(1);
    return writeWhole(log.fd.get(), write, kAtEnd);
}

// Prepares, encodes and appends an event the log writes on its own, with
// the log's lock held.
int32_t appendOwnRecord(const char *path, const Event &event) noexcept
{
    Prepared prepared;
    if (const int32_t status = prepare(path, event, prepared); status != SM_STATUS_SUCCESS)
        return status;
    if (prepared.category.empty())
        return SM_STATUS_SUCCESS;
    const EncodedRecord record = encode(event, prepared, typeLine(event.type));
    return record.units == nullptr ? SM_STATUS_NO_MEMORY : append(path, record);
}

// Moves a full log to its backup and starts the new log with a record that
// says so. Whatever fails here, the caller's record is written all the same.
void backUpFullLog(const char *path, uint64_t adding, uint32_t limit, const char *source) noexcept
{
    const lock::FileLockHold hold(path, lock::kExclusive, 1);
    if (hold.status() != SM_STATUS_SUCCESS || !moveToBackup(path, adding, limit))
        return;
    appendOwnRecord(path, {.type = kInformationType,
                           .category = kBackupCategory,
                           .eventId = kBackupEventId,
                           .source = source,
                           .description = kBackupDescription});
}

}  // namespace

int32_t writeTextRecord(const char *path, const Event &event, uint32_t limit) noexcept
{
    Prepared prepared;
    if (const int32_t status = prepare(path, event, prepared); status != SM_STATUS_SUCCESS)
        return status;
    // An unknown category has always been let through silently; callers rely on it.
    if (prepared.category.empty())
        return SM_STATUS_SUCCESS;
    const std::optional<uint64_t> size = logSize(path);
    if (haveDirectory(path, size) != SM_STATUS_SUCCESS)
        return SM_STATUS_FAILURE;
    const uint64_t estimate = estimatedRecordSize(static_cast<uint32_t>(prepared.source.size()),
                                                  static_cast<uint32_t>(prepared.description.size()), event.dataLength);
    if (reachesLimit(size, estimate, limit))
        backUpFullLog(path, estimate, limit, event.source);
    // The type is checked only now, after any backup, as it always was.
    const std::string_view type = typeLine(event.type);
    if (type.empty())
        return SM_STATUS_BAD_ARGUMENT;
    const EncodedRecord record = encode(event, prepared, type);
    if (record.units == nullptr)
        return SM_STATUS_NO_MEMORY;
    const lock::FileLockHold hold(path, lock::kExclusive, 1);
    if (hold.status() != SM_STATUS_SUCCESS)
        return hold.status();
    return append(path, record);
}

int32_t clearTextLog(const char *path, uint16_t category, const char *source) noexcept
{
    const lock::FileLockHold hold(path, lock::kExclusive, 1);
    if (hold.status() != SM_STATUS_SUCCESS)
        return hold.status();
    if (path == nullptr || ::unlink(path) != 0)
        return SM_STATUS_FAILURE;
    // The new log starts with the record, before any other writer gets the lock.
    return appendOwnRecord(path, {.type = kInformationType,
                                  .category = category,
                                  .eventId = kClearedEventId,
                                  .source = source,
                                  .description = kClearedDescription});
}

}  // namespace zksupt::log
