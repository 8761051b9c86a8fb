#pragma once
// Workload W1 of the store comparison: N records with the 8-byte keys 0..N-1, each with a 56-byte
// value, written, read, walked, updated and removed by one thread.
//
// Key orders are Fisher-Yates shuffles driven by one std::mt19937_64 seeded 42. The draw is
// `rng() % i`, not a standard distribution, so every standard library gives the same orders. Each
// phase takes the next shuffle of the same vector from the same generator.
//
// The value of key k, and its 56-byte form for stores that keep bytes:
//   offset 0   4 bytes   counter, unsigned, little-endian; 0 when inserted, +1 per update
//   offset 4   8 bytes   number, signed, little-endian; NumberOf(k)
//   offset 12  44 bytes  text; "record " and k in 16 hex digits, padded with '.'
// Stores that order keys by their bytes get the key as 8 big-endian bytes, so that byte order is
// numeric order.

#include <array>
#include <cstdint>
#include <random>
#include <vector>

namespace Tavrin::Compare {

constexpr std::uint32_t ValueSize = 56;
constexpr std::uint32_t TextSize = 44;
constexpr std::uint32_t KeySize = 8;

// The cache budget of the disk stores' runs: a quarter of the bytes of N keys and values.
constexpr std::uint64_t QuarterCacheBytes(std::uint64_t n) noexcept { return n * (KeySize + ValueSize) / 4; }

using ValueBytes = std::array<unsigned char, ValueSize>;
using KeyBytes = std::array<unsigned char, KeySize>;

struct Value {
    std::uint32_t counter = 0;
    std::int64_t number = 0;
    std::array<char, TextSize> text{};
};

// The signed number stored with key k: a spread of positive and negative values.
constexpr std::int64_t NumberOf(std::uint64_t key) noexcept {
    return static_cast<std::int64_t>(key * 2654435761u % 2000003u) - 1000001;
}

// The value that the insert phase writes for key k.
Value ValueOf(std::uint64_t key) noexcept;

void EncodeValue(const Value& value, unsigned char* bytes) noexcept;
void DecodeValue(const unsigned char* bytes, Value& value) noexcept;
// The counter is the first field: an update of a byte store changes these 4 bytes alone.
std::uint32_t DecodeCounter(const unsigned char* bytes) noexcept;
void EncodeCounter(unsigned char* bytes, std::uint32_t counter) noexcept;
std::int64_t DecodeNumber(const unsigned char* bytes) noexcept;

KeyBytes EncodeKey(std::uint64_t key) noexcept;
std::uint64_t DecodeKey(const unsigned char* bytes) noexcept;

// The numbers 0..n-1 and the generator that reshuffles them for every phase.
class KeyOrder {
public:
    explicit KeyOrder(std::uint64_t n);

    // Shuffles the keys anew and returns them; the reference stays valid until the next call.
    const std::vector<std::uint64_t>& Next();

private:
    std::mt19937_64 rng_{42};
    std::vector<std::uint64_t> keys_;
};

// Sum of NumberOf(k) for k in 0..n-1: what a full walk must add up to.
std::int64_t ExpectedNumberSum(std::uint64_t n) noexcept;

}  // namespace Tavrin::Compare
