#pragma once
// Helpers of the read, message and remote table tests: a People table, tree index descriptions,
// messages as byte vectors, and remote tables built from a description.

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/records/FieldSpecification.h"
#include "tavrin/records/Key.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/tables/ITable.h"
#include "tavrin/tables/ManagedTableFactory.h"
#include "tavrin/tables/RemoteTableFactory.h"

namespace Tavrin::Database::Testing {

using Bytes = std::vector<unsigned char>;

// Id (UInt 4), Name (TextArray 10), Score (SInt 4), packed from offset 0.
inline std::vector<FieldSpecification> PersonFields() {
    return {FieldSpecification(1, "Id", FieldSpecification::UInt, 4, 0, 0),
            FieldSpecification(2, "Name", FieldSpecification::TextArray, 10, 4, 0),
            FieldSpecification(3, "Score", FieldSpecification::SInt, 4, 14, 0)};
}

// A tree index on `fields`, all ascending.
inline IndexSpecification TreeIndex(const std::string& name, std::uint32_t properties,
                                    const std::vector<std::uint16_t>& fields) {
    std::vector<IndexSpecification::Field> keyFields;
    for (std::uint16_t id : fields) keyFields.emplace_back(id, 0);
    return IndexSpecification(name, IndexSpecification::RedBlack, properties, keyFields);
}

// A managed People table without files, with a primary unique index on Id (0) and a duplicate
// index on Score and Name (1).
inline std::unique_ptr<ITable> MakePeople(std::uint32_t properties, std::uint32_t maxRecords = 16) {
    std::unique_ptr<ITable> table(
        ManagedTableFactory::GetInstance().Create("People", properties, PersonFields(), maxRecords, 0xFFFFFFFF,
                                                  0xFFFFFFFF));
    std::vector<IndexSpecification> indexes{TreeIndex("ById", IndexSpecification::PrimaryUniqueProperty, {1}),
                                            TreeIndex("ByScoreName", IndexSpecification::DuplicateProperty, {3, 2})};
    table->CreateIndexes(indexes);
    return table;
}

// A key of index 0, ById, holding `id`.
inline Key IdKey(ITable& table, std::uint32_t id) {
    Key key(&table, 0);
    EXPECT_EQ(key.GetFieldList()->SetField(key.GetData(), 1, id), Status::Success);
    return key;
}

inline Bytes ToBytes(const MessageBuilder& builder) {
    return Bytes(builder.GetBuffer(), builder.GetBuffer() + builder.GetLength());
}

inline Bytes DescriptionOf(ITable& table) {
    MessageBuilder builder;
    EXPECT_EQ(table.SerializeSpecification(builder), Status::Success);
    return ToBytes(builder);
}

inline std::unique_ptr<ITable> MakeRemote(const Bytes& message) {
    MessageValidator validator(message.data(), static_cast<std::uint32_t>(message.size()));
    return std::unique_ptr<ITable>(RemoteTableFactory::GetInstance().Create(validator));
}

}  // namespace Tavrin::Database::Testing
