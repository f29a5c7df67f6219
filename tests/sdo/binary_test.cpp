// The binary forms: exact bytes, round trips, lookups and updates in place,
// the walk, binary arrays, and damaged input.
#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <tuple>

#include "sdo/sdo_test_util.h"

namespace zksupt::test {
namespace {

const Bytes kChild = Bin().header("SDOB", 1, 16).inlined(7, 6, {0xAB, 0xCD}).bytes;
const Bytes kEmpty = Bin().header("SDOB", 0, 8).bytes;
const Bytes kPair = Bin().header("SDAB", 2, 32).raw(kChild).raw(kEmpty).bytes;

// A parent holding at id the object of kChild (type 13), or an array of it and an empty object (0x1D).
Config nested(uint16_t id, uint8_t type)
{
    Config parent = newConfig();
    const bool array = (type & 0x10) != 0;
    SDOConfig *handles[2] = {SMSDOBinaryToConfig(kChild.data()), array ? SMSDOConfigAlloc() : nullptr};
    const void *value = array ? static_cast<const void *>(handles) : handles[0];
    EXPECT_EQ(SMSDOConfigAddData(parent.get(), id, type, value, (array ? 2 : 1) * kHandle, 0), 0);
    return parent;
}

// Entries to add (ID, type, value) and the binary form expected of them.
using Items = std::vector<std::tuple<uint16_t, uint8_t, Bytes>>;
const std::pair<Items, Bytes> kLayouts[] = {
    {{}, kEmpty},
    {{{7, 6, {0xAB, 0xCD}}}, kChild},
    {{{4, 7, {1, 2, 3, 4}}, {2, 0x40, {1, 2}}, {3, 0xF5, {1, 2, 3}}, {1, 5, {0xFF}}},
     Bin().header("SDOB", 4, 40).inlined(1, 5, {0xFF}).inlined(2, 0x40, {1, 2}).inlined(3, 0xF5, {1, 2, 3})
         .inlined(4, 7, {1, 2, 3, 4}).bytes},
    {{{7, 14, {1, 2, 3, 4, 5, 6}}}, Bin().header("SDOB", 1, 22).outOfLine(7, 14, 6, 8).raw({1, 2, 3, 4, 5, 6}).bytes},
    {{{9, 9, {9, 9, 9, 9, 9, 9}}, {3, 5, {3}}, {5, 0x8E, {5, 5, 5, 5, 5}}},
     Bin().header("SDOB", 3, 43).inlined(3, 5, {3}).outOfLine(5, 0x8E, 5, 16).outOfLine(9, 9, 6, 13)
         .raw({5, 5, 5, 5, 5, 9, 9, 9, 9, 9, 9}).bytes},
};

TEST(SdoBinary, ObjectsSerialiseToExactBytesAndReadBack)
{
    std::vector<std::pair<Config, Bytes>> cases;
    for (const auto &[items, expected] : kLayouts) {
        Config config = newConfig();
        for (const auto &[id, type, value] : items)
            add(config.get(), id, type, value);
        cases.emplace_back(std::move(config), expected);
    }
    cases.emplace_back(nested(2, 0x2D), Bin().header("SDOB", 1, 32).outOfLine(2, 0x2C, 16, 8).raw(kChild).bytes);
    cases.emplace_back(nested(3, 0x1D), Bin().header("SDOB", 1, 48).outOfLine(3, 0x1C, 32, 8).raw(kPair).bytes);
    for (const auto &[config, expected] : cases) {
        SCOPED_TRACE(::testing::PrintToString(expected));
        EXPECT_EQ(SMSDOConfigGetBinarySize(config.get()), expected.size());
        EXPECT_EQ(serialise(config.get()), expected);
        Config back(SMSDOBinaryToConfig(expected.data()));
        ASSERT_NE(back, nullptr);
        EXPECT_EQ(serialise(back.get()), expected);
        EXPECT_EQ(SMSDOConfigCompareByValue(back.get(), config.get()), 1);
    }
    Config back(SMSDOBinaryToConfig(cases.back().second.data()));
    uint8_t type = 0, value[16];
    uint32_t size = sizeof value;
    EXPECT_EQ(SMSDOConfigGetDataByID(back.get(), 3, &type, value, &size), 0);
    EXPECT_EQ(type, 0x1D) << "read back as a nested array";
    EXPECT_EQ(size, 2 * kHandle);
}

TEST(SdoBinary, ArgumentsAndHeaders)
{
    Config config = newConfig();
    add(config.get(), 1, 14, {1, 2, 3, 4, 5});
    uint8_t out[21];
    uint32_t size = 20;
    EXPECT_EQ(SMSDOConfigToBinary(config.get(), out, &size), 0x10);
    EXPECT_EQ(size, 20u) << "left as it was";
    EXPECT_EQ(SMSDOConfigToBinary(nullptr, out, &size), 0x10F);
    EXPECT_EQ(SMSDOConfigToBinary(config.get(), nullptr, &size), 0x10F);
    EXPECT_EQ(SMSDOConfigToBinary(config.get(), out, nullptr), 0x10F);
    EXPECT_EQ(SMSDOBinaryToConfig(nullptr), nullptr);
    EXPECT_EQ(SMSDOBinaryToConfig(kPair.data()), nullptr);

    uint16_t id, isArray = 9;
    EXPECT_EQ(SMSDOBinaryGetDataByID(kPair.data(), 7, nullptr, nullptr, &size), 0x101) << "wrong magic";
    EXPECT_EQ(SMSDOBinaryGetDataByIndex(kPair.data(), 0, &id, nullptr, nullptr, &size), 0x101);
    EXPECT_EQ(SMSDOBinaryGetDataByID(kChild.data(), 7, nullptr, nullptr, nullptr), 0x10F);
    EXPECT_EQ(SMSDOBinaryGetDataByIndex(kChild.data(), 0, nullptr, nullptr, nullptr, &size), 0x10F);
    EXPECT_EQ(SMSDOBinaryGetCount(kChild.data(), &isArray), 1u);
    EXPECT_EQ(isArray, 0);
    EXPECT_EQ(SMSDOBinaryGetSize(kPair.data(), &isArray), 32u);
    EXPECT_EQ(isArray, 1);
    EXPECT_EQ(SMSDOBinaryGetCount(kChild.data() + 1, nullptr), 0xFFFFFFFFu);
    EXPECT_EQ(SMSDOBinaryGetSize(kChild.data() + 1, nullptr), 0u);
}

TEST(SdoBinary, SetDataInPlaceOrByRebuilding)
{
    Bytes block = Bin().header("SDOB", 2, 30).inlined(7, 6, {1, 2}).outOfLine(9, 14, 6, 8).raw({6, 6, 6, 6, 6, 6})
                      .bytes;
    block.resize(40);
    const Bytes three{3, 3, 3}, five{5, 5, 5, 5, 5}, six{7, 7, 7, 7, 7, 7};
    uint32_t size = 40;
    EXPECT_EQ(SMSDOBinarySetData(block.data(), &size, 7, 6, three.data(), 3), 0);
    EXPECT_EQ(size, 30u);
    EXPECT_EQ(SMSDOBinarySetData(block.data(), &size, 9, 14, six.data(), 6), 0);
    EXPECT_EQ(Bytes(block.begin(), block.begin() + 30),
              Bin().header("SDOB", 2, 30).inlined(7, 6, {3, 3, 3}).outOfLine(9, 14, 6, 8).raw(six).bytes);
    size = 34;
    EXPECT_EQ(SMSDOBinarySetData(block.data(), &size, 7, 6, five.data(), 5), 0x10);
    EXPECT_EQ(size, 35u) << "rebuilt it grows by 5";
    EXPECT_EQ(SMSDOBinaryGetSize(block.data(), nullptr), 30u) << "unchanged";
    size = 40;
    EXPECT_EQ(SMSDOBinarySetData(block.data(), &size, 7, 6, five.data(), 5), 0);
    EXPECT_EQ(size, 35u);
    EXPECT_EQ(Bytes(block.begin(), block.begin() + 35),
              Bin().header("SDOB", 2, 35).outOfLine(7, 6, 5, 16).outOfLine(9, 14, 6, 13).raw(five).raw(six).bytes);

    const std::tuple<uint16_t, uint8_t, uint32_t, uint32_t, int32_t> refused[] = {
        {8, 6, 40, 2, 0x100}, {7, 5, 40, 2, 0x100}, {0, 6, 40, 2, 0x10F},
        {7, 0, 40, 2, 0x10F}, {7, 6, 40, 0, 0x10F}, {7, 6, 15, 2, 0x10}};  // ID, type, capacity, value size, status
    for (const auto &[id, type, capacity, valueSize, status] : refused) {
        size = capacity;
        EXPECT_EQ(SMSDOBinarySetData(block.data(), &size, id, type, three.data(), valueSize), status) << id;
    }
    Bytes array = kPair;
    size = 32;
    EXPECT_EQ(SMSDOBinarySetData(array.data(), &size, 7, 6, three.data(), 2), 0x10F);
}

// Records every callback as a line of words; returns 77 at the chosen one.
struct Trace {
    std::vector<std::string> events;
    std::string stopAt;

