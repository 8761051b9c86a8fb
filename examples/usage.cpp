// A table in a directory with a primary and a secondary index: records written, found by key,
// walked in key order, and the table opened again from the name of its record file.
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

#include "TavrinDatabase.h"

using namespace Tavrin::Database;

enum : std::uint16_t { Id = 1, City = 2 };

std::unique_ptr<ITable> CreateCustomers(const std::string& directory) {
    const std::vector<FieldSpecification> fields = {
        FieldSpecification(Id, "Id", FieldSpecification::UInt, 4, 0, 0),
        FieldSpecification(City, "City", FieldSpecification::TextString, 24, 0, 0),
    };
    // Bit 0: create or open the record file now; bit 1: a mutex, so threads may share the table.
    std::unique_ptr<ITable> table(ManagedTableFactory::GetInstance().Create(
        "Customers", directory, 3, fields, 1000, 1000, TableSpecification::CacheAll));
    std::vector<IndexSpecification> indexes = {
        IndexSpecification("ById", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty,
                           {IndexSpecification::Field(Id, 0)}),
        IndexSpecification("ByCity", IndexSpecification::RedBlack, IndexSpecification::DuplicateProperty,
                           {IndexSpecification::Field(City, 0)}),
    };
    table->CreateIndexes(indexes);  // makes the index files beside the record file
    return table;
}

int main() {
    // A directory of this run's own: a table's files have one opener at a time.
    const std::string directory =
        (std::filesystem::temp_directory_path() / ("tavrin-usage-" + std::to_string(::getpid()))).string();
    std::filesystem::remove_all(directory);
    std::filesystem::create_directories(directory);
    {
        std::unique_ptr<ITable> table = CreateCustomers(directory);
        Record record(table.get());
        const char* cities[] = {"Oslo", "Lima", "Kyiv", "Lima"};
        for (std::uint32_t id = 1; id <= 4; ++id) {
            table->ResetRecord(record);
            record.GetFieldList()->SetField(record.GetData(), Id, id);
            record.GetFieldList()->SetField(record.GetData(), City, std::string(cities[id - 1]));
            if (table->WriteRecord(record) != Tavrin::Status::Success) return 1;
        }
    }  // deleting the table closes its files in order

    // The record file describes its table, and each index file its index: its name is all it takes.
    std::unique_ptr<ITable> table(OpenTable(directory + "/Customers.tab", true, true));
    Record record(table.get());
    Key byId(table.get(), 0);
    byId.GetFieldList()->SetField(byId.GetData(), Id, std::uint32_t{3});
    std::string city;
    if (table->GetEqual(byId, record) != Tavrin::Status::Success) return 2;
    record.GetFieldList()->GetField(record.GetData(), City, city);
    std::printf("customer 3 lives in %s\n", city.c_str());

    Key byCity(table.get(), 1);
    for (auto status = table->GetFirst(byCity, record); status == Tavrin::Status::Success;
         status = table->GetNext(byCity, record)) {
        std::uint32_t id = 0;
        record.GetFieldList()->GetField(record.GetData(), Id, id);
        record.GetFieldList()->GetField(record.GetData(), City, city);
        std::printf("%s: customer %u\n", city.c_str(), id);
    }
    table.reset();
    std::filesystem::remove_all(directory);
    return 0;
}
