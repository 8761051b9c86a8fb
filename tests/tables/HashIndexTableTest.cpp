// Tables with hash indexes: a hash primary index, a unique hash index and a tree beside them, from
// writes to reopening, the silent rebuild of a hash index whose files are missing or damaged, walks
// that a hash index can't do, builds that fail without leaving files behind, and temporary hash
// indexes that hold every record.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "../base/ScratchDirectory.h"
#include "WriteTestSupport.h"
#include "tavrin/base/Encoding.h"
#include "tavrin/base/File.h"
#include "tavrin/base/FileMappedMemoryFactory.h"
#include "tavrin/indexes/HashIndex.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;

const std::uint32_t kPrimary = IndexSpecification::PrimaryUniqueProperty;
const std::uint32_t kUnique = IndexSpecification::UniqueProperty;

IndexSpecification Hash(const std::string& name, std::uint32_t properties, std::uint16_t fieldId) {
    return IndexSpecification(name, IndexSpecification::Hash, properties, {Field(fieldId, 0)});
}

// Hash primary on Id, hash unique on Code, the duplicate tree on Group and Score.
std::vector<IndexSpecification> HashPeopleIndexes() {
    return {Hash("ById", kPrimary, kId), Hash("ByCode", kUnique, kCode), PeopleIndexes()[kByGroup]};
}

std::unique_ptr<ITable> MakeHashPeople(const std::string& directory = "",
                                       std::vector<IndexSpecification> indexes = HashPeopleIndexes()) {
    std::unique_ptr<ITable> table = MakeBarePeople(directory, kCreateFile | 2);
    table->CreateIndexes(indexes);
    return table;
}

void WritePeople(ITable& table, std::uint32_t first, std::uint32_t count) {
    for (std::uint32_t id = first; id < first + count; ++id) {
        Record record =
            ToRecord(table, {id, 1000 + id, static_cast<std::int32_t>(id % 4), static_cast<std::int32_t>(id)});
        ASSERT_EQ(table.WriteRecord(record), Status::Success) << "id " << id;
    }
}

// Every index finds every stored record by the key built from it, holds no more keys than there
// are records, and passes its own checks.
void ExpectIndexesFindTheStore(ITable& table) {
    const std::vector<Record> records = StoredRecords(table);
    for (std::uint16_t number = 0; number < table.GetNumberOfIndexes(); ++number) {
        Index& index = IndexOf(table, number);
        EXPECT_EQ(index.GetCurrentRecords(), records.size()) << "index " << number;
        EXPECT_NO_THROW(index.CheckIntegrity()) << "index " << number;
        for (const Record& record : records) {
            std::uint32_t found = FieldListObject::NoRecordId;
            ASSERT_EQ(index.Find(Key(number, record), found), Status::Success) << "index " << number;
            EXPECT_EQ(found, record.GetRecordId()) << "index " << number;
        }
    }
}

std::vector<std::string> HashFilesOf(const ScratchDirectory& directory, const std::string& index) {
    return {HashIndex::GetSpecificationFileName(directory.Path(), "People", index),
            HashIndex::GetEntryFileName(directory.Path(), "People", index),
            HashIndex::GetBucketFileName(directory.Path(), "People", index)};
}

StatusCode FindByCode(ITable& table, std::uint32_t code, Record& record) {
    record = ToRecord(table, Person{0, code});
    Key key(1, record);
    return table.GetEqual(key, record);
}

TEST(HashIndexTable, WritesReadsAndRemovalsGoThroughHashIndexes) {
    ScratchDirectory directory;
    auto table = MakeHashPeople(directory.Path());
    EXPECT_EQ(table->GetPrimaryIndex(), 0);
    WritePeople(*table, 1, 60);  // past the 16 entries that the store and the indexes start with
    ExpectIndexesFindTheStore(*table);

    Record record;
    ASSERT_EQ(FindByCode(*table, 1030, record), Status::Success);
    EXPECT_EQ(ToPerson(record).id, 30u);

    // A new code for id 30 moves its key in the unique hash index; a code that another holds is refused.
    Record changed = ToRecord(*table, {30, 5000, 2, 30});
    ASSERT_EQ(table->WriteRecord(changed), Status::Success);
    EXPECT_EQ(FindByCode(*table, 1030, record), Status::NotFound);
    ASSERT_EQ(FindByCode(*table, 5000, record), Status::Success);
    Record taken = ToRecord(*table, {99, 1031, 0, 0});
    EXPECT_EQ(table->WriteRecord(taken), Status::IndexConflict);
    EXPECT_EQ(CountOf(*table), 60u);

    Key byCode(1, ToRecord(*table, Person{0, 1040}));
    ASSERT_EQ(table->RemoveRecord(byCode), Status::Success);
    EXPECT_EQ(FindById(*table, 40, record), Status::NotFound);
    ExpectIndexesFindTheStore(*table);

    // A hash index finds exact keys only: its walks answer 13.
    Key key(table.get(), 0);
    EXPECT_EQ(table->GetFirst(key, record), Status::NotAvailable);
    EXPECT_EQ(table->GetNext(key, record), Status::NotAvailable);
    EXPECT_EQ(table->GetFirstEqual(key, record, kId, 4), Status::NotAvailable);
    EXPECT_EQ(WalkIndex(*table, 2).size(), 59u) << "the tree beside them walks";
}

