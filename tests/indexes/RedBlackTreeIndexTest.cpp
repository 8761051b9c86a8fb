// The tree index on its own: the bytes of its file, lookups and walks at the edges, cursors, growth,
// persistence, a full store and damaged files.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "../base/ScratchDirectory.h"
#include "../storage/StoreTestSupport.h"
#include "RedBlackTreeTestSupport.h"
#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/Uuid.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;

constexpr std::uint32_t FileHeaderSize = 17;
constexpr std::uint32_t StoreHeaderSize = 54;

IndexSpecification DuplicateSpecification() {
    return NumberNameSpecification(IndexSpecification::DuplicateProperty, false);
}

void PutU32(std::vector<unsigned char>& bytes, std::uint32_t value) {
    unsigned char encoded[4];
    EncodeU32(encoded, value);
    bytes.insert(bytes.end(), encoded, encoded + 4);
}

// One compared field of 8 bytes in a Duplicate index whose specification is 32 bytes long: key size
// 12, entry data 32, stride 40, user data 40, so the entries begin at offset 111.
TEST(RedBlackTreeFile, EmptyTreeFileHasTheDocumentedBytes) {
    const std::vector<FieldSpecification> fields{FieldSpecification(10, "Date", FieldSpecification::SInt, 8, 0, 0)};
    const std::unique_ptr<FieldList> table(UnmanagedFieldListFactory::GetInstance().Create(fields));
    const IndexSpecification specification("ByDate", IndexSpecification::RedBlack,
                                           IndexSpecification::DuplicateProperty,
                                           {IndexSpecification::Field(10, IndexSpecification::Field::DescendingFlag)});
    for (const std::uint32_t entries : {1u, 4u}) {
        ScratchDirectory directory;
        const Uuid uuid;
        {
            RedBlackTreeIndex index(specification, *table, UnmanagedFieldListFactory::GetInstance(), entries, 7);
            ASSERT_EQ(index.GetKeySize(), 12u);
            index.Create(directory.Path(), "Items", uuid);
        }
        const std::vector<unsigned char> file = ReadFile(directory / "Items-ByDate.rb.idx");
        ASSERT_EQ(file.size(), 111 + 40 * entries);

        std::vector<unsigned char> expected{1};
        expected.resize(FileHeaderSize);
        ASSERT_EQ(uuid.GetBinary(expected.data() + 1, 16), Status::Success);
        expected.push_back(2);
        for (const std::uint32_t value : {0u, 1u, StoreHeaderSize, 40u, 32u, entries, 7u, 1u, entries}) {
            PutU32(expected, value);
        }
        expected.push_back(2);
        for (const std::uint32_t value : {94u, 40u}) PutU32(expected, value);
        PutU32(expected, entries == 1 ? 0xFFFFFFFF : 1);              // free list head
        PutU32(expected, entries == 1 ? 0xFFFFFFFF : entries - 1);    // free list tail
        MessageBuilder serialised;
        ASSERT_EQ(specification.Serialize(serialised), Status::Success);
        ASSERT_EQ(serialised.GetLength(), 32u);
        expected.insert(expected.end(), serialised.GetBuffer(), serialised.GetBuffer() + 32);
        PutU32(expected, 0);  // root
        PutU32(expected, 0);  // sentinel
        expected.insert(expected.end(), {1, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF});  // entry 0 in use
        expected.insert(expected.end(), {0xFF, 0xFF, 0xFF, 0xFF});              // the sentinel's record
        expected.resize(expected.size() + 16 + 12);  // links, colour and key: zero
        ASSERT_EQ(expected.size(), 151u);
        EXPECT_EQ(std::vector<unsigned char>(file.begin(), file.begin() + 151), expected) << entries << " entries";
    }
}

