// What every store promises, run against the memory store and disk stores of three cache sizes.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "base/ScratchDirectory.h"
#include "storage/StoreKinds.h"
#include "storage/StoreTestSupport.h"

namespace Tavrin::Database {
namespace {

using Tavrin::Testing::ScratchDirectory;
using Testing::ContractRecordSize;
using Testing::MakeRecord;
using Testing::StoreKind;
using Testing::TextOwner;

class StoreContract : public ::testing::TestWithParam<StoreKind> {
protected:
    std::unique_ptr<DataStore> Make(std::uint32_t initial, std::uint32_t grow, UserDataStore* owner = nullptr) {
        return GetParam().make(owner, initial, grow);
    }
    static std::uint32_t Add(DataStore& store, std::uint32_t seed) {
        std::uint32_t id = 0xFFFFFFFF;
        EXPECT_EQ(store.Add(id, MakeRecord(ContractRecordSize, seed).data()), Status::Success) << seed;
        return id;
    }
    static bool Holds(DataStore& store, std::uint32_t id, std::uint32_t seed) {
        const auto expected = MakeRecord(ContractRecordSize, seed);
        std::vector<unsigned char> read(ContractRecordSize);
        unsigned char* entry = nullptr;
        return store.Read(id, read.data()) == Status::Success && read == expected &&
               store.GetEntry(id, entry) == Status::Success &&
               std::memcmp(entry, expected.data(), ContractRecordSize) == 0;
    }
    // The ids of a walk, each with the record it points at checked against `model`.
    static std::vector<std::uint32_t> Walk(DataStore& store, const std::map<std::uint32_t, std::uint32_t>& model) {
        std::vector<std::uint32_t> ids;
        std::uint32_t id = 0;
        unsigned char* record = nullptr;
        for (StatusCode status = store.GetFirst(id, record); status == Status::Success;
             status = store.GetNext(id, record)) {
            ids.push_back(id);
            const auto found = model.find(id);
            EXPECT_TRUE(found != model.end() &&
                        std::memcmp(record, MakeRecord(ContractRecordSize, found->second).data(), ContractRecordSize) == 0)
                << "id " << id;
        }
        return ids;
    }
};

TEST_P(StoreContract, EntryOperationsAndTheirStatuses) {
    auto store = Make(8, 0);
    std::uint32_t id = 0;
    unsigned char* record = nullptr;
    std::vector<unsigned char> buffer(ContractRecordSize);
    EXPECT_EQ(store->Add(id, buffer.data()), Status::NotOpen);
    EXPECT_EQ(store->Read(0, buffer.data()), Status::NotOpen);
    EXPECT_FALSE(store->IsOpen());
    store->Create();
    EXPECT_TRUE(store->IsOpen());
    for (std::uint32_t seed = 0; seed < 6; ++seed) EXPECT_EQ(Add(*store, seed), seed);
    ASSERT_EQ(store->Remove(0), Status::Success);
    ASSERT_EQ(store->Remove(3), Status::Success);
    EXPECT_EQ(store->GetCurrentEntries(), 4u);
    for (const std::uint32_t unused : {0u, 3u, 6u, 8u, 0x80000000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(store->Update(unused, buffer.data()), Status::OutOfRange) << unused;
        EXPECT_EQ(store->GetEntry(unused, record), Status::OutOfRange) << unused;
        EXPECT_EQ(store->Read(unused, buffer.data()), GetParam().readOfUnusedEntry) << unused;
        EXPECT_EQ(store->Remove(unused), Status::Invalid) << unused;
    }
    for (const std::uint32_t used : {1u, 2u, 4u, 5u}) {
        ASSERT_EQ(store->Update(used, MakeRecord(ContractRecordSize, 50 + used).data()), Status::Success);
    }
    for (const std::uint32_t used : {1u, 2u, 4u, 5u}) EXPECT_TRUE(Holds(*store, used, 50 + used)) << used;
    // The id removed last comes out first, then the other, then new ones; full without growth.
    EXPECT_EQ(Add(*store, 70), 3u);
    EXPECT_EQ(Add(*store, 71), 0u);
    EXPECT_EQ(Add(*store, 72), 6u);
    EXPECT_EQ(Add(*store, 73), 7u);
    EXPECT_EQ(store->Add(id, buffer.data()), Status::StoreFull);
    EXPECT_TRUE(Holds(*store, 3, 70));
    EXPECT_TRUE(Holds(*store, 0, 71));
    ASSERT_EQ(store->Remove(5), Status::Success);
    EXPECT_EQ(Add(*store, 74), 5u);
    EXPECT_TRUE(Holds(*store, 5, 74));
}

TEST_P(StoreContract, WalksInIdOrderAndGrowsByStepsKeepingEveryId) {
    auto store = Make(4, 2);
    store->Create();
    std::map<std::uint32_t, std::uint32_t> model;
    EXPECT_TRUE(Walk(*store, model).empty());
    for (std::uint32_t seed = 0; seed < 4; ++seed) model[Add(*store, seed)] = seed;
    EXPECT_EQ(store->GetMaxEntries(), 4u);
    model[Add(*store, 4)] = 4;
    EXPECT_EQ(store->GetMaxEntries(), 6u);
    for (std::uint32_t seed = 5; seed < 1500; ++seed) model[Add(*store, seed)] = seed;
    EXPECT_EQ(store->GetMaxEntries(), 1500u);
    for (std::uint32_t id = 0; id < 1500; id += 3) {
        ASSERT_EQ(store->Remove(id), Status::Success);
        model.erase(id);
    }
    std::vector<std::uint32_t> expected;
    for (const auto& [id, seed] : model) expected.push_back(id);
    EXPECT_EQ(Walk(*store, model), expected);
    std::uint32_t id = 1499;
    unsigned char* record = nullptr;
    EXPECT_EQ(store->GetNext(id, record), Status::NotFound);
    id = 0xFFFFFFFF;
    EXPECT_EQ(store->GetNext(id, record), Status::NotFound);
    EXPECT_EQ(id, 0xFFFFFFFFu);
}

TEST_P(StoreContract, ClearFreesEveryEntryAndARecordReadBeforeIsAddedAfter) {
    auto store = Make(3, 3);
    store->Create();
    for (std::uint32_t seed = 0; seed < 7; ++seed) Add(*store, seed);
    std::vector<unsigned char> kept(ContractRecordSize);
    ASSERT_EQ(store->Read(6, kept.data()), Status::Success);
    const std::uint32_t max = store->GetMaxEntries();
    store->Clear();
    EXPECT_EQ(store->GetCurrentEntries(), 0u);
    EXPECT_EQ(store->GetMaxEntries(), max);
    EXPECT_TRUE(Walk(*store, {}).empty());
    unsigned char* record = nullptr;
    EXPECT_EQ(store->GetEntry(6, record), Status::OutOfRange);
    EXPECT_EQ(store->Update(6, kept.data()), Status::OutOfRange);
    std::uint32_t id = 99;
    ASSERT_EQ(store->Add(id, kept.data()), Status::Success);
    EXPECT_EQ(id, 0u);
    EXPECT_TRUE(Holds(*store, 0, 6));
    store->Clear();
    store->Clear();
    EXPECT_EQ(Add(*store, 8), 0u);
}

TEST_P(StoreContract, ReopenKeepsEveryRecordAndOpenOfAnOpenStoreIsRefused) {
    ScratchDirectory directory;
    const std::string path = directory / "t.tab";
    TextOwner owner("owner");
    std::map<std::uint32_t, std::uint32_t> model;
    {
        auto store = Make(4, 4, &owner);
        store->Create(path, Uuid());
        for (std::uint32_t seed = 0; seed < 40; ++seed) model[Add(*store, seed)] = seed;
        for (std::uint32_t id = 0; id < 40; id += 4) {
            ASSERT_EQ(store->Remove(id), Status::Success);
            model.erase(id);
        }
        for (std::uint32_t id = 1; id < 40; id += 4) {
            ASSERT_EQ(store->Update(id, MakeRecord(ContractRecordSize, 100 + id).data()), Status::Success);
            model[id] = 100 + id;
        }
        EXPECT_EQ(store->Open(path, nullptr), Status::AlreadyOpen);
        EXPECT_TRUE(store->IsOpen());
        EXPECT_TRUE(Holds(*store, 1, 101));
        EXPECT_EQ(store->Close(), Status::Success);
        EXPECT_FALSE(store->IsOpen());
        EXPECT_EQ(store->Close(), Status::Success);
        // The object opens its files again after a close.
        ASSERT_EQ(store->Open(path, nullptr), Status::Success);
        EXPECT_EQ(store->GetCurrentEntries(), 30u);
    }
    owner.readBack.clear();
    auto store = Make(4, 4, &owner);
    ASSERT_EQ(store->Open(path, nullptr), Status::Success);
    EXPECT_EQ(owner.readBack, "owner");
    EXPECT_EQ(store->GetCurrentEntries(), model.size());
    EXPECT_EQ(Walk(*store, model).size(), model.size());
    EXPECT_EQ(Add(*store, 200), 36u);  // the free list survives: the id removed last
    auto second = Make(4, 4, &owner);
    EXPECT_EQ(second->Open(path, nullptr), Status::AlreadyOpen);  // one opener per file
}

TEST_P(StoreContract, SaveAsCopiesWhileTheStoreStaysOpenAndUuidsTieTheFiles) {
    ScratchDirectory directory;
    TextOwner owner("owner");
    auto store = Make(2, 2, &owner);
    const Uuid uuid;
    store->Create(directory / "t", uuid);
    EXPECT_FALSE(store->GetUuid() != uuid);
    std::map<std::uint32_t, std::uint32_t> model;
    for (std::uint32_t seed = 0; seed < 9; ++seed) model[Add(*store, seed)] = seed;
    const Uuid other;
    ASSERT_EQ(store->SetUuid(other), Status::Success);
    ASSERT_EQ(store->SaveAs(directory / "copy"), Status::Success);
    EXPECT_EQ(store->SaveAs(directory / "t"), Status::Invalid);  // never over its own file
    Add(*store, 9);
    EXPECT_TRUE(Holds(*store, 9, 9));

    auto copy = Make(2, 2, &owner);
    EXPECT_EQ(copy->Open(directory / "copy", &uuid), Status::Invalid);
    ASSERT_EQ(copy->Open(directory / "copy", &other), Status::Success);
    EXPECT_EQ(copy->GetCurrentEntries(), 9u);
    EXPECT_EQ(Walk(*copy, model).size(), 9u);
    EXPECT_EQ(store->Close(), Status::Success);
    EXPECT_EQ(store->SetUuid(uuid), Status::NotOpen);
    EXPECT_EQ(store->Open(directory / "t", &other), Status::Success);
}

TEST_P(StoreContract, TemporaryStoreLeavesNoFileAndClosesWithZero) {
    ScratchDirectory directory;
    auto store = Make(2, 2);
    store->Create();
    EXPECT_TRUE(store->IsTemporary());
    for (std::uint32_t seed = 0; seed < 5; ++seed) Add(*store, seed);
    const StatusCode saved = store->SaveAs(directory / "copy");
    EXPECT_EQ(saved, GetParam().temporaryCopies ? Status::Success : Status::NotAvailable);
    EXPECT_EQ(store->Close(), Status::Success);
    EXPECT_FALSE(store->IsOpen());
    EXPECT_EQ(directory.Count(), GetParam().temporaryCopies ? 1u : 0u);
}

// Random adds, updates, removals, reads, walks, clears and reopenings, checked against a model.
TEST_P(StoreContract, AgreesWithAModelThroughRandomOperations) {
    ScratchDirectory directory;
    const std::string path = directory / "m";
    std::map<std::uint32_t, std::uint32_t> model;
    std::mt19937 random(GetParam().name.size());
    auto store = Make(16, 16);
    store->Create(path, Uuid());
    for (std::uint32_t step = 0; step < 6000; ++step) {
        const std::uint32_t choice = random() % 100;
        const std::uint32_t id = model.empty() ? 0 : std::next(model.begin(), random() % model.size())->first;
        if (choice < 40 || model.empty()) {
            model[Add(*store, step)] = step;
        } else if (choice < 60) {
            ASSERT_EQ(store->Update(id, MakeRecord(ContractRecordSize, step).data()), Status::Success);
            model[id] = step;
        } else if (choice < 75) {
            ASSERT_EQ(store->Remove(id), Status::Success);
            model.erase(id);
        } else if (choice < 97) {
            ASSERT_TRUE(Holds(*store, id, model[id])) << "step " << step;
        } else if (choice < 98) {
            store->Clear();
            model.clear();
        } else {
            ASSERT_EQ(store->Close(), Status::Success);
            ASSERT_EQ(store->Open(path, nullptr), Status::Success);
            ASSERT_EQ(store->GetCurrentEntries(), model.size());
        }
    }
    std::vector<std::uint32_t> expected;
    for (const auto& [id, seed] : model) expected.push_back(id);
    EXPECT_EQ(Walk(*store, model), expected);
}

INSTANTIATE_TEST_SUITE_P(Stores, StoreContract, ::testing::ValuesIn(Testing::StoreKinds()),
                         [](const ::testing::TestParamInfo<StoreKind>& info) { return info.param.name; });

}  // namespace
}  // namespace Tavrin::Database
