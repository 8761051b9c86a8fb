#pragma once
// Faults that the hash index tests plant on purpose, to show that the integrity checks catch a split
// or a merge that goes wrong. Not part of the public interface; nothing but a test sets one.

#include <cstdint>

namespace Tavrin::Database {

enum class HashIndexFault : std::uint8_t {
    None,
    /// The first entry that a split moves is taken off its old chain and put on no other.
    SplitLosesEntry,
    /// A merge appends the last bucket's chain to its partner but leaves the bucket's head as it was.
    MergeKeepsSourceHead,
};

/// Plants `fault` in every hash index of the process until it is set to None again.
void SetHashIndexFault(HashIndexFault fault) noexcept;

}  // namespace Tavrin::Database
