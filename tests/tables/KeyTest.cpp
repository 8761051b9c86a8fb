// Key on a table of Index objects in temporary memory: binding, the duplicate tail, building keys
// from records, values and other keys, comparison, the serialised form, and stale keys.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "WriteTestSupport.h"
#include "tavrin/base/Encoding.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/Record.h"
#include "records/RecordsTestSupport.h"

namespace Tavrin::Database {
namespace {

using Field = IndexSpecification::Field;

using IndexedTable = Testing::FaultyTable;

// A table in temporary memory over Id, Name and Score, with `indexes` numbered in the order given.
std::unique_ptr<IndexedTable> MakeTable(const std::vector<IndexSpecification>& indexes) {
    return std::make_unique<IndexedTable>(
        10,
        std::vector<FieldSpecification>{FieldSpecification(1, "Id", FieldSpecification::UInt, 4, 0, 0),
                                        FieldSpecification(2, "Name", FieldSpecification::TextString, 10, 0, 0),
                                        FieldSpecification(3, "Score", FieldSpecification::SInt, 4, 0, 0)},
        indexes);
}

constexpr std::uint16_t ById = 0;       // unique on Id
constexpr std::uint16_t ByName = 1;     // duplicates allowed, on Name then Score
constexpr std::uint16_t ByScore = 2;    // unique on Score, descending

std::vector<IndexSpecification> ThreeIndexes() {
    return {IndexSpecification("ById", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty,
                               {Field(1, 0)}),
            IndexSpecification("ByName", IndexSpecification::RedBlack, IndexSpecification::DuplicateProperty,
                               {Field(2, 0), Field(3, 0)}),
            IndexSpecification("ByScore", IndexSpecification::RedBlack, IndexSpecification::UniqueProperty,
                               {Field(3, Field::DescendingFlag)})};
}

class KeyTest : public testing::Test {
protected:
    std::unique_ptr<IndexedTable> table_ = MakeTable(ThreeIndexes());

