// CopyRecords and Clone: records carried by field name, whole, in any batch size; a clone that
// refuses its source's directory and takes back what it made when it fails.

#include <gtest/gtest.h>

#include "../base/ScratchDirectory.h"
#include "OpenTableTestSupport.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;

std::vector<Person> Sample() {
    std::vector<Person> people;
    for (std::uint32_t i = 1; i <= 7; ++i) people.push_back({i, 1000 + i, static_cast<std::int32_t>(i), 5, "n"});
    return people;
}

// Another layout of some People fields: other ids and order, Code widened, a field of its own.
std::unique_ptr<ITable> MakeLedger() {
    const std::vector<FieldSpecification> fields = {
        FieldSpecification(20, "Code", FieldSpecification::UInt, 8, 0, 0),
        FieldSpecification(21, "Id", FieldSpecification::UInt, 4, 0, 0),
        FieldSpecification(22, "Extra", FieldSpecification::SInt, 4, 0, 0)};
    std::unique_ptr<ITable> table(ManagedTableFactory::GetInstance().Create("Ledger", kCreateFile, fields, 4, kHalf, kAll));
    std::vector<IndexSpecification> indexes = {IndexSpecification(
        "ById", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty, {Field(21, 0)})};
    table->CreateIndexes(indexes);
    return table;
}

TEST(CopyRecords, MatchesFieldsByNameInEveryBatchSize) {
    std::unique_ptr<ITable> source = MakePeople();
    WriteAll(*source, Sample());
    std::unique_ptr<ITable> ledger = MakeLedger();
    for (std::uint32_t batchSize : {0u, 1u, 3u, 100u}) {
        ASSERT_EQ(ledger->CopyRecords(source.get(), true, batchSize), Status::Success);
        const std::vector<Record> copied = StoredRecords(*ledger);
        ASSERT_EQ(copied.size(), 7u);
        for (std::uint32_t i = 0; i < 7; ++i) {
            std::uint64_t code = 0;
            std::uint32_t id = 0;
            std::int32_t extra = 0;
            EXPECT_EQ(copied[i].GetFieldList()->GetField(copied[i].GetData(), 20, code), Status::Success);
            EXPECT_EQ(copied[i].GetFieldList()->GetField(copied[i].GetData(), 21, id), Status::Success);
            EXPECT_EQ(copied[i].GetFieldList()->GetField(copied[i].GetData(), 22, extra), Status::Undefined);
            EXPECT_EQ(code, 1000u + id);
        }
    }
    std::unique_ptr<ITable> empty = MakePeople();
    EXPECT_EQ(ledger->CopyRecords(empty.get(), true, 0), Status::Success);
    EXPECT_EQ(CountOf(*ledger), 0u);

    EXPECT_EQ(ledger->CopyRecords(ledger.get(), false, 0), Status::Invalid);
    EXPECT_EQ(ledger->CopyRecords(nullptr, false, 0), Status::Invalid);
    std::unique_ptr<ITable> unindexed = MakeBarePeople();
    EXPECT_EQ(unindexed->CopyRecords(source.get(), false, 0), Status::NoPrimaryIndex);
}

