// CRC-32 on both of its paths and the older checksum against a bit-at-a-time
// reference; Base64 against RFC 4648 and its own group rules; MD5 against RFC 1321.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cctype>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <zksupt/digest.h>
#include <zksupt/status.h>

#include "digest/crc32.h"

namespace zksupt::digest {
namespace {

using Bytes = std::vector<uint8_t>;

// Reproducible random bytes for the tests to take slices of.
const Bytes kRandom = [] {
    std::mt19937 random(1);
    Bytes bytes(8000);
    for (auto &byte : bytes)
        byte = static_cast<uint8_t>(random());
    return bytes;
}();

// The register one bit at a time from 0xFFFFFFFF over total bytes (length of
// them from bytes, then zeros), not inverted. CRC-32 feeds in the polynomial
// when the byte's next bit differs from the register's low bit; with
// wholeByte also whenever a higher bit of the byte is still set.
uint32_t bitwise(const uint8_t *bytes, std::size_t length, std::size_t total, bool wholeByte = false)
{
    uint32_t reg = 0xFFFFFFFF;
    for (std::size_t i = 0; i < total; ++i)
        for (unsigned b = i < length ? bytes[i] : 0, round = 0; round < 8; ++round, b >>= 1)
            reg = (reg >> 1) ^ ((b & 1) != (reg & 1) || (wholeByte && b > 1) ? 0xEDB88320 : 0);
    return reg;
}

// The check value, the case-blind strings (long enough to be lowered in several
// pieces, with every byte value), then both paths at every length, alignment and
// split: from 64 bytes on the carry-less multiply folds where the processor has it.
TEST(Crc32, CheckValueNoCaseStringsAndBothPathsAgainstTheReference)
{
    EXPECT_EQ(SMCRC32Compute_str("123456789"), 0xCBF43926u);
    EXPECT_EQ(SMCRC32Compute_str(""), 0u);
    EXPECT_EQ(SMCRC32Compute_vn(nullptr, 0), 0u);
    std::string mixed, lowered;
    for (int i = 0; i < 700; ++i) {
        mixed += static_cast<char>(1 + (i * 37) % 255);
        lowered += static_cast<char>(std::tolower(static_cast<unsigned char>(mixed.back())));
    }
    EXPECT_EQ(SMCRC32Compute_strncase(mixed.c_str()), SMCRC32Compute_str(lowered.c_str()));
    for (std::size_t offset = 0; offset < 16; ++offset)
        for (std::size_t length = 0; length <= 600; ++length) {
            const uint8_t *start = kRandom.data() + offset;
            const uint32_t expected = ~bitwise(start, length, length);
            ASSERT_EQ(SMCRC32Compute_vn(start, static_cast<uint32_t>(length)), expected) << offset << "+" << length;
            ASSERT_EQ(crc32UpdatePortable(0, start, length), expected) << offset << "+" << length;
            const std::size_t split = length / 4;
            ASSERT_EQ(crc32Update(crc32Update(0, start, split), start + split, length - split), expected);
        }
}

// Long buffers at random lengths, alignments and splits, on whichever path
// the processor takes (wide registers from 256 bytes on where it has them),
// against the sliced tables.
TEST(Crc32, LongBuffersAgreeWithTheTables)
{
    std::mt19937 random(32);
    for (int round = 0; round < 2000; ++round) {
        const std::size_t offset = random() % 64;
        const std::size_t length = random() % (kRandom.size() - offset);
        const std::size_t split = random() % (length + 1);
        const uint8_t *start = kRandom.data() + offset;
        const uint32_t expected = crc32UpdatePortable(0, start, length);
        ASSERT_EQ(crc32Update(0, start, length), expected) << offset << "+" << length;
        ASSERT_EQ(crc32Update(crc32Update(0, start, split), start + split, length - split), expected)
            << offset << "+" << split << "+" << length - split;
    }
}

TEST(GenerateCrc32, TestsTheWholeByteAndCountsBytesPastTheLengthAsZeros)
{
    for (uint32_t total = 0; total < 130; ++total)
        for (uint32_t length : {0u, total / 2, total, total + 3})
            ASSERT_EQ(SMGenerateCRC32(kRandom.data(), length, total), bitwise(kRandom.data(), length, total, true))
                << length << " bytes, total " << total;
}

// Encodes length bytes of data (readable one byte further); the terminator
// must be the last byte of the 4 * ceil(length / 3) + 1 the caller provides.
std::string encode(const void *data, uint32_t length, const char *alphabet = nullptr)
{
    std::string text(4 * ((length + 2) / 3) + 4, '#');
    EXPECT_EQ(SMBase64Encode(text.data(), static_cast<const uint8_t *>(data), length, alphabet), SM_STATUS_SUCCESS);
    EXPECT_EQ(text.substr(text.size() - 4), std::string("\0###", 4)) << "terminator or size wrong";
    return text.substr(0, text.size() - 4);
}

// The decoded bytes must be followed by one 0 byte and nothing else written.
void expectDecodes(const std::string &text, Bytes expected)
{
    const auto length = static_cast<uint32_t>(text.size());
    Bytes bytes(3 * (length / 4) + 4, 0xEE);
    EXPECT_EQ(SMBase64Decode(bytes.data(), text.data(), length), SM_STATUS_SUCCESS);
    expected.push_back(0);
    expected.resize(bytes.size(), 0xEE);
    EXPECT_EQ(bytes, expected) << '"' << text << '"';
}

TEST(Base64, Rfc4648VectorsBothWaysAndACallersAlphabet)
{
    const char *texts[] = {"",         "Zg==",     "Zm8=",    "Zm9v",
                           "Zm9vYg==", "Zm9vYmE=", "Zm9vYmFy"};  // "foobar" and its prefixes
    for (uint32_t length = 0; length < 7; ++length) {
        const std::string plain = std::string("foobar").substr(0, length);
        EXPECT_EQ(encode(plain.c_str(), length), texts[length]);
        expectDecodes(texts[length], Bytes(plain.begin(), plain.end()));
    }
    // A caller's alphabet replaces the standard one.
    const uint8_t bytes[] = {0xFB, 0xFF, 0xBF, 0xFB, 0xF0, 0x00};
    EXPECT_EQ(encode(bytes, 5), "+/+/+/A=");
    EXPECT_EQ(encode(bytes, 5, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_"), "-_-_-_A=");
}

TEST(Base64, IncompleteLastGroupTakesHighBitsOfTheNextByte)
{
    EXPECT_EQ(encode("Man", 1), "TW==");  // 'a' follows: standard would be TQ==
    EXPECT_EQ(encode("Man", 2), "TWF=");  // 'n' follows: standard would be TWE=

    // In general the characters before the padding are those of the input
    // with its next byte; with a 0 byte there the text is standard and decodes.
    for (uint32_t length = 0; length < 200; ++length) {
        const uint8_t *bytes = kRandom.data() + 2 * length;
        const std::string text = encode(bytes, length), longer = encode(bytes, length + 1);
        const std::size_t kept = text.size() - (3 - length % 3) % 3;
        ASSERT_EQ(text.substr(0, kept), longer.substr(0, kept)) << length;
        Bytes plain(bytes, bytes + length);
        plain.push_back(0);
        expectDecodes(encode(plain.data(), length), {plain.begin(), plain.end() - 1});
    }
}

TEST(Base64, DecodingByGroupsOfFour)
{
    const std::pair<std::string, Bytes> rows[] = {
        {"TWFu", {'M', 'a', 'n'}},
        {"TWFuTW", {'M', 'a', 'n'}},    // a remainder of 1-3 characters is ignored
        {"=AAATWFu", {'M', 'a', 'n'}},  // padding first or second: the group gives nothing
        {"A=AATWFu", {'M', 'a', 'n'}},
        {"TQ==TWFu", {'M', 'M', 'a', 'n'}},  // padding does not end the text
        {"TW=uTWE=TWFu", {'M', 'M', 'a', 'M', 'a', 'n'}},
        {"TWFu\r\nTWFu", {'M', 'a', 'n', 0xFF, 0xF4, 0xD6}},  // line breaks are characters too
        {"!!!!", {0xFF, 0xFF, 0xFF}},                         // outside the alphabet: all ones
        {"\xC3"
         "AAA",
         {0xFC, 0x00, 0x00}},
        {"AA*A", {0x00, 0x0F, 0xC0}},
    };
    for (const auto &[text, bytes] : rows)
        expectDecodes(text, bytes);
}

// The group rules one character at a time, for the table and vector paths to
// be held against.
std::string referenceEncode(const uint8_t *src, uint32_t length, const char *digits)
{
    std::string text;
    for (int64_t left = length; left > 0; left -= 3, src += 3) {
        const uint8_t b0 = src[0], b1 = src[1], b2 = left != 1 ? src[2] : 0;
        text += digits[b0 >> 2];
        text += digits[(b1 >> 4) | ((b0 << 4) & 0x30)];
        text += left == 1 ? '=' : digits[(b2 >> 6) | ((b1 << 2) & 0x3C)];
        text += left <= 2 ? '=' : digits[b2 & 0x3F];
    }
    return text;
}

constexpr char kStandardAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

Bytes referenceDecode(const std::string &text)
{
    const std::string_view alphabet = kStandardAlphabet;
    auto sextet = [&](char c) { return static_cast<unsigned>(std::min(alphabet.find(c), std::size_t{0xFF})); };
    Bytes bytes;
    for (std::size_t at = 0; at + 4 <= text.size(); at += 4) {
        const char *c = text.data() + at;
        if (c[0] == '=' || c[1] == '=')
            continue;
        bytes.push_back(static_cast<uint8_t>((sextet(c[0]) << 2) | ((sextet(c[1]) >> 4) & 3)));
        if (c[2] != '=')
            bytes.push_back(static_cast<uint8_t>((sextet(c[1]) << 4) | ((sextet(c[2]) >> 2) & 0x0F)));
        if (c[2] != '=' && c[3] != '=')
            bytes.push_back(static_cast<uint8_t>((sextet(c[2]) << 6) | sextet(c[3])));
    }
    return bytes;
}

// Random lengths and alignments, long enough for whole vector blocks and a
// caller's alphabet with a table of its own; text with padding, characters
// outside the alphabet and bytes above 127 scattered through some blocks.
TEST(Base64, EveryPathAgreesWithTheGroupRules)
{
    std::mt19937 random(64);
    const char *urlSafe = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    for (int round = 0; round < 400; ++round) {
        const auto length = static_cast<uint32_t>(round < 300 ? random() % 600 : 3000 + random() % 1200);
        const uint8_t *src = kRandom.data() + random() % 64;
        ASSERT_EQ(encode(src, length), referenceEncode(src, length, kStandardAlphabet)) << length;
        ASSERT_EQ(encode(src, length, urlSafe), referenceEncode(src, length, urlSafe)) << length;

        std::string text = referenceEncode(src, length, kStandardAlphabet);
        for (int special = static_cast<int>(random() % 6); special > 0 && !text.empty(); --special)
            text[random() % text.size()] = "=\n*\xC3\x80"[random() % 5];
        text.resize(text.size() - random() % std::min<std::size_t>(text.size() + 1, 4));
        expectDecodes(text, referenceDecode(text));
    }
}

Bytes bytesOf(const void *data, std::size_t size)
{
    const auto *bytes = static_cast<const uint8_t *>(data);
    return {bytes, bytes + size};
}

// The digest of length bytes or, unfinished, the state words after them.
Bytes md5(const void *bytes, std::size_t length, bool finish = true)
{
    SMRFC1321Context context;
    SMRFC1321Load(&context);
    SMRFC1321AddMsg(&context, bytes, static_cast<uint32_t>(length));
    if (!finish)
        return bytesOf(context.state, 16);
    SMRFC1321ComputeMsgDigest(&context);
    EXPECT_EQ(bytesOf(context.digest, 16), bytesOf(context.state, 16)) << "the state words in host order";
    return bytesOf(context.digest, 16);
}

// Little-endian words (RFC 1321's byte order) rewritten as host-order words.
Bytes asHostWords(Bytes bytes)
{
    if constexpr (std::endian::native == std::endian::big)
        for (auto word = bytes.begin(); word != bytes.end(); word += 4)
            std::reverse(word, word + 4);
    return bytes;
}

// The message with 0x80, zeros to the last 8 bytes of a block (from capacity
// + 1 bytes on, one block more) and the bit count there in the given order.
Bytes padded(const char *message, std::size_t length, std::size_t capacity, std::endian order)
{
    Bytes bytes(message, message + length);
    bytes.push_back(0x80);
    bytes.resize((length + 63 - capacity) / 64 * 64 + 64, 0);
    for (int i = 0; i < 8; ++i)
        bytes[bytes.size() - (order == std::endian::little ? 8 - i : 1 + i)] =
            static_cast<uint8_t>(uint64_t{length} * 8 >> 8 * i);
    return bytes;
}

TEST(Md5, Rfc1321TestSuite)
{
    const char *suite[][2] = {
        {"", "d41d8cd98f00b204e9800998ecf8427e"},
        {"a", "0cc175b9c0f1b6a831c399e269772661"},
        {"abc", "900150983cd24fb0d6963f7d28e17f72"},
        {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "d174ab98d277d9f5a5611c2c9f419d9f"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "57edf4a22be3c955ac49da2e2107b67a"},
    };
    for (const auto &[text, hex] : suite) {
        Bytes expected(16);
        for (int i = 0; i < 16; ++i)
            expected[i] = static_cast<uint8_t>(std::stoi(std::string(hex + 2 * i, 2), nullptr, 16));
        // Message words are read in host order: RFC 1321's blocks written as
        // host-order words give its digest as host-order words on any host.
        const Bytes blocks = asHostWords(padded(text, std::strlen(text), 55, std::endian::little));
        EXPECT_EQ(md5(blocks.data(), blocks.size(), false), asHostWords(expected)) << '"' << text << '"';
        // No length here is 55 modulo 64: a little-endian host gives the standard digests.
        EXPECT_TRUE(std::endian::native == std::endian::big || md5(text, std::strlen(text)) == expected) << text;
    }
}

TEST(Md5, PaddingInHostOrderTakesASecondBlockFrom55Bytes)
{
    const auto *message = reinterpret_cast<const char *>(kRandom.data());
    for (std::size_t length = 0; length < 200; ++length) {
        const Bytes blocks = padded(message, length, 54, std::endian::native);
        ASSERT_EQ(md5(message, length), md5(blocks.data(), blocks.size(), false)) << "length " << length;
    }
}

TEST(Md5, PiecesOfAnySizeGiveTheSameDigest)
{
    // Pieces of 0, 1, 2 ... 140 bytes, then 0, 1 ... again, from unaligned starts too.
    for (std::size_t start = 0; start < 8; ++start) {
        SMRFC1321Context context;
        SMRFC1321Load(&context);
        std::size_t length = 0;
        for (std::size_t piece = start; length + piece < 3000; length += piece, piece = (piece + 1) % 141)
            SMRFC1321AddMsg(&context, kRandom.data() + start + length, static_cast<uint32_t>(piece));
        ASSERT_EQ(bytesOf(context.block, context.buffered),
                  bytesOf(kRandom.data() + start + length / 64 * 64, length % 64));
        SMRFC1321ComputeMsgDigest(&context);
        const Bytes aligned(kRandom.begin() + start, kRandom.begin() + start + length);
        ASSERT_EQ(bytesOf(context.digest, 16), md5(aligned.data(), length)) << length;
    }
}

// The count is one host-order 64-bit number: its low word carries into the high one.
TEST(Md5, CountCarriesAndUnloadClearsTheRecord)
{
    SMRFC1321Context context;
    SMRFC1321Load(&context);
    uint64_t count = 0xFFFFFFFF;
    std::memcpy(context.bitCount, &count, 8);
    SMRFC1321AddMsg(&context, "z", 1);
    std::memcpy(&count, context.bitCount, 8);
    EXPECT_EQ(count, uint64_t{0xFFFFFFFF} + 8);
    SMRFC1321UnLoad(&context);
    EXPECT_EQ(bytesOf(&context, 108), Bytes(108, 0));
}

}  // namespace
}  // namespace zksupt::digest
