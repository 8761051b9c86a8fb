// What the files of a table survive: a second opener of the same directory, in this process or
// another, and a kill at any moment of a record file's creation. Also Sync.

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <random>
#include <thread>
#include <string>
#include <vector>

#include "../base/ChildProcess.h"
#include "../base/ScratchDirectory.h"
#include "WriteTestSupport.h"
#include "tavrin/base/FileMappedMemoryFactory.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::RunInChild;
using Tavrin::Testing::ScratchDirectory;

const char* const kPeopleFiles[] = {"People.tab", "People-ById.rb.idx", "People-ByCode.rb.idx",
                                    "People-ByGroup.rb.idx"};

std::vector<Person> SomePeople(std::uint32_t first, std::uint32_t count) {
    std::vector<Person> people;
    for (std::uint32_t id = first; id < first + count; ++id) people.push_back({id, id * 7, static_cast<std::int32_t>(id % 3)});
    return people;
}

// The status code that a construction of the People table with its indexes threw; 0 if none.
std::uint32_t RefusalOf(const std::string& directory) {
    const Thrown thrown = Catch([&] { MakePeople(directory); });
    return thrown.thrown ? thrown.code : 0;
}

TEST(FileSafety, ASecondOpenerIsRefusedWith17AndTheFirstLosesNothing) {
    ScratchDirectory directory;
    std::unique_ptr<ITable> first = MakePeople(directory.Path());
    WriteAll(*first, SomePeople(1, 20));

    // Twice each, in this process and in another: a refused try must leave nothing that lets the
    // next one in or that harms the holder.
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_EQ(RefusalOf(directory.Path()), Status::AlreadyOpen);
        EXPECT_EQ(RunInChild([&] { return static_cast<int>(RefusalOf(directory.Path())); }), Status::AlreadyOpen);
    }
    EXPECT_EQ(directory.Count(), std::size(kPeopleFiles));  // no part file, nothing removed

    WriteAll(*first, SomePeople(21, 20));
    ExpectIndexesMatchStore(*first);
    first.reset();
    for (const char* name : kPeopleFiles) EXPECT_EQ(ReadFile(directory / name)[0], 1) << name;

    const std::vector<unsigned char> treeUuid = UuidOf(directory / "People-ById.rb.idx");
    std::unique_ptr<ITable> second = MakePeople(directory.Path());
    EXPECT_EQ(CountOf(*second), 40u);
    ExpectIndexesMatchStore(*second);
    // The index files were opened as they stood, not rebuilt: CreateIndexes then gives every file a
    // new Uuid, and the rebuild of a refused file would have made a new file of the same content.
    EXPECT_NE(UuidOf(directory / "People-ById.rb.idx"), treeUuid);
}

// Runs the construction of a table of `maxRecords` records in `directory` in a child and kills it
// after `delay`. True when the child was killed before its construction returned.
bool KillDuringCreation(const std::string& directory, std::uint32_t maxRecords, std::chrono::microseconds delay) {
    int pipe[2];
    if (::pipe(pipe) != 0) return false;
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(pipe[0]);
        const char start = 's';
        if (::write(pipe[1], &start, 1) != 1) ::_exit(2);
        MakeBarePeople(directory, kCreateFile, maxRecords).release();
        const char done = 'd';
        if (::write(pipe[1], &done, 1) != 1) ::_exit(2);
        ::pause();
        ::_exit(0);
    }
    ::close(pipe[1]);
    char byte = 0;
    if (child > 0 && ::read(pipe[0], &byte, 1) == 1) std::this_thread::sleep_for(delay);
    if (child > 0) ::kill(child, SIGKILL);
    const bool finished = ::read(pipe[0], &byte, 1) == 1;
    ::close(pipe[0]);
    int status = 0;
    if (child > 0) ::waitpid(child, &status, 0);
    return !finished;
}

