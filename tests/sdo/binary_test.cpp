// The configuration object and its binary forms: exact bytes, updates in
// place, the walk, arrays, nesting and clones, sizes, and refused input.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include <zksupt/zksupt.h>

#include "support/values.h"

namespace zksupt::test {
namespace {

constexpr uint32_t kHandle = sizeof(void *);

// A binary form in host byte order: Bin().header("SDOB", 1, 16).inlined(7, 6, {1, 2}).bytes
struct Bin {
    Bytes bytes;
    Bin &raw(const Bytes &values)
    {
        bytes.insert(bytes.end(), values.begin(), values.end());
        return *this;
    }
    Bin &u16(uint16_t v) { return raw(bytesOf(v)); }
    Bin &header(const char *m, uint16_t n, uint16_t total) { return raw(Bytes(m, m + 4)).u16(n).u16(total); }
    // The value left-aligned in the slot's four bytes, flags its length - 1.
    Bin &inlined(uint16_t id, uint8_t type, const Bytes &value)
    {
        return u16(id).raw({type, static_cast<uint8_t>(value.size() - 1)}).raw(value).raw(Bytes(4 - value.size(), 0));
    }
    // A value of n bytes at the slot's start + at.
    Bin &outOfLine(uint16_t id, uint8_t type, uint16_t n, uint16_t at) { return u16(id).raw({type, 4}).u16(n).u16(at); }
};

// An object with one 2-byte entry, an empty one, and an array of both.
const Bytes kChild = Bin().header("SDOB", 1, 16).inlined(7, 6, {0xAB, 0xCD}).bytes;
const Bytes kEmpty = Bin().header("SDOB", 0, 8).bytes;
const Bytes kPair = Bin().header("SDAB", 2, 32).raw(kChild).raw(kEmpty).bytes;

struct ConfigFree {
    void operator()(SDOConfig *config) const { SMSDOConfigFree(config); }
};
using Config = std::unique_ptr<SDOConfig, ConfigFree>;

// The bytes written into a buffer with room to spare, and the status expected.
Bytes serialise(const SDOConfig *config, int32_t expected = SM_STATUS_SUCCESS)
{
    uint32_t size = SMSDOConfigGetBinarySize(config) + 64;
    Bytes out(size);
    EXPECT_EQ(SMSDOConfigToBinary(config, out.data(), &size), expected);
    out.resize(size);
    return out;
}

void add(SDOConfig *config, uint16_t id, uint8_t type, const Bytes &value, int32_t replace = 0)
{
    ASSERT_EQ(SMSDOConfigAddData(config, id, type, value.data(), static_cast<uint32_t>(value.size()), replace),
              SM_STATUS_SUCCESS);
}

TEST(SdoBinary, ObjectsSerialiseToExactBytesAndReadBack)
{
    // Entries to add (ID, type, value) and the binary form expected of them.
    const std::pair<std::vector<std::tuple<uint16_t, uint8_t, Bytes>>, Bytes> layouts[] = {
        {{}, kEmpty},
        {{{4, 7, {1, 2, 3, 4}}, {2, 0x40, {1, 2}}, {3, 0xF5, {1, 2, 3}}, {1, 5, {0xFF}}},
         Bin()
             .header("SDOB", 4, 40)
             .inlined(1, 5, {0xFF})
             .inlined(2, 0x40, {1, 2})
             .inlined(3, 0xF5, {1, 2, 3})
             .inlined(4, 7, {1, 2, 3, 4})
             .bytes},
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
    for (const auto &[items, expected] : layouts) {
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
                      .bytes;
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
    const Bytes block =
        Bin().header("SDOB", 3, 80).inlined(1, 0xE5, {1}).outOfLine(2, 0x2C, 16, 16).outOfLine(3, 0x1C, 32, 24).bytes;
    const Bytes full = Bin{block}.raw(kChild).raw(kPair).bytes;
    Trace trace, flat;
    EXPECT_EQ(SMSDOBinaryWalk(full.data(), &trace, Trace::begin, Trace::entry, Trace::after, Trace::end, 1),
              SM_STATUS_SUCCESS);
    EXPECT_EQ(trace.events, (Events{"begin 0 0 3 -1", "entry 1 3 1 0 5 1", "after 101", "entry 2 0 1 0 12 16",
                                    "begin 102 0 1 -1", "entry 7 0 0 0 6 2", "after 107", "end 102 0", "after 102",
                                    "entry 3 0 0 1 12 32", "begin 103 1 2 -1", "begin 103 0 1 0", "entry 7 0 0 0 6 2",
                                    "after 107", "end 103 0", "end 103 1", "after 103", "end 0 0"}))
        << "elements are opened and closed only; an empty one not at all";
    EXPECT_EQ(SMSDOBinaryWalk(full.data(), &flat, Trace::begin, Trace::entry, Trace::after, nullptr, 0), 5)
        << "without an end callback: the last after-entry result";
    EXPECT_EQ(flat.events.size(), 7u) << "no nested blocks without recursion";
    for (const char *stop : {"entry 7 0 0 0 6 2", "begin 103 1 2 -1", "end 0 0"}) {
        Trace stopped{{}, stop};
        EXPECT_EQ(SMSDOBinaryWalk(full.data(), &stopped, Trace::begin, Trace::entry, Trace::after, Trace::end, 1), 77);
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

// Null pointers, too little room, a wrong magic (BAD_OBJECT where a call only
// reads), and damaged blocks, each exactly as long as its header states.
// Rows run in order: one may read what the row before it wrote.
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

TEST(SdoConfig, AddRefusesWhatItCannotHold)
{
    Config config(SMSDOConfigAlloc());
    add(config.get(), 5, 6, {1, 2});
    const Bytes two{7, 7}, noBlock = Bin().header("SDXB", 0, 8).bytes;
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

// An object read from its binary form and the object it was written from
// take the same random adds, replaces and removals (nested ones included) and
// must write the same bytes after each; the sanitizer build checks that
// every record, node and child is freed once.
TEST(SdoConfig, ObjectReadFromBinaryActsAsTheOneItWasWrittenFrom)
{
    std::mt19937 random(6);
    const auto value = [&random] {
        Bytes bytes(1 + random() % (random() % 4 == 0 ? 70 : 6));
        for (uint8_t &byte : bytes)
            byte = static_cast<uint8_t>(random());
        return bytes;
    };
    // A plain value, or a nested object or array given as its binary form,
    // added to each object given (the statuses must agree).
    const auto addSame = [&](std::initializer_list<SDOConfig *> objects, uint16_t id, int32_t replace) {
        const unsigned kind = random() % 8;
        const Bytes bytes = kind == 0 ? kChild : kind == 1 ? kPair : value();
        const auto type = static_cast<uint8_t>(kind < 2 ? 0x4C : 1 + random() % 11);
        std::vector<int32_t> statuses;
        for (SDOConfig *config : objects)
            statuses.push_back(
                SMSDOConfigAddData(config, id, type, bytes.data(), static_cast<uint32_t>(bytes.size()), replace));
        ASSERT_EQ(std::count(statuses.begin(), statuses.end(), statuses[0]), std::ssize(statuses));
    };
    for (int round = 0; round < 30; ++round) {
        Config built(SMSDOConfigAlloc());
        for (int entry = 0, entries = static_cast<int>(random() % 40); entry < entries; ++entry)
            addSame({built.get()}, static_cast<uint16_t>(1 + random() % 60), 0);
        Config read(SMSDOBinaryToConfig(serialise(built.get()).data()));
        ASSERT_NE(read, nullptr);
        for (int step = 0; step < 30; ++step) {
            const auto id = static_cast<uint16_t>(1 + random() % 60);
            switch (random() % 4) {
            case 0:
            case 1:
                addSame({built.get(), read.get()}, id, static_cast<int32_t>(random() % 2));
                break;
            case 2:
                ASSERT_EQ(SMSDOConfigRemoveData(built.get(), id, 0, 0), SMSDOConfigRemoveData(read.get(), id, 0, 0));
                break;
            default: {
                const uint32_t index = random() % 50, all = random() % 10 == 0 ? 1 : 0;
                ASSERT_EQ(SMSDOConfigRemoveData(built.get(), 0, index, all),
                          SMSDOConfigRemoveData(read.get(), 0, index, all));
            }
            }
            ASSERT_EQ(SMSDOConfigGetCount(read.get()), SMSDOConfigGetCount(built.get()));
            ASSERT_EQ(serialise(read.get()), serialise(built.get())) << "round " << round << ", step " << step;
        }
    }
}

// Slots out of ID order are read entry by entry: unique IDs come back in
// order, a repeated one is refused; so is an object whose values, shared
// between slots, would take it past the largest size.
TEST(SdoBinary, SlotsOutOfOrderOrSharingTheirValues)
{
    const Bytes shuffled = Bin().header("SDOB", 2, 24).inlined(9, 6, {9}).inlined(3, 6, {3}).bytes;
    const Bytes repeated = Bin().header("SDOB", 2, 24).inlined(3, 6, {9}).inlined(3, 6, {3}).bytes;
    // Both slots point at the one value after the index.
    const auto sharing = [](uint16_t length) {
        Bin bin;
        bin.header("SDOB", 2, static_cast<uint16_t>(24 + length)).outOfLine(1, 14, length, 16);
        bin.outOfLine(2, 14, length, 8).bytes.resize(24 + length, 7);
        return bin.bytes;
    };
    Config config(SMSDOBinaryToConfig(shuffled.data()));
    ASSERT_NE(config, nullptr);
    EXPECT_EQ(serialise(config.get()), Bin().header("SDOB", 2, 24).inlined(3, 6, {3}).inlined(9, 6, {9}).bytes);
    EXPECT_EQ(SMSDOBinaryToConfig(repeated.data()), nullptr);
    EXPECT_EQ(SMSDOBinaryToConfig(sharing(40000).data()), nullptr) << "8 + 2 * (8 + 40000) is above 0xFFFF";
    Config fits(SMSDOBinaryToConfig(sharing(20000).data()));
    ASSERT_NE(fits, nullptr);
    EXPECT_EQ(SMSDOConfigGetBinarySize(fits.get()), 40024u);
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
