// The hash-ID table. Every table is a block of exactly its size, filled with set
// bits before it is cleared, so the sanitizer sees any access past the last word.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <tuple>
#include <vector>

#include <zksupt/zksupt.h>

namespace {

// A cleared table of size bytes with the given IDs (ascending) and 1 to upTo reserved.
struct Table {
    explicit Table(std::vector<uint32_t> ids, uint32_t upTo = 0, uint32_t size = 16)
        : block(std::malloc(size), std::free), words(static_cast<uint32_t *>(block.get())), inUse(std::move(ids))
    {
        for (uint32_t id = 1; id <= upTo; ++id)
            inUse.push_back(id);
        std::memset(words, 0xFF, size);
        EXPECT_EQ(SMClearHashTable(words, size), SM_STATUS_SUCCESS);
        for (uint32_t id : inUse)
            EXPECT_EQ(SMAcquireHashIDByID(words, size, id), SM_STATUS_SUCCESS) << id;
        std::erase(inUse, 0u);  // reserved, but never found by a scan
    }
    std::unique_ptr<void, void (*)(void *)> block;
    uint32_t *words;
    std::vector<uint32_t> inUse;
};

// {call, bytes, ID, status}, in turn on one table.
TEST(HashIds, SizingAndTheStatusesOfReserveVerifyAndRelease)
{
    const std::pair<uint32_t, uint32_t> sizes[] = {
        {0, 0}, {1, 4}, {31, 4}, {32, 8}, {33, 8}, {64, 12}, {0x3FFFFFFE, 0x8000000}, {0x3FFFFFFF, 0}};
    for (const auto &[count, bytes] : sizes)
        EXPECT_EQ(SMHashTableBytesNeeded(count), bytes) << count;
    Table table({});
    using Call = int32_t (*)(uint32_t *, uint32_t, uint32_t);
    const Call verify = [](uint32_t *at, uint32_t bytes, uint32_t id) { return SMVerifyHashID(at, bytes, id); };
    const Call reserve = SMAcquireHashIDByID, release = SMReleaseHashID;
    constexpr int32_t kOk = SM_STATUS_SUCCESS, kFree = SM_STATUS_NOT_PRESENT, kOutside = SM_STATUS_BAD_OBJECT;
    // clang-format off
    const std::tuple<Call, uint32_t, uint32_t, int32_t> steps[] = {
        {verify, 16, 7, kFree},  {release, 16, 7, kFree}, {reserve, 16, 7, kOk},    {reserve, 16, 7, SM_STATUS_DUPLICATE},
        {verify, 16, 7, kOk},    {release, 16, 7, kOk},   {verify, 16, 7, kFree},   {reserve, 16, 0, kOk},
        {verify, 16, 0, kOk},    {reserve, 8, 63, kOk},   {reserve, 8, 64, kOutside}, {verify, 7, 32, kOutside},
        {release, 16, UINT32_MAX, kOutside}};
    // clang-format on
    for (const auto &[call, bytes, id, status] : steps) {
        EXPECT_EQ(call(table.words, bytes, id), status) << "ID " << id;
        EXPECT_EQ(call(nullptr, bytes, id), SM_STATUS_INVALID_PARAMETER) << "a null table, ID " << id;
    }
    EXPECT_EQ(SMClearHashTable(nullptr, 16), SM_STATUS_INVALID_PARAMETER);
}

// {IDs reserved, also 1 to upTo, bytes, lowest and highest in use, mode, the ID it takes}.
// The lowest looks only at the first word in use: when that holds nothing but ID 0, the
// answer is 0 even with higher IDs in use. Mode 0 takes the lowest free ID, never 0.
// Mode 1 rises within the last partly used word while there is room above its highest
// ID (set bits at the very top are passed over for the gap below them), else takes that
// word's lowest free ID; a partly used word beats later empty ones. Only whole words
// count, and an unknown mode takes nothing.
TEST(HashIds, ScansEnumerationAndBothModes)
{
    // clang-format off
    const std::tuple<std::vector<uint32_t>, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t> cases[] = {
        {{}, 0, 16, 0, 0, 0, 1},                {{}, 0, 16, 0, 0, 1, 1},             {{}, 0, 16, 0, 0, 2, 0},
        {{1, 3}, 0, 16, 1, 3, 0, 2},            {{1, 3}, 0, 16, 1, 3, 1, 4},         {{1, 31}, 0, 16, 1, 31, 1, 2},
        {{1, 3, 4, 31}, 0, 16, 1, 31, 1, 5},    {{1, 40, 70}, 0, 16, 1, 70, 1, 71},  {{1, 127}, 0, 16, 1, 127, 1, 96},
        {{96, 127}, 0, 16, 96, 127, 1, 97},     {{40, 100}, 0, 16, 40, 100, 1, 101}, {{0}, 0, 16, 0, 0, 0, 1},
        {{0, 34, 63, 64, 65}, 0, 16, 0, 65, 1, 66},  {{0, 3, 40}, 0, 16, 3, 40, 0, 1},
        {{5, 31, 32, 63, 127}, 0, 16, 5, 127, 0, 1}, {{}, 31, 16, 1, 31, 0, 32},      {{}, 31, 16, 1, 31, 1, 32},
        {{}, 30, 16, 1, 30, 1, 31},             {{}, 127, 16, 1, 127, 0, 0},         {{}, 127, 16, 1, 127, 1, 0},
        {{}, 31, 7, 1, 31, 0, 0},               {{}, 31, 7, 1, 31, 1, 0},            {{}, 30, 7, 1, 30, 1, 31},
        {{1, 31}, 0, 7, 1, 31, 1, 2},           {{}, 0, 3, 0, 0, 0, 0},              {{}, 0, 3, 0, 0, 1, 0}};
    // clang-format on
    for (const auto &[ids, upTo, bytes, min, max, mode, taken] : cases) {
        SCOPED_TRACE(::testing::Message() << ids.size() << " IDs and 1 to " << upTo << " in " << bytes << " bytes");
        Table table(ids, upTo, bytes);
        EXPECT_EQ(SMGetMinInUseID(table.words, bytes), min);
        EXPECT_EQ(SMGetMaxInUseID(table.words, bytes), max);
        std::vector<uint32_t> found;  // first, then next with the same cursors until 0 comes back
        uint32_t word = 99, bit = 99;
        for (uint32_t id = SMFindFirstHashID(table.words, bytes, &word, &bit); id != 0 && found.size() < 200;
             id = SMFindNextHashID(table.words, bytes, &word, &bit)) {
            EXPECT_EQ(id, word * 32 + bit) << "the cursors name the ID found";
            found.push_back(id);
        }
        EXPECT_EQ(found, table.inUse);
        EXPECT_EQ(SMAcquireHashID(table.words, bytes, mode), taken) << "mode " << mode;
        EXPECT_TRUE(taken == 0 || SMVerifyHashID(table.words, bytes, taken) == SM_STATUS_SUCCESS)
            << taken << " is not marked";
    }
    Table table({5, 40, 127});
    uint32_t word = 1, bit = 40;  // beyond the word: the next word from its first bit
    EXPECT_EQ(SMFindNextHashID(table.words, 16, &word, &bit), 127u);
    EXPECT_EQ(SMFindNextHashID(table.words, 16, &word, &bit), 0u);
    EXPECT_EQ(word * 32 + bit, 127u) << "the cursors keep the last ID found";
}

}  // namespace
