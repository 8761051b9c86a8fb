// The cost of ITable::CheckIntegrity on a table of 1,000,000 records (key UInt 8, number SInt 8,
// text TextArray 44) with two indexes: a primary unique red-black tree on the key and a unique hash
// index on the number. The table lives in temporary mapped files and is made and filled once,
// untimed; each iteration is one whole check (the tree walked in key order, the store walked and
// every record looked up through the hash index). Run with --benchmark_repetitions=3.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tavrin/records/Record.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/tables/ManagedTableFactory.h"

namespace {

using namespace Tavrin;
using namespace Tavrin::Database;

constexpr std::uint32_t RecordCount = 1000000;
enum : std::uint16_t { KeyField = 1, NumberField = 2, TextField = 3 };

std::unique_ptr<ITable> MakeFilledTable() {
    const std::vector<FieldSpecification> fields = {
        FieldSpecification(KeyField, "Key", FieldSpecification::UInt, 8, 0, 0),
        FieldSpecification(NumberField, "Number", FieldSpecification::SInt, 8, 0, 0),
        FieldSpecification(TextField, "Text", FieldSpecification::TextArray, 44, 0, 0)};
    std::unique_ptr<ITable> table(
        ManagedTableFactory::GetInstance().Create("Checked", 1, fields, RecordCount, 0xFFFFFFFF, 0xFFFFFFFF));
    std::vector<IndexSpecification> indexes = {
        IndexSpecification("ByKey", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty,
                           {IndexSpecification::Field(KeyField, 0)}),
        IndexSpecification("ByNumber", IndexSpecification::Hash, IndexSpecification::UniqueProperty,
                           {IndexSpecification::Field(NumberField, 0)})};
    table->CreateIndexes(indexes);
    Record record(table.get());
    const std::string text(44, 'x');
    for (std::uint64_t i = 0; i < RecordCount; ++i) {
        table->ResetRecord(record);
        const std::uint64_t key = (i * 2654435761u) % 1000003;  // not in key order
        record.GetFieldList()->SetField(record.GetData(), KeyField, key);
        record.GetFieldList()->SetField(record.GetData(), NumberField, static_cast<std::int64_t>(i) - 500000);
        record.GetFieldList()->SetField(record.GetData(), TextField, text);
        if (table->WriteRecord(record) != Status::Success) return nullptr;
    }
    return table;
}

void CheckIntegrityOfAMillionRecords(benchmark::State& state) {
    const std::unique_ptr<ITable> table = MakeFilledTable();
    if (!table) {
        state.SkipWithError("the table could not be filled");
        return;
    }
    for (auto _ : state) table->CheckIntegrity();
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * RecordCount);
}
BENCHMARK(CheckIntegrityOfAMillionRecords)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
