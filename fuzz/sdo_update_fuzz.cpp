// Any bytes as an SDO binary object, walked with the public getters and
// updated in place: in a binary of the writer's own form, every entry set
// again to its own value leaves an object equal to the one read; an entry
// changed and changed back through the object's setter serialises to the
// bytes it had.
#include <cstdint>
#include <memory>
#include <vector>

#include <zksupt/sdo.h>

#include "file_installation.h"
#include "sdo/layout.h"

namespace {

using zksupt::fuzz::check;

// Nested objects and arrays of them hold handles: never set from bytes.
bool holdsHandles(uint8_t type)
{
    return zksupt::sdo::baseOf(type) == zksupt::sdo::kBaseNested;
}
constexpr uint32_t kValueRoom = 4096;

std::vector<uint8_t> serialised(const SDOConfig *config)
{
    std::vector<uint8_t> bytes(SMSDOConfigGetBinarySize(config));
    uint32_t size = static_cast<uint32_t>(bytes.size());
    if (bytes.empty() || SMSDOConfigToBinary(config, bytes.data(), &size) != 0)
        return {};
    check(size == bytes.size());
    return bytes;
}

// Sets every entry of the binary again to the value its getter reports.
void setEachToItself(std::vector<uint8_t> &binary, uint32_t count)
{
    std::vector<uint8_t> value(kValueRoom);
    for (uint32_t index = 0; index < count && index < 64; ++index) {
        uint16_t id = 0;
        uint8_t type = 0;
        uint32_t length = kValueRoom;
        if (SMSDOBinaryGetDataByIndex(binary.data(), index, &id, &type, value.data(), &length) != 0 ||
            holdsHandles(type))
            continue;
        uint32_t capacity = static_cast<uint32_t>(binary.size());
        SMSDOBinarySetData(binary.data(), &capacity, id, type, value.data(), length);
        check(capacity <= binary.size());
    }
}

// Changes each plain entry of the object and changes it back.
void changeAndRestore(SDOConfig *config)
{
    std::vector<uint8_t> value(kValueRoom);
    const uint32_t count = SMSDOConfigGetCount(config);
    for (uint32_t index = 0; index < count && index < 64; ++index) {
        uint16_t id = 0;
        uint8_t type = 0;
        uint32_t length = kValueRoom;
        if (SMSDOConfigGetDataByIndex(config, index, &id, &type, value.data(), &length) != 0 || holdsHandles(type) ||
            length == 0)
            continue;
        std::vector<uint8_t> changed(value.begin(), value.begin() + length);
        changed[0] ^= 0x01;
        if (SMSDOConfigAddData(config, id, type, changed.data(), length, 1) == 0)
            check(SMSDOConfigAddData(config, id, type, value.data(), length, 1) == 0);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 8 || size > 0x10000)
        return 0;
    uint16_t isArray = 0;
    const uint32_t stated = SMSDOBinaryGetSize(data, &isArray);
    if (stated < 8 || stated > size || isArray != 0)
        return 0;
    std::vector<uint8_t> binary(data, data + stated);
    SDOConfig *read = SMSDOBinaryToConfig(binary.data());
    if (read == nullptr)
        return 0;
    const std::vector<uint8_t> original = serialised(read);

    // Set again in place, the entries of a binary in the form the writer
    // gives (one the object writes back to the same bytes) stay as they were.
    if (original == binary) {
        setEachToItself(binary, SMSDOBinaryGetCount(binary.data(), &isArray));
        SDOConfig *updated = SMSDOBinaryToConfig(binary.data());
        check(updated != nullptr && SMSDOConfigCompareByValue(read, updated) == 1);
        SMSDOConfigFree(updated);
    }

    if (!original.empty()) {
        changeAndRestore(read);
        check(serialised(read) == original);
    }
    SMSDOConfigFree(read);
    return 0;
}
