// Costs of the disk store's entry operations with a cache that holds a quarter of the records, and
// the record file reads and writes that each operation makes.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "tavrin/storage/DiskDataStore.h"

namespace {

using Tavrin::Database::DiskDataStore;

constexpr std::uint32_t RecordSize = 64;

// A temporary store holding `count` records, ids 0 to count - 1, behind a cache of a quarter of them.
struct FilledStore {
    explicit FilledStore(std::uint32_t count)
        : store(nullptr, RecordSize, count, 0, count / 4 * RecordSize / 1024), record(RecordSize, 0x5A) {
        store.Create();
        std::uint32_t id = 0;
        for (std::uint32_t i = 0; i < count; ++i) store.Add(id, record.data());
    }
    // Ids to visit in an order that defeats the prefetcher and the cache.
    std::vector<std::uint32_t> ShuffledIds() const {
        std::vector<std::uint32_t> ids(store.GetMaxEntries());
        for (std::uint32_t i = 0; i < ids.size(); ++i) ids[i] = i;
        std::shuffle(ids.begin(), ids.end(), std::mt19937(7));
        return ids;
    }
    // Record file operations per iteration since `reads` and `writes` were taken.
    void Report(benchmark::State& state, std::uint64_t reads, std::uint64_t writes) const {
        const double iterations = static_cast<double>(std::max<std::int64_t>(state.iterations(), 1));
        state.counters["reads/op"] = static_cast<double>(store.GetRecordReads() - reads) / iterations;
        state.counters["writes/op"] = static_cast<double>(store.GetRecordWrites() - writes) / iterations;
    }
    DiskDataStore store;
    std::vector<unsigned char> record;
};

template <class Operation>
void RunShuffled(benchmark::State& state, Operation operation) {
    FilledStore filled(static_cast<std::uint32_t>(state.range(0)));
    const auto ids = filled.ShuffledIds();
    const std::uint64_t reads = filled.store.GetRecordReads();
    const std::uint64_t writes = filled.store.GetRecordWrites();
    std::size_t next = 0;
    for (auto _ : state) {
        operation(filled, ids[next]);
        next = next + 1 == ids.size() ? 0 : next + 1;
    }
    filled.Report(state, reads, writes);
}

void BM_DiskUpdate(benchmark::State& state) {
    RunShuffled(state, [](FilledStore& filled, std::uint32_t id) { filled.store.Update(id, filled.record.data()); });
}
BENCHMARK(BM_DiskUpdate)->Arg(1 << 16)->Arg(1 << 20);

void BM_DiskRead(benchmark::State& state) {
    std::vector<unsigned char> buffer(RecordSize);
    RunShuffled(state, [&buffer](FilledStore& filled, std::uint32_t id) {
        filled.store.Read(id, buffer.data());
        benchmark::DoNotOptimize(buffer.data());
    });
}
BENCHMARK(BM_DiskRead)->Arg(1 << 16)->Arg(1 << 20);

void BM_DiskAddRemove(benchmark::State& state) {
    RunShuffled(state, [](FilledStore& filled, std::uint32_t id) {
        filled.store.Remove(id);
        filled.store.Add(id, filled.record.data());
    });
}
BENCHMARK(BM_DiskAddRemove)->Arg(1 << 16)->Arg(1 << 20);

}  // namespace
