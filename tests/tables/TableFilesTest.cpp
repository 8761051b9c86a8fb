// SaveAs and CopyFiles: a saved or copied table opens as the original, a table's own directory is
// never written over, a failure part way leaves no part of a set, files held by a table are not
// copied, and another table's files are never taken along.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "../base/ScratchDirectory.h"
#include "OpenTableTestSupport.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;

std::vector<Person> Crowd() {
    std::vector<Person> people;
    for (std::uint32_t id = 1; id <= 30; ++id) {
        people.push_back({id, 1000 + id * 3, static_cast<std::int32_t>(id % 5), static_cast<std::int32_t>(id % 7)});
    }
    return people;
}

// The names of the files in `directory`, with their contents.
std::map<std::string, std::vector<unsigned char>> Contents(const std::string& directory) {
    std::map<std::string, std::vector<unsigned char>> contents;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
        if (entry.is_regular_file()) contents[entry.path().filename()] = ReadFile(entry.path());
    }
    return contents;
}

TEST(TableSaveAs, WritesACopyThatOpensAsTheTableOrNothing) {
    ScratchDirectory directory;
    ScratchDirectory copy;
    auto table = MakeMixedPeople(directory.Path());
    WriteAll(*table, Crowd());
    ASSERT_EQ(table->SaveAs(copy.Path()), Status::Success);
    EXPECT_EQ(copy.Count(), 6u);  // the record file, two tree files, three hash files
    auto saved = Open(copy / "People.tab");
    EXPECT_EQ(Take(*saved), Take(*table));
    ExpectEveryIndexFindsTheStore(*saved);

    // The table's own directory, however it is spelt: nothing is written.
    const auto own = Contents(directory.Path());
    EXPECT_EQ(table->SaveAs(directory.Path()), Status::Invalid);
    EXPECT_EQ(table->SaveAs(directory.Path() + "/./"), Status::Invalid);
    EXPECT_EQ(Contents(directory.Path()), own);
    // Over a table that is open in the destination: refused, and that table's files stay.
    EXPECT_EQ(table->SaveAs(copy.Path()), Status::AlreadyOpen);
    saved.reset();

    // The last index can't take its name: the files written before it are removed again.
    ScratchDirectory partial;
    std::filesystem::create_directory(partial / "People-ByGroup.rb.idx");
    EXPECT_NE(table->SaveAs(partial.Path()), Status::Success);
    EXPECT_EQ(partial.Count(), 1u);

    EXPECT_EQ(MakeBarePeople()->SaveAs(copy.Path()), Status::Success) << "a table in memory writes nothing";
    EXPECT_EQ(MakeBarePeople(copy.Path(), 0)->SaveAs(partial.Path()), Status::NotOpen);
}

TEST(TableCopyFiles, CopiesTheClosedFilesOfTheTableAsOneSet) {
    ScratchDirectory source;
    ScratchDirectory destination;
    Snapshot original;
    {
        auto table = MakeMixedPeople(source.Path());
        WriteAll(*table, Crowd());
        original = Take(*table);
        EXPECT_EQ(table->CopyFiles(source.Path(), destination.Path()), Status::AlreadyOpen);
        EXPECT_EQ(destination.Count(), 0u);
        // Another table whose name begins with this one's.
        std::unique_ptr<ITable> other(ManagedTableFactory::GetInstance().Create(
            "People-Old", source.Path(), kCreateFile, PeopleFields(), 8, kHalf, kAll));
        std::vector<IndexSpecification> indexes = MixedIndexes();
        other->CreateIndexes(indexes);
    }
    auto names = MakeBarePeople();  // any table of this name will do: the files are closed
    ASSERT_EQ(names->CopyFiles(source.Path(), destination.Path()), Status::Success);
    EXPECT_EQ(destination.Count(), 6u) << "one record file, two tree files, three hash files";
    EXPECT_EQ(Take(*Open(destination / "People.tab")), original);

    EXPECT_EQ(names->CopyFiles(source.Path(), source.Path()), Status::Invalid);
    EXPECT_EQ(names->CopyFiles(source / "missing", destination.Path()), Status::NotFound);
    ScratchDirectory partial;
    std::filesystem::create_directory(partial / "People-ByGroup.rb.idx");
    EXPECT_NE(names->CopyFiles(source.Path(), partial.Path()), Status::Success);
    EXPECT_EQ(partial.Count(), 1u);
}

}  // namespace
}  // namespace Tavrin::Database::Testing
