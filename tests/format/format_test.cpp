// The engine's own rules: where it departs from C's printf, its result and
// terminator at every buffer size, "%n", UCS-2 arguments, and its lock.
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdarg>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include <zksupt/format.h>

#include "format/engine.h"
#include "frame/lifecycle.h"
#include "support/child.h"

namespace {

// Formats through SMvsnprintf into a roomy buffer; the result must be the
// length of the terminated text.
std::string format(const char *format, ...)
{
    char out[512];
    va_list args;
    va_start(args, format);
    const int32_t stored = SMvsnprintf(out, sizeof out, format, args);
    va_end(args);
    EXPECT_EQ(stored, static_cast<int32_t>(std::strlen(out))) << format;
    return out;
}

TEST(Format, IntegerFieldsCountSignAndPrefixInThePrecision)
{
    EXPECT_EQ(format("%5.3d|%05d|%-4x|", 7, -42, 255), "  007|-0042|ff  |");
    EXPECT_EQ(format("%.3d|%5.3d|%#.4x|%+.2d|%#.5X", -1, -1, 0x1f, 3, 0xab), "-01|  -01|0x1f|+3|0X0AB");
    EXPECT_EQ(format("%#x|%#o|%#.0o|%.0d|%+.0d|%5.0u|", 0, 8, 0, 0, 0, 0), "0|010|||+|     |");
    EXPECT_EQ(format("%+u|% x|%+o|%+c|% s|%+5p", 1, 2, 3, 'c', "s", nullptr), "1|2|3|c|s|  0x0");
    EXPECT_EQ(format("%hd|%hhd|%hu|%hx|%lhd", 65535, 65535, 65537, 0x12345, 65535), "-1|-1|1|2345|65535");
    EXPECT_EQ(format("%D|%O|%U|%i", -5, 8, 4294967295u, INT32_MIN), "-5|10|4294967295|-2147483648");
    EXPECT_EQ(format("%lld|%d", 5, 7), "5|7");  // one 32-bit argument each
    EXPECT_EQ(format("%*d|%-*d|%.*d|%*d|", -4, 1, 3, 2, -1, 3, INT32_MIN, 4), "1   |2  |3|4|");
}

TEST(Format, PointersPrintTheirFullNativeWidth)
{
    EXPECT_EQ(format("%p|%5p|%-6p|", nullptr, nullptr, nullptr), "0x0|  0x0|0x0   |");
    EXPECT_EQ(format("%p", reinterpret_cast<void *>(0x1A2b)), "0x1a2b");
    EXPECT_EQ(format("%p", reinterpret_cast<void *>(UINTPTR_MAX)), "0x" + std::string(2 * sizeof(void *), 'f'));
}

TEST(Format, TextAndUnknownConversions)
{
    EXPECT_EQ(format("%.3s|%s|%05s|%-4s|%.2c|%3c", nullptr, nullptr, "ab", "x", 'y', 'z'),
              "(nu|(null)|000ab|x   |y|  z");
    EXPECT_EQ(format("%%|%5%|%-3y|%03q|%zu|%C|%\x01"), "%|    %|y  |00q|zu|C|\x01");
    EXPECT_EQ(format("abc%") + format("ab%-5") + format("ab%.*", 3), "abcabab");  // the format ends the output
    EXPECT_EQ(format("%.3s", std::vector<char>{'a', 'b', 'c'}.data()), "abc");    // no read past the precision
}

TEST(Format, FloatingPointFollowsTheBsdAssembly)
{
    EXPECT_EQ(format("%f|%.0f|%#.0f|%#.0f|%.0f|%.0f", 1.0, 1.0, 1.0, 0.0, 0.3, -0.5), "1.000000|1|1.|0|0.|-0.");
    EXPECT_EQ(format("%e|%#e|%E|%e|%.2e|%e", 1.0, 1.0, 12345.678, 1.5, 0.0, 1e-300),
              "1e+00|1.000000e+00|1.234568E+04|1.5e+00|0e+00|1e-300");
    EXPECT_EQ(format("%g|%g|%g|%.0g|%#g|%G", 100000.0, 1000000.0, 0.0001, 26.0, 0.0, 1e-5),
              "100000|1e+06|0.0001|3e+01|0.00000|1E-05");
    EXPECT_EQ(format("%f|%e|%G|%f|%+5f|% f|%05f|%-5e|", HUGE_VAL, -HUGE_VAL, NAN, -0.0, HUGE_VAL, NAN, HUGE_VAL, NAN),
              "Inf|-Inf|NaN|0.000000| +Inf| NaN|00Inf|NaN  |");
    EXPECT_EQ(format("%Lf|%lf|%+08.2f|%-8.1e|", 2.5, 0.125, -1.5, 2.0), "2.500000|0.125000|-0001.50|2e+00   |");
}

TEST(Format, HugePrecisionsAndWidthsCostOnlyTheRoomThereIs)
{
    char glibc[1200];
    std::snprintf(glibc, sizeof glibc, "%.1100f", 5e-324);
    EXPECT_EQ(format("%.1100f", 5e-324).substr(0, 511), std::string(glibc).substr(0, 511));
    char out[8];
    int32_t count = 0;
    EXPECT_EQ(SMsnprintf(out, sizeof out, "%.2000000000f%n", 1.0, &count), 7);
    EXPECT_STREQ(out, "1.00000");
    EXPECT_EQ(count, 2000000002);
    EXPECT_EQ(SMsnprintf(out, sizeof out, "%2147483647d|%#.999999999e", 1, 0.0), 7);
    EXPECT_STREQ(out, "       ");
}

// The engine proper, which also reports whether output was dropped.
int32_t engine(char *dst, uint32_t size, uint32_t *truncated, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    const int32_t stored = zksupt::format::runEngine(dst, size, format, args, truncated);
    va_end(args);
    return stored;
}

// Every size from 0 up: the stored prefix, the terminator right after it,
// nothing written beyond, and the same count with dst null.
TEST(Format, ResultAndTerminatorAtEverySize)
{
    const char *layout = "%s|%5d|%-6.2f|%#x|%c%%";
    const std::string whole = format(layout, "text", -12, 3.14159, 255, 'q');
    ASSERT_EQ(whole, "text|  -12|3.14  |0xff|q%");
    for (uint32_t size = 0; size <= whole.size() + 2; ++size) {
        const uint32_t stored = size == 0 ? 0 : std::min<uint32_t>(size - 1, static_cast<uint32_t>(whole.size()));
        std::vector<char> out(std::max<uint32_t>(size, 1), 'Z');
        EXPECT_EQ(SMsnprintf(out.data(), size, layout, "text", -12, 3.14159, 255, 'q'), static_cast<int32_t>(stored));
        EXPECT_EQ(std::string(out.data()), whole.substr(0, stored)) << size;
        uint32_t truncated = 7;
        EXPECT_EQ(engine(nullptr, size, &truncated, layout, "text", -12, 3.14159, 255, 'q'),
                  static_cast<int32_t>(stored));
        EXPECT_EQ(truncated, stored < whole.size() ? 1u : 0u);
    }
    char out[4] = "ZZZ";
    EXPECT_EQ(SMsnprintf(out, 0x80000001u, "abc"), 0);  // above 0x80000000: no room at all
    EXPECT_EQ(out[0], '\0');
    EXPECT_EQ(SMsnprintf(out, 0x80000000u, "abc"), 3);
    EXPECT_STREQ(out, "abc");
}

TEST(Format, CountStoresEveryByteProducedSoFar)
{
    int32_t counts[3] = {-1, -1, -1};
    int16_t shorts[2] = {0x5555, 0x5555};
    char out[4];
    EXPECT_EQ(SMsnprintf(out, sizeof out, "ab%ncdef%ln%5d%n", &counts[0], &counts[1], 7, &counts[2]), 3);
    EXPECT_EQ(std::vector<int32_t>(counts, counts + 3), (std::vector<int32_t>{2, 6, 11}));
    EXPECT_EQ(SMsnprintf(out, sizeof out, "%65537d%hn", 1, &shorts[0]), 3);
    EXPECT_EQ(shorts[0], 1);  // 65537 in 16 bits
    EXPECT_EQ(shorts[1], 0x5555);
}

TEST(Format, Ucs2StringsPrintAsUtf8)
{
    const ucs2 text[] = {'a', 0xE9, 0x263A, 0};
    EXPECT_EQ(format("[%S]|%.3S|%7S|%-5.1S|%S", text, text, text, text, nullptr),
              "[a\xC3\xA9\xE2\x98\xBA]|a\xC3\xA9| a\xC3\xA9\xE2\x98\xBA|a    |(null)");
    EXPECT_EQ(format("%.3S", nullptr), "(nu");
    // Text that cannot be converted ends the output at its directive.
    const ucs2 broken[] = {0xDC00, 'x', 0};
    char out[16];
    EXPECT_EQ(SMsnprintf(out, sizeof out, "ab%S|%d", broken, 5), 2);
    EXPECT_STREQ(out, "ab");
}

TEST(Format, CallsFromManyThreadsStayIntact)
{
    const std::string expected = format("%d|%s|%.3f|%e", 42, "zk", 2.0 / 3, 1e100);
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            char out[64];
            for (int i = 0; i < 2000; ++i)
                failures +=
                    SMsnprintf(out, sizeof out, "%d|%s|%.3f|%e", 42, "zk", 2.0 / 3, 1e100) < 0 || expected != out;
        });
    for (auto &thread : threads)
        thread.join();
    EXPECT_EQ(failures, 0);
}

TEST(Format, WorksWhileTheModuleIsStopped)
{
    const int result = zksupt::test::runInChild([] {
        zksupt::frame::library().detach();
        char out[16];
        return SMsnprintf(out, sizeof out, "%s-%d", "x", 5) == 3 && std::strcmp(out, "x-5") == 0 ? 0 : 1;
    });
    EXPECT_EQ(result, 0);
}

}  // namespace
