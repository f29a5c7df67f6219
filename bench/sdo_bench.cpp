// The SDO's binary form against the plainest code doing the same work, in
// the same run: writing an object of 200 entries of mixed sizes and reading
// it back into an object (and freeing that) against memcpy of the binary's
// bytes, and lookups by ID in the binary form against a plain binary search
// over the same index that copies the same bytes out (objects of 25, 200 and
// 1600 entries, so that lookups must stay logarithmic). After the table, the
// library's CPU time over the peer's.
#include <benchmark/benchmark.h>

#include "ratio_reporter.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <random>
#include <vector>

#include <zksupt/sdo.h>

namespace {

// Value sizes cycled through: inline ones and out-of-line ones up to 200 bytes.
constexpr uint32_t kSizes[] = {1, 2, 4, 8, 12, 24, 64, 200, 3, 16};
// Plain value types only: base types 12 and 13 stand for nested objects.
constexpr uint8_t kTypes[] = {5, 6, 7, 8, 9, 10, 11, 14, 15, 0x43};

SDOConfig *object(uint32_t entries)
{
    SDOConfig *config = SMSDOConfigAlloc();
    std::vector<uint8_t> value(256);
    std::iota(value.begin(), value.end(), 0);
    for (uint32_t i = 0; i < entries; ++i) {
        const uint32_t size = entries > 200 ? 1 : kSizes[i % std::size(kSizes)];
        SMSDOConfigAddData(config, static_cast<uint16_t>(3 * i + 1), kTypes[i % std::size(kTypes)], value.data(), size,
                           0);
    }
    return config;
}

std::vector<uint8_t> binaryOf(const SDOConfig *config)
{
    uint32_t size = SMSDOConfigGetBinarySize(config);
    std::vector<uint8_t> bytes(size);
    SMSDOConfigToBinary(config, bytes.data(), &size);
    return bytes;
}

std::vector<uint8_t> binaryOf(uint32_t entries)
{
    SDOConfig *config = object(entries);
    std::vector<uint8_t> bytes = binaryOf(config);
    SMSDOConfigFree(config);
    return bytes;
}

void ToBinary_Library(benchmark::State &state)
{
    SDOConfig *config = object(200);
    std::vector<uint8_t> out(SMSDOConfigGetBinarySize(config));
    for (auto _ : state) {
        uint32_t size = static_cast<uint32_t>(out.size());
        benchmark::DoNotOptimize(SMSDOConfigToBinary(config, out.data(), &size));
        benchmark::ClobberMemory();
    }
    SMSDOConfigFree(config);
    if (out != binaryOf(200))
        state.SkipWithError("the binary form changed between two writes");
}

// Building an object includes giving it back.
void BinaryToConfig_Library(benchmark::State &state)
{
    const std::vector<uint8_t> binary = binaryOf(200);
    SDOConfig *check = SMSDOBinaryToConfig(binary.data());
    if (check == nullptr || binaryOf(check) != binary)
        state.SkipWithError("the object read back does not write the same binary form");
    SMSDOConfigFree(check);
    for (auto _ : state) {
        SDOConfig *copy = SMSDOBinaryToConfig(binary.data());
        benchmark::DoNotOptimize(copy);
        SMSDOConfigFree(copy);
    }
}

// The peer of both conversions: copying the binary form's bytes.
void copyBinary(benchmark::State &state)
{
    const std::vector<uint8_t> binary = binaryOf(200);
    std::vector<uint8_t> to(binary.size());
    for (auto _ : state) {
        std::memcpy(to.data(), binary.data(), binary.size());
        benchmark::ClobberMemory();
    }
}

void ToBinary_Memcpy(benchmark::State &state)
{
    copyBinary(state);
}

void BinaryToConfig_Memcpy(benchmark::State &state)
{
    copyBinary(state);
}

// The IDs to look up: 65,536 of the object's, drawn at random. So many that
// a branch predictor cannot learn the sequence, as it would learn one pass
// over the IDs repeated at every iteration; real lookups come in no
// repeating order.
std::vector<uint16_t> randomIds(uint32_t entries)
{
    std::mt19937 random(42);
    std::vector<uint16_t> ids(65536);
    for (uint16_t &id : ids)
        id = static_cast<uint16_t>(3 * (random() % entries) + 1);
    return ids;
}

uint16_t load16(const uint8_t *at)
{
    uint16_t value;
    std::memcpy(&value, at, 2);
    return value;
}

// The plain lookup: a binary search over the slots' IDs, then the value
// copied out as the library's lookup by ID reports it (an inline value as
// its slot's four bytes).
int32_t plainLookup(const uint8_t *binary, uint16_t id, void *out, uint32_t *size)
{
    const uint8_t *slots = binary + 8;
    uint32_t low = 0, high = load16(binary + 4);
    while (low < high) {
        const uint32_t middle = (low + high) / 2;
        if (load16(slots + 8 * middle) < id)
            low = middle + 1;
        else
            high = middle;
    }
    if (low == load16(binary + 4) || load16(slots + 8 * low) != id)
        return 0x100;
    const uint8_t *slot = slots + 8 * low;
    const bool outOfLine = (slot[3] & 4) != 0;
    const uint32_t length = outOfLine ? load16(slot + 4) : 4;
    if (*size < length)
        return 0x10;
    std::memcpy(out, outOfLine ? slot + load16(slot + 6) : slot + 4, length);
    *size = length;
    return 0;
}

void GetDataByID_Library(benchmark::State &state)
{
    const auto entries = static_cast<uint32_t>(state.range(0));
    const std::vector<uint8_t> binary = binaryOf(entries);
    const std::vector<uint16_t> ids = randomIds(entries);
    uint8_t value[256], plain[256];
    for (uint16_t id : ids) {
        uint32_t size = sizeof value, plainSize = sizeof plain;
        if (SMSDOBinaryGetDataByID(binary.data(), id, nullptr, value, &size) != 0 ||
            plainLookup(binary.data(), id, plain, &plainSize) != 0 || size != plainSize ||
            std::memcmp(value, plain, size) != 0) {
            state.SkipWithError("the lookups do not find the same value");
            return;
        }
    }
    for (auto _ : state) {
        for (uint16_t id : ids) {
            uint32_t size = sizeof value;
            benchmark::DoNotOptimize(SMSDOBinaryGetDataByID(binary.data(), id, nullptr, value, &size));
        }
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * ids.size()));
}

void GetDataByID_Search(benchmark::State &state)
{
    const auto entries = static_cast<uint32_t>(state.range(0));
    const std::vector<uint8_t> binary = binaryOf(entries);
    const std::vector<uint16_t> ids = randomIds(entries);
    uint8_t value[256];
    for (auto _ : state) {
        for (uint16_t id : ids) {
            uint32_t size = sizeof value;
            benchmark::DoNotOptimize(plainLookup(binary.data(), id, value, &size));
        }
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * ids.size()));
}

BENCHMARK(ToBinary_Library);
BENCHMARK(ToBinary_Memcpy);
BENCHMARK(BinaryToConfig_Library);
BENCHMARK(BinaryToConfig_Memcpy);
BENCHMARK(GetDataByID_Library)->Arg(25)->Arg(200)->Arg(1600);
BENCHMARK(GetDataByID_Search)->Arg(25)->Arg(200)->Arg(1600);

}  // namespace

int main(int argc, char **argv)
{
    return zksupt::bench::runWithRatios(argc, argv, "Library", {"Memcpy", "Search"},
                                        "CPU time of the library / its peer:");
}
