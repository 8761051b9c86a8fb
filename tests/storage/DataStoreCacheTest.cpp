#include "tavrin/storage/DataStoreCache.h"

#include <gtest/gtest.h>

#include <cstring>
#include <list>
#include <map>
#include <random>
#include <vector>

#include "base/ThrownStatus.h"
#include "storage/StoreTestSupport.h"

namespace Tavrin::Database {
namespace {

using Tavrin::Testing::ThrownStatus;
using Testing::MakeRecord;

constexpr std::uint32_t EntrySize = 6;

bool Holds(DataStoreCache& cache, std::uint32_t id, std::uint32_t seed) {
    const unsigned char* bytes = cache.Find(id);
    return bytes != nullptr && std::memcmp(bytes, MakeRecord(EntrySize, seed).data(), EntrySize) == 0;
}

StatusCode Put(DataStoreCache& cache, std::uint32_t id, std::uint32_t seed, bool force) {
    return cache.Put(id, MakeRecord(EntrySize, seed).data(), force);
}

TEST(DataStoreCache, ConstructionRefusesSlotsItCannotMake) {
    EXPECT_EQ(ThrownStatus([] { DataStoreCache(0, 1024); }), Status::Invalid);
    EXPECT_EQ(ThrownStatus([] { DataStoreCache(10, 9); }), Status::Invalid);
    // More slots than a store has ids, or more bytes than the address space: never allocated.
    EXPECT_EQ(ThrownStatus([] { DataStoreCache(1, std::uint64_t{0xFFFFFFFF} * 1024); }), Status::OutOfMemory);
    EXPECT_EQ(ThrownStatus([] { DataStoreCache(0xFFFFFFFF, ~std::uint64_t{0}); }), Status::OutOfMemory);
    DataStoreCache rounded(10, 39);
    EXPECT_EQ(rounded.GetNumEntries(), 3u);
}

TEST(DataStoreCache, OneSlotRefusesASecondIdUnlessForced) {
    DataStoreCache cache(EntrySize, EntrySize);
    std::uint32_t id = 0;
    unsigned char* bytes = nullptr;
    EXPECT_EQ(cache.GetOldest(id, bytes), Status::NotFound);
    EXPECT_EQ(Put(cache, 4, 1, false), Status::Success);
    EXPECT_EQ(Put(cache, 4, 2, false), Status::Success);  // a cached id keeps its slot in a full cache
    EXPECT_EQ(Put(cache, 5, 3, false), Status::StoreFull);
    EXPECT_TRUE(Holds(cache, 4, 2));
    EXPECT_EQ(cache.Find(5), nullptr);
    EXPECT_EQ(Put(cache, 5, 3, true), Status::Success);
    EXPECT_EQ(cache.Find(4), nullptr);
    EXPECT_TRUE(Holds(cache, 5, 3));
    ASSERT_EQ(cache.GetOldest(id, bytes), Status::Success);
    EXPECT_EQ(id, 5u);
}

TEST(DataStoreCache, AgeFollowsPutsOnlyAndErasedSlotsAreTakenFirst) {
    DataStoreCache cache(EntrySize, 3 * EntrySize);
    for (std::uint32_t id = 10; id < 13; ++id) ASSERT_EQ(Put(cache, id, id, false), Status::Success);
    EXPECT_EQ(Put(cache, 13, 13, false), Status::StoreFull);
    ASSERT_NE(cache.Find(10), nullptr);  // a lookup renews nothing
    std::uint32_t id = 0;
    unsigned char* bytes = nullptr;
    ASSERT_EQ(cache.GetOldest(id, bytes), Status::Success);
    EXPECT_EQ(id, 10u);
    ASSERT_EQ(Put(cache, 10, 20, false), Status::Success);  // a Put does
    ASSERT_EQ(cache.GetOldest(id, bytes), Status::Success);
    EXPECT_EQ(id, 11u);

    unsigned char* slot = cache.Find(12);
    cache.Erase(12);
    cache.Erase(99);
    EXPECT_EQ(cache.Find(12), nullptr);
    ASSERT_EQ(Put(cache, 30, 30, false), Status::Success);
    EXPECT_EQ(cache.Find(30), slot);  // the slot just freed
    EXPECT_EQ(cache.GetCount(), 3u);
    cache.Clear();
    EXPECT_EQ(cache.GetCount(), 0u);
    EXPECT_EQ(cache.GetFirst(id, bytes), Status::NotFound);
    for (std::uint32_t more = 0; more < 3; ++more) EXPECT_EQ(Put(cache, more, more, false), Status::Success);
}

// The cache against a model that knows the age order, so that it predicts which record a forced
// Put drops: random puts, erases and clears over ids that crowd the cache's id table (runs of
// neighbours, and multiples of large powers of two), with walks in id order taken between them.
TEST(DataStoreCache, HoldsWhatAModelOfAgesHoldsAndWalksInIdOrder) {
    constexpr std::uint32_t Slots = 64;
    DataStoreCache cache(EntrySize, Slots * EntrySize);
    std::map<std::uint32_t, std::uint32_t> model;  // id -> seed of its bytes
    std::list<std::uint32_t> ages;                 // newest first
    std::mt19937 random(3);
    const auto drawId = [&random]() -> std::uint32_t {
        switch (random() % 3) {
            case 0: return random() % 300;
            case 1: return (random() % 40) << 24;
            default: return 0xFFFFFFFE - random() % 8;
        }
    };
    for (int step = 0; step < 20000 && !HasFailure(); ++step) {
        const std::uint32_t id = drawId();
        const std::uint32_t seed = random();
        const std::uint32_t action = random() % 100;
        if (action < 25) {
            cache.Erase(id);
            model.erase(id);
            ages.remove(id);
        } else if (action == 25) {
            cache.Clear();
            model.clear();
            ages.clear();
        } else {
            ASSERT_EQ(Put(cache, id, seed, true), Status::Success);
            if (!model.count(id) && model.size() == Slots) {
                model.erase(ages.back());
                ages.pop_back();
            }
            ages.remove(id);
            ages.push_front(id);
            model[id] = seed;
        }
        ASSERT_EQ(cache.GetCount(), model.size());
        if (step % 97 != 0) continue;
        std::vector<std::uint32_t> walked;
        std::uint32_t walkedId = 0;
        unsigned char* bytes = nullptr;
        for (StatusCode status = cache.GetFirst(walkedId, bytes); status == Status::Success;
             status = cache.GetNext(walkedId, bytes)) {
            walked.push_back(walkedId);
            EXPECT_TRUE(Holds(cache, walkedId, model[walkedId])) << walkedId;
        }
        std::vector<std::uint32_t> expected;
        for (const auto& [cached, ignored] : model) expected.push_back(cached);
        ASSERT_EQ(walked, expected) << "step " << step;
        if (!ages.empty()) {
            std::uint32_t oldest = 0;
            ASSERT_EQ(cache.GetOldest(oldest, bytes), Status::Success);
            EXPECT_EQ(oldest, ages.back());
        }
    }
    std::uint32_t id = 1000;
    unsigned char* bytes = nullptr;
    if (!model.count(id)) {
        EXPECT_EQ(cache.GetNext(id, bytes), Status::Invalid);
    }
    if (!model.empty()) {
        id = model.rbegin()->first;
        EXPECT_EQ(cache.GetNext(id, bytes), Status::NotFound);
    }
}

}  // namespace
}  // namespace Tavrin::Database
