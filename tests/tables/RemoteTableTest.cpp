// RemoteTable and its factory: a table rebuilt from a real table's description, the records and
// keys that cross between the two, the answers where there are no records, damaged descriptions,
// and descriptions that a factory would refuse.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "../base/ThrownStatus.h"
#include "tavrin/base/Encoding.h"
#include "RemoteTableTestSupport.h"
#include "TablesTestSupport.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/Record.h"
#include "tavrin/schema/TableSpecification.h"
#include "tavrin/tables/UnmanagedTableFactory.h"

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

// Descriptions as a message may carry them: read from their wire form, so that nothing validates
// them on the way in.
FieldSpecification UncheckedField(std::uint16_t id, FieldSpecification::Type type, std::uint32_t maxLength,
                                  std::uint32_t offset = 0) {
    MessageBuilder builder;
    builder.AppendId16(id);
    builder.AppendString("F" + std::to_string(id));
    for (std::uint32_t value : {static_cast<std::uint32_t>(type), maxLength, offset, 0u}) builder.AppendUInt32(value);
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    FieldSpecification field;
    EXPECT_EQ(field.Deserialize(validator), Status::Success);
    return field;
}

IndexSpecification UncheckedIndex(const std::string& name, std::uint32_t type, std::uint32_t properties,
                                  const std::vector<std::uint16_t>& fields) {
    MessageBuilder builder;
    builder.AppendId16(IndexSpecification::NoNumber);
    builder.AppendString(name);
    builder.AppendUInt32(type);
    builder.AppendUInt32(properties);
    builder.AppendUInt32(static_cast<std::uint32_t>(fields.size()));
    for (std::uint16_t id : fields) IndexSpecification::Field(id, 0).Serialize(builder);
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    IndexSpecification index;
    EXPECT_EQ(index.Deserialize(validator), Status::Success);
    return index;
}

// The message that a table of `table` with `indexes` would write, numbering the indexes by position.
Bytes Describe(const TableSpecification& table, std::vector<IndexSpecification> indexes) {
    MessageBuilder builder;
    EXPECT_EQ(table.Serialize(builder, TableSpecification::CurrentVersion), Status::Success);
    EXPECT_EQ(builder.AppendUInt32(static_cast<std::uint32_t>(indexes.size())), Status::Success);
    for (std::uint16_t number = 0; number < indexes.size(); ++number) {
        indexes[number].SetNumber(number);
        EXPECT_EQ(indexes[number].Serialize(builder), Status::Success);
    }
    return ToBytes(builder);
}

Bytes Repro(const std::string& name) {
    const Bytes bytes = ReadFile(std::string(TAVRIN_REPRO_DIR) + "/" + name);
    EXPECT_FALSE(bytes.empty()) << "no input " << name << " in " << TAVRIN_REPRO_DIR;
    return bytes;
}

