// Costs of a table's write and read paths: WriteRecord (an add, and an update that keeps its key
// fields and so takes the fast path) and GetEqual by primary key, on a managed table without files
// holding 100,000 records, with one index (the primary) and with three (two more secondary ones).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "tavrin/records/Key.h"
#include "tavrin/records/Record.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/schema/TableSpecification.h"
#include "tavrin/tables/ManagedTableFactory.h"

namespace {

using namespace Tavrin;
using namespace Tavrin::Database;

constexpr std::uint32_t RecordCount = 100000;
enum : std::uint16_t { IdField = 1, GroupField = 2, CounterField = 3, NameField = 4 };

std::unique_ptr<ITable> MakeTable(int indexCount) {
    const std::vector<FieldSpecification> fields = {
        FieldSpecification(IdField, "Id", FieldSpecification::UInt, 8, 0, 0),
        FieldSpecification(GroupField, "Group", FieldSpecification::UInt, 4, 0, 0),
        FieldSpecification(CounterField, "Counter", FieldSpecification::UInt, 4, 0, 0),
        FieldSpecification(NameField, "Name", FieldSpecification::TextArray, 44, 0, 0),
    };
    std::unique_ptr<ITable> table(ManagedTableFactory::GetInstance().Create(
        "Bench", TableSpecification::CreateRecordFileProperty, fields, RecordCount + 16, RecordCount / 2,
        TableSpecification::CacheAll));
    std::vector<IndexSpecification> indexes = {IndexSpecification(
        "ById", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty, {{IdField, 0}})};
    if (indexCount == 3) {
        indexes.emplace_back("ByGroup", IndexSpecification::RedBlack, IndexSpecification::DuplicateProperty,
                             std::vector<IndexSpecification::Field>{{GroupField, 0}});
        indexes.emplace_back("ByName", IndexSpecification::RedBlack, IndexSpecification::UniqueProperty,
                             std::vector<IndexSpecification::Field>{{NameField, 0}, {IdField, 0}});
    }
    table->CreateIndexes(indexes);
    return table;
}

void Fill(Record& record, std::uint64_t id) {
    const FieldList& fields = *record.GetFieldList();
    fields.SetField(record.GetData(), IdField, id);
    fields.SetField(record.GetData(), GroupField, static_cast<std::uint32_t>(id % 100));
    fields.SetField(record.GetData(), CounterField, static_cast<std::uint32_t>(0));
    fields.SetField(record.GetData(), NameField, std::string(44, static_cast<char>('a' + id % 26)));
}

void Populate(ITable& table) {
    Record record(&table);
    for (std::uint64_t id = 0; id < RecordCount; ++id) {
        table.ResetRecord(record);
        Fill(record, id * 2);  // even ids; odd ones stay free for the add benchmark
        table.WriteRecord(record);
    }
}

// One add of a new record and the removal that undoes it, so the table stays the same size.
void BM_WriteRecordAdd(benchmark::State& state) {
    auto table = MakeTable(static_cast<int>(state.range(0)));
    Populate(*table);
    Record record(table.get());
    Key key(table.get(), 0);
    std::uint64_t id = 1;
    for (auto _ : state) {
        table->ResetRecord(record);
        Fill(record, id);
        if (table->WriteRecord(record) != Status::Success) state.SkipWithError("write failed");
        key.GetFieldList()->SetField(key.GetData(), IdField, id);
        table->RemoveRecord(key);
        id = (id + 2) % (2 * RecordCount);
    }
    state.SetLabel("add + remove");
}
BENCHMARK(BM_WriteRecordAdd)->Arg(1)->Arg(3);

// An update of a non-key field of a record read by key: the fast path, which touches no index.
void BM_WriteRecordUpdate(benchmark::State& state) {
    auto table = MakeTable(static_cast<int>(state.range(0)));
    Populate(*table);
    Record record(table.get());
    Key key(table.get(), 0);
    std::uint64_t id = 0;
    std::uint32_t counter = 0;
    for (auto _ : state) {
        key.GetFieldList()->SetField(key.GetData(), IdField, id);
        table->GetEqual(key, record);
        record.GetFieldList()->SetField(record.GetData(), CounterField, ++counter);
        if (table->WriteRecord(record) != Status::Success) state.SkipWithError("update failed");
        id = (id + 2 * 7919) % (2 * RecordCount);
    }
    state.SetLabel("get + update");
}
BENCHMARK(BM_WriteRecordUpdate)->Arg(1)->Arg(3);

void BM_GetEqual(benchmark::State& state) {
    auto table = MakeTable(static_cast<int>(state.range(0)));
    Populate(*table);
    Record record(table.get());
    Key key(table.get(), 0);
    std::uint64_t id = 0;
    for (auto _ : state) {
        key.GetFieldList()->SetField(key.GetData(), IdField, id);
        if (table->GetEqual(key, record) != Status::Success) state.SkipWithError("not found");
        id = (id + 2 * 7919) % (2 * RecordCount);
    }
}
BENCHMARK(BM_GetEqual)->Arg(1)->Arg(3);

}  // namespace