TEST(RedBlackTreeFile, FileNameJoinsDirectoryTableAndIndex) {
    EXPECT_EQ(RedBlackTreeIndex::GetFileName("data", "Items 2", "By Date"), "data/Items_2-By_Date.rb.idx");
    EXPECT_EQ(RedBlackTreeIndex::GetFileName("", "t", "i"), "t-i.rb.idx");
    EXPECT_EQ(RedBlackTreeIndex::GetFileName("d/", "t", "i"), "d/t-i.rb.idx");
    EXPECT_EQ(RedBlackTreeIndex::GetFileName("d\\", "t", "i"), "d\\t-i.rb.idx");
}

// A Duplicate index over (number, name) in a temporary file.
class RedBlackTree : public ::testing::Test {
protected:
    explicit RedBlackTree(std::uint32_t growEntries = 8) : harness(DuplicateSpecification(), 4, growEntries) {
        index.Create();
    }
    TreeHarness harness;
    RedBlackTreeIndex& index = *harness.index;
    Key key;
    std::uint32_t record = 0;
};

TEST_F(RedBlackTree, EmptyTreeFindsNothing) {
    SetKey(key, index, 1, "n", 1);
    EXPECT_EQ(index.GetStore().GetCurrentEntries(), 1u);
    EXPECT_EQ(index.GetCurrentRecords(), 0u);
    EXPECT_EQ(index.GetRoot(), index.GetSentinel());
    for (const StatusCode status :
         {index.Find(key, record), index.GetFirst(key, record), index.GetLast(key, record), index.GetNext(key, record),
          index.GetPrevious(key, record), index.GetFirstEqual(key, record, NumberField, FieldList::FullLength),
          index.GetLastEqual(key, record, NameField, 1), index.GetNextEqual(key, record, NameField, 0),
          index.GetPreviousEqual(key, record, NumberField, FieldList::FullLength)}) {
        EXPECT_EQ(status, Status::NotFound);
    }
    EXPECT_EQ(index.Remove(key), Status::Success);
    TreeHarness unopened(DuplicateSpecification(), 4, 4);
    EXPECT_EQ(unopened.index->Find(key, record), Status::NotOpen);
    EXPECT_EQ(unopened.index->GetRoot(), RedBlackTreeIndex::NoEntry);
}

TEST_F(RedBlackTree, DuplicatesOrderBySignedRecordIdAndAnUnsetTailOrdersFirst) {
    for (const std::uint32_t id : {5u, 0x80000001u, 2u, 9u}) AddKey(index, 3, "same", id);
    EXPECT_EQ(WalkRecords(index, true), (std::vector<std::uint32_t>{0x80000001u, 2, 5, 9}));
    SetKey(key, index, 3, "same");
    EXPECT_EQ(index.Find(key, record), Status::NotFound);
    // Below every entry of these fields but the one with a negative id.
    ASSERT_EQ(index.GetNext(key, record), Status::Success);
    EXPECT_EQ(record, 2u);
}

TEST(RedBlackTreeUnique, EqualKeysLandBehindTheirEquals) {
    TreeHarness harness(NumberNameSpecification(IndexSpecification::UniqueProperty, false), 8, 8);
    RedBlackTreeIndex& index = *harness.index;
    index.Create();
    for (const auto& [number, id] : std::vector<std::pair<std::uint32_t, std::uint32_t>>{{4, 1}, {2, 2}, {4, 3}, {6, 4}, {4, 5}}) {
        AddKey(index, number, "n", id);
    }
    Key key;
    SetKey(key, index, 4, "n");
    std::uint32_t record = 0;
    ASSERT_EQ(index.GetFirstEqual(key, record, NameField, FieldList::FullLength), Status::Success);
    EXPECT_EQ(record, 1u);
    ASSERT_EQ(index.GetLastEqual(key, record, NameField, FieldList::FullLength), Status::Success);
    EXPECT_EQ(record, 5u);
    EXPECT_EQ(index.CheckTree(), Status::Success);
}

