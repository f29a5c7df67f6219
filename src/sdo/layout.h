// The binary object "SDOB" and the binary array "SDAB": header, index slots
// and array elements. Every read goes through a Block, whose extent is the
// total size its own header states, cut down to what its container allows,
// so that a damaged or hostile block cannot lead a read outside itself.
// Fields are in host byte order and unaligned, hence frame::loadAs/storeAs.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

#include <zksupt/status.h>

#include "frame/unaligned.h"

namespace zksupt::sdo {

inline constexpr uint32_t kHeaderSize = 8;
inline constexpr uint32_t kSlotSize = 8;
inline constexpr uint32_t kLargestBlock = 0xFFFF;  // sizes and offsets are 16-bit
inline constexpr uint32_t kInlineMax = 4;          // longer values go to the data area
inline constexpr uint8_t kOutOfLine = 0x04;        // slot storage flag

// Type byte: base type in bits 3-0, array flag in bit 4, attribute bits above.
inline constexpr uint8_t kBaseMask = 0x0F;
inline constexpr uint8_t kArrayFlag = 0x10;
inline constexpr uint8_t kBaseBlock = 12;   // a nested binary object or array, as bytes
inline constexpr uint8_t kBaseNested = 13;  // nested object handle(s), in memory only

constexpr uint8_t baseOf(uint8_t type) noexcept
{
    return type & kBaseMask;
}

enum class Kind { invalid, object, array };

// What the first four bytes announce.
inline Kind kindOf(const void *bytes) noexcept
{
    if (std::memcmp(bytes, "SDOB", 4) == 0)
        return Kind::object;
    return std::memcmp(bytes, "SDAB", 4) == 0 ? Kind::array : Kind::invalid;
}

inline void writeHeader(uint8_t *at, Kind kind, uint16_t count, uint16_t total) noexcept
{
    std::memcpy(at, kind == Kind::array ? "SDAB" : "SDOB", 4);
    frame::storeAs<uint16_t>(at + 4, count);
    frame::storeAs<uint16_t>(at + 6, total);
}

struct Block {
    const uint8_t *bytes = nullptr;
    uint32_t size = 0;   // readable bytes: the stated total, capped
    uint16_t count = 0;  // as stated
    Kind kind = Kind::invalid;

    bool valid() const noexcept { return kind != Kind::invalid; }
};

// The block at bytes, of which at most limit bytes may be read. Invalid when
// the magic is wrong or the extent cannot even hold the header.
inline Block openBlock(const void *bytes, uint32_t limit) noexcept
{
    if (bytes == nullptr || limit < kHeaderSize)
        return {};
    const auto *at = static_cast<const uint8_t *>(bytes);
    const Kind kind = kindOf(at);
    const uint32_t size = std::min<uint32_t>(frame::loadAs<uint16_t>(at + 6), limit);
    if (kind == Kind::invalid || size < kHeaderSize)
        return {};
    return {at, size, frame::loadAs<uint16_t>(at + 4), kind};
}

// A block the caller hands over to be changed in place, in capacity bytes:
// BUFFER_TOO_SMALL when they cannot hold a header and one more,
// INVALID_PARAMETER when the block is not of the kind, else SUCCESS.
inline int32_t openForUpdate(const void *bytes, uint32_t capacity, Kind kind, Block &block) noexcept
{
    if (capacity < 2 * kHeaderSize)
        return SM_STATUS_BUFFER_TOO_SMALL;
    block = openBlock(bytes, capacity);
    return block.kind == kind ? SM_STATUS_SUCCESS : SM_STATUS_INVALID_PARAMETER;
}

// One index slot of an object and where its value lies within the block.
struct Slot {
    uint32_t offset = 0;  // of the slot, from the block's start
    uint16_t id = 0;
    uint8_t type = 0;
    uint8_t flags = 0;
    uint32_t valueOffset = 0;  // from the block's start
    uint32_t length = 0;       // true length, an out-of-line one cut to the block
    bool whole = true;         // false when the value does not lie wholly inside the block

    bool outOfLine() const noexcept { return (flags & kOutOfLine) != 0; }
    const uint8_t *value(const Block &block) const noexcept { return block.bytes + valueOffset; }
};

// Slots that lie wholly inside the block.
inline uint32_t slotCount(const Block &block) noexcept
{
    return std::min<uint32_t>(block.count, (block.size - kHeaderSize) / kSlotSize);
}

inline Slot slotAt(const Block &block, uint32_t index) noexcept
{
    Slot slot;
    slot.offset = kHeaderSize + index * kSlotSize;
    const uint8_t *at = block.bytes + slot.offset;
    slot.id = frame::loadAs<uint16_t>(at);
    slot.type = at[2];
    slot.flags = at[3];
    if (!slot.outOfLine()) {
        slot.valueOffset = slot.offset + 4;
        slot.length = (slot.flags & 3u) + 1;
        return slot;
    }
    const uint32_t stated = frame::loadAs<uint16_t>(at + 4);
    const uint32_t start = slot.offset + frame::loadAs<uint16_t>(at + 6);
    slot.valueOffset = std::min(start, block.size);
    slot.length = std::min(stated, block.size - slot.valueOffset);
    slot.whole = start + stated <= block.size;
    return slot;
}

// Whether every slot the header counts, and every value, lies inside the
// block. A block where one does not is malformed, never a short value.
inline bool slotsInside(const Block &block) noexcept
{
    const uint32_t count = slotCount(block);
    if (count != block.count)
        return false;
    for (uint32_t i = 0; i < count; ++i)
        if (!slotAt(block, i).whole)
            return false;
    return true;
}

// The slot of id by binary search of the index (unsigned IDs), or none.
// The halving step has no data-dependent branch, so that lookups in random
// order do not pay a misprediction at every level.
inline std::optional<Slot> findSlot(const Block &block, uint16_t id) noexcept
{
    const uint32_t count = slotCount(block);
    const uint8_t *slots = block.bytes + kHeaderSize;
    uint32_t first = 0;
    for (uint32_t length = count; length > 1;) {
        const uint32_t half = length / 2;
        first = frame::loadAs<uint16_t>(slots + (first + half) * kSlotSize) <= id ? first + half : first;
        length -= half;
    }
    if (count == 0 || frame::loadAs<uint16_t>(slots + first * kSlotSize) != id)
        return std::nullopt;
    return slotAt(block, first);
}

// The end of the array element starting at offset, or 0 when the element's
// header or its stated size does not fit inside the array.
inline uint32_t elementEnd(const Block &array, uint32_t offset) noexcept
{
    if (offset + kHeaderSize > array.size)
        return 0;
    const uint32_t size = frame::loadAs<uint16_t>(array.bytes + offset + 6);
    return size >= kHeaderSize && offset + size <= array.size ? offset + size : 0;
}

}  // namespace zksupt::sdo
