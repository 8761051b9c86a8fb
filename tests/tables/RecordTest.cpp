// Record on real tables: binding, the inline buffer, copies, equality, the serialised form and
// what a record does once its table is gone.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tavrin/base/Encoding.h"
#include "tavrin/records/Record.h"
#include "TablesTestSupport.h"
#include "records/RecordsTestSupport.h"
#include "tavrin/tables/ManagedTableFactory.h"
#include "tavrin/tables/UnmanagedTableFactory.h"

namespace Tavrin::Database {
namespace {

using Testing::kAll;
using Testing::kCreateFile;

std::unique_ptr<ITable> Managed(const std::vector<FieldSpecification>& fields) {
    return Testing::MakeInMemory("People", kCreateFile, fields);
}

// One BinaryArray field of `fieldLength` bytes at offset 0 in a record of `recordLength` bytes.
std::unique_ptr<ITable> Unmanaged(std::uint32_t recordLength, std::uint32_t fieldLength) {
    const std::vector<FieldSpecification> fields{
        FieldSpecification(1, "Blob", FieldSpecification::BinaryArray, fieldLength, 0, 0)};
    return std::unique_ptr<ITable>(UnmanagedTableFactory::GetInstance().Create(
        "Blobs", kCreateFile, fields, 10, recordLength, kAll, kAll));
}

std::vector<FieldSpecification> PeopleFields() {
    return {FieldSpecification(1, "Age", FieldSpecification::SInt, 4, 0, 0),
            FieldSpecification(2, "Code", FieldSpecification::UInt, 4, 0, 0),
            FieldSpecification(3, "Name", FieldSpecification::TextString, 10, 0, 0)};
}

void SetAge(Record& record, std::int32_t age) {
    ASSERT_EQ(record.GetFieldList()->SetField(record.GetData(), 1, age), Status::Success);
}

std::int32_t GetAge(const Record& record) {
    std::int32_t age = -1;
    EXPECT_EQ(record.GetFieldList()->GetField(record.GetData(), 1, age), Status::Success);
    return age;
}

bool IsAgeDefined(const Record& record) { return Testing::IsDefined(*record.GetFieldList(), record.GetData(), 1); }

TEST(Record, BindingAndResetGiveAnEmptyImageAndNoRecordId) {
    const auto table = Managed(PeopleFields());
    Record record(table.get());
    EXPECT_TRUE(record.IsInitialized());
    EXPECT_EQ(record.GetRecordId(), FieldListObject::NoRecordId);
    EXPECT_FALSE(IsAgeDefined(record));
    SetAge(record, 9);
    record.SetRecordId(3);
    ASSERT_EQ(record.Reset(), Status::Success);
    EXPECT_EQ(record.GetRecordId(), FieldListObject::NoRecordId);
    EXPECT_FALSE(IsAgeDefined(record));

    EXPECT_TRUE(Record().Begin() == Record().End());
    Testing::ExpectDatabaseException([] { Record record(nullptr); }, DatabaseException::AllocateRecord,
                                     "Tavrin::Database::Record::Record", "");
}

TEST(Record, ImageStaysInlineUpTo1024BytesAndTheArrayIsKept) {
    const auto fits = Unmanaged(1024, 1024);
    const auto larger = Unmanaged(1025, 1024);
    Record record(fits.get());
    EXPECT_TRUE(record.IsInline());
    const Record copy(record);
    EXPECT_TRUE(copy.IsInline());

    record = Record(larger.get());
    EXPECT_FALSE(record.IsInline());
    EXPECT_EQ(record.GetCapacity(), 1025u);
    // Back on the smaller table the array serves on: it never shrinks.
    ASSERT_EQ(record.Initialize(Record(fits.get())), Status::Success);
    EXPECT_FALSE(record.IsInline());
    EXPECT_EQ(record.GetCapacity(), 1025u);
    // Copying an unbound record clears: the array goes and the inline buffer comes back.
    ASSERT_EQ(record.Initialize(Record()), Status::Success);
    EXPECT_FALSE(record.IsInitialized());
    EXPECT_TRUE(record.IsInline());
    EXPECT_EQ(record.GetCapacity(), FieldListObject::InlineCapacity);
}

TEST(Record, CopiesCarryImageAndIdAndMovesEmptyTheSource) {
    const auto table = Managed(PeopleFields());
    Record record(table.get());
    SetAge(record, 41);
    record.SetRecordId(7);
    Record copy(record);
    EXPECT_EQ(GetAge(copy), 41);
    EXPECT_EQ(copy.GetRecordId(), 7u);
    SetAge(copy, 42);
    EXPECT_EQ(GetAge(record), 41);  // the copy has an image of its own

    record = record;  // self-assignment keeps the image
    EXPECT_EQ(GetAge(record), 41);

    Record moved(std::move(copy));
    EXPECT_EQ(GetAge(moved), 42);
    EXPECT_FALSE(copy.IsInitialized());
}

TEST(Record, EqualityComparesFieldsOfOneTableOnly) {
    const auto table = Managed(PeopleFields());
    const auto twin = Managed(PeopleFields());
    Record left(table.get()), right(table.get());
    SetAge(left, 30);
    SetAge(right, 30);
    right.SetRecordId(12);
    EXPECT_TRUE(left == right);  // record ids take no part
    SetAge(right, 31);
    EXPECT_TRUE(left != right);

    Record other(twin.get());
    SetAge(other, 30);
    EXPECT_FALSE(left == other);
    EXPECT_FALSE(left == Record());
    EXPECT_TRUE(Record() == Record());
}

TEST(Record, OutlivingItsTableLeavesItUninitialized) {
    auto table = Managed(PeopleFields());
    Record record(table.get());
    SetAge(record, 5);
    std::ostringstream bound;
    bound << record;
    EXPECT_NE(bound.str().find("Age"), std::string::npos);
    table.reset();

    EXPECT_FALSE(record.IsInitialized());
    EXPECT_EQ(record.Reset(), Status::NotUsable);
    MessageBuilder builder;
    EXPECT_EQ(record.Serialize(builder), Status::NotUsable);
    EXPECT_TRUE(record.Begin() == record.End());
    std::ostringstream text;
    text << record;
    EXPECT_EQ(text.str(), "Not initialized\n");
    EXPECT_TRUE(record == Record());
    const Record copy(record);  // a stale source gives an unbound copy
    EXPECT_FALSE(copy.IsInitialized());
    EXPECT_EQ(copy.GetTable(), nullptr);
    Testing::ExpectDatabaseException([&] { record.GetPrimaryKey(); }, DatabaseException::AllocateKey,
                                     "Tavrin::Database::Record::GetPrimaryKey", "");
}

// The serialised size tells the form: raw image up to 2048 bytes, the fields alone above.
TEST(Record, SerialisedFormIsRawUpTo2048Bytes) {
    struct Case {
        std::uint32_t recordLength;
        std::uint32_t expectedSize;
    };
    for (const Case& c : {Case{2048, 1 + 2048 + 4}, Case{2049, 1 + 2000 + 4}}) {
        const auto table = Unmanaged(c.recordLength, 2000);
        Record record(table.get());
        std::memset(record.GetData(), 0xA5, c.recordLength);
        record.SetRecordId(77);
        MessageBuilder builder;
        ASSERT_EQ(record.Serialize(builder), Status::Success);
        EXPECT_EQ(builder.GetLength(), c.expectedSize) << c.recordLength;
        EXPECT_EQ(builder.GetBuffer()[0], 1);
        EXPECT_EQ(DecodeI32(builder.GetBuffer() + c.expectedSize - 4), 77);

        MessageValidator validator(builder.GetBuffer(), builder.GetLength());
        Record back;
        ASSERT_EQ(back.Deserialize(table.get(), validator), Status::Success);
        EXPECT_EQ(std::memcmp(back.GetData(), record.GetData(), 2000), 0);
        EXPECT_EQ(back.GetRecordId(), 77u);
        EXPECT_EQ(validator.GetRemaining(), 0u);
    }
}

TEST(Record, DamagedMessagesAreRefused) {
    const auto table = Managed(PeopleFields());
    Record record(table.get());
    SetAge(record, 64);
    record.SetRecordId(2);
    MessageBuilder builder;
    ASSERT_EQ(record.Serialize(builder), Status::Success);

    // Another version leaves the record as it was.
    std::vector<unsigned char> message(builder.GetBuffer(), builder.GetBuffer() + builder.GetLength());
    message[0] = 2;
    Record target(record);
    MessageValidator validator(message.data(), static_cast<std::uint32_t>(message.size()));
    EXPECT_EQ(target.Deserialize(table.get(), validator), Status::WrongVersion);
    EXPECT_EQ(GetAge(target), 64);
    EXPECT_EQ(target.GetRecordId(), 2u);

    MessageValidator noTable(builder.GetBuffer(), builder.GetLength());
    EXPECT_EQ(Record().Deserialize(nullptr, noTable), Status::Invalid);
}

TEST(Record, MatchingFieldsByNameNeedSameNameAndType) {
    const auto table = Managed(PeopleFields());
    const auto other = Managed({FieldSpecification(7, "Code", FieldSpecification::UInt, 4, 0, 0),
                                FieldSpecification(8, "Age", FieldSpecification::UInt, 4, 0, 0),
                                FieldSpecification(9, "Name", FieldSpecification::TextString, 20, 0, 0),
                                FieldSpecification(1, "Id", FieldSpecification::UInt, 4, 0, 0)});
    const Record record(table.get());
    const Record theirs(other.get());
    std::vector<std::uint16_t> ids{99}, otherIds{98};
    ASSERT_EQ(record.GetMatchingFieldsByName(ids, theirs, otherIds), Status::Success);
    EXPECT_EQ(ids, (std::vector<std::uint16_t>{99, 2, 3}));
    EXPECT_EQ(otherIds, (std::vector<std::uint16_t>{98, 7, 9}));
    EXPECT_EQ(record.GetMatchingFieldsByName(ids, Record(), otherIds), Status::NotUsable);

    std::vector<std::uint16_t> byId;
    ASSERT_EQ(record.GetMatchingFieldsById(byId, theirs), Status::Success);
    EXPECT_EQ(byId, std::vector<std::uint16_t>{1});
    EXPECT_EQ(Record().GetMatchingFieldsById(byId, record), Status::NotUsable);
}

}  // namespace
}  // namespace Tavrin::Database
