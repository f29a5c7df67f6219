// The red-black tree against std::map: insert, lookup and delete of 100,000
// random integer keys, both ordering through the same comparison function
// called by pointer. The keys travel as the data pointers themselves, so
// neither side pays for an extra indirection to reach a key.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <random>
#include <unordered_set>
#include <vector>

#include <zksupt/containers.h>

namespace {

constexpr size_t kKeys = 100000;

int32_t compareKeys(void *key, void *data)
{
    const auto a = reinterpret_cast<uintptr_t>(key);
    const auto b = reinterpret_cast<uintptr_t>(data);
    return (a > b) - (a < b);
}

// Read through a volatile so that std::map cannot inline the comparison either.
RedBlackTreeCallback volatile theCompare = compareKeys;

struct ThroughPointer {
    RedBlackTreeCallback compare = theCompare;
    bool operator()(uintptr_t a, uintptr_t b) const
    {
        return compare(reinterpret_cast<void *>(a), reinterpret_cast<void *>(b)) < 0;
    }
};

using Map = std::map<uintptr_t, void *, ThroughPointer>;

// Distinct non-zero keys in random order, and the same keys shuffled again.
struct Keys {
    std::vector<void *> inserted, probed;
    Keys()
    {
        std::mt19937 random(42);
        std::unordered_set<uint32_t> seen;
        while (inserted.size() < kKeys) {
            const uint32_t key = random() | 1u;
            if (seen.insert(key).second)
                inserted.push_back(reinterpret_cast<void *>(static_cast<uintptr_t>(key)));
        }
        probed = inserted;
        std::shuffle(probed.begin(), probed.end(), random);
    }
};

const Keys &keys()
{
    static const Keys theKeys;
    return theKeys;
}

RedBlackTree filledTree()
{
    RedBlackTree tree = nullptr;
    for (void *key : keys().inserted)
        SMRedBlackTreeDataInsert(&tree, key, key, compareKeys);
    return tree;
}

Map filledMap()
{
    Map map;
    for (void *key : keys().inserted)
        map.emplace(reinterpret_cast<uintptr_t>(key), key);
    return map;
}

void TreeInsert(benchmark::State &state)
{
    for (auto _ : state) {
        RedBlackTree tree = filledTree();
        state.PauseTiming();
        SMRedBlackTreeDelete(&tree, nullptr, nullptr);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kKeys));
}

void MapInsert(benchmark::State &state)
{
    for (auto _ : state) {
        Map map = filledMap();
        state.PauseTiming();
        map.clear();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kKeys));
}

void TreeLookup(benchmark::State &state)
{
    RedBlackTree tree = filledTree();
    for (auto _ : state)
        for (void *key : keys().probed)
            benchmark::DoNotOptimize(SMRedBlackTreeDataWalk(tree, key, compareKeys, 3));
    SMRedBlackTreeDelete(&tree, nullptr, nullptr);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kKeys));
}

void MapLookup(benchmark::State &state)
{
    Map map = filledMap();
    for (auto _ : state)
        for (void *key : keys().probed)
            benchmark::DoNotOptimize(map.find(reinterpret_cast<uintptr_t>(key)));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kKeys));
}

void TreeDelete(benchmark::State &state)
{
    for (auto _ : state) {
        state.PauseTiming();
        RedBlackTree tree = filledTree();
        state.ResumeTiming();
        for (void *key : keys().probed)
            SMRedBlackTreeDataDelete(&tree, key, compareKeys);
        benchmark::DoNotOptimize(tree);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kKeys));
}

void MapDelete(benchmark::State &state)
{
    for (auto _ : state) {
        state.PauseTiming();
        Map map = filledMap();
        state.ResumeTiming();
        for (void *key : keys().probed)
            map.erase(reinterpret_cast<uintptr_t>(key));
        benchmark::DoNotOptimize(map);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kKeys));
}

}  // namespace

BENCHMARK(TreeInsert)->Unit(benchmark::kMillisecond);
BENCHMARK(MapInsert)->Unit(benchmark::kMillisecond);
BENCHMARK(TreeLookup)->Unit(benchmark::kMillisecond);
BENCHMARK(MapLookup)->Unit(benchmark::kMillisecond);
BENCHMARK(TreeDelete)->Unit(benchmark::kMillisecond);
BENCHMARK(MapDelete)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
