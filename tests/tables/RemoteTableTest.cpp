// RemoteTable and its factory: a table rebuilt from another table's description, its primary index,
// records and keys that cross between the two, the answers where there are no records, and
// descriptions that are cut short or damaged.

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "../base/ThrownStatus.h"
#include "RemoteTableTestSupport.h"
#include "TablesTestSupport.h"
#include "base/DatabaseException.h"
#include "indexes/IIndex.h"
#include "records/Key.h"
#include "records/Record.h"
#include "schema/IndexSpecification.h"
#include "tables/ManagedTableFactory.h"
#include "tables/UnmanagedTableFactory.h"

namespace Tavrin::Database {
namespace {

using namespace Testing;

constexpr std::uint32_t kPrimary = IndexSpecification::PrimaryUniqueProperty;
constexpr std::uint32_t kUnique = IndexSpecification::UniqueProperty;
constexpr std::uint32_t kDuplicate = IndexSpecification::DuplicateProperty;

void ExpectSameDescription(ITable& real, ITable& remote) {
    EXPECT_EQ(remote.GetName(), real.GetName());
    EXPECT_EQ(remote.IsManaged(), real.IsManaged());
    EXPECT_EQ(remote.GetFieldSpecificationList(), real.GetFieldSpecificationList());
    EXPECT_EQ(remote.GetRecordLength(), real.GetRecordLength());
    EXPECT_EQ(remote.GetIndexSpecificationList(), real.GetIndexSpecificationList());
    EXPECT_EQ(remote.GetPrimaryIndex(), real.GetPrimaryIndex());
    EXPECT_EQ(remote.GetSpecification().GetProperties(), real.GetSpecification().GetProperties());
    EXPECT_TRUE(remote.IsInMemory());
    // The description of the description is the same message, byte for byte.
    EXPECT_EQ(DescriptionOf(remote), DescriptionOf(real));
}

TEST(RemoteTable, DescribesTheTableItWasBuiltFromInBothLayouts) {
    // Property bits, including those that steer nothing, travel unchanged; no mutex bit is needed.
    const auto managed = std::unique_ptr<ITable>(ManagedTableFactory::GetInstance().Create(
        "Managed table", kCreateFile | 0x100, PersonFields(), 10, kHalf, kAll));
    const auto managedRemote = MakeRemote(DescriptionOf(*managed));
    ExpectSameDescription(*managed, *managedRemote);
    EXPECT_EQ(managedRemote->GetNumberOfIndexes(), 0u);
    EXPECT_EQ(managedRemote->GetPrimaryIndex(), 0xFFFF);

    // An unmanaged record longer than its fields keeps its length on the far side.
    const auto unmanaged = std::unique_ptr<ITable>(UnmanagedTableFactory::GetInstance().Create(
        "Unmanaged", kCreateFile, PersonFields(), 10, 32, kHalf, kAll));
    const auto unmanagedRemote = MakeRemote(DescriptionOf(*unmanaged));
    ExpectSameDescription(*unmanaged, *unmanagedRemote);
    EXPECT_FALSE(unmanagedRemote->IsManaged());
    EXPECT_EQ(unmanagedRemote->GetRecordLength(), 32u);
}

TEST(RemoteTable, PrimaryIndexIsAPrimaryUniqueOneOrElseTheFirstUniqueOne) {
    struct Case {
        std::vector<std::uint32_t> properties;
        std::uint16_t primary;
    };
    const std::vector<Case> cases{{{kDuplicate, kUnique, kPrimary}, 2},
                                  {{kPrimary, kUnique}, 0},
                                  {{kDuplicate, kUnique, kUnique}, 1},
                                  {{kDuplicate, kDuplicate}, 0xFFFF}};
    for (const Case& each : cases) {
        std::vector<IndexSpecification> indexes;
        for (std::uint32_t properties : each.properties) {
            const auto number = static_cast<std::uint16_t>(indexes.size());
            const auto field = static_cast<std::uint16_t>(number == 0 ? 1 : 3);
            indexes.push_back(TreeIndex("Index " + std::to_string(number), properties, {field}, number));
        }
        const auto remote = MakeRemote(DescriptionMessage(PersonTable(), indexes));
        EXPECT_EQ(remote->GetPrimaryIndex(), each.primary);
        EXPECT_EQ(remote->GetIndexSpecificationList(), indexes);
        EXPECT_EQ(remote->GetNumberOfIndexes(), indexes.size());
    }
}

TEST(RemoteTable, RecordsCrossFromTheRealTableAndBack) {
    const auto real = std::unique_ptr<ITable>(
        ManagedTableFactory::GetInstance().Create("People", kCreateFile, PersonFields(), 10, kHalf, kAll));
    const auto remote = MakeRemote(DescriptionOf(*real));
    std::vector<Record> sent;
    for (std::uint32_t id : {7u, 9u}) {
        Record record(real.get());
        ASSERT_EQ(record.GetFieldList()->SetField(record.GetData(), 1, id), Status::Success);
        ASSERT_EQ(record.GetFieldList()->SetField(record.GetData(), 2, std::string("person #0") + std::to_string(id)),
                  Status::Success);
        record.SetRecordId(id * 10);
        sent.push_back(record);
    }
    MessageBuilder there;
    ASSERT_EQ(real->SerializeRecords(there, sent), Status::Success);
    MessageValidator arriving(there.GetBuffer(), there.GetLength());
    std::vector<Record> received;
    ASSERT_EQ(remote->DeserializeRecords(arriving, received), Status::Success);
    ASSERT_EQ(received.size(), 2u);
    EXPECT_EQ(received[1].GetTable(), remote.get());
    EXPECT_EQ(received[1].GetRecordId(), 90u);
    std::string name;
    ASSERT_EQ(received[1].GetFieldList()->GetField(received[1].GetData(), 2, name), Status::Success);
    EXPECT_EQ(name, "person #09");

    MessageBuilder back;
    ASSERT_EQ(remote->SerializeRecords(back, received), Status::Success);
    EXPECT_EQ(ToBytes(back), ToBytes(there));
    MessageValidator returning(back.GetBuffer(), back.GetLength());
    std::vector<Record> returned;
    ASSERT_EQ(real->DeserializeRecords(returning, returned), Status::Success);
    EXPECT_EQ(returned, sent);
}

TEST(RemoteTable, BindsKeysAndFillsRecordsFromKeyValues) {
    const auto remote = MakeRemotePeople();
    Key key(remote.get(), 1);
    EXPECT_TRUE(key.IsInitialized());
    EXPECT_TRUE(key.GetIndex()->IsDuplicate());

    Record record(remote.get());
    const std::int32_t score = -5;
    const std::uint32_t id = 12;
    ASSERT_EQ(remote->BuildRecord(record, 1, {{&score, 4}}), Status::Success);
    ASSERT_EQ(remote->BuildRecord(record, 0, {{&id, 4}}), Status::Success);
    std::int32_t readScore = 0;
    std::uint32_t readId = 0;
    ASSERT_EQ(record.GetFieldList()->GetField(record.GetData(), 3, readScore), Status::Success);
    ASSERT_EQ(record.GetFieldList()->GetField(record.GetData(), 1, readId), Status::Success);
    EXPECT_EQ(readScore, -5);
    EXPECT_EQ(readId, 12u);
    EXPECT_EQ(remote->BuildRecord(record, 0, {{&id, 4}, {&id, 4}}), Status::Invalid);

    EXPECT_EQ(remote->BuildRecord(record, 2, {}), Status::IndexConflict);
    const auto other = MakeRemotePeople();
    Record foreign(other.get());
    EXPECT_EQ(remote->BuildRecord(foreign, 0, {{&id, 4}}), Status::OtherTable);
    EXPECT_EQ(remote->BuildRecord(foreign, 5, {}), Status::IndexConflict);  // the number is checked first
}

TEST(RemoteTable, AnswersNotAvailableWhereRecordsWouldBeNeeded) {
    const auto remote = MakeRemotePeople();
    ITable& table = *remote;
    Key key(remote.get(), 0);
    Record record(remote.get());
    std::vector<Record> records;
    std::vector<Key> keys{key};
    std::vector<unsigned char> statuses;
    std::uint32_t count = 99;
    std::uint32_t recordId = 0;
    const std::vector<std::function<StatusCode()>> operations{
        [&] { return table.OpenRecordFile(); },
        [&] { return table.CloseRecordFile(); },
        [&] { return table.Convert(); },
        [&] { return table.SaveAs("/tmp"); },
        [&] { return table.CopyFiles("/tmp", "/tmp/x"); },
        [&] { return table.Clear(); },
        [&] { return table.CopyRecords(remote.get(), true, 10); },
        [&] { return table.WriteRecord(record); },
        [&] { return table.WriteRecord(record, record); },
        [&] { return table.WriteRecord(record, std::vector<std::uint16_t>{1}); },
        [&] { return table.RemoveRecord(key); },
        [&] { return table.RemoveRecord(key, record); },
        [&] { return table.GetEqual(keys, statuses, records); },
        [&] { return table.GetEqual(key, record); },
        [&] { return table.GetFirst(key, records, 0); },
        [&] { return table.GetFirst(key, record); },
        [&] { return table.GetLast(key, records, 0); },
        [&] { return table.GetLast(key, record); },
        [&] { return table.GetNext(key, records, 0); },
        [&] { return table.GetNext(key, record); },
        [&] { return table.GetPrevious(key, records, 0); },
        [&] { return table.GetPrevious(key, record); },
        [&] { return table.GetFirstEqual(key, records, 1, 4, 0); },
        [&] { return table.GetFirstEqual(key, record, 1, 4); },
        [&] { return table.GetLastEqual(key, records, 1, 4, 0); },
        [&] { return table.GetLastEqual(key, record, 1, 4); },
        [&] { return table.GetNextEqual(key, records, 1, 4, 0); },
        [&] { return table.GetNextEqual(key, record, 1, 4); },
        [&] { return table.GetPreviousEqual(key, records, 1, 4, 0); },
        [&] { return table.GetPreviousEqual(key, record, 1, 4); },
        [&] { return table.GetFirstRecord(recordId, records, 0); },
        [&] { return table.GetFirstRecord(recordId, record); },
        [&] { return table.GetNextRecord(recordId, records, 0); },
        [&] { return table.GetNextRecord(recordId, record); },
        [&] { return table.GetMaxRecords(count); },
        [&] { return table.GetCurrentRecords(count); },
    };
    for (std::size_t i = 0; i < operations.size(); ++i) {
        EXPECT_EQ(operations[i](), Status::NotAvailable) << "operation " << i;
    }
    EXPECT_EQ(count, 0u);
    EXPECT_TRUE(records.empty());
    EXPECT_TRUE(statuses.empty());
    EXPECT_FALSE(table.IsRecordFileOpen());

    EXPECT_EQ(Tavrin::Testing::ThrownStatus([&] { table.CreateRecordFile(); }), Status::NotAvailable);
    EXPECT_EQ(Tavrin::Testing::ThrownStatus([&] { table.CheckIntegrity(); }), Status::NotAvailable);
    EXPECT_EQ(Tavrin::Testing::ThrownStatus([&] { delete table.Clone("", false, false, 1); }), Status::NotAvailable);
    std::vector<IndexSpecification> more{TreeIndex("More", kUnique, {2}, 2)};
    const Thrown indexes = Catch([&] { table.CreateIndexes(more); });
    EXPECT_TRUE(indexes.isDatabase);
    EXPECT_EQ(indexes.code, DatabaseException::AllocateIndex);
    EXPECT_EQ(indexes.function, "Tavrin::Database::RemoteTable::CreateIndexes");
    const Thrown temporary = Catch([&] { table.CreateTemporaryIndex(more[0]); });
    EXPECT_EQ(temporary.code, DatabaseException::AllocateIndex);
    EXPECT_EQ(temporary.function, "Tavrin::Database::RemoteTable::CreateTemporaryIndex");
    EXPECT_EQ(table.GetNumberOfIndexes(), 2u);
}

Thrown CreateFrom(const Bytes& message) {
    return Catch([&] { MakeRemote(message); });
}

TEST(RemoteTableFactory, RefusesEveryCutOfADescriptionAndNewerVersions) {
    const Bytes message = DescriptionMessage(PersonTable(), {TreeIndex("ById", kPrimary, {1}, 0),
                                                             TreeIndex("ByName", kDuplicate, {2, 3}, 1)});
    for (std::size_t cut = 0; cut < message.size(); ++cut) {
        // Each cut in a buffer of its own length, so that a sanitizer sees a read past its end.
        const Bytes shorter(message.begin(), message.begin() + static_cast<std::ptrdiff_t>(cut));
        const Thrown thrown = CreateFrom(shorter);
        ASSERT_TRUE(thrown.isStatus) << "cut at " << cut;
        EXPECT_EQ(thrown.code, Status::Invalid) << "cut at " << cut;
        EXPECT_EQ(thrown.function, "Tavrin::Database::RemoteTable::Create");
    }
    ASSERT_NO_THROW(MakeRemote(message));

    Bytes newer = message;
    newer[0] = 2;
    EXPECT_EQ(CreateFrom(newer).code, Status::WrongVersion);
}

TEST(RemoteTableFactory, RefusesIndexesTheFieldsCannotBuildAndCountsTheMessageCannotHold) {
    // An index on a field that the table lacks: the index's own exception comes through.
    const Thrown missingField = CreateFrom(DescriptionMessage(PersonTable(), {TreeIndex("Bad", kUnique, {9}, 0)}));
    EXPECT_TRUE(missingField.isDatabase);
    EXPECT_EQ(missingField.code, DatabaseException::InvalidParameter);

    // A count of indexes far beyond what follows ends where the bytes run out.
    Bytes huge = DescriptionMessage(PersonTable(), {});
    for (std::size_t i = huge.size() - 4; i < huge.size(); ++i) huge[i] = 0xFF;
    const Thrown thrown = CreateFrom(huge);
    EXPECT_TRUE(thrown.isStatus);
    EXPECT_EQ(thrown.code, Status::Invalid);
}

}  // namespace
}  // namespace Tavrin::Database
