// What the tavrin program does with files it may not or need not write: a file that a table holds,
// a file that a crash left, a table that a load would replace, and a command line that is wrong.

#include "ToolTestSupport.h"
#include "tavrin/tables/OpenTable.h"

namespace Tavrin::Tool::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;

TEST(ToolSafety, ReadsAHeldTableWithoutWritingAndRefusesToOpenIt) {
    ScratchDirectory scratch;
    std::unique_ptr<ITable> held = MakeCustomers(scratch.Path(), 4);
    const std::string path = scratch / "Customers.tab";
    held->Sync();
    const auto before = Snapshot(scratch.Path());
    EXPECT_EQ(RunTool(scratch, "info " + path).status, 0);
    EXPECT_EQ(RunTool(scratch, "dump --text " + path).status, 0);
    const ToolResult check = RunTool(scratch, "check " + path);
    EXPECT_EQ(check.status, 2);
    EXPECT_EQ(check.err, "tavrin: " + path +
                             ": in use by another process (status 17); close the table that holds it and try again\n");
    EXPECT_EQ(Snapshot(scratch.Path()), before);

    held.reset();
    const std::string stream = scratch / "stream";
    const ToolResult dump = RunTool(scratch, "dump --messages " + path);
    WriteWholeFile(stream, dump.out);
    held.reset(OpenTable(path, true, true));
    const ToolResult load = RunTool(scratch, "load --force " + scratch.Path(), stream);
    EXPECT_EQ(load.status, 2);
    EXPECT_NE(load.err.find("in use by another process"), std::string::npos) << load.err;
    EXPECT_EQ(CountOfRecords(*held), 4u);
}

TEST(ToolSafety, LeavesAFileThatACrashLeftAsItIsWhenOnlyReadingIt) {
    ScratchDirectory scratch;
    MakeCustomers(scratch.Path(), 4).reset();
    const std::string path = scratch / "Customers.tab";
    MarkUnclean(path);
    const auto before = Snapshot(scratch.Path());
    const ToolResult info = RunTool(scratch, "info " + path);
    EXPECT_EQ(info.status, 0);
    EXPECT_NE(info.err.find(path + ": was not closed in order"), std::string::npos) << info.err;
    EXPECT_NE(info.err.find("The next open will refuse it once (status 23)"), std::string::npos) << info.err;
    EXPECT_NE(info.out.find("unclean"), std::string::npos);
    const ToolResult dump = RunTool(scratch, "dump " + path);
    EXPECT_EQ(dump.status, 0);
    EXPECT_EQ(dump.out, "# Id,City\n1,Lima\n2,Kyiv\n3,Pune\n4,Oslo\n");
    EXPECT_EQ(Snapshot(scratch.Path()), before);

    // check opens the table, as a program would: that open is refused once, and says what follows.
    const ToolResult check = RunTool(scratch, "check " + path);
    EXPECT_EQ(check.status, 2);
    EXPECT_NE(check.err.find("was not closed in order"), std::string::npos) << check.err;
    EXPECT_NE(check.err.find("the next open will open it"), std::string::npos) << check.err;
    EXPECT_EQ(RunTool(scratch, "check " + path).status, 0);
}

TEST(ToolSafety, AnswersAWrongCommandLineOrAMissingFileWithStatus2) {
    ScratchDirectory scratch;
    for (const char* command : {"info --help", "check --help", "dump --help", "load --help", "--help"}) {
        const ToolResult help = RunTool(scratch, command);
        EXPECT_EQ(help.status, 0) << command;
        EXPECT_NE(help.out.find("Usage"), std::string::npos) << command;
    }
    for (const char* command : {"", "frobnicate", "info", "dump --text --messages x.tab", "info a b"}) {
        EXPECT_EQ(RunTool(scratch, command).status, 2) << command;
    }
    const ToolResult missing = RunTool(scratch, "info " + (scratch / "None.tab"));
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.err, "tavrin: " + (scratch / "None.tab") + ": no such file or directory\n");
    WriteWholeFile(scratch / "Junk.tab", std::string(100, 'x'));
    for (const char* command : {"info ", "dump ", "check "}) {
        const ToolResult junk = RunTool(scratch, command + (scratch / "Junk.tab"));
        EXPECT_NE(junk.status, 0) << command;
        EXPECT_NE((junk.out + junk.err).find("Junk.tab"), std::string::npos) << command << junk.err;
    }
}

}  // namespace
}  // namespace Tavrin::Tool::Testing