    Record MakeRecord(std::uint32_t id, const char* name, std::int32_t score, std::uint32_t recordId) {
        Record record(table_.get());
        const FieldList& list = *record.GetFieldList();
        EXPECT_EQ(list.SetField(record.GetData(), 1, id), Status::Success);
        EXPECT_EQ(list.SetField(record.GetData(), 2, std::string(name)), Status::Success);
        EXPECT_EQ(list.SetField(record.GetData(), 3, score), Status::Success);
        record.SetRecordId(recordId);
        return record;
    }
};

bool IsDefined(const FieldListObject& object, std::uint16_t id) {
    return Testing::IsDefined(*object.GetFieldList(), object.GetData(), id);
}

std::int32_t Tail(const Key& key) { return DecodeI32(key.GetData() + key.GetFieldList()->GetDataLength()); }

TEST_F(KeyTest, BindsToAnIndexWithAnEmptyKey) {
    const Key key(table_.get(), ByName);
    EXPECT_TRUE(key.IsInitialized());
    EXPECT_EQ(key.GetRecordId(), FieldListObject::NoRecordId);
    EXPECT_TRUE(key.IsInline());
    EXPECT_FALSE(IsDefined(key, 2));
    EXPECT_EQ(Tail(key), -1);

    Testing::ExpectDatabaseException([&] { Key(table_.get(), 3); }, DatabaseException::AllocateIndex,
                                     "Tavrin::Database::Key::Key", "");
}

TEST_F(KeyTest, DuplicateKeyCarriesTheRecordIdInItsTail) {
    const Record record = MakeRecord(1, "Ann", 50, 9);
    Key key = record.GetKey(ByName);
    EXPECT_EQ(key.GetIndex()->GetKeySize(), key.GetFieldList()->GetDataLength() + 4);
    EXPECT_EQ(Tail(key), 9);
    EXPECT_EQ(key.GetRecordId(), FieldListObject::NoRecordId);  // the tail is not the object's id
    EXPECT_TRUE(IsDefined(key, 2) && IsDefined(key, 3));
    ASSERT_EQ(key.Reset(), Status::Success);
    EXPECT_EQ(Tail(key), -1);
    EXPECT_FALSE(IsDefined(key, 2));
}

TEST_F(KeyTest, DuplicateKeysTieBreakByRecordIdUniqueKeysDoNot) {
    const Key first = MakeRecord(1, "Ann", 50, 2).GetKey(ByName);
    const Key second = MakeRecord(2, "Ann", 50, 5).GetKey(ByName);
    const Key unset = MakeRecord(3, "Ann", 50, FieldListObject::NoRecordId).GetKey(ByName);
    const IIndex& byName = *first.GetIndex();
    EXPECT_EQ(byName.CompareKeys(first, second), -1);
    EXPECT_EQ(byName.CompareKeys(second, first), 1);
    EXPECT_EQ(byName.CompareKeys(unset, first), -1);  // -1 is a signed record id
    EXPECT_EQ(byName.CompareKeys(first, first), 0);

    const Key low = MakeRecord(1, "Ann", 10, 2).GetKey(ByScore);
    const Key high = MakeRecord(2, "Bob", 90, 5).GetKey(ByScore);
    const Key again = MakeRecord(3, "Cid", 10, 7).GetKey(ByScore);
    EXPECT_GT(low.GetIndex()->CompareKeys(low, high), 0);  // descending
    EXPECT_EQ(low.GetIndex()->CompareKeys(low, again), 0);
}

TEST_F(KeyTest, KeyFromRecordOfAnotherTableIsRefused) {
    const auto other = MakeTable(ThreeIndexes());
    const Record foreign(other.get());
    Key key(table_.get(), ById);
    EXPECT_EQ(key.BuildKey(foreign), Status::OtherTable);
    EXPECT_EQ(Key().BuildKey(foreign), Status::NotUsable);
    EXPECT_EQ(key.BuildKey(MakeRecord(4, "Dan", 1, 0)), Status::Success);
}

TEST_F(KeyTest, RecordFromKeyHasJustTheKeyFields) {
    const Key key = MakeRecord(8, "Eve", 70, 3).GetPrimaryKey();
    EXPECT_EQ(key.GetIndexNumber(), ById);
    const Record record(key);
    EXPECT_TRUE(IsDefined(record, 1));
    EXPECT_FALSE(IsDefined(record, 2));
    EXPECT_FALSE(IsDefined(record, 3));
    Record unbound;
    EXPECT_EQ(unbound.Initialize(Key()), Status::NotUsable);
    Testing::ExpectDatabaseException([] { Record record{Key()}; }, DatabaseException::AllocateRecord,
                                     "Tavrin::Database::Record::Record", "");
}

TEST_F(KeyTest, KeyOfAnotherIndexCopiesTheFieldsBothHave) {
    const Key byName = MakeRecord(5, "Fay", 33, 6).GetKey(ByName);
    Key byScore(table_.get(), ByScore);
    ASSERT_EQ(byScore.CopyFields(byName, true), Status::Success);
    EXPECT_EQ(byScore.GetIndex()->CompareKeys(byScore, MakeRecord(0, "x", 33, 0).GetKey(ByScore)), 0);

    Key target(table_.get(), ByName);
    ASSERT_EQ(target.CopyFields(byScore, true), Status::Success);  // no Name in the source: stays undefined
    EXPECT_FALSE(IsDefined(target, 2));
    EXPECT_TRUE(IsDefined(target, 3));
    EXPECT_EQ(Tail(target), -1);  // the source has no tail to give

    Key sameIndex(table_.get(), ByName);
    ASSERT_EQ(sameIndex.CopyFields(byName, false), Status::Success);
    EXPECT_EQ(std::memcmp(sameIndex.GetData(), byName.GetData(), byName.GetIndex()->GetKeySize()), 0);
    EXPECT_EQ(Key().CopyFields(byName, false), Status::NotUsable);
}

TEST_F(KeyTest, KeyFromRecordGoesThroughTheIndexOrByIdAcrossTables) {
    Key key(table_.get(), ByName);
    ASSERT_EQ(key.CopyFields(MakeRecord(1, "Gus", 4, 12), true), Status::Success);
    EXPECT_EQ(Tail(key), 12);

    const auto other = MakeTable({IndexSpecification(
        "ByName", IndexSpecification::RedBlack, IndexSpecification::UniqueProperty, {Field(2, 0)})});
    Key foreign(other.get(), 0);
    // By id across tables: the foreign key lacks Score, so a strict copy stops there.
    ASSERT_EQ(foreign.CopyFields(MakeRecord(1, "Gus", 4, 12), false), Status::Success);
    EXPECT_TRUE(IsDefined(foreign, 2));
    EXPECT_EQ(key.CopyFields(foreign, true), Status::FieldMissing);
}

TEST_F(KeyTest, ValuesFillKeysAndRecordsInKeyOrder) {
    Key key(table_.get(), ByName);
    const char name[] = "Hal";
    unsigned char score[4];
    EncodeI32(score, 12);
    const std::vector<unsigned char> before(key.GetData(), key.GetData() + key.GetIndex()->GetKeySize());
    const KeyValueList tooMany{{name, 3}, {score, 4}, {score, 4}};
    EXPECT_EQ(key.GetIndex()->BuildKey(key, tooMany), Status::Invalid);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), key.GetData()));

    ASSERT_EQ(key.GetIndex()->BuildKey(key, KeyValueList{{name, 3}}), Status::Success);
    EXPECT_TRUE(IsDefined(key, 2));
    EXPECT_FALSE(IsDefined(key, 3));  // fewer values leave the rest
    EXPECT_EQ(key.GetIndex()->BuildKey(key, KeyValueList{{score, 4}, {score, 3}}), Status::LengthMismatch);

    Record record(table_.get());
    EXPECT_EQ(key.GetIndex()->BuildRecord(record, tooMany), Status::Invalid);
    ASSERT_EQ(key.GetIndex()->BuildRecord(record, KeyValueList{{name, 3}, {score, 4}}), Status::Success);
    EXPECT_EQ(key.GetIndex()->CompareKeys(record.GetKey(ByName), MakeRecord(0, "Hal", 12, FieldListObject::NoRecordId).GetKey(ByName)),
              0);
    EXPECT_FALSE(IsDefined(record, 1));
}

