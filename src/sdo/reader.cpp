// Reading binary objects: back into an object, header queries, lookups by ID
// (binary search over the sorted index) and by index, and updates in place.
#include <zksupt/status.h>

#include <cstring>

#include "frame/size_out.h"
#include "sdo/binary.h"
#include "sdo/config.h"

namespace zksupt::sdo {
namespace {

// A value bigger than the block that holds it is refused, not cut short.
// So is base type 13: in a block its bytes would be taken for handles.
SDOConfig *readObject(const Block &block) noexcept
{
    const uint32_t slots = slotCount(block);
    if (block.kind != Kind::object || slots != block.count)
        return nullptr;
    if (idsAscend(block))
        return readSortedObject(block);
    // Slots out of order (no writer of the library makes them) go the long
    // way, entry by entry, whose refusals then decide.
    ConfigPtr config(allocConfig());
    for (uint32_t i = 0; config != nullptr && i < slots; ++i) {
        const Slot slot = slotAt(block, i);
        if (!slot.whole || baseOf(slot.type) == kBaseNested ||
            addData(config.get(), slot.id, slot.type, slot.value(block), slot.length, 0) != SM_STATUS_SUCCESS)
            return nullptr;
    }
    return config.release();
}

}  // namespace

SDOConfig *binaryToConfig(const void *binary, uint32_t limit) noexcept
{
    return readObject(openBlock(binary, limit));
}

uint32_t binaryCount(const void *binary, uint16_t *isArray) noexcept
{
    if (binary == nullptr)
        return 0xFFFFFFFFu;
    const Kind kind = kindOf(binary);
    if (isArray != nullptr)
        *isArray = kind == Kind::array ? 1 : 0;
    return kind != Kind::invalid ? frame::loadAs<uint16_t>(static_cast<const uint8_t *>(binary) + 4) : 0xFFFFFFFFu;
}

uint32_t binarySize(const void *binary, uint16_t *isArray) noexcept
{
    if (binary == nullptr)
        return 0;
    const Kind kind = kindOf(binary);
    if (isArray != nullptr)
        *isArray = kind == Kind::array ? 1 : 0;
    return kind != Kind::invalid ? frame::loadAs<uint16_t>(static_cast<const uint8_t *>(binary) + 6) : 0;
}

// Inline values are reported as the whole four bytes of their slot, padding
// included: callers of the lookup by ID have always received them so.
int32_t binaryGetById(const void *binary, uint16_t id, uint8_t *type, void *buffer, uint32_t *size) noexcept
{
    if (binary == nullptr || !validId(id) || size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const Block block = openBlock(binary, kLargestBlock);
    // An index that runs past the block cannot be searched; a value that
    // does is refused, not cut short.
    if (block.kind != Kind::object || slotCount(block) != block.count)
        return SM_STATUS_BAD_OBJECT;
    const std::optional<Slot> slot = findSlot(block, id);
    if (!slot)
        return SM_STATUS_NOT_FOUND;
    if (!slot->whole)
        return SM_STATUS_BAD_OBJECT;
    const int32_t status =
        frame::copyOutBytes(buffer, size, slot->value(block), slot->outOfLine() ? slot->length : kInlineMax);
    if (status == SM_STATUS_SUCCESS && type != nullptr)
        *type = slot->type;
    return status;
}

int32_t binaryGetByIndex(const void *binary, uint32_t index, uint16_t *id, uint8_t *type, void *buffer,
                         uint32_t *size) noexcept
{
    if (binary == nullptr || id == nullptr || size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (index >= frame::loadAs<uint16_t>(static_cast<const uint8_t *>(binary) + 4))
        return SM_STATUS_NOT_PRESENT;
    const Block block = openBlock(binary, kLargestBlock);
    if (block.kind != Kind::object)
        return SM_STATUS_BAD_OBJECT;
    if (index >= slotCount(block))
        return SM_STATUS_BAD_OBJECT;
    const Slot slot = slotAt(block, index);
    if (!slot.whole)
        return SM_STATUS_BAD_OBJECT;
    const int32_t status = frame::copyOutBytes(buffer, size, slot.value(block), slot.length);
    if (status == SM_STATUS_SUCCESS) {
        *id = slot.id;
        if (type != nullptr)
            *type = slot.type;
    }
    return status;
}

// In place when the new value takes the room of the old one; otherwise the
// block is rebuilt through an object, within the caller's capacity *size.
int32_t binarySetData(void *binary, uint32_t *size, uint16_t id, uint8_t type, const void *value,
                      uint32_t valueSize) noexcept
{
    if (binary == nullptr || size == nullptr || !validId(id) || type == 0 || value == nullptr || valueSize == 0)
        return SM_STATUS_INVALID_PARAMETER;
    Block block;
    if (const int32_t status = openForUpdate(binary, *size, Kind::object, block); status != SM_STATUS_SUCCESS)
        return status;
    if (slotCount(block) != block.count)
        return SM_STATUS_INVALID_PARAMETER;
    const std::optional<Slot> found = findSlot(block, id);
    if (found && !found->whole)
        return SM_STATUS_INVALID_PARAMETER;
    if (!found || found->type != type)
        return SM_STATUS_NOT_FOUND;
    const Slot &slot = *found;

    auto *bytes = static_cast<uint8_t *>(binary);
    if (slot.outOfLine() ? slot.whole && slot.length == valueSize : valueSize <= kInlineMax) {
        std::memcpy(bytes + slot.valueOffset, value, valueSize);
        if (!slot.outOfLine())
            bytes[slot.offset + 3] = static_cast<uint8_t>(valueSize - 1);
        *size = frame::loadAs<uint16_t>(bytes + 6);
        return SM_STATUS_SUCCESS;
    }

    // A rebuild reads every slot: one outside the block makes it malformed.
    if (!slotsInside(block))
        return SM_STATUS_INVALID_PARAMETER;
    ConfigPtr config(readObject(block));
    if (config == nullptr)
        return SM_STATUS_BUFFER_TOO_SMALL;
    if (const int32_t status = addData(config.get(), id, type, value, valueSize, 1))
        return status;
    if (const int32_t status = frame::requireCapacity(size, config->binarySize); status != SM_STATUS_SUCCESS)
        return status;
    const int32_t status = toBinary(config.get(), binary, size);
    *size = frame::loadAs<uint16_t>(bytes + 6);
    return status;
}

}  // namespace zksupt::sdo
