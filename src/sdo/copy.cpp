// Cloning and comparing objects through their binary form, which covers
// nested objects and every type bit without a walk of its own.
#include <cstring>

#include <zksupt/status.h>

#include "frame/owned.h"
#include "sdo/binary.h"
#include "sdo/config.h"

namespace zksupt::sdo {
namespace {

// The object's binary form, or null when its recorded size is out of range
// or does not match what is written.
frame::Owned<uint8_t> serialised(const SDOConfig *config) noexcept
{
    uint32_t size = config->binarySize;
    if (size < kHeaderSize || size > kLargestBlock)
        return nullptr;
    frame::Owned<uint8_t> bytes = frame::allocateOwned<uint8_t>(size);
    if (bytes == nullptr || toBinary(config, bytes.get(), &size) != SM_STATUS_SUCCESS)
        return nullptr;
    return bytes;
}

}  // namespace

SDOConfig *cloneConfig(const SDOConfig *config) noexcept
{
    const frame::Owned<uint8_t> bytes = config != nullptr ? serialised(config) : nullptr;
    return bytes != nullptr ? binaryToConfig(bytes.get()) : nullptr;
}

int32_t compareByValue(const SDOConfig *a, const SDOConfig *b) noexcept
{
    if (a == nullptr || b == nullptr)
        return a == b ? 1 : 0;
    if (a->binarySize != b->binarySize)
        return 0;
    const frame::Owned<uint8_t> first = serialised(a);
    const frame::Owned<uint8_t> second = first != nullptr ? serialised(b) : nullptr;
    return second != nullptr && std::memcmp(first.get(), second.get(), a->binarySize) == 0 ? 1 : 0;
}

}  // namespace zksupt::sdo
