#pragma once
// Helpers of the tests of remote tables and of table messages: the description message that a
// table writes with SerializeSpecification, put together by hand so that it can carry any indexes,
// and the remote table built from it.

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/MessageBuilder.h"
#include "base/MessageValidator.h"
#include "records/FieldSpecification.h"
#include "schema/IndexSpecification.h"
#include "schema/TableSpecification.h"
#include "tables/ITable.h"
#include "tables/RemoteTableFactory.h"

namespace Tavrin::Database::Testing {

using Bytes = std::vector<unsigned char>;

// Id (UInt 4), Name (TextArray 10), Score (SInt 4), packed from offset 0.
inline std::vector<FieldSpecification> PersonFields() {
    return {FieldSpecification(1, "Id", FieldSpecification::UInt, 4, 0, 0),
            FieldSpecification(2, "Name", FieldSpecification::TextArray, 10, 4, 0),
            FieldSpecification(3, "Score", FieldSpecification::SInt, 4, 14, 0)};
}

inline TableSpecification PersonTable() { return TableSpecification("People", 0, PersonFields(), 10, 5, 0xFFFFFFFF); }

// A tree index on `fields` (ascending) with `properties`, numbered `number`.
inline IndexSpecification TreeIndex(const std::string& name, std::uint32_t properties,
                                    const std::vector<std::uint16_t>& fields, std::uint16_t number) {
    std::vector<IndexSpecification::Field> keyFields;
    for (std::uint16_t id : fields) keyFields.emplace_back(id, 0);
    IndexSpecification specification(name, IndexSpecification::RedBlack, properties, keyFields);
    specification.SetNumber(number);
    return specification;
}

inline Bytes ToBytes(const MessageBuilder& builder) {
    return Bytes(builder.GetBuffer(), builder.GetBuffer() + builder.GetLength());
}

inline Bytes DescriptionMessage(const TableSpecification& table, const std::vector<IndexSpecification>& indexes) {
    MessageBuilder builder;
    EXPECT_EQ(table.Serialize(builder, TableSpecification::CurrentVersion), Status::Success);
    EXPECT_EQ(builder.AppendUInt32(static_cast<std::uint32_t>(indexes.size())), Status::Success);
    for (const IndexSpecification& index : indexes) EXPECT_EQ(index.Serialize(builder), Status::Success);
    return ToBytes(builder);
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

// A remote People table with a primary unique index on Id (0) and a duplicate index on Score (1).
inline std::unique_ptr<ITable> MakeRemotePeople() {
    return MakeRemote(DescriptionMessage(
        PersonTable(), {TreeIndex("ById", IndexSpecification::PrimaryUniqueProperty, {1}, 0),
                        TreeIndex("ByScore", IndexSpecification::DuplicateProperty, {3}, 1)}));
}

}  // namespace Tavrin::Database::Testing
