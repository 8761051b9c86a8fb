#pragma once
// Helpers of the database tests: small tables without files, with the indexes a test asks for, and
// records and keys of their Id and Name fields.

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tavrin/database/Database.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/Record.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/tables/ManagedTableFactory.h"

namespace Tavrin::Database::Testing {

enum : std::uint16_t { IdField = 1, NameField = 2 };
constexpr std::uint32_t kCreateFile = 1;
constexpr std::uint32_t kCreateFileAndMutex = 3;

inline IndexSpecification TreeIndex(const std::string& name, std::uint32_t properties,
                                    std::vector<std::uint16_t> fieldIds) {
    std::vector<IndexSpecification::Field> fields;
    for (const std::uint16_t id : fieldIds) fields.emplace_back(id, 0);
    return IndexSpecification(name, IndexSpecification::RedBlack, properties, fields);
}

inline IndexSpecification ById() { return TreeIndex("ById", IndexSpecification::PrimaryUniqueProperty, {IdField}); }
inline IndexSpecification ByName() { return TreeIndex("ByName", IndexSpecification::UniqueProperty, {NameField}); }

// A managed table without files, of an Id field of `idType` and `idLength` and a 16-byte Name, with
// `indexes` made.
inline std::unique_ptr<ITable> MakeTable(const std::string& name, std::vector<IndexSpecification> indexes,
                                         std::uint32_t properties = kCreateFile,
                                         FieldSpecification::Type idType = FieldSpecification::UInt,
                                         std::uint32_t idLength = 4) {
    const std::vector<FieldSpecification> fields = {
        FieldSpecification(IdField, "Id", idType, idLength, 0, 0),
        FieldSpecification(NameField, "Name", FieldSpecification::TextString, 16, 0, 0)};
    std::unique_ptr<ITable> table(
        ManagedTableFactory::GetInstance().Create(name, properties, fields, 16, 0xFFFFFFFF, 0xFFFFFFFF));
    table->CreateIndexes(indexes);
    return table;
}

// Sets the Id field of a record or key, as a signed value where the field is signed.
inline void SetId(FieldListObject& object, std::uint32_t id) {
    FieldSpecification::Type type = FieldSpecification::UInt;
    ASSERT_EQ(object.GetFieldList()->GetType(IdField, type), Status::Success);
    const StatusCode status = type == FieldSpecification::SInt
                                  ? object.GetFieldList()->SetField(object.GetData(), IdField, std::int32_t(id))
                                  : object.GetFieldList()->SetField(object.GetData(), IdField, id);
    ASSERT_EQ(status, Status::Success);
}

inline void SetName(FieldListObject& object, const std::string& name) {
    ASSERT_EQ(object.GetFieldList()->SetField(object.GetData(), NameField, name), Status::Success);
}

inline void Write(ITable& table, std::uint32_t id, const std::string& name) {
    Record record(&table);
    SetId(record, id);
    SetName(record, name);
    ASSERT_EQ(table.WriteRecord(record), Status::Success);
}

// A key of index `indexNumber` of `table` with its Id set (and its Name, when the index has one).
inline Key MakeKey(ITable& table, std::uint16_t indexNumber, std::uint32_t id, const std::string& name = "") {
    Key key(&table, indexNumber);
    FieldSpecification::Type type = FieldSpecification::None;
    if (key.GetFieldList()->GetType(IdField, type) == Status::Success) SetId(key, id);
    if (key.GetFieldList()->GetType(NameField, type) == Status::Success) SetName(key, name);
    return key;
}

inline std::string NameOf(const Record& record) {
    std::string name;
    EXPECT_EQ(record.GetFieldList()->GetField(record.GetData(), NameField, name), Status::Success);
    return name;
}

// The attached ids in the order of the non-const iterators.
inline std::vector<std::uint16_t> IdsOf(Database& database) {
    std::vector<std::uint16_t> ids;
    for (auto position = database.Begin(); position != database.End(); ++position) {
        ids.push_back(position.GetTableId());
    }
    return ids;
}

}  // namespace Tavrin::Database::Testing
