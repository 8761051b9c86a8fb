#pragma once
// Helpers of the write and index tests: a table of people with three indexes, a check that every
// index agrees with the store, and a table whose indexes fail on demand.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "TablesTestSupport.h"
#include "tavrin/base/Exception.h"
#include "tavrin/indexes/Index.h"
#include "tavrin/indexes/RedBlackTreeIndex.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/ManagedFieldListFactory.h"
#include "tavrin/records/Record.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Database::Testing {

using Field = IndexSpecification::Field;

constexpr std::uint16_t kId = 1, kCode = 2, kGroup = 3, kScore = 4, kNote = 5;
constexpr std::uint16_t kById = 0, kByCode = 1, kByGroup = 2;  // index numbers of PeopleIndexes()

inline std::vector<FieldSpecification> PeopleFields() {
    return {FieldSpecification(kId, "Id", FieldSpecification::UInt, 4, 0, 0),
            FieldSpecification(kCode, "Code", FieldSpecification::UInt, 4, 0, 0),
            FieldSpecification(kGroup, "Group", FieldSpecification::SInt, 4, 0, 0),
            FieldSpecification(kScore, "Score", FieldSpecification::SInt, 4, 0, 0),
            FieldSpecification(kNote, "Note", FieldSpecification::TextString, 16, 0, 0)};
}

// Primary unique on Id; unique on Code; duplicates on Group ascending, then Score descending.
inline std::vector<IndexSpecification> PeopleIndexes() {
    return {IndexSpecification("ById", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty,
                               {Field(kId, 0)}),
            IndexSpecification("ByCode", IndexSpecification::RedBlack, IndexSpecification::UniqueProperty,
                               {Field(kCode, 0)}),
            IndexSpecification("ByGroup", IndexSpecification::RedBlack, IndexSpecification::DuplicateProperty,
                               {Field(kGroup, 0), Field(kScore, Field::DescendingFlag)})};
}

// The People table without indexes, in memory when `directory` is empty.
// A `cacheSize` other than kAll gives it a disk store with a cache of that many kilobytes.
inline std::unique_ptr<ITable> MakeBarePeople(const std::string& directory = "", std::uint32_t properties = kCreateFile,
                                              std::uint32_t maxRecords = 16, std::uint32_t growRecords = kHalf,
                                              std::uint32_t cacheSize = kAll) {
    auto& factory = ManagedTableFactory::GetInstance();
    return std::unique_ptr<ITable>(
        directory.empty()
            ? factory.Create("People", properties, PeopleFields(), maxRecords, growRecords, cacheSize)
            : factory.Create("People", directory, properties, PeopleFields(), maxRecords, growRecords, cacheSize));
}

// The People table with a mutex and PeopleIndexes().
inline std::unique_ptr<ITable> MakePeople(const std::string& directory = "", std::uint32_t maxRecords = 16,
                                          std::uint32_t growRecords = kHalf) {
    std::unique_ptr<ITable> table = MakeBarePeople(directory, kCreateFile | 2, maxRecords, growRecords);
    std::vector<IndexSpecification> indexes = PeopleIndexes();
    table->CreateIndexes(indexes);
    return table;
}

struct Person {
    std::uint32_t id = 0;
    std::uint32_t code = 0;
    std::int32_t group = 0;
    std::int32_t score = 0;
    std::string note = "-";
    bool operator==(const Person&) const = default;
};

inline Record ToRecord(ITable& table, const Person& person) {
    Record record(&table);
    const FieldList& list = *record.GetFieldList();
    EXPECT_EQ(list.SetField(record.GetData(), kId, person.id), Status::Success);
    EXPECT_EQ(list.SetField(record.GetData(), kCode, person.code), Status::Success);
    EXPECT_EQ(list.SetField(record.GetData(), kGroup, person.group), Status::Success);
    EXPECT_EQ(list.SetField(record.GetData(), kScore, person.score), Status::Success);
    EXPECT_EQ(list.SetField(record.GetData(), kNote, person.note), Status::Success);
    return record;
}

