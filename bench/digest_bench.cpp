// CRC-32 against zlib's crc32 and ISA-L's crc32_gzip_refl, MD5 against
// OpenSSL's, and Base64 both ways against a plain table-driven coder, on
// 1 MiB in the same run. After the table, the library's CPU time over each
// peer's.
#include <benchmark/benchmark.h>
#include <isa-l/crc.h>
#include <openssl/evp.h>
#include <zlib.h>

#include "ratio_reporter.h"

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "digest/base64.h"
#include "digest/crc32.h"
#include "digest/md5.h"

namespace {

constexpr std::size_t kMiB = 1 << 20;

// Random bytes, with two zero bytes after the last, which the Base64
// encoder's incomplete last group reads (so its text is standard Base64).
const std::vector<uint8_t> &buffer()
{
    static const std::vector<uint8_t> bytes = [] {
        std::vector<uint8_t> filled(kMiB + 2);
        std::mt19937 random(20261121);
        for (auto &byte : filled)
            byte = static_cast<uint8_t>(random());
        filled[kMiB] = filled[kMiB + 1] = 0;
        return filled;
    }();
    return bytes;
}

void report(benchmark::State &state)
{
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kMiB));
}

void Crc32_Library(benchmark::State &state)
{
    const auto &bytes = buffer();
    if (zksupt::digest::crc32OfBuffer(bytes.data(), kMiB) != crc32(0, bytes.data(), kMiB))
        state.SkipWithError("the CRC-32 differs from zlib's");
    for (auto _ : state)
        benchmark::DoNotOptimize(zksupt::digest::crc32OfBuffer(bytes.data(), kMiB));
    report(state);
}

void Crc32_Isal(benchmark::State &state)
{
    const auto &bytes = buffer();
    if (crc32_gzip_refl(0, bytes.data(), kMiB) != crc32(0, bytes.data(), kMiB))
        state.SkipWithError("ISA-L's CRC-32 differs from zlib's");
    for (auto _ : state)
        benchmark::DoNotOptimize(crc32_gzip_refl(0, bytes.data(), kMiB));
    report(state);
}

void Crc32_Zlib(benchmark::State &state)
{
    const auto &bytes = buffer();
    for (auto _ : state)
        benchmark::DoNotOptimize(crc32(0, bytes.data(), kMiB));
    report(state);
}

// Digests of the buffer, whose length (a whole number of blocks) is where the
// library's MD5 equals the standard one on a little-endian host.
std::vector<uint8_t> libraryMd5()
{
    SMRFC1321Context context;
    zksupt::digest::md5Load(&context);
    zksupt::digest::md5Add(&context, buffer().data(), kMiB);
    zksupt::digest::md5Finish(&context);
    return {context.digest, context.digest + 16};
}

std::vector<uint8_t> openSslMd5()
{
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    EVP_Digest(buffer().data(), kMiB, digest, &size, EVP_md5(), nullptr);
    return {digest, digest + size};
}

void Md5_Library(benchmark::State &state)
{
    const auto &bytes = buffer();
    SMRFC1321Context context;
    if (libraryMd5() != openSslMd5())
        state.SkipWithError("the MD5 of a whole number of blocks differs from OpenSSL's");
    for (auto _ : state) {
        zksupt::digest::md5Load(&context);
        zksupt::digest::md5Add(&context, bytes.data(), kMiB);
        zksupt::digest::md5Finish(&context);
        benchmark::DoNotOptimize(context.digest);
    }
    report(state);
}

void Md5_OpenSsl(benchmark::State &state)
{
    const auto &bytes = buffer();
    EVP_MD *md5 = EVP_MD_fetch(nullptr, "MD5", nullptr);
    EVP_MD_CTX *context = EVP_MD_CTX_new();
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    for (auto _ : state) {
        EVP_DigestInit_ex(context, md5, nullptr);
        EVP_DigestUpdate(context, bytes.data(), kMiB);
        EVP_DigestFinal_ex(context, digest, &size);
        benchmark::DoNotOptimize(digest);
    }
    EVP_MD_CTX_free(context);
    EVP_MD_free(md5);
    report(state);
}

// The plain coders a caller would write in a few lines: three bytes in, four
// characters out, one table lookup per character, and back.
constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

