// Long random runs of writes, updates and removals against a model of the table: after each step
// the store and every index (a primary unique one, a unique secondary, and one with duplicates on
// an ascending and a descending field) agree with the model, also across reopening, rebuilt index
// files, and indexes that fail at random.

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <tuple>

#include "../base/ScratchDirectory.h"
#include "WriteTestSupport.h"
#include "tavrin/base/File.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;

// What the table should hold: each person by id with the record id it was stored under.
class PeopleModel {
public:
    // The status of writing `person` by its primary key.
    StatusCode Expect(const Person& person) const {
        for (const auto& [id, entry] : people_) {
            if (id != person.id && entry.person.code == person.code) return Status::IndexConflict;
        }
        return Status::Success;
    }
    bool Has(std::uint32_t id) const { return people_.count(id) != 0; }
    const Person& Get(std::uint32_t id) const { return people_.at(id).person; }
    // Replaces the person of that id, keeping its record id, or adds it under `recordId`.
    void Put(const Person& person, std::uint32_t recordId) {
        auto found = people_.find(person.id);
        if (found != people_.end()) recordId = found->second.recordId;
        people_[person.id] = {person, recordId};
    }
    void Erase(std::uint32_t id) { people_.erase(id); }
    void Clear() { people_.clear(); }
    std::size_t Size() const { return people_.size(); }

    // The record ids in the order of index `number` of PeopleIndexes().
    std::vector<std::uint32_t> Order(std::uint16_t number) const {
        std::vector<std::uint32_t> order;
        if (number == kById) {
            for (const auto& [id, entry] : people_) order.push_back(entry.recordId);
        } else if (number == kByCode) {
            std::map<std::uint32_t, std::uint32_t> byCode;
            for (const auto& [id, entry] : people_) byCode[entry.person.code] = entry.recordId;
            for (const auto& [code, recordId] : byCode) order.push_back(recordId);
        } else {
            // Group ascending, score descending, then the record id as a signed number.
            std::multimap<std::tuple<std::int32_t, std::int64_t, std::int32_t>, std::uint32_t> byGroup;
            for (const auto& [id, entry] : people_) {
                byGroup.emplace(std::make_tuple(entry.person.group, -std::int64_t{entry.person.score},
                                                static_cast<std::int32_t>(entry.recordId)),
                                entry.recordId);
            }
            for (const auto& [key, recordId] : byGroup) order.push_back(recordId);
        }
        return order;
    }

private:
    struct Entry {
        Person person;
        std::uint32_t recordId;
    };
    std::map<std::uint32_t, Entry> people_;
};

void ExpectAgrees(ITable& table, const PeopleModel& model, int step) {
    for (std::uint16_t number = 0; number < 3; ++number) {
        ASSERT_EQ(WalkIndex(table, number), model.Order(number)) << "index " << number << " at step " << step;
    }
    const std::vector<Record> stored = StoredRecords(table);
    ASSERT_EQ(stored.size(), model.Size()) << "step " << step;
    for (const Record& record : stored) {
        const Person person = ToPerson(record);
        ASSERT_TRUE(model.Has(person.id)) << "step " << step;
        ASSERT_EQ(person, model.Get(person.id)) << "step " << step;
    }
}

class RandomPeople {
public:
    explicit RandomPeople(std::uint32_t seed) : random_(seed) {}
    std::uint32_t Id() { return Between(1, 120); }
    Person Make() {
        return {Id(), Between(1, 300), static_cast<std::int32_t>(Between(0, 6)) - 3,
                static_cast<std::int32_t>(Between(0, 10)) - 5, "n" + std::to_string(Between(0, 99))};
    }
    std::uint32_t Between(std::uint32_t low, std::uint32_t high) {
        return std::uniform_int_distribution<std::uint32_t>(low, high)(random_);
    }

private:
    std::mt19937 random_;
};

// Reads the stored record of `id` through the primary index, with its record id.
Record ReadBack(ITable& table, std::uint32_t id) {
    Record record;
    EXPECT_EQ(FindById(table, id, record), Status::Success);
    return record;
}

