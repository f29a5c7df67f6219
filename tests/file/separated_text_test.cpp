// Separated values turned into consecutive NUL-terminated pieces.
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include <zksupt/zksupt.h>

namespace {

TEST(SeparatedText, SwapsEverySeparatorAndClosesTheList)
{
    using namespace std::string_literals;
    const std::tuple<std::string, char, char, std::string> cases[] = {
        {"a,b,c", ',', '\0', "a\0b\0c\0\0"s},
        {"read|write", '|', '\0', "read\0write\0\0"s},
        {"a,,b", ',', '\0', "a\0\0b\0\0"s},
        {" a , b ", ',', '\0', " a \0 b \0\0"s},
        {"", ',', '\0', "\0\0"s},
        {"a,b", ',', ';', "a;b;\0"s},
        {"no separator", ',', '\0', "no separator\0\0"s},
    };
    for (const auto &[text, from, to, expected] : cases) {
        uint32_t size = 0;
        char *copy = SMUTF8ConvertXSVToYSV(text.c_str(), &size, from, to);
        ASSERT_NE(copy, nullptr) << text;
        EXPECT_EQ(size, expected.size()) << text;
        EXPECT_EQ(std::string(copy, expected.size()), expected) << text;
        SMFreeMem(copy);
    }
    char *copy = SMUTF8ConvertXSVToYSV("x", nullptr, ',', '\0');
    ASSERT_NE(copy, nullptr) << "the size is optional";
    SMFreeMem(copy);
    uint32_t size = 5;
    EXPECT_EQ(SMUTF8ConvertXSVToYSV(nullptr, &size, ',', '\0'), nullptr);
    EXPECT_EQ(size, 5u);
}

}  // namespace
