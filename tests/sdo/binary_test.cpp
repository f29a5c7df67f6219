// The binary forms: exact bytes, round trips, lookups and updates in place,
// the walk, binary arrays, and damaged input.
#include <algorithm>
#include <functional>
#include <random>
#include <string>

#include "sdo/sdo_test_util.h"

namespace zksupt::test {
namespace {

constexpr uint32_t kHandle = sizeof(void *);

const Bytes kChild = Bin().header("SDOB", 1, 16).inlined(7, 6, {0xAB, 0xCD}).bytes;

Config child()
{
    Config config = newConfig();
    add(config.get(), 7, 6, {0xAB, 0xCD});
    return config;
}

// A parent holding, at id, the child above (type 13) or it and an empty object (0x1D).
Config nested(uint16_t id, uint8_t type)
{
    Config parent = newConfig();
    const bool array = (type & 0x10) != 0;
    SDOConfig *handles[2] = {child().release(), array ? SMSDOConfigAlloc() : nullptr};
    const void *value = array ? static_cast<const void *>(handles) : handles[0];
    EXPECT_EQ(SMSDOConfigAddData(parent.get(), id, type, value, (array ? 2 : 1) * kHandle, 0), 0);
    return parent;
}

struct Layout {
    const char *name;
    std::function<Config()> build;
    Bytes expected;
};

const Layout kLayouts[] = {
    {"empty", newConfig, Bin().header("SDOB", 0, 8).bytes},
    {"inline 1 to 4 bytes, zero padded",
     [] {
         Config c = newConfig();
         add(c.get(), 4, 7, {1, 2, 3, 4});
         add(c.get(), 2, 0x40, {1, 2});
         add(c.get(), 3, 0xF5, {1, 2, 3});
         add(c.get(), 1, 5, {0xFF});
         return c;
     },
     Bin().header("SDOB", 4, 40).inlined(1, 5, {0xFF}).inlined(2, 0x40, {1, 2}).inlined(3, 0xF5, {1, 2, 3})
         .inlined(4, 7, {1, 2, 3, 4}).bytes},
    {"out of line, offset from the slot",
     [] {
         Config c = newConfig();
         add(c.get(), 7, 14, {1, 2, 3, 4, 5, 6});
         return c;
     },
     Bin().header("SDOB", 1, 22).outOfLine(7, 14, 6, 8).raw({1, 2, 3, 4, 5, 6}).bytes},
    {"several entries in ID order",
     [] {
         Config c = newConfig();
         add(c.get(), 9, 9, {9, 9, 9, 9, 9, 9});
         add(c.get(), 3, 5, {3});
         add(c.get(), 5, 0x8E, {5, 5, 5, 5, 5});
         return c;
     },
     Bin().header("SDOB", 3, 43).inlined(3, 5, {3}).outOfLine(5, 0x8E, 5, 16).outOfLine(9, 9, 6, 13)
         .raw({5, 5, 5, 5, 5, 9, 9, 9, 9, 9, 9}).bytes},
    {"nested object", [] { return nested(2, 0x2D); },
     Bin().header("SDOB", 1, 32).outOfLine(2, 0x2C, 16, 8).raw(kChild).bytes},
    {"nested array", [] { return nested(3, 0x1D); },
     Bin().header("SDOB", 1, 48).outOfLine(3, 0x1C, 32, 8).header("SDAB", 2, 32).raw(kChild).header("SDOB", 0, 8)
         .bytes},
};

TEST(SdoBinary, ObjectsSerialiseToExactBytesAndReadBack)
{
    for (const Layout &layout : kLayouts) {
        SCOPED_TRACE(layout.name);
        Config config = layout.build();
        const Bytes &expected = layout.expected;
        EXPECT_EQ(SMSDOConfigGetBinarySize(config.get()), expected.size());
        EXPECT_EQ(serialise(config.get()), expected);
        Config back(SMSDOBinaryToConfig(expected.data()));
        ASSERT_NE(back, nullptr);
        EXPECT_EQ(serialise(back.get()), expected);
        EXPECT_EQ(SMSDOConfigCompareByValue(back.get(), config.get()), 1);
    }
    Config back(SMSDOBinaryToConfig(kLayouts[4].expected.data()));
    uint8_t type = 0;
    uint32_t size = 64;
    uint8_t value[64];
    EXPECT_EQ(SMSDOConfigGetDataByID(back.get(), 2, &type, value, &size), 0);
    EXPECT_EQ(type, 0x2D) << "read back as a nested object";
    EXPECT_EQ(size, kHandle);
}

TEST(SdoBinary, ToBinaryChecksItsArguments)
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
    SMSDOConfigReCalcBinarySize(config.get());  // unchanged: 5 bytes are charged in full either way
    size = 21;
    EXPECT_EQ(SMSDOConfigToBinary(config.get(), out, &size), 0);
    EXPECT_EQ(SMSDOBinaryToConfig(nullptr), nullptr);
    out[3] = 'X';
    EXPECT_EQ(SMSDOBinaryToConfig(out), nullptr);
}

TEST(SdoBinary, LookupsByIdAndByIndex)
{
    const Bytes block = Bin().header("SDOB", 3, 38).inlined(3, 6, {1, 2}).outOfLine(5, 14, 6, 16).inlined(9, 5, {9})
                            .raw({6, 6, 6, 6, 6, 6}).bytes;
    uint8_t type = 0, out[8] = {};
    uint16_t id = 0;
    uint32_t size = sizeof out;
    EXPECT_EQ(SMSDOBinaryGetDataByID(block.data(), 3, &type, out, &size), 0);
    EXPECT_EQ(size, 4u) << "inline values are reported with their padding";
    EXPECT_EQ(Bytes(out, out + 4), (Bytes{1, 2, 0, 0}));
    size = sizeof out;
    EXPECT_EQ(SMSDOBinaryGetDataByIndex(block.data(), 0, &id, &type, out, &size), 0);
    EXPECT_EQ(size, 2u);
    EXPECT_EQ(id, 3);
    for (uint16_t wanted : {5, 9}) {
        size = sizeof out;
        EXPECT_EQ(SMSDOBinaryGetDataByID(block.data(), wanted, &type, out, &size), 0);
        EXPECT_EQ(out[0], wanted == 5 ? 6 : 9);
    }
    size = 5;
    EXPECT_EQ(SMSDOBinaryGetDataByID(block.data(), 5, &type, out, &size), 0x10);
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(SMSDOBinaryGetDataByID(block.data(), 4, &type, out, &size), 0x100);
    EXPECT_EQ(SMSDOBinaryGetDataByID(block.data(), 0, &type, out, &size), 0x10F);
    EXPECT_EQ(SMSDOBinaryGetDataByID(kChild.data() + 1, 7, &type, out, &size), 0x101);
    EXPECT_EQ(SMSDOBinaryGetDataByIndex(block.data(), 3, &id, &type, out, &size), 0xC);
    EXPECT_EQ(SMSDOBinaryGetDataByIndex(block.data(), 0, nullptr, &type, out, &size), 0x10F);
    id = 0;
    size = 1;
    EXPECT_EQ(SMSDOBinaryGetDataByIndex(block.data(), 1, &id, &type, out, &size), 0x10);
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(id, 0) << "not written with 0x10";
    uint16_t isArray = 9;
    EXPECT_EQ(SMSDOBinaryGetCount(block.data(), &isArray), 3u);
    EXPECT_EQ(isArray, 0);
    EXPECT_EQ(SMSDOBinaryGetSize(Bin().header("SDAB", 0, 8).bytes.data(), &isArray), 8u);
    EXPECT_EQ(isArray, 1);
    EXPECT_EQ(SMSDOBinaryGetCount(kChild.data() + 1, nullptr), 0xFFFFFFFFu);
    EXPECT_EQ(SMSDOBinaryGetSize(nullptr, nullptr), 0u);
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

    const struct {
        uint16_t id;
        uint8_t type;
        uint32_t capacity, valueSize;
        int32_t status;
    } refused[] = {{8, 6, 40, 2, 0x100}, {7, 5, 40, 2, 0x100}, {0, 6, 40, 2, 0x10F},
                   {7, 0, 40, 2, 0x10F}, {7, 6, 40, 0, 0x10F}, {7, 6, 15, 2, 0x10}};
    for (const auto &r : refused) {
        size = r.capacity;
        EXPECT_EQ(SMSDOBinarySetData(block.data(), &size, r.id, r.type, three.data(), r.valueSize), r.status) << r.id;
    }
    EXPECT_EQ(SMSDOBinarySetData(nullptr, &size, 7, 6, three.data(), 2), 0x10F);
    Bytes array = Bin().header("SDAB", 0, 8).bytes;
    array.resize(16);
    size = 16;
    EXPECT_EQ(SMSDOBinarySetData(array.data(), &size, 7, 6, three.data(), 2), 0x10F);
}

// Records every callback as text; returns a chosen result at one of them.
struct Trace {
    std::vector<std::string> events;
    std::string stopAt;
    int32_t note(std::string event)
    {
        events.push_back(event);
        return event == stopAt ? 77 : 0;
    }
    static int32_t begin(void *t, uint32_t cookie, uint16_t isArray, uint32_t count, int32_t index, const void *)
    {
        return static_cast<Trace *>(t)->note("begin " + std::to_string(cookie) + (isArray ? " array " : " object ") +
                                             std::to_string(count) + " " + std::to_string(index));
    }
    static int32_t entry(void *t, uint32_t *cookie, uint16_t id, uint8_t b76, uint8_t b5, uint8_t b4, uint8_t base,
                         uint32_t length, const void *)
    {
        *cookie = 100u + id;
        return static_cast<Trace *>(t)->note("entry " + std::to_string(id) + " " + std::to_string(b76) +
                                             std::to_string(b5) + std::to_string(b4) + " " + std::to_string(base) +
                                             " " + std::to_string(length));
    }
    static int32_t after(void *t, uint32_t cookie)
    {
        return static_cast<Trace *>(t)->note("after " + std::to_string(cookie)) + 5;
    }
    static int32_t end(void *t, uint32_t cookie, uint16_t isArray)
    {
        return static_cast<Trace *>(t)->note("end " + std::to_string(cookie) + (isArray ? " array" : " object"));
    }
};

TEST(SdoBinary, WalkVisitsDepthFirstWithCookies)
{
    const Bytes block = Bin().header("SDOB", 3, 80).inlined(1, 0xE5, {1}).outOfLine(2, 0x2C, 16, 16)
                            .outOfLine(3, 0x1C, 32, 24).raw(kChild).header("SDAB", 2, 32).raw(kChild)
                            .header("SDOB", 0, 8).bytes;
    const std::vector<std::string> full = {
        "begin 0 object 3 -1", "entry 1 310 5 1", "after 101",      "entry 2 010 12 16",
        "begin 102 object 1 -1", "entry 7 000 6 2", "after 107",    "end 102 object",
        "after 102",           "entry 3 001 12 32", "begin 103 array 2 -1", "begin 103 object 1 0",
        "entry 7 000 6 2",     "after 107",         "end 103 object", "end 103 array",
        "after 103",           "end 0 object"};
    Trace trace;
    EXPECT_EQ(SMSDOBinaryWalk(block.data(), &trace, Trace::begin, Trace::entry, Trace::after, Trace::end, 1), 0);
    EXPECT_EQ(trace.events, full);

    Trace flat;
    EXPECT_EQ(SMSDOBinaryWalk(block.data(), &flat, Trace::begin, Trace::entry, Trace::after, nullptr, 0), 5)
        << "without an end callback: the last after-entry result";
    EXPECT_EQ(flat.events.size(), 7u) << "no nested blocks without recursion";

    const Bytes array = Bin().header("SDAB", 2, 32).raw(kChild).header("SDOB", 0, 8).bytes;
    Trace elements;
    EXPECT_EQ(SMSDOBinaryWalk(array.data(), &elements, Trace::begin, Trace::entry, nullptr, Trace::end, 0), 0);
    EXPECT_EQ(elements.events, (std::vector<std::string>{"begin 0 array 2 -1", "begin 0 object 1 0",
                                                         "end 0 object", "end 0 array"}))
        << "elements are opened and closed only; an empty one not at all";

    for (const char *stop : {"entry 7 000 6 2", "begin 103 array 2 -1", "end 0 object"}) {
        Trace stopped;
        stopped.stopAt = stop;
        EXPECT_EQ(SMSDOBinaryWalk(block.data(), &stopped, Trace::begin, Trace::entry, Trace::after, Trace::end, 1), 77);
        EXPECT_EQ(stopped.events.back(), stop);
    }
    Trace none;
    EXPECT_EQ(SMSDOBinaryWalk(Bin().header("SDOB", 0, 8).bytes.data(), &none, Trace::begin, Trace::entry,
                              Trace::after, Trace::end, 1), 0);
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
    capacity = 64;
    Bytes object = kChild;
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
    EXPECT_EQ(configs[0], nullptr);
    count = 3;
    ASSERT_EQ(SMSDOBinaryArrayToConfigArray(array.data(), configs, &count), 0);
    EXPECT_EQ(count, 2u);
    Config first(configs[0]), second(configs[1]);
    EXPECT_EQ(serialise(second.get()), kChild);

    SDOConfig *const list[] = {first.get(), nullptr, second.get()};
    size = 0;
    EXPECT_EQ(SMSDOConfigArrayToBinaryArray(list, 3, nullptr, &size), 0);
    EXPECT_EQ(size, 32u) << "a size query leaves out the header";
    Bytes written(39);
    size = 39;
    EXPECT_EQ(SMSDOConfigArrayToBinaryArray(list, 3, written.data(), &size), 0);
    EXPECT_EQ(size, 40u) << "the total, with the element that did not fit";
    EXPECT_EQ(SMSDOBinaryGetCount(written.data(), nullptr), 1u);
    size = 40;
    written.resize(40);
    EXPECT_EQ(SMSDOConfigArrayToBinaryArray(list, 3, written.data(), &size), 0);
    EXPECT_EQ(written, array);
    EXPECT_EQ(SMSDOConfigArrayToBinaryArray(nullptr, 3, written.data(), &size), 0x10F);
}

// Damaged blocks, in buffers exactly as long as their headers state, so that
// the sanitizer build catches any read beyond: every reader must stay inside.
TEST(SdoBinary, DamagedBlocksAreReadWithinTheirStatedSize)
{
    const Bytes valid = Bin().header("SDOB", 4, 112).inlined(1, 5, {1}).outOfLine(2, 0x2C, 16, 24)
                            .outOfLine(3, 0x1C, 32, 32).outOfLine(4, 14, 24, 56).raw(kChild)
                            .header("SDAB", 2, 32).raw(kChild).header("SDOB", 0, 8).raw(Bytes(24, 4)).bytes;
    ASSERT_EQ(valid.size(), 112u);
    Config sane(SMSDOBinaryToConfig(valid.data()));
    ASSERT_NE(sane, nullptr);
    EXPECT_EQ(serialise(sane.get()), valid);

    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
        Bytes block = valid;
        for (int flips = 1 + round % 4; flips > 0; --flips)
            block[random() % block.size()] = static_cast<uint8_t>(random());
        const size_t stated = std::max<size_t>(8, SMSDOBinaryGetSize(block.data(), nullptr));
        Bytes exact(stated);
        std::copy_n(block.begin(), std::min(stated, block.size()), exact.begin());
        block = std::move(exact);
        Trace trace;
        SMSDOBinaryWalk(block.data(), &trace, Trace::begin, Trace::entry, Trace::after, Trace::end, 1);
        Config(SMSDOBinaryToConfig(block.data()));
        uint8_t out[128];
        uint16_t id;
        for (uint16_t index = 0; index < 6; ++index) {
            uint32_t size = sizeof out;
            SMSDOBinaryGetDataByIndex(block.data(), index, &id, nullptr, out, &size);
            size = sizeof out;
            SMSDOBinaryGetDataByID(block.data(), index, nullptr, out, &size);
            size = sizeof out;
            SMSDOBinaryArrayGetByIndex(block.data(), 0, index, out, &size);
        }
        uint32_t capacity = static_cast<uint32_t>(block.size());
        SMSDOBinarySetData(block.data(), &capacity, 4, 14, out, 3);
    }

    // Two slots sharing one nested block, twelve levels deep: each level
    // doubles the work of a walk that trusted the slots.
    Bin shared;
    const uint16_t levels = 12, top = 16 + 24 * levels;
    for (uint16_t level = 0; level < levels; ++level)
        shared.header("SDOB", 2, static_cast<uint16_t>(top - 24 * level))
            .outOfLine(1, 12, static_cast<uint16_t>(top - 24 * (level + 1)), 16)
            .outOfLine(2, 12, static_cast<uint16_t>(top - 24 * (level + 1)), 8);
    shared.header("SDOB", 1, 16).inlined(1, 5, {1});
    ASSERT_EQ(shared.bytes.size(), top);
    Trace trace;
    EXPECT_EQ(SMSDOBinaryWalk(shared.bytes.data(), &trace, nullptr, Trace::entry, nullptr, nullptr, 1), 0x10F);
    EXPECT_LE(trace.events.size(), 8192u);
}

}  // namespace
}  // namespace zksupt::test
