// What a table tells about itself, and the record operations that need no index: ResetRecord and
// the binding tests.

#include <gtest/gtest.h>

#include "../base/ScratchDirectory.h"
#include "../records/RecordsTestSupport.h"
#include "TablesTestSupport.h"
#include "tavrin/records/Record.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/schema/TableSpecification.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;

std::vector<FieldSpecification> ThreeFields() {
    return {FieldSpecification(5, "Name", FieldSpecification::TextString, 20, 0, 0),
            FieldSpecification(2, "Age", FieldSpecification::SInt, 4, 0, 0),
            FieldSpecification(9, "Code", FieldSpecification::UInt, 4, 0, 0)};
}

TEST(TableAccessors, NamesAndPlaces) {
    ScratchDirectory directory;
    std::unique_ptr<ITable> table = MakeManaged("Spare  Parts", directory.Path());
    EXPECT_EQ(table->GetName(), "Spare  Parts");
    EXPECT_EQ(table->GetDirectory(), directory.Path() + "/");
    EXPECT_EQ(table->GetFileName(), "Spare__Parts.tab");
    EXPECT_FALSE(table->IsInMemory());
    EXPECT_TRUE(File::IsFound(directory / "Spare__Parts.tab"));

    // A directory that ends in a separator keeps it as it is.
    table = MakeUnmanaged("Bins", directory.Path() + "/");
    EXPECT_EQ(table->GetDirectory(), directory.Path() + "/");
    EXPECT_TRUE(File::IsFound(directory / "Bins.tab"));

    table = MakeInMemory("In Memory");
    EXPECT_EQ(table->GetName(), "In Memory");
    EXPECT_EQ(table->GetDirectory(), "");
    EXPECT_EQ(table->GetFileName(), "");
    EXPECT_TRUE(table->IsInMemory());
    EXPECT_TRUE(table->IsManaged());
}

TEST(TableAccessors, FieldsInListOrder) {
    std::unique_ptr<ITable> table = MakeInMemory("F", 0, ThreeFields());
    EXPECT_EQ(table->GetFieldIdList(), (std::vector<std::uint16_t>{5, 2, 9}));
    FieldSpecification::Type type = FieldSpecification::None;
    EXPECT_EQ(table->GetFieldType(2, type), Status::Success);
    EXPECT_EQ(type, FieldSpecification::SInt);
    EXPECT_TRUE(table->HasField(9));
    EXPECT_FALSE(table->HasField(3));
}

TEST(TableAccessors, MatchingFieldsAppend) {
    std::unique_ptr<ITable> table = MakeInMemory("F", 0, ThreeFields());
    std::vector<std::uint16_t> ids = {77};
    // A pattern that asks only for a length of 4 matches two fields; their ids are appended.
    const FieldSpecification fourBytes = MakeUnchecked(FieldSpecification::NoFieldId, "", FieldSpecification::None, 4);
    EXPECT_TRUE(table->GetMatchingFields(fourBytes, ids));
    EXPECT_EQ(ids, (std::vector<std::uint16_t>{77, 2, 9}));

    const FieldSpecification other(30, "Other", FieldSpecification::UInt, 4, 0, 0);
    EXPECT_FALSE(table->GetMatchingFields(other, ids));
    EXPECT_EQ(ids.size(), 3u);
}

TEST(TableAccessors, ResetRecordOnlyForItsOwnRecords) {
    std::unique_ptr<ITable> table = MakeInMemory("R");
    std::unique_ptr<ITable> other = MakeInMemory("R");
    Record record(table.get());
    const FieldList& fields = *table->GetFieldList();
    const std::int32_t age = 42;
    ASSERT_EQ(fields.SetField(record.GetData(), 1, &age, 4), Status::Success);
    record.SetRecordId(3);

    EXPECT_EQ(other->ResetRecord(record), Status::OtherTable);
    EXPECT_EQ(record.GetRecordId(), 3u);
    Record unbound;
    EXPECT_EQ(table->ResetRecord(unbound), Status::OtherTable);

    EXPECT_EQ(table->ResetRecord(record), Status::Success);
    EXPECT_EQ(record.GetRecordId(), FieldListObject::NoRecordId);
    EXPECT_FALSE(IsDefined(fields, record.GetData(), 1));
    EXPECT_EQ(record, Record(table.get()));
}

TEST(TableAccessors, BindingOrderAndSameness) {
    std::unique_ptr<ITable> table = MakeInMemory("B");
    std::unique_ptr<ITable> other = MakeInMemory("B");
    Record first(table.get());
    Record second(table.get());
    Record foreign(other.get());
    Record unbound;

    EXPECT_TRUE(table->IsOrderedBefore(first, unbound));
    EXPECT_FALSE(table->IsOrderedBefore(unbound, first));
    EXPECT_FALSE(table->IsOrderedBefore(first, second));

    EXPECT_TRUE(table->IsSameBinding(first, second));
    EXPECT_FALSE(table->IsSameBinding(first, foreign));
    EXPECT_FALSE(table->IsSameBinding(first, unbound));
    EXPECT_FALSE(table->IsSameBinding(unbound, unbound));

    // A record of a table that is gone is no longer initialized, so it orders last.
    other.reset();
    EXPECT_TRUE(table->IsOrderedBefore(first, foreign));
    EXPECT_FALSE(table->IsSameBinding(foreign, foreign));
}

}  // namespace
}  // namespace Tavrin::Database::Testing
