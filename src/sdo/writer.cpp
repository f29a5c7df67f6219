// Writing an object as a binary object: header, one index slot per entry in
// ID order, then the values that do not fit in their slot, back to back.
// Nested objects and arrays are written straight into the data area.
#include <zksupt/status.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "frame/short_copy.h"
#include "frame/unaligned.h"
#include "sdo/binary.h"
#include "sdo/config.h"

namespace zksupt::sdo {
namespace {

class Writer {
  public:
    Writer(uint8_t *out, uint32_t capacity, uint32_t count) noexcept
        : out_(out), capacity_(std::min(capacity, kLargestBlock)), end_(kHeaderSize + count * kSlotSize)
    {
    }

    // The index must fit before any entry is written.
    bool indexFits() const noexcept { return end_ <= capacity_; }
    uint32_t written() const noexcept { return end_; }

    // False when the entry does not fit or a nested object cannot be written.
    bool add(const Entry &entry) noexcept
    {
        uint8_t *slot = out_ + slot_;
        slot_ += kSlotSize;
        if (baseOf(entry.type) != kBaseNested) {
            if (entry.dataSize <= kInlineMax) {
                // Records keep four value bytes, zeros after a shorter
                // value: the slot's padding comes with them.
                const auto flags = static_cast<uint8_t>(entry.dataSize - 1);
                frame::storeAs(slot, slotWord(entry.id, entry.type, flags, frame::loadAs<uint32_t>(entry.data())));
                return true;
            }
            if (entry.dataSize > capacity_ - end_)
                return false;
            frame::copyShort(out_ + end_, entry.data(), entry.dataSize);
            placeOutOfLine(slot, entry.id, entry.type, entry.dataSize);
            return true;
        }
        const uint64_t payload = payloadOf(entry.type, entry.data(), entry.dataSize);
        if (payload > capacity_ - end_ || !writeNested(entry, out_ + end_, static_cast<uint32_t>(payload)))
            return false;
        placeOutOfLine(slot, entry.id, static_cast<uint8_t>((entry.type & 0xF0) | kBaseBlock),
                       static_cast<uint32_t>(payload));
        return true;
    }

  private:
    // The child or the array of children, at the end of the data area. A
    // child whose own recorded size is stale fails here. Static, so that the
    // writer never leaves registers for it.
    static bool writeNested(const Entry &entry, uint8_t *at, uint32_t payload) noexcept
    {
        uint32_t size = payload;
        const int32_t status = (entry.type & kArrayFlag) != 0
                                   ? configsToBinaryArray(reinterpret_cast<SDOConfig *const *>(entry.data()),
                                                          entry.dataSize / kHandleSize, at, &size)
                                   : toBinary(handleAt(entry.data(), 0), at, &size);
        return status == SM_STATUS_SUCCESS && size == payload;
    }

    // The slot points at the value appended at the end of the data area.
    void placeOutOfLine(uint8_t *slot, uint16_t id, uint8_t type, uint32_t length) noexcept
    {
        const auto offset = static_cast<uint16_t>(end_ - static_cast<uint32_t>(slot - out_));
        frame::storeAs(slot, slotWord(id, type, kOutOfLine, pairWord(static_cast<uint16_t>(length), offset)));
        end_ += length;
    }

    // A slot as one word in host order: ID, type byte, storage flags, then
    // the four bytes that follow them in memory.
    static uint64_t slotWord(uint16_t id, uint8_t type, uint8_t flags, uint32_t tail) noexcept
    {
        if constexpr (std::endian::native == std::endian::little)
            return id | uint64_t{type} << 16 | uint64_t{flags} << 24 | uint64_t{tail} << 32;
        else
            return uint64_t{id} << 48 | uint64_t{type} << 40 | uint64_t{flags} << 32 | tail;
    }

    // Two 16-bit fields, first then second in memory.
    static uint32_t pairWord(uint16_t first, uint16_t second) noexcept
    {
        if constexpr (std::endian::native == std::endian::little)
            return first | uint32_t{second} << 16;
        else
            return uint32_t{first} << 16 | second;
    }

    uint8_t *out_;
    uint32_t capacity_;
    uint32_t slot_ = kHeaderSize;
    uint32_t end_;
};

}  // namespace

int32_t toBinary(const SDOConfig *config, void *buffer, uint32_t *size) noexcept
{
    if (config == nullptr || buffer == nullptr || size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (*size < config->binarySize)
        return SM_STATUS_BUFFER_TOO_SMALL;
    auto *out = static_cast<uint8_t *>(buffer);
    // The header states the recorded size; a stale one shows up as -1 below.
    writeHeader(out, Kind::object, static_cast<uint16_t>(config->count), static_cast<uint16_t>(config->binarySize));
    Writer writer(out, *size, config->count);
    if (!writer.indexFits()) {
        *size = kHeaderSize;
        return SM_STATUS_FAILURE;
    }
    bool complete = true;
    containers::InOrder entries(config->tree);
    while (complete) {
        const void *data = entries.next();
        if (data == nullptr)
            break;
        complete = writer.add(*static_cast<const Entry *>(data));
    }
    *size = writer.written();
    return complete && writer.written() == config->binarySize ? SM_STATUS_SUCCESS : SM_STATUS_FAILURE;
}

}  // namespace zksupt::sdo
