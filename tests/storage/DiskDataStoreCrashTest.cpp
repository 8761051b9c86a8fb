// A disk store whose process dies: what the record file never received is not served, and what it
// did receive is kept in its last written version.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "base/ChildProcess.h"
#include "base/ScratchDirectory.h"
#include "tavrin/base/Encoding.h"
#include "tavrin/storage/DiskDataStore.h"
#include "storage/StoreTestSupport.h"

namespace Tavrin::Database {
namespace {

using Tavrin::Testing::ScratchDirectory;
using Testing::ReadFile;

constexpr std::uint32_t RecordSize = 16;

// A record that carries its own check: its seed and bytes derived from it.
std::vector<unsigned char> CheckedRecord(std::uint32_t seed) {
    std::vector<unsigned char> record(RecordSize);
    EncodeU32(record.data(), seed);
    for (std::uint32_t i = 4; i < RecordSize; ++i) record[i] = static_cast<unsigned char>(seed * 13 + i + 1);
    return record;
}

bool IsIntact(const unsigned char* record) {
    return std::memcmp(record, CheckedRecord(DecodeU32(record)).data(), RecordSize) == 0;
}

// A completed Sync bounds the loss: adds after it vanish, updates after it fall back to the version
// it wrote, removals after it stay done (they cost no write).
TEST(DiskDataStoreCrash, WritesStillInTheCacheAreAllThatAKillLoses) {
    ScratchDirectory directory;
    const std::string path = directory / "t";
    const int code = Tavrin::Testing::RunInChild([&] {
        DiskDataStore* store = new DiskDataStore(nullptr, RecordSize, 8, 8, 4);
        store->Create(path, Uuid());
        std::uint32_t id = 0;
        for (std::uint32_t seed = 0; seed < 20; ++seed) store->Add(id, CheckedRecord(seed).data());
        if (store->Sync() != Status::Success) return 1;
        for (std::uint32_t seed = 20; seed < 30; ++seed) store->Add(id, CheckedRecord(seed).data());
        store->Update(3, CheckedRecord(103).data());
        store->Remove(5);
        Tavrin::Testing::DieWithoutCleanup();
    });
    ASSERT_EQ(code, 0);
    DiskDataStore store(nullptr, RecordSize, 8, 8, 4);
    EXPECT_EQ(store.Open(path, nullptr), Status::Invalid);  // left open by a dead process: once
    ASSERT_EQ(store.Open(path, nullptr), Status::Success);
    std::vector<std::uint32_t> seeds;
    std::uint32_t id = 0;
    unsigned char* record = nullptr;
    for (StatusCode status = store.GetFirst(id, record); status == Status::Success; status = store.GetNext(id, record)) {
        EXPECT_EQ(DecodeU32(record), id);
        seeds.push_back(DecodeU32(record));
    }
    std::vector<std::uint32_t> expected;
    for (std::uint32_t seed = 0; seed < 20; ++seed) {
        if (seed != 5) expected.push_back(seed);
    }
    EXPECT_EQ(seeds, expected);
    EXPECT_EQ(store.GetCurrentEntries(), 19u);
    // The freed entries are taken again like any free entry.
    std::set<std::uint32_t> added;
    for (std::uint32_t seed = 0; seed < 11; ++seed) {
        ASSERT_EQ(store.Add(id, CheckedRecord(200 + seed).data()), Status::Success);
        added.insert(id);
    }
    EXPECT_EQ(added.size(), 11u);
    EXPECT_EQ(added.count(3), 0u);
}

// What the child logged before (and, for an add, after) each operation.
struct Logged {
    std::uint32_t kind;  // 0 add begun, 1 add done, 2 update begun
    std::uint32_t id;
    std::uint32_t seed;
};

// The seeds that entry `id` may hold: those written to it since its last completed add (the add's
// own included), and that of an add the kill interrupted, whose id the log does not know.
std::set<std::uint32_t> AllowedSeeds(const std::vector<Logged>& log, std::uint32_t id) {
    std::set<std::uint32_t> allowed;
    for (const Logged& entry : log) {
        if (entry.kind == 1 && entry.id == id) allowed = {entry.seed};
        if (entry.kind == 2 && entry.id == id) allowed.insert(entry.seed);
    }
    if (!log.empty() && log.back().kind == 0) allowed.insert(log.back().seed);
    return allowed;
}

// The child's endless work: adds, updates and removals through a cache much smaller than the store,
// so that records leave it all the time. Each step is logged before it runs.
[[noreturn]] void Work(const std::string& path, int logDescriptor, int readyDescriptor, unsigned seed) {
    DiskDataStore* store = new DiskDataStore(nullptr, RecordSize, 32, 32, 1);
    store->Create(path, Uuid());
    if (::write(readyDescriptor, "r", 1) != 1) ::_exit(1);
    std::mt19937 steps(seed);
    std::vector<std::uint32_t> ids;
    auto log = [&](std::uint32_t kind, std::uint32_t id, std::uint32_t value) {
        const Logged entry{kind, id, value};
        if (::write(logDescriptor, &entry, sizeof entry) != sizeof entry) ::_exit(2);
    };
    for (std::uint32_t next = 1;; ++next) {
        const std::uint32_t choice = steps() % 10;
        std::uint32_t id = 0;
        if (choice < 4 || ids.empty()) {
            log(0, 0, next);
            if (store->Add(id, CheckedRecord(next).data()) == Status::Success) {
                ids.push_back(id);
                log(1, id, next);
            }
        } else if (choice < 8) {
            id = ids[steps() % ids.size()];
            log(2, id, next);
            store->Update(id, CheckedRecord(next).data());
        } else {
            const std::size_t at = steps() % ids.size();
            store->Remove(ids[at]);
            ids.erase(ids.begin() + static_cast<std::ptrdiff_t>(at));
        }
        if (ids.size() > 3000) store->Sync();
    }
}

std::vector<Logged> ReadLog(const std::string& path) {
    const auto bytes = ReadFile(path);
    std::vector<Logged> log(bytes.size() / sizeof(Logged));
    std::memcpy(log.data(), bytes.data(), log.size() * sizeof(Logged));
    return log;
}

TEST(DiskDataStoreCrash, KillAtAnyMomentServesOnlyWrittenVersions) {
    ScratchDirectory directory;
    std::mt19937 random(777);
    for (int round = 0; round < 8; ++round) {
        const std::string path = directory / ("t" + std::to_string(round));
        const std::string logPath = path + ".log";
        File logFile;
        ASSERT_EQ(logFile.Create(logPath, File::WriteAccess, 0), Status::Success);
        int ready[2];
        ASSERT_EQ(::pipe(ready), 0);
        const pid_t child = ::fork();
        if (child == 0) Work(path, logFile.GetDescriptor(), ready[1], static_cast<unsigned>(round));
        ASSERT_GT(child, 0);
        char byte = 0;
        ASSERT_EQ(::read(ready[0], &byte, 1), 1);
        ::close(ready[0]);
        ::close(ready[1]);
        ::usleep(5000 + random() % 40000);
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        logFile.Close();

        const std::vector<Logged> log = ReadLog(logPath);
        DiskDataStore store(nullptr, RecordSize, 32, 32, 1);
        EXPECT_EQ(store.Open(path, nullptr), Status::Invalid);
        ASSERT_EQ(store.Open(path, nullptr), Status::Success) << "round " << round;
        std::uint32_t id = 0;
        unsigned char* record = nullptr;
        std::uint32_t used = 0;
        for (StatusCode found = store.GetFirst(id, record); found == Status::Success; found = store.GetNext(id, record)) {
            ++used;
            ASSERT_TRUE(IsIntact(record)) << "round " << round << " id " << id;
            EXPECT_EQ(AllowedSeeds(log, id).count(DecodeU32(record)), 1u)
                << "round " << round << " id " << id << " seed " << DecodeU32(record);
        }
        EXPECT_EQ(used, store.GetCurrentEntries());
        const auto more = CheckedRecord(0);
        for (int i = 0; i < 100; ++i) ASSERT_EQ(store.Add(id, more.data()), Status::Success);
        EXPECT_EQ(store.Close(), Status::Success);
    }
}

}  // namespace
}  // namespace Tavrin::Database
