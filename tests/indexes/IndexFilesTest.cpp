// Finding and copying the files of a table's indexes: which names a walk takes, that a walk only
// reads (an index held open, or left unclean by a crash, keeps its bytes and its clean flag), that
// a table's own files exclude those of tables whose names begin alike, and that a copy is refused
// while a table holds a file.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "../base/ScratchDirectory.h"
#include "HashIndexTestSupport.h"
#include "tavrin/base/Uuid.h"
#include "tavrin/indexes/RedBlackTreeIndexDirectoryWalker.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;
using Scope = IndexDirectoryWalker::Scope;

IndexSpecification Tree(const std::string& name) {
    return IndexSpecification(name, IndexSpecification::RedBlack, IndexSpecification::UniqueProperty,
                              {IndexSpecification::Field(NumberField, 0)});
}

// A closed tree file of index `index` of table `table` in `directory`.
void MakeTreeFile(const std::string& directory, const std::string& table, const std::string& index) {
    TreeHarness harness(Tree(index), 4, 4);
    harness.index->Create(directory, table, Uuid());
}

std::vector<std::string> TreesFound(const std::string& directory, const std::string& table, Scope scope) {
    std::vector<IndexSpecification> specifications;
    EXPECT_EQ(RedBlackTreeIndexDirectoryWalker::Find(directory, table, scope, specifications), Status::Success);
    std::vector<std::string> names;
    for (const IndexSpecification& specification : specifications) names.push_back(specification.GetName());
    return names;
}

using Names = std::vector<std::string>;

TEST(RedBlackTreeIndexFiles, APatternWalkFindsEveryMatchingNameAndOwnFilesOnlyTheTables) {
    ScratchDirectory directory;
    MakeTreeFile(directory.Path(), "a", "x");
    MakeTreeFile(directory.Path(), "a-b", "y");  // a-b-y.rb.idx: matches the pattern of "a"
    MakeTreeFile(directory.Path(), "axb", "z");  // matches the unescaped pattern of "a.b"
    MakeTreeFile(directory.Path(), "Items 2", "By Date");
    HashHarness hash(IndexSpecification::UniqueProperty);
    hash.index->Create(directory.Path(), "a", Uuid());
    hash.index.reset();
    std::filesystem::copy_file(directory / "a-x.rb.idx", directory / "a-w.rb.idx.bak");
    std::filesystem::create_directory(directory / "backup");  // a walk never goes down into it
    MakeTreeFile(directory / "backup", "a", "old");

    EXPECT_EQ(TreesFound(directory.Path(), "a", Scope::Pattern), (Names{"y", "x"}));
    EXPECT_EQ(TreesFound(directory.Path(), "a", Scope::OwnFiles), Names{"x"});
    EXPECT_EQ(TreesFound(directory.Path(), "a.b", Scope::Pattern), (Names{"y", "z"}));  // "." matches "-" too
    EXPECT_EQ(TreesFound(directory.Path(), "a.b", Scope::OwnFiles), Names{});
    EXPECT_EQ(TreesFound(directory.Path(), "Items 2", Scope::OwnFiles), Names{"By Date"});

    std::vector<IndexSpecification> found;
    EXPECT_EQ(RedBlackTreeIndex::GetSpecifications(directory / "backup", "b", found), Status::Success);
    EXPECT_TRUE(found.empty());
    EXPECT_EQ(RedBlackTreeIndex::GetSpecifications(directory / "missing", "a", found), Status::NotFound);
    EXPECT_EQ(RedBlackTreeIndex::GetSpecifications(directory.Path(), "a(", found), Status::Invalid);
    // Escaped, a name that is no regular expression still finds its own files.
    MakeTreeFile(directory.Path(), "a(", "v");
    EXPECT_EQ(TreesFound(directory.Path(), "a(", Scope::OwnFiles), Names{"v"});
}

TEST(RedBlackTreeIndexFiles, AWalkReadsHeldAndUncleanFilesAndWritesNothing) {
    ScratchDirectory directory;
    TreeHarness held(Tree("Held"), 4, 4);
    held.index->Create(directory.Path(), "t", Uuid());  // open: clean flag 0, locked
    MakeTreeFile(directory.Path(), "t", "Crashed");
    const std::string crashed = RedBlackTreeIndex::GetFileName(directory.Path(), "t", "Crashed");
    std::vector<unsigned char> bytes = ReadFile(crashed);
    bytes[0] = 0;  // as a killed process leaves it
    WriteFile(crashed, bytes);
    WriteFile(directory / "t-Short.rb.idx", std::vector<unsigned char>(30, 1));
    bytes[17 + 5] = 0;  // the store header's valid field: no readable user data
    WriteFile(directory / "t-Invalid.rb.idx", bytes);
    const std::string heldName = RedBlackTreeIndex::GetFileName(directory.Path(), "t", "Held");
    const std::vector<unsigned char> heldBytes = ReadFile(heldName);

    EXPECT_EQ(TreesFound(directory.Path(), "t", Scope::OwnFiles), (Names{"Crashed", "Held"}));
    EXPECT_EQ(ReadFile(crashed)[0], 0) << "the walk erased the sign of the crash";
    EXPECT_EQ(ReadFile(heldName), heldBytes);
    // The index's own open still refuses the unclean file.
    TreeHarness reopened(Tree("Crashed"), 4, 4);
    EXPECT_EQ(reopened.index->Open(directory.Path(), "t", Uuid()), Status::Invalid);
}

TEST(RedBlackTreeIndexFiles, ACopyTakesOnlyTheTablesFilesAndNoneThatATableHolds) {
    ScratchDirectory source;
    ScratchDirectory destination;
    MakeTreeFile(source.Path(), "a", "x");
    MakeTreeFile(source.Path(), "a", "z");
    MakeTreeFile(source.Path(), "a-b", "y");
    ASSERT_EQ(RedBlackTreeIndex::CopyFiles(source.Path(), destination.Path(), "a"), Status::Success);
    EXPECT_EQ(destination.Count(), 2u);
    EXPECT_EQ(ReadFile(destination / "a-x.rb.idx"), ReadFile(source / "a-x.rb.idx"));
    EXPECT_EQ(RedBlackTreeIndex::CopyFiles(source.Path(), source.Path() + "/.", "a"), Status::Invalid);

    std::filesystem::remove(destination / "a-x.rb.idx");
    TreeHarness holder(Tree("h"), 4, 4);
    holder.index->Create(source.Path(), "a", Uuid());  // a table holds this file now
    EXPECT_EQ(RedBlackTreeIndex::CopyFiles(source.Path(), destination.Path(), "a"), Status::AlreadyOpen);
    EXPECT_EQ(destination.Count(), 1u) << "a refused copy wrote nothing";
}

}  // namespace
}  // namespace Tavrin::Database::Testing