// Calls every operation of `table` that answers a status, and every accessor that rebuilds a
// description, with a record and a key of each index; reports each one that throws.
void ExpectNothingThrows(ITable& table, const std::string& input) {
    const auto expectNoThrow = [&](const char* operations, const std::function<void()>& action) {
        try {
            action();
        } catch (const std::exception& exception) {
            ADD_FAILURE() << input << ", " << operations << ": " << exception.what();
        }
    };
    Record record(&table);
    Record previous(&table);
    std::vector<Key> keys;
    for (std::uint16_t number = 0; number < table.GetNumberOfIndexes(); ++number) keys.emplace_back(&table, number);
    keys.emplace_back();  // and one bound to nothing
    const std::uint16_t fieldId = table.GetFieldIdList().front();
    std::vector<unsigned char> statuses;
    std::vector<Record> records{record};
    std::uint32_t number = 0;
    MessageBuilder builder;

    expectNoThrow("table operations", [&] {
        IndexSpecification index;
        FieldSpecification field;
        FieldSpecification::Type type;
        IIndex* structure = nullptr;
        std::vector<std::uint16_t> ids;
        std::vector<IndexSpecification> indexes;
        table.OpenRecordFile();
        table.CloseRecordFile();
        table.Sync();
        table.Convert();
        table.SaveAs("");
        table.CopyFiles("", "");
        table.Clear();
        table.CopyRecords(&table, false, 1);
        table.ResetRecord(record);
        table.WriteRecord(record, previous);
        table.WriteRecord(record, std::vector<std::uint16_t>{fieldId});
        table.WriteRecord(record);
        table.GetEqual(keys, statuses, records);
        table.GetFirstRecord(number, records, 2);
        table.GetFirstRecord(number, record);
        table.GetNextRecord(number, records, 2);
        table.GetNextRecord(number, record);
        table.GetSpecification();
        table.GetMatchingFields(FieldSpecification(), ids);
        table.GetFieldSpecificationList();
        table.GetFieldSpecification(fieldId, field);
        table.GetFirstFieldSpecification(field);
        table.GetNextFieldSpecification(field);
        table.GetMatchingIndexes(IndexSpecification(), indexes);
        table.GetIndexSpecificationList();
        table.GetFirstFieldId(ids.emplace_back());
        table.GetNextFieldId(ids.back());
        table.GetFieldType(fieldId, type);
        table.GetMaxRecords(number);
        table.GetCurrentRecords(number);
        table.IsOrderedBefore(record, keys.front());
        table.IsSameBinding(record, keys.front());
        for (std::uint16_t at = 0; at <= table.GetNumberOfIndexes(); ++at) {
            table.GetIndexSpecification(at, index);
            table.GetIndex(at, structure);
            table.BuildRecord(record, at, KeyValueList{});
        }
    });
    for (Key& key : keys) {
        expectNoThrow("key operations", [&] {
            table.RemoveRecord(key, record);
            table.RemoveRecord(key);
            table.GetEqual(key, record);
            table.GetFirst(key, record);
            table.GetLast(key, record);
            table.GetNext(key, record);
            table.GetPrevious(key, record);
            table.GetFirst(key, records, 2);
            table.GetLast(key, records, 2);
            table.GetNext(key, records, 2);
            table.GetPrevious(key, records, 2);
            table.GetFirstEqual(key, record, fieldId, FieldList::FullLength);
            table.GetLastEqual(key, record, fieldId, FieldList::FullLength);
            table.GetNextEqual(key, record, fieldId, FieldList::FullLength);
            table.GetPreviousEqual(key, record, fieldId, FieldList::FullLength);
            table.GetFirstEqual(key, records, fieldId, FieldList::FullLength, 2);
            table.GetLastEqual(key, records, fieldId, FieldList::FullLength, 2);
            table.GetNextEqual(key, records, fieldId, FieldList::FullLength, 2);
            table.GetPreviousEqual(key, records, fieldId, FieldList::FullLength, 2);
        });
    }
    expectNoThrow("messages", [&] {
        records.assign(1, record);
        keys.pop_back();
        EXPECT_EQ(table.SerializeSpecification(builder), Status::Success) << input;
        table.SerializeRecords(builder, std::vector<unsigned char>{0}, records);
        table.SerializeRecords(builder, records);
        table.SerializeKeys(builder, keys);
        MessageValidator validator(builder.GetBuffer(), builder.GetLength());
        std::uint32_t first = 0;
        std::uint32_t second = 0;
        table.DeserializeCounts(validator, first, second);
        table.DeserializeRecords(validator, statuses, records);
        table.DeserializeRecords(validator, records);
        table.DeserializeKeys(validator, keys);
        // What the remote table writes describes it again.
        const Bytes description = DescriptionOf(table);
        EXPECT_EQ(DescriptionOf(*MakeRemote(description)), description) << input;
    });
}