TEST_F(RedBlackTree, WalksStepOverRemovedKeysAndStopAtTheEnds) {
    AddNumbers(index, {17, 11, 13, 10, 19, 12, 18, 14, 16, 15});
    SetKey(key, index, 30, "n");
    EXPECT_EQ(index.GetNext(key, record), Status::NotFound);
    ASSERT_EQ(index.GetPrevious(key, record), Status::Success);
    EXPECT_EQ(record, 19u);
    SetKey(key, index, 5, "n");
    EXPECT_EQ(index.GetPrevious(key, record), Status::NotFound);
    EXPECT_EQ(NumberOf(index, key), 5u);  // a failed step leaves the key alone

    // Remove each key right after the walk reached it; the next step still finds its successor.
    std::vector<std::uint32_t> seen;
    for (StatusCode status = index.GetFirst(key, record); status == Status::Success && seen.size() < 10;
         status = index.GetNext(key, record)) {
        seen.push_back(record);
        ASSERT_EQ(index.Remove(key), Status::Success);
        ASSERT_EQ(index.CheckTree(), Status::Success);
    }
    EXPECT_EQ(seen, (std::vector<std::uint32_t>{10, 11, 12, 13, 14, 15, 16, 17, 18, 19}));
    EXPECT_EQ(index.GetCurrentRecords(), 0u);
}

TEST_F(RedBlackTree, PrefixWalkStopsOnTheLastMatchAndRefusesBadArguments) {
    for (const auto& [name, id] : std::vector<std::pair<std::string, std::uint32_t>>{{"abx", 1}, {"aby", 2}, {"ab", 3}, {"ac", 4}}) {
        AddKey(index, 1, name, id);
    }
    SetKey(key, index, 1, "abz");
    std::vector<std::uint32_t> found;
    StatusCode status = index.GetFirstEqual(key, record, NameField, 2);
    for (; status == Status::Success && found.size() < 4; status = index.GetNextEqual(key, record, NameField, 2)) {
        found.push_back(record);
    }
    EXPECT_EQ(status, Status::NotFound);
    EXPECT_EQ(found, (std::vector<std::uint32_t>{3, 1, 2}));
    // The key stays on the last match: its bytes and its cursor.
    Key last;
    SetKey(last, index, 1, "aby", 2);
    ASSERT_EQ(index.Find(last, record), Status::Success);
    EXPECT_EQ(key.GetCursor(), last.GetCursor());
    EXPECT_TRUE(std::equal(key.GetData(), key.GetData() + index.GetKeySize(), last.GetData()));

    EXPECT_EQ(index.GetFirstEqual(key, record, ExtraField, FieldList::FullLength), Status::FieldMissing);
    EXPECT_EQ(index.GetNextEqual(key, record, 99, FieldList::FullLength), Status::FieldMissing);
    EXPECT_EQ(index.GetLastEqual(key, record, NameField, 4), Status::Invalid);  // "aby" has 3 bytes
}

// A cursor is a hint: one that names a free entry, another key's entry or the sentinel (whose key
// bytes are zero, as are those of a managed key with nothing defined) changes no answer.
TEST_F(RedBlackTree, StaleCursorsGiveTheAnswersOfNoCursor) {
    AddNumbers(index, {1, 2, 3, 4});
    const std::uint32_t freed = EntryOf(index, 3);
    const std::uint32_t other = EntryOf(index, 1);
    SetKey(key, index, 3, "n", 3);
    ASSERT_EQ(index.Remove(key), Status::Success);
    for (const std::uint32_t cursor : {freed, other, 1000u}) {
        key.SetCursor(cursor);
        EXPECT_EQ(index.Find(key, record), Status::NotFound);
        key.SetCursor(cursor);
        ASSERT_EQ(index.GetNext(key, record), Status::Success);
        EXPECT_EQ(record, 4u);
        SetKey(key, index, 3, "n", 3);
    }
    index.GetFieldList()->ResetData(key.GetData());
    EncodeU32(key.GetData() + index.GetFieldList()->GetDataLength(), 0);
    key.SetCursor(index.GetSentinel());
    EXPECT_EQ(index.Find(key, record), Status::NotFound);
    EXPECT_EQ(index.Remove(key), Status::Success);
    EXPECT_EQ(index.GetCurrentRecords(), 3u);
    EXPECT_EQ(index.CheckTree(), Status::Success);
}