TEST(HashIndexTable, ClosedHashFilesAreOpenedAndOthersRebuiltFromTheRecords) {
    ScratchDirectory directory;
    const std::uint32_t marker = 0x5A5A1234;
    {
        auto table = MakeHashPeople(directory.Path());
        WritePeople(*table, 1, 30);
        Record record = ToRecord(*table, {marker, 99, 0, 0});
        ASSERT_EQ(table->WriteRecord(record), Status::Success);
    }
    ChangeStoredId(directory / "People.tab", marker);
    {
        auto table = MakeHashPeople(directory.Path());
        Record record;
        EXPECT_EQ(FindById(*table, marker + 1, record), Status::NotFound) << "opened, not rebuilt";
        ASSERT_EQ(FindById(*table, marker, record), Status::Success);
    }

    // A missing entry file, and a bucket file whose bucket count is 0.
    ASSERT_EQ(File::Remove(HashFilesOf(directory, "ById")[1]), Status::Success);
    std::vector<unsigned char> buckets = ReadFile(HashFilesOf(directory, "ByCode")[2]);
    EncodeU32(&buckets[29], 0);
    WriteFile(HashFilesOf(directory, "ByCode")[2], buckets);
    auto table = MakeHashPeople(directory.Path());
    Record record;
    EXPECT_EQ(FindById(*table, marker, record), Status::NotFound) << "rebuilt";
    ASSERT_EQ(FindById(*table, marker + 1, record), Status::Success);
    ExpectIndexesFindTheStore(*table);
}

TEST(HashIndexTable, AFailedBuildLeavesNoHashFiles) {
    ScratchDirectory directory;
    {
        auto table = MakeHashPeople(directory.Path(), {Hash("ById", kPrimary, kId)});
        WritePeople(*table, 1, 20);
        Record repeated = ToRecord(*table, {21, 1005, 0, 0});  // the code of record 5
        ASSERT_EQ(table->WriteRecord(repeated), Status::Success);
    }
    for (int attempt = 0; attempt < 2; ++attempt) {
        auto table = MakeBarePeople(directory.Path(), kCreateFile | 2);
        std::vector<IndexSpecification> indexes{Hash("ById", kPrimary, kId), Hash("ByCode", kUnique, kCode)};
        const Thrown thrown = Catch([&] { table->CreateIndexes(indexes); });
        EXPECT_TRUE(thrown.isStatus);
        EXPECT_EQ(thrown.code, Status::IndexConflict) << "a repeated key is a conflict, not status 0";
        EXPECT_EQ(thrown.function, "Tavrin::Database::Table::InitializeIndex");
        EXPECT_EQ(table->GetNumberOfIndexes(), 1u);
        for (const std::string& name : HashFilesOf(directory, "ByCode")) EXPECT_FALSE(File::IsFound(name)) << name;
    }

    // A disk that refuses the writes of a new index's files: nothing of the index stays.
    ScratchDirectory empty;
    auto table = MakeBarePeople(empty.Path(), kCreateFile | 2);
    FileMappedMemoryFactory::SetFlushHook([](const void*, std::uint32_t) { return false; });
    std::vector<IndexSpecification> indexes{Hash("ById", kPrimary, kId)};
    const Thrown thrown = Catch([&] { table->CreateIndexes(indexes); });
    FileMappedMemoryFactory::SetFlushHook(nullptr);
    EXPECT_TRUE(thrown.thrown);
    EXPECT_EQ(table->GetNumberOfIndexes(), 0u);
    EXPECT_EQ(empty.Count(), 1u) << "only the record file";
}

TEST(HashIndexTable, ATemporaryHashIndexHoldsEveryRecord) {
    ScratchDirectory directory;
    for (const bool onDisk : {false, true}) {
        auto table = MakeBarePeople(onDisk ? directory.Path() : "", kCreateFile | 2);
        std::vector<IndexSpecification> indexes{PeopleIndexes()[kById]};
        table->CreateIndexes(indexes);
        WritePeople(*table, 1, 40);
        IndexSpecification byCode = Hash("ByCode", kUnique, kCode);
        table->CreateTemporaryIndex(byCode);
        EXPECT_EQ(byCode.GetNumber(), 1);
        EXPECT_EQ(IndexOf(*table, 1).GetCurrentRecords(), 40u);
        WritePeople(*table, 41, 10);
        Record record;
        ASSERT_EQ(FindByCode(*table, 1045, record), Status::Success) << onDisk;
        EXPECT_EQ(ToPerson(record).id, 45u);
        ExpectIndexesFindTheStore(*table);
        EXPECT_EQ(File::IsFound(HashFilesOf(directory, "ByCode")[0]), onDisk);
    }
}

}  // namespace
}  // namespace Tavrin::Database::Testing
