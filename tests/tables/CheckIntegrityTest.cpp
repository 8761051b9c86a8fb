// CheckIntegrity: sound tables of every index kind pass, and each kind of damage behind an index's
// back is reported with its exact text.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "../base/ScratchDirectory.h"
#include "OpenTableTestSupport.h"
#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/indexes/HashIndex.h"
#include "tavrin/indexes/RedBlackTreeNode.h"
#include "tavrin/tables/RemoteTableFactory.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;

constexpr std::uint32_t kMarker = 0x5A5A0000;  // ids whose bytes occur nowhere else in the files

std::vector<Person> Marked(std::uint32_t count) {
    std::vector<Person> people;
    for (std::uint32_t i = 1; i <= count; ++i) {
        people.push_back({kMarker + 16 * i, 100 + i, static_cast<std::int32_t>(i % 3), static_cast<std::int32_t>(i)});
    }
    return people;
}

Key IdKey(ITable& table, std::uint32_t id) {
    Key key(&table, kById);
    EXPECT_EQ(key.GetFieldList()->SetField(key.GetData(), kId, id), Status::Success);
    return key;
}

std::string Text(const Key& key) { return key.GetFieldList()->ToLogString(key.GetData()) + "\n"; }

// The report of a check that must fail.
std::string Report(ITable& table) {
    const Thrown thrown = Catch([&] { table.CheckIntegrity(); });
    EXPECT_TRUE(thrown.isDatabase);
    EXPECT_EQ(thrown.code, DatabaseException::InvalidParameter);
    return thrown.message;
}

Record RecordOf(ITable& table, std::uint32_t id) {
    Record record;
    EXPECT_EQ(FindById(table, id, record), Status::Success);
    return record;
}

TEST(CheckIntegrity, SoundTablesOfEveryIndexKindPass) {
    for (std::uint32_t cacheSize : {kAll, 64u}) {
        ScratchDirectory directory;
        std::unique_ptr<ITable> table = MakeBarePeople(directory.Path(), kCreateFile, 8, kHalf, cacheSize);
        EXPECT_NO_THROW(table->CheckIntegrity());  // no indexes
        std::vector<IndexSpecification> indexes = MixedIndexes();
        indexes.emplace_back("ByGroupHash", IndexSpecification::Hash, IndexSpecification::DuplicateProperty,
                             std::vector<Field>{Field(kGroup, 0)});
        indexes.emplace_back("ByNote", IndexSpecification::RedBlack, IndexSpecification::DuplicateProperty,
                             std::vector<Field>{Field(kNote, Field::DescendingFlag), Field(kScore, 0)});
        table->CreateIndexes(indexes);
        EXPECT_NO_THROW(table->CheckIntegrity());  // empty

        std::mt19937 random(7);
        for (std::uint32_t id = 1; id <= 300; ++id) {
            Record record(table.get());
            const FieldList& list = *record.GetFieldList();
            list.SetField(record.GetData(), kId, id);
            list.SetField(record.GetData(), kCode, id * 7);
            // Undefined fields in the keys: Group and Note in some records, Score in others.
            if (random() % 4 != 0) list.SetField(record.GetData(), kGroup, static_cast<std::int32_t>(random() % 5));
            if (random() % 4 != 0) list.SetField(record.GetData(), kScore, static_cast<std::int32_t>(random() % 9));
            if (random() % 3 != 0) list.SetField(record.GetData(), kNote, std::string(1 + random() % 5, 'a'));
            ASSERT_EQ(table->WriteRecord(record), Status::Success);
        }
        EXPECT_NO_THROW(table->CheckIntegrity());
    }
}

TEST(CheckIntegrity, KeyChangedBehindATreeIndexIsReported) {
    ScratchDirectory directory;
    const std::string path = directory / "People.tab";
    WriteAll(*MakePeople(directory.Path()), Marked(5));
    ChangeStoredId(path, kMarker + 48);  // the third record, id 2, now says kMarker + 49

    std::unique_ptr<ITable> table = Open(path);
    EXPECT_EQ(Report(*table), "\n\nIndex 0: ById\n"
                              "Key at id 2 does not match the corresponding key from the retrieved record\n"
                              "Current key ..... " + Text(IdKey(*table, kMarker + 48)) +
                              "Record key ...... " + Text(IdKey(*table, kMarker + 49)));
}

std::vector<unsigned char> BytesOf(std::uint32_t value) {
    return {static_cast<unsigned char>(value), static_cast<unsigned char>(value >> 8),
            static_cast<unsigned char>(value >> 16), static_cast<unsigned char>(value >> 24)};
}

