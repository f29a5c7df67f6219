// The binary forms: exact bytes and round trips, updates in place, the walk,
// binary arrays, and refused input.
#include <sstream>
#include <string>
#include <tuple>

#include "sdo/sdo_test_util.h"

namespace zksupt::test {
namespace {

// Entries to add (ID, type, value) and the binary form expected of them.
const std::pair<std::vector<std::tuple<uint16_t, uint8_t, Bytes>>, Bytes> kLayouts[] = {
    {{}, kEmpty},
    {{{4, 7, {1, 2, 3, 4}}, {2, 0x40, {1, 2}}, {3, 0xF5, {1, 2, 3}}, {1, 5, {0xFF}}},
     Bin()
         .header("SDOB", 4, 40)
         .inlined(1, 5, {0xFF})
         .inlined(2, 0x40, {1, 2})
         .inlined(3, 0xF5, {1, 2, 3})
         .inlined(4, 7, {1, 2, 3, 4})
         .bytes},
    {{{7, 14, {1, 2, 3, 4, 5, 6}}}, Bin().header("SDOB", 1, 22).outOfLine(7, 14, 6, 8).raw({1, 2, 3, 4, 5, 6}).bytes},
    {{{9, 9, Bytes(6, 9)}, {3, 5, {3}}, {5, 0x8E, Bytes(5, 5)}},
     Bin()
         .header("SDOB", 3, 43)
         .inlined(3, 5, {3})
         .outOfLine(5, 0x8E, 5, 16)
         .outOfLine(9, 9, 6, 13)
         .raw(Bytes(5, 5))
         .raw(Bytes(6, 9))
         .bytes},
    {{{2, 0x2C, kChild}}, Bin().header("SDOB", 1, 32).outOfLine(2, 0x2C, 16, 8).raw(kChild).bytes},
    {{{3, 0x5C, kPair}}, Bin().header("SDOB", 1, 48).outOfLine(3, 0x5C, 32, 8).raw(kPair).bytes},
};

TEST(SdoBinary, ObjectsSerialiseToExactBytesAndReadBack)
{
    for (const auto &[items, expected] : kLayouts) {
        SCOPED_TRACE(::testing::PrintToString(expected));
        Config config(SMSDOConfigAlloc());
        for (const auto &[id, type, value] : items)
            add(config.get(), id, type, value);
        EXPECT_EQ(serialise(config.get()), expected) << "and a binary size to match";
        Config back(SMSDOBinaryToConfig(expected.data()));
        EXPECT_EQ(SMSDOConfigCompareByValue(back.get(), config.get()), 1);
    }
}

TEST(SdoBinary, SetDataInPlaceOrByRebuilding)
{
    Bytes block = Bin()
                      .header("SDOB", 2, 30)
                      .inlined(7, 6, {1, 2})
                      .outOfLine(9, 14, 6, 8)
                      .raw(Bytes(6, 6))
                      .raw(Bytes(10, 0))
                      .bytes;  // room for 40
    const Bytes three{3, 3, 3}, five{5, 5, 5, 5, 5}, six{7, 7, 7, 7, 7, 7};
    uint32_t size = 40;
    EXPECT_EQ(SMSDOBinarySetData(block.data(), &size, 7, 6, three.data(), 3), SM_STATUS_SUCCESS);
    EXPECT_EQ(size, 30u);
    EXPECT_EQ(SMSDOBinarySetData(block.data(), &size, 9, 14, six.data(), 6), SM_STATUS_SUCCESS);
    EXPECT_EQ(Bytes(block.begin(), block.begin() + 30),
              Bin().header("SDOB", 2, 30).inlined(7, 6, {3, 3, 3}).outOfLine(9, 14, 6, 8).raw(six).bytes);

    const Bytes before = block;
    // ID, type, capacity, value size, status
    const std::tuple<uint16_t, uint8_t, uint32_t, uint32_t, int32_t> refused[] = {
        {8, 6, 40, 2, SM_STATUS_NOT_FOUND},
        {7, 5, 40, 2, SM_STATUS_NOT_FOUND},
        {7, 6, 40, 0, SM_STATUS_INVALID_PARAMETER},
        {7, 6, 15, 2, SM_STATUS_BUFFER_TOO_SMALL},
        {7, 6, 34, 5, SM_STATUS_BUFFER_TOO_SMALL}};
    for (const auto &[id, type, capacity, valueSize, status] : refused) {
        size = capacity;
        EXPECT_EQ(SMSDOBinarySetData(block.data(), &size, id, type, five.data(), valueSize), status) << id;
    }
    EXPECT_EQ(size, 35u) << "rebuilt it would grow by 5";
    EXPECT_EQ(block, before) << "unchanged";
    size = 40;
    EXPECT_EQ(SMSDOBinarySetData(block.data(), &size, 7, 6, five.data(), 5), SM_STATUS_SUCCESS);
    EXPECT_EQ(size, 35u);
    EXPECT_EQ(Bytes(block.begin(), block.begin() + 35),
              Bin().header("SDOB", 2, 35).outOfLine(7, 6, 5, 16).outOfLine(9, 14, 6, 13).raw(five).raw(six).bytes);
}

// Records every callback as a line of words; returns 77 at the chosen one.
using Events = std::vector<std::string>;
struct Trace {
    Events events;
    std::string stopAt;

