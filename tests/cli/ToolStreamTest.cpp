// tavrin dump and tavrin load: a table carried over through the message stream comes back with the
// same records and indexes, and a bad stream is refused without harm.

#include <filesystem>

#include "ToolTestSupport.h"
#include "tavrin/base/MessageBuilder.h"
#include "tavrin/schema/TableSpecification.h"
#include "tavrin/tables/OpenTable.h"

namespace Tavrin::Tool::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;

// Dumps the table of `path` as messages into the file `stream`.
ToolResult DumpTo(const ScratchDirectory& scratch, const std::string& path, const std::string& stream) {
    ToolResult result = RunTool(scratch, "dump --messages " + path);
    WriteWholeFile(stream, result.out);
    return result;
}

void ExpectIndexesWork(const std::string& path, std::uint32_t records) {
    std::unique_ptr<ITable> table(OpenTable(path, true, true));
    ASSERT_EQ(table->GetNumberOfIndexes(), 3u);
    EXPECT_EQ(CountOfRecords(*table), records);
    Record record(table.get());
    Key byId(table.get(), 0);
    byId.GetFieldList()->SetField(byId.GetData(), IdField, std::uint32_t{7});
    EXPECT_EQ(table->GetEqual(byId, record), Status::Success);
    Key byHash(table.get(), 2);
    byHash.GetFieldList()->SetField(byHash.GetData(), IdField, std::uint32_t{8});
    EXPECT_EQ(table->GetEqual(byHash, record), Status::Success);
    std::uint32_t walked = 0;
    Key byCity(table.get(), 1);
    for (auto status = table->GetFirst(byCity, record); status == Status::Success;
         status = table->GetNext(byCity, record)) {
        ++walked;
    }
    EXPECT_EQ(walked, records);
}

TEST(ToolStream, DumpLoadAndDumpAgainGiveTheSameStream) {
    for (const std::uint32_t cacheSize : {0xFFFFFFFFu, 16u}) {
        SCOPED_TRACE(cacheSize);
        ScratchDirectory scratch;
        const std::string from = scratch / "from";
        const std::string to = scratch / "to";
        std::filesystem::create_directories(from);
        std::filesystem::create_directories(to);
        {
            // 2500 records in three batches, with holes where records were removed.
            std::unique_ptr<ITable> table = MakeCustomers(from, 2510, 1000, cacheSize);
            for (std::uint32_t id = 1; id <= 10; ++id) ASSERT_EQ(RemoveCustomer(*table, id * 3), Status::Success);
        }
        const std::string first = scratch / "first";
        ASSERT_EQ(DumpTo(scratch, from + "/Customers.tab", first).status, 0);
        const ToolResult load = RunTool(scratch, "load " + to, first);
        ASSERT_EQ(load.status, 0) << load.err;
        EXPECT_EQ(load.out, to + "/Customers.tab: 2500 records, 3 indexes\n");
        const std::string second = scratch / "second";
        ASSERT_EQ(DumpTo(scratch, to + "/Customers.tab", second).status, 0);
        EXPECT_EQ(ReadWholeFile(second), ReadWholeFile(first));
        EXPECT_EQ(RunTool(scratch, "dump " + to + "/Customers.tab").out,
                  RunTool(scratch, "dump " + from + "/Customers.tab").out);
        ExpectIndexesWork(to + "/Customers.tab", 2500);
    }
}

TEST(ToolStream, LoadReplacesATableOnlyWithForce) {
    ScratchDirectory scratch;
    MakeCustomers(scratch.Path(), 20).reset();
    const std::string path = scratch / "Customers.tab";
    const std::string stream = scratch / "stream";
    ASSERT_EQ(DumpTo(scratch, path, stream).status, 0);
    const auto before = Snapshot(scratch.Path());
    const ToolResult refused = RunTool(scratch, "load " + scratch.Path(), stream);
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.err, "tavrin: " + path + ": a table of this name is there already; give --force to replace it\n");
    EXPECT_EQ(Snapshot(scratch.Path()), before);
    const ToolResult forced = RunTool(scratch, "load --force " + scratch.Path(), stream);
    EXPECT_EQ(forced.status, 0) << forced.err;
    ExpectIndexesWork(path, 20);
}

TEST(ToolStream, RefusesAStreamThatIsDamagedOrCutShort) {
    ScratchDirectory scratch;
    const std::string source = scratch / "source";
    std::filesystem::create_directories(source);
    MakeCustomers(source, 1500).reset();
    const std::string stream = scratch / "stream";
    ASSERT_EQ(DumpTo(scratch, source + "/Customers.tab", stream).status, 0);
    const std::string bytes = ReadWholeFile(stream);
    std::string lying = bytes;
    Tavrin::EncodeU32(lying.data() + 9, 0xFFFFFFF0u);  // the table frame's length
    std::string badRecords = bytes;  // the first record frame claims more records than it holds
    const std::size_t recordFrame = 8 + 5 + Tavrin::DecodeU32(bytes.data() + 9);
    Tavrin::EncodeU32(badRecords.data() + recordFrame + 5, 5000);
    const std::string cases[] = {"", "not a stream at all", bytes.substr(0, 8), bytes.substr(0, bytes.size() / 2),
                                 bytes.substr(0, bytes.size() - 5), lying, badRecords};
    for (const std::string& damaged : cases) {
        const std::string target = scratch / "target";
        std::filesystem::remove_all(target);
        std::filesystem::create_directories(target);
        WriteWholeFile(stream, damaged);
        const ToolResult load = RunTool(scratch, "load " + target, stream);
        EXPECT_EQ(load.status, 2) << damaged.size();
        EXPECT_EQ(load.err.rfind("tavrin: ", 0), 0u) << load.err;
        EXPECT_TRUE(std::filesystem::is_empty(target)) << "a failed load leaves nothing behind";
    }
}

TEST(ToolStream, RefusesATableWhoseNameWouldPutItsFilesElsewhere) {
    ScratchDirectory scratch;
    std::filesystem::create_directories(scratch / "target");
    MessageBuilder builder;
    const TableSpecification escaping("../Escape", 1, CustomerFields(), 10, 10, 0xFFFFFFFF);
    ASSERT_EQ(escaping.Serialize(builder, TableSpecification::CurrentVersion), Status::Success);
    ASSERT_EQ(builder.AppendUInt32(0), Status::Success);
    std::string stream = "TAVRDUMP";
    const std::string frames[] = {std::string(1, '\1'), std::string(1, '\3')};
    for (const std::string& kind : frames) {
        const std::uint32_t length = kind[0] == 1 ? builder.GetLength() : 0;
        char size[4];
        Tavrin::EncodeU32(size, length);
        stream += kind + std::string(size, 4) + std::string(reinterpret_cast<const char*>(builder.GetBuffer()), length);
    }
    WriteWholeFile(scratch / "stream", stream);
    const ToolResult load = RunTool(scratch, "load " + (scratch / "target"), scratch / "stream");
    EXPECT_EQ(load.status, 2);
    EXPECT_NE(load.err.find("can't name a file"), std::string::npos) << load.err;
    EXPECT_FALSE(File::IsFound(scratch / "Escape.tab"));
}

}  // namespace
}  // namespace Tavrin::Tool::Testing
