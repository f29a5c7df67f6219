// Any bytes as an SDO binary object or array, in a block of exactly the size
// its header states: reading, lookups, the walk and conversion to objects
// must stay inside it, and an object read from it writes back to the size it
// reports.
#include <cstdint>
#include <memory>
#include <vector>

#include "sdo/binary.h"
#include "sdo/config.h"

namespace {

int32_t countEntry(void *context, uint32_t *, uint16_t, uint8_t, uint8_t, uint8_t, uint8_t, uint32_t, const void *)
{
    ++*static_cast<uint32_t *>(context);
    return 0;
}

// The bytes of an object's binary form, or nothing when it cannot be written.
std::vector<uint8_t> written(const SDOConfig *config)
{
    std::vector<uint8_t> bytes(zksupt::sdo::binarySizeOf(config));
    uint32_t size = static_cast<uint32_t>(bytes.size());
    if (zksupt::sdo::toBinary(config, bytes.data(), &size) != 0)
        return {};
    if (size != bytes.size())
        __builtin_trap();  // success writes exactly the size it reports
    return bytes;
}

// An object read from a binary writes back a binary that reads and writes
// again to the same bytes.
void writeBack(const SDOConfig *config)
{
    const std::vector<uint8_t> first = written(config);
    if (first.empty())
        return;
    SDOConfig *again = zksupt::sdo::binaryToConfig(first.data());
    if (again == nullptr)
        __builtin_trap();
    if (written(again) != first)
        __builtin_trap();
    zksupt::sdo::freeConfig(again);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    namespace sdo = zksupt::sdo;
    if (size < 8)
        return 0;
    uint16_t isArray = 0;
    const uint32_t stated = sdo::binarySize(data, &isArray);
    if (stated < 8 || stated > size)
        return 0;
    auto block = std::make_unique<uint8_t[]>(stated);  // exactly the stated size
    std::copy(data, data + stated, block.get());

    const uint32_t count = sdo::binaryCount(block.get(), &isArray);
    uint32_t entries = 0;
    sdo::binaryWalk(block.get(), &entries, nullptr, countEntry, nullptr, nullptr, 1);

    uint8_t value[64];
    for (uint32_t index = 0; index < count && index < 64; ++index) {
        uint16_t id = 0;
        uint8_t type = 0;
        uint32_t length = sizeof value;
        if (sdo::binaryGetByIndex(block.get(), index, &id, &type, value, &length) == 0) {
            length = sizeof value;
            sdo::binaryGetById(block.get(), id, &type, value, &length);
        }
    }

    if (isArray == 0) {
        if (SDOConfig *config = sdo::binaryToConfig(block.get())) {
            writeBack(config);
            sdo::freeConfig(config);
        }
    } else {
        std::vector<SDOConfig *> configs(count < 64 ? count : 64, nullptr);
        auto slots = static_cast<uint32_t>(configs.size());
        if (sdo::binaryArrayToConfigs(block.get(), configs.data(), &slots) == 0)
            for (SDOConfig *config : configs)
                if (config != nullptr) {
                    writeBack(config);
                    sdo::freeConfig(config);
                }
    }
    return 0;
}
