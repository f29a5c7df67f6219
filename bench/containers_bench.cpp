// The red-black tree against std::map, used the way callers use the tree:
// 100,000 records on the heap, each holding its 32-bit key, stored in the tree
// by pointer and compared through the record (the callback reads the key
// behind the key pointer and behind the node's data). The map holds the same
// record pointers under their keys, its comparison called through a function
// pointer too. Insert, lookup and delete of every key in random order; after
// the table the tree's CPU time over the map's for each operation.
#include <benchmark/benchmark.h>

#include "ratio_reporter.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <random>
#include <unordered_set>
#include <vector>

#include <zksupt/containers.h>

namespace {

constexpr size_t kKeys = 100000;

// What a caller keeps in a tree: a record that begins with its key.
struct Record {
    uint32_t key;
    uint32_t flags;
    void *payload;
};

int32_t compareRecords(void *key, void *data)
{
    const uint32_t a = *static_cast<const uint32_t *>(key);
    const uint32_t b = static_cast<const Record *>(data)->key;
    return (a > b) - (a < b);
}

int32_t compareKeys(uint32_t a, uint32_t b)
{
    return (a > b) - (a < b);
}

// Read through volatiles so that neither side can inline its comparison.
RedBlackTreeCallback volatile theTreeCompare = compareRecords;
int32_t (*volatile theMapCompare)(uint32_t, uint32_t) = compareKeys;

struct ThroughPointer {
    int32_t (*compare)(uint32_t, uint32_t) = theMapCompare;
    bool operator()(uint32_t a, uint32_t b) const { return compare(a, b) < 0; }
};

using Map = std::map<uint32_t, Record *, ThroughPointer>;

// Distinct keys, one heap record each allocated in insertion order (random
// key order), and the keys shuffled again for the probes.
struct Records {
    std::vector<Record *> inserted;
    std::vector<uint32_t> probed;
    Records()
    {
        std::mt19937 random(42);
        std::unordered_set<uint32_t> seen;
        while (inserted.size() < kKeys) {
            const uint32_t key = random();
            if (!seen.insert(key).second)
                continue;
            auto *record = static_cast<Record *>(std::malloc(sizeof(Record)));
            *record = Record{key, 0, nullptr};
            inserted.push_back(record);
            probed.push_back(key);
        }
        std::shuffle(probed.begin(), probed.end(), random);
    }
    ~Records()
    {
        for (Record *record : inserted)
            std::free(record);
    }
};

const Records &records()
{
    static const Records theRecords;
    return theRecords;
}

RedBlackTree filledTree()
{
    RedBlackTree tree = nullptr;
    const RedBlackTreeCallback compare = theTreeCompare;
    for (Record *record : records().inserted)
        SMRedBlackTreeDataInsert(&tree, record, record, compare);
    return tree;
}

Map filledMap()
{
    Map map;
    for (Record *record : records().inserted)
        map.emplace(record->key, record);
    return map;
}

// Both sides must find every record under its key before they are timed.
bool sameRecords(RedBlackTree tree, const Map &map)
{
    const RedBlackTreeCallback compare = theTreeCompare;
    for (uint32_t key : records().probed) {
        const auto at = map.find(key);
        if (at == map.end() || SMRedBlackTreeDataWalk(tree, &key, compare, 3) != at->second || at->second->key != key)
            return false;
    }
    return map.size() == kKeys;
}

void checkEqual(benchmark::State &state)
{
    RedBlackTree tree = filledTree();
    const Map map = filledMap();
    if (!sameRecords(tree, map))
        state.SkipWithError("the tree and the map do not hold the same records");
    SMRedBlackTreeDelete(&tree, nullptr, nullptr);
}

void report(benchmark::State &state)
{
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kKeys));
}

void Insert_Tree(benchmark::State &state)
{
    checkEqual(state);
    for (auto _ : state) {
        RedBlackTree tree = filledTree();
        state.PauseTiming();
        SMRedBlackTreeDelete(&tree, nullptr, nullptr);
        state.ResumeTiming();
    }
    report(state);
}

void Insert_Map(benchmark::State &state)
{
    for (auto _ : state) {
        Map map = filledMap();
        state.PauseTiming();
        map.clear();
        state.ResumeTiming();
    }
    report(state);
}

void Lookup_Tree(benchmark::State &state)
{
    checkEqual(state);
    RedBlackTree tree = filledTree();
    const RedBlackTreeCallback compare = theTreeCompare;
    for (auto _ : state)
        for (uint32_t key : records().probed)
            benchmark::DoNotOptimize(SMRedBlackTreeDataWalk(tree, &key, compare, 3));
    SMRedBlackTreeDelete(&tree, nullptr, nullptr);
    report(state);
}

void Lookup_Map(benchmark::State &state)
{
    const Map map = filledMap();
    for (auto _ : state)
        for (uint32_t key : records().probed)
            benchmark::DoNotOptimize(map.find(key)->second);
    report(state);
}

void Delete_Tree(benchmark::State &state)
{
    checkEqual(state);
    const RedBlackTreeCallback compare = theTreeCompare;
    for (auto _ : state) {
        state.PauseTiming();
        RedBlackTree tree = filledTree();
        state.ResumeTiming();
        for (uint32_t key : records().probed)
            SMRedBlackTreeDataDelete(&tree, &key, compare);
        benchmark::DoNotOptimize(tree);
    }
    report(state);
}

void Delete_Map(benchmark::State &state)
{
    for (auto _ : state) {
        state.PauseTiming();
        Map map = filledMap();
        state.ResumeTiming();
        for (uint32_t key : records().probed)
            map.erase(key);
        benchmark::DoNotOptimize(map);
    }
    report(state);
}

BENCHMARK(Insert_Tree)->Unit(benchmark::kMillisecond);
BENCHMARK(Insert_Map)->Unit(benchmark::kMillisecond);
BENCHMARK(Lookup_Tree)->Unit(benchmark::kMillisecond);
BENCHMARK(Lookup_Map)->Unit(benchmark::kMillisecond);
BENCHMARK(Delete_Tree)->Unit(benchmark::kMillisecond);
BENCHMARK(Delete_Map)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char **argv)
{
    return zksupt::bench::runWithRatios(argc, argv, "Tree", "Map", "CPU time of the red-black tree / std::map:");
}
