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
#include <thread>
#include <vector>

#include <zksupt/digest.h>

#include "random_bytes.h"

namespace {

using zksupt::test::randomBytes;
using Digest = std::vector<uint8_t>;

// A plain MD5 with its two variable points made explicit: the byte order of
// words (message, bit count, digest) and how many message bytes the last
// block may hold with the bit count (55 in RFC 1321).
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

class ReferenceMd5 {
  public:
    ReferenceMd5(std::endian order, std::size_t lastBlockCapacity) : order_(order), capacity_(lastBlockCapacity) {}

    Digest digest(const uint8_t *bytes, std::size_t length) const
    {
        std::vector<uint8_t> message(bytes, bytes + length);
        message.push_back(0x80);
        const bool extraBlock = length % 64 > capacity_;
        std::size_t padded = (length / 64 + (extraBlock ? 2 : 1)) * 64;
        message.resize(padded, 0);
        put(message.data() + padded - 8, uint64_t{length} * 8, 8);

        uint32_t state[4] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
        for (std::size_t block = 0; block < padded; block += 64)
            compress(state, message.data() + block);
        Digest out(16);
        for (int i = 0; i < 4; ++i)
            put(out.data() + 4 * i, state[i], 4);
        return out;
    }

  private:
    void put(uint8_t *at, uint64_t value, int size) const
    {
        for (int i = 0; i < size; ++i)
            at[order_ == std::endian::little ? i : size - 1 - i] = static_cast<uint8_t>(value >> (8 * i));
    }
    uint32_t word(const uint8_t *at) const
    {
        uint32_t value = 0;
        for (int i = 0; i < 4; ++i)
            value |= uint32_t{at[order_ == std::endian::little ? i : 3 - i]} << (8 * i);
        return value;
    }
    void compress(uint32_t state[4], const uint8_t *block) const
    {
        static const int shifts[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
        uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
        for (int i = 0; i < 64; ++i) {
            const int round = i / 16;
            uint32_t f;
            int k;
            if (round == 0) {
                f = (b & c) | (~b & d);
                k = i;
            } else if (round == 1) {
                f = (b & d) | (c & ~d);
                k = (1 + 5 * i) % 16;
            } else if (round == 2) {
                f = b ^ c ^ d;
                k = (5 + 3 * i) % 16;
            } else {
                f = c ^ (b | ~d);
                k = (7 * i) % 16;
            }
            const uint32_t rotated = std::rotl(a + f + word(block + 4 * k) + kSine[i], shifts[round][i % 4]);
            a = d;
            d = c;
            c = b;
            b += rotated;
        }
        state[0] += a;
        state[1] += b;
        state[2] += c;
        state[3] += d;
    }

    std::endian order_;
    std::size_t capacity_;
};

const ReferenceMd5 kRfc1321(std::endian::little, 55);
const ReferenceMd5 kLibrary(std::endian::native, 54);

Digest libraryDigest(const uint8_t *bytes, std::size_t length)
{
    SMRFC1321Context context;
    SMRFC1321Load(&context);
    SMRFC1321AddMsg(&context, bytes, static_cast<uint32_t>(length));
    SMRFC1321ComputeMsgDigest(&context);
    return {context.digest, context.digest + 16};
}

Digest libraryDigest(const std::string &text)
{
    return libraryDigest(reinterpret_cast<const uint8_t *>(text.data()), text.size());
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

TEST(Md5, ReferenceReproducesTheRfc1321TestSuite)
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
    for (const auto &entry : suite) {
        const std::string text = entry[0];
        EXPECT_EQ(hex(kRfc1321.digest(reinterpret_cast<const uint8_t *>(text.data()), text.size())), entry[1]);
        // None of these lengths is 55 modulo 64, so on a little-endian host
        // the library gives the standard digests.
        if constexpr (std::endian::native == std::endian::little) {
            EXPECT_EQ(hex(libraryDigest(text)), entry[1]) << '"' << text << '"';
        }
    }
}

TEST(Md5, EveryLengthMatchesTheReferenceWithTheLibrarysThreshold)
{
    const auto bytes = randomBytes(301, 21);
    for (std::size_t length = 0; length <= 300; ++length) {
        const Digest digest = libraryDigest(bytes.data(), length);
        ASSERT_EQ(digest, kLibrary.digest(bytes.data(), length)) << "length " << length;
        // On a little-endian host only the 55-modulo-64 lengths leave RFC 1321.
        if constexpr (std::endian::native == std::endian::little) {
            ASSERT_EQ(digest == kRfc1321.digest(bytes.data(), length), length % 64 != 55) << "length " << length;
        }
    }
}

TEST(Md5, FiftyFiveBytesTakeASecondFinalBlock)
{
    const std::string text(55, 'x');
    EXPECT_EQ(libraryDigest(text), kLibrary.digest(reinterpret_cast<const uint8_t *>(text.data()), 55));
    EXPECT_NE(libraryDigest(text), kRfc1321.digest(reinterpret_cast<const uint8_t *>(text.data()), 55));

    // The second block holds only the bit count: 440 at bytes 56-63.
    SMRFC1321Context context;
    SMRFC1321Load(&context);
    SMRFC1321AddMsg(&context, text.data(), 55);
    SMRFC1321ComputeMsgDigest(&context);
    uint64_t count;
    std::memcpy(&count, context.block + 56, 8);
    EXPECT_EQ(count, 440u);
    EXPECT_EQ(std::vector<uint8_t>(context.block, context.block + 56), std::vector<uint8_t>(56, 0));
}

TEST(Md5, PiecesOfAnySizeGiveTheSameDigest)
{
    const auto bytes = randomBytes(5000 + 3, 22);
    std::mt19937 random(23);
    for (int trial = 0; trial < 100; ++trial) {
        const std::size_t offset = random() % 4;  // unaligned words as well
        const std::size_t length = random() % 5000;
        const uint8_t *message = bytes.data() + offset;
        SMRFC1321Context context;
        SMRFC1321Load(&context);
        for (std::size_t done = 0; done < length;) {
            const std::size_t piece = std::min<std::size_t>(length - done, random() % (trial % 2 ? 70 : 300));
            SMRFC1321AddMsg(&context, message + done, static_cast<uint32_t>(piece));
            done += piece;
        }
        SMRFC1321ComputeMsgDigest(&context);
        ASSERT_EQ(Digest(context.digest, context.digest + 16), kLibrary.digest(message, length)) << length;
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

    SMRFC1321UnLoad(&context);
    const auto *raw = reinterpret_cast<const uint8_t *>(&context);
    EXPECT_EQ(Digest(raw, raw + 108), Digest(108, 0));
}

TEST(Md5, BitCountCarriesIntoItsHighWord)
{
    SMRFC1321Context context;
    SMRFC1321Load(&context);
    const uint64_t nearCarry = 0xFFFFFFF8;
    std::memcpy(context.bitCount, &nearCarry, 8);
    SMRFC1321AddMsg(&context, "z", 1);
    uint64_t count;
    std::memcpy(&count, context.bitCount, 8);
    EXPECT_EQ(count, uint64_t{1} << 32);
}

TEST(Md5, IndependentContextsOnManyThreads)
{
    const auto bytes = randomBytes(20000, 25);
    const Digest expected = kLibrary.digest(bytes.data(), bytes.size());
    std::vector<Digest> results(4);
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < results.size(); ++t)
        threads.emplace_back([&, t] { results[t] = libraryDigest(bytes.data(), bytes.size()); });
    for (auto &thread : threads)
        thread.join();
    for (const auto &result : results)
        EXPECT_EQ(result, expected);
}

}  // namespace
