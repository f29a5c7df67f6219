// The hash-ID table: sizing, both allocation modes, reservation, the scans
// and enumeration. Every table is a block of exactly its size, filled with
// set bits before it is cleared, so the address sanitizer sees any access
// past the last whole word and a clear that misses a word shows.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <tuple>
#include <vector>

#include <zksupt/zksupt.h>

namespace {

// A cleared table of size bytes with the given IDs taken, and 1 to upTo.
struct Table {
    explicit Table(const std::vector<uint32_t> &ids, uint32_t upTo = 0, uint32_t size = 16)
        : block(std::malloc(size), std::free), words(static_cast<uint32_t *>(block.get())), bytes(size)
    {
        std::memset(words, 0xFF, bytes);
        EXPECT_EQ(SMClearHashTable(words, bytes), 0);
        for (uint32_t id : ids)
            EXPECT_EQ(SMAcquireHashIDByID(words, bytes, id), 0) << id;
        for (uint32_t id = 1; id <= upTo; ++id)
            SMAcquireHashIDByID(words, bytes, id);
    }
    // First, then next with the same cursors until 0 comes back.
    std::vector<uint32_t> enumerate()
    {
        std::vector<uint32_t> ids;
        uint32_t word = 99, bit = 99;
        for (uint32_t id = SMFindFirstHashID(words, bytes, &word, &bit); id != 0 && ids.size() < 200;
             id = SMFindNextHashID(words, bytes, &word, &bit)) {
            EXPECT_EQ(id, word * 32 + bit) << "the cursors name the ID found";
            ids.push_back(id);
        }
        return ids;
    }
    std::unique_ptr<void, void (*)(void *)> block;
    uint32_t *words;
    uint32_t bytes;
};

TEST(HashIds, SizingRoundsDownAndAddsAWord)
{
    const std::pair<uint32_t, uint32_t> cases[] = {
        {0, 0}, {1, 4}, {31, 4}, {32, 8}, {33, 8}, {64, 12}, {0x3FFFFFFE, 0x8000000}, {0x3FFFFFFF, 0}};
    for (const auto &[count, bytes] : cases)
        EXPECT_EQ(SMHashTableBytesNeeded(count), bytes) << count;
}

// {mode, IDs taken, also 1 to upTo, bytes, the ID expected}. Mode 0 takes the lowest free ID,
// never 0. Mode 1 rises within the last partly used word while there is room above its
// highest ID (set bits at the very top are passed over for the gap below them), else
// takes that word's lowest free ID; a partly used word beats later empty ones. Only
// whole words count; an unknown mode takes nothing.
TEST(HashIds, BothModesTakeTheExpectedId)
{
    // clang-format off
    const std::tuple<uint32_t, std::vector<uint32_t>, uint32_t, uint32_t, uint32_t> cases[] = {
        {0, {}, 0, 16, 1},           {0, {1, 3}, 0, 16, 2},         {0, {}, 31, 16, 32},       {0, {}, 127, 16, 0},
        {1, {}, 0, 16, 1},           {1, {1, 3}, 0, 16, 4},         {1, {1, 31}, 0, 16, 2},    {1, {1, 3, 4, 31}, 0, 16, 5},
        {1, {1, 40, 70}, 0, 16, 71}, {1, {1, 127}, 0, 16, 96},      {1, {96, 127}, 0, 16, 97}, {1, {0, 34, 63, 64, 65}, 0, 16, 66},
        {1, {}, 31, 16, 32},         {1, {}, 30, 16, 31},           {1, {}, 127, 16, 0},       {2, {}, 0, 16, 0},
        {0, {}, 31, 7, 0},           {1, {}, 30, 7, 31},            {1, {}, 31, 7, 0},         {0, {}, 0, 3, 0}};
    // clang-format on
    for (const auto &[mode, ids, upTo, bytes, taken] : cases) {
        Table table(ids, upTo, bytes);
        EXPECT_EQ(SMAcquireHashID(table.words, bytes, mode), taken) << "mode " << mode << ", " << ids.size() << " IDs";
        EXPECT_TRUE(taken == 0 || SMVerifyHashID(table.words, bytes, taken) == 0) << taken << " is not marked";
    }
    EXPECT_EQ(SMAcquireHashID(nullptr, 16, 0), 0u);
}

// {call, table, bytes, ID, status}, in turn on one table.
TEST(HashIds, ReserveVerifyAndReleaseReportTheirStatuses)
{
    Table table({});
    uint32_t *words = table.words;
    const auto verify = [](uint32_t *at, uint32_t bytes, uint32_t id) { return SMVerifyHashID(at, bytes, id); };
    const auto reserve = SMAcquireHashIDByID, release = SMReleaseHashID;
    // clang-format off
    const std::tuple<int32_t (*)(uint32_t *, uint32_t, uint32_t), uint32_t *, uint32_t, uint32_t, int32_t> steps[] = {
        {verify, words, 16, 7, 0x0C},  {release, words, 16, 7, 0x0C},  {reserve, words, 16, 7, 0},
        {reserve, words, 16, 7, 0x102}, {verify, words, 16, 7, 0},      {release, words, 16, 7, 0},
        {verify, words, 16, 7, 0x0C},  {reserve, words, 16, 0, 0},      {verify, words, 16, 0, 0},
        {reserve, words, 8, 63, 0},    {reserve, words, 8, 64, 0x101},  {verify, words, 7, 32, 0x101},
        {release, words, 16, UINT32_MAX, 0x101},
        {reserve, nullptr, 16, 1, 0x10F}, {verify, nullptr, 16, 1, 0x10F}, {release, nullptr, 16, 1, 0x10F}};
    // clang-format on
    for (const auto &[call, at, bytes, id, status] : steps)
        EXPECT_EQ(call(at, bytes, id), status) << "ID " << id;
    EXPECT_EQ(SMClearHashTable(nullptr, 16), 0x10F);
}

// {IDs taken, bytes, lowest, highest}. The lowest looks only at the first word in use:
// when it holds nothing but ID 0 (reserved by ID), the answer is 0 even with higher IDs
// in use.
TEST(HashIds, ScansAndEnumerationFindTheIdsInUse)
{
    // clang-format off
    const std::tuple<std::vector<uint32_t>, uint32_t, uint32_t, uint32_t> cases[] = {
        {{}, 16, 0, 0},         {{40, 100}, 16, 40, 100}, {{0}, 16, 0, 0},     {{0, 40}, 16, 0, 40},
        {{0, 3, 40}, 16, 3, 40}, {{5, 31, 32, 63, 127}, 16, 5, 127}, {{1, 31}, 7, 1, 31}, {{}, 3, 0, 0}};
    // clang-format on
    for (const auto &[ids, bytes, min, max] : cases) {
        Table table(ids, 0, bytes);
        EXPECT_EQ(SMGetMinInUseID(table.words, bytes), min) << ids.size() << " IDs";
        EXPECT_EQ(SMGetMaxInUseID(table.words, bytes), max) << ids.size() << " IDs";
        std::vector<uint32_t> inUse(ids);
        std::erase(inUse, 0u);
        EXPECT_EQ(table.enumerate(), inUse);
    }
    Table table({5, 40, 127});
    uint32_t word = 1, bit = 40;  // beyond the word: the next word from its first bit
    EXPECT_EQ(SMFindNextHashID(table.words, 16, &word, &bit), 127u);
    EXPECT_EQ(SMFindNextHashID(table.words, 16, &word, &bit), 0u);
    EXPECT_EQ(word * 32 + bit, 127u) << "the cursors keep the last ID found";
    EXPECT_EQ(SMFindFirstHashID(table.words, 16, nullptr, &bit), 0u);
}

}  // namespace
