// Index management on a table: the primary index rule, what CreateIndexes and CreateTemporaryIndex
// refuse, the Uuid that ties the files together, and the silent rebuild of index files that are
// missing, stale or left open by a dead process.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "../base/ScratchDirectory.h"
#include "../base/ThrownStatus.h"
#include "WriteTestSupport.h"
#include "tavrin/base/File.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;

IndexSpecification Tree(const std::string& name, std::uint32_t properties, std::uint16_t fieldId) {
    return IndexSpecification(name, IndexSpecification::RedBlack, properties, {Field(fieldId, 0)});
}

std::string IndexFile(const ScratchDirectory& directory, const std::string& index) {
    return directory / ("People-" + index + ".rb.idx");
}

void WritePeople(ITable& table, std::uint32_t first, std::uint32_t count, std::uint32_t codeBase = 0) {
    for (std::uint32_t id = first; id < first + count; ++id) {
        Record record = ToRecord(table, {id, codeBase + id, static_cast<std::int32_t>(id % 3), 7});
        ASSERT_EQ(table.WriteRecord(record), Status::Success) << "id " << id;
    }
}

TEST(TableIndexes, PrimaryIndexRule) {
    const auto primaryOf = [](std::vector<IndexSpecification> indexes) {
        auto table = MakeBarePeople();
        table->CreateIndexes(indexes);
        for (std::uint16_t number = 0; number < indexes.size(); ++number) EXPECT_EQ(indexes[number].GetNumber(), number);
        return table->GetPrimaryIndex();
    };
    const std::uint32_t unique = IndexSpecification::UniqueProperty;
    const std::uint32_t primary = IndexSpecification::PrimaryUniqueProperty;
    const std::uint32_t duplicate = IndexSpecification::DuplicateProperty;
    EXPECT_EQ(primaryOf({Tree("A", unique, kCode), Tree("B", primary, kId)}), 1);
    EXPECT_EQ(primaryOf({Tree("A", duplicate, kId), Tree("B", unique, kCode), Tree("C", unique, kGroup)}), 1);
    EXPECT_EQ(primaryOf({Tree("A", duplicate, kCode), Tree("B", duplicate, kId)}), Table::NoIndex);

    auto table = MakeBarePeople();
    std::vector<IndexSpecification> indexes{Tree("A", duplicate, kCode)};
    table->CreateIndexes(indexes);
    IndexSpecification temporary = Tree("T", unique, kId);
    const Thrown thrown = Catch([&] { table->CreateTemporaryIndex(temporary); });
    EXPECT_TRUE(thrown.isDatabase);
    EXPECT_EQ(thrown.code, DatabaseException::AllocateIndex);
    EXPECT_EQ(thrown.function, "Tavrin::Database::ManagedTable::CreateTemporaryIndex");
}

TEST(TableIndexes, RefusedSpecificationsLeaveTheIndexesBeforeThem) {
    struct Case {
        std::vector<IndexSpecification> indexes;
        std::uint32_t code;
        std::string message;
        std::uint32_t indexesLeft;
    };
    const std::uint32_t primary = IndexSpecification::PrimaryUniqueProperty;
    const std::vector<Case> cases{
        {{Tree("A", primary, kId), Tree("A", IndexSpecification::UniqueProperty, kCode)},
         DatabaseException::InvalidParameter, "repeated index name <A> for table <People>", 1},
        {{Tree("A", primary, kId), Tree("B", primary, kCode)},
         DatabaseException::InvalidParameter,
         "multiple primary unique indexes defined at index <B> for table <People>", 1},
        {{Tree("A", primary, kId), IndexSpecification("E", IndexSpecification::RedBlack, 2, {})},
         DatabaseException::InvalidParameter, "empty index field list for index <E>", 1},
        {{IndexSpecification("X", static_cast<IndexSpecification::Type>(3), primary, {Field(kId, 0)})},
         DatabaseException::InvalidParameter, "", 0},
        {{Tree("A", primary, kId), Tree("M", 2, 99)}, DatabaseException::InvalidParameter, "", 1},
    };
    for (const Case& each : cases) {
        auto table = MakeBarePeople();
        std::vector<IndexSpecification> indexes = each.indexes;
        const Thrown thrown = Catch([&] { table->CreateIndexes(indexes); });
        EXPECT_TRUE(thrown.isDatabase) << each.message;
        EXPECT_EQ(thrown.code, each.code) << each.message;
        if (!each.message.empty()) {
            EXPECT_EQ(thrown.message, each.message);
        }
        EXPECT_EQ(table->GetNumberOfIndexes(), each.indexesLeft) << each.message;

        // Whatever came before stands, and a second call is refused.
        std::vector<IndexSpecification> again{Tree("Z", IndexSpecification::UniqueProperty, kNote)};
        const Thrown second = Catch([&] { table->CreateIndexes(again); });
        if (each.indexesLeft != 0) {
            EXPECT_EQ(second.code, DatabaseException::InvalidParameter);
            EXPECT_EQ(second.message, "permanent indexes already created for table <People>");
        } else {
            EXPECT_FALSE(second.thrown) << each.message;
        }
    }

    auto closed = MakeBarePeople("", 0);
    std::vector<IndexSpecification> indexes = PeopleIndexes();
    const Thrown notOpen = Catch([&] { closed->CreateIndexes(indexes); });
    EXPECT_EQ(notOpen.code, DatabaseException::NotCreated);
    EXPECT_EQ(notOpen.message, "record file not created for table <People>");
    EXPECT_EQ(notOpen.function, "Tavrin::Database::Table::CreateIndexes");
}

