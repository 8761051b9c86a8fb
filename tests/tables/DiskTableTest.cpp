// Tables whose records lie in <name>.tab.data behind a cache: driven side by side with a memory
// table and held to the same answers, their files carried with the record file, and killed
// writers whose tables come back with only records that were written.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <string>

#include "../base/ChildProcess.h"
#include "../base/ScratchDirectory.h"
#include "../base/ThrownStatus.h"
#include "OpenTableTestSupport.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;

constexpr std::uint32_t kOneSlot = 0;     // a cache of one record
constexpr std::uint32_t kSomeSlots = 1;   // 1 KB: about half the records the tests write
constexpr std::uint32_t kWholeTable = 64;

std::uint32_t Draw(std::mt19937& random, std::uint32_t bound) { return static_cast<std::uint32_t>(random() % bound); }

// A person of one of 60 ids. With `fixedCodes` every id keeps one code, so that no unique key moves
// from one record to another.
Person DrawPerson(std::mt19937& random, bool fixedCodes) {
    Person person;
    person.id = 1 + Draw(random, 60);
    person.code = fixedCodes ? 1000 + person.id : 1 + Draw(random, 90);
    person.group = static_cast<std::int32_t>(Draw(random, 5));
    person.score = static_cast<std::int32_t>(Draw(random, 9));
    person.note = "n" + std::to_string(Draw(random, 1000));
    return person;
}

// One write (new or replacing) or removal by id, the same on every table given; all answer alike.
void Step(std::mt19937& random, const std::vector<ITable*>& tables, bool fixedCodes) {
    const Person person = DrawPerson(random, fixedCodes);
    const bool remove = Draw(random, 4) == 0;
    std::vector<StatusCode> answers;
    for (ITable* table : tables) {
        Record record = ToRecord(*table, person);
        Key key(kById, record);
        answers.push_back(remove ? table->RemoveRecord(key) : table->WriteRecord(record));
    }
    for (StatusCode answer : answers) ASSERT_EQ(answer, answers.front()) << person.id;
}

// Records by id, and the record ids in the walk of every tree index.
struct Contents {
    std::map<std::uint32_t, Person> records;
    std::vector<std::vector<std::uint32_t>> walks;
    bool operator==(const Contents&) const = default;
};

Contents Read(ITable& table) {
    const Snapshot snapshot = Take(table);
    return {snapshot.records, snapshot.walks};
}

class DiskTableCaches : public testing::TestWithParam<std::uint32_t> {};

TEST_P(DiskTableCaches, AnswerAsAMemoryTableDoes) {
    ScratchDirectory disk;
    ScratchDirectory memory;
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    MakeMixedPeople(disk.Path(), GetParam());
    MakeMixedPeople(memory.Path());
    for (int round = 0; round < 12 && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        auto diskTable = Open(disk / "People.tab");
        auto memoryTable = Open(memory / "People.tab");
        ASSERT_EQ(diskTable->GetSpecification().GetCacheSize(), GetParam());
        const std::vector<ITable*> both{diskTable.get(), memoryTable.get()};
        for (int i = 0; i < 150 && !HasFailure(); ++i) {
            Step(random, both, false);
            if (Draw(random, 50) == 0) {
                EXPECT_EQ(Read(*diskTable), Read(*memoryTable)) << "operation " << i;
            }
        }
        EXPECT_EQ(Read(*diskTable), Read(*memoryTable));
        if (Draw(random, 6) == 0) {
            ASSERT_EQ(diskTable->Clear(), Status::Success);
            ASSERT_EQ(memoryTable->Clear(), Status::Success);
        }
    }  // both closed: the next round reopens them
    EXPECT_EQ(Read(*Open(disk / "People.tab")), Read(*Open(memory / "People.tab")));
}

INSTANTIATE_TEST_SUITE_P(Caches, DiskTableCaches, testing::Values(kOneSlot, kSomeSlots, kWholeTable));

