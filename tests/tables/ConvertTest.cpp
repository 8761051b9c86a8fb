// Convert: a record file of an older layout carried into the table's layout when the table is
// built with property bit 2, its old files kept in "Convert", and a failure that leaves everything
// as it was.

#include <gtest/gtest.h>

#include <filesystem>

#include "../base/ScratchDirectory.h"
#include "OpenTableTestSupport.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;

constexpr std::uint32_t kConvert = 4;  // property bit 2

// People, one layout later: Note shortened, Code narrowed, Score widened, Group gone, Id under
// another id and position, a field added.
std::vector<FieldSpecification> LaterFields() {
    return {FieldSpecification(9, "Note", FieldSpecification::TextString, 4, 0, 0),
            FieldSpecification(8, "Id", FieldSpecification::UInt, 4, 0, 0),
            FieldSpecification(kCode, "Code", FieldSpecification::UInt, 2, 0, 0),
            FieldSpecification(kScore, "Score", FieldSpecification::SInt, 8, 0, 0),
            FieldSpecification(kGroup, "Added", FieldSpecification::SInt, 4, 0, 0)};
}

std::unique_ptr<ITable> MakeLater(const std::string& directory, std::uint32_t properties, std::uint32_t cacheSize,
                                  std::uint32_t growRecords = kHalf) {
    return std::unique_ptr<ITable>(ManagedTableFactory::GetInstance().Create("People", directory, properties,
                                                                             LaterFields(), 4, growRecords, cacheSize));
}

TEST(Convert, CarriesRecordsByNameAndKeepsTheOldFiles) {
    for (std::uint32_t cacheSize : {kAll, 16u}) {
        ScratchDirectory directory;
        const std::vector<Person> people = {{30, 7, 1, -3, "long note"}, {10, 70000, 2, 4, "ok"}, {20, 9, 3, 5, "abcd"}};
        {
            std::unique_ptr<ITable> old = MakeMixedPeople(directory.Path(), cacheSize);
            WriteAll(*old, people);
        }
        std::unique_ptr<ITable> table = MakeLater(directory.Path(), kCreateFile | kConvert, cacheSize);
        const ConversionReport report = table->GetLastConversionReport();
        EXPECT_TRUE(report.converted);
        EXPECT_EQ(report.records, 3u);
        EXPECT_EQ(report.droppedValues, 2u);  // "long note" and 70000

        // New ids in the old order; Note and Code undefined where they did not fit.
        const std::vector<Record> records = StoredRecords(*table);
        ASSERT_EQ(records.size(), 3u);
        for (std::uint32_t i = 0; i < 3; ++i) {
            const FieldList& list = *records[i].GetFieldList();
            const unsigned char* data = records[i].GetData();
            std::uint32_t id = 0;
            std::uint16_t code = 0;
            std::int64_t score = 0;
            std::int32_t added = 0;
            std::string note;
            EXPECT_EQ(records[i].GetRecordId(), i);
            EXPECT_EQ(list.GetField(data, 8, id), Status::Success);
            EXPECT_EQ(id, people[i].id);
            EXPECT_EQ(list.GetField(data, kScore, score), Status::Success);
            EXPECT_EQ(score, people[i].score);
            EXPECT_EQ(list.GetField(data, kGroup, added), Status::Undefined);
            EXPECT_EQ(list.GetField(data, kCode, code), people[i].code > 0xFFFF ? Status::Undefined : Status::Success);
            EXPECT_EQ(list.GetField(data, 9, note), people[i].note.size() > 4 ? Status::Undefined : Status::Success);
        }
        // The old table, indexes and all, lies in Convert; nothing of it is left beside the new one.
        const std::string old = directory / "Convert";
        EXPECT_EQ(File::IsFound(old + "/People.tab.data"), cacheSize != kAll);
        EXPECT_EQ(Take(*Open(old + "/People.tab")).records.size(), 3u);
        for (const char* name : {"People-ById.rb.idx", "People-ByCode.hash.idx", "People-ByCode.hash-entry.idx"}) {
            EXPECT_TRUE(File::IsFound(old + "/" + name)) << name;
            EXPECT_FALSE(File::IsFound(directory / name)) << name;
        }
        EXPECT_EQ(directory.Count(), cacheSize == kAll ? 2u : 3u);
        std::vector<IndexSpecification> indexes = {IndexSpecification(
            "ById", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty, {Field(8, 0)})};
        table->CreateIndexes(indexes);
        EXPECT_NO_THROW(table->CheckIntegrity());
    }
}