    template <class... Words> static int32_t note(void *trace, Words... words)
    {
        std::ostringstream line;
        ((line << words << ' '), ...);
        auto &self = *static_cast<Trace *>(trace);
        self.events.push_back(line.str().substr(0, line.str().size() - 1));
        return self.events.back() == self.stopAt ? 77 : 0;
    }
    static int32_t begin(void *t, uint32_t cookie, uint16_t array, uint32_t n, int32_t index, const void *)
    {
        return note(t, "begin", cookie, array, n, index);
    }
    static int32_t entry(void *t, uint32_t *cookie, uint16_t id, uint8_t b76, uint8_t b5, uint8_t b4, uint8_t base,
                         uint32_t length, const void *)
    {
        *cookie = 100u + id;
        return note(t, "entry", id, +b76, +b5, +b4, +base, length);
    }
    static int32_t after(void *t, uint32_t cookie) { return note(t, "after", cookie) + 5; }
    static int32_t end(void *t, uint32_t cookie, uint16_t isArray) { return note(t, "end", cookie, isArray); }
};

TEST(SdoBinary, WalkVisitsDepthFirstWithCookies)
{
    const Bytes block = Bin()
                            .header("SDOB", 3, 80)
                            .inlined(1, 0xE5, {1})
                            .outOfLine(2, 0x2C, 16, 16)
                            .outOfLine(3, 0x1C, 32, 24)
                            .raw(kChild)
                            .raw(kPair)
                            .bytes;
    Trace trace;
    EXPECT_EQ(SMSDOBinaryWalk(block.data(), &trace, Trace::begin, Trace::entry, Trace::after, Trace::end, 1),
              SM_STATUS_SUCCESS);
    EXPECT_EQ(trace.events, (Events{"begin 0 0 3 -1", "entry 1 3 1 0 5 1", "after 101", "entry 2 0 1 0 12 16",
                                    "begin 102 0 1 -1", "entry 7 0 0 0 6 2", "after 107", "end 102 0", "after 102",
                                    "entry 3 0 0 1 12 32", "begin 103 1 2 -1", "begin 103 0 1 0", "entry 7 0 0 0 6 2",
                                    "after 107", "end 103 0", "end 103 1", "after 103", "end 0 0"}));
    Trace flat;
    EXPECT_EQ(SMSDOBinaryWalk(block.data(), &flat, Trace::begin, Trace::entry, Trace::after, nullptr, 0), 5)
        << "without an end callback: the last after-entry result";
    EXPECT_EQ(flat.events, (Events{"begin 0 0 3 -1", "entry 1 3 1 0 5 1", "after 101", "entry 2 0 1 0 12 16",
                                   "after 102", "entry 3 0 0 1 12 32", "after 103"}))
        << "no nested blocks without recursion";
    Trace elements;
    EXPECT_EQ(SMSDOBinaryWalk(kPair.data(), &elements, Trace::begin, Trace::entry, nullptr, Trace::end, 0),
              SM_STATUS_SUCCESS);
    EXPECT_EQ(elements.events, (Events{"begin 0 1 2 -1", "begin 0 0 1 0", "end 0 0", "end 0 1"}))
        << "elements are opened and closed only; an empty one not at all";
    for (const char *stop : {"entry 7 0 0 0 6 2", "begin 103 1 2 -1", "end 0 0"}) {
        Trace stopped{{}, stop};
        EXPECT_EQ(SMSDOBinaryWalk(block.data(), &stopped, Trace::begin, Trace::entry, Trace::after, Trace::end, 1), 77);
        EXPECT_EQ(stopped.events.back(), stop);
    }

    // Two slots sharing one nested block, twelve levels deep: a walk that
    // trusted the slots would do twice the work at every level.
    Bin shared;
    const uint16_t levels = 12, top = 16 + 24 * levels;
    for (uint16_t level = 0, inner = top - 24; level < levels; ++level, inner -= 24)
        shared.header("SDOB", 2, inner + 24).outOfLine(1, 12, inner, 16).outOfLine(2, 12, inner, 8);
    shared.header("SDOB", 1, 16).inlined(1, 5, {1});
    EXPECT_EQ(SMSDOBinaryWalk(shared.bytes.data(), nullptr, nullptr, nullptr, nullptr, nullptr, 1),
              SM_STATUS_INVALID_PARAMETER);
}

TEST(SdoBinary, ArraysOfObjects)
{
    Bytes array(40);
    EXPECT_EQ(SMSDOBinaryArrayInitHeader(array.data(), 8), SM_STATUS_SUCCESS);
    uint32_t capacity = 30;
    EXPECT_EQ(SMSDOBinaryArrayAddData(array.data(), &capacity, kChild.data(), 16), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMSDOBinaryArrayAddData(array.data(), &capacity, kChild.data(), 16), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(capacity, 40u) << "the size needed";
    EXPECT_EQ(SMSDOBinaryArrayAddData(array.data(), &capacity, kChild.data(), 16), SM_STATUS_SUCCESS);
    EXPECT_EQ(array, Bin().header("SDAB", 2, 40).raw(kChild).raw(kChild).bytes);

    uint8_t out[16];
    uint32_t size = 7;
    EXPECT_EQ(SMSDOBinaryArrayGetByIndex(kPair.data(), 0, 1, out, &size), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 8u);
    EXPECT_EQ(SMSDOBinaryArrayGetByIndex(kPair.data(), 0, 1, out, &size), SM_STATUS_SUCCESS);
    EXPECT_EQ(Bytes(out, out + 8), kEmpty);

    SDOConfig *configs[3] = {};
    uint32_t count = 1;
    EXPECT_EQ(SMSDOBinaryArrayToConfigArray(kPair.data(), configs, &count), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(count, 2u);
    ASSERT_EQ(SMSDOBinaryArrayToConfigArray(kPair.data(), configs, &count), SM_STATUS_SUCCESS);
    Config first(configs[0]), second(configs[1]);  // read back, they write kPair again below

    SDOConfig *const list[] = {first.get(), nullptr, second.get()};
    EXPECT_EQ(SMSDOConfigArrayToBinaryArray(list, 3, nullptr, &size), SM_STATUS_SUCCESS);
    EXPECT_EQ(size, 24u) << "a size query leaves out the header";
    Bytes written(31);
    size = 31;
    EXPECT_EQ(SMSDOConfigArrayToBinaryArray(list, 3, written.data(), &size), SM_STATUS_SUCCESS);
    EXPECT_EQ(size, 32u) << "the total, with the element that did not fit";
    EXPECT_EQ(SMSDOBinaryGetCount(written.data(), nullptr), 1u);
    written.resize(size);
    EXPECT_EQ(SMSDOConfigArrayToBinaryArray(list, 3, written.data(), &size), SM_STATUS_SUCCESS);
    EXPECT_EQ(written, kPair);
}

// What each call refuses: null pointers, too little room, a wrong magic
// (BAD_OBJECT where a call only reads, INVALID_PARAMETER where it writes or
// walks), and
// damaged blocks, each in a buffer exactly as long as its header states so
// that the sanitizer build catches a read beyond it; random damage is the
// fuzz target's. Rows are evaluated in order: one may read what the row
// before it wrote.
TEST(SdoBinary, RefusedInput)
{
    const auto handle = static_cast<uint16_t>(kHandle);
    // A slot of base type 13, whose bytes would be taken for a handle; a
    // value, a slot and a nested block that run past the end; an empty value
    // that starts past it. All but the first are malformed, never short.
    Bytes asHandle = Bin().header("SDOB", 1, 16 + handle).outOfLine(1, 13, handle, 8).raw(Bytes(kHandle, 1)).bytes;
    Bytes longValue = Bin().header("SDOB", 1, 20).outOfLine(1, 14, 6, 8).raw({1, 2, 3, 4}).bytes;
    Bytes extraSlot = Bin().header("SDOB", 2, 16).inlined(1, 14, {1}).bytes;
    Bytes longNested = Bin().header("SDOB", 1, 24).outOfLine(1, 12, 8, 8).header("SDOB", 1, 16).bytes;
    Bytes farValue = Bin().header("SDOB", 1, 16).outOfLine(1, 14, 0, 9).bytes;
    // Arrays whose second element is no object, runs past the end.
    const Bytes odd = Bin().header("SDAB", 2, 24).raw(kEmpty).header("XDOB", 0, 8).bytes;
    Bytes pastEnd = Bin().header("SDAB", 2, 32).raw(kChild).header("SDOB", 0, 9).bytes;
    const uint8_t *object = kChild.data(), *array = kPair.data();
    const auto walk = [](const void *b) { return SMSDOBinaryWalk(b, nullptr, nullptr, nullptr, nullptr, nullptr, 1); };
    // 0x10: the block is sound but cannot be rebuilt into an object.
    const std::pair<Bytes *, int32_t> damagedBlocks[] = {{&asHandle, SM_STATUS_BUFFER_TOO_SMALL},
                                                         {&longValue, SM_STATUS_INVALID_PARAMETER},
                                                         {&extraSlot, SM_STATUS_INVALID_PARAMETER},
                                                         {&longNested, SM_STATUS_BUFFER_TOO_SMALL},
                                                         {&farValue, SM_STATUS_INVALID_PARAMETER}};
    for (const auto &[damaged, status] : damagedBlocks) {
        auto size = static_cast<uint32_t>(damaged->size());
        EXPECT_EQ(SMSDOBinaryToConfig(damaged->data()), nullptr);
        EXPECT_EQ(SMSDOBinarySetData(damaged->data(), &size, 1, (*damaged)[10], object, 5), status) << size;
    }
    Config config(SMSDOBinaryToConfig(object));
    Bytes pair = kPair, child = kChild;
    uint8_t out[64] = {};
    uint16_t id = 0, isArray = 9;
    uint32_t size = sizeof out, count = 2, room = 32, small = 15;
    SDOConfig *made[2] = {};
    const std::pair<int64_t, int64_t> rows[] = {
        {SMSDOConfigAddData(nullptr, 6, 6, out, 2, 0), SM_STATUS_INVALID_PARAMETER},
        {SMSDOConfigRemoveData(nullptr, 5, 0, 0), SM_STATUS_INVALID_PARAMETER},
        {SMSDOConfigGetDataByIndex(config.get(), 0, nullptr, nullptr, out, &size), SM_STATUS_INVALID_PARAMETER},
        {SMSDOConfigGetCount(nullptr), 0xFFFFFFFF},
        {SMSDOConfigGetBinarySize(nullptr), 0},
        {SMSDOConfigReCalcBinarySize(nullptr), 0},
        {SMSDOConfigCompareByValue(nullptr, nullptr), 1},
        {SMSDOConfigCompareByValue(config.get(), nullptr), 0},
        {SMSDOConfigClone(nullptr) == nullptr, 1},
        {SMSDOConfigToBinary(nullptr, out, &size), SM_STATUS_INVALID_PARAMETER},
        {SMSDOConfigToBinary(config.get(), out, &small), SM_STATUS_BUFFER_TOO_SMALL},
        {small, 15},
        {SMSDOBinaryToConfig(nullptr) == nullptr, 1},
        {SMSDOBinaryToConfig(array) == nullptr, 1},
        {SMSDOBinaryGetCount(object, &isArray), 1},
        {isArray, 0},
        {SMSDOBinaryGetSize(array, &isArray), 32},
        {isArray, 1},
        {SMSDOBinaryGetCount(out, nullptr), 0xFFFFFFFF},
        {SMSDOBinaryGetSize(out, nullptr), 0},
        {SMSDOBinaryGetDataByID(array, 7, nullptr, out, &size), SM_STATUS_BAD_OBJECT},
        {SMSDOBinaryGetDataByIndex(array, 0, &id, nullptr, out, &size), SM_STATUS_BAD_OBJECT},
        {SMSDOBinaryGetDataByID(longValue.data(), 1, nullptr, out, &size), SM_STATUS_BAD_OBJECT},
        {SMSDOBinaryGetDataByIndex(longValue.data(), 0, &id, nullptr, out, &size), SM_STATUS_BAD_OBJECT},
        {SMSDOBinaryGetDataByID(extraSlot.data(), 1, nullptr, out, &size), SM_STATUS_BAD_OBJECT},
        {SMSDOBinaryGetDataByIndex(extraSlot.data(), 1, &id, nullptr, out, &size), SM_STATUS_BAD_OBJECT},
        {SMSDOBinaryGetDataByID(farValue.data(), 1, nullptr, out, &size), SM_STATUS_BAD_OBJECT},
        {SMSDOBinaryGetDataByIndex(longValue.data(), 1, &id, nullptr, out, &size), SM_STATUS_NOT_PRESENT},
        {SMSDOBinarySetData(pair.data(), &room, 7, 6, out, 2), SM_STATUS_INVALID_PARAMETER},
        {walk(out), SM_STATUS_INVALID_PARAMETER},
        {walk(longValue.data()), SM_STATUS_INVALID_PARAMETER},
        {walk(extraSlot.data()), SM_STATUS_INVALID_PARAMETER},
        {walk(longNested.data()), SM_STATUS_INVALID_PARAMETER},
        {walk(farValue.data()), SM_STATUS_INVALID_PARAMETER},
        {walk(pastEnd.data()), SM_STATUS_INVALID_PARAMETER},
        {SMSDOBinaryArrayInitHeader(nullptr, 8), SM_STATUS_INVALID_PARAMETER},
        {SMSDOBinaryArrayInitHeader(out, 7), SM_STATUS_BUFFER_TOO_SMALL},
        {SMSDOBinaryArrayAddData(child.data(), &room, object, 16), SM_STATUS_INVALID_PARAMETER},
        {SMSDOBinaryArrayAddData(pastEnd.data(), &room, object, 16), SM_STATUS_INVALID_PARAMETER},
        {SMSDOBinaryArrayAddData(pair.data(), &small, object, 16), SM_STATUS_BUFFER_TOO_SMALL},
        {SMSDOBinaryArrayGetByIndex(array, 0, 2, out, &size), SM_STATUS_NOT_FOUND},
        {SMSDOBinaryArrayGetByIndex(object, 0, 0, out, &size), SM_STATUS_BAD_OBJECT},
        {SMSDOBinaryArrayGetByIndex(odd.data(), 0, 1, out, &size), SM_STATUS_BAD_OBJECT},
        {SMSDOBinaryArrayGetByIndex(pastEnd.data(), 0, 1, out, &size), SM_STATUS_BAD_OBJECT},
        {SMSDOConfigArrayToBinaryArray(nullptr, 3, out, &size), SM_STATUS_INVALID_PARAMETER},
        // and the element made first is freed again
        {SMSDOBinaryArrayToConfigArray(odd.data(), made, &count), SM_STATUS_BAD_OBJECT},
        {made[0] == nullptr, 1},
        {SMSDOBinaryArrayToConfigArray(pastEnd.data(), made, &count), SM_STATUS_BAD_OBJECT},
        {made[0] == nullptr, 1}};
    for (size_t row = 0; row < std::size(rows); ++row)
        EXPECT_EQ(rows[row].first, rows[row].second) << "row " << row;
}

}  // namespace
}  // namespace zksupt::test