// The next construction opens or creates the table; a record file that was complete when the kill
// came is, like any file of a killed opener, refused once with 23 first.
void ExpectTheDirectoryOpens(const std::string& directory, std::uint32_t maxRecords, bool killedInCreation) {
    std::unique_ptr<ITable> table;
    Thrown thrown = Catch([&] { table = MakeBarePeople(directory, kCreateFile, maxRecords); });
    if (thrown.thrown) {
        EXPECT_EQ(thrown.code, Status::Invalid);
        thrown = Catch([&] { table = MakeBarePeople(directory, kCreateFile, maxRecords); });
    }
    ASSERT_FALSE(thrown.thrown) << "code " << thrown.code << " " << thrown.function;
    // A part file of a killed creation is never taken for the record file, and the next creation
    // removes it. (A file that opened has no part file beside it: that creation ended.)
    const auto files = std::distance(std::filesystem::directory_iterator(directory), std::filesystem::directory_iterator());
    EXPECT_EQ(files, 1) << (killedInCreation ? "killed in creation" : "killed after creation");
    EXPECT_EQ(CountOf(*table), 0u);
    std::vector<IndexSpecification> indexes = PeopleIndexes();
    table->CreateIndexes(indexes);
    WriteAll(*table, SomePeople(1, 3));
    EXPECT_EQ(CountOf(*table), 3u);
}

int flushesBeforeDeath = -1;

bool DieAtFlush(const void*, std::uint32_t) {
    if (flushesBeforeDeath-- == 0) ::_exit(0);
    return true;
}

TEST(FileSafety, AKillAtAnyMomentOfARecordFileCreationLeavesADirectoryThatOpens) {
    ScratchDirectory scratch;
    constexpr std::uint32_t maxRecords = 50000;  // a creation long enough to be hit at every step
    const auto began = std::chrono::steady_clock::now();
    MakeBarePeople(scratch.Path(), kCreateFile, maxRecords);
    const auto took = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - began);

    // At each write-back of the creation in turn: the part file's header, the whole file before
    // its rename, the clean flag after it.
    for (int flush = 0; flush < 3; ++flush) {
        const std::string directory = scratch / ("flush" + std::to_string(flush));
        std::filesystem::create_directory(directory);
        EXPECT_EQ(RunInChild([&] {
                      flushesBeforeDeath = flush;
                      FileMappedMemoryFactory::SetFlushHook(&DieAtFlush);
                      MakeBarePeople(directory, kCreateFile, maxRecords).release();
                      return 1;
                  }),
                  0);
        ExpectTheDirectoryOpens(directory, maxRecords, true);
    }

    // At random moments, some of them after the creation.
    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<std::int64_t> delay(0, took.count() * 3 / 2);
    int killedInCreation = 0;
    for (int run = 0; run < 100; ++run) {
        const std::string directory = scratch / std::to_string(run);
        std::filesystem::create_directory(directory);
        const bool inCreation = KillDuringCreation(directory, maxRecords, std::chrono::microseconds(delay(random)));
        killedInCreation += inCreation ? 1 : 0;
        ExpectTheDirectoryOpens(directory, maxRecords, inCreation);
        std::filesystem::remove_all(directory);
    }
    EXPECT_GT(killedInCreation, 10);
}

bool failFlush = false;
std::vector<std::uint32_t> flushedSizes;

bool WatchFlush(const void*, std::uint32_t size) {
    flushedSizes.push_back(size);
    return !failFlush;
}

TEST(FileSafety, SyncWritesEveryFileOfTheTableThrough) {
    ScratchDirectory directory;
    std::unique_ptr<ITable> table = MakePeople(directory.Path());
    WriteAll(*table, SomePeople(1, 10));
    FileMappedMemoryFactory::SetFlushHook(&WatchFlush);
    flushedSizes.clear();
    EXPECT_EQ(table->Sync(), Status::Success);
    std::vector<std::uint32_t> fileSizes;
    for (const char* name : kPeopleFiles) fileSizes.push_back(static_cast<std::uint32_t>(ReadFile(directory / name).size()));
    EXPECT_EQ(flushedSizes, fileSizes);

    failFlush = true;
    EXPECT_NE(table->Sync(), Status::Success);
    failFlush = false;
    FileMappedMemoryFactory::SetFlushHook(nullptr);

    EXPECT_EQ(MakePeople()->Sync(), Status::Success);  // in memory: nothing to write
    EXPECT_EQ(MakeBarePeople(directory / "closed", 0)->Sync(), Status::NotOpen);
}

}  // namespace
}  // namespace Tavrin::Database::Testing
