// The byte-wise UTF-8 helpers: case, reversal, trimming, duplication and the
// case-blind compare and search.
#include <gtest/gtest.h>

#include <clocale>
#include <string>

#include <zksupt/zksupt.h>

#include "text/utf8_string.h"

namespace {

TEST(Utf8Strings, CaseAndReversalWorkByteByByte)
{
    ASSERT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C");
    char text[] = "Mixed 09 \xC3\xA4!";
    EXPECT_STREQ(SMUTF8StrUpperCase(text), "MIXED 09 \xC3\xA4!");
    EXPECT_STREQ(SMUTF8StrLowerCase(text), "mixed 09 \xC3\xA4!");
    SMUTF8Strrev(text);
    EXPECT_STREQ(text, "!\xA4\xC3 90 dexim");
}

TEST(Utf8Strings, TrimZeroesTheFourBlanks)
{
    char left[] = "  x ";
    EXPECT_EQ(SMUTF8trim(left), left + 2);
    EXPECT_EQ(std::string(left, 4), std::string("\0\0x\0", 4));
    char both[] = "\t\r\n x y \n\r\t";
    EXPECT_STREQ(SMUTF8trim(both), "x y");
    char others[] = "\v\fx\v\f";  // vertical tab and form feed are text
    EXPECT_STREQ(SMUTF8trim(others), "\v\fx\v\f");
    char blanks[] = " \t ";
    EXPECT_EQ(SMUTF8trim(blanks), blanks + 3);
    EXPECT_EQ(SMUTF8trim(nullptr), nullptr);
}

TEST(Utf8Strings, DuplicateReportsItsBlock)
{
    char *copy = SMUTF8Strdup("d\xC3\xBCp");
    EXPECT_STREQ(copy, "d\xC3\xBCp");
    SMFreeMem(copy);
    EXPECT_EQ(SMUTF8Strdup(nullptr), nullptr);
    uint32_t allocated = 99;
    SMFreeMem(zksupt::text::utf8Duplicate("", &allocated));
    EXPECT_EQ(allocated, 1u);
    EXPECT_EQ(zksupt::text::utf8Duplicate(nullptr, &allocated), nullptr);
    EXPECT_EQ(allocated, 0u);
}

TEST(Utf8Strings, CaselessCompareAndSearch)
{
    EXPECT_EQ(SMUTF8Strnicmp("ABC", "abd", 3), -1);
    EXPECT_EQ(SMUTF8Strnicmp("ABC", "abd", 2), 0);
    EXPECT_EQ(SMUTF8Strnicmp("\xC3\x84", "\xC3\xA4", 2), -32) << "only A-Z fold";
    EXPECT_EQ(SMUTF8Strnicmp("x", "y", 0), 0);
    EXPECT_EQ(SMUTF8Strnicmp("Same", "sAME", 100), 0) << "the end of a ends the compare";
    EXPECT_EQ(SMUTF8Strnicmp("AB", "abc", 5), -'c');
    EXPECT_EQ(SMUTF8Strnicmp("\xFF", "a", 1), 0xFF - 'a') << "bytes are unsigned";

    const char *s = "Hello World, world";
    EXPECT_EQ(SMUTF8Strstri(s, "d, WoRlD"), s + 10);
    EXPECT_EQ(SMUTF8Strstri(s, "orld!"), nullptr);
    EXPECT_EQ(SMUTF8Strstri(s, ""), s);
    EXPECT_EQ(SMUTF8Strstri("ab", "abc"), nullptr);
    EXPECT_EQ(SMUTF8Strstri(nullptr, "a"), nullptr);
    EXPECT_EQ(SMUTF8Strstri(s, nullptr), nullptr);
}

}  // namespace