TEST(DiskTable, RecordsTravelWithTheRecordFile) {
    ScratchDirectory directory;
    const std::string saved = directory / "saved";
    const std::string copied = directory / "copied";
    std::filesystem::create_directory(saved);
    std::filesystem::create_directory(copied);
    Contents written;
    {
        auto table = MakeMixedPeople(directory.Path(), kOneSlot);
        WriteAll(*table, {{1, 11, 0, 5, "a"}, {2, 12, 1, 6, "b"}, {3, 13, 1, 7, "c"}});
        EXPECT_TRUE(std::filesystem::exists(directory / "People.tab.data"));
        written = Read(*table);
        ASSERT_EQ(table->SaveAs(saved), Status::Success);
        // A record read before Clear is written back as a new one afterwards, as in a memory table.
        Record kept;
        ASSERT_EQ(FindById(*table, 2, kept), Status::Success);
        ASSERT_EQ(table->Clear(), Status::Success);
        ASSERT_EQ(table->WriteRecord(kept), Status::Success);
        EXPECT_EQ(Read(*table).records.size(), 1u);
    }
    EXPECT_TRUE(std::filesystem::exists(saved + "/People.tab.data"));
    EXPECT_EQ(Read(*Open(saved + "/People.tab")), written);

    // A People table with a disk store but no open files copies the closed files of its name.
    auto courier = MakeBarePeople("", 0, 8, kHalf, kOneSlot);
    ASSERT_EQ(courier->CopyFiles(saved, copied), Status::Success);
    EXPECT_TRUE(std::filesystem::exists(copied + "/People.tab.data"));
    EXPECT_EQ(Read(*Open(copied + "/People.tab")), written);
}

// The versions of each person that were ever written, the last of each, and which persons stood
// written when the writer last synced and were not touched since.
struct WriteLog {
    std::map<std::uint32_t, std::vector<Person>> versions;
    std::map<std::uint32_t, Person> current;
    std::map<std::uint32_t, Person> synced;

    void Replay(std::uint32_t seed, int operations, const std::set<int>& syncs) {
        std::mt19937 random(seed);
        for (int i = 0; i < operations; ++i) {
            const Person person = DrawPerson(random, true);
            const bool remove = Draw(random, 4) == 0;
            synced.erase(person.id);
            if (remove) {
                current.erase(person.id);
            } else {
                current[person.id] = person;
                versions[person.id].push_back(person);
            }
            if (syncs.count(i) != 0) synced = current;
        }
    }
};

// A kill loses at most the writes still in the cache: each record that comes back is a version that
// was written, each record synced and left alone since is there as it was, and the indexes rebuild.
TEST(DiskTable, AKilledWriterLeavesOnlyWrittenRecords) {
    ScratchDirectory directory;
    const std::string fileName = directory / "People.tab";
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 8 && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        std::filesystem::remove_all(directory.Path());
        std::filesystem::create_directory(directory.Path());
        MakeMixedPeople(directory.Path(), round % 2 == 0 ? kOneSlot : kSomeSlots);
        const std::uint32_t roundSeed = Draw(random, 0xFFFFFFFF);
        const int operations = 20 + static_cast<int>(Draw(random, 200));
        std::set<int> syncs;
        for (int i = 0; i < 3; ++i) syncs.insert(static_cast<int>(Draw(random, static_cast<std::uint32_t>(operations))));
        const int child = Tavrin::Testing::RunInChild([&] {
            std::mt19937 steps(roundSeed);
            auto table = Open(fileName);
            for (int i = 0; i < operations; ++i) {
                Step(steps, {table.get()}, true);
                if (syncs.count(i) != 0 && table->Sync() != Status::Success) return 1;
            }
            Tavrin::Testing::DieWithoutCleanup();
            return 1;
        });
        ASSERT_EQ(child, 0);
        WriteLog log;
        log.Replay(roundSeed, operations, syncs);

        EXPECT_EQ(Tavrin::Testing::ThrownStatus([&] { Open(fileName); }), Status::Invalid);
        auto table = Open(fileName);
        ExpectEveryIndexFindsTheStore(*table);
        const std::map<std::uint32_t, Person> found = Read(*table).records;
        std::set<std::uint32_t> ids;
        for (const auto& [recordId, person] : found) {
            ids.insert(person.id);
            const std::vector<Person>& versions = log.versions[person.id];
            EXPECT_NE(std::find(versions.begin(), versions.end(), person), versions.end()) << "person " << person.id;
        }
        EXPECT_EQ(ids.size(), found.size()) << "one record per id";
        for (const auto& [id, person] : log.synced) {
            const bool present = std::any_of(found.begin(), found.end(), [&](const auto& entry) {
                return entry.second == person;
            });
            EXPECT_TRUE(present) << "synced person " << id;
        }
    }
}

}  // namespace
}  // namespace Tavrin::Database::Testing
