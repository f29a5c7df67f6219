// Binary arrays: whole binary objects back to back under an "SDAB" header,
// each stepped over by the total size its own header states.
#include <zksupt/status.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "frame/owned.h"
#include "frame/size_out.h"
#include "sdo/binary.h"
#include "sdo/config.h"

namespace zksupt::sdo {
namespace {

// The offset where element index starts, or 0 when an element before it
// does not fit inside the array.
uint32_t elementOffset(const Block &array, uint32_t index) noexcept
{
    uint32_t offset = kHeaderSize;
    for (uint32_t i = 0; i < index && offset != 0; ++i)
        offset = elementEnd(array, offset);
    return offset;
}

// Serialises an element that is not kept, only to learn whether it can be.
int32_t checkSerialisable(const SDOConfig *config) noexcept
{
    uint32_t size = config->binarySize;
    const frame::Owned<uint8_t> scratch = frame::allocateOwned<uint8_t>(size);
    if (scratch == nullptr)
        return SM_STATUS_NO_MEMORY;
    return toBinary(config, scratch.get(), &size);
}

}  // namespace

int32_t arrayInitHeader(void *buffer, uint32_t size) noexcept
{
    if (buffer == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (size < kHeaderSize)
        return SM_STATUS_BUFFER_TOO_SMALL;
    writeHeader(static_cast<uint8_t *>(buffer), Kind::array, 0, kHeaderSize);
    return SM_STATUS_SUCCESS;
}

int32_t arrayAddData(void *array, uint32_t *capacity, const void *binary, uint32_t binarySize) noexcept
{
    if (array == nullptr || capacity == nullptr || binary == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    Block block;
    if (const int32_t status = openForUpdate(array, *capacity, Kind::array, block); status != SM_STATUS_SUCCESS)
        return status;
    const uint32_t end = elementOffset(block, block.count);
    if (end == 0)
        return SM_STATUS_INVALID_PARAMETER;
    const uint64_t needed = uint64_t{end} + binarySize;
    if (needed > *capacity) {
        *capacity = static_cast<uint32_t>(std::min<uint64_t>(needed, 0xFFFFFFFFu));
        return SM_STATUS_BUFFER_TOO_SMALL;
    }
    if (needed > kLargestBlock)
        return SM_STATUS_BUFFER_TOO_SMALL;
    auto *bytes = static_cast<uint8_t *>(array);
    std::memmove(bytes + end, binary, binarySize);
    writeHeader(bytes, Kind::array, static_cast<uint16_t>(block.count + 1), static_cast<uint16_t>(needed));
    return SM_STATUS_SUCCESS;
}

int32_t arrayGetByIndex(const void *array, uint32_t index, void *out, uint32_t *size) noexcept
{
    if (array == nullptr || size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const Block block = openBlock(array, kLargestBlock);
    if (block.kind != Kind::array)
        return SM_STATUS_BAD_OBJECT;
    if (index >= block.count)
        return SM_STATUS_NOT_FOUND;
    const uint32_t offset = elementOffset(block, index);
    const uint32_t end = offset != 0 ? elementEnd(block, offset) : 0;
    if (end == 0 || kindOf(block.bytes + offset) != Kind::object)
        return SM_STATUS_BAD_OBJECT;
    return frame::copyOutBytes(out, size, block.bytes + offset, end - offset);
}

// The running total counts every serialisable object, kept or not, so that
// the caller can compare it with the capacity. Without an output it leaves
// out the array header: callers have always added those 8 bytes themselves.
int32_t configsToBinaryArray(SDOConfig *const *configs, uint32_t n, void *out, uint32_t *size) noexcept
{
    if (configs == nullptr || size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    auto *bytes = static_cast<uint8_t *>(out);
    const uint32_t capacity = *size;
    if (bytes != nullptr)
        if (const int32_t status = arrayInitHeader(bytes, capacity))
            return status;
    uint64_t total = bytes != nullptr ? kHeaderSize : 0;
    uint32_t end = kHeaderSize;
    uint16_t kept = 0;
    for (uint32_t i = 0; i < n; ++i) {
        const SDOConfig *config = configs[i];
        if (config == nullptr)
            continue;
        uint32_t length = config->binarySize;
        total += length;
        const bool fits = bytes != nullptr && total <= capacity && end == total - length;
        if (fits && total > kLargestBlock)
            return SM_STATUS_BUFFER_TOO_SMALL;
        const int32_t status = fits ? toBinary(config, bytes + end, &length) : checkSerialisable(config);
        if (status != SM_STATUS_SUCCESS)
            return status;
        if (fits) {
            end += length;
            writeHeader(bytes, Kind::array, ++kept, static_cast<uint16_t>(end));
        }
    }
    *size = static_cast<uint32_t>(total);
    return SM_STATUS_SUCCESS;
}

// On failure the objects made so far are freed and their slots cleared.
int32_t binaryArrayToConfigs(const void *array, SDOConfig **configs, uint32_t *count, uint32_t limit) noexcept
{
    if (array == nullptr || count == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const Block block = openBlock(array, limit);
    if (block.kind != Kind::array)
        return SM_STATUS_BAD_OBJECT;
    if (*count < block.count) {
        *count = block.count;
        return SM_STATUS_BUFFER_TOO_SMALL;
    }
    if (configs == nullptr && block.count != 0)
        return SM_STATUS_INVALID_PARAMETER;
    uint32_t offset = kHeaderSize;
    for (uint32_t i = 0; i < block.count; ++i) {
        const uint32_t next = elementEnd(block, offset);
        const bool isObject = next != 0 && kindOf(block.bytes + offset) == Kind::object;
        configs[i] = isObject ? binaryToConfig(block.bytes + offset, next - offset) : nullptr;
        if (configs[i] == nullptr) {
            for (uint32_t made = i; made > 0; --made)
                freeConfig(std::exchange(configs[made - 1], nullptr));
            return isObject ? SM_STATUS_FAILURE : SM_STATUS_BAD_OBJECT;
        }
        offset = next;
    }
    *count = block.count;
    return SM_STATUS_SUCCESS;
}

}  // namespace zksupt::sdo
