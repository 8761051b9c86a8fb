#pragma once
// Figures of an index for people and for tuning: the shape of a tree, the load of a hash table.
// Each is one walk over the index's structure, which it only reads; the table's lock (or the
// caller's own care) keeps writers away during it.

#include <cstdint>
#include <vector>

namespace Tavrin::Database {

class HashIndex;
class RedBlackTreeIndex;

/// The shape of a red-black tree index. An index that is not open gives zeros.
struct TreeStatistics {
    /// Nodes in the tree: one per key.
    std::uint64_t nodeCount = 0;
    /// Nodes on the longest path from the root down, the root counted: 0 for an empty tree.
    std::uint32_t height = 0;
    /// The mean over all nodes of their depth, the root's being 1: the nodes a lookup visits.
    double averageDepth = 0.0;
};

/// The load of a hash index. An index that is not open gives zeros.
struct HashStatistics {
    /// Buckets in use: bucketCount + splitIndex.
    std::uint32_t bucketsInUse = 0;
    /// The bucket count of the current splitting pass.
    std::uint32_t bucketCount = 0;
    /// The buckets of this pass split already (below bucketCount).
    std::uint32_t splitIndex = 0;
    /// Slots of the bucket file: the buckets in use and those ready for them.
    std::uint32_t capacity = 0;
    /// Keys held.
    std::uint64_t entries = 0;
    /// chainLengths[n]: how many buckets in use hold a chain of n entries, up to the longest.
    std::vector<std::uint64_t> chainLengths;
    /// Entries in the longest chain.
    std::uint32_t longestChain = 0;
};

/// The shape of `index`'s tree.
TreeStatistics GetStatistics(const RedBlackTreeIndex& index);
/// The load of `index`'s buckets and the lengths of their chains.
HashStatistics GetStatistics(const HashIndex& index);

}  // namespace Tavrin::Database