// One random operation; the model follows the table.
void Step(ITable& table, PeopleModel& model, RandomPeople& random, int step) {
    const std::uint32_t kind = random.Between(0, 99);
    if (kind < 40) {
        // A fresh record: an add, or an update by the primary key.
        const Person person = random.Make();
        Record record = ToRecord(table, person);
        const StatusCode expected = model.Expect(person);
        ASSERT_EQ(table.WriteRecord(record), expected) << "step " << step;
        if (expected == Status::Success) model.Put(person, record.GetRecordId());
        return;
    }
    const std::uint32_t id = random.Id();
    if (!model.Has(id)) {
        Record record = ToRecord(table, Person{id});
        Key key(kById, record);
        ASSERT_EQ(table.RemoveRecord(key), Status::NotFound) << "step " << step;
        return;
    }
    Record record = ReadBack(table, id);
    Person person = ToPerson(record);
    const FieldList& list = *record.GetFieldList();
    if (kind < 70) {
        // A record read back with some fields changed: the fast path or the key path.
        if (random.Between(0, 1) == 0) person.note = "u" + std::to_string(step);
        if (random.Between(0, 2) == 0) person.score = static_cast<std::int32_t>(random.Between(0, 10)) - 5;
        if (random.Between(0, 3) == 0) person.group = static_cast<std::int32_t>(random.Between(0, 6)) - 3;
        if (random.Between(0, 4) == 0) person.code = random.Between(1, 300);
        if (random.Between(0, 9) == 0) person.id = random.Id();
        record = ToRecord(table, person);
        Record readBack = ReadBack(table, id);
        ASSERT_EQ(readBack.CopyFields(record, true), Status::Success);
        const StatusCode expected = model.Expect(person);
        const std::uint32_t before = readBack.GetRecordId();
        ASSERT_EQ(table.WriteRecord(readBack), expected) << "step " << step;
        if (expected == Status::Success) model.Put(person, readBack.GetRecordId());
        if (person.id == id) {
            EXPECT_EQ(readBack.GetRecordId(), before);
        }
    } else if (kind < 80) {
        // Listed fields of an existing record.
        person.score = static_cast<std::int32_t>(random.Between(0, 10)) - 5;
        person.note = "f" + std::to_string(step);
        Record change = ToRecord(table, person);
        ASSERT_EQ(list.SetField(change.GetData(), kGroup, std::int32_t{99}), Status::Success);  // not listed
        ASSERT_EQ(table.WriteRecord(change, std::vector<std::uint16_t>{kScore, kNote}), Status::Success);
        model.Put(person, FieldListObject::NoRecordId);
    } else {
        // Removal by each of the three indexes.
        const std::uint16_t number = static_cast<std::uint16_t>(random.Between(0, 2));
        Key key(number, record);
        Record removed;
        ASSERT_EQ(table.RemoveRecord(key, removed), Status::Success) << "step " << step;
        EXPECT_EQ(ToPerson(removed), person);
        model.Erase(id);
    }
}

TEST(TableModel, RandomWritesAcrossReopeningAndRebuilds) {
    ScratchDirectory directory;
    PeopleModel model;
    RandomPeople random(11);
    const char* names[] = {"ById", "ByCode", "ByGroup"};
    for (int round = 0; round < 6; ++round) {
        // Every other round one index file is lost and must come back from the records.
        if (round % 2 == 1) File::Remove(directory / ("People-" + std::string(names[round % 3]) + ".rb.idx"));
        auto table = MakePeople(directory.Path(), 8);
        ASSERT_NO_FATAL_FAILURE(ExpectAgrees(*table, model, round * 500));
        for (int step = round * 500; step < (round + 1) * 500; ++step) {
            ASSERT_NO_FATAL_FAILURE(Step(*table, model, random, step));
            if (step == 1700) {
                ASSERT_EQ(table->Clear(), Status::Success);
                model.Clear();
            }
        }
        ASSERT_NO_FATAL_FAILURE(ExpectAgrees(*table, model, (round + 1) * 500));
        ExpectIndexesMatchStore(*table);
    }
}

TEST(TableModel, RandomWritesWithFailingIndexes) {
    FaultyTable table(8);
    PeopleModel model;
    RandomPeople random(23);
    const StatusCode failures[] = {Status::Failure, Status::Invalid, Status::StoreFull};
    for (int step = 0; step < 3000; ++step) {
        // Fresh records only: this table's writes of records with an id never reach the indexes.
        const Person person = random.Make();
        Record record = ToRecord(table, person);
        const bool remove = random.Between(0, 3) == 0;
        const StatusCode expected = remove ? (model.Has(person.id) ? Status::Success : Status::NotFound)
                                           : model.Expect(person);

        // Now and then one fault, which trips within the next few index calls or not at all. Inside
        // a write every index failure, thrown or not, ends as a status; the primary lookup before
        // it and a removal let exceptions pass, so there the faults only answer.
        Fault* armed = nullptr;
        bool removeFault = false;
        if (random.Between(0, 3) == 0) {
            const auto number = static_cast<std::uint16_t>(random.Between(0, 2));
            FaultyIndex& index = table.Faulty(number);
            const std::uint32_t which = random.Between(0, 2);
            armed = which == 0 ? &index.add : which == 1 ? &index.remove : &index.find;
            removeFault = which == 1;
            const bool mayThrow = !remove && !(number == kById && which == 2);
            *armed = Fault{static_cast<int>(random.Between(0, 3)), failures[random.Between(0, 2)],
                           mayThrow && random.Between(0, 1) == 1};
        }

        const StatusCode status = remove ? table.RemoveRecord(*std::make_unique<Key>(kById, record))
                                         : table.WriteRecord(record);
        const bool tripped = armed != nullptr && armed->countdown < 0;
        if (armed != nullptr) armed->countdown = -1;
        if (!tripped) {
            ASSERT_EQ(status, expected) << "step " << step;
        } else if (removeFault && (remove || expected != Status::Success)) {
            // A removal goes on past a failing index, and so leaves a stray key: start afresh.
            ASSERT_EQ(table.Clear(), Status::Success);
            model.Clear();
            continue;
        }
        if (status == Status::Success) {
            if (remove) model.Erase(person.id);
            else model.Put(person, record.GetRecordId());
        }
        ASSERT_NO_FATAL_FAILURE(ExpectAgrees(table, model, step));
    }
}

}  // namespace
}  // namespace Tavrin::Database::Testing
