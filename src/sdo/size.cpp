// Binary-size accounting and the nested objects an entry owns.
#include "frame/unaligned.h"
#include "sdo/config.h"
#include "sdo/layout.h"

namespace zksupt::sdo {

uint32_t handleCount(uint8_t type, uint32_t dataSize) noexcept
{
    if (baseOf(type) != kBaseNested)
        return 0;
    if ((type & kArrayFlag) != 0)
        return dataSize / kHandleSize;
    return dataSize >= kHandleSize ? 1 : 0;
}

SDOConfig *handleAt(const uint8_t *data, uint32_t index) noexcept
{
    return frame::loadAs<SDOConfig *>(data + index * kHandleSize);
}

namespace {

uint64_t childrenSize(uint8_t type, const uint8_t *data, uint32_t dataSize) noexcept
{
    uint64_t sum = 0;
    for (uint32_t i = 0, n = handleCount(type, dataSize); i < n; ++i)
        if (const SDOConfig *child = handleAt(data, i))
            sum += child->binarySize;
    return sum;
}

}  // namespace

// A nested array is written as a binary array: its header plus the children.
uint64_t payloadOf(uint8_t type, const uint8_t *data, uint32_t dataSize) noexcept
{
    if (baseOf(type) != kBaseNested)
        return dataSize;
    const uint64_t children = childrenSize(type, data, dataSize);
    return (type & kArrayFlag) != 0 ? kHeaderSize + children : children;
}

// A value that fits in its slot costs the slot alone.
uint64_t costOf(uint8_t type, const uint8_t *data, uint32_t dataSize) noexcept
{
    const uint64_t payload = payloadOf(type, data, dataSize);
    return payload <= kInlineMax ? kSlotSize : kSlotSize + payload;
}

// The older sum, which callers still see: every value is charged whole, even
// one that fits in its slot, and a nested array without its header. It does
// not match what toBinary writes for such objects, which then reports -1.
uint32_t recalcBinarySize(SDOConfig *config) noexcept
{
    if (config == nullptr)
        return 0;
    uint64_t sum = kHeaderSize;
    forEachEntry(config, [&sum](const Entry &entry) {
        const bool nested = baseOf(entry.type) == kBaseNested;
        sum += kSlotSize + (nested ? childrenSize(entry.type, entry.data(), entry.dataSize) : entry.dataSize);
        return true;
    });
    config->binarySize = static_cast<uint32_t>(sum);
    return config->binarySize;
}

void releaseChildren(Entry &entry, const Entry *keep) noexcept
{
    const uint32_t kept = keep != nullptr ? handleCount(keep->type, keep->dataSize) : 0;
    const auto isKept = [&](const SDOConfig *handle) {
        for (uint32_t i = 0; i < kept; ++i)
            if (handleAt(keep->data(), i) == handle)
                return true;
        return false;
    };
    for (uint32_t i = 0, n = handleCount(entry.type, entry.dataSize); i < n; ++i) {
        SDOConfig *child = handleAt(entry.data(), i);
        if (child == nullptr || isKept(child))
            continue;
        freeConfig(child);
        frame::storeAs<SDOConfig *>(entry.data() + i * kHandleSize, nullptr);
    }
}

}  // namespace zksupt::sdo
