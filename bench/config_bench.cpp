// The INI engine on a file of 2,000 lines (40 sections of 49 keys): reading
// the last key of the last section, and writing one key of the middle
// section, which copies and replaces the whole file. Each reports operations
// per second, beside its peer: reading the file whole with fread, and
// copying it to a new file and renaming that over it, the least any reader
// and any safe rewriter must do. Every INI call takes the file's
// cross-process lock, so the library runs attached in an installation of
// its own.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <unistd.h>

#include <zksupt/config.h>

#include "bench_sandbox.h"

namespace {

struct Fixture {
    std::string dir;
    std::string path;
    std::string text;

    Fixture() : dir(zksupt::bench::installation().root())
    {
        path = dir + "/bench.ini";
        for (int section = 0; section < 40; ++section) {
            text += "[section" + std::to_string(section) + "]\n";
            for (int key = 0; key < 49; ++key)
                text += "key" + std::to_string(key) + "=value of key " + std::to_string(key) + " in " +
                        std::to_string(section) + "\n";
            text += "\n";
        }
        std::FILE *file = std::fopen(path.c_str(), "w");
        std::fwrite(text.data(), 1, text.size(), file);
        std::fclose(file);
    }
    ~Fixture()
    {
        ::unlink(path.c_str());
        ::unlink((path + ".copy").c_str());
    }
};

Fixture &fixture()
{
    static Fixture f;
    return f;
}

void ReadKey(benchmark::State &state)
{
    const char *path = fixture().path.c_str();
    char value[64];
    for (auto _ : state) {
        uint32_t size = sizeof value;
        benchmark::DoNotOptimize(SMReadINIPathFileValue("section39", "key48", 1, value, &size, nullptr, 0, path, 1));
    }
    state.SetItemsProcessed(state.iterations());
}

void ReadWholeFile(benchmark::State &state)
{
    const char *path = fixture().path.c_str();
    std::vector<char> buffer(fixture().text.size() + 1);
    for (auto _ : state) {
        std::FILE *file = std::fopen(path, "r");
        benchmark::DoNotOptimize(std::fread(buffer.data(), 1, buffer.size(), file));
        std::fclose(file);
    }
    state.SetItemsProcessed(state.iterations());
}

void WriteKey(benchmark::State &state)
{
    const char *path = fixture().path.c_str();
    int round = 0;
    for (auto _ : state) {
        const std::string value = "written " + std::to_string(++round % 10);
        benchmark::DoNotOptimize(SMWriteINIPathFileValue("section20", "key24", 1, value.c_str(),
                                                         static_cast<uint32_t>(value.size() + 1), path, 1));
    }
    state.SetItemsProcessed(state.iterations());
}

void CopyAndRename(benchmark::State &state)
{
    const std::string &path = fixture().path;
    const std::string copy = path + ".copy";
    std::vector<char> buffer(fixture().text.size() + 1);
    for (auto _ : state) {
        std::FILE *in = std::fopen(path.c_str(), "r");
        const std::size_t got = std::fread(buffer.data(), 1, buffer.size(), in);
        std::fclose(in);
        std::FILE *out = std::fopen(copy.c_str(), "w");
        std::fwrite(buffer.data(), 1, got, out);
        std::fclose(out);
        std::rename(copy.c_str(), path.c_str());
    }
    state.SetItemsProcessed(state.iterations());
}

}  // namespace

BENCHMARK(ReadKey);
BENCHMARK(ReadWholeFile);
BENCHMARK(WriteKey);
BENCHMARK(CopyAndRename);

BENCHMARK_MAIN();
