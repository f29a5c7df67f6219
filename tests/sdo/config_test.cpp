// The configuration object: statuses of adds, lookups (also in the binary
// form) and removal, size accounting, nested objects, clone and compare.
#include <algorithm>
#include <tuple>

#include "sdo/sdo_test_util.h"

namespace zksupt::test {
namespace {

SDOConfig *childWith(uint16_t id, const Bytes &value)
{
    SDOConfig *child = SMSDOConfigAlloc();
    add(child, id, 6, value);
    return child;
}

TEST(SdoConfig, AddRefusesWhatItCannotHold)
{
    Config config = newConfig();
    add(config.get(), 5, 6, {1, 2});
    const Bytes two{7, 7}, noBlock{'S', 'D', 'X', 'B', 0, 0, 8, 0};
    const Bytes broken = Bin().header("SDOB", 1, 8).bytes;  // states a slot it has no room for
    void *const nullHandles[2] = {config.get(), nullptr};
    const std::tuple<uint16_t, uint8_t, const void *, uint32_t, int32_t> cases[] = {
        {0, 6, two.data(), 2, 0x10F},     {0xFFFE, 6, two.data(), 2, 0x10F},  {0xFFFF, 6, two.data(), 2, 0x10F},
        {6, 0, two.data(), 2, 0x10F},     {6, 6, nullptr, 2, 0x10F},          {6, 6, two.data(), 0, 0x10F},
        {6, 12, two.data(), 2, 0x10F},    {6, 12, noBlock.data(), 8, 0x10F},  {6, 13, config.get(), 3, 0x10F},
        {6, 12, broken.data(), 8, -1},    {5, 6, two.data(), 2, 0x102},       {6, 0x40, two.data(), 2, 0},
        {6, 0x1D, nullHandles, 2 * kHandle, 0x10F},
    };
    for (const auto &[id, type, value, size, status] : cases)
        EXPECT_EQ(SMSDOConfigAddData(config.get(), id, type, value, size, 0), status) << id << " " << +type;
    EXPECT_EQ(SMSDOConfigAddData(nullptr, 6, 6, two.data(), 2, 0), 0x10F);
    EXPECT_EQ(SMSDOConfigGetCount(config.get()), 2u);
    EXPECT_EQ(serialise(config.get()), Bin().header("SDOB", 2, 24).inlined(5, 6, {1, 2}).inlined(6, 0x40, two).bytes)
        << "a refused duplicate leaves the old value";

    Config full = newConfig();
    const Bytes big(65520, 1);
    EXPECT_EQ(SMSDOConfigAddData(full.get(), 1, 14, big.data(), 65520, 0), 0x13) << "8 + 8 + 65520 = 0x10000";
    EXPECT_EQ(SMSDOConfigAddData(full.get(), 1, 14, big.data(), 65519, 0), 0);
    EXPECT_EQ(SMSDOConfigAddData(full.get(), 2, 14, big.data(), 1, 0), 0x13);
    EXPECT_EQ(SMSDOConfigAddData(full.get(), 1, 14, big.data(), 1, 1), 0x13) << "the test ignores what a replace frees";
}

// The same lookups on the object and on its binary form, which differ in two
// ways: by ID the binary reports an inline value as its four slot bytes, and
// it writes the type (and ID) on success only.
TEST(SdoConfig, LookupsOnTheObjectAndItsBinaryForm)
{
    const auto valueOf = [](uint16_t id) { return Bytes(id == 9 ? 6 : id / 2, static_cast<uint8_t>(id)); };
    const uint16_t ascending[] = {3, 5, 9};
    Config config = newConfig();
    for (uint16_t id : {9, 3, 5})
        add(config.get(), id, static_cast<uint8_t>(0x80 | id), valueOf(id));
    const Bytes binary = serialise(config.get());
    // By ID or by index, key, capacity; status, size reported by the object and by the binary form.
    const std::tuple<bool, uint16_t, uint32_t, int32_t, uint32_t, uint32_t> lookups[] = {
        {true, 5, 8, 0, 2, 4},          {false, 0, 8, 0, 1, 1},    {false, 2, 8, 0, 6, 6},
        {true, 9, 5, 0x10, 6, 6},       {false, 1, 1, 0x10, 2, 2}, {true, 4, 8, 0x100, 8, 8},
        {true, 0xFFFF, 8, 0x10F, 8, 8}, {false, 3, 8, 0xC, 8, 8}};
    for (const auto &[byId, key, capacity, expected, objectSize, binarySize] : lookups)
        for (const bool inBinary : {false, true}) {
            SCOPED_TRACE(::testing::Message() << (inBinary ? "binary " : "object ") << (byId ? "ID " : "index ") << key);
            uint8_t type = 0, out[8] = {};
            uint16_t id = 0;
            uint32_t size = capacity;
            const int32_t status = inBinary ? (byId ? SMSDOBinaryGetDataByID(binary.data(), key, &type, out, &size)
                                                    : SMSDOBinaryGetDataByIndex(binary.data(), key, &id, &type, out, &size))
                                            : (byId ? SMSDOConfigGetDataByID(config.get(), key, &type, out, &size)
                                                    : SMSDOConfigGetDataByIndex(config.get(), key, &id, &type, out, &size));
            EXPECT_EQ(status, expected);
            EXPECT_EQ(size, inBinary ? binarySize : objectSize);
            const bool found = status == 0 || (status == 0x10 && !inBinary);
            const uint16_t foundId = byId ? key : ascending[std::min(key, uint16_t{2})];
            EXPECT_EQ(type, found ? 0x80 | foundId : 0);
            EXPECT_EQ(id, found && !byId ? foundId : 0);
            Bytes value = status == 0 ? valueOf(foundId) : Bytes{};
            value.resize(status == 0 ? size : 0);
            value.resize(sizeof out);
            EXPECT_EQ(Bytes(out, out + sizeof out), value) << "in ascending ID order, padded; nothing on failure";
        }
    EXPECT_EQ(SMSDOConfigGetDataByIndex(config.get(), 0, nullptr, nullptr, nullptr, nullptr), 0x10F);
    EXPECT_EQ(SMSDOConfigGetDataByID(config.get(), 5, nullptr, nullptr, nullptr), 0x10F);
    EXPECT_EQ(SMSDOConfigGetDataByID(nullptr, 5, nullptr, nullptr, nullptr), 0x10F);
}

TEST(SdoConfig, RemoveByIdOrIndexAndTheSizeFollows)
{
    EXPECT_EQ(SMSDOConfigGetCount(nullptr), 0xFFFFFFFFu);
    EXPECT_EQ(SMSDOConfigGetBinarySize(nullptr), 0u);
    Config config = newConfig();
    for (uint16_t id : {40, 10, 30, 20})
        add(config.get(), id, 6, Bytes(id / 10 + 3, 1));
    EXPECT_EQ(SMSDOConfigGetBinarySize(config.get()), 8u + 8 + 13 + 14 + 15) << "values of 4 bytes fit in the slot";
    EXPECT_EQ(SMSDOConfigRemoveData(config.get(), 0, 0, 0), 0) << "an invalid ID selects by index";
    EXPECT_EQ(SMSDOConfigRemoveData(config.get(), 0xFFFF, 1, 0), 0);
    EXPECT_EQ(SMSDOConfigRemoveData(config.get(), 30, 0, 0), 0x100);
    EXPECT_EQ(SMSDOConfigRemoveData(config.get(), 0, 2, 0), 0xC);
    EXPECT_EQ(SMSDOConfigRemoveData(nullptr, 20, 0, 0), 0x10F);
    EXPECT_EQ(serialise(config.get()),
              Bin().header("SDOB", 2, 36).outOfLine(20, 6, 5, 16).outOfLine(40, 6, 7, 13).raw(Bytes(12, 1)).bytes);
    const Bytes two(2, 2);
    EXPECT_EQ(SMSDOConfigAddData(config.get(), 20, 6, two.data(), 2, 1), 0) << "replaced";
    EXPECT_EQ(SMSDOConfigGetCount(config.get()), 2u);
    EXPECT_EQ(SMSDOConfigGetBinarySize(config.get()), 31u);
    EXPECT_EQ(SMSDOConfigRemoveData(config.get(), 0, 0, 1), 0);
    EXPECT_EQ(SMSDOConfigGetCount(config.get()), 0u);
    EXPECT_EQ(SMSDOConfigGetBinarySize(config.get()), 8u);
}

// Ownership is proven by the sanitizer build: a child not freed leaks, one
// freed twice or too early is a use after free.
TEST(SdoConfig, NestedChildrenBelongToTheirEntry)
{
    Config parent = newConfig();
    SDOConfig *child = childWith(1, {1, 2, 3, 4, 5});
    ASSERT_EQ(SMSDOConfigAddData(parent.get(), 1, 13, child, kHandle, 0), 0);
    EXPECT_EQ(SMSDOConfigGetBinarySize(parent.get()), 8u + 8 + 21);
    SDOConfig *pair[2] = {childWith(1, {1}), childWith(2, {2})};
    ASSERT_EQ(SMSDOConfigAddData(parent.get(), 2, 0x1D, pair, sizeof pair, 0), 0);
    EXPECT_EQ(SMSDOConfigGetBinarySize(parent.get()), 37u + 8 + 8 + 16 + 16) << "array header plus children";
    SDOConfig *held = nullptr;
    uint32_t size = kHandle;
    ASSERT_EQ(SMSDOConfigGetDataByID(parent.get(), 1, nullptr, &held, &size), 0);
    EXPECT_EQ(held, child) << "the value of a nested entry is its handle";

    SDOConfig *stranger = childWith(3, {3});
    EXPECT_EQ(SMSDOConfigAddData(parent.get(), 2, 13, stranger, kHandle, 0), 0x102) << "still the caller's";
    EXPECT_EQ(SMSDOConfigAddData(parent.get(), 1, 13, child, kHandle, 1), 0) << "same handle: kept";
    EXPECT_EQ(serialise(parent.get()).size(), 85u);
    EXPECT_EQ(SMSDOConfigAddData(parent.get(), 1, 13, stranger, kHandle, 1), 0) << "the old child is freed";
    const Bytes plain{1, 2};
    EXPECT_EQ(SMSDOConfigAddData(parent.get(), 2, 6, plain.data(), 2, 1), 0) << "both array children are freed";
    const Bytes block = serialise(stranger), pairBlock = Bin().header("SDAB", 2, 40).raw(block).raw(block).bytes;
    EXPECT_EQ(SMSDOConfigAddData(parent.get(), 2, 12, block.data(), 16, 0), 0x102) << "objects made here are freed";
    EXPECT_EQ(SMSDOConfigAddData(parent.get(), 2, 12, pairBlock.data(), 40, 0), 0x102);
    EXPECT_EQ(serialise(parent.get()).size(), 40u);
    add(parent.get(), 3, 12, block);
    add(parent.get(), 4, 0x52, pairBlock);
    EXPECT_EQ(serialise(parent.get()), Bin().header("SDOB", 4, 112).outOfLine(1, 12, 16, 32).inlined(2, 6, {1, 2})
                                           .outOfLine(3, 12, 16, 32).outOfLine(4, 0x52, 40, 40).raw(block).raw(block)
                                           .raw(pairBlock).bytes);
    EXPECT_EQ(SMSDOConfigRemoveData(parent.get(), 4, 0, 0), 0) << "both children are freed";
    add(stranger, 2, 6, {7, 7, 7, 7, 7, 7});
    EXPECT_EQ(serialise(parent.get(), -1).size(), 78u) << "the parent charged the child's old size";
}

TEST(SdoConfig, RecalculationUsesTheOlderSum)
{
    EXPECT_EQ(SMSDOConfigReCalcBinarySize(nullptr), 0u);
    Config config = newConfig();
    add(config.get(), 7, 6, {1, 2});
    EXPECT_EQ(SMSDOConfigReCalcBinarySize(config.get()), 18u) << "the inline value is charged in full";
    EXPECT_EQ(SMSDOConfigGetBinarySize(config.get()), 18u);
    EXPECT_EQ(serialise(config.get(), -1).size(), 16u) << "what is written no longer matches";
    SDOConfig *pair[2] = {childWith(1, {1, 2, 3, 4, 5}), childWith(2, {2})};
    ASSERT_EQ(SMSDOConfigAddData(config.get(), 8, 0x1D, pair, sizeof pair, 0), 0);
    EXPECT_EQ(SMSDOConfigReCalcBinarySize(config.get()), 18u + 8 + 21 + 16) << "no array header";
}

TEST(SdoConfig, CloneIsDeepAndComparesEqualByValue)
{
    Config config = newConfig();
    add(config.get(), 2, 0x26, {1, 2, 3, 4, 5, 6});
    ASSERT_EQ(SMSDOConfigAddData(config.get(), 3, 13, childWith(4, {4, 4}), kHandle, 0), 0);
    Config clone(SMSDOConfigClone(config.get()));  // a shared child would be freed twice below
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(SMSDOConfigCompareByValue(config.get(), clone.get()), 1);

    const Bytes other{1, 2, 3, 4, 5, 7}, same{1, 2, 3, 4, 5, 6};
    ASSERT_EQ(SMSDOConfigAddData(clone.get(), 2, 0x26, other.data(), 6, 1), 0);
    EXPECT_EQ(SMSDOConfigCompareByValue(config.get(), clone.get()), 0);
    ASSERT_EQ(SMSDOConfigAddData(clone.get(), 2, 0x66, same.data(), 6, 1), 0);
    EXPECT_EQ(SMSDOConfigCompareByValue(config.get(), clone.get()), 0) << "attribute bits count";
    EXPECT_EQ(SMSDOConfigCompareByValue(nullptr, nullptr), 1);
    EXPECT_EQ(SMSDOConfigCompareByValue(config.get(), nullptr), 0);
    EXPECT_EQ(SMSDOConfigClone(nullptr), nullptr);
    add(clone.get(), 9, 6, {1, 2});
    SMSDOConfigReCalcBinarySize(clone.get());
    EXPECT_EQ(SMSDOConfigClone(clone.get()), nullptr) << "a stale size cannot be serialised";
}

}  // namespace
}  // namespace zksupt::test
