// The configuration object: size accounting, statuses of adds, lookups and
// removal, ownership of nested objects, clone and compare.
#include "sdo/sdo_test_util.h"

namespace zksupt::test {
namespace {

constexpr uint32_t kHandle = sizeof(void *);

SDOConfig *childWith(uint16_t id, const Bytes &value)
{
    SDOConfig *child = SMSDOConfigAlloc();
    add(child, id, 6, value);
    return child;
}

TEST(SdoConfig, SizeAccountingFollowsAddsAndRemoves)
{
    EXPECT_EQ(SMSDOConfigGetCount(nullptr), 0xFFFFFFFFu);
    EXPECT_EQ(SMSDOConfigGetBinarySize(nullptr), 0u);
    EXPECT_EQ(SMSDOConfigReCalcBinarySize(nullptr), 0u);
    Config config = newConfig();
    EXPECT_EQ(SMSDOConfigGetCount(config.get()), 0u);
    EXPECT_EQ(SMSDOConfigGetBinarySize(config.get()), 8u);
    add(config.get(), 1, 7, {1, 2, 3, 4});
    EXPECT_EQ(SMSDOConfigGetBinarySize(config.get()), 16u) << "a value that fits in its slot costs the slot";
    add(config.get(), 2, 14, {1, 2, 3, 4, 5});
    EXPECT_EQ(SMSDOConfigGetBinarySize(config.get()), 29u);
    const Bytes six(6, 9);
    EXPECT_EQ(SMSDOConfigAddData(config.get(), 1, 7, six.data(), 6, 1), 0) << "replace";
    EXPECT_EQ(SMSDOConfigGetCount(config.get()), 2u);
    EXPECT_EQ(SMSDOConfigGetBinarySize(config.get()), 35u);
    EXPECT_EQ(SMSDOConfigRemoveData(config.get(), 2, 0, 0), 0);
    EXPECT_EQ(SMSDOConfigGetBinarySize(config.get()), 22u);
    EXPECT_EQ(SMSDOConfigRemoveData(config.get(), 0, 0, 1), 0);
    EXPECT_EQ(SMSDOConfigGetCount(config.get()), 0u);
    EXPECT_EQ(SMSDOConfigGetBinarySize(config.get()), 8u);
}

TEST(SdoConfig, AddRefusesWhatItCannotHold)
{
    Config config = newConfig();
    add(config.get(), 5, 6, {1, 2});
    const Bytes two{7, 7};
    const Bytes noBlock{'S', 'D', 'X', 'B', 0, 0, 8, 0};
    const Bytes broken = Bin().header("SDOB", 1, 8).bytes;  // states a slot it has no room for
    void *const nullHandles[2] = {config.get(), nullptr};
    struct Case {
        uint16_t id;
        uint8_t type;
        const void *value;
        uint32_t size;
        int32_t status;
    } cases[] = {
        {0, 6, two.data(), 2, 0x10F},       {0xFFFE, 6, two.data(), 2, 0x10F}, {0xFFFF, 6, two.data(), 2, 0x10F},
        {6, 0, two.data(), 2, 0x10F},       {6, 6, nullptr, 2, 0x10F},         {6, 6, two.data(), 0, 0x10F},
        {6, 12, noBlock.data(), 8, 0x10F},  {6, 12, two.data(), 2, 0x10F},     {6, 13, config.get(), 3, 0x10F},
        {6, 0x1D, nullHandles, 2 * kHandle, 0x10F}, {6, 12, broken.data(), 8, -1}, {5, 6, two.data(), 2, 0x102},
        {6, 0x40, two.data(), 2, 0},
    };
    for (const Case &c : cases)
        EXPECT_EQ(SMSDOConfigAddData(config.get(), c.id, c.type, c.value, c.size, 0), c.status) << c.id << " " << +c.type;
    EXPECT_EQ(SMSDOConfigAddData(nullptr, 6, 6, two.data(), 2, 0), 0x10F);
    EXPECT_EQ(SMSDOConfigGetCount(config.get()), 2u);
    uint8_t value[2];
    uint32_t size = 2;
    EXPECT_EQ(SMSDOConfigGetDataByID(config.get(), 5, nullptr, value, &size), 0);
    EXPECT_EQ(Bytes(value, value + 2), (Bytes{1, 2})) << "a refused duplicate leaves the old value";

    Config full = newConfig();
    const Bytes big(65520, 1);
    EXPECT_EQ(SMSDOConfigAddData(full.get(), 1, 14, big.data(), 65520, 0), 0x13) << "8 + 8 + 65520 = 0x10000";
    EXPECT_EQ(SMSDOConfigAddData(full.get(), 1, 14, big.data(), 65519, 0), 0);
    EXPECT_EQ(SMSDOConfigAddData(full.get(), 2, 14, big.data(), 1, 0), 0x13);
    EXPECT_EQ(SMSDOConfigAddData(full.get(), 1, 14, big.data(), 1, 1), 0x13) << "the test ignores what a replace frees";
}

TEST(SdoConfig, LookupsCopyOutOrReportTheSize)
{
    Config config = newConfig();
    add(config.get(), 9, 0x87, {9, 9, 9, 9, 9, 9});
    add(config.get(), 3, 5, {3});
    add(config.get(), 5, 6, {5, 5});
    uint16_t id = 0;
    uint8_t type = 0, out[8] = {};
    uint32_t size = 0;
    const uint16_t ascending[] = {3, 5, 9};
    for (uint32_t index = 0; index < 3; ++index) {
        size = sizeof out;
        EXPECT_EQ(SMSDOConfigGetDataByIndex(config.get(), index, &id, nullptr, out, &size), 0);
        EXPECT_EQ(id, ascending[index]) << "ascending ID order, not insertion order";
        EXPECT_EQ(out[0], id);
    }
    size = 5;
    EXPECT_EQ(SMSDOConfigGetDataByIndex(config.get(), 2, &id, &type, out, &size), 0x10);
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(type, 0x87) << "type and ID are reported with 0x10 too";
    EXPECT_EQ(SMSDOConfigGetDataByIndex(config.get(), 3, &id, &type, out, &size), 0xC);
    EXPECT_EQ(SMSDOConfigGetDataByIndex(config.get(), 0, nullptr, &type, out, &size), 0x10F);
    EXPECT_EQ(SMSDOConfigGetDataByIndex(config.get(), 0, &id, &type, out, nullptr), 0x10F);
    size = 100;
    type = 0;
    EXPECT_EQ(SMSDOConfigGetDataByID(config.get(), 5, &type, nullptr, &size), 0x10);
    EXPECT_EQ(size, 2u);
    EXPECT_EQ(type, 6);
    EXPECT_EQ(SMSDOConfigGetDataByID(config.get(), 4, &type, out, &size), 0x100);
    EXPECT_EQ(SMSDOConfigGetDataByID(config.get(), 0xFFFF, &type, out, &size), 0x10F);
    EXPECT_EQ(SMSDOConfigGetDataByID(config.get(), 5, &type, out, nullptr), 0x10F);
    EXPECT_EQ(SMSDOConfigGetDataByID(nullptr, 5, &type, out, &size), 0x10F);
}

TEST(SdoConfig, RemoveByIdOrIndex)
{
    Config config = newConfig();
    for (uint16_t id : {40, 10, 30, 20})
        add(config.get(), id, 6, {1, 2});
    EXPECT_EQ(SMSDOConfigRemoveData(config.get(), 0, 0, 0), 0) << "an invalid ID selects by index";
    EXPECT_EQ(SMSDOConfigRemoveData(config.get(), 0xFFFF, 1, 0), 0);
    uint16_t id = 0;
    uint32_t size = 0;
    EXPECT_EQ(SMSDOConfigGetDataByIndex(config.get(), 0, &id, nullptr, nullptr, &size), 0x10);
    EXPECT_EQ(id, 20);
    EXPECT_EQ(SMSDOConfigGetDataByIndex(config.get(), 1, &id, nullptr, nullptr, &size), 0x10);
    EXPECT_EQ(id, 40);
    EXPECT_EQ(SMSDOConfigRemoveData(config.get(), 30, 0, 0), 0x100);
    EXPECT_EQ(SMSDOConfigRemoveData(config.get(), 0, 2, 0), 0xC);
    EXPECT_EQ(SMSDOConfigRemoveData(nullptr, 20, 0, 0), 0x10F);
    EXPECT_EQ(SMSDOConfigGetCount(config.get()), 2u);
    EXPECT_EQ(SMSDOConfigGetBinarySize(config.get()), 24u);
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
    const Bytes block = serialise(stranger);
    EXPECT_EQ(SMSDOConfigAddData(parent.get(), 2, 12, block.data(), static_cast<uint32_t>(block.size()), 0), 0x102)
        << "the object made from the block is freed again";
    EXPECT_EQ(serialise(parent.get()).size(), 40u);

    add(stranger, 2, 6, {7, 7, 7, 7, 7, 7});
    EXPECT_EQ(serialise(parent.get(), -1).size(), 54u) << "the parent charged the child's old size";
    EXPECT_EQ(SMSDOConfigRemoveData(parent.get(), 1, 0, 0), 0);
    add(parent.get(), 3, 12, block);
    EXPECT_EQ(SMSDOConfigGetCount(parent.get()), 2u);
}

TEST(SdoConfig, RecalculationUsesTheOlderSum)
{
    Config config = newConfig();
    add(config.get(), 7, 6, {1, 2});
    EXPECT_EQ(SMSDOConfigReCalcBinarySize(config.get()), 18u) << "the inline value is charged in full";
    EXPECT_EQ(SMSDOConfigGetBinarySize(config.get()), 18u);
    EXPECT_EQ(serialise(config.get(), -1).size(), 16u) << "what is written no longer matches";

    Config nested = newConfig();
    SDOConfig *pair[2] = {childWith(1, {1}), childWith(2, {2})};
    ASSERT_EQ(SMSDOConfigAddData(nested.get(), 1, 0x1D, pair, sizeof pair, 0), 0);
    EXPECT_EQ(SMSDOConfigGetBinarySize(nested.get()), 56u);
    EXPECT_EQ(SMSDOConfigReCalcBinarySize(nested.get()), 48u) << "no array header";
}

TEST(SdoConfig, CloneIsDeepAndComparesEqualByValue)
{
    Config config = newConfig();
    add(config.get(), 2, 0x26, {1, 2, 3, 4, 5, 6});
    SDOConfig *child = childWith(4, {4, 4});
    ASSERT_EQ(SMSDOConfigAddData(config.get(), 3, 13, child, kHandle, 0), 0);
    Config clone(SMSDOConfigClone(config.get()));
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(SMSDOConfigCompareByValue(config.get(), clone.get()), 1);
    SDOConfig *copied = nullptr;
    uint32_t size = kHandle;
    ASSERT_EQ(SMSDOConfigGetDataByID(clone.get(), 3, nullptr, &copied, &size), 0);
    EXPECT_NE(copied, child);
    EXPECT_EQ(SMSDOConfigCompareByValue(copied, child), 1);

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
