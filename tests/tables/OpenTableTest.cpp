// A table comes back from the name of its record file: the same description, records, index
// numbers and walks; only its own index files are taken; a record file under another name than its
// table's, or a missing one, is refused and nothing is created; after a kill the first open is
// refused once and the next one brings back every index.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <string>

#include "../base/ChildProcess.h"
#include "../base/ScratchDirectory.h"
#include "../base/ThrownStatus.h"
#include "OpenTableTestSupport.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;
using Tavrin::Testing::ThrownStatus;

std::vector<Person> SomePeople(std::uint32_t first, std::uint32_t count) {
    std::vector<Person> people;
    for (std::uint32_t id = first; id < first + count; ++id) {
        people.push_back({id, 500 - id, static_cast<std::int32_t>(id % 3), static_cast<std::int32_t>(id * 7 % 11)});
    }
    return people;
}

std::vector<std::string> IndexNames(ITable& table) {
    std::vector<std::string> names;
    for (const IndexSpecification& index : table.GetIndexSpecificationList()) names.push_back(index.GetName());
    return names;
}

TEST(OpenTable, GivesBackTheSameTableWithEveryIndexInItsNumberOrder) {
    ScratchDirectory directory;
    Snapshot before;
    {
        auto table = MakeMixedPeople(directory.Path());
        WriteAll(*table, SomePeople(1, 40));
        before = Take(*table);
    }
    auto table = Open(directory / "People.tab");
    EXPECT_EQ(Take(*table), before);
    EXPECT_EQ(table->GetPrimaryIndex(), kById);
    ExpectEveryIndexFindsTheStore(*table);
    table.reset();

    // A name without a directory is found in the working one.
    const std::string working = std::filesystem::current_path();
    std::filesystem::current_path(directory.Path());
    std::unique_ptr<ITable> here;
    EXPECT_NO_THROW(here = Open("People.tab"));
    std::filesystem::current_path(working);
    ASSERT_TRUE(here);
    EXPECT_EQ(here->GetDirectory(), "./");
    EXPECT_EQ(Take(*here).records, before.records);
}

TEST(OpenTable, RefusesARecordFileThatItsTableNameDoesNotNameAndCreatesNothing) {
    ScratchDirectory directory;
    MakeMixedPeople(directory.Path());
    std::filesystem::copy_file(directory / "People.tab", directory / "Copy.tab");
    const std::size_t files = directory.Count();
    EXPECT_EQ(ThrownStatus([&] { Open(directory / "Copy.tab"); }), Status::DescriptionDiffers);
    std::filesystem::rename(directory / "People.tab", directory / "Moved.tab");
    EXPECT_EQ(ThrownStatus([&] { Open(directory / "Moved.tab"); }), Status::DescriptionDiffers);
    EXPECT_FALSE(File::IsFound(directory / "People.tab")) << "an empty table was made beside the file";
    EXPECT_EQ(ThrownStatus([&] { Open(directory / "People.tab"); }), Status::NotFound);
    EXPECT_EQ(ThrownStatus([&] { Open(directory / "missing/People.tab"); }), Status::NotFound);
    EXPECT_EQ(directory.Count(), files);
}

TEST(OpenTable, TakesOnlyItsOwnIndexFiles) {
    ScratchDirectory directory;
    {
        auto a = MakeBarePeople(directory.Path(), kCreateFile);
        std::vector<IndexSpecification> indexes{PeopleIndexes()[kById]};
        a->CreateIndexes(indexes);
        WriteAll(*a, SomePeople(1, 5));
        // Table "People-Old", whose index files match the pattern of "People".
        std::unique_ptr<ITable> old(ManagedTableFactory::GetInstance().Create(
            "People-Old", directory.Path(), kCreateFile, PeopleFields(), 8, kHalf, kAll));
        std::vector<IndexSpecification> oldIndexes = MixedIndexes();
        old->CreateIndexes(oldIndexes);
        WriteAll(*old, SomePeople(100, 5));
    }
    // A backup below the directory, with an index that the table does not have.
    std::filesystem::create_directory(directory / "backup");
    {
        auto copy = MakeMixedPeople(directory / "backup");
        WriteAll(*copy, SomePeople(1, 5));
    }
    const std::vector<unsigned char> oldTree = ReadFile(directory / "People-Old-ById.rb.idx");
    const std::vector<unsigned char> oldHash = ReadFile(directory / "People-Old-ByCode.hash-entry.idx");

    auto table = Open(directory / "People.tab");
    EXPECT_EQ(IndexNames(*table), std::vector<std::string>{"ById"});
    EXPECT_EQ(ReadFile(directory / "People-Old-ById.rb.idx"), oldTree);
    EXPECT_EQ(ReadFile(directory / "People-Old-ByCode.hash-entry.idx"), oldHash);
    auto old = Open(directory / "People-Old.tab");
    EXPECT_EQ(IndexNames(*old), (std::vector<std::string>{"ById", "ByCode", "ByGroup"}));
    ExpectEveryIndexFindsTheStore(*old);
}

TEST(OpenTable, AfterAKillIsRefusedOnceAndThenBringsBackEveryIndex) {
    ScratchDirectory directory;
    {
        auto table = MakeMixedPeople(directory.Path());
        WriteAll(*table, SomePeople(1, 10));
    }
    const int child = Tavrin::Testing::RunInChild([&] {
        auto table = Open(directory / "People.tab");
        WriteAll(*table, SomePeople(11, 10));
        Tavrin::Testing::DieWithoutCleanup();
        return 1;
    });
    ASSERT_EQ(child, 0);
    EXPECT_EQ(ReadFile(directory / "People-ByGroup.rb.idx")[0], 0) << "the kill left the tree unclean";
    EXPECT_EQ(ThrownStatus([&] { Open(directory / "People.tab"); }), Status::Invalid);
    auto table = Open(directory / "People.tab");
    EXPECT_EQ(IndexNames(*table), (std::vector<std::string>{"ById", "ByCode", "ByGroup"}));
    EXPECT_EQ(StoredRecords(*table).size(), 20u);
    ExpectEveryIndexFindsTheStore(*table);
}

}  // namespace
}  // namespace Tavrin::Database::Testing
