// The two converters against glibc's iconv on 1 MiB of text, ASCII and a
// mixture of one- to three-byte characters. Prints, after the table, the CPU
// time of each converter as a ratio of iconv's (below 1 is faster); CPU time
// rather than wall time, so that other load on the machine counts less.
#include <benchmark/benchmark.h>

#include "ratio_reporter.h"

#include <iconv.h>

#include <random>
#include <string>
#include <vector>

#include <zksupt/text.h>

namespace {

constexpr std::size_t kTextBytes = 1 << 20;
constexpr const char *kHostUcs2 = "UCS-2";  // glibc's builtin, host byte order

// 1 MiB of UTF-8 in words of two to nine letters: ASCII letters only, or
// letters that are one-, two- and three-byte characters in equal shares.
std::string makeUtf8(bool mixed)
{
    std::mt19937 random(42);
    std::uniform_int_distribution<int> wordLength(2, 9), kind(0, 2), letter(0, 25);
    std::string text;
    while (text.size() < kTextBytes - 32) {
        for (int i = wordLength(random); i > 0; --i) {
            const int k = mixed ? kind(random) : 0;
            const char32_t base = k == 0 ? U'a' : k == 1 ? U'\u0430' : U'\u4e00';
            const char32_t cp = base + static_cast<char32_t>(letter(random) * (k == 2 ? 97 : 1));
            if (cp < 0x80) {
                text += static_cast<char>(cp);
            } else if (cp < 0x800) {
                text += static_cast<char>(0xC0 | (cp >> 6));
                text += static_cast<char>(0x80 | (cp & 0x3F));
            } else {
                text += static_cast<char>(0xE0 | (cp >> 12));
                text += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
                text += static_cast<char>(0x80 | (cp & 0x3F));
            }
        }
        text += ' ';
    }
    return text;
}

std::vector<ucs2> toUcs2(const std::string &utf8)
{
    std::vector<ucs2> text(utf8.size() + 1);
    auto size = static_cast<uint32_t>(text.size() * sizeof(ucs2));
    if (SMUTF8StrToUCS2Str(text.data(), &size, utf8.c_str()) != SM_STATUS_SUCCESS)
        std::abort();
    text.resize(size / sizeof(ucs2));
    return text;
}

const std::string &utf8Text(bool mixed)
{
    static const std::string ascii = makeUtf8(false), mixture = makeUtf8(true);
    return mixed ? mixture : ascii;
}

const std::vector<ucs2> &ucs2Text(bool mixed)
{
    static const std::vector<ucs2> ascii = toUcs2(utf8Text(false)), mixture = toUcs2(utf8Text(true));
    return mixed ? mixture : ascii;
}

void runIconv(benchmark::State &state, const char *to, const char *from, const void *src, std::size_t bytes)
{
    iconv_t cd = iconv_open(to, from);
    if (cd == reinterpret_cast<iconv_t>(-1)) {
        state.SkipWithError("iconv_open failed");
        return;
    }
    std::vector<char> out(2 * bytes + 16);
    for (auto _ : state) {
        char *in = const_cast<char *>(static_cast<const char *>(src));
        char *dst = out.data();
        std::size_t left = bytes, room = out.size();
        iconv(cd, nullptr, nullptr, nullptr, nullptr);
        if (iconv(cd, &in, &left, &dst, &room) == static_cast<std::size_t>(-1))
            state.SkipWithError("iconv failed");
        benchmark::DoNotOptimize(out.data());
    }
    iconv_close(cd);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

void Utf8ToUcs2_Library(benchmark::State &state)
{
    const std::string &src = utf8Text(state.range(0) != 0);
    std::vector<ucs2> out(src.size() + 1);
    for (auto _ : state) {
        auto size = static_cast<uint32_t>(out.size() * sizeof(ucs2));
        if (SMUTF8StrToUCS2Str(out.data(), &size, src.c_str()) != SM_STATUS_SUCCESS)
            state.SkipWithError("conversion failed");
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * src.size()));
}

void Utf8ToUcs2_Iconv(benchmark::State &state)
{
    const std::string &src = utf8Text(state.range(0) != 0);
    runIconv(state, kHostUcs2, "UTF-8", src.data(), src.size());
}

void Ucs2ToUtf8_Library(benchmark::State &state)
{
    const std::vector<ucs2> &src = ucs2Text(state.range(0) != 0);
    std::vector<char> out(3 * src.size() + 1);
    for (auto _ : state) {
        auto size = static_cast<uint32_t>(out.size());
        if (SMUCS2StrToUTF8Str(out.data(), &size, src.data()) != SM_STATUS_SUCCESS)
            state.SkipWithError("conversion failed");
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * (src.size() - 1) * sizeof(ucs2)));
}

void Ucs2ToUtf8_Iconv(benchmark::State &state)
{
    const std::vector<ucs2> &src = ucs2Text(state.range(0) != 0);
    runIconv(state, "UTF-8", kHostUcs2, src.data(), (src.size() - 1) * sizeof(ucs2));
}

// Argument 0: ASCII, 1: mixed.
BENCHMARK(Utf8ToUcs2_Library)->ArgName("mixed")->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(Utf8ToUcs2_Iconv)->ArgName("mixed")->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(Ucs2ToUtf8_Library)->ArgName("mixed")->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(Ucs2ToUtf8_Iconv)->ArgName("mixed")->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char **argv)
{
    return zksupt::bench::runWithRatios(argc, argv, "Library", "Iconv",
                                        "CPU time ratio library / iconv (target <= 1.0):");
}
