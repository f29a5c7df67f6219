// Base64 against RFC 4648, against a reference encoder over random data, and
// the encoder's read of the byte after an incomplete last group.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <zksupt/digest.h>

#include "random_bytes.h"

namespace {

using zksupt::test::randomBytes;

const std::string kStandard = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Standard Base64 through a bit accumulator.
std::string referenceEncode(const uint8_t *bytes, std::size_t length)
{
    std::string text;
    uint32_t bits = 0;
    int held = 0;
    for (std::size_t i = 0; i < length; ++i) {
        bits = (bits << 8) | bytes[i];
        for (held += 8; held >= 6; held -= 6)
            text += kStandard[(bits >> (held - 6)) & 0x3F];
    }
    if (held > 0)
        text += kStandard[(bits << (6 - held)) & 0x3F];
    while (text.size() % 4 != 0)
        text += '=';
    return text;
}

// Encodes length bytes of data, which must be readable one byte further.
std::string encode(const uint8_t *data, uint32_t length, const char *alphabet = nullptr)
{
    std::string text(4 * ((length + 2) / 3) + 1, '#');
    EXPECT_EQ(SMBase64Encode(text.data(), data, length, alphabet), 0);
    EXPECT_EQ(text.back(), '\0');
    text.pop_back();
    return text;
}

std::string encode(const char *text)
{
    return encode(reinterpret_cast<const uint8_t *>(text), static_cast<uint32_t>(std::strlen(text)));
}

// Decodes, checking the 0 byte after the output and that nothing lies beyond.
std::vector<uint8_t> decode(const std::string &text, uint32_t length)
{
    std::vector<uint8_t> bytes(3 * (length / 4) + 1 + 8, 0xEE);
    EXPECT_EQ(SMBase64Decode(bytes.data(), text.data(), length), 0);
    auto end = bytes.end() - 8;
    while (end != bytes.begin() && *(end - 1) == 0xEE)
        --end;
    EXPECT_TRUE(end != bytes.begin() && *(end - 1) == 0) << "no terminating 0 byte";
    return {bytes.begin(), end - 1};
}

std::vector<uint8_t> bytesOf(const std::string &text)
{
    return {text.begin(), text.end()};
}

TEST(Base64, Rfc4648Vectors)
{
    const char *vectors[][2] = {{"", ""},
                                {"f", "Zg=="},
                                {"fo", "Zm8="},
                                {"foo", "Zm9v"},
                                {"foob", "Zm9vYg=="},
                                {"fooba", "Zm9vYmE="},
                                {"foobar", "Zm9vYmFy"}};
    for (const auto &vector : vectors) {
        EXPECT_EQ(encode(vector[0]), vector[1]);
        const std::string text = vector[1];
        EXPECT_EQ(decode(text, static_cast<uint32_t>(text.size())), bytesOf(vector[0])) << text;
    }
}

TEST(Base64, EmptyInputWritesOnlyTheTerminator)
{
    char text[4] = {'x', 'y', 'z', 'w'};
    EXPECT_EQ(SMBase64Encode(text, reinterpret_cast<const uint8_t *>("abc"), 0, nullptr), 0);
    EXPECT_EQ(text[0], '\0');
    EXPECT_EQ(text[1], 'y');
}

TEST(Base64, RandomBuffersRoundTripWhenAZeroByteFollows)
{
    std::mt19937 random(11);
    for (int trial = 0; trial < 400; ++trial) {
        auto bytes = randomBytes(random() % 200, random());
        const auto length = static_cast<uint32_t>(bytes.size());
        bytes.push_back(0);
        const std::string text = encode(bytes.data(), length);
        ASSERT_EQ(text, referenceEncode(bytes.data(), length));
        ASSERT_EQ(decode(text, static_cast<uint32_t>(text.size())),
                  std::vector<uint8_t>(bytes.begin(), bytes.end() - 1));
    }
}

TEST(Base64, IncompleteLastGroupTakesHighBitsOfTheNextByte)
{
    const auto *man = reinterpret_cast<const uint8_t *>("Man");
    EXPECT_EQ(encode(man, 3), "TWFu");
    EXPECT_EQ(encode(man, 1), "TW==");  // 'a' follows: standard would be TQ==
    EXPECT_EQ(encode(man, 2), "TWF=");  // 'n' follows: standard would be TWE=
    const uint8_t alone[] = {0x4D, 0x00};
    EXPECT_EQ(encode(alone, 1), "TQ==");

    // In general: the characters before the padding are those of the input
    // with its next byte, whatever that byte is.
    std::mt19937 random(12);
    for (int trial = 0; trial < 300; ++trial) {
        const auto bytes = randomBytes(1 + random() % 40, random());
        const auto length = static_cast<uint32_t>(bytes.size() - 1);
        if (length % 3 == 0)
            continue;
        const std::string text = encode(bytes.data(), length);
        const std::string longer = referenceEncode(bytes.data(), length + 1);
        const std::size_t kept = text.size() - (length % 3 == 1 ? 2 : 1);
        ASSERT_EQ(text.substr(0, kept), longer.substr(0, kept));
        ASSERT_EQ(text.substr(kept), std::string(text.size() - kept, '='));
    }
}

TEST(Base64, CallerAlphabetForEncoding)
{
    const uint8_t bytes[] = {0xFB, 0xFF, 0xBF, 0xFB, 0xF0, 0x00};
    EXPECT_EQ(encode(bytes, 5), "+/+/+/A=");
    EXPECT_EQ(encode(bytes, 5, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_"), "-_-_-_A=");
}

TEST(Base64, DecodingByGroupsOfFour)
{
    EXPECT_EQ(decode("TWFu", 4), bytesOf("Man"));
    EXPECT_EQ(decode("TWFuTW", 6), bytesOf("Man")) << "a remainder of 1-3 characters is ignored";
    EXPECT_EQ(decode("=AAA", 4), bytesOf("")) << "a group starting with padding gives nothing";
    EXPECT_EQ(decode("A=AA", 4), bytesOf(""));
    EXPECT_EQ(decode("TQ==TWFu", 8), bytesOf("MMan")) << "padding does not end the text";
    EXPECT_EQ(decode("TW=uTWE=TWFu", 12), bytesOf("MMaMan"));
    // Line breaks are not skipped: they are four-character groups like any other.
    EXPECT_EQ(decode("TWFu\r\nTWFu", 10).size(), 6u);
}

TEST(Base64, CharactersOutsideTheAlphabetCountAsAllOnes)
{
    EXPECT_EQ(decode("!!!!", 4), (std::vector<uint8_t>{0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(decode(std::string(1, '\xC3') + "AAA", 4), (std::vector<uint8_t>{0xFC, 0x00, 0x00}));
    EXPECT_EQ(decode("AA*A", 4), (std::vector<uint8_t>{0x00, 0x0F, 0xC0}));
}

}  // namespace
