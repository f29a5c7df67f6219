// MD5 over the caller's record: RFC 1321's test suite, a reference with the
// library's padding threshold and host byte order, pieces, and the record.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <zksupt/digest.h>

#include "random_bytes.h"

namespace {

using zksupt::test::randomBytes;
using Digest = std::vector<uint8_t>;

// floor(|sin(i)| * 2^32), evaluated by the compiler: the C library's sine
// does not run under the PowerPC emulator.
constexpr std::array<uint32_t, 64> makeSine()
{
    std::array<uint32_t, 64> t{};
    for (int i = 0; i < 64; ++i)
        t[i] = static_cast<uint32_t>(std::fabs(std::sin(i + 1.0)) * 4294967296.0);
    return t;
}
constexpr std::array<uint32_t, 64> kSine = makeSine();

// A plain MD5 with its two variable points explicit: the byte order of the
// words (message, bit count, digest), and how many message bytes the last
// block holds beside the bit count (RFC 1321: 55).
struct Variant {
    std::endian order;
    std::size_t lastBlockCapacity;
};
constexpr Variant kRfc1321{std::endian::little, 55};
constexpr Variant kLibrary{std::endian::native, 54};

std::size_t byteIndex(Variant variant, int i, int size)
{
    return variant.order == std::endian::little ? i : size - 1 - i;
}

Digest referenceMd5(Variant variant, const uint8_t *bytes, std::size_t length)
{
    std::vector<uint8_t> message(bytes, bytes + length);
    message.push_back(0x80);
    const std::size_t blocks = length / 64 + (length % 64 > variant.lastBlockCapacity ? 2 : 1);
    message.resize(blocks * 64, 0);
    for (int i = 0; i < 8; ++i)
        message[blocks * 64 - 8 + byteIndex(variant, i, 8)] = static_cast<uint8_t>((uint64_t{length} * 8) >> (8 * i));

    static const int shifts[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
    uint32_t state[4] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
    for (std::size_t block = 0; block < blocks; ++block) {
        uint32_t x[16] = {};
        for (int w = 0; w < 64; ++w)
            x[w / 4] |= uint32_t{message[block * 64 + w / 4 * 4 + byteIndex(variant, w % 4, 4)]} << (8 * (w % 4));
        uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
        for (int i = 0; i < 64; ++i) {
            const int round = i / 16;
            const uint32_t f[4] = {(b & c) | (~b & d), (b & d) | (c & ~d), b ^ c ^ d, c ^ (b | ~d)};
            const int k[4] = {i, 1 + 5 * i, 5 + 3 * i, 7 * i};
            const uint32_t sum = a + f[round] + x[k[round] % 16] + kSine[i];
            a = d;
            d = c;
            c = b;
            b += std::rotl(sum, shifts[round][i % 4]);
        }
        state[0] += a;
        state[1] += b;
        state[2] += c;
        state[3] += d;
    }
    Digest digest(16);
    for (int i = 0; i < 16; ++i)
        digest[i / 4 * 4 + byteIndex(variant, i % 4, 4)] = static_cast<uint8_t>(state[i / 4] >> (8 * (i % 4)));
    return digest;
}

Digest libraryDigest(const void *bytes, std::size_t length)
{
    SMRFC1321Context context;
    SMRFC1321Load(&context);
    SMRFC1321AddMsg(&context, bytes, static_cast<uint32_t>(length));
    SMRFC1321ComputeMsgDigest(&context);
    return {context.digest, context.digest + 16};
}

std::string hex(const Digest &digest)
{
    std::string text;
    char pair[3];
    for (uint8_t byte : digest) {
        std::snprintf(pair, sizeof pair, "%02x", byte);
        text += pair;
    }
    return text;
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
    for (const auto &[text, expected] : suite) {
        const auto *bytes = reinterpret_cast<const uint8_t *>(text);
        EXPECT_EQ(hex(referenceMd5(kRfc1321, bytes, std::strlen(text))), expected) << "the reference itself";
        // No length here is 55 modulo 64: a little-endian host gives the standard digests.
        if constexpr (std::endian::native == std::endian::little) {
            EXPECT_EQ(hex(libraryDigest(text, std::strlen(text))), expected) << '"' << text << '"';
        }
    }
}

TEST(Md5, EveryLengthPadsWithTheLibrarysThreshold)
{
    const auto bytes = randomBytes(301, 21);
    for (std::size_t length = 0; length <= 300; ++length) {
        const Digest digest = libraryDigest(bytes.data(), length);
        ASSERT_EQ(digest, referenceMd5(kLibrary, bytes.data(), length)) << "length " << length;
        if constexpr (std::endian::native == std::endian::little) {
            ASSERT_EQ(digest == referenceMd5(kRfc1321, bytes.data(), length), length % 64 != 55) << length;
        }
    }

    // 55 bytes: the 0x80 fills byte 55, and a second block holds only the count.
    SMRFC1321Context context;
    SMRFC1321Load(&context);
    SMRFC1321AddMsg(&context, bytes.data(), 55);
    SMRFC1321ComputeMsgDigest(&context);
    uint64_t count;
    std::memcpy(&count, context.block + 56, 8);
    EXPECT_EQ(count, 440u);
    EXPECT_EQ(Digest(context.block, context.block + 56), Digest(56, 0));
}

TEST(Md5, PiecesOfAnySizeGiveTheSameDigest)
{
    const auto bytes = randomBytes(5000 + 3, 22);
    std::mt19937 random(23);
    for (int trial = 0; trial < 100; ++trial) {
        const uint8_t *message = bytes.data() + random() % 4;  // unaligned words too
        const std::size_t length = random() % 5000;
        SMRFC1321Context context;
        SMRFC1321Load(&context);
        for (std::size_t done = 0, piece; done < length; done += piece) {
            piece = std::min<std::size_t>(length - done, random() % (trial % 2 ? 70 : 300));
            SMRFC1321AddMsg(&context, message + done, static_cast<uint32_t>(piece));
        }
        SMRFC1321ComputeMsgDigest(&context);
        ASSERT_EQ(Digest(context.digest, context.digest + 16), referenceMd5(kLibrary, message, length)) << length;
    }
}

TEST(Md5, RecordFieldsAsCallersSeeThem)
{
    SMRFC1321Context context;
    std::memset(&context, 0xAB, sizeof context);
    SMRFC1321Load(&context);
    uint64_t count;
    std::memcpy(&count, context.bitCount, 8);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(context.state[0], 0x67452301u);
    EXPECT_EQ(context.state[3], 0x10325476u);
    EXPECT_EQ(context.buffered, 0u);
    EXPECT_EQ(Digest(context.digest, context.digest + 16), Digest(16, 0));
    EXPECT_EQ(Digest(context.block, context.block + 64), Digest(64, 0xAB)) << "Load leaves the block alone";

    const auto bytes = randomBytes(1000, 24);
    SMRFC1321AddMsg(&context, bytes.data(), 1000);
    std::memcpy(&count, context.bitCount, 8);
    EXPECT_EQ(count, 8000u);
    EXPECT_EQ(context.buffered, 1000u % 64);
    EXPECT_EQ(0, std::memcmp(context.block, bytes.data() + 960, 40));

    SMRFC1321ComputeMsgDigest(&context);
    EXPECT_EQ(0, std::memcmp(context.digest, context.state, 16)) << "the digest is the state words in host order";

    // The count is one 64-bit number: its low word carries into the high one.
    const uint64_t nearCarry = 0xFFFFFFF8;
    std::memcpy(context.bitCount, &nearCarry, 8);
    SMRFC1321AddMsg(&context, "z", 1);
    std::memcpy(&count, context.bitCount, 8);
    EXPECT_EQ(count, uint64_t{1} << 32);

    SMRFC1321UnLoad(&context);
    const auto *raw = reinterpret_cast<const uint8_t *>(&context);
    EXPECT_EQ(Digest(raw, raw + 108), Digest(108, 0));
}

}  // namespace