TEST(TableIndexes, FailedTemporaryIndexKeepsTheNextNumber) {
    auto table = MakePeople();
    WritePeople(*table, 1, 6);
    // Groups repeat: a unique index over them can't be built.
    IndexSpecification repeated = Tree("Unique groups", IndexSpecification::UniqueProperty, kGroup);
    const Thrown thrown = Catch([&] { table->CreateTemporaryIndex(repeated); });
    EXPECT_TRUE(thrown.isStatus);
    EXPECT_EQ(thrown.code, Status::IndexConflict);
    EXPECT_EQ(table->GetNumberOfIndexes(), 3u);

    // A temporary index of a table in memory is built from the records that are there.
    IndexSpecification byScore("ByScore", IndexSpecification::RedBlack, IndexSpecification::DuplicateProperty,
                               {Field(kScore, 0)});
    table->CreateTemporaryIndex(byScore);
    EXPECT_EQ(byScore.GetNumber(), 3);
    ExpectIndexesMatchStore(*table);
    Record record = ToRecord(*table, {7, 70, 1, 1});
    ASSERT_EQ(table->WriteRecord(record), Status::Success);
    ExpectIndexesMatchStore(*table);
}

TEST(TableIndexes, RecordFileOperationsAreRefusedWhileIndexesExist) {
    ScratchDirectory directory;
    auto table = MakePeople(directory.Path());
    EXPECT_EQ(Tavrin::Testing::ThrownStatus([&] { table->CreateRecordFile(); }), Status::IndexConflict);
    EXPECT_EQ(table->OpenRecordFile(), Status::IndexConflict);
    EXPECT_EQ(table->CloseRecordFile(), Status::IndexConflict);
    EXPECT_TRUE(table->IsRecordFileOpen());
}

TEST(TableIndexes, EveryCreateIndexesGivesAllFilesOneNewUuid) {
    ScratchDirectory directory;
    const std::string recordFile = directory / "People.tab";
    MakeBarePeople(directory.Path());
    const std::vector<unsigned char> created = UuidOf(recordFile);

    // No index at all still renews the record file's Uuid, and may be asked for again.
    {
        auto table = MakeBarePeople(directory.Path());
        std::vector<IndexSpecification> none;
        table->CreateIndexes(none);
        table->CreateIndexes(none);
    }
    const std::vector<unsigned char> renewed = UuidOf(recordFile);
    EXPECT_NE(renewed, created);

    std::vector<unsigned char> previous = renewed;
    for (int round = 0; round < 2; ++round) {
        MakePeople(directory.Path());
        const std::vector<unsigned char> uuid = UuidOf(recordFile);
        EXPECT_NE(uuid, previous);
        for (const char* index : {"ById", "ByCode", "ByGroup"}) EXPECT_EQ(UuidOf(IndexFile(directory, index)), uuid);
        previous = uuid;
    }
}

