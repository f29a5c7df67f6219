// Helpers of the SDO tests: expected binary forms written field by field in
// host byte order, owned objects, and serialising an object to bytes.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

#include <zksupt/zksupt.h>

namespace zksupt::test {

using Bytes = std::vector<uint8_t>;
inline constexpr uint32_t kHandle = sizeof(void *);

// Builds a binary form: Bin().header("SDOB", 1, 16).inlined(7, 6, {1, 2}).bytes
struct Bin {
    Bytes bytes;
    Bin &raw(const Bytes &values)
    {
        bytes.insert(bytes.end(), values.begin(), values.end());
        return *this;
    }
    Bin &u16(uint16_t value)
    {
        uint8_t field[2];
        std::memcpy(field, &value, 2);
        return raw({field[0], field[1]});
    }
    Bin &header(const char *magic, uint16_t count, uint16_t total)
    {
        return raw({uint8_t(magic[0]), uint8_t(magic[1]), uint8_t(magic[2]), uint8_t(magic[3])}).u16(count).u16(total);
    }
    // The value left-aligned in the slot's four bytes, flags its length - 1.
    Bin &inlined(uint16_t id, uint8_t type, Bytes value)
    {
        const auto flags = static_cast<uint8_t>(value.size() - 1);
        value.resize(4);
        return u16(id).raw({type, flags}).raw(value);
    }
    Bin &outOfLine(uint16_t id, uint8_t type, uint16_t length, uint16_t offset)
    {
        return u16(id).raw({type, 0x04}).u16(length).u16(offset);
    }
};

struct ConfigFree {
    void operator()(SDOConfig *config) const { SMSDOConfigFree(config); }
};
using Config = std::unique_ptr<SDOConfig, ConfigFree>;

inline Config newConfig()
{
    return Config(SMSDOConfigAlloc());
}

// The bytes written into a buffer with room to spare, and the status expected.
inline Bytes serialise(const SDOConfig *config, int32_t expected = 0)
{
    uint32_t size = SMSDOConfigGetBinarySize(config) + 64;
    Bytes out(size);
    EXPECT_EQ(SMSDOConfigToBinary(config, out.data(), &size), expected);
    out.resize(size);
    return out;
}

inline void add(SDOConfig *config, uint16_t id, uint8_t type, const Bytes &value)
{
    ASSERT_EQ(SMSDOConfigAddData(config, id, type, value.data(), static_cast<uint32_t>(value.size()), 0), 0) << id;
}

}  // namespace zksupt::test
