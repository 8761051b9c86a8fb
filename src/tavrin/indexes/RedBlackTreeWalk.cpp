// The lookups and walks of a red-black tree index. None of them changes the tree or allocates; they
// write only the caller's Key (its bytes, and for some its cursor) and record id.
#include <cstring>

#include "tavrin/base/Encoding.h"
#include "tavrin/indexes/RedBlackTreeIndex.h"

namespace Tavrin::Database {

int RedBlackTreeIndex::ComparePrefix(const unsigned char* key, const unsigned char* nodeKey,
                                     const Prefix& prefix) const noexcept {
    return GetFieldList()->CompareKey(key, nodeKey, prefix.fieldNumber, prefix.length);
}

template <class Compare>
StatusCode RedBlackTreeIndex::Descend(Compare compare, bool stopAtEqual, Descent& descent) {
    descent = Descent{sentinel_, sentinel_, 0};
    std::uint32_t id = root_;
    for (std::uint32_t depth = 0; id != sentinel_; ++depth) {
        if (depth == MaxWalk) return Status::Invalid;
        const Node node = NodeAt(id);
        // Both children load while this node compares; one of them is the next visit.
        store_.PrefetchEntry(node.GetLeft());
        store_.PrefetchEntry(node.GetRight());
        descent.last = id;
        descent.result = compare(node.GetKey());
        if (descent.result == 0 && stopAtEqual) {
            descent.found = id;
            return Status::Success;
        }
        id = node.GetChild(descent.result < 0 ? Node::Left : Node::Right);
    }
    return Status::Success;
}

StatusCode RedBlackTreeIndex::DescendFull(const Key& key, bool stopAtEqual, Descent& descent) {
    const unsigned char* data = key.GetData();
    return Descend([&](const unsigned char* nodeKey) { return CompareFull(data, nodeKey); }, stopAtEqual, descent);
}

std::uint32_t RedBlackTreeIndex::NodeIfHolding(std::uint32_t candidate, const Key& key) const noexcept {
    if (candidate == NoEntry) return sentinel_;
    unsigned char* bytes = store_.FindUsedEntry(candidate);
    if (bytes == nullptr || candidate == sentinel_) return sentinel_;
    return CompareFull(key.GetData(), Node(bytes).GetKey()) == 0 ? candidate : sentinel_;
}

std::uint32_t RedBlackTreeIndex::KnownNode(const Key& key) const noexcept {
    const std::uint32_t cursor = NodeIfHolding(key.GetCursor(), key);
    if (cursor != sentinel_ || !distinctKeys_ || lastNode_ == key.GetCursor()) return cursor;
    return NodeIfHolding(lastNode_, key);
}

void RedBlackTreeIndex::RememberInsertionPoint(const Key& key, const Descent& descent) noexcept {
    insertionPoint_ = descent;
    Node::CopyKey(InsertionKey(), key.GetData(), GetKeySize());
    insertionPointValid_ = true;
}

bool RedBlackTreeIndex::RecallInsertionPoint(const Key& key, Descent& descent) const noexcept {
    if (!insertionPointValid_ || std::memcmp(InsertionKey(), key.GetData(), GetKeySize()) != 0) return false;
    descent = insertionPoint_;
    return true;
}

StatusCode RedBlackTreeIndex::FindNode(const Key& key, std::uint32_t& node) {
    node = KnownNode(key);
    if (node != sentinel_) return Status::Success;
    Descent descent;
    const StatusCode status = DescendFull(key, true, descent);
    node = descent.found;
    // No node compared 0 on the way, so an Add of this key would have taken the same path.
    if (status == Status::Success && node == sentinel_) RememberInsertionPoint(key, descent);
    return status;
}

// A forward step tries the cursor, as a key that walks on from the entry it found last saves the
// descent. A backward step has no such shortcut, but in an index of distinct keys a node that holds
// the key is the one a descent would find, so both steps try the last node found.
StatusCode RedBlackTreeIndex::StepNode(const Key& key, Side side, std::uint32_t& node) {
    const std::uint32_t known = side == Node::Right || distinctKeys_ ? KnownNode(key) : sentinel_;
    if (known != sentinel_) {
        node = Neighbour(known, side);
        return CheckStep(key.GetData(), node, side);
    }
    Descent descent;
    const StatusCode status = DescendFull(key, true, descent);
    if (status != Status::Success) return status;
    if (descent.found != sentinel_) {
        node = Neighbour(descent.found, side);
    } else {
        // The key would hang below the last node: on `side` of it, or on the other side.
        const bool beyondLast = side == Node::Right ? descent.result > 0 : descent.result < 0;
        node = beyondLast ? Neighbour(descent.last, side) : descent.last;
    }
    return CheckStep(key.GetData(), node, side);
}

// A sound tree never answers a step with a key that is not beyond the one it started from; only
// damaged links or keys can, and a walk that took such a node could go round forever.
StatusCode RedBlackTreeIndex::CheckStep(const unsigned char* from, std::uint32_t& node, Side side) const noexcept {
    return node == sentinel_ || Beyond(from, NodeAt(node).GetKey(), side) ? Status::Success : Status::Invalid;
}

std::uint32_t RedBlackTreeIndex::Extreme(std::uint32_t id, Side side) {
    if (id == sentinel_) return sentinel_;
    for (std::uint32_t depth = 0; depth < MaxWalk; ++depth) {
        const std::uint32_t child = ChildOf(id, side);
        if (child == sentinel_) break;
        id = child;
    }
    return id;
}

std::uint32_t RedBlackTreeIndex::Neighbour(std::uint32_t id, Side side) {
    if (id == sentinel_) return sentinel_;
    const std::uint32_t child = ChildOf(id, side);
    if (child != sentinel_) return Extreme(child, Node::Opposite(side));
    // Up to the first ancestor that `id` lies on the other side of.
    std::uint32_t parent = ParentOf(id);
    for (std::uint32_t depth = 0; depth < MaxWalk && parent != sentinel_ && ChildOf(parent, side) == id; ++depth) {
        id = parent;
        parent = ParentOf(id);
    }
    return parent;
}

StatusCode RedBlackTreeIndex::Deliver(std::uint32_t node, Key& key, std::uint32_t& recordId) {
    if (node == sentinel_) return Status::NotFound;
    const Node found = NodeAt(node);
    lastNode_ = node;
    recordId = found.GetRecord();
    Node::CopyKey(key.GetData(), found.GetKey(), GetKeySize());
    return Status::Success;
}

StatusCode RedBlackTreeIndex::Find(const Key& key, std::uint32_t& recordId) {
    if (const StatusCode usable = CheckUsable(key); usable != Status::Success) return usable;
    std::uint32_t node = sentinel_;
    const StatusCode status = FindNode(key, node);
    if (status != Status::Success) return status;
    if (node == sentinel_) return Status::NotFound;
    key.SetCursor(node);
    lastNode_ = node;
    recordId = NodeAt(node).GetRecord();
    return Status::Success;
}

StatusCode RedBlackTreeIndex::GetFirst(Key& key, std::uint32_t& recordId) {
    if (const StatusCode usable = CheckUsable(key); usable != Status::Success) return usable;
    return Deliver(Extreme(root_, Node::Left), key, recordId);
}

StatusCode RedBlackTreeIndex::GetLast(Key& key, std::uint32_t& recordId) {
    if (const StatusCode usable = CheckUsable(key); usable != Status::Success) return usable;
    return Deliver(Extreme(root_, Node::Right), key, recordId);
}

StatusCode RedBlackTreeIndex::GetNext(Key& key, std::uint32_t& recordId) { return Step(key, recordId, Node::Right); }

StatusCode RedBlackTreeIndex::GetPrevious(Key& key, std::uint32_t& recordId) {
    return Step(key, recordId, Node::Left);
}

StatusCode RedBlackTreeIndex::Step(Key& key, std::uint32_t& recordId, Side side) {
    if (const StatusCode usable = CheckUsable(key); usable != Status::Success) return usable;
    std::uint32_t node = sentinel_;
    const StatusCode status = StepNode(key, side, node);
    if (status == Status::Invalid && node != sentinel_) {
        // A step out of order ends the walk with 23; the key and record id it met are handed out
        // with it, so that a check can name them. The next step starts from that key, and a walk
        // still never goes round: every key it answers with 0 lies beyond the one before.
        const StatusCode delivered = Deliver(node, key, recordId);
        return delivered == Status::Success ? Status::Invalid : delivered;
    }
    if (status != Status::Success) return status;
    if (node != sentinel_) {
        // The next step the same way starts from the child on that side or from the parent: both
        // load while the caller reads this node's record.
        const Node found = NodeAt(node);
        store_.PrefetchEntry(found.GetChild(side));
        store_.PrefetchEntry(found.GetParent());
    }
    return Deliver(node, key, recordId);
}

// Fields behind the compared ones are carried in the key but take no part in the tree's order, so
// a prefix that reaches them could not be found by a descent: they count as not in the key.
StatusCode RedBlackTreeIndex::PreparePrefix(const Key& key, std::uint16_t fieldId, std::uint32_t length,
                                            Prefix& prefix) {
    const FieldList& list = *GetFieldList();
    const FieldSpecification* field = nullptr;
    if (list.GetFieldSpecification(fieldId, prefix.fieldNumber, field) != Status::Success ||
        prefix.fieldNumber >= GetComparedFieldCount()) {
        return Status::FieldMissing;
    }
    if (length != FieldList::FullLength && length > list.GetFieldLength(prefix.fieldNumber, key.GetData())) {
        return Status::Invalid;
    }
    prefix.length = length;
    return Status::Success;
}

StatusCode RedBlackTreeIndex::GetFirstEqual(Key& key, std::uint32_t& recordId, std::uint16_t fieldId,
                                            std::uint32_t length) {
    return PrefixEnd(key, recordId, fieldId, length, Node::Left);
}

StatusCode RedBlackTreeIndex::GetLastEqual(Key& key, std::uint32_t& recordId, std::uint16_t fieldId,
                                           std::uint32_t length) {
    return PrefixEnd(key, recordId, fieldId, length, Node::Right);
}

StatusCode RedBlackTreeIndex::GetNextEqual(Key& key, std::uint32_t& recordId, std::uint16_t fieldId,
                                           std::uint32_t length) {
    return PrefixStep(key, recordId, fieldId, length, Node::Right);
}

StatusCode RedBlackTreeIndex::GetPreviousEqual(Key& key, std::uint32_t& recordId, std::uint16_t fieldId,
                                               std::uint32_t length) {
    return PrefixStep(key, recordId, fieldId, length, Node::Left);
}

StatusCode RedBlackTreeIndex::PrefixEnd(Key& key, std::uint32_t& recordId, std::uint16_t fieldId,
                                        std::uint32_t length, Side side) {
    if (const StatusCode usable = CheckUsable(key); usable != Status::Success) return usable;
    Prefix prefix{};
    const StatusCode status = PreparePrefix(key, fieldId, length, prefix);
    if (status != Status::Success) return status;
    std::uint32_t node = sentinel_;
    if (!PrefixBound(key, prefix, side, node)) return Status::Invalid;
    return Deliver(node, key, recordId);
}

// The matches of a prefix are one run of the tree's order, so the first (last) of them is found as a
// lower (upper) bound: a match is kept and the descent goes on towards `side`, anything else steers
// as a full comparison would. One path from the root, however many keys match.
bool RedBlackTreeIndex::PrefixBound(const Key& key, const Prefix& prefix, Side side, std::uint32_t& bound) {
    const unsigned char* data = key.GetData();
    bound = sentinel_;
    std::uint32_t id = root_;
    for (std::uint32_t depth = 0; id != sentinel_; ++depth) {
        if (depth == MaxWalk) return false;
        const Node node = NodeAt(id);
        store_.PrefetchEntry(node.GetLeft());
        store_.PrefetchEntry(node.GetRight());
        const int result = ComparePrefix(data, node.GetKey(), prefix);
        if (result == 0) bound = id;
        const Side next = result < 0 || (result == 0 && side == Node::Left) ? Node::Left : Node::Right;
        id = node.GetChild(next);
    }
    return true;
}

StatusCode RedBlackTreeIndex::PrefixStep(Key& key, std::uint32_t& recordId, std::uint16_t fieldId,
                                         std::uint32_t length, Side side) {
    if (const StatusCode usable = CheckUsable(key); usable != Status::Success) return usable;
    Prefix prefix{};
    std::uint32_t node = sentinel_;
    StatusCode status = PreparePrefix(key, fieldId, length, prefix);
    if (status == Status::Success) status = StepNode(key, side, node);
    if (status != Status::Success) return status;
    if (node == sentinel_ || ComparePrefix(key.GetData(), NodeAt(node).GetKey(), prefix) != 0) {
        return Status::NotFound;
    }
    key.SetCursor(node);
    return Deliver(node, key, recordId);
}

}  // namespace Tavrin::Database