// Swaps the record ids and keys of the tree nodes of two ids in the closed tree file, links kept:
// the walk then delivers their keys in the wrong order, each with its own record. `idOffset` is
// where the id lies in a key image of `keySize` bytes.
void SwapTreeEntries(const std::string& treeFile, std::uint32_t keySize, std::ptrdiff_t idOffset, std::uint32_t first,
                     std::uint32_t second) {
    std::vector<unsigned char> bytes = ReadFile(treeFile);
    const auto nodeOf = [&](std::uint32_t id) {
        const std::vector<unsigned char> value = BytesOf(id);
        const auto at = std::search(bytes.begin(), bytes.end(), value.begin(), value.end());
        EXPECT_NE(at, bytes.end());
        return at - idOffset - RedBlackTreeNode::KeyOffset;
    };
    const auto a = nodeOf(first);
    const auto b = nodeOf(second);
    std::swap_ranges(a, a + 4, b);  // the record ids
    std::swap_ranges(a + RedBlackTreeNode::KeyOffset, a + RedBlackTreeNode::KeyOffset + keySize,
                     b + RedBlackTreeNode::KeyOffset);
    WriteFile(treeFile, bytes);
}

TEST(CheckIntegrity, SwappedTreeEntriesAreReportedOutOfOrder) {
    ScratchDirectory directory;
    const std::string path = directory / "People.tab";
    std::uint32_t keySize = 0;
    std::ptrdiff_t idOffset = 0;
    {
        std::unique_ptr<ITable> table = MakePeople(directory.Path());
        WriteAll(*table, Marked(5));
        const Key key(kById, RecordOf(*table, kMarker + 32));
        keySize = key.GetIndex()->GetKeySize();
        const std::vector<unsigned char> value = BytesOf(kMarker + 32);
        idOffset = std::search(key.GetData(), key.GetData() + keySize, value.begin(), value.end()) - key.GetData();
    }
    SwapTreeEntries(directory / "People-ById.rb.idx", keySize, idOffset, kMarker + 32, kMarker + 64);

    std::unique_ptr<ITable> table = Open(path);
    EXPECT_EQ(Report(*table), "\n\nIndex 0: ById\nOut of order key found at id 2\n"
                              "Previous key .... " + Text(IdKey(*table, kMarker + 64)) +
                              "Current key ..... " + Text(IdKey(*table, kMarker + 48)));
}

TEST(CheckIntegrity, MissingAndMisdirectedHashEntriesAreReported) {
    ScratchDirectory directory;
    std::unique_ptr<ITable> table = MakeMixedPeople(directory.Path());
    WriteAll(*table, Marked(5));
    Index& byCode = IndexOf(*table, 1);
    const Key third(1, RecordOf(*table, kMarker + 48));  // record id 2
    ASSERT_EQ(byCode.Remove(third), Status::Success);
    EXPECT_EQ(Report(*table), "\n\nIndex 1: ByCode\nFailed to find matching key for recordId 2, error " +
                                  StatusCodeToString(Status::NotFound) + "\nCurrent key ..... " + Text(third));

    ASSERT_EQ(byCode.Add(third, 2), Status::Success);
    EXPECT_NO_THROW(table->CheckIntegrity());
    const Key fourth(1, RecordOf(*table, kMarker + 64));  // record id 3, now led to record 1
    ASSERT_EQ(byCode.Add(fourth, 1), Status::Success);
    const Key second(1, RecordOf(*table, kMarker + 32));
    EXPECT_EQ(Report(*table), "\n\nIndex 1: ByCode\nRetrieved hash key does not match requested key for record id 3\n"
                              "Current key ..... " + Text(fourth) + "Retrieved key ... " + Text(second));
}

// A finding of an index's own check reaches the caller as code 12 with the check's own text.
TEST(CheckIntegrity, AnIndexsOwnFindingIsPassedOn) {
    ScratchDirectory directory;
    {
        std::unique_ptr<ITable> table = MakeMixedPeople(directory.Path());
        WriteAll(*table, Marked(5));
    }
    // freeTail of the entry file (file offset 17 + 24) named entry 0, which is in use: a file that
    // opens, as only the check walks the free list to its end.
    const std::string entries = HashIndex::GetEntryFileName(directory.Path(), "People", "ByCode");
    std::vector<unsigned char> bytes = ReadFile(entries);
    std::fill(bytes.begin() + 41, bytes.begin() + 45, 0);
    WriteFile(entries, bytes);

    std::unique_ptr<ITable> table = Open(directory / "People.tab");
    const std::string report = Report(*table);
    EXPECT_NE(report.find("End of free list not equal to the last entry in it"), std::string::npos) << report;
    EXPECT_EQ(report.find("\n\nIndex"), std::string::npos) << "not a report of the walk: " << report;
}

TEST(CheckIntegrity, ARemoteTableHasNothingToCheck) {
    std::unique_ptr<ITable> table = MakePeople();
    MessageBuilder builder;
    ASSERT_EQ(table->SerializeSpecification(builder), Status::Success);
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    std::unique_ptr<ITable> remote(RemoteTableFactory::GetInstance().Create(validator));
    const Thrown thrown = Catch([&] { remote->CheckIntegrity(); });
    EXPECT_TRUE(thrown.isStatus);
    EXPECT_EQ(thrown.code, Status::NotAvailable);
}

}  // namespace
}  // namespace Tavrin::Database::Testing
