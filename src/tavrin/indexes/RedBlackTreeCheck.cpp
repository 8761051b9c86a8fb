// The validator of a red-black tree index: a walk of the whole tree that tests every invariant
// listed in RedBlackTreeIndex.h. The index never runs it by itself; tests and diagnosis do.
#include "tavrin/indexes/RedBlackTreeIndex.h"

namespace Tavrin::Database {

StatusCode RedBlackTreeIndex::CheckTree() {
    if (!store_.IsOpen()) return Status::NotOpen;
    unsigned char* bytes = nullptr;
    if (store_.GetEntry(sentinel_, bytes) != Status::Success) return Status::Invalid;
    const Node sentinel(bytes);
    if (sentinel.GetRecord() != Node::NoRecord || sentinel.IsRed() || sentinel.GetLeft() != sentinel_ ||
        sentinel.GetRight() != sentinel_) {
        return Status::Invalid;
    }
    for (std::uint32_t i = 0; i < GetKeySize(); ++i) {
        if (sentinel.GetKey()[i] != 0) return Status::Invalid;
    }
    if (IsRed(root_)) return Status::Invalid;
    std::uint32_t blackHeight = 0;
    std::uint32_t nodes = 0;
    const StatusCode status = CheckSubtree(root_, sentinel_, 0, blackHeight, nodes);
    if (status != Status::Success) return status;
    if (nodes != GetCurrentRecords()) return Status::Invalid;
    return CheckOrder();
}

// Links, colours and black heights below `id`, whose parent must be `parent`.
StatusCode RedBlackTreeIndex::CheckSubtree(std::uint32_t id, std::uint32_t parent, std::uint32_t depth,
                                           std::uint32_t& blackHeight, std::uint32_t& nodes) {
    blackHeight = 1;
    nodes = 0;
    if (id == sentinel_) return Status::Success;
    unsigned char* bytes = nullptr;
    if (depth == MaxWalk || store_.GetEntry(id, bytes) != Status::Success) return Status::Invalid;
    const Node node(bytes);
    const std::uint32_t colour = node.GetColour();
    if (node.GetParent() != parent || (colour != Node::Black && colour != Node::Red)) return Status::Invalid;
    if (node.IsRed() && (IsRed(node.GetLeft()) || IsRed(node.GetRight()))) return Status::Invalid;

    std::uint32_t leftHeight = 0;
    std::uint32_t leftNodes = 0;
    std::uint32_t rightHeight = 0;
    std::uint32_t rightNodes = 0;
    StatusCode status = CheckSubtree(node.GetLeft(), id, depth + 1, leftHeight, leftNodes);
    if (status == Status::Success) status = CheckSubtree(node.GetRight(), id, depth + 1, rightHeight, rightNodes);
    if (status != Status::Success) return status;
    if (leftHeight != rightHeight) return Status::Invalid;
    blackHeight = leftHeight + (node.IsRed() ? 0 : 1);
    nodes = leftNodes + rightNodes + 1;
    return Status::Success;
}

// Each node's key is not below its predecessor's by the full comparison.
StatusCode RedBlackTreeIndex::CheckOrder() {
    std::uint32_t previous = Extreme(root_, Node::Left);
    if (previous == sentinel_) return Status::Success;
    for (std::uint32_t next = Neighbour(previous, Node::Right); next != sentinel_;
         next = Neighbour(previous, Node::Right)) {
        if (CompareFull(NodeAt(previous).GetKey(), NodeAt(next).GetKey()) > 0) return Status::Invalid;
        previous = next;
    }
    return Status::Success;
}

}  // namespace Tavrin::Database
