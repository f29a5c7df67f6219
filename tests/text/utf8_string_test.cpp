// The byte-wise UTF-8 helpers: case, reversal, trimming, duplication and the
// case-blind compare and search.
#include <gtest/gtest.h>

#include <clocale>
#include <string>

#include <zksupt/zksupt.h>

#include "text/utf8_string.h"

namespace {

TEST(Utf8Case, ChangesSingleBytesOnly)
{
    ASSERT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C");
    char text[] = "Mixed 09 \xC3\xA4\xC3\x84!";
    EXPECT_EQ(SMUTF8StrUpperCase(text), text);
    EXPECT_STREQ(text, "MIXED 09 \xC3\xA4\xC3\x84!");
    EXPECT_EQ(SMUTF8StrLowerCase(text), text);
    EXPECT_STREQ(text, "mixed 09 \xC3\xA4\xC3\x84!");
}

TEST(Utf8Reverse, ReversesBytesSequencesIncluded)
{
    char odd[] = "ab\xC3\xA4";
    SMUTF8Strrev(odd);
    EXPECT_STREQ(odd, "\xA4\xC3" "ba");
    char empty[] = "";
    SMUTF8Strrev(empty);
    EXPECT_STREQ(empty, "");
}

TEST(Utf8Trim, ZeroesTheFourBlanksOnEitherSide)
{
    char left[] = "  x ";
    char *start = SMUTF8ltrim(left);
    EXPECT_EQ(start, left + 2);
    EXPECT_EQ(left[0], '\0');
    EXPECT_EQ(left[1], '\0');
    EXPECT_STREQ(start, "x ");

    char both[] = "\t\r\n x y \n\r\t";
    EXPECT_STREQ(SMUTF8trim(both), "x y");
    EXPECT_EQ(SMUTF8rtrim(both), both);

    char others[] = "\v\fx\v\f";  // vertical tab and form feed are text
    EXPECT_STREQ(SMUTF8trim(others), "\v\fx\v\f");
    char blanks[] = " \t ";
    EXPECT_STREQ(SMUTF8trim(blanks), "");
    EXPECT_EQ(blanks[0], '\0');
    EXPECT_EQ(SMUTF8ltrim(nullptr), nullptr);
    EXPECT_EQ(SMUTF8rtrim(nullptr), nullptr);
    EXPECT_EQ(SMUTF8trim(nullptr), nullptr);
}

TEST(Utf8Duplicate, CopiesIntoLibraryMemoryAndReportsItsSize)
{
    const char *original = "d\xC3\xBCp";
    char *copy = SMUTF8Strdup(original);
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy, original);
    EXPECT_STREQ(copy, original);
    SMFreeMem(copy);
    EXPECT_EQ(SMUTF8Strdup(nullptr), nullptr);

    uint32_t allocated = 99;
    copy = zksupt::text::utf8Duplicate("", &allocated);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(allocated, 1u);
    SMFreeMem(copy);
    copy = zksupt::text::utf8Duplicate(original, &allocated);
    EXPECT_EQ(allocated, 5u);
    SMFreeMem(copy);
    EXPECT_EQ(zksupt::text::utf8Duplicate(nullptr, &allocated), nullptr);
    EXPECT_EQ(allocated, 0u);
}

TEST(Utf8CaselessCompare, FoldsOnlyAsciiLettersAndComparesUnsigned)
{
    EXPECT_EQ(SMUTF8Strnicmp("ABC", "abd", 3), -1);
    EXPECT_EQ(SMUTF8Strnicmp("ABC", "abd", 2), 0);
    EXPECT_EQ(SMUTF8Strnicmp("\xC3\x84", "\xC3\xA4", 2), -32);
    EXPECT_EQ(SMUTF8Strnicmp("x", "y", 0), 0);
    EXPECT_EQ(SMUTF8Strnicmp("Same", "sAME", 100), 0) << "the end of a ends the compare";
    EXPECT_EQ(SMUTF8Strnicmp("AB", "abc", 5), -'c');
    EXPECT_EQ(SMUTF8Strnicmp("\xFF", "a", 1), 0xFF - 'a');
    EXPECT_EQ(SMUTF8Strnicmp("[", "{", 1), '[' - '{') << "only A-Z fold";
}

TEST(Utf8CaselessSearch, FindsTheFirstPlaceFromTheLeft)
{
    const char *s = "Hello World, world";
    EXPECT_EQ(SMUTF8Strstri(s, "WORLD"), s + 6);
    EXPECT_EQ(SMUTF8Strstri(s, "d, WoRlD"), s + 10);
    EXPECT_EQ(SMUTF8Strstri(s, "orld!"), nullptr);
    EXPECT_EQ(SMUTF8Strstri(s, ""), s);
    EXPECT_EQ(SMUTF8Strstri("ab", "abc"), nullptr);
    EXPECT_EQ(SMUTF8Strstri(nullptr, "a"), nullptr);
    EXPECT_EQ(SMUTF8Strstri(s, nullptr), nullptr);
}

}  // namespace
