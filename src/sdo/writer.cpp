// Writing an object as a binary object: header, one index slot per entry in
// ID order, then the values that do not fit in their slot, back to back.
// Nested objects and arrays are written straight into the data area.
#include <zksupt/status.h>

#include <algorithm>
#include <cstring>

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
        std::memset(slot, 0, kSlotSize);
        frame::storeAs<uint16_t>(slot, entry.id);
        slot[2] = entry.type;
        if (baseOf(entry.type) == kBaseNested) {
            const uint64_t payload = payloadOf(entry.type, entry.data(), entry.dataSize);
            if (payload > capacity_ - end_ || !writeNested(entry, static_cast<uint32_t>(payload)))
                return false;
            slot[2] = static_cast<uint8_t>((entry.type & 0xF0) | kBaseBlock);
            placeOutOfLine(slot, static_cast<uint32_t>(payload));
        } else if (entry.dataSize <= kInlineMax) {
            std::memcpy(slot + 4, entry.data(), entry.dataSize);
            slot[3] = static_cast<uint8_t>(entry.dataSize - 1);
        } else {
            if (entry.dataSize > capacity_ - end_)
                return false;
            std::memcpy(out_ + end_, entry.data(), entry.dataSize);
            placeOutOfLine(slot, entry.dataSize);
        }
        slot_ += kSlotSize;
        return true;
    }

  private:
    // The child or the array of children, at the end of the data area. A
    // child whose own recorded size is stale fails here.
    bool writeNested(const Entry &entry, uint32_t payload) noexcept
    {
        uint32_t size = payload;
        const int32_t status = (entry.type & kArrayFlag) != 0
                                   ? configsToBinaryArray(reinterpret_cast<SDOConfig *const *>(entry.data()),
                                                          entry.dataSize / kHandleSize, out_ + end_, &size)
                                   : toBinary(handleAt(entry.data(), 0), out_ + end_, &size);
        return status == SM_STATUS_SUCCESS && size == payload;
    }

    void placeOutOfLine(uint8_t *slot, uint32_t length) noexcept
    {
        frame::storeAs<uint16_t>(slot + 4, static_cast<uint16_t>(length));
        frame::storeAs<uint16_t>(slot + 6, static_cast<uint16_t>(end_ - slot_));
        slot[3] = kOutOfLine;
        end_ += length;
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
    forEachEntry(config, [&](const Entry &entry) { return complete = writer.add(entry); });
    *size = writer.written();
    return complete && writer.written() == config->binarySize ? SM_STATUS_SUCCESS : SM_STATUS_FAILURE;
}

}  // namespace zksupt::sdo
