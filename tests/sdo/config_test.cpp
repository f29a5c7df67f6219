// The configuration object: statuses of adds, lookups (also in the binary
// form) and removal, size accounting, nested objects, clone and compare.
#include <algorithm>
#include <tuple>

#include "sdo/sdo_test_util.h"

namespace zksupt::test {
namespace {

TEST(SdoConfig, AddRefusesWhatItCannotHold)
{
    Config config(SMSDOConfigAlloc());
    add(config.get(), 5, 6, {1, 2});
    const Bytes two{7, 7}, noBlock{'S', 'D', 'X', 'B', 0, 0, 8, 0};
    const Bytes broken = Bin().header("SDOB", 1, 8).bytes;  // states a slot it has no room for
    void *const nullHandles[2] = {config.get(), nullptr};
    const std::tuple<uint16_t, uint8_t, const void *, uint32_t, int32_t> cases[] = {
        {0, 6, two.data(), 2, SM_STATUS_INVALID_PARAMETER},
        {0xFFFE, 6, two.data(), 2, SM_STATUS_INVALID_PARAMETER},
        {0xFFFF, 6, two.data(), 2, SM_STATUS_INVALID_PARAMETER},
        {6, 0, two.data(), 2, SM_STATUS_INVALID_PARAMETER},
        {6, 6, nullptr, 2, SM_STATUS_INVALID_PARAMETER},
        {6, 6, two.data(), 0, SM_STATUS_INVALID_PARAMETER},
        {6, 12, two.data(), 2, SM_STATUS_INVALID_PARAMETER},
        {6, 12, noBlock.data(), 8, SM_STATUS_INVALID_PARAMETER},
        {6, 13, config.get(), 3, SM_STATUS_INVALID_PARAMETER},
        {6, 12, broken.data(), 8, SM_STATUS_FAILURE},
        {5, 6, two.data(), 2, SM_STATUS_DUPLICATE},
        {6, 0x40, two.data(), 2, SM_STATUS_SUCCESS},
        {6, 0x1D, nullHandles, 2 * kHandle, SM_STATUS_INVALID_PARAMETER},
    };
    for (const auto &[id, type, value, size, status] : cases)
        EXPECT_EQ(SMSDOConfigAddData(config.get(), id, type, value, size, 0), status) << id << " " << +type;
    EXPECT_EQ(serialise(config.get()), Bin().header("SDOB", 2, 24).inlined(5, 6, {1, 2}).inlined(6, 0x40, two).bytes)
        << "a refused duplicate leaves the old value";

    Config full(SMSDOConfigAlloc());
    const Bytes big(65520, 1);
    EXPECT_EQ(SMSDOConfigAddData(full.get(), 1, 14, big.data(), 65520, 0), SM_STATUS_LIMIT_REACHED)
        << "8 + 8 + 65520 = 0x10000";
    EXPECT_EQ(SMSDOConfigAddData(full.get(), 1, 14, big.data(), 65519, 0), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMSDOConfigAddData(full.get(), 2, 14, big.data(), 1, 0), SM_STATUS_LIMIT_REACHED);
    EXPECT_EQ(SMSDOConfigAddData(full.get(), 1, 14, big.data(), 1, 1), SM_STATUS_LIMIT_REACHED)
        << "the test ignores what a replace frees";
}

// The same lookups on the object and on its binary form, which differ in two
// ways: by ID the binary reports an inline value as its four slot bytes, and
// it writes the type (and ID) on success only.
TEST(SdoConfig, LookupsOnTheObjectAndItsBinaryFormThenRemoval)
{
    const auto valueOf = [](uint16_t id) { return Bytes(id == 9 ? 6 : id / 2, static_cast<uint8_t>(id)); };
    const uint16_t ascending[] = {3, 5, 9};
    Config config(SMSDOConfigAlloc());
    for (uint16_t id : {9, 3, 5})
        add(config.get(), id, static_cast<uint8_t>(0x80 | id), valueOf(id));
    const Bytes binary = serialise(config.get());
    constexpr int32_t kOk = SM_STATUS_SUCCESS, kSmall = SM_STATUS_BUFFER_TOO_SMALL,
                      kInvalid = SM_STATUS_INVALID_PARAMETER;
    // By ID or by index, key, capacity; status, size reported by the object and by the binary form.
    const std::tuple<bool, uint16_t, uint32_t, int32_t, uint32_t, uint32_t> lookups[] = {
        {true, 5, 8, kOk, 2, 4},           {false, 0, 8, kOk, 1, 1},
        {false, 2, 8, kOk, 6, 6},          {true, 9, 5, kSmall, 6, 6},
        {false, 1, 1, kSmall, 2, 2},       {true, 4, 8, SM_STATUS_NOT_FOUND, 8, 8},
        {true, 0xFFFF, 8, kInvalid, 8, 8}, {false, 3, 8, SM_STATUS_NOT_PRESENT, 8, 8}};
    for (const auto &[byId, key, capacity, expected, objectSize, binarySize] : lookups)
        for (const bool inBinary : {false, true}) {
            SCOPED_TRACE(::testing::Message()
                         << (inBinary ? "binary " : "object ") << (byId ? "ID " : "index ") << key);
            uint8_t type = 0, out[8] = {};
            uint16_t id = 0;
            uint32_t size = capacity;
            const int32_t status = inBinary
                                       ? (byId ? SMSDOBinaryGetDataByID(binary.data(), key, &type, out, &size)
                                               : SMSDOBinaryGetDataByIndex(binary.data(), key, &id, &type, out, &size))
                                       : (byId ? SMSDOConfigGetDataByID(config.get(), key, &type, out, &size)
                                               : SMSDOConfigGetDataByIndex(config.get(), key, &id, &type, out, &size));
            EXPECT_EQ(status, expected);
            EXPECT_EQ(size, inBinary ? binarySize : objectSize);
            const bool found = status == kOk || (status == kSmall && !inBinary);
            const uint16_t foundId = byId ? key : ascending[std::min(key, uint16_t{2})];
            EXPECT_EQ(type, found ? 0x80 | foundId : 0);
            EXPECT_EQ(id, found && !byId ? foundId : 0);
            Bytes value = valueOf(foundId);
            value.resize(status == kOk ? size : 0);
            value.resize(sizeof out);
            EXPECT_EQ(Bytes(out, out + sizeof out), value) << "in ascending ID order, padded; nothing on failure";
        }

    EXPECT_EQ(SMSDOConfigRemoveData(config.get(), 0, 0, 0), SM_STATUS_SUCCESS) << "an invalid ID selects by index";
    EXPECT_EQ(SMSDOConfigRemoveData(config.get(), 0xFFFF, 1, 0), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMSDOConfigRemoveData(config.get(), 3, 0, 0), SM_STATUS_NOT_FOUND);
    EXPECT_EQ(SMSDOConfigRemoveData(config.get(), 0, 1, 0), SM_STATUS_NOT_PRESENT);
    EXPECT_EQ(serialise(config.get()), Bin().header("SDOB", 1, 16).inlined(5, 0x85, {5, 5}).bytes) << "3 and 9 gone";
    add(config.get(), 5, 6, {1, 2, 3, 4, 5}, 1);
    EXPECT_EQ(serialise(config.get()), Bin().header("SDOB", 1, 21).outOfLine(5, 6, 5, 8).raw({1, 2, 3, 4, 5}).bytes);
    EXPECT_EQ(SMSDOConfigRemoveData(config.get(), 0, 0, 1), SM_STATUS_SUCCESS);
    EXPECT_EQ(serialise(config.get()), kEmpty) << "all removed";
}

// Ownership is proven by the sanitizer build: a child not freed leaks, one
// freed twice or too early is a use after free. A clone is deep and compares
// equal by value; a recalculation charges inline values in full and leaves
// out array headers, after which what is written no longer matches the size.
TEST(SdoConfig, NestedChildrenCloneAndRecalculation)
{
    Config parent(SMSDOConfigAlloc());
    SDOConfig *child = SMSDOBinaryToConfig(kChild.data());
    ASSERT_EQ(SMSDOConfigAddData(parent.get(), 1, 13, child, kHandle, 0), SM_STATUS_SUCCESS);
    SDOConfig *pair[2] = {SMSDOBinaryToConfig(kChild.data()), SMSDOConfigAlloc()};
    ASSERT_EQ(SMSDOConfigAddData(parent.get(), 2, 0x1D, pair, sizeof pair, 0), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMSDOConfigGetBinarySize(parent.get()), 32u + 8 + 8 + 16 + 8) << "array header plus children";
    add(parent.get(), 3, 0x26, {1, 2});
    SDOConfig *held = nullptr;
    uint8_t type = 0;
    uint32_t size = kHandle;
    ASSERT_EQ(SMSDOConfigGetDataByID(parent.get(), 1, &type, &held, &size), SM_STATUS_SUCCESS);
    EXPECT_EQ(held, child) << "the value of a nested entry is its handle";

    Config clone(SMSDOConfigClone(parent.get()));  // children it shared would be freed twice
    EXPECT_EQ(SMSDOConfigCompareByValue(parent.get(), clone.get()), 1);
    add(clone.get(), 3, 0x66, {1, 2}, 1);
    EXPECT_EQ(SMSDOConfigCompareByValue(parent.get(), clone.get()), 0) << "attribute bits count";
    EXPECT_EQ(SMSDOConfigReCalcBinarySize(clone.get()), 8u + 24 + 32 + 10) << "inline values in full, no array header";
    EXPECT_EQ(serialise(clone.get(), SM_STATUS_FAILURE).size(), 80u) << "what is written no longer matches";
    EXPECT_EQ(SMSDOConfigClone(clone.get()), nullptr);
    EXPECT_EQ(SMSDOConfigCompareByValue(clone.get(), clone.get()), 0);

    SDOConfig *stranger = SMSDOBinaryToConfig(kChild.data());
    EXPECT_EQ(SMSDOConfigAddData(parent.get(), 2, 13, stranger, kHandle, 0), SM_STATUS_DUPLICATE)
        << "still the caller's";
    // Kept: freed here, it would be freed again when replaced below.
    EXPECT_EQ(SMSDOConfigAddData(parent.get(), 1, 13, child, kHandle, 1), SM_STATUS_SUCCESS) << "same handle";
    EXPECT_EQ(SMSDOConfigAddData(parent.get(), 1, 13, stranger, kHandle, 1), SM_STATUS_SUCCESS)
        << "the old child is freed";
    add(parent.get(), 2, 6, {1, 2}, 1);  // both array children are freed
    EXPECT_EQ(SMSDOConfigAddData(parent.get(), 2, 12, kChild.data(), 16, 0), SM_STATUS_DUPLICATE)
        << "objects made here are freed";
    EXPECT_EQ(SMSDOConfigAddData(parent.get(), 2, 12, kPair.data(), 32, 0), SM_STATUS_DUPLICATE);
    add(parent.get(), 4, 0x4C, kPair);
    EXPECT_EQ(SMSDOConfigGetDataByID(parent.get(), 4, &type, nullptr, &size), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(std::make_pair(type, size), std::make_pair(uint8_t{0x5D}, 2 * kHandle)) << "two objects made here";
    EXPECT_EQ(SMSDOConfigRemoveData(parent.get(), 4, 0, 0), SM_STATUS_SUCCESS) << "both children are freed";
    EXPECT_EQ(serialise(parent.get()), Bin()
                                           .header("SDOB", 3, 48)
                                           .outOfLine(1, 12, 16, 24)
                                           .inlined(2, 6, {1, 2})
                                           .inlined(3, 0x26, {1, 2})
                                           .raw(kChild)
                                           .bytes);
    add(stranger, 2, 6, {7, 7, 7, 7, 7, 7});
    EXPECT_EQ(serialise(parent.get(), SM_STATUS_FAILURE).size(), 62u) << "the parent charged the child's old size";
}

}  // namespace
}  // namespace zksupt::test
