// Records, keys, statuses and counts in messages: exact bytes, messages cut at every length or
// damaged in one place, and objects that belong to another table.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "RemoteTableTestSupport.h"
#include "TablesTestSupport.h"
#include "base/Encoding.h"
#include "indexes/IIndex.h"
#include "records/Key.h"
#include "records/Record.h"
#include "tables/UnmanagedTableFactory.h"

namespace Tavrin::Database {
namespace {

using namespace Testing;

// Age (SInt 4) and Code (UInt 4): an unmanaged record is exactly these 8 bytes.
std::unique_ptr<ITable> PlainTable() {
    return std::unique_ptr<ITable>(
        UnmanagedTableFactory::GetInstance().Create("Plain", kCreateFile, SampleFields(), 10, 8, kHalf, kAll));
}

Record MakeRecord(ITable& table, std::int32_t age, std::uint32_t code, std::uint32_t recordId) {
    Record record(&table);
    EXPECT_EQ(record.GetFieldList()->SetField(record.GetData(), 1, age), Status::Success);
    EXPECT_EQ(record.GetFieldList()->SetField(record.GetData(), 2, code), Status::Success);
    record.SetRecordId(recordId);
    return record;
}

std::vector<Record> ThreeRecords(ITable& table) {
    return {MakeRecord(table, 1, 2, 0), MakeRecord(table, 3, 4, 1), MakeRecord(table, 5, 6, 2)};
}

Key MakeKey(ITable& table, std::uint16_t indexNumber, std::uint32_t id, std::uint32_t recordId) {
    Key key(&table, indexNumber);
    if (indexNumber == 0) {
        EXPECT_EQ(key.GetFieldList()->SetField(key.GetData(), 1, id), Status::Success);
    }
    key.SetRecordId(recordId);
    return key;
}

std::uint32_t Length(const Bytes& message) { return static_cast<std::uint32_t>(message.size()); }

// The message cut to `cut` bytes, in a heap buffer of exactly that length.
std::unique_ptr<unsigned char[]> Cut(const Bytes& message, std::uint32_t cut) {
    auto copy = std::make_unique<unsigned char[]>(cut);
    if (cut != 0) std::memcpy(copy.get(), message.data(), cut);
    return copy;
}

TEST(TableMessages, StatusesAndRecordsHaveTheirExactForm) {
    const auto table = PlainTable();
    const std::vector<Record> records{MakeRecord(*table, -2, 0x01020304, 5),
                                      MakeRecord(*table, 7, 9, FieldListObject::NoRecordId)};
    MessageBuilder builder;
    ASSERT_EQ(table->SerializeRecords(builder, {0, 6, 0xFF}, records), Status::Success);

    Bytes expected;
    auto appendU32 = [&expected](std::uint32_t value) {
        unsigned char bytes[4];
        EncodeU32(bytes, value);
        expected.insert(expected.end(), bytes, bytes + 4);
    };
    for (std::uint32_t value : {3u, 0u, 6u, 0xFFu, 2u}) appendU32(value);
    for (const Record& record : records) {
        expected.push_back(1);  // version
        expected.insert(expected.end(), record.GetData(), record.GetData() + 8);
        appendU32(record.GetRecordId());
    }
    EXPECT_EQ(ToBytes(builder), expected);

    // Back, behind what the vectors held; a status keeps only its low 8 bits.
    expected[4 + 1] = 0x7F;  // status 0 becomes 0x7F00
    MessageValidator validator(expected.data(), Length(expected));
    std::vector<unsigned char> statuses{42};
    std::vector<Record> read{MakeRecord(*table, 1, 1, 1)};
    ASSERT_EQ(table->DeserializeRecords(validator, statuses, read), Status::Success);
    EXPECT_EQ(statuses, (std::vector<unsigned char>{42, 0, 6, 0xFF}));
    ASSERT_EQ(read.size(), 3u);
    EXPECT_EQ(read[1], records[0]);
    EXPECT_EQ(read[2], records[1]);
    EXPECT_EQ(read[1].GetRecordId(), 5u);
    EXPECT_EQ(read[2].GetRecordId(), FieldListObject::NoRecordId);
    EXPECT_EQ(validator.GetRemaining(), 0u);
}

TEST(TableMessages, RecordsCutAtAnyLengthLeaveTheVectorAtItsOldLength) {
    const auto table = PlainTable();
    const std::vector<Record> records = ThreeRecords(*table);
    MessageBuilder plain;
    ASSERT_EQ(table->SerializeRecords(plain, records), Status::Success);
    MessageBuilder withStatuses;
    ASSERT_EQ(table->SerializeRecords(withStatuses, {0, 0, 6}, records), Status::Success);

    for (const Bytes& message : {ToBytes(plain), ToBytes(withStatuses)}) {
        const bool hasStatuses = message.size() == withStatuses.GetLength();
        for (std::uint32_t cut = 0; cut < Length(message); ++cut) {
            const auto copy = Cut(message, cut);
            MessageValidator validator(copy.get(), cut);
            std::vector<Record> read{MakeRecord(*table, 9, 9, 9)};
            std::vector<unsigned char> statuses;
            const StatusCode status = hasStatuses ? table->DeserializeRecords(validator, statuses, read)
                                                  : table->DeserializeRecords(validator, read);
            EXPECT_EQ(status, Status::Invalid) << "cut at " << cut;
            ASSERT_EQ(read.size(), 1u) << "cut at " << cut;
            EXPECT_EQ(read[0].GetRecordId(), 9u);
        }
    }
}

TEST(TableMessages, ADamagedRecordLeavesTheVectorAtItsOldLength) {
    const auto table = PlainTable();
    const std::vector<Record> records = ThreeRecords(*table);
    MessageBuilder builder;
    ASSERT_EQ(table->SerializeRecords(builder, records), Status::Success);
    const Bytes message = ToBytes(builder);
    constexpr std::uint32_t kRecordSize = 1 + 8 + 4;

    Bytes newerThird = message;
    newerThird[4 + 2 * kRecordSize] = 2;  // the third record's version
    MessageValidator newer(newerThird.data(), Length(newerThird));
    std::vector<Record> read{records[0]};
    EXPECT_EQ(table->DeserializeRecords(newer, read), Status::WrongVersion);
    EXPECT_EQ(read.size(), 1u);

    // A count that the message can't hold ends where the bytes run out, not in an allocation.
    Bytes huge = message;
    EncodeU32(huge.data(), 0xFFFFFFFF);
    MessageValidator tooMany(huge.data(), Length(huge));
    EXPECT_EQ(table->DeserializeRecords(tooMany, read), Status::Invalid);
    EXPECT_EQ(read.size(), 1u);
    std::vector<unsigned char> statuses;
    MessageValidator tooManyStatuses(huge.data(), Length(huge));
    EXPECT_EQ(table->DeserializeRecords(tooManyStatuses, statuses, read), Status::Invalid);
    EXPECT_EQ(read.size(), 1u);
}

TEST(TableMessages, KeysCutOrDamagedKeepTheKeysReadBeforeTheFault) {
    const auto table = MakeRemotePeople();
    const std::vector<Key> keys{MakeKey(*table, 0, 11, 1), MakeKey(*table, 1, 0, 2), MakeKey(*table, 0, 33, 3)};
    MessageBuilder builder;
    ASSERT_EQ(table->SerializeKeys(builder, keys), Status::Success);
    const Bytes message = ToBytes(builder);
    const std::uint32_t firstKey = 1 + 4 + keys[0].GetIndex()->GetKeySize() + 4;
    const std::uint32_t secondKey = 1 + 4 + keys[1].GetIndex()->GetKeySize() + 4;
    ASSERT_EQ(message.size(), 4 + 2 * firstKey + secondKey);

    std::vector<Key> read;
    MessageValidator whole(message.data(), Length(message));
    ASSERT_EQ(table->DeserializeKeys(whole, read), Status::Success);
    ASSERT_EQ(read.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(read[i].GetIndexNumber(), keys[i].GetIndexNumber());
        EXPECT_EQ(read[i].GetRecordId(), keys[i].GetRecordId());
        EXPECT_EQ(read[i].GetIndex()->CompareKeys(read[i], keys[i]), 0);
    }

    for (std::uint32_t cut = 0; cut < Length(message); ++cut) {
        const auto copy = Cut(message, cut);
        MessageValidator validator(copy.get(), cut);
        std::vector<Key> partial;
        EXPECT_EQ(table->DeserializeKeys(validator, partial), Status::Invalid) << "cut at " << cut;
        const std::size_t whole = cut < 4 + firstKey ? 0 : cut < 4 + firstKey + secondKey ? 1 : 2;
        EXPECT_EQ(partial.size(), whole) << "cut at " << cut;
    }

    Bytes beyond = message;
    EncodeU32(beyond.data() + 4 + firstKey + 1, 2);  // the second key names index 2 of 2
    MessageValidator outOfRange(beyond.data(), Length(beyond));
    std::vector<Key> some;
    EXPECT_EQ(table->DeserializeKeys(outOfRange, some), Status::OutOfRange);
    EXPECT_EQ(some.size(), 1u);
}

TEST(TableMessages, ObjectsOfAnotherTableAreRefusedAfterWhatWasWritten) {
    const auto table = PlainTable();
    const auto other = PlainTable();
    MessageBuilder records;
    EXPECT_EQ(table->SerializeRecords(records, {MakeRecord(*table, 1, 1, 1), MakeRecord(*other, 2, 2, 2)}),
              Status::OtherTable);
    EXPECT_EQ(records.GetLength(), 4u + 13u);  // the count and the first record stay
    MessageBuilder unbound;
    EXPECT_EQ(table->SerializeRecords(unbound, {0}, {Record()}), Status::OtherTable);

    const auto people = MakeRemotePeople();
    const auto otherPeople = MakeRemotePeople();
    for (const Key& bad : {Key(), MakeKey(*otherPeople, 0, 1, 1)}) {
        MessageBuilder keys;
        EXPECT_EQ(people->SerializeKeys(keys, {MakeKey(*people, 0, 1, 1), bad}), Status::KeyInvalid);
        EXPECT_GT(keys.GetLength(), 4u);
    }
}

TEST(TableMessages, CountsAreTwoNumbers) {
    const auto table = PlainTable();
    const unsigned char bytes[8] = {1, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF};
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    MessageValidator both(bytes, 8);
    ASSERT_EQ(table->DeserializeCounts(both, first, second), Status::Success);
    EXPECT_EQ(first, 1u);
    EXPECT_EQ(second, 0xFFFFFFFEu);
    for (std::uint32_t cut : {0u, 3u, 7u}) {
        const auto copy = Cut(Bytes(bytes, bytes + 8), cut);
        MessageValidator validator(copy.get(), cut);
        EXPECT_EQ(table->DeserializeCounts(validator, first, second), Status::Invalid);
    }
}

}  // namespace
}  // namespace Tavrin::Database
