// Records, keys, statuses and counts in messages: the exact form, messages cut at every length or
// damaged in one place, and objects of another table.

#include <gtest/gtest.h>

#include <cstdint>
#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include "RemoteTableTestSupport.h"
#include "TablesTestSupport.h"
#include "tavrin/base/Encoding.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/Record.h"
#include "tavrin/tables/UnmanagedTableFactory.h"

namespace Tavrin::Database {
namespace {

using namespace Testing;

// Age (SInt 4) and Code (UInt 4): an unmanaged record is exactly these 8 bytes.
std::unique_ptr<ITable> PlainTable() {
    return std::unique_ptr<ITable>(
        UnmanagedTableFactory::GetInstance().Create("Plain", kCreateFile, SampleFields(), 10, 8, kHalf, kAll));
}

Record MakeRecord(ITable& table, std::int32_t age, std::uint32_t recordId) {
    Record record(&table);
    EXPECT_EQ(record.GetFieldList()->SetField(record.GetData(), 1, age), Status::Success);
    EXPECT_EQ(record.GetFieldList()->SetField(record.GetData(), 2, 0x01020304u), Status::Success);
    record.SetRecordId(recordId);
    return record;
}

std::vector<Record> ThreeRecords(ITable& table) {
    return {MakeRecord(table, -2, 5), MakeRecord(table, 7, FieldListObject::NoRecordId), MakeRecord(table, 9, 0)};
}

// Runs `read` on the message cut to each shorter length, each cut in a heap buffer of exactly its
// length; `check` gets the status and the length of the cut.
void ForEveryCut(const Bytes& message, const std::function<StatusCode(MessageValidator&)>& read,
                 const std::function<void(StatusCode, std::uint32_t)>& check) {
    for (std::uint32_t cut = 0; cut < message.size(); ++cut) {
        auto copy = std::make_unique<unsigned char[]>(cut);
        if (cut != 0) std::memcpy(copy.get(), message.data(), cut);
        MessageValidator validator(copy.get(), cut);
        check(read(validator), cut);
    }
}

TEST(TableMessages, StatusesRecordsAndCountsHaveTheirExactForm) {
    const auto table = PlainTable();
    const std::vector<Record> records = ThreeRecords(*table);
    MessageBuilder builder;
    ASSERT_EQ(table->SerializeRecords(builder, {0, 6}, records), Status::Success);
    Bytes expected;
    auto appendU32 = [&expected](std::uint32_t value) {
        unsigned char bytes[4];
        EncodeU32(bytes, value);
        expected.insert(expected.end(), bytes, bytes + 4);
    };
    for (std::uint32_t value : {2u, 0u, 6u, 3u}) appendU32(value);
    for (const Record& record : records) {
        expected.push_back(1);  // version
        expected.insert(expected.end(), record.GetData(), record.GetData() + 8);
        appendU32(record.GetRecordId());
    }
    EXPECT_EQ(ToBytes(builder), expected);

    // Back, behind what the vectors held; a status keeps only its low 8 bits.
    expected[4 + 1] = 0x7F;
    MessageValidator validator(expected.data(), static_cast<std::uint32_t>(expected.size()));
    std::vector<unsigned char> statuses{42};
    std::vector<Record> read{records[2]};
    ASSERT_EQ(table->DeserializeRecords(validator, statuses, read), Status::Success);
    EXPECT_EQ(statuses, (std::vector<unsigned char>{42, 0, 6}));
    ASSERT_EQ(read.size(), 4u);
    EXPECT_EQ(read[2], records[1]);
    EXPECT_EQ(read[2].GetRecordId(), FieldListObject::NoRecordId);

    // Counts are two 32-bit numbers: here the status count and the first status.
    std::uint32_t counts[2] = {};
    MessageValidator eight(expected.data(), 8);
    ASSERT_EQ(table->DeserializeCounts(eight, counts[0], counts[1]), Status::Success);
    EXPECT_EQ(counts[0] + counts[1], 2u + 0x7F00u);
    MessageValidator seven(expected.data(), 7);
    EXPECT_EQ(table->DeserializeCounts(seven, counts[0], counts[1]), Status::Invalid);
}

TEST(TableMessages, EveryCutIsRefusedAndKeepsTheVectorsRight) {
    const auto table = PlainTable();
    MessageBuilder plain;
    ASSERT_EQ(table->SerializeRecords(plain, ThreeRecords(*table)), Status::Success);
    MessageBuilder withStatuses;
    ASSERT_EQ(table->SerializeRecords(withStatuses, {0, 0, 6}, ThreeRecords(*table)), Status::Success);
    std::vector<Record> records{MakeRecord(*table, 1, 1)};
    std::vector<unsigned char> statuses;
    auto recordsKept = [&](StatusCode status, std::uint32_t cut) {
        EXPECT_EQ(status, Status::Invalid) << "cut at " << cut;
        EXPECT_EQ(records.size(), 1u) << "cut at " << cut;
    };
    ForEveryCut(ToBytes(plain), [&](MessageValidator& v) { return table->DeserializeRecords(v, records); },
                recordsKept);
    ForEveryCut(ToBytes(withStatuses),
                [&](MessageValidator& v) { return table->DeserializeRecords(v, statuses, records); }, recordsKept);

    // Keys read before the cut stay: a key message of three keys whose first two are the same size.
    const auto people = MakePeople(kCreateFile);
    const std::vector<Key> keys{IdKey(*people, 1), IdKey(*people, 2), Key(people.get(), 1)};
    MessageBuilder keyMessage;
    ASSERT_EQ(people->SerializeKeys(keyMessage, keys), Status::Success);
    MessageBuilder oneKey;
    ASSERT_EQ(keys[0].Serialize(oneKey), Status::Success);
    const std::uint32_t keySize = oneKey.GetLength();
    std::vector<Key> read;
    ForEveryCut(
        ToBytes(keyMessage),
        [&](MessageValidator& v) {
            read.clear();
            return people->DeserializeKeys(v, read);
        },
        [&](StatusCode status, std::uint32_t cut) {
            EXPECT_EQ(status, Status::Invalid) << "cut at " << cut;
            EXPECT_EQ(read.size(), cut < 4 ? 0 : std::min<std::uint32_t>((cut - 4) / keySize, 2)) << "cut at " << cut;
        });
}

TEST(TableMessages, DamagedOrForeignObjectsAreRefused) {
    const auto table = PlainTable();
    const std::vector<Record> records = ThreeRecords(*table);
    MessageBuilder builder;
    ASSERT_EQ(table->SerializeRecords(builder, records), Status::Success);
    std::vector<Record> read{records[0]};

    Bytes newerThird = ToBytes(builder);
    newerThird[4 + 2 * 13] = 2;  // the third record's version
    MessageValidator newer(newerThird.data(), static_cast<std::uint32_t>(newerThird.size()));
    EXPECT_EQ(table->DeserializeRecords(newer, read), Status::WrongVersion);
    // A count that the message can't hold ends where the bytes run out, not in an allocation.
    Bytes huge = ToBytes(builder);
    EncodeU32(huge.data(), 0xFFFFFFFF);
    MessageValidator tooMany(huge.data(), static_cast<std::uint32_t>(huge.size()));
    EXPECT_EQ(table->DeserializeRecords(tooMany, read), Status::Invalid);
    EXPECT_EQ(read.size(), 1u);

    const auto people = MakePeople(kCreateFile);
    MessageBuilder keyMessage;
    ASSERT_EQ(people->SerializeKeys(keyMessage, {IdKey(*people, 1)}), Status::Success);
    Bytes beyond = ToBytes(keyMessage);
    EncodeU32(beyond.data() + 5, 2);  // index 2 of a table with two
    MessageValidator outOfRange(beyond.data(), static_cast<std::uint32_t>(beyond.size()));
    std::vector<Key> keys;
    EXPECT_EQ(people->DeserializeKeys(outOfRange, keys), Status::OutOfRange);

    // Writing stops at the first object that is not this table's, after what went before it.
    MessageBuilder mixed;
    EXPECT_EQ(table->SerializeRecords(mixed, {records[0], MakeRecord(*PlainTable(), 1, 1)}), Status::OtherTable);
    EXPECT_EQ(mixed.GetLength(), 4u + 13u);
    MessageBuilder unbound;
    EXPECT_EQ(table->SerializeRecords(unbound, {0}, {Record()}), Status::OtherTable);
    const auto otherPeople = MakePeople(kCreateFile);
    for (const Key& bad : {Key(), IdKey(*otherPeople, 1)}) {
        MessageBuilder keyWriter;
        EXPECT_EQ(people->SerializeKeys(keyWriter, {IdKey(*people, 1), bad}), Status::KeyInvalid);
        EXPECT_EQ(keyWriter.GetLength(), keyMessage.GetLength());
    }
}

}  // namespace
}  // namespace Tavrin::Database
