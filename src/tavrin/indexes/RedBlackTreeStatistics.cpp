// The shape of a tree index: one walk over every node, depth first with a stack of its own, so a
// deep (or damaged) tree never deepens the call stack.
#include <utility>
#include <vector>

#include "tavrin/indexes/IndexStatistics.h"
#include "tavrin/indexes/RedBlackTreeIndex.h"

namespace Tavrin::Database {

TreeStatistics GetStatistics(const RedBlackTreeIndex& index) {
    TreeStatistics statistics;
    const MemoryDataStore& store = index.GetStore();
    if (!store.IsOpen()) return statistics;
    const std::uint32_t sentinel = index.GetSentinel();
    // A damaged link could make a cycle: the walk visits no more nodes than the store holds.
    const std::uint64_t limit = store.GetCurrentEntries();
    std::uint64_t depthSum = 0;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> pending;  // node, depth
    if (index.GetRoot() != sentinel) pending.emplace_back(index.GetRoot(), 1);
    while (!pending.empty() && statistics.nodeCount < limit) {
        const auto [id, depth] = pending.back();
        pending.pop_back();
        unsigned char* bytes = store.FindUsedEntry(id);
        if (bytes == nullptr) continue;
        const RedBlackTreeNode node(bytes);
        ++statistics.nodeCount;
        depthSum += depth;
        if (depth > statistics.height) statistics.height = depth;
        if (node.GetLeft() != sentinel) pending.emplace_back(node.GetLeft(), depth + 1);
        if (node.GetRight() != sentinel) pending.emplace_back(node.GetRight(), depth + 1);
    }
    if (statistics.nodeCount != 0) {
        statistics.averageDepth = static_cast<double>(depthSum) / static_cast<double>(statistics.nodeCount);
    }
    return statistics;
}

}  // namespace Tavrin::Database
