#pragma once
// Helpers of the tree index tests: a table layout with a tree index over it, and keys filled
// straight through the index's key layout (a Key need not be bound to a table to be used by the
// index).

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tavrin/base/Encoding.h"
#include "tavrin/indexes/RedBlackTreeIndex.h"
#include "tavrin/records/FieldList.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/ManagedFieldListFactory.h"
#include "tavrin/records/UnmanagedFieldListFactory.h"
#include "tavrin/schema/IndexSpecification.h"

namespace Tavrin::Database::Testing {

// Field ids of the test table: an unsigned number, a short text and a number that an index may
// carry as an additional field.
constexpr std::uint16_t NumberField = 1;
constexpr std::uint16_t NameField = 2;
constexpr std::uint16_t ExtraField = 3;
constexpr std::uint32_t NameLength = 6;

inline const IFieldListFactory& FactoryOf(bool managed) {
    if (managed) return ManagedFieldListFactory::GetInstance();
    return UnmanagedFieldListFactory::GetInstance();
}

inline std::unique_ptr<FieldList> MakeTableList(bool managed) {
    const std::vector<FieldSpecification> fields{
        FieldSpecification(NumberField, "Number", FieldSpecification::UInt, 4, 0, 0),
        FieldSpecification(NameField, "Name", FieldSpecification::TextString, NameLength, 4, 0),
        FieldSpecification(ExtraField, "Extra", FieldSpecification::UInt, 4, 4 + NameLength, 0),
    };
    return std::unique_ptr<FieldList>(FactoryOf(managed).Create(fields));
}

// A tree over (Number ascending, Name ascending or descending) of a managed table.
inline IndexSpecification NumberNameSpecification(std::uint32_t properties, bool nameDescending) {
    const std::uint32_t nameFlags = nameDescending ? IndexSpecification::Field::DescendingFlag : 0;
    return IndexSpecification("ByNumber", IndexSpecification::RedBlack, properties,
                              {IndexSpecification::Field(NumberField, 0), IndexSpecification::Field(NameField, nameFlags)});
}

// A table layout and a tree index over it; the index is made but opens no file.
struct TreeHarness {
    TreeHarness(const IndexSpecification& specification, std::uint32_t initialEntries, std::uint32_t growEntries,
                bool managed = true)
        : table(MakeTableList(managed)),
          index(std::make_unique<RedBlackTreeIndex>(specification, *table, FactoryOf(managed), initialEntries,
                                                    growEntries)) {}

    std::unique_ptr<FieldList> table;
    std::unique_ptr<RedBlackTreeIndex> index;
};

// Fills `key` for `index` (a tree or a hash index): the number, the name (undefined when absent)
// and, in a Duplicate index, the record id tail. The cursor is reset.
inline void SetKey(Key& key, const Index& index, std::uint32_t number,
                   const std::optional<std::string>& name, std::uint32_t recordId = 0xFFFFFFFF) {
    const FieldList& list = *index.GetFieldList();
    list.ResetData(key.GetData());
    unsigned char bytes[4];
    EncodeU32(bytes, number);
    ASSERT_EQ(list.SetField(key.GetData(), NumberField, bytes, 4), Status::Success);
    if (name.has_value()) {
        ASSERT_EQ(list.SetField(key.GetData(), NameField, name->data(), static_cast<std::uint32_t>(name->size())),
                  Status::Success);
    }
    if (index.IsDuplicate()) EncodeU32(key.GetData() + list.GetDataLength(), recordId);
    key.SetCursor(RedBlackTreeIndex::NoEntry);
}

inline void AddKey(RedBlackTreeIndex& index, std::uint32_t number, const std::optional<std::string>& name,
                   std::uint32_t recordId) {
    Key key;
    SetKey(key, index, number, name, recordId);
    ASSERT_EQ(index.Add(key, recordId), Status::Success);
}

// Adds keys of the given numbers, each with the number as its record id and "n" as its name.
inline void AddNumbers(RedBlackTreeIndex& index, const std::vector<std::uint32_t>& numbers) {
    for (const std::uint32_t number : numbers) AddKey(index, number, "n", number);
}

// The entry number of the node of (number, "n"), as Find leaves it in the cursor.
inline std::uint32_t EntryOf(RedBlackTreeIndex& index, std::uint32_t number) {
    Key key;
    SetKey(key, index, number, "n", number);
    std::uint32_t record = 0;
    EXPECT_EQ(index.Find(key, record), Status::Success);
    return key.GetCursor();
}

inline std::uint32_t NumberOf(const RedBlackTreeIndex& index, const Key& key) {
    const void* value = nullptr;
    std::uint32_t length = 0;
    EXPECT_EQ(index.GetFieldList()->GetField(key.GetData(), NumberField, value, length), Status::Success);
    return DecodeU32(value);
}

// The record ids of a whole walk from GetFirst on with GetNext, or from GetLast with GetPrevious;
// a walk longer than the tree stops there, and so fails the comparison with what was expected.
inline std::vector<std::uint32_t> WalkRecords(RedBlackTreeIndex& index, bool forward) {
    std::vector<std::uint32_t> records;
    Key key;
    std::uint32_t record = 0;
    StatusCode status = forward ? index.GetFirst(key, record) : index.GetLast(key, record);
    while (status == Status::Success && records.size() <= index.GetCurrentRecords()) {
        records.push_back(record);
        status = forward ? index.GetNext(key, record) : index.GetPrevious(key, record);
    }
    if (status == Status::Success) {
        ADD_FAILURE() << "the walk did not end";
    } else {
        EXPECT_EQ(status, Status::NotFound);
    }
    return records;
}

}  // namespace Tavrin::Database::Testing
