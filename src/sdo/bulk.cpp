// Reading a binary object whose index is in ascending ID order, as every
// binary the library writes is, into an object at once. Adding the entries
// one by one would search the tree and allocate a record and a node for each;
// here each entry is checked as that add would check it, then the records
// and nodes are laid out in one block and linked into a balanced tree with no
// comparison at all. The object behaves as one built entry by entry.
#include <zksupt/status.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "frame/short_copy.h"
#include "frame/unaligned.h"
#include "sdo/binary.h"
#include "sdo/config.h"

namespace zksupt::sdo {
namespace {

constexpr std::size_t roundUp8(std::size_t n) noexcept
{
    return (n + 7) & ~std::size_t{7};
}

// What a record takes in the block: 8-aligned, so that handles stored in
// one are aligned as pointers, and four value bytes at least.
constexpr std::size_t recordRoom(uint32_t dataSize) noexcept
{
    return roundUp8(sizeof(Entry) + std::max(dataSize, kInlineMax));
}

// The value size of the record a slot becomes: its own length, or the
// handles of the nested objects it holds. False when adding the slot's entry
// would be refused before anything is made: a value outside the block,
// handles (never read from a block), an invalid ID, type byte 0, an empty
// value, or a nested value that is neither an object nor an array.
bool recordSize(const Block &block, const Slot &slot, uint32_t &dataSize) noexcept
{
    if (!slot.whole || !validId(slot.id) || slot.type == 0 || slot.length == 0)
        return false;
    switch (baseOf(slot.type)) {
    case kBaseNested:
        return false;
    case kBaseBlock: {
        const Kind kind = slot.length >= kHeaderSize ? kindOf(slot.value(block)) : Kind::invalid;
        if (kind == Kind::object)
            dataSize = kHandleSize;
        else if (kind == Kind::array)
            dataSize = frame::loadAs<uint16_t>(slot.value(block) + 4) * kHandleSize;
        return kind != Kind::invalid;
    }
    default:
        dataSize = slot.length;
        return true;
    }
}

// Fills the record of a slot: the value, or the nested objects made from it
// (whose handles the record then holds, with base type 13). False when they
// cannot be made; nothing made is left behind then.
bool fillRecord(const Block &block, const Slot &slot, uint32_t dataSize, Entry &entry) noexcept
{
    entry = Entry{dataSize, slot.id, slot.type, 0};
    const uint8_t *value = slot.value(block);
    if (baseOf(slot.type) != kBaseBlock) {
        // As every record: four value bytes at least, zeros past the value.
        frame::storeAs<uint32_t>(entry.data(), 0);
        frame::copyShort(entry.data(), value, dataSize);
        return true;
    }
    if (kindOf(value) == Kind::object) {
        SDOConfig *child = binaryToConfig(value, slot.length);
        if (child == nullptr)
            return false;
        frame::storeAs<SDOConfig *>(entry.data(), child);
        entry.type = static_cast<uint8_t>((slot.type & 0xF0) | kBaseNested);
        return true;
    }
    uint32_t count = dataSize / kHandleSize;
    auto *handles = reinterpret_cast<SDOConfig **>(entry.data());  // 8-aligned, see below
    if (binaryArrayToConfigs(value, handles, &count, slot.length) != SM_STATUS_SUCCESS)
        return false;
    entry.type = static_cast<uint8_t>((slot.type & 0xF0) | kArrayFlag | kBaseNested);
    return true;
}

}  // namespace

bool idsAscend(const Block &block) noexcept
{
    const uint32_t count = slotCount(block);
    const uint8_t *slots = block.bytes + kHeaderSize;
    for (uint32_t i = 1; i < count; ++i)
        if (frame::loadAs<uint16_t>(slots + (i - 1) * kSlotSize) >= frame::loadAs<uint16_t>(slots + i * kSlotSize))
            return false;
    return true;
}

SDOConfig *readSortedObject(const Block &block) noexcept
{
    const uint32_t count = slotCount(block);
    ConfigPtr config(allocConfig());
    if (config == nullptr || count == 0)
        return config.release();

    // The block: header, nodes, then records, each record 8-aligned so that
    // handles stored in one are aligned as pointers.
    const std::size_t nodesAt = roundUp8(sizeof(Bulk));
    const std::size_t recordsAt = roundUp8(nodesAt + std::size_t{count} * sizeof(RedBlackTreeNode));
    std::size_t size = recordsAt;
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t dataSize = 0;
        if (!recordSize(block, slotAt(block, i), dataSize))
            return nullptr;
        size += recordRoom(dataSize);
    }
    auto *bytes = static_cast<uint8_t *>(std::malloc(size));
    if (bytes == nullptr)
        return nullptr;
    config->bulk = new (bytes) Bulk{size};
    auto *nodes = reinterpret_cast<RedBlackTreeNode *>(bytes + nodesAt);

    // The entries in slot order. A nested value that cannot be made ends the
    // read; the records filled so far give back their nested objects.
    uint64_t binarySize = kHeaderSize;
    uint8_t *at = bytes + recordsAt;
    for (uint32_t i = 0; i < count; ++i) {
        const Slot slot = slotAt(block, i);
        uint32_t dataSize = 0;
        recordSize(block, slot, dataSize);
        auto *entry = reinterpret_cast<Entry *>(at);
        if (!fillRecord(block, slot, dataSize, *entry)) {
            for (uint32_t made = 0; made < i; ++made)
                releaseChildren(*static_cast<Entry *>(nodes[made].data));
            return nullptr;
        }
        nodes[i].data = entry;
        binarySize += costOf(*entry);
        at += recordRoom(dataSize);
    }
    config->tree = containers::linkSorted(nodes, count);
    config->count = count;
    // Adding the entries one by one refuses the one that takes the size past
    // the largest block; the sizes only grow, so the whole sum tells.
    if (binarySize > kLargestBlock)
        return nullptr;
    config->binarySize = static_cast<uint32_t>(binarySize);
    return config.release();
}

}  // namespace zksupt::sdo
