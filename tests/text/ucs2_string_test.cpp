// The UCS-2 string family and its tokenizer, the UTF-8 helpers, and nulls.
#include <gtest/gtest.h>

#include <thread>
#include <tuple>

#include <zksupt/zksupt.h>

#include "text/utf8_string.h"
#include "support/values.h"

namespace {

using zksupt::test::units;
using zksupt::test::wide;

TEST(Ucs2Strings, CopyAppendAndFill)
{
    constexpr ucs2 kUntouched = 0xAAAA;
    ucs2 dst[10];
    std::fill(std::begin(dst), std::end(dst), kUntouched);
    EXPECT_EQ(SMUCS2Strncpy_s(dst, 1, wide(u"abc").data(), 2), dst);    // stops at n: no terminator
    EXPECT_EQ(SMUCS2Strncpy(dst + 2, wide(u"xy").data(), 6), dst + 2);  // stops after the terminator: no padding
    EXPECT_EQ(std::u16string(dst, dst + 6), std::u16string(u"abxy\0\xAAAA", 6));
    EXPECT_EQ(SMUCS2Strcpy_s(dst, 1, wide(u"h\u00e9").data()), dst);
    EXPECT_EQ(SMUCS2Strcat_s(dst, 1, wide(u"llo").data()), dst);
    EXPECT_EQ(SMUCS2Strlen(dst), 5u);
    SMUCS2Strncat(dst, wide(u"xyz").data(), 0);
    SMUCS2Strncat_s(dst, 1, wide(u"!?").data(), 1);
    SMUCS2Strncat(dst, wide(u"12").data(), 9);
    EXPECT_EQ(units(dst), u"h\u00e9llo!12");
    EXPECT_EQ(SMUCS2Strset_s(dst, 1, 0x10000u + u'x'), dst);
    EXPECT_EQ(units(dst), u"xxxxxxxx") << "only the low 16 bits count";
    EXPECT_EQ(SMUCS2Strnset_s(dst, 1, u'z', 9), dst);
    EXPECT_EQ(std::u16string(dst, dst + 10), u"zzzzzzzzz\xAAAA") << "the terminator is overwritten, nothing beyond n";
}

TEST(Ucs2Strings, CompareSearchAndReverse)
{
    for (const auto &[a, b, difference] :
         std::vector<std::tuple<std::u16string, std::u16string, uint32_t>>{{u"a", u"b", 65535},
                                                                           {u"b", u"a", 1},
                                                                           {u"same", u"same", 0},
                                                                           {u"a", u"ab", 0x10000 - 'b'},
                                                                           {u"\xFFFF", u"\x0001", 0xFFFE}})
        EXPECT_EQ(SMUCS2Strcmp(wide(a).data(), wide(b).data()), difference) << "modulo 65536";

    auto s = wide(u"abcaab");
    EXPECT_EQ(SMUCS2Strchr(s.data(), 0x10000u + u'c'), &s[2]) << "only the low 16 bits count";
    EXPECT_EQ(SMUCS2Strchr(s.data(), 0), &s[6]);
    EXPECT_EQ(SMUCS2Strchr(s.data(), u'z'), nullptr);
    EXPECT_EQ(SMUCS2Strstr(s.data(), wide(u"").data()), s.data());
    EXPECT_EQ(SMUCS2Strstr(s.data(), wide(u"aab").data()), &s[3]);
    EXPECT_EQ(SMUCS2Strstr(s.data(), wide(u"aabx").data()), nullptr);
    const auto text = wide(u" \t word"), blanks = wide(u"\t ");
    EXPECT_EQ(SMUCS2Strspn(text.data(), blanks.data()), 3u);
    EXPECT_EQ(SMUCS2Strcspn(text.data() + 3, blanks.data()), 4u) << "no unit of the set: the length";
    auto even = wide(u"\x00E9\x263Az\x4E2D");
    EXPECT_EQ(units(SMUCS2Strrev(even.data())), u"\x4E2Dz\x263A\x00E9");
}

TEST(Ucs2Strings, TokenizerSharesOnePositionEverywhere)
{
    const auto delims = wide(u", ");
    auto s = wide(u"  one,two ,, three four");
    ucs2 *context = nullptr;
    EXPECT_EQ(SMUCS2Strtok_s(s.data(), delims.data(), &context), &s[2]);
    EXPECT_EQ(context, nullptr) << "the context is never written";
    EXPECT_EQ(units(SMUCS2Strtok(nullptr, delims.data())), u"two");
    EXPECT_EQ(SMUCS2Strtok(wide(u" ,, ").data(), delims.data()), nullptr);
    EXPECT_EQ(SMUCS2Strtok(nullptr, delims.data()), nullptr) << "delimiters only forget the saved position";
    EXPECT_EQ(units(SMUCS2Strtok(&s[10], delims.data())), u"three");
    ucs2 *fourth = nullptr;
    std::thread([&] { fourth = SMUCS2Strtok_s(nullptr, delims.data(), nullptr); }).join();
    EXPECT_EQ(fourth, &s[19]) << "the other thread goes on from the same position";
    EXPECT_EQ(SMUCS2Strtok(nullptr, delims.data()), nullptr);
}

TEST(Utf8Strings, CaseReversalTrimAndDuplicate)
{
    char text[] = "Mixed 09 \xC3\xA4!";  // in the C locale, which the tests keep
    EXPECT_STREQ(SMUTF8StrUpperCase(text), "MIXED 09 \xC3\xA4!");
    EXPECT_STREQ(SMUTF8StrLowerCase(text), "mixed 09 \xC3\xA4!");
    SMUTF8Strrev(text);
    EXPECT_STREQ(text, "!\xA4\xC3 90 dexim");
    // Tab, LF, CR and space are blanks, zeroed on both sides; the result starts after the leading ones.
    for (const auto &[before, start, trimmed] : std::vector<std::tuple<std::string, std::size_t, std::string>>{
             {"  x ", 2, "x"}, {"\t\r\n x y \n\r\t", 4, "x y"}, {"\v\fx\v\f", 0, "\v\fx\v\f"}, {" \t ", 3, ""}}) {
        std::string s = before;
        EXPECT_EQ(SMUTF8trim(s.data()), s.data() + start);
        EXPECT_EQ(s, std::string(start, '\0') + trimmed + std::string(s.size() - start - trimmed.size(), '\0'));
    }
    // A duplicate reports its block: the length and the terminator, or 0.
    char *copy = SMUTF8Strdup("d\xC3\xBCp");
    EXPECT_STREQ(copy, "d\xC3\xBCp");
    SMFreeMem(copy);
    uint32_t allocated = 0;
    SMFreeMem(zksupt::text::utf8Duplicate("d\xC3\xBCp", &allocated));
    EXPECT_EQ(allocated, 5u);
    EXPECT_EQ(zksupt::text::utf8Duplicate(nullptr, &allocated), nullptr);
    EXPECT_EQ(allocated, 0u);
}

TEST(Utf8Strings, CaselessCompareAndSearch)
{
    // Only A-Z fold; the end of a ends the compare; bytes are unsigned.
    for (const auto &[a, b, n, difference] :
         std::vector<std::tuple<const char *, const char *, uint32_t, int32_t>>{{"ABC", "abd", 3, -1},
                                                                                {"ABC", "abd", 2, 0},
                                                                                {"\xC3\x84", "\xC3\xA4", 2, -32},
                                                                                {"x", "y", 0, 0},
                                                                                {"Same", "sAME", 100, 0},
                                                                                {"AB", "abc", 5, -'c'},
                                                                                {"\xFF", "a", 1, 0xFF - 'a'}})
        EXPECT_EQ(SMUTF8Strnicmp(a, b, n), difference) << a << " / " << b << " over " << n;
    const char *s = "Hello World, world";
    EXPECT_EQ(SMUTF8Strstri(s, "d, WoRlD"), s + 10);
    EXPECT_EQ(SMUTF8Strstri(s, "orld!"), nullptr);
    EXPECT_EQ(SMUTF8Strstri(s, ""), s);
    EXPECT_EQ(SMUTF8Strstri("ab", "abc"), nullptr);
}

TEST(TextArguments, NullsAreRefusedOrGiveNull)
{
    char text[8];
    uint32_t size = sizeof text;
    EXPECT_EQ(SMUCS2StrToUTF8Str(text, &size, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMUCS2StrToUTF8Str(nullptr, nullptr, wide(u"x").data()), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMUTF8StrToUCS2Str(nullptr, &size, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMUTF8StrToUCS2Str(nullptr, nullptr, "x"), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMUCS2ToEscape(text, &size, nullptr), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(SMUTF8trim(nullptr), nullptr);
    EXPECT_EQ(SMUTF8Strdup(nullptr), nullptr);
    EXPECT_EQ(SMUTF8Strstri(nullptr, "a"), nullptr);
    EXPECT_EQ(SMUTF8Strstri("a", nullptr), nullptr);
}

}  // namespace
