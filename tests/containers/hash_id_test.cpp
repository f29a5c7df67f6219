// The hash-ID table: sizing, both allocation modes, reservation, the scans
// and enumeration.
#include <gtest/gtest.h>

#include <cstdlib>
#include <initializer_list>
#include <vector>

#include <zksupt/zksupt.h>

namespace {

// A cleared 16-byte table (IDs 1 to 127) with the given IDs taken.
struct Table {
    static constexpr uint32_t kBytes = 16;
    Table(std::initializer_list<uint32_t> ids, uint32_t upTo = 0)
    {
        EXPECT_EQ(SMClearHashTable(words, kBytes), 0);
        for (uint32_t id : ids)
            EXPECT_EQ(SMAcquireHashIDByID(words, kBytes, id), 0) << id;
        for (uint32_t id = 1; id <= upTo; ++id)
            SMAcquireHashIDByID(words, kBytes, id);
    }
    uint32_t acquire(uint32_t mode) { return SMAcquireHashID(words, kBytes, mode); }
    std::vector<uint32_t> enumerate()
    {
        std::vector<uint32_t> ids;
        uint32_t word = 99, bit = 99;
        for (uint32_t id = SMFindFirstHashID(words, kBytes, &word, &bit); id != 0 && ids.size() < 200;
             id = SMFindNextHashID(words, kBytes, &word, &bit)) {
            EXPECT_EQ(id, word * 32 + bit) << "the cursors name the ID found";
            ids.push_back(id);
        }
        return ids;
    }
    uint32_t words[kBytes / 4] = {~0u, ~0u, ~0u, ~0u};
};

TEST(HashIds, SizingRoundsDownAndAddsAWord)
{
    const std::pair<uint32_t, uint32_t> cases[] = {{0, 0},  {1, 4},  {31, 4},   {32, 8},
                                                   {33, 8}, {64, 12}, {0x3FFFFFFE, 0x8000000}, {0x3FFFFFFF, 0}};
    for (const auto &[count, bytes] : cases)
        EXPECT_EQ(SMHashTableBytesNeeded(count), bytes) << count;
}

TEST(HashIds, LowestFreeModeFillsGapsFirst)
{
    Table table({5});
    for (uint32_t id : {1, 2, 3, 4})
        EXPECT_EQ(table.acquire(0), id);
    EXPECT_EQ(SMReleaseHashID(table.words, Table::kBytes, 2), 0);
    EXPECT_EQ(table.acquire(0), 2u);
    for (uint32_t id = 6; id < 128; ++id)
        EXPECT_EQ(table.acquire(0), id);
    EXPECT_EQ(table.acquire(0), 0u) << "full";
    EXPECT_EQ(table.acquire(1), 0u) << "full";
}

TEST(HashIds, AfterHighestModeRisesWithinTheLastPartlyUsedWord)
{
    EXPECT_EQ(Table({}).acquire(1), 1u);
    EXPECT_EQ(Table({1, 3}).acquire(1), 4u);
    EXPECT_EQ(Table({1, 31}).acquire(1), 2u) << "set bits at the top are passed over for the gap below";
    EXPECT_EQ(Table({1, 3, 4, 31}).acquire(1), 5u);
    EXPECT_EQ(Table({1, 40, 70}).acquire(1), 71u) << "the last partly used word";
    EXPECT_EQ(Table({1, 127}).acquire(1), 96u) << "nothing in use below a free ID: the word's lowest free ID";
    EXPECT_EQ(Table({96, 127}).acquire(1), 97u);
    EXPECT_EQ(Table({0, 34, 63, 64, 65}).acquire(1), 66u);
    EXPECT_EQ(Table({}, 31).acquire(1), 32u) << "word 0 is full: the first empty word";
    EXPECT_EQ(Table({}, 30).acquire(1), 31u) << "a partly used word beats the later empty ones";
    EXPECT_EQ(Table({}).acquire(2), 0u) << "unknown mode";
    EXPECT_EQ(SMAcquireHashID(Table({}).words, 3, 1), 0u) << "no whole word";
    EXPECT_EQ(SMAcquireHashID(nullptr, Table::kBytes, 0), 0u);
}

TEST(HashIds, ReserveVerifyAndReleaseReportTheirStatuses)
{
    Table table({});
    uint32_t *words = table.words;
    EXPECT_EQ(SMVerifyHashID(words, 16, 7), 0x0C);
    EXPECT_EQ(SMReleaseHashID(words, 16, 7), 0x0C);
    EXPECT_EQ(SMAcquireHashIDByID(words, 16, 7), 0);
    EXPECT_EQ(SMAcquireHashIDByID(words, 16, 7), 0x102);
    EXPECT_EQ(SMVerifyHashID(words, 16, 7), 0);
    EXPECT_EQ(SMReleaseHashID(words, 16, 7), 0);
    EXPECT_EQ(SMVerifyHashID(words, 16, 7), 0x0C);
    EXPECT_EQ(SMAcquireHashIDByID(words, 16, 0), 0) << "ID 0 can be reserved by ID";
    EXPECT_EQ(SMAcquireHashIDByID(words, 8, 63), 0);
    EXPECT_EQ(SMAcquireHashIDByID(words, 8, 64), 0x101);
    EXPECT_EQ(SMVerifyHashID(words, 8, 64), 0x101);
    EXPECT_EQ(SMReleaseHashID(words, 8, UINT32_MAX), 0x101);
    EXPECT_EQ(SMAcquireHashIDByID(nullptr, 16, 1), 0x10F);
    EXPECT_EQ(SMVerifyHashID(nullptr, 16, 1), 0x10F);
    EXPECT_EQ(SMReleaseHashID(nullptr, 16, 1), 0x10F);
    EXPECT_EQ(SMClearHashTable(nullptr, 16), 0x10F);
}

TEST(HashIds, ScansAndEnumerationFindTheIdsInUse)
{
    Table none({}), some({40, 100}), zeroOnly({0, 40}), zeroAndMore({0, 3, 40});
    EXPECT_EQ(SMGetMinInUseID(none.words, 16), 0u);
    EXPECT_EQ(SMGetMaxInUseID(none.words, 16), 0u);
    EXPECT_EQ(SMGetMinInUseID(some.words, 16), 40u);
    EXPECT_EQ(SMGetMaxInUseID(some.words, 16), 100u);
    EXPECT_EQ(SMGetMaxInUseID(some.words, 12), 40u);
    EXPECT_EQ(SMGetMinInUseID(zeroOnly.words, 16), 0u) << "word 0 holding only ID 0 ends the scan";
    EXPECT_EQ(SMGetMinInUseID(zeroAndMore.words, 16), 3u);
    EXPECT_EQ(SMGetMaxInUseID(some.words, 3), 0u);

    Table table({0, 5, 31, 32, 40, 63, 127});
    EXPECT_EQ(none.enumerate(), std::vector<uint32_t>{});
    EXPECT_EQ(table.enumerate(), (std::vector<uint32_t>{5, 31, 32, 40, 63, 127}));
    uint32_t word = 1, bit = 40;  // beyond the word: the next word from its first bit
    EXPECT_EQ(SMFindNextHashID(table.words, 16, &word, &bit), 127u);
    EXPECT_EQ(SMFindNextHashID(table.words, 16, &word, &bit), 0u);
    EXPECT_EQ(word * 32 + bit, 127u) << "the cursors keep the last ID found";
    EXPECT_EQ(SMFindFirstHashID(table.words, 16, nullptr, &bit), 0u);
}

// Only whole words are used: nothing reaches past bytes / 4 words.
TEST(HashIds, PartialWordsAreNeverTouched)
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