TEST(Convert, UnmanagedFieldsThatMovedAreConverted) {
    ScratchDirectory directory;
    {
        std::unique_ptr<ITable> old = MakeUnmanaged("Stock", directory.Path());  // Age at 0, Code at 4
        Record record(old.get());
        record.GetFieldList()->SetField(record.GetData(), 1, std::int32_t{-5});
        record.GetFieldList()->SetField(record.GetData(), 2, std::uint32_t{77});
        std::vector<IndexSpecification> indexes = {IndexSpecification(
            "ByCode", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty, {Field(2, 0)})};
        old->CreateIndexes(indexes);
        ASSERT_EQ(old->WriteRecord(record), Status::Success);
    }
    const std::vector<FieldSpecification> moved = {FieldSpecification(1, "Age", FieldSpecification::SInt, 4, 4, 0),
                                                   FieldSpecification(2, "Code", FieldSpecification::UInt, 4, 0, 0)};
    EXPECT_EQ(MakeUnmanaged("Stock", directory.Path(), 8, 0, moved)->OpenRecordFile(), Status::DescriptionDiffers);
    std::unique_ptr<ITable> table = MakeUnmanaged("Stock", directory.Path(), 8, kCreateFile | kConvert, moved);
    const std::vector<Record> records = StoredRecords(*table);
    ASSERT_EQ(records.size(), 1u);
    std::int32_t age = 0;
    std::uint32_t code = 0;
    records[0].GetFieldList()->GetField(records[0].GetData(), 1, age);
    records[0].GetFieldList()->GetField(records[0].GetData(), 2, code);
    EXPECT_EQ(age, -5);
    EXPECT_EQ(code, 77u);
}

TEST(Convert, AFailedConversionLeavesTheTableAsItWas) {
    ScratchDirectory directory;
    {
        std::unique_ptr<ITable> old = MakeMixedPeople(directory.Path());
        WriteAll(*old, {{1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}});
    }
    const std::vector<unsigned char> before = ReadFile(directory / "People.tab");
    const std::size_t files = directory.Count();
    // Room for four records and no growth: the fifth fails.
    const Thrown thrown = Catch([&] { MakeLater(directory.Path(), kCreateFile | kConvert, kAll, 0); });
    EXPECT_TRUE(thrown.isStatus);
    EXPECT_EQ(thrown.code, Status::StoreFull);
    EXPECT_EQ(ReadFile(directory / "People.tab"), before);
    EXPECT_EQ(directory.Count(), files + 1);  // and the empty "Convert"
    EXPECT_EQ(Take(*Open(directory / "People.tab")).records.size(), 5u);
}

TEST(Convert, DirectCallsNeedAClosedRecordFileWithoutIndexes) {
    ScratchDirectory directory;
    EXPECT_EQ(MakeInMemory("Memo")->Convert(), Status::NotAvailable);
    std::unique_ptr<ITable> table = MakeBarePeople(directory.Path());
    EXPECT_EQ(table->Convert(), Status::AlreadyOpen);
    ASSERT_EQ(table->CloseRecordFile(), Status::Success);
    const std::vector<unsigned char> before = ReadFile(directory / "People.tab");
    EXPECT_EQ(table->Convert(), Status::Success);  // the same layout: the file is written anew
    EXPECT_TRUE(table->IsRecordFileOpen());
    EXPECT_NE(UuidOf(directory / "People.tab"), std::vector<unsigned char>(before.begin() + 1, before.begin() + 17));
    std::vector<IndexSpecification> indexes = PeopleIndexes();
    table->CreateIndexes(indexes);
    EXPECT_EQ(table->Convert(), Status::IndexConflict);
}

// A kill after the point of no return leaves the complete new store under "<file>.converted": the
// next open finishes the switch, from whichever step it stopped at, before it reads a description.
TEST(Convert, AConversionStoppedAfterItsNewStoreWasCompleteIsFinishedByTheNextOpen) {
    for (bool oldFileMoved : {false, true}) {
        ScratchDirectory directory, scratch;
        WriteAll(*MakeMixedPeople(directory.Path(), 16), {{1, 1, 1, 1, "one"}, {2, 2, 2, 2, "two"}});
        ASSERT_EQ(MakeLater(scratch.Path(), kCreateFile, 16)->CloseRecordFile(), Status::Success);
        ASSERT_EQ(File::Rename(scratch / "People.tab.data", directory / "People.tab.converted.data", true), 0);
        ASSERT_EQ(File::Rename(scratch / "People.tab", directory / "People.tab.converted", true), 0);
        if (oldFileMoved) {  // stopped after every old file had left
            ASSERT_TRUE(std::filesystem::create_directory(directory / "Convert"));
            for (const auto& entry : std::filesystem::directory_iterator(directory.Path())) {
                const std::string name = entry.path().filename().string();
                if (entry.is_regular_file() && name.find(".converted") == std::string::npos) {
                    ASSERT_EQ(File::Rename(directory / name, directory / ("Convert/" + name), true), 0);
                }
            }
        }
        std::unique_ptr<ITable> table = Open(directory / "People.tab");
        EXPECT_EQ(table->GetFieldSpecificationList().size(), LaterFields().size());
        EXPECT_EQ(table->GetNumberOfIndexes(), 0u);
        EXPECT_FALSE(File::IsFound(directory / "People.tab.converted"));
        EXPECT_EQ(Take(*Open(directory / "Convert/People.tab")).records.size(), 2u);
    }
}

}  // namespace
}  // namespace Tavrin::Database::Testing