inline Person ToPerson(const Record& record) {
    Person person;
    const FieldList& list = *record.GetFieldList();
    list.GetField(record.GetData(), kId, person.id);
    list.GetField(record.GetData(), kCode, person.code);
    list.GetField(record.GetData(), kGroup, person.group);
    list.GetField(record.GetData(), kScore, person.score);
    list.GetField(record.GetData(), kNote, person.note);
    return person;
}

inline void WriteAll(ITable& table, const std::vector<Person>& people) {
    for (const Person& person : people) {
        Record record = ToRecord(table, person);
        ASSERT_EQ(table.WriteRecord(record), Status::Success) << "id " << person.id;
    }
}

// Looks the record of `id` up through the primary index into `record`.
inline StatusCode FindById(ITable& table, std::uint32_t id, Record& record) {
    record = ToRecord(table, Person{id});
    Key key(kById, record);
    return table.GetEqual(key, record);
}

inline Index& IndexOf(ITable& table, std::uint16_t number) {
    IIndex* index = nullptr;
    EXPECT_EQ(table.GetIndex(number, index), Status::Success);
    return static_cast<Index&>(*index);
}

// The record ids of index `number` in the order of a GetFirst/GetNext walk. Fails the test when a
// key is not strictly greater than the one before it.
inline std::vector<std::uint32_t> WalkIndex(ITable& table, std::uint16_t number) {
    Index& index = IndexOf(table, number);
    std::vector<std::uint32_t> ids;
    Key key(&table, number);
    Key previous;
    std::uint32_t id = 0;
    for (StatusCode status = index.GetFirst(key, id); status == Status::Success; status = index.GetNext(key, id)) {
        if (previous.IsInitialized()) {
            EXPECT_LT(index.CompareKeys(previous, key), 0) << "index " << number;
        }
        previous = key;
        ids.push_back(id);
    }
    return ids;
}

// Every record of the store, by its id.
inline std::vector<Record> StoredRecords(ITable& table) {
    std::vector<Record> records;
    std::uint32_t id = 0;
    Record record;
    for (StatusCode status = table.GetFirstRecord(id, record); status == Status::Success;
         status = table.GetNextRecord(id, record)) {
        records.push_back(record);
    }
    return records;
}

// Each index holds one entry per stored record, in key order, and each entry's key bytes are those
// built from the record that it names.
inline void ExpectIndexesMatchStore(ITable& table) {
    const std::vector<Record> records = StoredRecords(table);
    std::set<std::uint32_t> storedIds;
    for (const Record& record : records) storedIds.insert(record.GetRecordId());
    for (std::uint16_t number = 0; number < table.GetNumberOfIndexes(); ++number) {
        Index& index = IndexOf(table, number);
        const std::vector<std::uint32_t> walked = WalkIndex(table, number);
        EXPECT_EQ(std::set<std::uint32_t>(walked.begin(), walked.end()), storedIds) << "index " << number;
        EXPECT_EQ(walked.size(), records.size()) << "index " << number;
        for (const Record& record : records) {
            const Key built(number, record);
            std::uint32_t found = FieldListObject::NoRecordId;
            ASSERT_EQ(index.Find(built, found), Status::Success) << "index " << number;
            EXPECT_EQ(found, record.GetRecordId()) << "index " << number;
        }
    }
}

// Turns the stored id `marker` into `marker` + 1 in a closed record file, behind the indexes' backs:
// an index that opens its file afterwards still holds the old id, one rebuilt from the records the new.
inline void ChangeStoredId(const std::string& recordFile, std::uint32_t marker) {
    std::vector<unsigned char> bytes = ReadFile(recordFile);
    const unsigned char pattern[] = {static_cast<unsigned char>(marker), static_cast<unsigned char>(marker >> 8),
                                     static_cast<unsigned char>(marker >> 16), static_cast<unsigned char>(marker >> 24)};
    auto at = std::search(bytes.begin(), bytes.end(), std::begin(pattern), std::end(pattern));
    ASSERT_NE(at, bytes.end());
    ++at[0];
    WriteFile(recordFile, bytes);
}

