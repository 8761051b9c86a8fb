// Damaged headers of a table's files. A tree index file that does not open is made again from the
// records, whatever its header says, and never sized from it; a record file made after an open is
// of the size the table was constructed with, not of the file it replaced.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "../base/ScratchDirectory.h"
#include "../base/ThrownStatus.h"
#include "WriteTestSupport.h"
#include "tavrin/base/Encoding.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;
using Tavrin::Testing::ThrownStatus;

constexpr std::size_t InitialEntries = 38;  // file offsets of header fields
constexpr std::size_t UserDataSize = 30;
constexpr std::size_t FirstEntryOffset = 55;
constexpr std::size_t EntryStride = 59;
constexpr std::size_t MaxEntries = 50;
constexpr std::size_t UserData = 71;

std::vector<IndexSpecification> ById() { return {PeopleIndexes()[kById]}; }

std::unique_ptr<ITable> OpenPeople(const ScratchDirectory& directory, std::uint32_t maxRecords = 16) {
    auto table = MakeBarePeople(directory.Path(), kCreateFile, maxRecords);
    std::vector<IndexSpecification> indexes = ById();
    table->CreateIndexes(indexes);
    return table;
}

void WritePeople(ITable& table, std::uint32_t count) {
    for (std::uint32_t id = 1; id <= count; ++id) {
        Record record = ToRecord(table, {id, 1000 + id, 0, 0});
        ASSERT_EQ(table.WriteRecord(record), Status::Success) << "id " << id;
    }
}

std::uint32_t MaxRecordsOf(ITable& table) {
    std::uint32_t maxRecords = 0;
    EXPECT_EQ(table.GetMaxRecords(maxRecords), Status::Success);
    return maxRecords;
}

TEST(DamagedFile, TreeIndexFileWithADamagedHeaderIsRebuiltFromTheRecords) {
    ScratchDirectory directory;
    const std::string tableFile = directory / "People.tab";
    const std::string indexFile = directory / "People-ById.rb.idx";
    {
        auto table = OpenPeople(directory);  // 16 records, then growth by 8 up to 40
        WritePeople(*table, 40);
    }
    const std::vector<unsigned char> records = ReadFile(tableFile);
    const std::vector<unsigned char> original = ReadFile(indexFile);
    ASSERT_EQ(DecodeU32(original.data() + InitialEntries), 16u);
    const std::uint32_t userDataSize = DecodeU32(original.data() + UserDataSize);
    const std::string_view stored = "ById";
    const auto name = std::search(original.begin() + UserData, original.end(), stored.begin(), stored.end());
    ASSERT_NE(name, original.end());
    const std::size_t nameAt = static_cast<std::size_t>(name - original.begin());
    const std::size_t rootAt = UserData + userDataSize - 8;

    struct Case {
        std::string what;
        std::vector<std::pair<std::size_t, std::uint32_t>> fields;  // 4-byte fields set to a value
        bool nameDamaged;
        bool rebuilt;
    };
    const std::vector<Case> cases{
        {"nothing", {}, false, false},
        {"initialEntries far beyond the file and the name", {{InitialEntries, 116080198}}, true, true},
        {"initialEntries far beyond the file", {{InitialEntries, 116080198}}, false, true},
        {"the name", {}, true, true},
        {"a harmless initialEntries and the name", {{InitialEntries, 1}}, true, true},
        {"maxEntries", {{MaxEntries, 116080198}}, false, true},
        {"root on the sentinel", {{rootAt, DecodeU32(original.data() + rootAt + 4)}}, false, true},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        std::vector<unsigned char> damaged = original;
        for (const auto& [offset, value] : each.fields) EncodeU32(damaged.data() + offset, value);
        if (each.nameDamaged) damaged[nameAt + 2] = 'X';
        // The record file as it was, since each open gives both files a new Uuid.
        WriteFile(tableFile, records);
        WriteFile(indexFile, damaged);
        {
            std::unique_ptr<ITable> table;
            ASSERT_EQ(ThrownStatus([&] { table = OpenPeople(directory); }), 0u);
            ASSERT_EQ(MaxRecordsOf(*table), 40u);
            ExpectIndexesMatchStore(*table);
            Record record;
            for (std::uint32_t id = 1; id <= 40; ++id) {
                ASSERT_EQ(FindById(*table, id, record), Status::Success) << "id " << id;
                EXPECT_EQ(ToPerson(record).code, 1000 + id);
            }
        }
        // A rebuilt file is made for the table's 40 records and grows once; a trusted one keeps its 16.
        const std::vector<unsigned char> after = ReadFile(indexFile);
        ASSERT_GT(after.size(), UserData);
        EXPECT_EQ(DecodeU32(after.data() + InitialEntries), each.rebuilt ? 40u : 16u);
        EXPECT_EQ(DecodeU32(after.data() + MaxEntries), 48u);
        EXPECT_EQ(after.size(),
                  17 + DecodeU32(after.data() + FirstEntryOffset) + 48 * DecodeU32(after.data() + EntryStride));
    }
}

TEST(DamagedFile, RecordFileMadeAfterAnOpenHasTheConstructorsSize) {
    ScratchDirectory directory;
    const std::string tableFile = directory / "People.tab";
    {
        auto table = OpenPeople(directory);  // 16 records, then growth by 8 up to 40
        WritePeople(*table, 40);
    }
    const std::vector<unsigned char> grown = ReadFile(tableFile);
    std::vector<unsigned char> damaged = grown;
    EncodeU32(damaged.data() + InitialEntries, 116080198);

    struct Case {
        std::string what;
        const std::vector<unsigned char>& file;
        StatusCode open;
    };
    for (const Case& each : {Case{"a sound file", grown, Status::Success},
                             Case{"initialEntries far beyond the file", damaged, Status::Invalid}}) {
        SCOPED_TRACE(each.what);
        WriteFile(tableFile, each.file);
        auto table = MakeBarePeople(directory.Path(), 0, 10);  // for 10 records, and without indexes
        ASSERT_EQ(table->OpenRecordFile(), each.open);
        if (each.open == Status::Success) {
            EXPECT_EQ(MaxRecordsOf(*table), 40u) << "the file's own size counts";
            EXPECT_EQ(CountOf(*table), 40u);
            ASSERT_EQ(table->CloseRecordFile(), Status::Success);
        }
        ASSERT_EQ(ThrownStatus([&] { table->CreateRecordFile(); }), 0u);
        EXPECT_EQ(MaxRecordsOf(*table), 10u);
        EXPECT_EQ(CountOf(*table), 0u);
        ASSERT_EQ(table->CloseRecordFile(), Status::Success);

        const std::vector<unsigned char> made = ReadFile(tableFile);
        ASSERT_GT(made.size(), UserData);
        EXPECT_EQ(DecodeU32(made.data() + InitialEntries), 10u);
        EXPECT_EQ(DecodeU32(made.data() + MaxEntries), 10u);
        EXPECT_EQ(made.size(),
                  17 + DecodeU32(made.data() + FirstEntryOffset) + 10 * DecodeU32(made.data() + EntryStride));
    }
}

}  // namespace
}  // namespace Tavrin::Database::Testing
