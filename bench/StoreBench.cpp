// Costs of the memory store's entry operations, which should not depend on the store's size.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "tavrin/storage/MemoryDataStore.h"

namespace {

using Tavrin::Database::MemoryDataStore;

constexpr std::uint32_t RecordSize = 128;

// A temporary store holding `count` records, ids 0 to count - 1.
struct FilledStore {
    explicit FilledStore(std::uint32_t count) : store(nullptr, RecordSize, count, 0), record(RecordSize, 0x5A) {
        store.Create();
        std::uint32_t id = 0;
        for (std::uint32_t i = 0; i < count; ++i) store.Add(id, record.data());
    }
    // Ids to visit in an order that defeats the prefetcher.
    std::vector<std::uint32_t> ShuffledIds() const {
        std::vector<std::uint32_t> ids(store.GetMaxEntries());
        for (std::uint32_t i = 0; i < ids.size(); ++i) ids[i] = i;
        std::shuffle(ids.begin(), ids.end(), std::mt19937(7));
        return ids;
    }
    MemoryDataStore store;
    std::vector<unsigned char> record;
};

void BM_AddRemove(benchmark::State& state) {
    FilledStore filled(static_cast<std::uint32_t>(state.range(0)));
    filled.store.Remove(0);
    std::uint32_t id = 0;
    for (auto _ : state) {
        filled.store.Add(id, filled.record.data());
        filled.store.Remove(id);
    }
}
BENCHMARK(BM_AddRemove)->Arg(1 << 10)->Arg(1 << 18);

void BM_Update(benchmark::State& state) {
    FilledStore filled(static_cast<std::uint32_t>(state.range(0)));
    const auto ids = filled.ShuffledIds();
    std::size_t next = 0;
    for (auto _ : state) {
        filled.store.Update(ids[next], filled.record.data());
        next = next + 1 == ids.size() ? 0 : next + 1;
    }
}
BENCHMARK(BM_Update)->Arg(1 << 10)->Arg(1 << 18);

void BM_Read(benchmark::State& state) {
    FilledStore filled(static_cast<std::uint32_t>(state.range(0)));
    const auto ids = filled.ShuffledIds();
    std::vector<unsigned char> buffer(RecordSize);
    std::size_t next = 0;
    for (auto _ : state) {
        filled.store.Read(ids[next], buffer.data());
        benchmark::DoNotOptimize(buffer.data());
        next = next + 1 == ids.size() ? 0 : next + 1;
    }
}
BENCHMARK(BM_Read)->Arg(1 << 10)->Arg(1 << 18);

void BM_GetEntry(benchmark::State& state) {
    FilledStore filled(static_cast<std::uint32_t>(state.range(0)));
    const auto ids = filled.ShuffledIds();
    unsigned char* record = nullptr;
    std::size_t next = 0;
    for (auto _ : state) {
        filled.store.GetEntry(ids[next], record);
        benchmark::DoNotOptimize(record);
        next = next + 1 == ids.size() ? 0 : next + 1;
    }
}
BENCHMARK(BM_GetEntry)->Arg(1 << 10)->Arg(1 << 18);

// Adds to a store that grows by 1024 entries whenever it is full: the cost of growth spread over Add.
void BM_AddWithGrowth(benchmark::State& state) {
    const std::vector<unsigned char> record(RecordSize, 0x5A);
    for (auto _ : state) {
        MemoryDataStore store(nullptr, RecordSize, 1024, 1024);
        store.Create();
        std::uint32_t id = 0;
        for (std::int64_t i = 0; i < state.range(0); ++i) store.Add(id, record.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_AddWithGrowth)->Arg(1 << 16);

}  // namespace