TEST_F(RedBlackTree, RemovingANodeWithTwoChildrenKeepsTheSuccessorsEntry) {
    AddNumbers(index, {8, 4, 12, 2, 6, 10, 14, 1, 3, 5, 7, 9, 11, 13, 15});
    std::uint32_t rootNumber = 0;
    for (std::uint32_t number = 1; number <= 15; ++number) {
        if (EntryOf(index, number) == index.GetRoot()) rootNumber = number;
    }
    ASSERT_NE(rootNumber, 0u);
    Key successor;
    SetKey(successor, index, rootNumber + 1, "n", rootNumber + 1);
    ASSERT_EQ(index.Find(successor, record), Status::Success);

    SetKey(key, index, rootNumber, "n", rootNumber);
    ASSERT_EQ(index.Remove(key), Status::Success);
    ASSERT_EQ(index.CheckTree(), Status::Success);
    EXPECT_EQ(index.GetRoot(), successor.GetCursor());
    EXPECT_EQ(EntryOf(index, rootNumber + 1), successor.GetCursor());
    ASSERT_EQ(index.GetNext(successor, record), Status::Success);
    EXPECT_EQ(record, rootNumber + 2);
}

class RedBlackTreeWithoutGrowth : public RedBlackTree {
protected:
    RedBlackTreeWithoutGrowth() : RedBlackTree(0) {}
};

TEST_F(RedBlackTreeWithoutGrowth, AFullStoreRefusesAnAddAndLeavesTheTreeAlone) {
    AddNumbers(index, {2, 1, 3});
    const std::uint32_t root = index.GetRoot();
    SetKey(key, index, 4, "n", 4);
    EXPECT_EQ(index.Add(key, 4), Status::StoreFull);
    EXPECT_EQ(index.GetRoot(), root);
    EXPECT_EQ(index.CheckTree(), Status::Success);
    EXPECT_EQ(WalkRecords(index, true), (std::vector<std::uint32_t>{1, 2, 3}));

    ASSERT_EQ(index.Clear(), Status::Success);
    EXPECT_EQ(index.GetCurrentRecords(), 0u);
    EXPECT_EQ(index.GetRoot(), 0u);
    EXPECT_EQ(index.GetSentinel(), 0u);
    AddNumbers(index, {7});
    EXPECT_EQ(WalkRecords(index, true), (std::vector<std::uint32_t>{7}));
}

class RedBlackTreeFiles : public ::testing::Test {
protected:
    // Numbers 0 to 199 in a scrambled order, into an index that starts with 2 entries and grows by 3.
    void CreateFilled() {
        TreeHarness harness(DuplicateSpecification(), 2, 3);
        harness.index->Create(directory.Path(), "Items", uuid);
        std::vector<std::uint32_t> numbers;
        for (std::uint32_t i = 0; i < 200; ++i) numbers.push_back((i * 73) % 200);
        AddNumbers(*harness.index, numbers);
        ASSERT_EQ(harness.index->CheckTree(), Status::Success);
        maxEntries = harness.index->GetStore().GetMaxEntries();
        ASSERT_GT(maxEntries, 201u);  // the sentinel and 200 nodes, and at least one free entry
        root = harness.index->GetRoot();
        walk = WalkRecords(*harness.index, true);
        ASSERT_EQ(walk.size(), 200u);
    }
    std::string FilePath() const { return directory / "Items-ByNumber.rb.idx"; }

    ScratchDirectory directory;
    Uuid uuid;
    std::uint32_t root = 0;
    std::uint32_t maxEntries = 0;
    std::vector<std::uint32_t> walk;
};

