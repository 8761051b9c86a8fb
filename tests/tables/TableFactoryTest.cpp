// The table factories: argument checks in their order, the exception chain out of a failed
// construction, the sizes handed to the table, and TableSpecification's way to a table.

#include <gtest/gtest.h>

#include <filesystem>

#include "../base/ScratchDirectory.h"
#include "TablesTestSupport.h"
#include "tavrin/schema/TableSpecification.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;

const char* const kManagedCreate = "Tavrin::Database::ManagedTableFactory::Create";
const char* const kUnmanagedCreate = "Tavrin::Database::UnmanagedTableFactory::Create";

void ExpectRefused(const std::function<void()>& create, const char* function, const std::string& message) {
    const Thrown thrown = Catch(create);
    ASSERT_TRUE(thrown.isDatabase) << message;
    EXPECT_EQ(thrown.code, DatabaseException::InvalidParameter);
    EXPECT_EQ(thrown.function, function);
    EXPECT_EQ(thrown.message, message);
    EXPECT_TRUE(thrown.chain.empty());
}

TEST(TableFactory, ArgumentChecksRunInOrderAndMakeNothing) {
    ScratchDirectory directory;
    const auto& managed = ManagedTableFactory::GetInstance();
    const auto& unmanaged = UnmanagedTableFactory::GetInstance();
    const std::vector<FieldSpecification> fields = SampleFields();
    const std::vector<FieldSpecification> none;

    // The array check stands first, and a count of 0 wins over whatever the array holds.
    ExpectRefused([&] { managed.Create("T", 1, nullptr, 2, 0, kHalf, kAll); }, kManagedCreate,
                  "invalid field list for table <T>");
    ExpectRefused([&] { unmanaged.Create("T", "", 1, fields.data(), 0, 0, 8, kHalf, kAll); }, kUnmanagedCreate,
                  "invalid field list for table <T>");
    // Then the number of records, also when the field list and the directory are bad too.
    ExpectRefused([&] { managed.Create("T", "", 1, none, 0, kHalf, kAll); }, kManagedCreate,
                  "invalid number of records <0> for table <T>");
    // Then the fields, then the directory.
    ExpectRefused([&] { unmanaged.Create("T", 1, none, 10, 8, kHalf, kAll); }, kUnmanagedCreate,
                  "empty field list for table <T>");
    ExpectRefused([&] { managed.Create("T", "", 1, fields, 10, kHalf, kAll); }, kManagedCreate,
                  "empty directory for table <T>");
    // Last the record length, the managed layout's (bitmap, 4-byte prefix, slot) or the caller's.
    constexpr std::uint32_t kMax = TableSpecification::MaxRecordLength;
    const std::vector<FieldSpecification> lob = {FieldSpecification(1, "Lob", FieldSpecification::Blob, kMax, 0, 0)};
    ExpectRefused([&] { managed.Create("T", 1, lob, 10, kHalf, kAll); }, kManagedCreate,
                  "record length <67108869> of table <T> passes the limit of <67108864> bytes");
    ExpectRefused([&] { unmanaged.Create("T", 1, fields, 10, kMax + 1, kHalf, kAll); }, kUnmanagedCreate,
                  "record length <67108865> of table <T> passes the limit of <67108864> bytes");
    EXPECT_EQ(directory.Count(), 0u);
}

TEST(TableFactory, MissingDirectoryGivesTheChainAndLeavesNoFile) {
    ScratchDirectory parent;
    const std::string missing = parent / "missing";
    for (bool isManaged : {true, false}) {
        const Thrown thrown = Catch([&] {
            if (isManaged) MakeManaged("Orders", missing);
            else MakeUnmanaged("Orders", missing);
        });
        ASSERT_TRUE(thrown.thrown);
        EXPECT_NE(thrown.code, 0u);
        const std::vector<Thrown::Link> chain = {
            {DatabaseException::CreateFile, "Tavrin::Database::Table::CreateRecordFile",
             "error creating record file for table <Orders>"},
            {DatabaseException::AllocateTable, isManaged ? kManagedCreate : kUnmanagedCreate, "<Orders>"}};
        EXPECT_EQ(thrown.chain, chain);
    }
    EXPECT_FALSE(std::filesystem::exists(missing));
    EXPECT_EQ(parent.Count(), 0u);
}

