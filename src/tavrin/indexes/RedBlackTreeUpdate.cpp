// Insertion and removal in a red-black tree index, with their colour fix-ups.
//
// The only call that can fail is the store's Add of the new node, and it comes before any link is
// written; the store's Remove of a node comes after the tree is whole again. So a failure never
// leaves a half-linked node. Every loop is bounded by the depth of a valid tree, so a damaged file
// can't make one run forever. The mirrored cases of the textbook algorithm share one piece of code
// through the node's Side.
#include "tavrin/indexes/RedBlackTreeIndex.h"

namespace Tavrin::Database {

StatusCode RedBlackTreeIndex::Add(const Key& key, std::uint32_t recordId) {
    if (const StatusCode usable = CheckUsable(key); usable != Status::Success) return usable;
    // Below 0 goes left, 0 or above right: an equal key goes behind its equals.
    Descent descent;
    if (!RecallInsertionPoint(key, descent)) {
        const StatusCode found = DescendFull(key, false, descent);
        if (found != Status::Success) return found;
    }

    Node scratch(scratch_.get());
    scratch.Reset(recordId, sentinel_);
    scratch.SetParent(descent.last);
    Node::CopyKey(scratch.GetKey(), key.GetData(), GetKeySize());
    std::uint32_t id = NoEntry;
    const StatusCode added = store_.Add(id, scratch_.get());
    if (added != Status::Success) return added;
    ForgetInsertionPoint();

    // The store may have grown and moved: from here on every node is reached by its number again.
    if (descent.last == sentinel_) {
        root_ = id;
    } else {
        NodeAt(descent.last).SetChild(descent.result < 0 ? Node::Left : Node::Right, id);
    }
    InsertFixup(id);
    return Status::Success;
}

StatusCode RedBlackTreeIndex::Remove(const Key& key) {
    if (const StatusCode usable = CheckUsable(key); usable != Status::Success) return usable;
    std::uint32_t node = sentinel_;
    const StatusCode found = FindNode(key, node);
    if (found != Status::Success || node == sentinel_) return found;
    ForgetInsertionPoint();
    Unlink(node);
    Node removed = NodeAt(node);
    removed.SetColour(Node::Black);
    removed.SetChild(Node::Left, sentinel_);
    removed.SetChild(Node::Right, sentinel_);
    removed.SetParent(sentinel_);
    return store_.Remove(node);
}

void RedBlackTreeIndex::Rotate(std::uint32_t id, Side side) {
    const Side other = Node::Opposite(side);
    const std::uint32_t riser = ChildOf(id, other);
    const std::uint32_t moved = ChildOf(riser, side);
    NodeAt(id).SetChild(other, moved);
    if (moved != sentinel_) NodeAt(moved).SetParent(id);
    const std::uint32_t parent = ParentOf(id);
    NodeAt(riser).SetParent(parent);
    if (parent == sentinel_) {
        root_ = riser;
    } else {
        NodeAt(parent).SetChild(SideOf(id), riser);
    }
    NodeAt(riser).SetChild(side, id);
    NodeAt(id).SetParent(riser);
}

void RedBlackTreeIndex::Transplant(std::uint32_t id, std::uint32_t replacement) {
    const std::uint32_t parent = ParentOf(id);
    if (parent == sentinel_) {
        root_ = replacement;
    } else {
        NodeAt(parent).SetChild(SideOf(id), replacement);
    }
    NodeAt(replacement).SetParent(parent);
}

void RedBlackTreeIndex::InsertFixup(std::uint32_t id) {
    NodeAt(id).SetColour(Node::Red);
    for (std::uint32_t steps = 0; steps < MaxWalk && id != root_ && IsRed(ParentOf(id)); ++steps) {
        std::uint32_t parent = ParentOf(id);
        const std::uint32_t grandparent = ParentOf(parent);
        const Side side = SideOf(parent);
        const Side outside = Node::Opposite(side);
        const std::uint32_t uncle = ChildOf(grandparent, outside);
        if (IsRed(uncle)) {
            NodeAt(parent).SetColour(Node::Black);
            NodeAt(uncle).SetColour(Node::Black);
            NodeAt(grandparent).SetColour(Node::Red);
            id = grandparent;
            continue;
        }
        if (ChildOf(parent, outside) == id) {
            // The inner child: turn it to the outside first.
            id = parent;
            Rotate(id, side);
            parent = ParentOf(id);
        }
        NodeAt(parent).SetColour(Node::Black);
        NodeAt(grandparent).SetColour(Node::Red);
        Rotate(grandparent, outside);
    }
    NodeAt(root_).SetColour(Node::Black);
}

// A node with two children is replaced by its successor, relinked into its place rather than
// copied, so that every entry keeps its key; the two exchange colours, which leaves in `node` the
// colour that left the path.
void RedBlackTreeIndex::Unlink(std::uint32_t node) {
    const std::uint32_t left = ChildOf(node, Node::Left);
    const std::uint32_t right = ChildOf(node, Node::Right);
    std::uint32_t child = sentinel_;
    if (left == sentinel_ || right == sentinel_) {
        child = left != sentinel_ ? left : right;
        Transplant(node, child);
    } else {
        const std::uint32_t successor = Extreme(right, Node::Left);
        child = ChildOf(successor, Node::Right);
        const std::uint32_t colour = NodeAt(successor).GetColour();
        NodeAt(successor).SetColour(NodeAt(node).GetColour());
        NodeAt(node).SetColour(colour);
        if (ParentOf(successor) == node) {
            NodeAt(child).SetParent(successor);
        } else {
            Transplant(successor, child);
            NodeAt(successor).SetChild(Node::Right, right);
            NodeAt(right).SetParent(successor);
        }
        Transplant(node, successor);
        NodeAt(successor).SetChild(Node::Left, left);
        NodeAt(left).SetParent(successor);
    }
    if (!IsRed(node)) RemoveFixup(child);
}

// `id` carries one black too few on its path; it may be the sentinel, whose parent Unlink set.
void RedBlackTreeIndex::RemoveFixup(std::uint32_t id) {
    for (std::uint32_t steps = 0; steps < MaxWalk && id != root_ && !IsRed(id); ++steps) {
        const std::uint32_t parent = ParentOf(id);
        const Side side = ChildOf(parent, Node::Left) == id ? Node::Left : Node::Right;
        const Side other = Node::Opposite(side);
        std::uint32_t sibling = ChildOf(parent, other);
        if (IsRed(sibling)) {
            NodeAt(sibling).SetColour(Node::Black);
            NodeAt(parent).SetColour(Node::Red);
            Rotate(parent, side);
            sibling = ChildOf(parent, other);
        }
        if (!IsRed(ChildOf(sibling, side)) && !IsRed(ChildOf(sibling, other))) {
            NodeAt(sibling).SetColour(Node::Red);
            id = parent;
            continue;
        }
        if (!IsRed(ChildOf(sibling, other))) {
            NodeAt(ChildOf(sibling, side)).SetColour(Node::Black);
            NodeAt(sibling).SetColour(Node::Red);
            Rotate(sibling, other);
            sibling = ChildOf(parent, other);
        }
        NodeAt(sibling).SetColour(NodeAt(parent).GetColour());
        NodeAt(parent).SetColour(Node::Black);
        NodeAt(ChildOf(sibling, other)).SetColour(Node::Black);
        Rotate(parent, side);
        id = root_;
    }
    NodeAt(id).SetColour(Node::Black);
}

}  // namespace Tavrin::Database