TEST(RemoteTableFactory, RefusesWhatAFactoryRefusesAndWhatItAcceptsAnswersEveryOperation) {
    constexpr std::uint32_t kMax = TableSpecification::MaxRecordLength;
    const auto managed = [](const std::vector<FieldSpecification>& fields, std::uint32_t maxRecords = 16) {
        return TableSpecification("People", 0, fields, maxRecords, kHalf, kAll);
    };
    const auto unmanaged = [](const std::vector<FieldSpecification>& fields, std::uint32_t recordLength) {
        return TableSpecification("People", 0, fields, 16, recordLength, kHalf, kAll);
    };
    const auto tree = [](const std::string& name, std::uint32_t properties, std::vector<std::uint16_t> fields) {
        return UncheckedIndex(name, IndexSpecification::RedBlack, properties, fields);
    };
    const IndexSpecification byId = tree("ById", IndexSpecification::PrimaryUniqueProperty, {1});
    const IndexSpecification byScore = tree("ByScore", IndexSpecification::DuplicateProperty, {3, 2});
    std::vector<FieldSpecification> repeatedId = PersonFields();
    repeatedId.push_back(UncheckedField(2, FieldSpecification::UInt, 4));
    // A Blob slot of n bytes takes a 4-byte prefix and the bitmap 1 byte.
    const FieldSpecification justFits = UncheckedField(1, FieldSpecification::Blob, kMax - 5);
    const FieldSpecification oneTooMany = UncheckedField(1, FieldSpecification::Blob, kMax - 4);
    const std::uint32_t hash = IndexSpecification::Hash;

    struct Input {
        std::string what;
        Bytes message;
        bool accepted = false;
        std::string refusal{};  // the message of the refusal, where the test pins it
    };
    const std::vector<Input> inputs{
        {"repro accessor throws", Repro("remote-accessor-throws.bin")},
        {"repro serialize specification throws", Repro("remote-serialize-specification-throws.bin")},
        {"repro record length oom", Repro("remote-record-length-oom.bin"), false,
         "record length <4194304071> of table <Msg> passes the limit of <67108864> bytes"},
        // The table.
        {"no records", Describe(managed(PersonFields(), 0), {byId})},
        {"no fields", Describe(managed({}), {})},
        {"field its type refuses", Describe(managed({UncheckedField(1, FieldSpecification::Blob, 4)}), {})},
        {"unknown field type", Describe(managed({UncheckedField(1, FieldSpecification::Type{17}, 4)}), {})},
        {"repeated field id", Describe(managed(repeatedId), {byId})},
        {"managed record over the bound", Describe(managed({oneTooMany}), {}), false,
         "record length <67108865> of table <People> passes the limit of <67108864> bytes"},
        {"unmanaged record over the bound", Describe(unmanaged(PersonFields(), kMax + 1), {byId}), false,
         "record length <67108865> of table <People> passes the limit of <67108864> bytes"},
        {"variable length unmanaged field",
         Describe(unmanaged({UncheckedField(1, FieldSpecification::Blob, 8)}, 8), {})},
        {"unmanaged field beyond the record", Describe(unmanaged(PersonFields(), 17), {})},
        // The indexes.
        {"empty index name", Describe(managed(PersonFields()), {tree("", 2, {1})}), false,
         "empty name in index specification <0>"},
        {"index type None", Describe(managed(PersonFields()), {UncheckedIndex("T", 0, 2, {1})})},
        {"unknown index type", Describe(managed(PersonFields()), {UncheckedIndex("T", 3, 2, {1})})},
        {"no-property index", Describe(managed(PersonFields()), {tree("P", 1, {1})})},
        {"no-property bit among others", Describe(managed(PersonFields()), {tree("P", 3, {1})})},
        {"repeated index name", Describe(managed(PersonFields()), {byId, tree("ById", 4, {3})}), false,
         "repeated index name <ById> for table <People>"},
        {"two primary unique indexes", Describe(managed(PersonFields()), {byId, tree("Other", 8, {2})})},
        {"no key fields", Describe(managed(PersonFields()), {tree("Empty", 2, {})}), false,
         "empty index field list for index <Empty>"},
        {"key field not in the table", Describe(managed(PersonFields()), {tree("Gone", 2, {9})})},
        {"repeated key field", Describe(managed(PersonFields()), {tree("Twice", 4, {3, 3})})},
        // What a factory accepts, up to the bound; a hash index is described though not built here.
        {"people", DescriptionOf(*MakePeople(kCreateFile)), true},
        {"managed record at the bound", Describe(managed({justFits}), {tree("Lob", 2, {1})}), true},
        {"unmanaged record at the bound", Describe(unmanaged(PersonFields(), kMax), {byId, byScore}), true},
        {"hash index", Describe(managed(PersonFields()), {byScore, UncheckedIndex("H", hash, 2, {1})}), true},
        {"unique and duplicate", Describe(managed(PersonFields()), {tree("Both", 6, {1})}), true},
    };
    for (const Input& input : inputs) {
        if (!input.accepted) {
            const Thrown thrown = Catch([&] { MakeRemote(input.message); });
            EXPECT_TRUE(thrown.isDatabase) << input.what;
            EXPECT_EQ(thrown.code, DatabaseException::InvalidParameter) << input.what;
            if (!input.refusal.empty()) {
                EXPECT_EQ(thrown.message, input.refusal) << input.what;
            }
            continue;
        }
        std::unique_ptr<ITable> remote;
        ASSERT_NO_THROW(remote = MakeRemote(input.message)) << input.what;
        ExpectNothingThrows(*remote, input.what);
    }
}

}  // namespace
}  // namespace Tavrin::Database
