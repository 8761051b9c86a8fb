// The write path: insert or update by primary key, the fast path of unchanged keys, writes of listed
// fields, removal by any index, Clear, and the undo of writes that fail midway.

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

#include "WriteTestSupport.h"

namespace Tavrin::Database::Testing {
namespace {

constexpr std::uint32_t kNone = FieldListObject::NoRecordId;

// What a table holds: each stored record with its id, and the order of every index.
struct Snapshot {
    std::vector<std::pair<std::uint32_t, Person>> stored;
    std::vector<std::vector<std::uint32_t>> walks;
    bool operator==(const Snapshot&) const = default;
};

Snapshot Take(ITable& table) {
    Snapshot snapshot;
    for (const Record& record : StoredRecords(table)) snapshot.stored.emplace_back(record.GetRecordId(), ToPerson(record));
    for (std::uint16_t number = 0; number < table.GetNumberOfIndexes(); ++number) {
        snapshot.walks.push_back(WalkIndex(table, number));
    }
    return snapshot;
}

Person Stored(ITable& table, std::uint32_t id) {
    Record found;
    EXPECT_EQ(FindById(table, id, found), Status::Success) << "id " << id;
    return ToPerson(found);
}

TEST(TableWrite, SecondWriteOfAKeyReplacesTheRecord) {
    auto table = MakePeople();
    Record first = ToRecord(*table, {1, 10, 5, 50, "first"});
    Record previous(table.get());
    ASSERT_EQ(table->WriteRecord(first, previous), Status::Success);
    EXPECT_NE(first.GetRecordId(), kNone);
    EXPECT_FALSE(previous.IsInitialized()) << "nothing was replaced";

    Record second = ToRecord(*table, {1, 11, 6, 60, "second"});
    ASSERT_EQ(table->WriteRecord(second, previous), Status::Success);
    EXPECT_EQ(second.GetRecordId(), kNone) << "an update by key leaves the caller's id";
    EXPECT_EQ(ToPerson(previous), (Person{1, 10, 5, 50, "first"}));
    EXPECT_EQ(previous.GetRecordId(), kNone);
    EXPECT_EQ(CountOf(*table), 1u);
    EXPECT_EQ(Stored(*table, 1), (Person{1, 11, 6, 60, "second"}));
    ExpectIndexesMatchStore(*table);
}

TEST(TableWrite, RecordWithItsIdTakesTheFastPathOnlyWhileKeyFieldsAreUnchanged) {
    auto table = MakePeople();
    WriteAll(*table, {{1, 10, 5, 50}, {2, 20, 5, 40}});
    Record record = ToRecord(*table, {3, 30, 7, 70, "old"});
    ASSERT_EQ(table->WriteRecord(record), Status::Success);
    const std::uint32_t id = record.GetRecordId();

    // A non-key field: the stored record is updated in place, and `previous` carries the id.
    ASSERT_EQ(record.GetFieldList()->SetField(record.GetData(), kNote, std::string("new")), Status::Success);
    Record previous;
    ASSERT_EQ(table->WriteRecord(record, previous), Status::Success);
    EXPECT_EQ(previous.GetRecordId(), id);
    EXPECT_EQ(ToPerson(previous).note, "old");
    EXPECT_EQ(Stored(*table, 3).note, "new");

    // A secondary key field: the key path finds the record by its primary key and moves its keys.
    ASSERT_EQ(record.GetFieldList()->SetField(record.GetData(), kScore, std::int32_t{45}), Status::Success);
    ASSERT_EQ(table->WriteRecord(record, previous), Status::Success);
    EXPECT_EQ(previous.GetRecordId(), kNone);
    EXPECT_EQ(ToPerson(previous).score, 70);
    EXPECT_EQ(record.GetRecordId(), id);
    ExpectIndexesMatchStore(*table);

    // The primary key field: a new record under the new key, the old one stays.
    ASSERT_EQ(record.GetFieldList()->SetField(record.GetData(), kId, std::uint32_t{4}), Status::Success);
    ASSERT_EQ(record.GetFieldList()->SetField(record.GetData(), kCode, std::uint32_t{40}), Status::Success);
    ASSERT_EQ(table->WriteRecord(record), Status::Success);
    EXPECT_NE(record.GetRecordId(), id);
    EXPECT_EQ(CountOf(*table), 4u);
    EXPECT_EQ(Stored(*table, 3).score, 45);
    ExpectIndexesMatchStore(*table);
}

TEST(TableWrite, ListedFieldsAreTheOnlyOnesWritten) {
    auto table = MakePeople();
    WriteAll(*table, {{1, 10, 5, 50, "kept"}});

    // On an existing key, by the key path and by the fast path; the caller's record never changes.
    Record change = ToRecord(*table, {1, 99, 9, 20, "changed"});
    const Person asGiven = ToPerson(change);
    ASSERT_EQ(table->WriteRecord(change, std::vector<std::uint16_t>{}), Status::Success);
    EXPECT_EQ(Stored(*table, 1), (Person{1, 10, 5, 50, "kept"}));
    ASSERT_EQ(table->WriteRecord(change, std::vector<std::uint16_t>{kScore}), Status::Success);
    EXPECT_EQ(Stored(*table, 1), (Person{1, 10, 5, 20, "kept"}));
    EXPECT_EQ(ToPerson(change), asGiven);
    EXPECT_EQ(change.GetRecordId(), kNone);
    ExpectIndexesMatchStore(*table);

    Record stored;
    ASSERT_EQ(FindById(*table, 1, stored), Status::Success);
    ASSERT_EQ(stored.GetFieldList()->SetField(stored.GetData(), kNote, std::string("fast")), Status::Success);
    ASSERT_EQ(stored.GetFieldList()->SetField(stored.GetData(), kGroup, std::int32_t{8}), Status::Success);
    ASSERT_EQ(table->WriteRecord(stored, std::vector<std::uint16_t>{kNote}), Status::Success);
    EXPECT_EQ(Stored(*table, 1), (Person{1, 10, 5, 20, "fast"}));

    // On a missing key: the key's fields and the listed ones, nothing else.
    Record added = ToRecord(*table, {2, 20, 6, 60, "added"});
    ASSERT_EQ(table->WriteRecord(added, std::vector<std::uint16_t>{kNote}), Status::Success);
    EXPECT_EQ(added.GetRecordId(), kNone);
    Record found;
    ASSERT_EQ(FindById(*table, 2, found), Status::Success);
    const FieldList& list = *found.GetFieldList();
    for (std::uint16_t id : {kCode, kGroup, kScore}) {
        bool defined = true;
        ASSERT_EQ(list.IsFieldDefined(found.GetData(), id, defined), Status::Success);
        EXPECT_FALSE(defined) << "field " << id;
    }
    EXPECT_EQ(ToPerson(found).note, "added");
    ExpectIndexesMatchStore(*table);

    EXPECT_EQ(table->WriteRecord(change, std::vector<std::uint16_t>{999}), Status::NotFound);
}

TEST(TableWrite, TakenUniqueKeyLeavesStoreAndIndexesAsBefore) {
    auto table = MakePeople();
    WriteAll(*table, {{1, 10, 5, 50}, {2, 20, 5, 50}});
    const Snapshot before = Take(*table);

    Record added = ToRecord(*table, {3, 10, 1, 1});
    EXPECT_EQ(table->WriteRecord(added), Status::IndexConflict);
    EXPECT_EQ(Take(*table), before);

    // The update changes the group as well, so the duplicate index moved before the unique one
    // refused; the undo moves it back.
    Record moved = ToRecord(*table, {1, 20, 7, 50});
    Record previous;
    EXPECT_EQ(table->WriteRecord(moved, previous), Status::IndexConflict);
    EXPECT_EQ(Take(*table), before);
    ExpectIndexesMatchStore(*table);

    // The failed add left its id with the caller; that entry is free, so the next write adds.
    ASSERT_EQ(added.GetFieldList()->SetField(added.GetData(), kCode, std::uint32_t{30}), Status::Success);
    EXPECT_EQ(table->WriteRecord(added), Status::Success);
    EXPECT_EQ(CountOf(*table), 3u);
    ExpectIndexesMatchStore(*table);
}

TEST(TableWrite, FullStoreWithoutGrowthRefusesTheAddAndKeepsEverything) {
    auto table = MakePeople("", 4, 0);
    StatusCode status = Status::Success;
    std::uint32_t id = 1;
    for (; id < 10 && status == Status::Success; ++id) {
        Record record = ToRecord(*table, {id, id * 10, 1, 1});
        const Snapshot before = Take(*table);
        status = table->WriteRecord(record);
        if (status != Status::Success) {
            EXPECT_EQ(Take(*table), before);
        }
    }
    EXPECT_EQ(status, Status::StoreFull);
    EXPECT_GE(CountOf(*table), 3u);
    ExpectIndexesMatchStore(*table);
}

TEST(TableWrite, FailedAddIsUndoneInTheStoreAndEveryIndex) {
    FaultyTable table;
    WriteAll(table, {{1, 10, 5, 50}, {2, 20, 5, 40}, {3, 30, 6, 50}});
    const Snapshot before = Take(table);

    // The third index refuses the key, by status and by exception; the second index's lookup fails.
    const std::tuple<const char*, Fault*, Fault> faults[] = {
        {"add answers", &table.Faulty(kByGroup).add, Fault{0, Status::Invalid}},
        {"add throws", &table.Faulty(kByGroup).add, Fault{0, Status::OutOfMemory, true}},
        {"find answers", &table.Faulty(kByCode).find, Fault{0, Status::Invalid}}};
    Record record;
    for (const auto& [what, fault, planned] : faults) {
        SCOPED_TRACE(what);
        *fault = planned;
        record = ToRecord(table, {4, 40, 5, 45});
        EXPECT_EQ(table.WriteRecord(record), planned.status);
        EXPECT_EQ(Take(table), before);
    }
    ExpectIndexesMatchStore(table);

    // When the undo itself fails, its status is the answer (and the first index keeps a stray key).
    table.Faulty(kByGroup).add = Fault{0, Status::Invalid};
    table.Faulty(kById).remove = Fault{0, Status::OutOfRange};
    record = ToRecord(table, {4, 40, 5, 45});
    EXPECT_EQ(table.WriteRecord(record), Status::OutOfRange);
    EXPECT_EQ(CountOf(table), 3u);
}

TEST(TableWrite, RemovalGoesOnPastAFailingIndex) {
    FaultyTable table;
    WriteAll(table, {{1, 10, 5, 50}, {2, 20, 5, 40}});
    table.Faulty(kByCode).remove = Fault{0, Status::Invalid};
    Record record = ToRecord(table, Person{1});
    Key key(kById, record);
    EXPECT_EQ(table.RemoveRecord(key), Status::Invalid);
    EXPECT_EQ(CountOf(table), 1u);
    EXPECT_EQ(WalkIndex(table, kById).size(), 1u);
    EXPECT_EQ(WalkIndex(table, kByCode).size(), 2u) << "only the failing index keeps the key";
    EXPECT_EQ(WalkIndex(table, kByGroup).size(), 1u);
}

TEST(TableWrite, RemoveTakesTheRecordOutOfEveryIndex) {
    auto table = MakePeople();
    WriteAll(*table, {{1, 10, 5, 50}, {2, 20, 5, 50}, {3, 30, 5, 50}, {4, 40, 6, 10}});

    Record removed;
    Key byCode(table.get(), kByCode);
    std::uint32_t code = 40;
    ASSERT_EQ(IndexOf(*table, kByCode).BuildKey(byCode, KeyValueList{{&code, 4}}), Status::Success);
    ASSERT_EQ(table->RemoveRecord(byCode, removed), Status::Success);
    EXPECT_EQ(ToPerson(removed), (Person{4, 40, 6, 10}));
    EXPECT_NE(removed.GetRecordId(), kNone);
    EXPECT_EQ(table->RemoveRecord(byCode), Status::NotFound);

    // Three records share group and score; a duplicate key names exactly one of them.
    Record middle;
    ASSERT_EQ(FindById(*table, 2, middle), Status::Success);
    Key byGroup(kByGroup, middle);
    ASSERT_EQ(table->RemoveRecord(byGroup), Status::Success);
    EXPECT_EQ(CountOf(*table), 2u);
    std::vector<Person> left;
    for (const Record& record : StoredRecords(*table)) left.push_back(ToPerson(record));
    EXPECT_EQ(left, (std::vector<Person>{{1, 10, 5, 50}, {3, 30, 5, 50}}));
    ExpectIndexesMatchStore(*table);

    // Keys that are not this table's.
    auto other = MakePeople();
    Key foreign(other.get(), kById);
    Key unbound;
    EXPECT_EQ(table->RemoveRecord(foreign), Status::KeyInvalid);
    EXPECT_EQ(table->RemoveRecord(unbound, removed), Status::KeyInvalid);
}

TEST(TableWrite, ForeignRecordsAndTablesWithoutPrimaryIndexAreRefused) {
    auto table = MakePeople();
    auto other = MakePeople();
    Record foreign = ToRecord(*other, {1, 10, 5, 50});
    Record unbound;
    EXPECT_EQ(table->WriteRecord(foreign), Status::OtherTable);
    EXPECT_EQ(table->WriteRecord(unbound), Status::OtherTable);
    EXPECT_EQ(CountOf(*table), 0u);

    std::unique_ptr<ITable> plain = MakeBarePeople();
    std::vector<IndexSpecification> indexes{PeopleIndexes()[kByGroup]};
    plain->CreateIndexes(indexes);
    Record record = ToRecord(*plain, {1, 10, 5, 50});
    EXPECT_EQ(plain->WriteRecord(record), Status::NoPrimaryIndex);
}

TEST(TableWrite, ClearEmptiesStoreAndIndexes) {
    auto table = MakePeople();
    EXPECT_EQ(table->Clear(), Status::Success);
    WriteAll(*table, {{1, 10, 5, 50}, {2, 20, 5, 50}});
    EXPECT_EQ(table->Clear(), Status::Success);
    EXPECT_EQ(CountOf(*table), 0u);
    for (std::uint16_t number = 0; number < 3; ++number) EXPECT_TRUE(WalkIndex(*table, number).empty());
    WriteAll(*table, {{2, 20, 5, 50}});
    ExpectIndexesMatchStore(*table);

    EXPECT_EQ(MakeInMemory("Closed", 0)->Clear(), Status::NotOpen);
}

}  // namespace
}  // namespace Tavrin::Database::Testing
