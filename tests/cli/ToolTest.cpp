// The tavrin program run as a process: what info says of a table, what check finds, that dump and
// load carry a table over unchanged, and that the program never writes what it only reads.

#include <regex>

#include "ToolTestSupport.h"
#include "tavrin/base/File.h"
#include "tavrin/tables/OpenTable.h"

namespace Tavrin::Tool::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;

// The output with every Uuid and every file size written as a placeholder.
std::string Normalised(const std::string& text) {
    const std::regex uuid("[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}");
    const std::regex size(" +[0-9]+ bytes  ");
    return std::regex_replace(std::regex_replace(text, uuid, "<uuid>"), size, " <size> bytes  ");
}

TEST(ToolInfo, DescribesTheTableItsFilesAndIndexes) {
    ScratchDirectory scratch;
    MakeCustomers(scratch.Path(), 4).reset();
    const std::string path = scratch / "Customers.tab";
    // The tree of the duplicates index was not closed in order: its next open rebuilds it.
    MarkUnclean(scratch / "Customers-ByCity.rb.idx");
    const ToolResult result = RunTool(scratch, "info " + path);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    const std::string expected = "Table file:      " + path + "\n" + R"(Name ......................... Customers
Type ......................... Managed
Properties ................... 1
Create record file ........... true
Create mutex ................. false
Convert ...................... false

Initial maximum records ...... 100
Grow records ................. 100
Cache size (k) ............... all
Record length ................ 30

Id     Name                      Type         MaxLength    Offset  Property
1      Id                        UInt                 4         2         0
2      City                      TextString          24         6         0
Store:           memory, the whole table mapped
Records:         4
Capacity:        100
Free entries:    96
Growth:          100 entries per step
Record size:     30 bytes
Files:
  Customers.tab <size> bytes  clean    <uuid>
Indexes:         3
Index 0 ById: opened as it is
    Number ....................... 0
    Name ......................... ById
    Type ......................... RedBlack
    Properties ................... PrimaryUnqiue
    Field id ..................... 1, Ascending
  Customers-ById.rb.idx <size> bytes  clean    <uuid>
Index 1 ByCity: rebuilt: Customers-ByCity.rb.idx was not closed in order
    Number ....................... 1
    Name ......................... ByCity
    Type ......................... RedBlack
    Properties ................... Duplicate
    Field id ..................... 2, Ascending
  Customers-ByCity.rb.idx <size> bytes  unclean  <uuid>
Index 2 IdHash: opened as it is
    Number ....................... 2
    Name ......................... IdHash
    Type ......................... Hash
    Properties ................... Unique
    Field id ..................... 1, Ascending
  Customers-IdHash.hash.idx <size> bytes  clean    <uuid>
  Customers-IdHash.hash-entry.idx <size> bytes  clean    <uuid>
  Customers-IdHash.hash-bucket.idx <size> bytes  clean    <uuid>
)";
    EXPECT_EQ(Normalised(result.out), expected);
    std::int64_t size = 0;
    ASSERT_EQ(File::GetSize(path, size), Status::Success);
    EXPECT_NE(result.out.find(" " + std::to_string(size) + " bytes  clean"), std::string::npos);
}

TEST(ToolInfo, DescribesADiskTableAndItsRecordFile) {
    ScratchDirectory scratch;
    MakeCustomers(scratch.Path(), 10, 100, 64).reset();
    const ToolResult result = RunTool(scratch, "info " + (scratch / "Customers.tab"));
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.out.find("Store:           disk, records in Customers.tab.data, cache 64 KB\n"), std::string::npos);
    EXPECT_NE(Normalised(result.out).find("  Customers.tab.data <size> bytes  -        <uuid>\n"), std::string::npos);
    EXPECT_NE(result.out.find("Records:         10\n"), std::string::npos);
}

// The damages that the store check must find in a file that a table would open and mend.
struct Damage {
    const char* name;
    void (*apply)(const std::string& path);
    const char* report;
    bool repairable;
};

