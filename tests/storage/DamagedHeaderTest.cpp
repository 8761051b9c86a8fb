// Every field of a memory store's header damaged in turn, in a file that was closed in order. Open
// answers a status and never crashes or hangs. A refused file is left as it was and leaves the
// object as it was built, so that a Create on it makes the store of the constructor's settings; an
// accepted file gives a store whose records and bookkeeping work.
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "../base/ScratchDirectory.h"
#include "../base/ThrownStatus.h"
#include "storage/HeaderFields.h"
#include "tavrin/storage/MemoryDataStore.h"
#include "storage/StoreTestSupport.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;
using Tavrin::Testing::ThrownStatus;

constexpr std::uint32_t RecordSize = 12;
// The object that opens the damaged file is built for another number of entries than the file has.
constexpr std::uint32_t BuiltEntries = 4;
constexpr std::uint32_t GrowEntries = 2;

std::vector<unsigned char> RecordOf(std::uint32_t seed) { return MakeRecord(RecordSize, seed); }

// Made with 3 entries and a growth step of 2: 7 records added, ids 2 and 5 removed, so the file has 7
// entries, 5 in use and a free list of 5 then 2. Gives the seed of each record by its id.
std::map<std::uint32_t, std::uint32_t> MakeStoreFile(const std::string& path) {
    TextOwner owner;
    MemoryDataStore store(&owner, RecordSize, 3, GrowEntries);
    store.Create(path, Uuid());
    std::map<std::uint32_t, std::uint32_t> seeds;
    for (std::uint32_t seed = 0; seed < 7; ++seed) {
        std::uint32_t id = 0;
        EXPECT_EQ(store.Add(id, RecordOf(seed).data()), Status::Success);
        seeds[id] = seed;
    }
    for (const std::uint32_t id : {2u, 5u}) {
        EXPECT_EQ(store.Remove(id), Status::Success);
        seeds.erase(id);
    }
    EXPECT_EQ(store.Close(), Status::Success);
    return seeds;
}

// The records of the file are all there and nothing else; the scan ends; new records go in (the
// store grows for them) and read back; the saved file opens again.
void ExpectWorkingStore(MemoryDataStore& store, const std::map<std::uint32_t, std::uint32_t>& seeds,
                        const std::string& path) {
    const auto scan = [&store] {
        std::map<std::uint32_t, std::vector<unsigned char>> found;
        std::uint32_t id = 0;
        unsigned char* record = nullptr;
        for (StatusCode status = store.GetFirst(id, record); status == Status::Success;
             status = store.GetNext(id, record)) {
            if (found.size() > store.GetMaxEntries() || id >= store.GetMaxEntries() ||
                (!found.empty() && id <= found.rbegin()->first)) {
                ADD_FAILURE() << "the scan went wrong at id " << id;
                break;
            }
            found[id].assign(record, record + RecordSize);
        }
        return found;
    };
    std::map<std::uint32_t, std::vector<unsigned char>> expected;
    for (const auto& [id, seed] : seeds) expected[id] = RecordOf(seed);
    EXPECT_EQ(scan(), expected);
    EXPECT_EQ(store.GetCurrentEntries(), expected.size());

    for (std::uint32_t seed = 100; seed < 106; ++seed) {
        std::uint32_t id = 0;
        ASSERT_EQ(store.Add(id, RecordOf(seed).data()), Status::Success) << "seed " << seed;
        ASSERT_EQ(expected.count(id), 0u) << "id " << id << " given twice";
        expected[id] = RecordOf(seed);
    }
    for (const auto& [id, bytes] : expected) {
        std::vector<unsigned char> read(RecordSize);
        ASSERT_EQ(store.Read(id, read.data()), Status::Success) << "id " << id;
        EXPECT_EQ(read, bytes) << "id " << id;
    }
    EXPECT_EQ(scan(), expected);
    EXPECT_EQ(store.GetCurrentEntries(), expected.size());
    ASSERT_EQ(store.Close(), Status::Success);

    TextOwner owner;
    MemoryDataStore again(&owner, RecordSize, BuiltEntries, GrowEntries);
    EXPECT_EQ(again.Open(path, nullptr), Status::Success);
}

// The object that refused a file makes a new store of its constructor's settings.
void ExpectFreshStore(MemoryDataStore& store, const std::string& path) {
    EXPECT_FALSE(store.IsOpen());
    ASSERT_EQ(ThrownStatus([&] { store.Create(path, Uuid()); }), 0u);
    EXPECT_EQ(store.GetMaxEntries(), BuiltEntries);
    EXPECT_EQ(store.GetCurrentEntries(), 0u);
    for (std::uint32_t seed = 0; seed < BuiltEntries + 3; ++seed) {
        std::uint32_t id = 99;
        ASSERT_EQ(store.Add(id, RecordOf(seed).data()), Status::Success);
        EXPECT_EQ(id, seed);
    }
    for (std::uint32_t id = 0; id < BuiltEntries + 3; ++id) {
        std::vector<unsigned char> read(RecordSize);
        ASSERT_EQ(store.Read(id, read.data()), Status::Success);
        EXPECT_EQ(read, RecordOf(id));
    }
    EXPECT_EQ(store.GetMaxEntries(), BuiltEntries + 2 * GrowEntries);
    ASSERT_EQ(store.Close(), Status::Success);
    EXPECT_EQ(DecodeU32(ReadFile(path).data() + 38), BuiltEntries) << "initialEntries of the new file";
}

TEST(DamagedHeader, EveryFieldOfAMemoryStoreGivesAStatusAndLeavesTheObjectUsable) {
    ScratchDirectory directory;
    const std::string path = directory / "store";
    const std::map<std::uint32_t, std::uint32_t> seeds = MakeStoreFile(path);
    int fresh = 0;
    SweepHeaderDamage(MemoryStoreHeaderFields(), path, [&] {
        TextOwner owner;
        MemoryDataStore store(&owner, RecordSize, BuiltEntries, GrowEntries);
        const StatusCode status = store.Open(path, nullptr);
        if (status == Status::Success) {
            ExpectWorkingStore(store, seeds, path);
        } else {
            ExpectFreshStore(store, directory / ("fresh" + std::to_string(fresh++)));
        }
        return status;
    });
}

}  // namespace
}  // namespace Tavrin::Database::Testing
