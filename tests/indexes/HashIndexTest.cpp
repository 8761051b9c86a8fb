// The files of hash indexes: a walk finds the indexes of one table by their description files and
// writes nothing, copies open as the originals, Open wants the files' Uuid and leaves them to another
// opener when it refuses; and an index that can't grow refuses a key until an entry is freed.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "../base/ScratchDirectory.h"
#include "HashIndexTestSupport.h"
#include "tavrin/base/Uuid.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;

std::vector<std::string> NamesFound(const std::string& directory, const std::string& table) {
    std::vector<IndexSpecification> specifications;
    EXPECT_EQ(HashIndex::GetSpecifications(directory, table, specifications), Status::Success);
    std::vector<std::string> names;
    for (const IndexSpecification& specification : specifications) names.push_back(specification.GetName());
    std::sort(names.begin(), names.end());
    return names;
}

TEST(HashIndex, AWalkFindsTheIndexesOfOneTableAndWritesNothing) {
    ScratchDirectory directory;
    std::vector<std::unique_ptr<HashIndex>> open;  // held while the walks run: clean flags 0
    HashHarness layout(IndexSpecification::UniqueProperty);
    for (const auto& [table, index] : std::vector<std::pair<std::string, std::string>>{
             {"t", "A"}, {"t", "B"}, {"t2", "A"}, {"Items 2", "By Date"}}) {
        const IndexSpecification specification(index, IndexSpecification::Hash, IndexSpecification::UniqueProperty,
                                               {IndexSpecification::Field(NumberField, 0)});
        open.push_back(std::make_unique<HashIndex>(specification, *layout.table, FactoryOf(true), 8, 8));
        open.back()->Create(directory.Path(), table, Uuid());
    }
    WriteFile(directory / "t-Empty.hash.idx", std::vector<unsigned char>(17, 1));  // no specification in them
    WriteFile(directory / "t-Garbage.hash.idx", std::vector<unsigned char>(40, 0xEE));
    EXPECT_EQ(directory / "Items_2-By_Date.hash-entry.idx",
              HashIndex::GetEntryFileName(directory.Path(), "Items 2", "By Date"));

    const std::string held = HashIndex::GetSpecificationFileName(directory.Path(), "t", "A");
    const std::vector<unsigned char> before = ReadFile(held);
    EXPECT_EQ(NamesFound(directory.Path(), "t"), (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(ReadFile(held), before);
    EXPECT_EQ(NamesFound(directory.Path(), "t2"), std::vector<std::string>{"A"});
    EXPECT_EQ(NamesFound(directory.Path(), "Items 2"), std::vector<std::string>{"By Date"});
    std::vector<IndexSpecification> found;
    EXPECT_EQ(HashIndex::GetSpecifications(directory / "missing", "t", found), Status::NotFound);
    EXPECT_EQ(HashIndex::GetSpecifications(directory.Path(), "t(", found), Status::Invalid);
}

TEST(HashIndex, CopiesOpenWithTheirUuidAndARefusedOpenHoldsNothing) {
    ScratchDirectory source;
    ScratchDirectory destination;
    const Uuid uuid;
    HashHarness index(IndexSpecification::UniqueProperty, 8, 8);
    index.index->Create(source.Path(), "T", uuid);
    for (std::uint32_t number = 0; number < 20; ++number) ASSERT_EQ(index.Add(number, "n", number), 0);
    index.index.reset();
    ASSERT_EQ(HashIndex::CopyFiles(source.Path(), destination.Path(), "T"), Status::Success);
    EXPECT_EQ(destination.Count(), 3u);

    index.Renew();
    EXPECT_EQ(index.index->Open(destination.Path(), "T", Uuid()), Status::Failure);
    HashHarness other(IndexSpecification::UniqueProperty, 8, 8);
    ASSERT_EQ(other.index->Open(destination.Path(), "T", uuid), Status::Success);
    std::uint32_t found = NoId;
    EXPECT_EQ(other.Find(19, "n", found), Status::Success);
    EXPECT_EQ(found, 19u);
    EXPECT_EQ(index.index->Open(destination.Path(), "T", uuid), Status::Failure) << "the other holds them";
    other.index->Discard();
    EXPECT_EQ(destination.Count(), 0u);
}

TEST(HashIndex, WithoutGrowthAFullIndexRefusesUntilAnEntryIsFreed) {
    HashHarness index(IndexSpecification::UniqueProperty, 4, 0);
    index.index->Create();
    for (std::uint32_t number = 0; number < 4; ++number) ASSERT_EQ(index.Add(number, "n", number), 0);
    EXPECT_EQ(index.Add(4, "n", 4), Status::StoreFull);
    EXPECT_EQ(index.index->GetCurrentRecords(), 4u);
    ASSERT_EQ(index.Remove(2, "n"), Status::Success);
    EXPECT_EQ(index.Add(4, "n", 4), Status::Success);
    EXPECT_EQ(index.Add(5, "n", NoId), Status::Invalid) << "-1 marks a free entry";
    EXPECT_EQ(index.Report(), "");
}

}  // namespace
}  // namespace Tavrin::Database::Testing
