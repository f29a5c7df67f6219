// The depth-first walk over a binary object or array, with the caller's
// callbacks for each block, each entry and after each.
#include <zksupt/status.h>

#include "sdo/binary.h"

namespace zksupt::sdo {
namespace {

// Headers and slots of a well-formed block never overlap, so one of at most
// 65535 bytes holds at most this many of them. A hostile block can make
// values share bytes and so repeat nested blocks without end; the walk stops
// when it has visited more than a well-formed block could hold.
constexpr uint32_t kVisitBudget = kLargestBlock / kSlotSize + 1;

class Walker {
  public:
    Walker(void *context, SDOBinaryWalkBegin begin, SDOBinaryWalkEntry entry, SDOBinaryWalkAfterEntry afterEntry,
           SDOBinaryWalkEnd end, bool recurse) noexcept
        : context_(context), begin_(begin), entry_(entry), afterEntry_(afterEntry), end_(end), recurse_(recurse)
    {
    }

    // An element of an array is visited in full only when recursing.
    int32_t block(const void *bytes, uint32_t limit, uint32_t parentCookie, int32_t index, bool full) noexcept
    {
        // A nested block that claims more than the value holding it is
        // malformed, as is a slot or value outside its block.
        const Block block = openBlock(bytes, limit);
        if (!block.valid() || block.size < frame::loadAs<uint16_t>(block.bytes + 6) || !spend())
            return SM_STATUS_INVALID_PARAMETER;
        if (block.count == 0)
            return SM_STATUS_SUCCESS;
        const uint16_t isArray = block.kind == Kind::array ? 1 : 0;
        if (begin_ != nullptr)
            if (const int32_t result = begin_(context_, parentCookie, isArray, block.count, index, block.bytes))
                return result;
        int32_t last = 0;
        if (full)
            if (const int32_t result = isArray != 0 ? elements(block, parentCookie) : entries(block, last))
                return result;
        return end_ != nullptr ? end_(context_, parentCookie, isArray) : last;
    }

  private:
    bool spend() noexcept { return ++visits_ <= kVisitBudget; }

    int32_t entries(const Block &block, int32_t &last) noexcept
    {
        for (uint32_t i = 0, inside = slotCount(block); i < block.count; ++i) {
            if (i >= inside || !spend())
                return SM_STATUS_INVALID_PARAMETER;
            const Slot slot = slotAt(block, i);
            if (!slot.whole)
                return SM_STATUS_INVALID_PARAMETER;
            uint32_t cookie = 0;
            if (entry_ != nullptr) {
                const uint8_t type = slot.type;
                if (const int32_t result = entry_(context_, &cookie, slot.id, type >> 6, (type >> 5) & 1,
                                                  (type >> 4) & 1, baseOf(type), slot.length, slot.value(block)))
                    return result;
            }
            if (baseOf(slot.type) == kBaseBlock && recurse_)
                if (const int32_t result = this->block(slot.value(block), slot.length, cookie, -1, true))
                    return result;
            if (afterEntry_ != nullptr)
                last = afterEntry_(context_, cookie);
        }
        return SM_STATUS_SUCCESS;
    }

    int32_t elements(const Block &array, uint32_t parentCookie) noexcept
    {
        uint32_t offset = kHeaderSize;
        for (uint32_t i = 0; i < array.count; ++i) {
            const uint32_t next = elementEnd(array, offset);
            if (next == 0)
                return SM_STATUS_INVALID_PARAMETER;
            const auto index = static_cast<int32_t>(i);
            if (const int32_t result = block(array.bytes + offset, next - offset, parentCookie, index, recurse_))
                return result;
            offset = next;
        }
        return SM_STATUS_SUCCESS;
    }

    void *context_;
    SDOBinaryWalkBegin begin_;
    SDOBinaryWalkEntry entry_;
    SDOBinaryWalkAfterEntry afterEntry_;
    SDOBinaryWalkEnd end_;
    bool recurse_;
    uint32_t visits_ = 0;
};

}  // namespace

int32_t binaryWalk(const void *binary, void *context, SDOBinaryWalkBegin begin, SDOBinaryWalkEntry entry,
                   SDOBinaryWalkAfterEntry afterEntry, SDOBinaryWalkEnd end, int32_t recurse) noexcept
{
    Walker walker(context, begin, entry, afterEntry, end, recurse == 1);
    return walker.block(binary, kLargestBlock, 0, -1, true);
}

}  // namespace zksupt::sdo
