// The SDO configuration object: entry records in a red-black tree ordered by
// ID, the entry count, and the size its binary form will take, kept up to
// date by every add and remove so that callers can size buffers up front.
#pragma once

#include <zksupt/containers.h>
#include <zksupt/sdo.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "containers/tree.h"
#include "sdo/layout.h"

namespace zksupt::sdo {
struct Bulk;
}

// The handle type of the public header, hence outside the namespace.
struct SDOConfig {
    RedBlackTree tree;
    uint32_t count;
    uint32_t binarySize;
    // The tree nodes and entry records of an object read from its binary
    // form, made in one block; null for an object built entry by entry.
    zksupt::sdo::Bulk *bulk;
};

namespace zksupt::sdo {

// The header of that block, followed by the nodes, then the records. Nodes
// and records added later are blocks of their own; those inside this one
// stay until the object is emptied or freed, and go with it.
struct alignas(8) Bulk {
    std::size_t size;  // of the whole block, this header included

    bool holds(const void *p) const noexcept
    {
        const auto at = reinterpret_cast<uintptr_t>(p), start = reinterpret_cast<uintptr_t>(this);
        return at >= start && at - start < size;
    }
};

inline constexpr uint32_t kMaxEntries = 65535;
inline constexpr uint32_t kHandleSize = sizeof(SDOConfig *);

// One heap block: this header, then dataSize value bytes. For base type 13
// the value bytes are native object handles, owned by the entry.
struct Entry {
    uint32_t dataSize;
    uint16_t id;
    uint8_t type;
    uint8_t reserved;

    uint8_t *data() noexcept { return reinterpret_cast<uint8_t *>(this + 1); }
    const uint8_t *data() const noexcept { return reinterpret_cast<const uint8_t *>(this + 1); }
};
static_assert(sizeof(Entry) == 8);

void freeConfig(SDOConfig *config) noexcept;
struct ConfigDeleter {
    void operator()(SDOConfig *config) const noexcept { freeConfig(config); }
};
using ConfigPtr = std::unique_ptr<SDOConfig, ConfigDeleter>;

// An ID is refused as an argument when it is 0, 0xFFFE or 0xFFFF.
constexpr bool validId(uint16_t id) noexcept
{
    return id != 0 && id < 0xFFFE;
}

// size.cpp. The handles a value of base type 13 holds: one, or dataSize / kHandleSize
// for an array. Reads and writes go through frame::loadAs/storeAs: the bytes
// are a value, at any alignment.
uint32_t handleCount(uint8_t type, uint32_t dataSize) noexcept;
SDOConfig *handleAt(const uint8_t *data, uint32_t index) noexcept;

// Size accounting (size.cpp). Payload: what the entry's value takes in the
// binary form; cost: what the entry adds to the object's binary size.
uint64_t payloadOf(uint8_t type, const uint8_t *data, uint32_t dataSize) noexcept;
uint64_t costOf(uint8_t type, const uint8_t *data, uint32_t dataSize) noexcept;
inline uint64_t costOf(const Entry &entry) noexcept
{
    return costOf(entry.type, entry.data(), entry.dataSize);
}
uint32_t recalcBinarySize(SDOConfig *config) noexcept;

// size.cpp. Frees an entry's nested objects, except those the keep value also holds
// (a replacement that carries the same handles over).
void releaseChildren(Entry &entry, const Entry *keep = nullptr) noexcept;

// The object (config.cpp).
SDOConfig *allocConfig() noexcept;
uint32_t entryCount(const SDOConfig *config) noexcept;
uint32_t binarySizeOf(const SDOConfig *config) noexcept;
int32_t addData(SDOConfig *config, uint16_t id, uint8_t type, const void *value, uint32_t size,
                int32_t replace) noexcept;
int32_t getDataById(const SDOConfig *config, uint16_t id, uint8_t *type, void *buffer, uint32_t *size) noexcept;
int32_t getDataByIndex(const SDOConfig *config, uint32_t index, uint16_t *id, uint8_t *type, void *buffer,
                       uint32_t *size) noexcept;
int32_t removeData(SDOConfig *config, uint16_t id, uint32_t index, int32_t removeAll) noexcept;
const Entry *entryAtIndex(const SDOConfig *config, uint32_t index) noexcept;

// Visits the entries in ascending ID order until visit returns false.
template <class Visit> void forEachEntry(const SDOConfig *config, Visit &&visit)
{
    containers::InOrder entries(config->tree);
    while (void *data = entries.next())
        if (!visit(*static_cast<const Entry *>(data)))
            return;
}

// bulk.cpp. The object of a binary object block whose slots are in strictly
// ascending ID order, built at once: every entry checked as adding it would
// check it, then all records and nodes in one block, linked without a
// comparison. Null wherever adding the entries one by one would fail.
SDOConfig *readSortedObject(const Block &block) noexcept;
// Whether the block's slots are in strictly ascending ID order.
bool idsAscend(const Block &block) noexcept;

// Clone and compare through the binary form (copy.cpp).
SDOConfig *cloneConfig(const SDOConfig *config) noexcept;
int32_t compareByValue(const SDOConfig *a, const SDOConfig *b) noexcept;

}  // namespace zksupt::sdo