TEST(TableIndexes, IndexFilesThatCloseInOrderAreOpenedNotRebuilt) {
    ScratchDirectory directory;
    const std::uint32_t marker = 0x5A5A1234;
    {
        auto table = MakePeople(directory.Path());
        WritePeople(*table, 1, 4);
        Record record = ToRecord(*table, {marker, 99, 0, 0});
        ASSERT_EQ(table->WriteRecord(record), Status::Success);
    }
    ChangeStoredId(directory / "People.tab", marker);

    auto table = MakePeople(directory.Path());
    Record record;
    EXPECT_EQ(FindById(*table, marker + 1, record), Status::NotFound) << "the index still holds the old id";
    ASSERT_EQ(FindById(*table, marker, record), Status::Success);
    EXPECT_EQ(ToPerson(record).id, marker + 1);
}

TEST(TableIndexes, MissingAndStaleIndexFilesAreRebuiltFromTheRecords) {
    ScratchDirectory directory;
    const std::string spare = directory / "spare";
    {
        auto table = MakePeople(directory.Path());
        WritePeople(*table, 1, 5);
    }
    ASSERT_EQ(File::Copy(IndexFile(directory, "ById"), spare, true), Status::Success);
    {
        auto table = MakePeople(directory.Path());
        WritePeople(*table, 6, 5);
    }
    // A tree written beside an earlier record file, and no tree at all.
    ASSERT_EQ(File::Copy(spare, IndexFile(directory, "ById"), true), Status::Success);
    ASSERT_EQ(File::Remove(IndexFile(directory, "ByGroup")), Status::Success);

    auto table = MakePeople(directory.Path());
    for (std::uint16_t number = 0; number < 3; ++number) EXPECT_EQ(WalkIndex(*table, number).size(), 10u);
    ExpectIndexesMatchStore(*table);
}

TEST(TableIndexes, AFailedRebuildLeavesNoFileThatALaterOpenWouldTrust) {
    ScratchDirectory directory;
    {
        auto table = MakeBarePeople(directory.Path());
        std::vector<IndexSpecification> indexes{PeopleIndexes()[kById]};
        table->CreateIndexes(indexes);
        WritePeople(*table, 1, 20);
        Record repeated = ToRecord(*table, {21, 5, 0, 0});  // code 5 again, as record 5 has
        ASSERT_EQ(table->WriteRecord(repeated), Status::Success);
    }
    for (int attempt = 0; attempt < 2; ++attempt) {
        auto table = MakeBarePeople(directory.Path());
        std::vector<IndexSpecification> indexes = PeopleIndexes();
        const Thrown thrown = Catch([&] { table->CreateIndexes(indexes); });
        EXPECT_TRUE(thrown.isStatus) << "attempt " << attempt;
        EXPECT_EQ(thrown.code, Status::IndexConflict);
        EXPECT_EQ(thrown.function, "Tavrin::Database::Table::InitializeIndex");
        EXPECT_EQ(table->GetNumberOfIndexes(), 1u);
        EXPECT_FALSE(File::IsFound(IndexFile(directory, "ByCode")));
        EXPECT_EQ(table->GetPrimaryIndex(), kById);
    }
}

TEST(TableIndexes, UnmanagedTablesGetKeysOfTheirOwnLayout) {
    ScratchDirectory directory;
    for (int round = 0; round < 2; ++round) {
        std::unique_ptr<ITable> table = MakeUnmanaged("Sample", directory.Path());
        std::vector<IndexSpecification> indexes{
            Tree("ByAge", IndexSpecification::PrimaryUniqueProperty, 1),
            IndexSpecification("ByCode", IndexSpecification::RedBlack, IndexSpecification::DuplicateProperty,
                               {Field(2, Field::DescendingFlag)})};
        table->CreateIndexes(indexes);
        for (std::int32_t age = 0; age < 5; ++age) {
            Record record(table.get());
            ASSERT_EQ(record.GetFieldList()->SetField(record.GetData(), 1, std::int32_t{age + round * 5}), 0);
            ASSERT_EQ(record.GetFieldList()->SetField(record.GetData(), 2, std::uint32_t(age % 2)), 0);
            ASSERT_EQ(table->WriteRecord(record), Status::Success);
        }
        ExpectIndexesMatchStore(*table);
    }
}

}  // namespace
}  // namespace Tavrin::Database::Testing
