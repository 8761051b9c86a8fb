// Many rounds of write, close, reopen with OpenTable, held against a model of the records. Each
// round writes, updates and removes at random through the table that the last OpenTable gave;
// in some rounds the writer is a child process that dies, without closing anything, after a random
// number of its operations. After a death the first OpenTable is refused once and the next gives
// exactly the records that the completed operations left; after an orderly close OpenTable gives
// back the same table, walks included.
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

#include "../base/ChildProcess.h"
#include "../base/ScratchDirectory.h"
#include "../base/ThrownStatus.h"
#include "OpenTableTestSupport.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;

// The records as the table must hold them, by Id, and the answer that each operation must get.
class Model {
public:
    StatusCode Write(const Person& person) {
        for (const auto& [id, other] : people_) {
            if (id != person.id && other.code == person.code) return Status::IndexConflict;
        }
        people_[person.id] = person;
        return Status::Success;
    }
    StatusCode Remove(std::uint32_t id) { return people_.erase(id) == 1 ? Status::Success : Status::NotFound; }
    const std::map<std::uint32_t, Person>& People() const { return people_; }

private:
    std::map<std::uint32_t, Person> people_;
};

std::uint32_t Draw(std::mt19937& random, std::uint32_t bound) { return static_cast<std::uint32_t>(random() % bound); }

// One random operation on the model, and on `table` when given: the two answers must agree. The
// braces draw in order, left to right.
void Step(std::mt19937& random, Model& model, ITable* table) {
    const Person person{1 + Draw(random, 60), 1 + Draw(random, 90), static_cast<std::int32_t>(Draw(random, 5)),
                        static_cast<std::int32_t>(Draw(random, 9)), "n" + std::to_string(Draw(random, 1000))};
    const bool remove = Draw(random, 4) == 0;
    const StatusCode expected = remove ? model.Remove(person.id) : model.Write(person);
    if (table == nullptr) return;
    Record record = ToRecord(*table, person);
    Key key(kById, record);
    const StatusCode status = remove ? table->RemoveRecord(key) : table->WriteRecord(record);
    ASSERT_EQ(status, expected) << (remove ? "remove " : "write ") << person.id;
}

void ExpectMatchesModel(ITable& table, const Model& model) {
    std::map<std::uint32_t, Person> stored;
    for (const Record& record : StoredRecords(table)) stored[ToPerson(record).id] = ToPerson(record);
    ASSERT_EQ(stored, model.People());
    const std::vector<IndexSpecification> indexes = table.GetIndexSpecificationList();
    ASSERT_EQ(indexes, MixedIndexes());
    for (std::uint16_t number = 0; number < indexes.size(); ++number) EXPECT_EQ(indexes[number].GetNumber(), number);
    ExpectEveryIndexFindsTheStore(table);
    ASSERT_EQ(WalkIndex(table, kById).size(), stored.size());
    ASSERT_EQ(WalkIndex(table, 2).size(), stored.size());
}

TEST(OpenTableModel, ReopenedTablesHoldWhatTheModelHolds) {
    ScratchDirectory directory;
    const std::string fileName = directory / "People.tab";
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    Model model;
    MakeMixedPeople(directory.Path());
    for (int round = 0; round < 100 && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const std::uint32_t roundSeed = Draw(random, 0xFFFFFFFF);
        const int operations = 1 + static_cast<int>(Draw(random, 60));
        if (Draw(random, 4) == 0) {
            // The child works on its own copy of the model; the kill lands after `completed` operations.
            const int completed = static_cast<int>(Draw(random, static_cast<std::uint32_t>(operations)));
            const int child = Tavrin::Testing::RunInChild([&] {
                std::mt19937 steps(roundSeed);
                Model mine = model;
                auto table = Open(fileName);
                for (int i = 0; i < completed; ++i) Step(steps, mine, table.get());
                Tavrin::Testing::DieWithoutCleanup();
                return 1;
            });
            ASSERT_EQ(child, 0);
            std::mt19937 steps(roundSeed);
            for (int i = 0; i < completed; ++i) Step(steps, model, nullptr);
            EXPECT_EQ(Tavrin::Testing::ThrownStatus([&] { Open(fileName); }), Status::Invalid);
        } else {
            std::mt19937 steps(roundSeed);
            Snapshot closed;
            {
                auto table = Open(fileName);
                for (int i = 0; i < operations; ++i) Step(steps, model, table.get());
                closed = Take(*table);
            }
            EXPECT_EQ(Take(*Open(fileName)), closed);
        }
        ExpectMatchesModel(*Open(fileName), model);
    }
}

}  // namespace
}  // namespace Tavrin::Database::Testing
