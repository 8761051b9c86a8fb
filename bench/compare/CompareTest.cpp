// Checks of the comparison harness: the workload is the same on every run, its byte forms keep
// order and fields apart, every store of this build passes W1 on a few thousand records, and the
// phase checks catch a store that loses, misorders or damages records.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <numeric>
#include <string>
#include <unistd.h>

#include "Measure.h"
#include "StdStores.h"
#include "StoreRegistry.h"
#include "tavrin/indexes/HashIndex.h"

namespace Tavrin::Compare {
namespace {

TEST(KeyOrder, EveryPhaseIsANewPermutationAndRunsRepeat) {
    KeyOrder first(1000), second(1000);
    std::vector<std::uint64_t> previous;
    for (int phase = 0; phase < 4; ++phase) {
        const std::vector<std::uint64_t> keys = first.Next();
        EXPECT_EQ(keys, second.Next());
        std::vector<std::uint64_t> sorted = keys;
        std::sort(sorted.begin(), sorted.end());
        std::vector<std::uint64_t> all(1000);
        std::iota(all.begin(), all.end(), 0);
        EXPECT_EQ(sorted, all);
        EXPECT_NE(keys, previous);
        previous = keys;
    }
}

// Published results are comparable only while the orders stay the same: these are the first
// shuffles of ten keys by mt19937_64(42) with `rng() % i`.
TEST(KeyOrder, OrdersArePinned) {
    KeyOrder order(10);
    EXPECT_EQ(order.Next(), (std::vector<std::uint64_t>{1, 7, 9, 0, 3, 8, 4, 2, 5, 6}));
    EXPECT_EQ(order.Next(), (std::vector<std::uint64_t>{7, 9, 5, 1, 8, 3, 0, 4, 6, 2}));
}

TEST(Workload, ValueBytesRoundTripAndTheCounterStandsAlone) {
    Value value = ValueOf(0xFEDCBA9876543210ull);
    value.counter = 0xFFFFFFFEu;
    value.number = INT64_MIN + 1;
    ValueBytes bytes;
    EncodeValue(value, bytes.data());
    EncodeCounter(bytes.data(), DecodeCounter(bytes.data()) + 1);

    Value back;
    DecodeValue(bytes.data(), back);
    EXPECT_EQ(back.counter, 0xFFFFFFFFu);
    EXPECT_EQ(back.number, INT64_MIN + 1);
    EXPECT_EQ(DecodeNumber(bytes.data()), INT64_MIN + 1);
    EXPECT_EQ(back.text, value.text);
    EXPECT_EQ(std::string(back.text.data(), 23), "record fedcba9876543210");
    EXPECT_EQ(back.text.back(), '.');
}

TEST(Workload, BigEndianKeysSortAsNumbers) {
    const std::uint64_t keys[] = {0, 1, 255, 256, 65535, 65536, 0xFFFFFFFFull, 0x100000000ull, ~0ull};
    for (std::size_t i = 0; i < std::size(keys); ++i) {
        EXPECT_EQ(DecodeKey(EncodeKey(keys[i]).data()), keys[i]);
        if (i == 0) continue;
        const KeyBytes lower = EncodeKey(keys[i - 1]), higher = EncodeKey(keys[i]);
        EXPECT_LT(std::memcmp(lower.data(), higher.data(), KeySize), 0) << keys[i];
    }
}

// Runs W1 on a fresh folder of its own, removed afterwards.
class StoreRun : public ::testing::Test {
protected:
    void SetUp() override {
        directory_ = std::filesystem::temp_directory_path() /
                     ("tavrin-compare-test-" + std::to_string(::getpid()) + "-" +
                      ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(directory_);
        std::filesystem::create_directories(directory_);
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    std::string Directory() const { return directory_.string(); }
    bool DirectoryIsEmpty() const { return std::filesystem::is_empty(directory_); }

private:
    std::filesystem::path directory_;
};

TEST_F(StoreRun, EveryStorePassesTheWorkload) {
    const std::vector<StoreEntry> stores = AllStores();
    ASSERT_NE(FindStore(stores, "tavrin"), nullptr);
    ASSERT_NE(FindStore(stores, "std-map"), nullptr);
    ASSERT_NE(FindStore(stores, "tavrin-hash"), nullptr);
    for (const StoreEntry& store : stores) {
        SCOPED_TRACE(store.name);
        RunResult result;
        ASSERT_NO_THROW(result = store.run(3000, Directory()));
        // Our tables also time the lookup of 64 keys at once (get64).
        ASSERT_EQ(result.phases.size(), store.name.rfind("tavrin", 0) == 0 ? 6u : 5u);
        for (const PhaseTime& time : result.phases) EXPECT_GT(time.nsPerOp, 0);
        EXPECT_GT(result.rssBytes, 0);
        EXPECT_GE(result.rssBytes, result.storeRssBytes);
        std::filesystem::remove_all(Directory());
        std::filesystem::create_directories(Directory());
    }
}

TEST_F(StoreRun, OurTableKeepsItsFilesInTheDirectoryOnlyWhenGivenOne) {
    const std::vector<StoreEntry> stores = AllStores();
    // Files this process holds already (a test runner's log that it inherited) count in every run.
    const double inherited = static_cast<double>(OpenFileBytes());
    const RunResult temporary = FindStore(stores, "tavrin")->run(2000, Directory());
    EXPECT_TRUE(DirectoryIsEmpty());
    // A temporary table lies in memory only: it holds no file bytes.
    EXPECT_LT(temporary.fileBytes - inherited, 2000 * 64.0);

    const RunResult inDirectory = FindStore(stores, "tavrin-unmanaged-dir")->run(2000, Directory());
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(Directory()) / "W1.tab"));
    EXPECT_GT(inDirectory.fileBytes, 2000 * 64.0);
    // A record of 64 bytes, a node of 20 bytes and a key of at least 8.
    EXPECT_GE(inDirectory.modelBytesPerRecord, 92.0);
}

TEST_F(StoreRun, HashStoresKeepTheirIndexFilesInTheDirectoryAndCountTheBuckets) {
    const std::vector<StoreEntry> stores = AllStores();
    ASSERT_NE(FindStore(stores, "tavrin-hash"), nullptr);
    FindStore(stores, "tavrin-hash-dir")->run(2000, Directory());
    EXPECT_TRUE(std::filesystem::exists(Database::HashIndex::GetEntryFileName(Directory(), "W1", "ByKey")));
    EXPECT_TRUE(std::filesystem::exists(Database::HashIndex::GetBucketFileName(Directory(), "W1", "ByKey")));

    const RunResult unmanaged = FindStore(stores, "tavrin-hash-unmanaged")->run(2000, Directory());
    // A record of 64 bytes, an entry of 20 bytes and a key of at least 8, and 1024 buckets of 8 bytes.
    EXPECT_GE(unmanaged.modelBytesPerRecord, 92.0 + 8.0 * 1024 / 2000);
}

// A std::map store with one fault, to show that the phase checks catch it.
enum class Fault { WrongNumber, LostRecord, Unordered, StaleCounter, RemoveKeepsRecord, LostInsert };

template <Fault F>
class FaultyStore : public StdMapStore {
public:
    using StdMapStore::StdMapStore;

