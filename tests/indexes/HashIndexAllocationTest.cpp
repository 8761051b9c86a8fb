// Find, Add and Remove of a hash index allocate nothing once the index has grown: every key lives in
// the mapped files. This file replaces the global operator new and delete of the whole test program
// with ones that go straight to malloc and free, as the library's own do, and count calls only while
// a test switches counting on. Under AddressSanitizer these replacements take the place of the
// sanitizer's (it still watches malloc and free), so the count is the same there.
#include <gtest/gtest.h>

// The replaced operator new and delete below are a matched pair over malloc and free; the compiler,
// seeing free() inside a delete, would take it for a mismatch once they are inlined.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"

#include <atomic>
#include <cstdlib>
#include <new>

#include "HashIndexTestSupport.h"

namespace {

std::atomic<bool> counting{false};
std::atomic<std::size_t> allocations{0};

void* Allocate(std::size_t size) {
    if (counting.load(std::memory_order_relaxed)) allocations.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(size == 0 ? 1 : size);
}

}  // namespace

void* operator new(std::size_t size) {
    if (void* memory = Allocate(size)) return memory;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    if (void* memory = Allocate(size)) return memory;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

namespace Tavrin::Database::Testing {
namespace {

// The operator new calls that `body` makes.
template <class Body>
std::size_t AllocationsOf(Body&& body) {
    allocations.store(0);
    counting.store(true);
    body();
    counting.store(false);
    return allocations.load();
}

TEST(HashIndexAllocation, TheCountingOperatorNewCounts) {
    // Through a volatile pointer, so that the compiler can't drop the pair.
    EXPECT_EQ(AllocationsOf([] {
                  int* volatile memory = new int(1);
                  delete memory;
              }),
              1u);
    EXPECT_EQ(AllocationsOf([] {}), 0u);
}

TEST(HashIndexAllocation, FindAddAndRemoveOfAGrownIndexAllocateNothing) {
    constexpr std::uint32_t Keys = 2000;
    HashHarness harness(IndexSpecification::UniqueProperty, 64, 64);
    harness.index->Create();
    for (std::uint32_t number = 0; number < Keys; ++number) ASSERT_EQ(harness.Add(number, "n", number), Status::Success);
    ASSERT_EQ(harness.Remove(7, "n"), Status::Success);  // a free entry for a new key, whatever the growth steps

    // Keys are built before counting: only the index's calls are measured.
    Key present, absent, added;
    SetKey(present, *harness.index, 1234, "n");
    SetKey(absent, *harness.index, Keys + 5, "n");
    SetKey(added, *harness.index, 7, "n");
    const std::uint32_t maxEntries = harness.index->GetEntryHandler().GetMaxEntries();
    const std::uint32_t capacity = harness.index->GetBucketHandler().GetCapacity();
    ASSERT_NE(harness.index->GetEntryHandler().GetFreeHead(), HashIndex::NoEntry);

    std::uint32_t id = 0, missing = 0;
    StatusCode found = 0, notFound = 0, addNew = 0, addExisting = 0, removed = 0, notRemoved = 0;
    EXPECT_EQ(AllocationsOf([&] {
                  found = harness.index->Find(present, id);
                  notFound = harness.index->Find(absent, missing);
              }),
              0u);
    EXPECT_EQ(AllocationsOf([&] { addNew = harness.index->Add(added, 7); }), 0u);
    EXPECT_EQ(AllocationsOf([&] { addExisting = harness.index->Add(present, 4321); }), 0u);
    EXPECT_EQ(AllocationsOf([&] {
                  removed = harness.index->Remove(present);
                  notRemoved = harness.index->Remove(absent);
              }),
              0u);

    EXPECT_EQ(found, Status::Success);
    EXPECT_EQ(id, 1234u);
    EXPECT_EQ(notFound, Status::NotFound);
    EXPECT_EQ(addNew, Status::Success);
    EXPECT_EQ(addExisting, Status::Success);
    EXPECT_EQ(removed, Status::Success);
    EXPECT_EQ(notRemoved, Status::NotFound);
    // None of the measured calls grew a file: the index was warm.
    EXPECT_EQ(harness.index->GetEntryHandler().GetMaxEntries(), maxEntries);
    EXPECT_EQ(harness.index->GetBucketHandler().GetCapacity(), capacity);
    EXPECT_EQ(harness.Report(), "");
}

}  // namespace
}  // namespace Tavrin::Database::Testing
