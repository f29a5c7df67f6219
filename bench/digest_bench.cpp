// CRC-32 against zlib's crc32 and MD5 against OpenSSL's, on 1 MiB buffers in
// the same run. Compare the bytes_per_second of each pair.
#include <benchmark/benchmark.h>
#include <openssl/evp.h>
#include <zlib.h>

#include <cstdint>
#include <random>
#include <vector>

#include "digest/crc32.h"
#include "digest/md5.h"

namespace {

constexpr std::size_t kMiB = 1 << 20;

const std::vector<uint8_t> &buffer()
{
    static const std::vector<uint8_t> bytes = [] {
        std::vector<uint8_t> filled(kMiB);
        std::mt19937 random(20261121);
        for (auto &byte : filled)
            byte = static_cast<uint8_t>(random());
        return filled;
    }();
    return bytes;
}

void report(benchmark::State &state)
{
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kMiB));
}

void Crc32Library(benchmark::State &state)
{
    const auto &bytes = buffer();
    if (zksupt::digest::crc32OfBuffer(bytes.data(), kMiB) != crc32(0, bytes.data(), kMiB))
        state.SkipWithError("the CRC-32 differs from zlib's");
    for (auto _ : state)
        benchmark::DoNotOptimize(zksupt::digest::crc32OfBuffer(bytes.data(), kMiB));
    report(state);
}

void Crc32Zlib(benchmark::State &state)
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

void Md5Library(benchmark::State &state)
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

void Md5OpenSsl(benchmark::State &state)
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

}  // namespace

BENCHMARK(Crc32Library);
BENCHMARK(Crc32Zlib);
BENCHMARK(Md5Library);
BENCHMARK(Md5OpenSsl);

BENCHMARK_MAIN();
