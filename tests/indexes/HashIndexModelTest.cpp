// The hash index against a model: tens of thousands of random adds, replacements, finds and removals
// of keys of a number and a text that may be undefined, growing the entry file and the bucket array,
// reopening the files, and merging back to the minimum, with the checks run as it goes. A split or a
// merge that goes wrong on purpose makes the checks fail.
#include <gtest/gtest.h>

#include <random>
#include <unordered_map>
#include <vector>

#include "../base/ScratchDirectory.h"
#include "HashIndexTestSupport.h"
#include "tavrin/base/Uuid.h"
#include "tavrin/indexes/HashIndexFaults.h"

namespace Tavrin::Database::Testing {
namespace {

const Name kNames[] = {std::nullopt, "a", "bb", "ccc", "dddddd", "e"};

struct ModelKey {
    std::uint32_t number, name, tail;  // tail: the record id behind a Duplicate index's key, else NoId
    std::uint64_t Code() const { return (std::uint64_t{tail} << 32) | (number << 3) | name; }
};

void RunModel(std::uint32_t properties, std::uint32_t seed) {
    Tavrin::Testing::ScratchDirectory directory;
    const Uuid uuid;
    HashHarness index(properties);
    index.index->Create(directory.Path(), "T", uuid);
    const bool duplicate = index.index->IsDuplicate();
    std::mt19937 random(seed);
    std::unordered_map<std::uint64_t, std::pair<std::uint32_t, std::size_t>> model;  // id, place in `keys`
    std::vector<ModelKey> keys;
    const auto put = [&](const ModelKey& key, std::uint32_t id) {
        auto [at, added] = model.try_emplace(key.Code(), id, keys.size());
        if (added) keys.push_back(key);
        at->second.first = id;
    };
    const auto erase = [&](const ModelKey& key) {
        const std::size_t place = model.at(key.Code()).second;
        model.erase(key.Code());
        keys[place] = keys.back();
        keys.pop_back();
        if (place < keys.size()) model.at(keys[place].Code()).second = place;
    };
    std::uint32_t id = 0;
    std::size_t steps = 0;
    for (const std::size_t target : {2200u, 300u, 2600u, 0u}) {
        const bool growing = keys.size() < target;
        while (growing ? keys.size() < target : keys.size() > target) {
            const std::uint32_t dice = random() % 100;
            const ModelKey fresh{static_cast<std::uint32_t>(random() % 1500), static_cast<std::uint32_t>(random() % 6),
                                 duplicate ? ++id : NoId};
            const ModelKey drawn = keys.empty() ? fresh : keys[random() % keys.size()];
            std::uint32_t found = NoId;
            if (!keys.empty() && dice < (growing ? 25u : 60u)) {
                ASSERT_EQ(index.Remove(drawn.number, kNames[drawn.name], drawn.tail), Status::Success);
                erase(drawn);
            } else if (dice < (growing ? 45u : 80u)) {  // a find, and a replacement of what it finds
                const ModelKey& key = dice % 2 == 0 ? drawn : fresh;
                const StatusCode status = index.Find(key.number, kNames[key.name], found, key.tail);
                ASSERT_EQ(status, model.count(key.Code()) != 0 ? Status::Success : Status::NotFound);
                if (status == Status::Success) {
                    ASSERT_EQ(found, model.at(key.Code()).first);
                }
                ASSERT_EQ(index.Add(key.number, kNames[key.name], ++id, key.tail), Status::Success);
                put(key, id);
            } else {
                ASSERT_EQ(index.Add(fresh.number, kNames[fresh.name], ++id, fresh.tail), Status::Success);
                put(fresh, id);
            }
            ASSERT_EQ(index.index->GetCurrentRecords(), keys.size()) << "step " << steps;
            if (++steps % 64 == 0) {
                ASSERT_EQ(index.Report(), "") << "step " << steps;
            }
        }
        // Everything is found again in the files opened anew.
        index.Renew();
        ASSERT_EQ(index.index->Open(directory.Path(), "T", uuid), Status::Success);
        ASSERT_EQ(index.Report(), "");
        for (const ModelKey& key : keys) {
            std::uint32_t found = NoId;
            ASSERT_EQ(index.Find(key.number, kNames[key.name], found, key.tail), Status::Success);
            ASSERT_EQ(found, model.at(key.Code()).first);
        }
    }
    EXPECT_GE(steps, 20000u);
    EXPECT_EQ(index.index->GetBucketHandler().GetBucketsInUse(), index.index->MinimumBuckets());
    EXPECT_GE(index.index->GetBucketHandler().GetCapacity(), 1024u);
    EXPECT_GT(index.index->GetEntryHandler().GetMaxEntries(), 2600u);
}

TEST(HashIndexModel, UniqueKeys) { RunModel(IndexSpecification::UniqueProperty, 7); }

TEST(HashIndexModel, DuplicateKeysTellRecordIdsApart) { RunModel(IndexSpecification::DuplicateProperty, 11); }

// Runs `step` for numbers from 0 on with `fault` planted, until the checks fail; their report.
template <class Step>
std::string ReportUnder(HashIndexFault fault, HashHarness& index, Step step) {
    SetHashIndexFault(fault);
    std::string report;
    for (std::uint32_t number = 0; report.empty() && number < 800; ++number) {
        EXPECT_EQ(step(number), Status::Success);
        report = index.Report();
    }
    SetHashIndexFault(HashIndexFault::None);
    return report;
}

TEST(HashIndexModel, ChecksCatchASplitThatLosesAnEntryAndAMergeThatKeepsAHead) {
    HashHarness index(IndexSpecification::UniqueProperty);
    index.index->Create();
    for (std::uint32_t number = 1000; number < 1512; ++number) ASSERT_EQ(index.Add(number, "n", number), 0);
    ASSERT_EQ(index.Report(), "") << "no split yet: 512 keys in 256 buckets";
    std::string report = ReportUnder(HashIndexFault::SplitLosesEntry, index,
                                     [&](std::uint32_t number) { return index.Add(number, "n", number); });
    EXPECT_EQ(report.rfind("\nFailed to find allocated entry in bucket\nHead entry ......... ", 0), 0u) << report;

    index.Renew();
    index.index->Create();
    for (std::uint32_t number = 0; number < 800; ++number) ASSERT_EQ(index.Add(number, "n", number), 0);
    report = ReportUnder(HashIndexFault::MergeKeepsSourceHead, index,
                         [&](std::uint32_t number) { return index.Remove(number, "n"); });
    EXPECT_EQ(report.rfind("\nUnused bucket with defined head/tail\nBucket ............. ", 0), 0u) << report;
}

}  // namespace
}  // namespace Tavrin::Database::Testing