    template <class... Words>
    static int32_t note(void *trace, Words... words)
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
    const Bytes block = Bin().header("SDOB", 3, 80).inlined(1, 0xE5, {1}).outOfLine(2, 0x2C, 16, 16)
                            .outOfLine(3, 0x1C, 32, 24).raw(kChild).raw(kPair).bytes;
    Trace trace;
    EXPECT_EQ(SMSDOBinaryWalk(block.data(), &trace, Trace::begin, Trace::entry, Trace::after, Trace::end, 1), 0);
    EXPECT_EQ(trace.events, (std::vector<std::string>{"begin 0 0 3 -1", "entry 1 3 1 0 5 1", "after 101",
                                                      "entry 2 0 1 0 12 16", "begin 102 0 1 -1", "entry 7 0 0 0 6 2",
                                                      "after 107", "end 102 0", "after 102", "entry 3 0 0 1 12 32",
                                                      "begin 103 1 2 -1", "begin 103 0 1 0", "entry 7 0 0 0 6 2",
                                                      "after 107", "end 103 0", "end 103 1", "after 103", "end 0 0"}));
    Trace flat;
    EXPECT_EQ(SMSDOBinaryWalk(block.data(), &flat, Trace::begin, Trace::entry, Trace::after, nullptr, 0), 5)
        << "without an end callback: the last after-entry result";
    EXPECT_EQ(flat.events.size(), 7u) << "no nested blocks without recursion";
    Trace elements;
    EXPECT_EQ(SMSDOBinaryWalk(kPair.data(), &elements, Trace::begin, Trace::entry, nullptr, Trace::end, 0), 0);
    EXPECT_EQ(elements.events, (std::vector<std::string>{"begin 0 1 2 -1", "begin 0 0 1 0", "end 0 0", "end 0 1"}))
        << "elements are opened and closed only; an empty one not at all";
    for (const char *stop : {"entry 7 0 0 0 6 2", "begin 103 1 2 -1", "end 0 0"}) {
        Trace stopped{{}, stop};
        EXPECT_EQ(SMSDOBinaryWalk(block.data(), &stopped, Trace::begin, Trace::entry, Trace::after, Trace::end, 1), 77);
        EXPECT_EQ(stopped.events.back(), stop);
    }
    Trace none;
    EXPECT_EQ(SMSDOBinaryWalk(kEmpty.data(), &none, Trace::begin, Trace::entry, Trace::after, Trace::end, 1), 0);
    EXPECT_TRUE(none.events.empty());
    EXPECT_EQ(SMSDOBinaryWalk(kChild.data() + 1, &none, Trace::begin, nullptr, nullptr, nullptr, 1), 0x10F);
}

TEST(SdoBinary, ArraysOfObjects)
{
    Bytes array(40);
    EXPECT_EQ(SMSDOBinaryArrayInitHeader(array.data(), 7), 0x10);
    EXPECT_EQ(SMSDOBinaryArrayInitHeader(nullptr, 8), 0x10F);
    EXPECT_EQ(SMSDOBinaryArrayInitHeader(array.data(), 8), 0);
    uint32_t capacity = 30;
    EXPECT_EQ(SMSDOBinaryArrayAddData(array.data(), &capacity, kChild.data(), 16), 0);
    EXPECT_EQ(SMSDOBinaryArrayAddData(array.data(), &capacity, kChild.data(), 16), 0x10);
    EXPECT_EQ(capacity, 40u) << "the size needed";
    EXPECT_EQ(SMSDOBinaryArrayAddData(array.data(), &capacity, kChild.data(), 16), 0);
    EXPECT_EQ(array, Bin().header("SDAB", 2, 40).raw(kChild).raw(kChild).bytes);
    capacity = 15;
    EXPECT_EQ(SMSDOBinaryArrayAddData(array.data(), &capacity, kChild.data(), 16), 0x10);
    Bytes object = kChild;
    capacity = 64;
    EXPECT_EQ(SMSDOBinaryArrayAddData(object.data(), &capacity, kChild.data(), 16), 0x10F) << "not an array";

    uint8_t out[16];
    uint32_t size = 15;
    EXPECT_EQ(SMSDOBinaryArrayGetByIndex(array.data(), 0, 1, out, &size), 0x10);
    EXPECT_EQ(size, 16u);
    EXPECT_EQ(SMSDOBinaryArrayGetByIndex(array.data(), 0, 1, out, &size), 0);
    EXPECT_EQ(Bytes(out, out + 16), kChild);
    EXPECT_EQ(SMSDOBinaryArrayGetByIndex(array.data(), 0, 2, out, &size), 0x100);
    EXPECT_EQ(SMSDOBinaryArrayGetByIndex(kChild.data(), 0, 0, out, &size), 0x101);
    const Bytes odd = Bin().header("SDAB", 1, 16).header("XDOB", 0, 8).bytes;
    EXPECT_EQ(SMSDOBinaryArrayGetByIndex(odd.data(), 0, 0, out, &size), 0x101);

    SDOConfig *configs[3] = {};
    uint32_t count = 1;
    EXPECT_EQ(SMSDOBinaryArrayToConfigArray(array.data(), configs, &count), 0x10);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(SMSDOBinaryArrayToConfigArray(odd.data(), configs, &count), 0x101);
    ASSERT_EQ(SMSDOBinaryArrayToConfigArray(kPair.data(), configs, &count), 0);
    EXPECT_EQ(count, 2u);
    Config first(configs[0]), second(configs[1]);
    EXPECT_EQ(serialise(second.get()), kEmpty);

    SDOConfig *const list[] = {first.get(), nullptr, second.get()};
    size = 0;
    EXPECT_EQ(SMSDOConfigArrayToBinaryArray(list, 3, nullptr, &size), 0);
    EXPECT_EQ(size, 24u) << "a size query leaves out the header";
    Bytes written(31);
    size = 31;
    EXPECT_EQ(SMSDOConfigArrayToBinaryArray(list, 3, written.data(), &size), 0);
    EXPECT_EQ(size, 32u) << "the total, with the element that did not fit";
    EXPECT_EQ(SMSDOBinaryGetCount(written.data(), nullptr), 1u);
    written.resize(size);
    EXPECT_EQ(SMSDOConfigArrayToBinaryArray(list, 3, written.data(), &size), 0);
    EXPECT_EQ(written, kPair);
    EXPECT_EQ(SMSDOConfigArrayToBinaryArray(nullptr, 3, written.data(), &size), 0x10F);
}

// Damaged blocks, in buffers exactly as long as their headers state, so that
// the sanitizer build catches any read beyond: every reader must stay inside.
TEST(SdoBinary, DamagedBlocksAreReadWithinTheirStatedSize)
{
    const Bytes valid = Bin().header("SDOB", 4, 112).inlined(1, 5, {1}).outOfLine(2, 0x2C, 16, 24)
                            .outOfLine(3, 0x1C, 32, 32).outOfLine(4, 14, 24, 56).raw(kChild).raw(kPair)
                            .raw(Bytes(24, 4)).bytes;
    const Bytes array = Bin().header("SDAB", 3, 152).raw(valid).raw(kChild).raw(kChild).bytes;
    Config sane(SMSDOBinaryToConfig(valid.data()));
    ASSERT_NE(sane, nullptr);
    EXPECT_EQ(serialise(sane.get()), valid);

    std::mt19937 random(7);
    for (int round = 0; round < 4000; ++round) {
        Bytes damaged = round % 2 != 0 ? valid : array;
        for (int flips = 1 + round % 4; flips > 0; --flips)
            damaged[random() % damaged.size()] = static_cast<uint8_t>(random());
        Bytes block(std::max<size_t>(8, SMSDOBinaryGetSize(damaged.data(), nullptr)));
        std::copy_n(damaged.begin(), std::min(block.size(), damaged.size()), block.begin());
        Trace trace;
        SMSDOBinaryWalk(block.data(), &trace, Trace::begin, Trace::entry, Trace::after, Trace::end, 1);
        Config(SMSDOBinaryToConfig(block.data()));
        uint8_t out[128];
        uint16_t id;
        for (uint16_t key = 0; key < 6; ++key) {
            uint32_t size = sizeof out;
            SMSDOBinaryGetDataByIndex(block.data(), key, &id, nullptr, out, &size);
            size = sizeof out;
            SMSDOBinaryGetDataByID(block.data(), key, nullptr, out, &size);
            size = sizeof out;
            SMSDOBinaryArrayGetByIndex(block.data(), 0, key, out, &size);
        }
        SDOConfig *configs[4] = {};
        uint32_t count = 4;
        if (SMSDOBinaryArrayToConfigArray(block.data(), configs, &count) == 0)
            std::for_each(configs, configs + count, SMSDOConfigFree);
        uint32_t capacity = static_cast<uint32_t>(block.size());
        SMSDOBinarySetData(block.data(), &capacity, 4, 14, out, 3);
        capacity = static_cast<uint32_t>(block.size());
        SMSDOBinaryArrayAddData(block.data(), &capacity, kChild.data(), 16);
    }

    // Two slots sharing one nested block, twelve levels deep: a walk that
    // trusted the slots would do twice the work at every level.
    Bin shared;
    const uint16_t levels = 12, top = 16 + 24 * levels;
    for (uint16_t level = 0, inner = top - 24; level < levels; ++level, inner -= 24)
        shared.header("SDOB", 2, inner + 24).outOfLine(1, 12, inner, 16).outOfLine(2, 12, inner, 8);
    shared.header("SDOB", 1, 16).inlined(1, 5, {1});
    ASSERT_EQ(shared.bytes.size(), top);
    Trace trace;
    EXPECT_EQ(SMSDOBinaryWalk(shared.bytes.data(), &trace, nullptr, Trace::entry, nullptr, nullptr, 1), 0x10F);
    EXPECT_LE(trace.events.size(), 8192u);
}

// No hidden shared state: threads read one block and build objects of their
// own at once (the thread sanitizer build checks for races).
TEST(SdoBinary, ThreadsShareBlocksAndKeepTheirOwnObjects)
{
    const Bytes block = serialise(nested(3, 0x1D).get());
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&block] {
            for (int round = 0; round < 200; ++round) {
                Config copy(SMSDOBinaryToConfig(block.data()));
                Config clone(SMSDOConfigClone(copy.get()));
                uint32_t size = 0;
                EXPECT_EQ(SMSDOBinaryGetDataByID(block.data(), 3, nullptr, nullptr, &size), 0x10);
                EXPECT_EQ(serialise(clone.get()), block);
            }
        });
    for (std::thread &thread : threads)
        thread.join();
}

}  // namespace
}  // namespace zksupt::test