    void Insert(std::uint64_t key, const Value& value) {
        if (F != Fault::LostInsert || key != 9) StdMapStore::Insert(key, value);
    }
    bool Get(std::uint64_t key, Value& value) {
        const bool found = StdMapStore::Get(key, value);
        if (F == Fault::WrongNumber && key == 17) ++value.number;
        return found;
    }
    bool Update(std::uint64_t key) { return F == Fault::StaleCounter && key == 5 ? true : StdMapStore::Update(key); }
    bool Remove(std::uint64_t key) { return F == Fault::RemoveKeepsRecord && key == 3 ? true : StdMapStore::Remove(key); }
    template <class Visit>
    void Scan(Visit&& visit) {
        std::uint64_t seen = 0;
        StdMapStore::Scan([&](std::uint64_t key, std::uint32_t counter, std::int64_t number) {
            const bool last = ++seen == Count();
            if (F == Fault::LostRecord && last) return;
            // Swaps the last two keys: a walk that is not in key order.
            if (F == Fault::Unordered && seen + 1 == Count()) return (void)(pending_ = {key, counter, number});
            visit(key, counter, number);
            if (F == Fault::Unordered && last) visit(pending_.key, pending_.counter, pending_.number);
        });
    }

private:
    struct Pending {
        std::uint64_t key = 0;
        std::uint32_t counter = 0;
        std::int64_t number = 0;
    } pending_;
};

TEST(Phases, ChecksCatchFaultyStores) {
    EXPECT_NO_THROW(RunW1<StdMapStore>(100));
    EXPECT_THROW(RunW1<FaultyStore<Fault::WrongNumber>>(100), CompareError);
    EXPECT_THROW(RunW1<FaultyStore<Fault::LostRecord>>(100), CompareError);
    EXPECT_THROW(RunW1<FaultyStore<Fault::Unordered>>(100), CompareError);
    EXPECT_THROW(RunW1<FaultyStore<Fault::StaleCounter>>(100), CompareError);
    EXPECT_THROW(RunW1<FaultyStore<Fault::RemoveKeepsRecord>>(100), CompareError);
    EXPECT_THROW(RunW1<FaultyStore<Fault::LostInsert>>(100), CompareError);
}

// A hash store walks in its own order: only count and sums are checked.
class UnorderedWalkStore : public FaultyStore<Fault::Unordered> {
public:
    static constexpr bool Ordered = false;
    using FaultyStore<Fault::Unordered>::FaultyStore;
};

TEST(Phases, StoresWithoutKeyOrderAreNotHeldToIt) { EXPECT_NO_THROW(RunW1<UnorderedWalkStore>(100)); }

TEST(Phases, ProfiledPhaseMustBeAPhase) {
    EXPECT_TRUE(SetProfiledPhase("scan"));
    EXPECT_FALSE(SetProfiledPhase("walk"));
    EXPECT_FALSE(SetProfiledPhase(""));
    // Outside valgrind the profiled phase runs as any other.
    EXPECT_NO_THROW(RunW1<StdMapStore>(50));
}

TEST_F(StoreRun, OpenFilesCountOnceAndUnlinkedOnesStillCount) {
    const std::uint64_t before = OpenFileBytes();
    const std::string path = Directory() + "/measured";
    std::FILE* first = std::fopen(path.c_str(), "w+");
    ASSERT_NE(first, nullptr);
    std::vector<char> bytes(12345, 'x');
    ASSERT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), first), bytes.size());
    std::fflush(first);
    std::FILE* second = std::fopen(path.c_str(), "r");
    ASSERT_NE(second, nullptr);
    std::filesystem::remove(path);
    EXPECT_EQ(OpenFileBytes(), before + bytes.size());
    std::fclose(second);
    std::fclose(first);
    EXPECT_EQ(OpenFileBytes(), before);
}

TEST(Measure, ResidentBytesFollowTouchedMemory) {
    const std::uint64_t before = CurrentRssBytes();
    std::vector<unsigned char> touched(64u << 20, 1);
    EXPECT_GE(CurrentRssBytes(), before + (32u << 20));
    EXPECT_GE(PeakRssBytes(), CurrentRssBytes() - (1u << 20));
    EXPECT_EQ(touched[12345], 1);
}

}  // namespace
}  // namespace Tavrin::Compare