// ---- A table whose indexes fail on demand -------------------------------------------------------------

// One planned failure: after `countdown` more calls succeed, the next call gives `status`, or
// throws a StatusCodeException with it.
struct Fault {
    int countdown = -1;  // -1: never
    StatusCode status = Status::Failure;
    bool throws = false;

    bool Trips() {
        if (countdown < 0) return false;
        return countdown-- == 0;
    }
    StatusCode Fail() const {
        if (throws) ThrowStatus("Tavrin::Database::Testing::Fault", status);
        return status;
    }
};

// A tree index in temporary memory whose Add, Remove and Find can be made to fail.
class FaultyIndex final : public Index {
public:
    FaultyIndex(const IndexSpecification& specification, const FieldList& tableFields)
        : Index(specification, tableFields, ManagedFieldListFactory::GetInstance()),
          tree_(specification, tableFields, ManagedFieldListFactory::GetInstance(), 8, 8) {
        tree_.Create();
    }

    StatusCode Add(const Key& key, std::uint32_t id) override {
        return add.Trips() ? add.Fail() : tree_.Add(key, id);
    }
    StatusCode Remove(const Key& key) override { return remove.Trips() ? remove.Fail() : tree_.Remove(key); }
    StatusCode Find(const Key& key, std::uint32_t& id) override {
        return find.Trips() ? find.Fail() : tree_.Find(key, id);
    }
    StatusCode GetFirst(Key& key, std::uint32_t& id) override { return tree_.GetFirst(key, id); }
    StatusCode GetNext(Key& key, std::uint32_t& id) override { return tree_.GetNext(key, id); }
    StatusCode Clear() override { return tree_.Clear(); }
    std::uint32_t GetCurrentRecords() override { return tree_.GetCurrentRecords(); }

    Fault add;
    Fault remove;
    Fault find;

private:
    RedBlackTreeIndex tree_;
};

// A managed table in temporary memory, PeopleFields() and FaultyIndex objects made from
// PeopleIndexes() unless given others, numbered in order. Its key field set stays empty, so only
// writes of records without an id reach the indexes: the tests write fresh records.
class FaultyTable final : public Table {
public:
    explicit FaultyTable(std::uint32_t maxRecords = 16, const std::vector<FieldSpecification>& fields = PeopleFields(),
                         const std::vector<IndexSpecification>& indexes = PeopleIndexes()) {
        const std::string name = "Faulty";
        Construct(Settings{name, nullptr, kCreateFile, fields, maxRecords, 0, HalfOfMaxRecords, kAll}, &MakeList);
        for (IndexSpecification specification : indexes) {
            specification.SetNumber(static_cast<std::uint16_t>(faulty_.size()));
            auto index = std::make_unique<FaultyIndex>(specification, *GetFieldList());
            faulty_.push_back(index.get());
            AppendDescribedIndex(std::move(index));
        }
    }
    ~FaultyTable() override { ReleaseStorage(); }

    void CreateIndexes(std::vector<IndexSpecification>&) override {}
    void CreateTemporaryIndex(IndexSpecification&) override {}
    bool IsManaged() override { return true; }

    FaultyIndex& Faulty(std::uint16_t number) { return *faulty_[number]; }
    void Renew() { RenewIdentityToken(); }

private:
    static FieldList* MakeList(const std::vector<FieldSpecification>& fields, std::uint32_t) {
        return ManagedFieldListFactory::GetInstance().Create(fields);
    }

    std::vector<FaultyIndex*> faulty_;
};

}  // namespace Tavrin::Database::Testing
