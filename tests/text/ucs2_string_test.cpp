// The UCS-2 string family and its tokenizer. The _s variants get sizes too
// small for the data: they must ignore them.
#include <gtest/gtest.h>

#include <thread>

#include <zksupt/text.h>

#include "text_test_util.h"

namespace {

using zksupt::test::units;
using zksupt::test::wide;

constexpr ucs2 kUntouched = 0xAAAA;

TEST(Ucs2Strings, CopyAndAppend)
{
    ucs2 dst[10];
    std::fill(std::begin(dst), std::end(dst), kUntouched);
    EXPECT_EQ(SMUCS2Strncpy_s(dst, 1, wide(u"abc").data(), 2), dst);
    EXPECT_EQ(dst[2], kUntouched) << "stopping at n adds no terminator";
    SMUCS2Strncpy(dst, wide(u"xy").data(), 6);
    EXPECT_EQ(dst[3], kUntouched) << "nothing is written after the copied terminator";

    EXPECT_EQ(SMUCS2Strcpy_s(dst, 1, wide(u"h\u00e9").data()), dst);
    EXPECT_EQ(SMUCS2Strcat_s(dst, 1, wide(u"llo").data()), dst);
    EXPECT_EQ(SMUCS2Strlen(dst), 5u);
    SMUCS2Strncat(dst, wide(u"xyz").data(), 0);
    EXPECT_EQ(dst[6], kUntouched) << "n = 0 writes nothing";
    SMUCS2Strncat_s(dst, 1, wide(u"!?").data(), 1);
    SMUCS2Strncat(dst, wide(u"12").data(), 9);
    EXPECT_EQ(units(dst), u"h\u00e9llo!12");
}

TEST(Ucs2Strings, CompareGivesTheDifferenceModulo65536)
{
    auto compare = [](std::u16string_view a, std::u16string_view b) {
        return SMUCS2Strcmp(wide(a).data(), wide(b).data());
    };
    EXPECT_EQ(compare(u"a", u"b"), 65535u);
    EXPECT_EQ(compare(u"b", u"a"), 1u);
    EXPECT_EQ(compare(u"same", u"same"), 0u);
    EXPECT_EQ(compare(u"a", u"ab"), 0x10000u - 0x62u);
    EXPECT_EQ(compare(u"\uffff", u"\u0001"), 0xFFFEu);
}

TEST(Ucs2Strings, Search)
{
    auto s = wide(u"abcaab");
    EXPECT_EQ(SMUCS2Strchr(s.data(), 0x10000u + u'c'), &s[2]) << "only the low 16 bits count";
    EXPECT_EQ(SMUCS2Strchr(s.data(), 0), &s[6]);
    EXPECT_EQ(SMUCS2Strchr(s.data(), u'z'), nullptr);
    EXPECT_EQ(SMUCS2Strstr(s.data(), wide(u"").data()), s.data());
    EXPECT_EQ(SMUCS2Strstr(s.data(), wide(u"aab").data()), &s[3]);
    EXPECT_EQ(SMUCS2Strstr(s.data(), wide(u"aabx").data()), nullptr);

    const auto text = wide(u" \t word");
    const auto blanks = wide(u"\t ");
    EXPECT_EQ(SMUCS2Strspn(text.data(), blanks.data()), 3u);
    EXPECT_EQ(SMUCS2Strcspn(text.data() + 3, blanks.data()), 4u);
    EXPECT_EQ(SMUCS2Strcspn(text.data(), wide(u"").data()), 7u);
}

TEST(Ucs2Strings, FillAndReverse)
{
    ucs2 s[7] = {'a', 'b', 0, kUntouched, kUntouched, kUntouched, kUntouched};
    EXPECT_EQ(SMUCS2Strset_s(s, 1, 0x10000u + u'x'), s);
    EXPECT_EQ(units(s), u"xx");
    EXPECT_EQ(SMUCS2Strnset_s(s, 1, u'z', 5), s);
    EXPECT_EQ(std::u16string(s, s + 6), u"zzzzz\xaaaa") << "the terminator and two units beyond are overwritten";
    for (std::u16string text : {u"", u"ab", u"\u00e9\u263a\u4e2d"}) {
        auto r = wide(text);
        EXPECT_EQ(units(SMUCS2Strrev(r.data())), std::u16string(text.rbegin(), text.rend()));
    }
}

TEST(Ucs2Strings, TokenizerSharesOnePositionEverywhere)
{
    const auto delims = wide(u", ");
    auto s = wide(u"  one,two ,, three four");
    ucs2 *context = nullptr;
    EXPECT_EQ(SMUCS2Strtok_s(s.data(), delims.data(), &context), &s[2]);
    EXPECT_EQ(units(&s[2]), u"one");
    EXPECT_EQ(context, nullptr) << "the context is never written";
    EXPECT_EQ(units(SMUCS2Strtok(nullptr, delims.data())), u"two");
    ucs2 *third = nullptr;
    std::thread([&] { third = SMUCS2Strtok_s(nullptr, delims.data(), nullptr); }).join();
    EXPECT_EQ(units(third), u"three");
    EXPECT_EQ(units(SMUCS2Strtok(nullptr, delims.data())), u"four");
    EXPECT_EQ(SMUCS2Strtok(nullptr, delims.data()), nullptr);

    auto more = wide(u"a,b");
    ASSERT_NE(SMUCS2Strtok(more.data(), delims.data()), nullptr);
    EXPECT_EQ(SMUCS2Strtok(wide(u" ,, ").data(), delims.data()), nullptr);
    EXPECT_EQ(SMUCS2Strtok(nullptr, delims.data()), nullptr) << "delimiters only forget the saved position";
}

}  // namespace
