// The engine against glibc's snprintf on random directives, agreeing or differing
// only as documented: every integer, character and string conversion with random
// flags, widths and precisions (also through '*'), and 'f', 'g', 'e' over doubles.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <zksupt/format.h>

namespace {

// The engine's output or glibc's; the engine's result is the bytes stored.
template <class... Args> std::string print(bool engine, const std::string &format, Args... args)
{
    char out[2048];
    const int length = engine ? SMsnprintf(out, sizeof out, format.c_str(), args...)
                              : std::snprintf(out, sizeof out, format.c_str(), args...);
    EXPECT_TRUE(length >= 0 && length < static_cast<int>(sizeof out)) << format;
    return {out, static_cast<std::size_t>(length)};
}

int below(std::mt19937 &random, int n)
{
    return static_cast<int>(random() % static_cast<uint32_t>(n));
}

// Each of the flags with a chance of one in four.
std::string someOf(std::mt19937 &random, std::string_view flags)
{
    std::string chosen;
    for (char flag : flags)
        if (below(random, 4) == 0)
            chosen += flag;
    return chosen;
}

TEST(AgainstGlibc, IntegerCharacterAndStringDirectives)
{
    std::mt19937 random(20261121);
    const char *const strings[] = {"", "a", "format", "the engine's text"};
    const char *const sizes[] = {"", "h", "l", "ll", "hh"};
    for (int i = 0; i < 30000; ++i) {
        const char conversion = "diuoxXcs"[below(random, 8)];
        const bool text = conversion == 'c' || conversion == 's';
        const std::string flags = someOf(random, text ? "-+ #" : "-+ #0");
        std::vector<int> stars;
        std::string width, precision;
        int digits = -1;  // the precision the engine takes
        if (const int kind = below(random, 3); kind == 1)
            width = std::to_string(1 + below(random, 24));
        else if (kind == 2)
            width = "*", stars.push_back(below(random, 41) - 20);
        if (const int kind = below(random, 4); kind == 1)
            digits = below(random, 15), precision = "." + std::to_string(digits);
        else if (kind == 2)
            digits = 0, precision = ".";
        else if (kind == 3)
            precision = ".*", stars.push_back(below(random, 21) - 5), digits = std::max(stars.back(), -1);
        const std::string size = text ? "" : sizes[below(random, 5)];
        const bool narrow = size[0] == 'h';
        const int32_t picks[] = {0, -1, INT32_MIN, INT32_MAX, below(random, 200) - 100, int32_t(random())};
        const int32_t value = picks[below(random, 6)];
        // Every call passes two '*' arguments; "%.0d" of 0, which prints
        // nothing, takes those that the directive does not.
        std::string format = "<%" + flags + width + precision + size + conversion + ">";
        for (; stars.size() < 2; stars.insert(stars.begin(), 0))
            format = "%.0d" + format;

        // glibc reads 'l' and "ll" wider and "hh" narrower; the engine's integer
        // precision counts the sign and "0x", and its "%#.0o" of 0 prints nothing.
        const int32_t shown = !narrow                                  ? value
                              : conversion == 'd' || conversion == 'i' ? int16_t(value)
                                                                       : uint16_t(value);
        const bool sign =
            (conversion == 'd' || conversion == 'i') && (shown < 0 || flags.find_first_of("+ ") != flags.npos);
        const bool prefix = (conversion == 'x' || conversion == 'X') && flags.find('#') != flags.npos && shown != 0;
        std::vector<int> theirStars = stars;
        std::string theirs = format;
        theirs.replace(theirs.rfind(size + conversion), size.size(), narrow ? "h" : "");
        if ((sign || prefix) && digits >= 1) {
            const int adjusted = std::max(digits - (sign ? 1 : 2), 1);
            if (precision == ".*")
                theirStars[1] = adjusted;
            else
                theirs.replace(theirs.rfind(precision), precision.size(), "." + std::to_string(adjusted));
        }
        if (conversion == 'o' && shown == 0 && digits == 0 && flags.find('#') != flags.npos)
            theirs.erase(theirs.find('#'), 1);

        auto check = [&](auto argument) {
            ASSERT_EQ(print(true, format, stars[0], stars[1], argument),
                      print(false, theirs, theirStars[0], theirStars[1], argument))
                << format << " of " << argument;
        };
        if (conversion == 's')
            check(strings[below(random, 4)]);
        else
            check(value);
        if (HasFatalFailure())
            return;
    }
}

// Each count of digits in each base: the values on both sides of every power
// of ten and of two, in fields wider and narrower than their digits, whole
// and cut short by the buffer at every size.
TEST(AgainstGlibc, EveryDigitCountInEveryBase)
{
    std::vector<uint32_t> values = {0, 1, UINT32_MAX};
    for (uint64_t power = 10; power <= UINT32_MAX; power *= 10)
        values.insert(values.end(), {uint32_t(power - 1), uint32_t(power)});
    for (int bit = 1; bit < 32; ++bit)
        values.insert(values.end(), {(1u << bit) - 1, 1u << bit});
    for (const char *format : {"%u", "%d", "[%12u]", "[%-12d]", "[% 011d]", "%x", "[%#010x]", "%#o", "%.12o", "%X"}) {
        for (uint32_t value : values) {
            const std::string whole = print(false, format, value);
            ASSERT_EQ(print(true, format, value), whole) << format << " of " << value;
            for (uint32_t size = 1; size <= whole.size(); ++size) {
                char out[64];
                ASSERT_EQ(SMsnprintf(out, size, format, value), static_cast<int32_t>(size - 1));
                ASSERT_EQ(std::string(out), whole.substr(0, size - 1)) << format << " of " << value;
            }
        }
    }
}

// Finite doubles: random bit patterns (every binary exponent, subnormals
// included), and small binary fractions, which hit exact decimal ties.
double randomDouble(std::mt19937 &random)
{
    if (below(random, 2) == 0)
        return (below(random, 20001) - 10000) / static_cast<double>(1 << below(random, 12));
    uint64_t bits = uint64_t{random()} << 32 | random();
    if ((bits >> 52 & 0x7FF) == 0x7FF || below(random, 8) == 0)
        bits &= ~(uint64_t{0x7FF} << 52);  // a subnormal instead of an infinity or NaN
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value == 0 ? 0.0 : value;  // minus zero prints without its sign here
}

// glibc's 'e' output without the trailing zeros that the engine prints only
// with '#': "1.500000e+00" becomes "1.5e+00", "1.000000e+00" "1e+00".
std::string significantOnly(std::string text)
{
    std::size_t e = text.find_first_of("eE");
    while (text.find('.') < e && (text[e - 1] == '0' || text[e - 1] == '.'))
        text.erase(--e, 1);
    return text;
}

TEST(AgainstGlibc, FloatingDirectivesOverRandomDoubles)
{
    std::mt19937 random(1074);
    for (int i = 0; i < 30000; ++i) {
        const double value = randomDouble(random);
        const char conversion = "fgGeE"[below(random, 5)];
        const bool exponent = conversion == 'e' || conversion == 'E';
        const std::string flags = someOf(random, exponent ? "+ #" : "-+ #0");
        const std::string width = exponent || below(random, 2) ? "" : std::to_string(1 + below(random, 30));
        const int digits = below(random, 22) - 1;
        const std::string precision = digits < 0 ? "" : "." + std::to_string(digits);
        const bool alternate = flags.find('#') != flags.npos;
        // "%.0f" of 0 < |v| <= 0.5 prints "0." (documented apart).
        if (conversion == 'f' && digits == 0 && !alternate && value != 0 && value <= 0.5 && value >= -0.5)
            continue;
        const std::string format = "%" + flags + width + precision + conversion;
        std::string expected = print(false, format, value);
        if (exponent && !alternate)
            expected = significantOnly(expected);
        ASSERT_EQ(print(true, format, value), expected) << format << " of " << print(false, "%a", value);
    }
}

}  // namespace