TEST(CopyRecords, ResetsTheTargetForEveryRecordAndRewritesMatchesWhole) {
    std::unique_ptr<ITable> source = MakePeople();
    WriteAll(*source, Sample());
    Record undefinedScore = ToRecord(*source, {8, 1008, 8, 0});
    source->GetFieldList()->ClearFieldDefined(3, undefinedScore.GetData());  // Score, field number 3
    ASSERT_EQ(source->WriteRecord(undefinedScore), Status::Success);

    // Unmanaged: a value never becomes undefined, so only a reset keeps the last Score from staying.
    const std::vector<FieldSpecification> fields = {FieldSpecification(1, "Id", FieldSpecification::UInt, 4, 0, 0),
                                                    FieldSpecification(2, "Score", FieldSpecification::SInt, 4, 4, 0),
                                                    FieldSpecification(3, "Bonus", FieldSpecification::SInt, 4, 8, 0)};
    std::unique_ptr<ITable> target(
        UnmanagedTableFactory::GetInstance().Create("Scores", kCreateFile, fields, 4, 12, kHalf, kAll));
    std::vector<IndexSpecification> indexes = {IndexSpecification(
        "ById", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty, {Field(1, 0)})};
    target->CreateIndexes(indexes);
    Record kept(target.get());
    kept.GetFieldList()->SetField(kept.GetData(), 1, std::uint32_t{1});
    kept.GetFieldList()->SetField(kept.GetData(), 3, std::int32_t{99});
    ASSERT_EQ(target->WriteRecord(kept), Status::Success);

    ASSERT_EQ(target->CopyRecords(source.get(), false, 2), Status::Success);
    const std::vector<Record> copied = StoredRecords(*target);
    ASSERT_EQ(copied.size(), 8u);
    for (const Record& record : copied) {
        std::uint32_t id = 0;
        std::int32_t score = -1, bonus = -1;
        record.GetFieldList()->GetField(record.GetData(), 1, id);
        record.GetFieldList()->GetField(record.GetData(), 2, score);
        record.GetFieldList()->GetField(record.GetData(), 3, bonus);
        EXPECT_EQ(score, id == 8 ? 0 : 5) << id;
        EXPECT_EQ(bonus, 0) << id;  // record 1 too: rewritten whole
    }
}

TEST(Clone, CopiesTheShapeIndexesAndRecords) {
    ScratchDirectory from, to;
    std::unique_ptr<ITable> table = MakeMixedPeople(from.Path());
    WriteAll(*table, Sample());
    std::unique_ptr<ITable> clone(table->Clone(to.Path(), false, true, 2));
    EXPECT_EQ(clone->GetSpecification().ToString(), table->GetSpecification().ToString());
    EXPECT_EQ(clone->GetIndexSpecificationList(), table->GetIndexSpecificationList());
    EXPECT_EQ(Take(*clone).records, Take(*table).records);
    EXPECT_NO_THROW(clone->CheckIntegrity());
    clone.reset();
    EXPECT_EQ(Take(*Open(to / "People.tab")).records, Take(*table).records);

    std::unique_ptr<ITable> inMemory(table->Clone("", false, false, 0));
    EXPECT_TRUE(inMemory->IsInMemory());
    EXPECT_EQ(CountOf(*inMemory), 0u);
}

TEST(Clone, RefusesItsOwnDirectoryAndTakesBackWhatItMade) {
    ScratchDirectory from, to;
    std::unique_ptr<ITable> table = MakeBarePeople(from.Path());
    std::vector<IndexSpecification> indexes = {IndexSpecification(
        "By-Id", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty, {Field(kId, 0)})};
    table->CreateIndexes(indexes);
    WriteAll(*table, Sample());
    const std::vector<unsigned char> before = ReadFile(from / "People.tab");
    const Thrown own = Catch([&] { delete table->Clone(from.Path() + "/", false, true, 0); });
    EXPECT_TRUE(own.isDatabase);
    EXPECT_EQ(own.code, DatabaseException::InvalidParameter);
    EXPECT_EQ(ReadFile(from / "People.tab"), before);
    EXPECT_EQ(from.Count(), 2u);

    // Table "People-By" with index "Id" holds the file that the clone's index "By-Id" needs.
    std::unique_ptr<ITable> holder = MakeManaged("People-By", to.Path());
    std::vector<IndexSpecification> holderIndexes = {IndexSpecification(
        "Id", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty, {Field(2, 0)})};
    holder->CreateIndexes(holderIndexes);
    EXPECT_TRUE(Catch([&] { delete table->Clone(to.Path(), false, true, 0); }).thrown);
    EXPECT_FALSE(File::IsFound(to / "People.tab"));
    EXPECT_EQ(to.Count(), 2u);
}

}  // namespace
}  // namespace Tavrin::Database::Testing
