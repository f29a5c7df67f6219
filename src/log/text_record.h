// The bytes of the text event log: the fixed header block that opens the
// file, and one record's labelled lines as UCS-2 units in host byte order.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include <zksupt/types.h>

#include "frame/owned.h"

namespace zksupt::log {

// A file shorter than this gets the header block before its next record.
inline constexpr std::size_t kHeaderSize = 256;

// The header block: UTF-16 little-endian text with a byte-order mark, the
// same bytes on every host, so that readers find it whatever wrote the file.
const std::array<uint8_t, kHeaderSize> &headerBlock() noexcept;

// What one record says, its texts already in UCS-2.
struct TextRecord {
    int32_t eventId;
    std::span<const ucs2> source;
    std::string_view category;
    std::string_view typeLine;
    std::string_view time;  // ctime's form without its line feed
    std::span<const ucs2> computer;
    std::span<const ucs2> description;
    std::span<const uint8_t> data;
};

// A record's units and their size in bytes.
struct EncodedRecord {
    frame::Owned<ucs2[]> units;  // null when memory ran out
    std::size_t size;
};
EncodedRecord encodeRecord(const TextRecord &record) noexcept;

// The record size the log's limit is checked against before a record is
// made: an estimate in bytes from the lengths of its texts and its data.
uint64_t estimatedRecordSize(uint32_t sourceUnits, uint32_t descriptionUnits, uint32_t dataLength) noexcept;

}  // namespace zksupt::log
