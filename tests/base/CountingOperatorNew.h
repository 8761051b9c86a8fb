#pragma once
// Replaces the global operator new and delete of the whole test program with ones that go straight
// to malloc and free, as the library's own do, and count calls only while AllocationsOf runs its
// body. Include it in exactly one source file of a test program. Under AddressSanitizer these
// replacements take the place of the sanitizer's (it still watches malloc and free), so the count
// is the same there.

// The replaced operator new and delete below are a matched pair over malloc and free; the compiler,
// seeing free() inside a delete, would take it for a mismatch once they are inlined.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"

#include <atomic>
#include <cstdlib>
#include <new>

namespace Tavrin::Testing {

inline std::atomic<bool> countingAllocations{false};
inline std::atomic<std::size_t> allocationCount{0};

inline void* CountedAllocate(std::size_t size) {
    if (countingAllocations.load(std::memory_order_relaxed)) allocationCount.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(size == 0 ? 1 : size);
}

// The operator new calls that `body` makes.
template <class Body>
std::size_t AllocationsOf(Body&& body) {
    allocationCount.store(0);
    countingAllocations.store(true);
    body();
    countingAllocations.store(false);
    return allocationCount.load();
}

}  // namespace Tavrin::Testing

void* operator new(std::size_t size) {
    if (void* memory = Tavrin::Testing::CountedAllocate(size)) return memory;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    if (void* memory = Tavrin::Testing::CountedAllocate(size)) return memory;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Tavrin::Testing::CountedAllocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Tavrin::Testing::CountedAllocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