constexpr std::size_t DataArea = 17;
constexpr std::size_t CurrentEntries = DataArea + 29;
constexpr std::size_t FirstEntryOffset = DataArea + 38;
constexpr std::size_t EntryStride = DataArea + 42;
constexpr std::size_t FreeHead = DataArea + 46;

std::size_t EntryFront(const std::string& path, std::uint32_t id) {
    const std::string bytes = ReadWholeFile(path);
    return DataArea + Tavrin::DecodeU32(bytes.data() + FirstEntryOffset) +
           static_cast<std::size_t>(id) * Tavrin::DecodeU32(bytes.data() + EntryStride);
}

const Damage kDamages[] = {
    {"count", [](const std::string& path) { PatchU32(path, CurrentEntries, 5); },
     "store: 4 entries are in use, the header counts 5", true},
    {"loop", [](const std::string& path) { PatchU32(path, EntryFront(path, 9) + 4, 4); },
     "store: the free list comes back to entry 4: a loop", true},
    {"head", [](const std::string& path) { PatchU32(path, FreeHead, 1); },
     "store: the free list runs into entry 1, which is in use", true},
    {"lost", [](const std::string& path) { PatchU32(path, EntryFront(path, 50) + 4, 0xFFFFFFFF); },
     "store: the free list ends at entry 50, the header says 99", true},
    {"size", [](const std::string& path) {
         std::string bytes = ReadWholeFile(path);
         WriteWholeFile(path, bytes.substr(0, bytes.size() - 3));
     },
     "bytes, its header says", false},
};

TEST(ToolCheck, PassesASoundTableReportsEachDamageOfItsStoreAndRepairsWhatItCan) {
    for (const Damage& damage : kDamages) {
        SCOPED_TRACE(damage.name);
        ScratchDirectory scratch;
        {
            std::unique_ptr<ITable> table = MakeCustomers(scratch.Path(), 6);
            // Entries 4 and 5 freed again: the free list is 5, 4, 6, 7 ... 99.
            ASSERT_EQ(RemoveCustomer(*table, 5), Status::Success);
            ASSERT_EQ(RemoveCustomer(*table, 6), Status::Success);
        }
        const std::string path = scratch / "Customers.tab";
        const ToolResult sound = RunTool(scratch, "check " + path);
        EXPECT_EQ(sound.status, 0) << sound.out << sound.err;
        EXPECT_EQ(sound.out, path + ": sound: 4 records in 100 entries, 3 indexes\n");
        damage.apply(path);
        const ToolResult damaged = RunTool(scratch, "check " + path);
        EXPECT_EQ(damaged.status, 1) << damaged.err;
        EXPECT_NE(damaged.out.find(damage.report), std::string::npos) << damaged.out;
        EXPECT_EQ(damaged.out.rfind(path + ": ", 0), 0u) << damaged.out;

        const std::string records = RunTool(scratch, "dump " + path).out;
        const auto before = Snapshot(scratch.Path());
        const ToolResult repair = RunTool(scratch, "check --repair " + path);
        if (!damage.repairable) {
            EXPECT_NE(repair.status, 0);
            EXPECT_EQ(Snapshot(scratch.Path()), before) << "a failed repair leaves the table as it was";
            continue;
        }
        EXPECT_EQ(repair.status, 0) << repair.out << repair.err;
        EXPECT_NE(repair.out.find(path + ": repaired: store rewritten, 3 indexes rebuilt\n"), std::string::npos)
            << repair.out;
        EXPECT_EQ(RunTool(scratch, "check " + path).out, sound.out);
        EXPECT_EQ(RunTool(scratch, "dump " + path).out, records);
        EXPECT_EQ(scratch.Count(), before.size() + 2) << "no work directory left behind";
    }
}

}  // namespace
}  // namespace Tavrin::Tool::Testing