TEST_F(KeyTest, SerialisedKeyRoundTripsAndDamageIsRefused) {
    Key key = MakeRecord(3, "Ivy", -5, 21).GetKey(ByName);
    key.SetRecordId(40);
    MessageBuilder builder;
    ASSERT_EQ(key.Serialize(builder), Status::Success);
    const std::uint32_t keySize = key.GetIndex()->GetKeySize();
    ASSERT_EQ(builder.GetLength(), 1 + 4 + keySize + 4);
    EXPECT_EQ(DecodeU32(builder.GetBuffer() + 1), ByName);

    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    Key back;
    ASSERT_EQ(back.Deserialize(table_.get(), validator), Status::Success);
    EXPECT_EQ(back.GetIndexNumber(), ByName);
    EXPECT_EQ(back.GetRecordId(), 40u);
    EXPECT_EQ(Tail(back), 21);
    EXPECT_EQ(back.GetIndex()->CompareKeys(back, key), 0);

    std::vector<unsigned char> message(builder.GetBuffer(), builder.GetBuffer() + builder.GetLength());
    auto read = [&](ITable* table) {
        MessageValidator damaged(message.data(), static_cast<std::uint32_t>(message.size()));
        return Key().Deserialize(table, damaged);
    };
    message[0] = 2;
    EXPECT_EQ(read(table_.get()), Status::WrongVersion);
    message[0] = 1;
    EncodeU32(message.data() + 1, 3);  // one past the last index
    EXPECT_EQ(read(table_.get()), Status::OutOfRange);
    const auto bare = MakeTable({});
    EXPECT_EQ(read(bare.get()), Status::IndexConflict);  // no index: the range test lets it through
    EXPECT_EQ(read(nullptr), Status::Invalid);
}

TEST_F(KeyTest, NewTokenOrGoneTableUnbindsRecordsAndKeys) {
    Record record = MakeRecord(1, "Kim", 3, 0);
    Key key = record.GetKey(ById);
    Key copy(key);
    EXPECT_TRUE(copy.IsInline());
    table_->Renew();
    EXPECT_FALSE(record.IsInitialized() || key.IsInitialized());
    EXPECT_EQ(record.Reset(), Status::NotUsable);
    EXPECT_EQ(key.Reset(), Status::NotUsable);
    std::ostringstream text;
    text << record << key;
    EXPECT_EQ(text.str(), "Not initialized\nNot initialized\n");
    const Key stale(copy);  // a stale source gives an unbound copy
    EXPECT_EQ(stale.GetIndex(), nullptr);
    // Bound again, a key works as before, until its table is gone.
    ASSERT_EQ(key.Initialize(table_.get(), ById), Status::Success);
    EXPECT_EQ(key.Reset(), Status::Success);
    table_.reset();
    EXPECT_EQ(key.Reset(), Status::NotUsable);
}

}  // namespace
}  // namespace Tavrin::Database
