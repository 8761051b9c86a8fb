// The cache and the disk store allocate nothing after construction: every record operation works in
// the slots made then.
#include <gtest/gtest.h>

#include <vector>

#include "base/CountingOperatorNew.h"
#include "tavrin/storage/DataStoreCache.h"
#include "tavrin/storage/DiskDataStore.h"
#include "storage/StoreTestSupport.h"

namespace Tavrin::Database {
namespace {

using Tavrin::Testing::AllocationsOf;
using Testing::MakeRecord;

TEST(StoreAllocation, TheCountingOperatorNewCounts) {
    EXPECT_EQ(AllocationsOf([] {
                  int* volatile memory = new int(1);
                  delete memory;
              }),
              1u);
}

TEST(StoreAllocation, CacheOperationsAllocateNothing) {
    DataStoreCache cache(8, 64 * 8);
    const auto record = MakeRecord(8, 1);
    std::uint32_t id = 0;
    unsigned char* bytes = nullptr;
    EXPECT_EQ(AllocationsOf([&] {
                  for (std::uint32_t key = 0; key < 1000; ++key) {
                      cache.Put(key * 7 % 211, record.data(), true);
                      cache.Find(key);
                      if (key % 5 == 0) cache.Erase(key * 3 % 211);
                  }
                  cache.GetOldest(id, bytes);
                  for (StatusCode status = cache.GetFirst(id, bytes); status == Status::Success;
                       status = cache.GetNext(id, bytes)) {
                  }
                  cache.Clear();
              }),
              0u);
}

TEST(StoreAllocation, DiskStoreRecordOperationsAllocateNothing) {
    constexpr std::uint32_t RecordSize = 24;
    DiskDataStore store(nullptr, RecordSize, 4096, 0, 1);  // 42 slots for 4096 records
    store.Create();
    const auto record = MakeRecord(RecordSize, 2);
    std::vector<unsigned char> buffer(RecordSize);
    std::uint32_t id = 0;
    for (std::uint32_t i = 0; i < 2000; ++i) ASSERT_EQ(store.Add(id, record.data()), Status::Success);
    unsigned char* bytes = nullptr;
    EXPECT_EQ(AllocationsOf([&] {
                  for (std::uint32_t i = 0; i < 2000; ++i) {
                      const std::uint32_t target = i * 37 % 2000;
                      store.Update(target, record.data());
                      store.Read((target + 500) % 2000, buffer.data());
                      store.GetEntry((target + 1000) % 2000, bytes);
                      store.Remove(target);
                      store.Add(id, record.data());
                  }
                  for (StatusCode status = store.GetFirst(id, bytes); status == Status::Success;
                       status = store.GetNext(id, bytes)) {
                  }
                  store.Flush();
              }),
              0u);
    EXPECT_GT(store.GetRecordWrites(), 1000u);
}

}  // namespace
}  // namespace Tavrin::Database