TEST_F(RedBlackTreeFiles, GrownTreeOpensAgainUnchanged) {
    CreateFilled();
    TreeHarness reopened(DuplicateSpecification(), 2, 3);
    ASSERT_EQ(reopened.index->Open(directory.Path(), "Items", uuid), Status::Success);
    EXPECT_EQ(reopened.index->GetRoot(), root);
    EXPECT_EQ(reopened.index->GetSentinel(), 0u);
    EXPECT_EQ(reopened.index->CheckTree(), Status::Success);
    EXPECT_EQ(WalkRecords(*reopened.index, true), walk);

    // A copy opens beside its open source.
    ASSERT_EQ(reopened.index->SaveAs(directory.Path(), "Copy"), Status::Success);
    TreeHarness copy(DuplicateSpecification(), 2, 3);
    ASSERT_EQ(copy.index->Open(directory.Path(), "Copy", uuid), Status::Success);
    EXPECT_EQ(WalkRecords(*copy.index, true), walk);
}

TEST_F(RedBlackTreeFiles, OpenRefusesOtherFilesAndLeavesTheIndexWithout) {
    CreateFilled();
    const auto expectRefused = [&](const IndexSpecification& specification, const Uuid& expectedUuid,
                                   const std::string& table, StatusCode status) {
        TreeHarness harness(specification, 2, 3);
        EXPECT_EQ(harness.index->Open(directory.Path(), table, expectedUuid), status);
        EXPECT_EQ(harness.index->CheckTree(), Status::NotOpen);
    };
    expectRefused(DuplicateSpecification(), uuid, "Missing", Status::NotFound);
    expectRefused(DuplicateSpecification(), Uuid(), "Items", Status::Invalid);
    expectRefused(NumberNameSpecification(IndexSpecification::DuplicateProperty, true), uuid, "Items",
                  Status::Invalid);
    // Each refusal released the file in order, so it still opens.
    TreeHarness harness(DuplicateSpecification(), 2, 3);
    EXPECT_EQ(harness.index->Open(directory.Path(), "Items", uuid), Status::Success);
}

// Root and sentinel stand in the last 8 bytes of the user data, behind the index specification; a node
// behind the 8 bytes of its entry header.
TEST_F(RedBlackTreeFiles, DamagedFilesGiveAStatusNotAHang) {
    CreateFilled();
    const std::vector<unsigned char> original = ReadFile(FilePath());
    MessageBuilder specification;
    ASSERT_EQ(DuplicateSpecification().Serialize(specification), Status::Success);
    const std::uint32_t rootOffset = FileHeaderSize + StoreHeaderSize + specification.GetLength();
    const std::uint32_t stride = TreeHarness(DuplicateSpecification(), 2, 3).index->GetKeySize() + 8 + 20;
    const auto openPatched = [&](TreeHarness& harness, std::uint32_t offset, std::uint32_t value) {
        std::vector<unsigned char> bytes = original;
        EncodeU32(bytes.data() + offset, value);
        WriteFile(FilePath(), bytes);
        return harness.index->Open(directory.Path(), "Items", uuid);
    };
    for (const std::uint32_t offset : {rootOffset, rootOffset + 4}) {
        for (const std::uint32_t entry : {maxEntries - 1, 1000000u}) {  // a free entry, and none
            TreeHarness harness(DuplicateSpecification(), 2, 3);
            EXPECT_EQ(openPatched(harness, offset, entry), Status::Invalid) << offset << ", " << entry;
        }
    }
    // The root's left link names the root: a descent to the left would go round for ever.
    TreeHarness harness(DuplicateSpecification(), 2, 3);
    const std::uint32_t rootLeft = rootOffset + 8 + root * stride + 8 + RedBlackTreeNode::LeftOffset;
    ASSERT_EQ(openPatched(harness, rootLeft, root), Status::Success);
    Key key;
    SetKey(key, *harness.index, 0, "n", 0);
    std::uint32_t record = 0;
    EXPECT_EQ(harness.index->Find(key, record), Status::Invalid);
    EXPECT_EQ(harness.index->Add(key, 0), Status::Invalid);
    EXPECT_EQ(harness.index->CheckTree(), Status::Invalid);
}

}  // namespace
}  // namespace Tavrin::Database::Testing
