// An outside program with headers of its own named as some of the library's, built against the
// installed package: a table in a directory, a record written and found again.
#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

#include "base/Status.h"
#include "records/Record.h"
#include "tables/Table.h"

#include "TavrinDatabase.h"

using namespace Tavrin::Database;

int main(int argc, char** argv) {
    static_assert(TAVRIN_VERSION_MAJOR == 0 && TAVRIN_VERSION_MINOR >= 2);
    const consumer::Table own{1};
    const std::filesystem::path directory = std::filesystem::path(argc > 1 ? argv[1] : ".") / "consumer-table";
    std::filesystem::remove_all(directory);
    std::filesystem::create_directories(directory);

    const std::vector<FieldSpecification> fields = {FieldSpecification(1, "Id", FieldSpecification::UInt, 4, 0, 0)};
    std::unique_ptr<ITable> table(
        ManagedTableFactory::GetInstance().Create("Things", directory.string(), 1, fields, 4, 4, 0xFFFFFFFF));
    std::vector<IndexSpecification> indexes = {IndexSpecification(
        "ById", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty, {IndexSpecification::Field(1, 0)})};
    table->CreateIndexes(indexes);

    Record record(table.get());
    if (record.GetFieldList()->SetField(record.GetData(), 1, std::uint32_t{7}) != Tavrin::Status::Success) return 1;
    if (table->WriteRecord(record) != Tavrin::Status::Success) return 2;
    Key key(0, record);
    Record found;
    if (table->GetEqual(key, found) != Tavrin::Status::Success) return 3;
    std::printf("installed package: table with %d own row(s) beside it, record %u found\n", own.rows,
                found.GetRecordId());
    return 0;
}
