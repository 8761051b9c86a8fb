// RemoteTable and its factory: a table rebuilt from a real table's description, the records and
// keys that cross between the two, the answers where there are no records, damaged descriptions.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "../base/ThrownStatus.h"
#include "base/Encoding.h"
#include "RemoteTableTestSupport.h"
#include "TablesTestSupport.h"
#include "records/Key.h"
#include "records/Record.h"
#include "tables/UnmanagedTableFactory.h"

namespace Tavrin::Database {
namespace {

using namespace Testing;

// Sends `objects` from `from` to `to`, which must send back the same bytes; gives what `to` read.
template <class T>
std::vector<T> Cross(ITable& from, ITable& to, const std::vector<T>& objects) {
    MessageBuilder there;
    MessageBuilder back;
    std::vector<T> received;
    if constexpr (std::is_same_v<T, Record>) {
        EXPECT_EQ(from.SerializeRecords(there, objects), Status::Success);
        MessageValidator validator(there.GetBuffer(), there.GetLength());
        EXPECT_EQ(to.DeserializeRecords(validator, received), Status::Success);
        EXPECT_EQ(to.SerializeRecords(back, received), Status::Success);
    } else {
        EXPECT_EQ(from.SerializeKeys(there, objects), Status::Success);
        MessageValidator validator(there.GetBuffer(), there.GetLength());
        EXPECT_EQ(to.DeserializeKeys(validator, received), Status::Success);
        EXPECT_EQ(to.SerializeKeys(back, received), Status::Success);
    }
    EXPECT_EQ(ToBytes(back), ToBytes(there));
    return received;
}

TEST(RemoteTable, MirrorsARealTableAndCarriesItsRecordsAndKeys) {
    const auto real = MakePeople(kCreateFile);  // no mutex bit: the remote table has one anyway
    for (std::uint32_t id : {5u, 6u}) {
        Record record(real.get());
        ASSERT_EQ(record.GetFieldList()->SetField(record.GetData(), 1, id), Status::Success);
        ASSERT_EQ(record.GetFieldList()->SetField(record.GetData(), 2, std::string("remote #0") + std::to_string(id)),
                  Status::Success);
        ASSERT_EQ(real->WriteRecord(record), Status::Success);
    }
    const auto remote = MakeRemote(DescriptionOf(*real));
    EXPECT_TRUE(remote->IsManaged());
    EXPECT_EQ(remote->GetPrimaryIndex(), 0);
    EXPECT_EQ(DescriptionOf(*remote), DescriptionOf(*real));

    // Records and keys that the real table found go to the remote one and come back unchanged.
    Key key(real.get(), 1);
    std::vector<Record> records;
    ASSERT_EQ(real->GetFirst(key, records, 0), Status::Success);
    const std::vector<Record> remoteRecords = Cross(*real, *remote, records);
    ASSERT_EQ(remoteRecords.size(), 2u);
    EXPECT_EQ(remoteRecords[1].GetTable(), remote.get());
    EXPECT_EQ(remoteRecords[1].GetRecordId(), records[1].GetRecordId());
    std::string name;
    ASSERT_EQ(remoteRecords[1].GetFieldList()->GetField(remoteRecords[1].GetData(), 2, name), Status::Success);
    EXPECT_EQ(name, "remote #06");
    EXPECT_EQ(Cross(*remote, *real, remoteRecords), records);

    const std::vector<Key> remoteKeys = Cross(*real, *remote, std::vector<Key>{key, Key(0, records[0])});
    ASSERT_EQ(remoteKeys.size(), 2u);
    EXPECT_EQ(remoteKeys[1].GetIndexNumber(), 0);
    EXPECT_EQ(remoteKeys[0].GetTable(), remote.get());

    // The unmanaged layout and its record length, and a table without indexes.
    const auto unmanaged = std::unique_ptr<ITable>(UnmanagedTableFactory::GetInstance().Create(
        "Unmanaged", kCreateFile, PersonFields(), 10, 32, kHalf, kAll));
    const auto unmanagedRemote = MakeRemote(DescriptionOf(*unmanaged));
    EXPECT_FALSE(unmanagedRemote->IsManaged());
    EXPECT_EQ(unmanagedRemote->GetRecordLength(), 32u);
    EXPECT_EQ(unmanagedRemote->GetPrimaryIndex(), 0xFFFF);
}

TEST(RemoteTable, AnswersNotAvailableWhereRecordsWouldBeNeeded) {
    const auto remote = MakeRemote(DescriptionOf(*MakePeople(kCreateFile)));
    ITable& table = *remote;
    // 13 comes before any other answer: the table has indexes (26 for the record file operations),
    // an unopened store (16 for Clear), a blank key (27) and a store walk from no record (30).
    Key key(remote.get(), 0);
    Key unbound;
    Record record(remote.get());
    std::vector<Key> keys{key};
    std::vector<unsigned char> statuses;
    std::vector<Record> records;
    std::uint32_t number = FieldListObject::NoRecordId;
    std::uint32_t count = 7;
    const std::vector<std::function<StatusCode()>> operations{
        [&] { return table.OpenRecordFile(); },
        [&] { return table.Clear(); },
        [&] { return table.WriteRecord(record); },
        [&] { return table.RemoveRecord(key); },
        [&] { return table.GetEqual(keys, statuses, records); },
        [&] { return table.GetFirst(key, records, 0); },
        [&] { return table.GetNextEqual(unbound, records, 1, 0xFFFFFFFF, 0); },
        [&] { return table.GetNextRecord(number, records, 0); },
        [&] { return table.GetMaxRecords(count); },
        [&] { return table.GetCurrentRecords(count); },
    };
    for (std::size_t at = 0; at < operations.size(); ++at) {
        EXPECT_EQ(operations[at](), Status::NotAvailable) << "operation " << at;
    }
    EXPECT_TRUE(statuses.empty());
    EXPECT_TRUE(records.empty());
    EXPECT_EQ(count, 0u);
    EXPECT_FALSE(table.IsRecordFileOpen());
    for (const auto& thrower : std::vector<std::function<void()>>{
             [&] { table.CreateRecordFile(); }, [&] { table.CheckIntegrity(); },
             [&] { delete table.Clone("", false, false, 0); }}) {
        EXPECT_EQ(Tavrin::Testing::ThrownStatus(thrower), Status::NotAvailable);
    }

    // What it can do: build a record from key values, and empty it again.
    unsigned char id[4];
    EncodeU32(id, 42);
    ASSERT_EQ(table.BuildRecord(record, 0, KeyValueList{{id, 4}}), Status::Success);
    std::uint32_t built = 0;
    ASSERT_EQ(record.GetFieldList()->GetField(record.GetData(), 1, built), Status::Success);
    EXPECT_EQ(built, 42u);
    EXPECT_EQ(table.ResetRecord(record), Status::Success);
    EXPECT_EQ(record.GetFieldList()->GetField(record.GetData(), 1, built), Status::Undefined);

    std::vector<IndexSpecification> more{TreeIndex("More", IndexSpecification::UniqueProperty, {2})};
    const Thrown thrown = Catch([&] { table.CreateIndexes(more); });
    EXPECT_EQ(thrown.code, DatabaseException::AllocateIndex);
    EXPECT_EQ(thrown.function, "Tavrin::Database::RemoteTable::CreateIndexes");
    EXPECT_EQ(Catch([&] { table.CreateTemporaryIndex(more[0]); }).code, DatabaseException::AllocateIndex);
    EXPECT_EQ(table.GetNumberOfIndexes(), 2u);
}

TEST(RemoteTableFactory, RefusesEveryCutOfADescriptionAndWhatItCannotBuild) {
    const Bytes message = DescriptionOf(*MakePeople(kCreateFile));
    for (std::size_t cut = 0; cut < message.size(); ++cut) {
        // Each cut in a buffer of its own length, so that a sanitizer sees a read past its end.
        const Thrown thrown = Catch([&] { MakeRemote(Bytes(message.begin(), message.begin() + cut)); });
        ASSERT_TRUE(thrown.isStatus) << "cut at " << cut;
        EXPECT_EQ(thrown.code, Status::Invalid) << "cut at " << cut;
        EXPECT_EQ(thrown.function, "Tavrin::Database::RemoteTable::Create");
    }
    Bytes newer = message;
    newer[0] = 2;
    EXPECT_EQ(Catch([&] { MakeRemote(newer); }).code, Status::WrongVersion);

    // The last key field of the last index names no field of the table.
    Bytes missingField = message;
    missingField[missingField.size() - 8] = 9;
    const Thrown missing = Catch([&] { MakeRemote(missingField); });
    EXPECT_TRUE(missing.isDatabase);
    EXPECT_EQ(missing.code, DatabaseException::InvalidParameter);
}

}  // namespace
}  // namespace Tavrin::Database
