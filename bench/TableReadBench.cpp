// The read paths of a table at 1,000,000 records inserted in a random order, one record per call
// beside the batch forms: GetEqual of one key and of 64, a walk in key order, and a prefix walk over
// a Duplicate index whose two values match half the records each. Items are records (or keys).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <numeric>
#include <random>
#include <vector>

#include "tavrin/records/Key.h"
#include "tavrin/records/Record.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/schema/TableSpecification.h"
#include "tavrin/tables/ManagedTableFactory.h"

namespace {

using namespace Tavrin;
using namespace Tavrin::Database;

constexpr std::uint32_t RecordCount = 1000000;
constexpr std::uint32_t Groups = 2;
enum : std::uint16_t { IdField = 1, GroupField = 2, NameField = 3 };

std::vector<std::uint64_t> Shuffled(std::uint32_t seed) {
    std::vector<std::uint64_t> ids(RecordCount);
    std::iota(ids.begin(), ids.end(), 0);
    std::shuffle(ids.begin(), ids.end(), std::mt19937_64(seed));
    return ids;
}

// One table for every benchmark: made and filled on first use.
ITable& SharedTable() {
    static std::unique_ptr<ITable> table = [] {
        const std::vector<FieldSpecification> fields = {
            FieldSpecification(IdField, "Id", FieldSpecification::UInt, 8, 0, 0),
            FieldSpecification(GroupField, "Group", FieldSpecification::UInt, 4, 0, 0),
            FieldSpecification(NameField, "Name", FieldSpecification::TextArray, 44, 0, 0),
        };
        std::unique_ptr<ITable> made(ManagedTableFactory::GetInstance().Create(
            "Read", TableSpecification::CreateRecordFileProperty, fields, RecordCount + 16, RecordCount / 2,
            TableSpecification::CacheAll));
        std::vector<IndexSpecification> indexes = {
            IndexSpecification("ById", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty,
                               {{IdField, 0}}),
            IndexSpecification("ByGroup", IndexSpecification::RedBlack, IndexSpecification::DuplicateProperty,
                               {{GroupField, 0}})};
        made->CreateIndexes(indexes);
        Record record(made.get());
        for (const std::uint64_t id : Shuffled(1)) {
            made->ResetRecord(record);
            record.GetFieldList()->SetField(record.GetData(), IdField, id);
            record.GetFieldList()->SetField(record.GetData(), GroupField, static_cast<std::uint32_t>(id % Groups));
            made->WriteRecord(record);
        }
        return made;
    }();
    return *table;
}

void BM_GetEqualOne(benchmark::State& state) {
    ITable& table = SharedTable();
    const std::vector<std::uint64_t> ids = Shuffled(2);
    Key key(&table, 0);
    Record record(&table);
    std::size_t next = 0;
    for (auto _ : state) {
        key.GetFieldList()->SetField(key.GetData(), IdField, ids[next++ % ids.size()]);
        benchmark::DoNotOptimize(table.GetEqual(key, record));
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}
BENCHMARK(BM_GetEqualOne);

void BM_GetEqualBatch64(benchmark::State& state) {
    ITable& table = SharedTable();
    const std::vector<std::uint64_t> ids = Shuffled(2);
    std::vector<Key> keys(64, Key(&table, 0));
    std::vector<unsigned char> statuses;
    std::vector<Record> records;
    std::size_t next = 0;
    for (auto _ : state) {
        for (Key& key : keys) key.GetFieldList()->SetField(key.GetData(), IdField, ids[next++ % ids.size()]);
        statuses.clear();
        records.clear();
        benchmark::DoNotOptimize(table.GetEqual(keys, statuses, records));
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * keys.size()));
}
BENCHMARK(BM_GetEqualBatch64);

// A whole walk in key order, one record per call.
void BM_ScanOnePerCall(benchmark::State& state) {
    ITable& table = SharedTable();
    Key key(&table, 0);
    Record record(&table);
    for (auto _ : state) {
        for (StatusCode status = table.GetFirst(key, record); status == Status::Success;
             status = table.GetNext(key, record)) {
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * RecordCount));
}
BENCHMARK(BM_ScanOnePerCall)->Unit(benchmark::kMillisecond);

// The same walk in batches of 1,024 records into one reused vector.
void BM_ScanBatch(benchmark::State& state) {
    ITable& table = SharedTable();
    Key key(&table, 0);
    std::vector<Record> batch;
    batch.reserve(1024);
    for (auto _ : state) {
        batch.clear();
        for (StatusCode status = table.GetFirst(key, batch, 1024); status == Status::Success;
             status = table.GetNext(key, batch, 1024)) {
            batch.clear();
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * RecordCount));
}
BENCHMARK(BM_ScanBatch)->Unit(benchmark::kMillisecond);

// The first and the last of 500,000 matches of one group value.
void BM_GetFirstEqualOfManyDuplicates(benchmark::State& state) {
    ITable& table = SharedTable();
    Key key(&table, 1);
    Record record(&table);
    std::uint32_t group = 0;
    for (auto _ : state) {
        key.GetFieldList()->SetField(key.GetData(), GroupField, group);
        group = (group + 1) % Groups;
        benchmark::DoNotOptimize(state.range(0) == 0 ? table.GetFirstEqual(key, record, GroupField, 0xFFFFFFFF)
                                                     : table.GetLastEqual(key, record, GroupField, 0xFFFFFFFF));
    }
}
BENCHMARK(BM_GetFirstEqualOfManyDuplicates)->Arg(0)->Arg(1);

// A prefix walk over the 500,000 matches of one group, in batches of 1,024 records.
void BM_PrefixWalkBatch(benchmark::State& state) {
    ITable& table = SharedTable();
    Key key(&table, 1);
    std::vector<Record> batch;
    batch.reserve(1024);
    for (auto _ : state) {
        key.GetFieldList()->SetField(key.GetData(), GroupField, std::uint32_t{1});
        batch.clear();
        for (StatusCode status = table.GetFirstEqual(key, batch, GroupField, 0xFFFFFFFF, 1024);
             status == Status::Success; status = table.GetNextEqual(key, batch, GroupField, 0xFFFFFFFF, 1024)) {
            batch.clear();
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * RecordCount / Groups));
}
BENCHMARK(BM_PrefixWalkBatch)->Unit(benchmark::kMillisecond);

}  // namespace