TEST(TableFactory, ConstructionFailuresCarryTheTableName) {
    ScratchDirectory directory;
    // A layout that refuses the fields: variable-length text in an unmanaged record.
    const std::vector<FieldSpecification> text = {
        FieldSpecification(1, "Note", FieldSpecification::TextString, 20, 0, 0)};
    Thrown thrown = Catch([&] { MakeUnmanaged("Notes", directory.Path(), 20, kCreateFile, text); });
    ASSERT_TRUE(thrown.isDatabase);
    EXPECT_EQ(thrown.code, DatabaseException::InvalidParameter);
    EXPECT_EQ(thrown.chain,
              (std::vector<Thrown::Link>{{DatabaseException::AllocateTable, kUnmanagedCreate, "<Notes>"}}));

    // A field that ends beyond the record length the caller gave.
    thrown = Catch([&] { MakeUnmanaged("Short", directory.Path(), 7); });
    ASSERT_TRUE(thrown.isDatabase);
    EXPECT_EQ(thrown.code, DatabaseException::InvalidParameter);

    EXPECT_EQ(directory.Count(), 0u);
}

TEST(TableFactory, SizesReachTheTableInOrder) {
    const std::vector<FieldSpecification> fields = SampleFields();
    // Unmanaged array form: maxRecords, recordLength, growRecords, cacheSize.
    std::unique_ptr<ITable> table(UnmanagedTableFactory::GetInstance().Create("U", kCreateFile, fields.data(), 2,
                                                                              40, 12, 3, kAll));
    TableSpecification specification = table->GetSpecification();
    EXPECT_FALSE(specification.IsManaged());
    EXPECT_EQ(specification.GetInitialMaximumRecords(), 40u);
    EXPECT_EQ(specification.GetRecordLength(), 12u);
    EXPECT_EQ(specification.GetGrowRecords(), 3u);
    EXPECT_EQ(specification.GetCacheSize(), kAll);

    // 0xFFFFFFFF grows by half of maxRecords, rounded down; 0 stays 0 (the store never grows).
    const auto& managed = ManagedTableFactory::GetInstance();
    for (auto [max, grow, expected] : {std::tuple{41u, kHalf, 20u}, {1u, kHalf, 0u}, {41u, 0u, 0u}}) {
        table.reset(managed.Create("M", 0, fields, max, grow, kAll));
        EXPECT_EQ(table->GetSpecification().GetGrowRecords(), expected) << max << " " << grow;
    }
}

TEST(TableFactory, SpecificationCreatesTheMatchingTable) {
    ScratchDirectory directory;
    const std::vector<FieldSpecification> fields = SampleFields();

    // A managed specification ignores the record length; without a path the table has no files.
    const TableSpecification managed("Stock", true, 0, fields, 20, 999, 5, kAll);
    std::unique_ptr<ITable> table(managed.CreateTable(""));
    EXPECT_TRUE(table->IsManaged());
    EXPECT_TRUE(table->IsInMemory());
    EXPECT_NE(table->GetRecordLength(), 999u);
    EXPECT_EQ(table->GetSpecification(), TableSpecification("Stock", true, 0, fields, 20, table->GetRecordLength(),
                                                            5, kAll));

    const TableSpecification unmanaged("Stock", kCreateFile, fields, 20, 16, 5, kAll);
    table.reset(unmanaged.CreateTable(directory.Path()));
    EXPECT_FALSE(table->IsManaged());
    EXPECT_EQ(table->GetRecordLength(), 16u);
    EXPECT_TRUE(table->IsRecordFileOpen());
    EXPECT_TRUE(File::IsFound(directory / "Stock.tab"));

    // The factory's exceptions come through unchanged.
    const TableSpecification empty("Empty", kCreateFile, {}, 20, 5, kAll);
    ExpectRefused([&] { empty.CreateTable(directory.Path()); }, kManagedCreate, "empty field list for table <Empty>");
}

}  // namespace
}  // namespace Tavrin::Database::Testing
