// A table made with the mutex bit serves several threads at once: writers that add, update and
// remove, and readers that look up and walk, each with its own records and keys. Afterwards the
// indexes agree with the store and every surviving record is whole.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdint>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include "WriteTestSupport.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/Record.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/schema/TableSpecification.h"
#include "tavrin/tables/ManagedTableFactory.h"

namespace Tavrin::Database {
namespace {

enum : std::uint16_t { IdField = 1, GroupField = 2, CopyField = 3 };
constexpr std::uint64_t KeysPerWriter = 400;

std::unique_ptr<ITable> MakeSharedTable() {
    const std::vector<FieldSpecification> fields = {
        FieldSpecification(IdField, "Id", FieldSpecification::UInt, 8, 0, 0),
        FieldSpecification(GroupField, "Group", FieldSpecification::UInt, 4, 0, 0),
        FieldSpecification(CopyField, "Copy", FieldSpecification::UInt, 8, 0, 0),
    };
    const std::uint32_t properties =
        TableSpecification::CreateRecordFileProperty | TableSpecification::CreateMutexProperty;
    std::unique_ptr<ITable> table(
        ManagedTableFactory::GetInstance().Create("Shared", properties, fields, 64, 64, TableSpecification::CacheAll));
    std::vector<IndexSpecification> indexes = {
        IndexSpecification("ById", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty,
                           {{IdField, 0}}),
        IndexSpecification("ByGroup", IndexSpecification::RedBlack, IndexSpecification::DuplicateProperty,
                           {{GroupField, 0}}),
    };
    table->CreateIndexes(indexes);
    return table;
}

// Every record carries its id twice; a torn or mixed-up record would show two different values.
bool IsWhole(const Record& record) {
    std::uint64_t id = 0;
    std::uint64_t copy = 0;
    const FieldList& fields = *record.GetFieldList();
    return fields.GetField(record.GetData(), IdField, id) == Status::Success &&
           fields.GetField(record.GetData(), CopyField, copy) == Status::Success && id == copy;
}

void Writer(ITable& table, std::uint64_t first, unsigned seed, std::atomic<int>& failures) {
    std::mt19937 random(seed);
    Record record(&table);
    Key key(&table, 0);
    for (int step = 0; step < 3000; ++step) {
        const std::uint64_t id = first + random() % KeysPerWriter;
        key.GetFieldList()->SetField(key.GetData(), IdField, id);
        const StatusCode found = table.GetEqual(key, record);
        if (random() % 4 == 0) {
            // Another writer of the same range may have removed it since the lookup: 6.
            const StatusCode removed = found == Status::Success ? table.RemoveRecord(key) : Status::Success;
            if (removed != Status::Success && removed != Status::NotFound) ++failures;
            continue;
        }
        if (found != Status::Success) {
            table.ResetRecord(record);
            record.GetFieldList()->SetField(record.GetData(), IdField, id);
            record.GetFieldList()->SetField(record.GetData(), CopyField, id);
        }
        // A new group moves the record in the secondary index: the key path.
        record.GetFieldList()->SetField(record.GetData(), GroupField, static_cast<std::uint32_t>(random() % 8));
        const StatusCode written = table.WriteRecord(record);
        if (written != Status::Success) {
            std::fprintf(stderr, "write of %llu: status %u\n", static_cast<unsigned long long>(id), written);
            ++failures;
        }
    }
}

void Reader(ITable& table, const std::atomic<bool>& stop, std::atomic<int>& failures) {
    Record record(&table);
    std::vector<Record> batch;
    while (!stop.load()) {
        Key byGroup(&table, 1);
        for (StatusCode s = table.GetFirst(byGroup, record); s == Status::Success; s = table.GetNext(byGroup, record)) {
            if (!IsWhole(record)) ++failures;
        }
        Key byId(&table, 0);
        batch.clear();
        if (table.GetFirst(byId, batch, 50) == Status::Success) {
            for (const Record& each : batch) failures += IsWhole(each) ? 0 : 1;
        }
        // The counts are read without the table's lock while the writers change them.
        std::uint32_t current = 0;
        std::uint32_t max = 0;
        if (table.GetCurrentRecords(current) != Status::Success || table.GetMaxRecords(max) != Status::Success ||
            current > max) {
            ++failures;
        }
    }
}

TEST(TableConcurrency, WritersAndReadersShareATableWithAMutex) {
    auto table = MakeSharedTable();
    std::atomic<int> failures{0};
    std::atomic<bool> stop{false};
    std::vector<std::thread> readers;
    for (int i = 0; i < 2; ++i) readers.emplace_back(Reader, std::ref(*table), std::cref(stop), std::ref(failures));
    std::vector<std::thread> writers;
    for (unsigned i = 0; i < 3; ++i) {
        // Writers 0 and 1 share a key range, so they race on the same records.
        writers.emplace_back(Writer, std::ref(*table), (i / 2) * KeysPerWriter, 100 + i, std::ref(failures));
    }
    for (auto& writer : writers) writer.join();
    stop.store(true);
    for (auto& reader : readers) reader.join();
    EXPECT_EQ(failures.load(), 0);

    // The store and both indexes hold the same records, each whole; the primary index makes each id once.
    const std::vector<Record> stored = Testing::StoredRecords(*table);
    EXPECT_EQ(Testing::CountOf(*table), stored.size());
    for (const Record& record : stored) EXPECT_TRUE(IsWhole(record));
    Testing::ExpectIndexesMatchStore(*table);
}

}  // namespace
}  // namespace Tavrin::Database
