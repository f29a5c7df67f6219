// The UCS-2 string family and its tokenizer.
#include <gtest/gtest.h>

#include <thread>

#include <zksupt/text.h>

#include "text_test_util.h"

namespace {

using zksupt::test::units;
using zksupt::test::wide;

constexpr ucs2 kUntouched = 0xAAAA;

TEST(Ucs2Copy, CopiesTheTerminatorAndIgnoresTheDeclaredSize)
{
    const auto src = wide(u"h\u00e9llo");
    ucs2 dst[8];
    EXPECT_EQ(SMUCS2Strcpy(dst, src.data()), dst);
    EXPECT_EQ(units(dst), u"h\u00e9llo");
    std::fill(std::begin(dst), std::end(dst), kUntouched);
    EXPECT_EQ(SMUCS2Strcpy_s(dst, 1, src.data()), dst);  // the size is not a limit
    EXPECT_EQ(units(dst), u"h\u00e9llo");
    EXPECT_EQ(SMUCS2Strlen(dst), 5u);
}

TEST(Ucs2Copy, NCopyNeitherPadsNorTerminates)
{
    const auto src = wide(u"abc");
    ucs2 dst[6];
    std::fill(std::begin(dst), std::end(dst), kUntouched);
    SMUCS2Strncpy(dst, src.data(), 2);
    EXPECT_EQ(dst[1], u'b');
    EXPECT_EQ(dst[2], kUntouched) << "stopping at n leaves dst unterminated";

    std::fill(std::begin(dst), std::end(dst), kUntouched);
    EXPECT_EQ(SMUCS2Strncpy_s(dst, 0, src.data(), 6), dst);
    EXPECT_EQ(units(dst), u"abc");
    EXPECT_EQ(dst[4], kUntouched) << "nothing is written after the copied terminator";
}

TEST(Ucs2Append, AppendsWholeOrBoundedAndAlwaysTerminates)
{
    ucs2 dst[16] = {'a', 0};
    EXPECT_EQ(SMUCS2Strcat(dst, wide(u"bc").data()), dst);
    SMUCS2Strcat_s(dst, 1, wide(u"d").data());
    EXPECT_EQ(units(dst), u"abcd");

    dst[5] = kUntouched;
    SMUCS2Strncat(dst, wide(u"xyz").data(), 0);
    EXPECT_EQ(units(dst), u"abcd");
    EXPECT_EQ(dst[5], kUntouched);
    SMUCS2Strncat(dst, wide(u"xyz").data(), 2);
    EXPECT_EQ(units(dst), u"abcdxy");
    SMUCS2Strncat_s(dst, 1, wide(u"12").data(), 9);
    EXPECT_EQ(units(dst), u"abcdxy12");
}

TEST(Ucs2Compare, DifferenceOfTheFirstUnequalUnitsModulo65536)
{
    auto compare = [](std::u16string_view a, std::u16string_view b) {
        return SMUCS2Strcmp(wide(a).data(), wide(b).data());
    };
    EXPECT_EQ(compare(u"a", u"b"), 65535u);
    EXPECT_EQ(compare(u"b", u"a"), 1u);
    EXPECT_EQ(compare(u"same", u"same"), 0u);
    EXPECT_EQ(compare(u"", u""), 0u);
    EXPECT_EQ(compare(u"ab", u"a"), 0x62u);
    EXPECT_EQ(compare(u"a", u"ab"), 0x10000u - 0x62u);
    EXPECT_EQ(compare(u"\uffff", u"\u0001"), 0xFFFEu);
}

TEST(Ucs2Search, UnitsAndSubstrings)
{
    auto s = wide(u"abcabd");
    EXPECT_EQ(SMUCS2Strchr(s.data(), u'b'), &s[1]);
    EXPECT_EQ(SMUCS2Strchr(s.data(), 0x10000u + u'c'), &s[2]) << "only the low 16 bits count";
    EXPECT_EQ(SMUCS2Strchr(s.data(), 0), &s[6]);
    EXPECT_EQ(SMUCS2Strchr(s.data(), u'z'), nullptr);

    EXPECT_EQ(SMUCS2Strstr(s.data(), wide(u"").data()), s.data());
    EXPECT_EQ(SMUCS2Strstr(s.data(), wide(u"abd").data()), &s[3]);
    EXPECT_EQ(SMUCS2Strstr(s.data(), wide(u"bd").data()), &s[4]);
    EXPECT_EQ(SMUCS2Strstr(s.data(), wide(u"abde").data()), nullptr);
    EXPECT_EQ(SMUCS2Strstr(s.data(), wide(u"abcabdx").data()), nullptr);
    auto repeated = wide(u"aaab");
    EXPECT_EQ(SMUCS2Strstr(repeated.data(), wide(u"aab").data()), &repeated[1]);
}

TEST(Ucs2Search, SpansOverASet)
{
    const auto s = wide(u"  \tword here");
    const auto blanks = wide(u"\t ");
    EXPECT_EQ(SMUCS2Strspn(s.data(), blanks.data()), 3u);
    EXPECT_EQ(SMUCS2Strcspn(s.data(), blanks.data()), 0u);
    EXPECT_EQ(SMUCS2Strcspn(s.data() + 3, blanks.data()), 4u);
    EXPECT_EQ(SMUCS2Strcspn(s.data(), wide(u"#").data()), 12u);
    EXPECT_EQ(SMUCS2Strspn(s.data(), wide(u"").data()), 0u);
}

TEST(Ucs2Fill, SetStopsAtTheTerminatorNSetDoesNot)
{
    ucs2 s[8] = {'a', 'b', 0, kUntouched, kUntouched, kUntouched, kUntouched, kUntouched};
    EXPECT_EQ(SMUCS2Strset(s, 0x10000u + u'x'), s);
    EXPECT_EQ(units(s), u"xx");
    SMUCS2Strset_s(s, 0, u'y');
    EXPECT_EQ(units(s), u"yy");
    EXPECT_EQ(SMUCS2Strnset(s, u'z', 5), s);
    EXPECT_EQ(std::u16string(s, s + 5), u"zzzzz") << "the terminator and two units beyond are overwritten";
    EXPECT_EQ(s[5], kUntouched);
    SMUCS2Strnset_s(s, 0, u'q', 1);
    EXPECT_EQ(s[0], u'q');
    EXPECT_EQ(s[1], u'z');
}

TEST(Ucs2Reverse, ReversesInPlace)
{
    for (std::u16string text : {u"", u"a", u"ab", u"abc", u"\u00e9\u263a\u4e2d!"}) {
        auto s = wide(text);
        EXPECT_EQ(SMUCS2Strrev(s.data()), s.data());
        EXPECT_EQ(units(s.data()), std::u16string(text.rbegin(), text.rend()));
    }
}

class Ucs2Tokenizer : public ::testing::Test {
  protected:
    // Leaves the process-wide position null, as the tests expect it.
    void SetUp() override { SMUCS2Strtok(wide(u",").data(), delims.data()); }
    const std::vector<ucs2> delims = wide(u", ");
};

TEST_F(Ucs2Tokenizer, SplitsAndEndsWithNull)
{
    auto s = wide(u"  one,two ,, three");
    EXPECT_EQ(units(SMUCS2Strtok(s.data(), delims.data())), u"one");
    EXPECT_EQ(units(SMUCS2Strtok(nullptr, delims.data())), u"two");
    ucs2 *last = SMUCS2Strtok(nullptr, delims.data());
    EXPECT_EQ(last, &s[13]);
    EXPECT_EQ(units(last), u"three");
    EXPECT_EQ(SMUCS2Strtok(nullptr, delims.data()), nullptr);
}

TEST_F(Ucs2Tokenizer, DelimitersOnlyGiveNullAndForgetThePosition)
{
    auto s = wide(u"a,b");
    ASSERT_NE(SMUCS2Strtok(s.data(), delims.data()), nullptr);
    auto none = wide(u" ,, ");
    EXPECT_EQ(SMUCS2Strtok(none.data(), delims.data()), nullptr);
    EXPECT_EQ(SMUCS2Strtok(nullptr, delims.data()), nullptr) << "b must no longer be reachable";
}

TEST_F(Ucs2Tokenizer, OnePositionForBothEntriesAndAllThreads)
{
    auto s = wide(u"a b c d");
    ucs2 *context = nullptr;
    EXPECT_EQ(units(SMUCS2Strtok_s(s.data(), delims.data(), &context)), u"a");
    EXPECT_EQ(context, nullptr) << "the context is never written";
    EXPECT_EQ(units(SMUCS2Strtok(nullptr, delims.data())), u"b");
    ucs2 *third = nullptr;
    std::thread([&] { third = SMUCS2Strtok_s(nullptr, delims.data(), nullptr); }).join();
    EXPECT_EQ(units(third), u"c");
    EXPECT_EQ(units(SMUCS2Strtok_s(nullptr, delims.data(), nullptr)), u"d");
}

}  // namespace