void plainEncode(char *out, const uint8_t *in, std::size_t length)
{
    std::size_t i = 0;
    for (; i + 3 <= length; i += 3) {
        const uint32_t group = uint32_t{in[i]} << 16 | uint32_t{in[i + 1]} << 8 | in[i + 2];
        *out++ = kAlphabet[group >> 18];
        *out++ = kAlphabet[(group >> 12) & 63];
        *out++ = kAlphabet[(group >> 6) & 63];
        *out++ = kAlphabet[group & 63];
    }
    if (i < length) {
        const uint32_t group = uint32_t{in[i]} << 16 | (i + 1 < length ? uint32_t{in[i + 1]} << 8 : 0);
        *out++ = kAlphabet[group >> 18];
        *out++ = kAlphabet[(group >> 12) & 63];
        *out++ = i + 1 < length ? kAlphabet[(group >> 6) & 63] : '=';
        *out++ = '=';
    }
    *out = '\0';
}

void plainDecode(uint8_t *out, const char *in, std::size_t length)
{
    static const std::vector<uint8_t> values = [] {
        std::vector<uint8_t> table(256, 0xFF);
        for (uint8_t i = 0; i < 64; ++i)
            table[static_cast<unsigned char>(kAlphabet[i])] = i;
        return table;
    }();
    for (std::size_t i = 0; i + 4 <= length; i += 4) {
        const auto *group = reinterpret_cast<const unsigned char *>(in + i);
        const uint32_t d0 = values[group[0]], d1 = values[group[1]], d2 = values[group[2]], d3 = values[group[3]];
        *out++ = static_cast<uint8_t>(d0 << 2 | d1 >> 4);
        if (group[2] != '=')
            *out++ = static_cast<uint8_t>(d1 << 4 | d2 >> 2);
        if (group[2] != '=' && group[3] != '=')
            *out++ = static_cast<uint8_t>(d2 << 6 | d3);
    }
    *out = 0;
}

constexpr std::size_t kTextLength = 4 * ((kMiB + 2) / 3);

const std::string &base64Text()
{
    static const std::string text = [] {
        std::string encoded(kTextLength + 1, '\0');
        plainEncode(encoded.data(), buffer().data(), kMiB);
        encoded.resize(kTextLength);
        return encoded;
    }();
    return text;
}

void Base64Encode_Library(benchmark::State &state)
{
    std::string text(kTextLength + 1, '\0');
    zksupt::digest::base64Encode(text.data(), buffer().data(), kMiB, nullptr);
    if (text.compare(0, kTextLength, base64Text()) != 0)
        state.SkipWithError("the Base64 text differs from the plain encoder's");
    for (auto _ : state) {
        zksupt::digest::base64Encode(text.data(), buffer().data(), kMiB, nullptr);
        benchmark::ClobberMemory();
    }
    report(state);
}

void Base64Encode_Plain(benchmark::State &state)
{
    std::string text(kTextLength + 1, '\0');
    for (auto _ : state) {
        plainEncode(text.data(), buffer().data(), kMiB);
        benchmark::ClobberMemory();
    }
    report(state);
}

void Base64Decode_Library(benchmark::State &state)
{
    std::vector<uint8_t> bytes(kMiB + 3);
    zksupt::digest::base64Decode(bytes.data(), base64Text().data(), kTextLength);
    if (std::memcmp(bytes.data(), buffer().data(), kMiB) != 0)
        state.SkipWithError("the decoded bytes differ from the input");
    for (auto _ : state) {
        zksupt::digest::base64Decode(bytes.data(), base64Text().data(), kTextLength);
        benchmark::ClobberMemory();
    }
    report(state);
}

void Base64Decode_Plain(benchmark::State &state)
{
    std::vector<uint8_t> bytes(kMiB + 3);
    for (auto _ : state) {
        plainDecode(bytes.data(), base64Text().data(), kTextLength);
        benchmark::ClobberMemory();
    }
    report(state);
}

BENCHMARK(Crc32_Library);
BENCHMARK(Crc32_Zlib);
BENCHMARK(Crc32_Isal);
BENCHMARK(Md5_Library);
BENCHMARK(Md5_OpenSsl);
BENCHMARK(Base64Encode_Library);
BENCHMARK(Base64Encode_Plain);
BENCHMARK(Base64Decode_Library);
BENCHMARK(Base64Decode_Plain);

}  // namespace

int main(int argc, char **argv)
{
    return zksupt::bench::runWithRatios(argc, argv, "Library", {"Zlib", "Isal", "OpenSsl", "Plain"},
                                        "CPU time of the library / its peer:");
}
