#pragma once
// Runs the tavrin program as a process on tables that the tests make, and reads back what it said.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "../base/ScratchDirectory.h"
#include "tavrin/base/Encoding.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/Record.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/tables/ITable.h"
#include "tavrin/tables/ManagedTableFactory.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Tool::Testing {

using namespace Tavrin::Database;

struct ToolResult {
    int status = -1;
    std::string out;
    std::string err;
};

inline std::string ReadWholeFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Runs "tavrin <arguments>", with `input` on stdin when it names a file.
inline ToolResult RunTool(const Tavrin::Testing::ScratchDirectory& scratch, const std::string& arguments,
                          const std::string& input = "/dev/null") {
    const std::string out = scratch / "tool.out";
    const std::string err = scratch / "tool.err";
    const std::string command = std::string(TAVRIN_TOOL_PATH) + " " + arguments + " < '" + input + "' > '" + out +
                                "' 2> '" + err + "'";
    const int raw = std::system(command.c_str());
    ToolResult result;
    result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    result.out = ReadWholeFile(out);
    result.err = ReadWholeFile(err);
    return result;
}

inline void WriteWholeFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

// Every file of a directory with its bytes and modification time: what a read must leave alone.
inline std::map<std::string, std::pair<std::string, std::filesystem::file_time_type>> Snapshot(
    const std::string& directory) {
    std::map<std::string, std::pair<std::string, std::filesystem::file_time_type>> files;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("tool.", 0) == 0) continue;  // what RunTool writes itself
        files[name] = {ReadWholeFile(entry.path().string()), std::filesystem::last_write_time(entry.path())};
    }
    return files;
}

// Overwrites 4 bytes at `offset` of a file with a little-endian number.
inline void PatchU32(const std::string& path, std::size_t offset, std::uint32_t value) {
    std::string bytes = ReadWholeFile(path);
    ASSERT_LE(offset + 4, bytes.size());
    Tavrin::EncodeU32(bytes.data() + offset, value);
    WriteWholeFile(path, bytes);
}

// Marks a mapped file as a crash leaves it: clean flag 0.
inline void MarkUnclean(const std::string& path) {
    std::string bytes = ReadWholeFile(path);
    bytes[0] = 0;
    WriteWholeFile(path, bytes);
}

enum : std::uint16_t { IdField = 1, CityField = 2 };

inline std::vector<FieldSpecification> CustomerFields() {
    return {FieldSpecification(IdField, "Id", FieldSpecification::UInt, 4, 0, 0),
            FieldSpecification(CityField, "City", FieldSpecification::TextString, 24, 0, 0)};
}

// Customers: a tree primary index, a tree index of duplicates, a hash index; `count` records with
// ids 1..count in four cities. `cacheSize` 0xFFFFFFFF keeps it in memory, else a disk table.
inline std::unique_ptr<ITable> MakeCustomers(const std::string& directory, std::uint32_t count,
                                             std::uint32_t capacity = 100, std::uint32_t cacheSize = 0xFFFFFFFF) {
    std::unique_ptr<ITable> table(ManagedTableFactory::GetInstance().Create(
        "Customers", directory, 1, CustomerFields(), capacity, capacity, cacheSize));
    std::vector<IndexSpecification> indexes = {
        IndexSpecification("ById", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty,
                           {IndexSpecification::Field(IdField, 0)}),
        IndexSpecification("ByCity", IndexSpecification::RedBlack, IndexSpecification::DuplicateProperty,
                           {IndexSpecification::Field(CityField, 0)}),
        IndexSpecification("IdHash", IndexSpecification::Hash, IndexSpecification::UniqueProperty,
                           {IndexSpecification::Field(IdField, 0)}),
    };
    table->CreateIndexes(indexes);
    const char* cities[] = {"Oslo", "Lima", "Kyiv", "Pune"};
    Record record(table.get());
    for (std::uint32_t id = 1; id <= count; ++id) {
        table->ResetRecord(record);
        record.GetFieldList()->SetField(record.GetData(), IdField, id);
        record.GetFieldList()->SetField(record.GetData(), CityField, std::string(cities[id % 4]));
        EXPECT_EQ(table->WriteRecord(record), Status::Success);
    }
    return table;
}

inline std::uint32_t CountOfRecords(ITable& table) {
    std::uint32_t count = 0;
    EXPECT_EQ(table.GetCurrentRecords(count), Status::Success);
    return count;
}

inline StatusCode RemoveCustomer(ITable& table, std::uint32_t id) {
    Key key(&table, 0);
    key.GetFieldList()->SetField(key.GetData(), IdField, id);
    return table.RemoveRecord(key);
}

}  // namespace Tavrin::Tool::Testing
