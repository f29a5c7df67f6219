// The SDO's binary form against memcpy of the same number of bytes: writing
// an object of 200 entries of mixed sizes, reading it back into an object,
// and lookups by ID in the binary form, which must stay logarithmic (the
// lookup benchmark runs over objects of 25, 200 and 1600 entries).
//
// Each conversion benchmark reports bytes per second and "x_memcpy", its
// time per operation over memcpy's time for the same size, measured in the
// same run.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <numeric>
#include <random>
#include <vector>

#include <zksupt/sdo.h>

namespace {

using Clock = std::chrono::steady_clock;

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

// Nanoseconds per memcpy of n bytes, the best of several timed batches.
double memcpyNanoseconds(size_t n)
{
    std::vector<uint8_t> from(n, 1), to(n);
    double best = 1e30;
    for (int batch = 0; batch < 20; ++batch) {
        constexpr int kCopies = 2000;
        const auto start = Clock::now();
        for (int i = 0; i < kCopies; ++i) {
            std::memcpy(to.data(), from.data(), n);
            benchmark::ClobberMemory();
        }
        const std::chrono::duration<double, std::nano> spent = Clock::now() - start;
        best = std::min(best, spent.count() / kCopies);
    }
    return best;
}

// Runs body once per iteration and reports bytes per second and the ratio
// of its time to memcpy's for the same size.
template <class Body> void measure(benchmark::State &state, size_t bytes, Body body)
{
    const double copy = memcpyNanoseconds(bytes);
    const auto start = Clock::now();
    for (auto _ : state)
        body();
    const std::chrono::duration<double, std::nano> spent = Clock::now() - start;
    const auto iterations = static_cast<double>(state.iterations());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
    state.counters["x_memcpy"] = spent.count() / iterations / copy;
    state.counters["bytes"] = static_cast<double>(bytes);
}

void ToBinary(benchmark::State &state)
{
    SDOConfig *config = object(200);
    std::vector<uint8_t> out(SMSDOConfigGetBinarySize(config));
    measure(state, out.size(), [&] {
        uint32_t size = static_cast<uint32_t>(out.size());
        benchmark::DoNotOptimize(SMSDOConfigToBinary(config, out.data(), &size));
        benchmark::ClobberMemory();
    });
    SMSDOConfigFree(config);
}

// The new object is freed inside the timed loop: building one includes
// giving it back.
void BinaryToConfig(benchmark::State &state)
{
    SDOConfig *config = object(200);
    const std::vector<uint8_t> binary = binaryOf(config);
    SMSDOConfigFree(config);
    measure(state, binary.size(), [&] {
        SDOConfig *copy = SMSDOBinaryToConfig(binary.data());
        benchmark::DoNotOptimize(copy);
        SMSDOConfigFree(copy);
    });
}

void Memcpy(benchmark::State &state)
{
    SDOConfig *config = object(200);
    const std::vector<uint8_t> binary = binaryOf(config);
    SMSDOConfigFree(config);
    std::vector<uint8_t> to(binary.size());
    for (auto _ : state) {
        std::memcpy(to.data(), binary.data(), binary.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * binary.size()));
}

// Every ID once per iteration, in shuffled order.
void BinaryGetDataByID(benchmark::State &state)
{
    const auto entries = static_cast<uint32_t>(state.range(0));
    SDOConfig *config = object(entries);
    const std::vector<uint8_t> binary = binaryOf(config);
    SMSDOConfigFree(config);
    std::vector<uint16_t> ids(entries);
    for (uint32_t i = 0; i < entries; ++i)
        ids[i] = static_cast<uint16_t>(3 * i + 1);
    std::shuffle(ids.begin(), ids.end(), std::mt19937(42));
    uint8_t value[256];
    for (auto _ : state) {
        for (uint16_t id : ids) {
            uint32_t size = sizeof value;
            benchmark::DoNotOptimize(SMSDOBinaryGetDataByID(binary.data(), id, nullptr, value, &size));
        }
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * entries));
}

}  // namespace

BENCHMARK(ToBinary);
BENCHMARK(BinaryToConfig);
BENCHMARK(Memcpy);
BENCHMARK(BinaryGetDataByID)->Arg(25)->Arg(200)->Arg(1600);

BENCHMARK_MAIN();
