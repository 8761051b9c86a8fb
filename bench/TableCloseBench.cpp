// The cost of closing a table: the delete of a managed table that holds 1,000,000 records of W1's
// shape (key UInt 8, counter UInt 4, number SInt 8, text TextArray 44, a primary unique red-black
// tree index on the key), in a directory (Arg 1: a record file and a tree file) or in temporary
// mapped files (Arg 0). Each iteration makes and fills a fresh table untimed and times the delete
// alone; `file_bytes` is the size of the directory's files at the close. An iteration takes
// seconds, so there is one per run: repeat with --benchmark_repetitions=5. Files go to a fresh
// folder in TAVRIN_BENCH_DIR (default /tmp), removed afterwards.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tavrin/records/Record.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/schema/TableSpecification.h"
#include "tavrin/tables/ManagedTableFactory.h"

namespace {

using namespace Tavrin;
using namespace Tavrin::Database;

constexpr std::uint32_t RecordCount = 1000000;
enum : std::uint16_t { KeyField = 1, CounterField = 2, NumberField = 3, TextField = 4 };

std::filesystem::path RunFolder() {
    const char* parent = std::getenv("TAVRIN_BENCH_DIR");
    return std::filesystem::path(parent != nullptr && *parent != '\0' ? parent : "/tmp") /
           ("tavrin-close-" + std::to_string(::getpid()));
}

std::unique_ptr<ITable> MakeTable(const std::string& directory) {
    const std::vector<FieldSpecification> fields = {
        FieldSpecification(KeyField, "Key", FieldSpecification::UInt, 8, 0, 0),
        FieldSpecification(CounterField, "Counter", FieldSpecification::UInt, 4, 0, 0),
        FieldSpecification(NumberField, "Number", FieldSpecification::SInt, 8, 0, 0),
        FieldSpecification(TextField, "Text", FieldSpecification::TextArray, 44, 0, 0),
    };
    const auto& factory = ManagedTableFactory::GetInstance();
    constexpr std::uint32_t properties = TableSpecification::CreateRecordFileProperty;
    std::unique_ptr<ITable> table(
        directory.empty() ? factory.Create("Close", properties, fields, RecordCount, RecordCount / 2,
                                           TableSpecification::CacheAll)
                          : factory.Create("Close", directory, properties, fields, RecordCount, RecordCount / 2,
                                           TableSpecification::CacheAll));
    std::vector<IndexSpecification> indexes = {IndexSpecification(
        "ByKey", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty, {{KeyField, 0}})};
    table->CreateIndexes(indexes);
    return table;
}

bool Populate(ITable& table) {
    Record record(&table);
    const FieldList& fields = *record.GetFieldList();
    const std::string text(44, '.');
    for (std::uint64_t key = 0; key < RecordCount; ++key) {
        table.ResetRecord(record);
        fields.SetField(record.GetData(), KeyField, key);
        fields.SetField(record.GetData(), CounterField, static_cast<std::uint32_t>(0));
        fields.SetField(record.GetData(), NumberField, static_cast<std::int64_t>(key) - 500000);
        fields.SetField(record.GetData(), TextField, text);
        if (table.WriteRecord(record) != Status::Success) return false;
    }
    return true;
}

std::uint64_t FolderBytes(const std::filesystem::path& folder) {
    std::uint64_t bytes = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_regular_file()) bytes += entry.file_size();
    }
    return bytes;
}

void BM_Close(benchmark::State& state) {
    const bool inDirectory = state.range(0) != 0;
    const std::filesystem::path folder = RunFolder();
    double fileBytes = 0;
    for (auto _ : state) {
        state.PauseTiming();  // the CPU column then counts the close alone
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
        auto table = MakeTable(inDirectory ? folder.string() : std::string());
        if (!Populate(*table)) {
            state.ResumeTiming();
            state.SkipWithError("write failed");
            break;
        }
        if (inDirectory) fileBytes = static_cast<double>(FolderBytes(folder));
        state.ResumeTiming();
        const auto start = std::chrono::steady_clock::now();
        table.reset();
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(elapsed.count());
    }
    std::filesystem::remove_all(folder);
    state.counters["file_bytes"] = inDirectory ? fileBytes : 0;  // every case has it, as CSV output needs
    state.SetLabel(inDirectory ? "directory" : "temporary files");
}
BENCHMARK(BM_Close)->Arg(0)->Arg(1)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
