// The Index base on field lists alone: the key layout it derives from a specification, the
// specification it gives back, and the answers of a plain index to structural operations.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tavrin/base/DatabaseException.h"
#include "base/ThrownStatus.h"
#include "tavrin/base/Uuid.h"
#include "tavrin/indexes/Index.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/ManagedFieldListFactory.h"
#include "tavrin/records/UnmanagedFieldListFactory.h"
#include "records/RecordsTestSupport.h"

namespace Tavrin::Database {

// Reaches the constructor that sets a number and additional fields, as an index does.
class IndexSpecificationTestPeer {
public:
    static IndexSpecification WithExtras(const IndexSpecification& specification, std::uint16_t number,
                                         const std::vector<std::uint16_t>& additionalFieldIds) {
        return IndexSpecification(number, specification.GetName(), specification.GetType(),
                                  specification.GetProperties(), specification.GetFields(), additionalFieldIds);
    }
};

namespace {

using Testing::PackedSpecifications;
using Field = IndexSpecification::Field;

constexpr std::uint32_t Descending = Field::DescendingFlag;

// A record of four fields; the index picks them in another order than the record's.
std::vector<FieldSpecification> TableFields() {
    return PackedSpecifications({{1, "Number", FieldSpecification::UInt, 4},
                                 {2, "Name", FieldSpecification::TextArray, 10},
                                 {3, "Balance", FieldSpecification::SInt, 8},
                                 {4, "Flag", FieldSpecification::Boolean, 1}});
}

class IndexLayout : public testing::TestWithParam<bool> {
protected:
    const IFieldListFactory& Factory() const {
        if (GetParam()) return ManagedFieldListFactory::GetInstance();
        return UnmanagedFieldListFactory::GetInstance();
    }
    std::unique_ptr<FieldList> tableList_{Factory().Create(TableFields())};

    // Index 5 "ByBalance" on Balance descending and Number, carrying Name.
    std::unique_ptr<Index> MakeIndex(std::uint32_t properties) const {
        const IndexSpecification pattern("ByBalance", IndexSpecification::RedBlack, properties,
                                                {Field(3, Descending), Field(1, 0)});
        IndexSpecification specification = IndexSpecificationTestPeer::WithExtras(pattern, 5, {2});
        return std::make_unique<Index>(specification, *tableList_, Factory());
    }
};

INSTANTIATE_TEST_SUITE_P(BothLayouts, IndexLayout, testing::Bool(),
                         [](const auto& info) { return info.param ? "Managed" : "Unmanaged"; });

TEST_P(IndexLayout, KeyFieldsAreComparedThenAdditionalWithTheirFlags) {
    const auto index = MakeIndex(IndexSpecification::UniqueProperty);
    const std::vector<FieldSpecification> keyFields = index->GetFieldSpecificationList();
    ASSERT_EQ(keyFields.size(), 3u);
    EXPECT_EQ(index->GetFieldIdList(), (std::vector<std::uint16_t>{3, 1, 2}));
    EXPECT_EQ(keyFields[0], TableFields()[2]);  // same id, name, type and length as the table's
    EXPECT_EQ(keyFields[0].GetProperties(), Descending);
    EXPECT_EQ(keyFields[1].GetProperties() | keyFields[2].GetProperties(), 0u);
    EXPECT_EQ(index->GetKeySize(), index->GetFieldList()->GetDataLength());
    EXPECT_EQ(MakeIndex(IndexSpecification::DuplicateProperty)->GetKeySize(), index->GetKeySize() + 4);
    if (!GetParam()) {
        // Unmanaged keys are their values packed from 0, whatever the record's offsets.
        EXPECT_EQ(keyFields[0].GetOffset(), 0u);
        EXPECT_EQ(keyFields[1].GetOffset(), 8u);
        EXPECT_EQ(keyFields[2].GetOffset(), 12u);
        EXPECT_EQ(index->GetKeySize(), 22u);
    }
}

TEST_P(IndexLayout, SpecificationComesBackWithNumberAndAdditionalFields) {
    const auto index = MakeIndex(IndexSpecification::DuplicateProperty);
    const IndexSpecification specification = index->GetSpecification();
    EXPECT_EQ(specification, IndexSpecification("ByBalance", IndexSpecification::RedBlack,
                                                 IndexSpecification::DuplicateProperty,
                                                 {Field(3, Descending), Field(1, 0)}));
    EXPECT_EQ(specification.GetNumber(), 5u);
    EXPECT_EQ(specification.GetAdditionalFieldIds(), std::vector<std::uint16_t>{2});
}

TEST_P(IndexLayout, FieldMissingFromTheTableIsRefused) {
    const IndexSpecification compared("Missing", IndexSpecification::Hash, IndexSpecification::UniqueProperty,
                                      {Field(1, 0), Field(9, 0)});
    Testing::ExpectDatabaseException([&] { Index(compared, *tableList_, Factory()); },
                                     DatabaseException::InvalidParameter, "Tavrin::Database::Index::Index", "");
    const IndexSpecification additional = IndexSpecificationTestPeer::WithExtras(
        IndexSpecification("Extra", IndexSpecification::Hash, IndexSpecification::UniqueProperty, {Field(1, 0)}),
        0, {7});
    Testing::ExpectDatabaseException([&] { Index(additional, *tableList_, Factory()); },
                                     DatabaseException::InvalidParameter, "Tavrin::Database::Index::Index", "");
}

TEST(Index, PlainIndexHasNoStructure) {
    const std::unique_ptr<FieldList> list(ManagedFieldListFactory::GetInstance().Create(TableFields()));
    Index index(IndexSpecification("Plain", IndexSpecification::Hash, IndexSpecification::UniqueProperty,
                                   {Field(1, 0)}),
                *list, ManagedFieldListFactory::GetInstance());
    Key key;
    std::uint32_t recordId = 0;
    EXPECT_EQ(index.Find(key, recordId), Status::NotAvailable);
    EXPECT_EQ(index.GetNextEqual(key, recordId, 1, 4), Status::NotAvailable);

    const Uuid uuid = Uuid::Nil();
    const std::pair<std::function<void()>, const char*> throwing[] = {
        {[&] { index.Create("dir", "table", uuid); }, "Tavrin::Database::Index::Create"},
        {[&] { index.Create(); }, "Tavrin::Database::Index::Create"},
        {[&] { index.Open("dir", "table", uuid); }, "Tavrin::Database::Index::Open"},
        {[&] { index.SetUuid(uuid); }, "Tavrin::Database::Index::SetUuid"},
        {[&] { index.GetCurrentRecords(); }, "Tavrin::Database::Index::GetCurrentRecords"},
    };
    for (const auto& [action, function] : throwing) {
        try {
            action();
            ADD_FAILURE() << function << " did not throw";
        } catch (const StatusCodeException& exception) {
            EXPECT_EQ(exception.GetCode(), Status::NotAvailable);
            EXPECT_EQ(exception.GetFunction(), function);
        }
    }

    // A key that the index did not lay out is refused before a byte is written.
    const std::uint32_t value = 7;
    EXPECT_EQ(index.BuildKey(key, KeyValueList{{&value, 4}}), Status::NotUsable);
    EXPECT_EQ(index.BuildKey(key, nullptr, 0), Status::NotUsable);
}

}  // namespace
}  // namespace Tavrin::Database
