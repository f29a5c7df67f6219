// SMsnprintf against glibc's snprintf on the same format strings and values:
// a mix of integer directives and a mix of 'f', 'e' and 'g' directives. After
// the table it prints the engine's CPU time over glibc's for each mix (below 1
// is faster; targets: integers 0.75, floating point 1.2). The library is
// attached, as it is in every caller, so each call takes the engine's lock.
#include <benchmark/benchmark.h>

#include "bench_sandbox.h"
#include "ratio_reporter.h"

#include <cstdio>
#include <string>

#include <zksupt/format.h>

namespace {

constexpr uint32_t kRoom = 160;

// Twelve integer directives in four calls: widths, precisions, flags, bases.
template <class Print> void integerMix(Print print, char *out)
{
    print(out, kRoom, "%d|%u|%x", -12345, 4000000000u, 0xBEEFu);
    print(out, kRoom, "%5d %-8.3d %08X", 42, -7, 0xABCDu);
    print(out, kRoom, "id=%u count=%d mode=%#o", 1234567u, -99, 0755u);
    print(out, kRoom, "%10u|%-10d|%hd", 17u, INT32_MIN, 1234);
}

// Twelve floating directives in four calls.
template <class Print> void floatingMix(Print print, char *out)
{
    print(out, kRoom, "%f|%.3f|%.10f", 3.14159265358979, -2.5e-3, 12345.6789);
    print(out, kRoom, "%#e|%.3E|%#.12e", 6.02214076e23, -1.602e-19, 0.1);
    print(out, kRoom, "%g|%.3g|%G", 1e-5, 123456.0, 2.0 / 3);
    print(out, kRoom, "%12.4f|%-14.6e|%.15g", 299792.458, 6.674e-11, 1.0 / 7);
}

constexpr auto kEngine = [](char *out, uint32_t size, const char *format, auto... args) {
    benchmark::DoNotOptimize(SMsnprintf(out, size, format, args...));
};
constexpr auto kGlibc = [](char *out, uint32_t size, const char *format, auto... args) {
    benchmark::DoNotOptimize(std::snprintf(out, size, format, args...));
};

template <auto Mix, auto Print> void run(benchmark::State &state)
{
    char out[kRoom];
    for (auto _ : state) {
        Mix(Print, out);
        benchmark::ClobberMemory();
    }
}

void Integers_Engine(benchmark::State &state)
{
    run<integerMix<decltype(kEngine)>, kEngine>(state);
}
void Integers_Glibc(benchmark::State &state)
{
    run<integerMix<decltype(kGlibc)>, kGlibc>(state);
}
void Floating_Engine(benchmark::State &state)
{
    run<floatingMix<decltype(kEngine)>, kEngine>(state);
}
void Floating_Glibc(benchmark::State &state)
{
    run<floatingMix<decltype(kGlibc)>, kGlibc>(state);
}

BENCHMARK(Integers_Engine);
BENCHMARK(Integers_Glibc);
BENCHMARK(Floating_Engine);
BENCHMARK(Floating_Glibc);

}  // namespace

int main(int argc, char **argv)
{
    zksupt::bench::installation();
    return zksupt::bench::runWithRatios(argc, argv, "Engine", "Glibc", "CPU time SMsnprintf / glibc snprintf:");
}
