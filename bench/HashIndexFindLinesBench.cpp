// Find on a hash index of N keys (one UInt 8 field, the key of workload W1) in temporary files, at
// N = 100,000, 1,000,000 and 4,000,000, in a shuffled order: the time per Find and the cache lines
// of the mapped files that each Find reads, counted by walking the same chain beside it:
//   lines          bucket slot and the entries walked, 4 bytes of next link through the key image,
//                  each line counted once; these are the lines that depend on N
//   block_lines    the two blocks (bucket count and split index, entry count), the same lines for
//                  every Find, always cached
//   entries        entries compared per Find
// Under valgrind, `--tool=callgrind --cache-sim=yes --toggle-collect='*HashIndex::Find*'` gives the
// D1 and LL misses of the Finds themselves.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <set>
#include <vector>

#include "tavrin/indexes/HashIndex.h"
#include "tavrin/indexes/HashIndexBucketHandler.h"
#include "tavrin/indexes/HashIndexEntryHandler.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/ManagedFieldListFactory.h"

namespace {

using namespace Tavrin;
using namespace Tavrin::Database;

constexpr std::uint16_t KeyField = 1;
constexpr std::uintptr_t LineSize = 64;
// Data areas start behind the 17-byte header of a mapped file, whose mapping is page aligned.
constexpr std::uintptr_t HeaderSize = 17;

struct Index {
    explicit Index(std::uint32_t n) {
        const std::vector<FieldSpecification> fields{FieldSpecification(KeyField, "Key", FieldSpecification::UInt, 8, 0, 0)};
        table.reset(ManagedFieldListFactory::GetInstance().Create(fields));
        const IndexSpecification specification("ByKey", IndexSpecification::Hash,
                                               IndexSpecification::PrimaryUniqueProperty,
                                               {IndexSpecification::Field(KeyField, 0)});
        // As a table of maxRecords N makes it: N entries up front.
        index = std::make_unique<HashIndex>(specification, *table, ManagedFieldListFactory::GetInstance(), n, n / 2);
        index->Create();
        order.resize(n);
        for (std::uint32_t i = 0; i < n; ++i) order[i] = i;
        std::shuffle(order.begin(), order.end(), std::mt19937_64(42));
        Key key;
        for (const std::uint64_t k : order) {
            SetKey(key, k);
            if (index->Add(key, static_cast<std::uint32_t>(k)) != Status::Success) std::abort();
        }
        std::shuffle(order.begin(), order.end(), std::mt19937_64(43));
    }

    void SetKey(Key& key, std::uint64_t k) const {
        const FieldList& list = *index->GetFieldList();
        list.ResetData(key.GetData());
        list.SetField(key.GetData(), KeyField, k);
    }

    // The lines of the mapped files that the Find of `key` reads, and the entries it compares.
    void CountLines(const Key& key, std::set<std::uintptr_t>& lines, std::uint32_t& entries) const {
        const HashIndex::BucketHandler& buckets = index->GetBucketHandler();
        const HashIndex::EntryHandler& handler = index->GetEntryHandler();
        const std::uint32_t bucket = buckets.GetBucket(key.GetData());
        // The slot's byte offset in its file: header, block, slots before it.
        const std::uintptr_t slot = HeaderSize + HashIndex::BucketHandler::BlockSize +
                                    std::uintptr_t{HashIndex::BucketHandler::SlotSize} * bucket;
        lines.insert(slot / LineSize);
        lines.insert((slot + 3) / LineSize);  // the head only
        const std::uintptr_t entryBase = (std::uintptr_t{1} << 48) + HeaderSize + HashIndex::EntryHandler::BlockSize;
        const std::uint32_t keySize = index->GetKeySize();
        for (std::uint32_t entry = buckets.GetHead(bucket); entry != HashIndex::NoEntry; entry = handler.GetNext(entry)) {
            ++entries;
            const std::uintptr_t first = entryBase + entry + HashIndex::EntryHandler::NextOffset;
            const std::uintptr_t last = entryBase + entry + HashIndex::EntryHandler::EntryHeaderSize + keySize - 1;
            for (std::uintptr_t line = first / LineSize; line <= last / LineSize; ++line) lines.insert(line);
            if (std::equal(key.GetData(), key.GetData() + keySize, handler.GetKey(entry))) break;
        }
    }

    std::unique_ptr<FieldList> table;
    std::unique_ptr<HashIndex> index;
    std::vector<std::uint64_t> order;
};

Index& IndexOf(std::uint32_t n) {
    static std::unique_ptr<Index> index;
    if (!index || index->order.size() != n) {
        index.reset();
        index = std::make_unique<Index>(n);
    }
    return *index;
}

void BM_HashFind(benchmark::State& state) {
    Index& index = IndexOf(static_cast<std::uint32_t>(state.range(0)));
    Key key;
    index.SetKey(key, 0);
    std::size_t next = 0;
    std::uint32_t recordId = 0;
    for (auto _ : state) {
        index.SetKey(key, index.order[next]);
        if (++next == index.order.size()) next = 0;
        if (index.index->Find(key, recordId) != Status::Success) state.SkipWithError("key not found");
        benchmark::DoNotOptimize(recordId);
    }
    // The lines of every key's Find, once, outside the timed loop.
    std::uint64_t lines = 0, entries = 0;
    for (const std::uint64_t k : index.order) {
        std::set<std::uintptr_t> touched;
        std::uint32_t walked = 0;
        index.SetKey(key, k);
        index.CountLines(key, touched, walked);
        lines += touched.size();
        entries += walked;
    }
    const double finds = static_cast<double>(index.order.size());
    state.counters["lines"] = static_cast<double>(lines) / finds;
    state.counters["block_lines"] = 2;
    state.counters["entries"] = static_cast<double>(entries) / finds;
    state.counters["buckets_per_key"] =
        static_cast<double>(index.index->GetBucketHandler().GetBucketsInUse()) / finds;
}

BENCHMARK(BM_HashFind)->Arg(100000)->Arg(1000000)->Arg(4000000)->Unit(benchmark::kNanosecond);

}  // namespace
