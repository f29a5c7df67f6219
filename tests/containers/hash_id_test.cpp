// The hash-ID table: sizing, both allocation modes, reservation, the scans
// and enumeration, all on tables in ordinary memory.
#include <gtest/gtest.h>

#include <cstdlib>
#include <initializer_list>
#include <vector>

#include <zksupt/zksupt.h>

namespace {

class HashIds : public ::testing::Test {
  protected:
    static constexpr uint32_t kBytes = 16;  // IDs 1 to 127
    void SetUp() override { ASSERT_EQ(SMClearHashTable(table, kBytes), 0); }
    void take(std::initializer_list<uint32_t> ids)
    {
        for (uint32_t id : ids)
            ASSERT_EQ(SMAcquireHashIDByID(table, kBytes, id), 0) << id;
    }
    uint32_t acquire(uint32_t mode) { return SMAcquireHashID(table, kBytes, mode); }
    std::vector<uint32_t> enumerate()
    {
        std::vector<uint32_t> ids;
        uint32_t word = 99, bit = 99;
        for (uint32_t id = SMFindFirstHashID(table, kBytes, &word, &bit); id != 0 && ids.size() < 200;
             id = SMFindNextHashID(table, kBytes, &word, &bit)) {
            EXPECT_EQ(id, word * 32 + bit);
            ids.push_back(id);
        }
        return ids;
    }
    uint32_t table[kBytes / 4] = {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};
};

TEST(HashIdSizing, RoundsDownAndAddsAWord)
{
    const std::pair<uint32_t, uint32_t> cases[] = {{0, 0},         {1, 4},          {31, 4},
                                                   {32, 8},        {33, 8},         {64, 12},
                                                   {0x3FFFFFFE, 0x8000000}, {0x3FFFFFFF, 0}, {UINT32_MAX, 0}};
    for (const auto &[count, bytes] : cases)
        EXPECT_EQ(SMHashTableBytesNeeded(count), bytes) << count;
}

TEST_F(HashIds, LowestFreeModeFillsGapsFirst)
{
    EXPECT_EQ(acquire(0), 1u);
    EXPECT_EQ(acquire(0), 2u);
    EXPECT_EQ(acquire(0), 3u);
    EXPECT_EQ(SMReleaseHashID(table, kBytes, 2), 0);
    EXPECT_EQ(acquire(0), 2u);
    take({5});
    EXPECT_EQ(acquire(0), 4u);
    for (uint32_t id = 6; id < 128; ++id)
        EXPECT_EQ(acquire(0), id);
    EXPECT_EQ(acquire(0), 0u) << "full";
    EXPECT_EQ(acquire(1), 0u) << "full";
}

TEST_F(HashIds, AfterHighestModeRisesWithinTheLastPartlyUsedWord)
{
    take({1, 2, 3});
    EXPECT_EQ(SMReleaseHashID(table, kBytes, 2), 0);
    EXPECT_EQ(acquire(1), 4u);
    EXPECT_EQ(acquire(1), 5u);

    // Set bits at the top of the word are passed over for the gap below them.
    take({31});
    EXPECT_EQ(acquire(1), 6u);
    // A later partly used word wins; within it the ID above its highest one in use.
    take({40, 70});
    EXPECT_EQ(acquire(1), 71u);
    // Nothing in use below a free ID: the lowest free ID of that word.
    take({127});
    EXPECT_EQ(acquire(1), 96u);
    EXPECT_EQ(acquire(1), 97u);
    EXPECT_EQ(acquire(0), 2u);
}

TEST_F(HashIds, AfterHighestModeChoosesItsWordLikeThis)
{
    take({1, 31});
    EXPECT_EQ(acquire(1), 2u);  // an earlier partly used word beats the later empty ones
    for (uint32_t id = 3; id < 31; ++id)
        take({id});
    EXPECT_EQ(acquire(1), 32u) << "word 0 is full, the first empty word follows";
    take({0, 33});
    EXPECT_EQ(SMReleaseHashID(table, kBytes, 32), 0);
    take({63, 64, 65});
    EXPECT_EQ(acquire(1), 66u);
    EXPECT_EQ(SMAcquireHashID(table, kBytes, 2), 0u) << "unknown mode";
    EXPECT_EQ(SMAcquireHashID(table, 3, 0), 0u) << "no whole word";
    EXPECT_EQ(SMAcquireHashID(nullptr, kBytes, 0), 0u);
}

TEST_F(HashIds, ReserveVerifyAndReleaseReportTheirStatuses)
{
    EXPECT_EQ(SMVerifyHashID(table, kBytes, 7), 0x0C);
    EXPECT_EQ(SMReleaseHashID(table, kBytes, 7), 0x0C);
    EXPECT_EQ(SMAcquireHashIDByID(table, kBytes, 7), 0);
    EXPECT_EQ(SMAcquireHashIDByID(table, kBytes, 7), 0x102);
    EXPECT_EQ(SMVerifyHashID(table, kBytes, 7), 0);
    EXPECT_EQ(SMReleaseHashID(table, kBytes, 7), 0);
    EXPECT_EQ(SMVerifyHashID(table, kBytes, 7), 0x0C);
    EXPECT_EQ(SMAcquireHashIDByID(table, kBytes, 0), 0) << "ID 0 can be reserved by ID";
    EXPECT_EQ(SMAcquireHashIDByID(table, 8, 63), 0);
    EXPECT_EQ(SMAcquireHashIDByID(table, 8, 64), 0x101);
    EXPECT_EQ(SMVerifyHashID(table, 8, 64), 0x101);
    EXPECT_EQ(SMReleaseHashID(table, 8, UINT32_MAX), 0x101);
    EXPECT_EQ(SMAcquireHashIDByID(nullptr, kBytes, 1), 0x10F);
    EXPECT_EQ(SMVerifyHashID(nullptr, kBytes, 1), 0x10F);
    EXPECT_EQ(SMReleaseHashID(nullptr, kBytes, 1), 0x10F);
    EXPECT_EQ(SMClearHashTable(nullptr, kBytes), 0x10F);
}

TEST_F(HashIds, ScansFindTheLowestAndHighestInUse)
{
    EXPECT_EQ(SMGetMinInUseID(table, kBytes), 0u);
    EXPECT_EQ(SMGetMaxInUseID(table, kBytes), 0u);
    take({40, 100});
    EXPECT_EQ(SMGetMinInUseID(table, kBytes), 40u);
    EXPECT_EQ(SMGetMaxInUseID(table, kBytes), 100u);
    take({0});
    EXPECT_EQ(SMGetMinInUseID(table, kBytes), 0u) << "word 0 holding only ID 0 ends the scan";
    take({3});
    EXPECT_EQ(SMGetMinInUseID(table, kBytes), 3u);
    EXPECT_EQ(SMGetMaxInUseID(table, 8), 40u);
    EXPECT_EQ(SMGetMaxInUseID(table, 3), 0u);
    EXPECT_EQ(SMGetMinInUseID(nullptr, kBytes), 0u);
}

TEST_F(HashIds, EnumerationVisitsEveryIdInUseInAscendingOrder)
{
    EXPECT_EQ(enumerate(), std::vector<uint32_t>{});
    take({0, 5, 31, 32, 40, 63, 127});
    EXPECT_EQ(enumerate(), (std::vector<uint32_t>{5, 31, 32, 40, 63, 127}));

    uint32_t word = 1, bit = 8;  // ID 40: the search starts after it
    EXPECT_EQ(SMFindNextHashID(table, kBytes, &word, &bit), 63u);
    bit = 40;  // beyond the word: the next word from its first bit
    EXPECT_EQ(SMFindNextHashID(table, kBytes, &word, &bit), 127u);
    EXPECT_EQ(SMFindNextHashID(table, kBytes, &word, &bit), 0u);
    EXPECT_EQ(word * 32 + bit, 127u) << "the cursors keep the last ID found";
    EXPECT_EQ(SMFindNextHashID(table, 3, &word, &bit), 0u);
    EXPECT_EQ(SMFindFirstHashID(table, kBytes, nullptr, &bit), 0u);
}

// Only whole words are used: nothing of a table reaches past bytes / 4 words.
TEST(HashIdTable, PartialWordsAreNeverTouched)
{
    auto *table = static_cast<uint32_t *>(std::malloc(7));
    ASSERT_NE(table, nullptr);
    uint32_t word = 0, bit = 0;
    EXPECT_EQ(SMClearHashTable(table, 7), 0);
    for (uint32_t id = 1; id < 32; ++id)
        EXPECT_EQ(SMAcquireHashID(table, 7, id % 2), id);
    EXPECT_EQ(SMAcquireHashID(table, 7, 0), 0u);
    EXPECT_EQ(SMAcquireHashID(table, 7, 1), 0u);
    EXPECT_EQ(SMAcquireHashIDByID(table, 7, 32), 0x101);
    EXPECT_EQ(SMGetMaxInUseID(table, 7), 31u);
    EXPECT_EQ(SMGetMinInUseID(table, 7), 1u);
    EXPECT_EQ(SMFindFirstHashID(table, 7, &word, &bit), 1u);
    bit = 30;
    EXPECT_EQ(SMFindNextHashID(table, 7, &word, &bit), 31u);
    EXPECT_EQ(SMFindNextHashID(table, 7, &word, &bit), 0u);
    std::free(table);
}

}  // namespace
