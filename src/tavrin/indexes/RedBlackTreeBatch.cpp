// The batch reads of a red-black tree index. A descent waits for one node at a time, and so does a
// walk; these run several of them so that the waits overlap, and leave every answer, every key and
// every hint as the single operations in order would leave them.
#include "tavrin/indexes/RedBlackTreeIndex.h"

namespace Tavrin::Database {

namespace {

/// Descents run side by side: enough to keep the processor's outstanding misses busy.
constexpr std::uint32_t Lanes = 16;
/// How many nodes a walk runs ahead of the records it hands over.
constexpr std::uint32_t WalkAhead = 8;

}  // namespace

// One level of a descent: true while it goes on, with the next node asked for. Inline in the loop
// of FindMany: it runs at every level of every key.
inline bool RedBlackTreeIndex::AdvanceFind(Key& key, std::uint32_t k, std::uint32_t& id, std::uint32_t& depth,
                                           std::uint32_t& recordId, StatusCode& status, BatchHints& hints) {
    if (depth == MaxWalk) {
        status = Status::Invalid;
        return false;
    }
    std::uint32_t child = sentinel_;
    int result = 0;
    if (id != sentinel_) {  // only an empty tree starts a descent at the sentinel
        const Node node = NodeAt(id);
        result = CompareFull(key.GetData(), node.GetKey());
        if (result == 0) {
            DeliverFound(key, k, id, recordId, status, hints);
            return false;
        }
        child = node.GetChild(result < 0 ? Node::Left : Node::Right);
    }
    if (child == sentinel_) {
        // Where an Add of this key would hang; the last such key in order keeps its place.
        if (hints.failedKey == NoEntry || k > hints.failedKey) {
            hints.failedKey = k;
            hints.failed = Descent{sentinel_, id, result};
        }
        status = Status::NotFound;
        return false;
    }
    store_.PrefetchEntry(child);
    id = child;
    ++depth;
    return true;
}

// Each lane is a descent stopped at a node whose entry was asked for; one round advances every lane
// by one level, so while one compares, the others' nodes load. A lane that ends takes the next key.
void RedBlackTreeIndex::FindMany(Key* const* keys, std::uint32_t count, std::uint32_t* recordIds,
                                 StatusCode* statuses) {
    struct Lane {
        std::uint32_t key;
        std::uint32_t node;
        std::uint32_t depth;
    };
    Lane lanes[Lanes];
    std::uint32_t active = 0;
    std::uint32_t next = 0;
    BatchHints hints;
    while (next < count || active != 0) {
        while (active < Lanes && next < count) {
            const std::uint32_t k = next++;
            if (StartFind(*keys[k], k, recordIds[k], statuses[k], hints)) {
                lanes[active++] = Lane{k, root_, 0};
                store_.PrefetchEntry(root_);
            }
        }
        for (std::uint32_t i = 0; i < active;) {
            Lane& lane = lanes[i];
            if (AdvanceFind(*keys[lane.key], lane.key, lane.node, lane.depth, recordIds[lane.key],
                            statuses[lane.key], hints)) {
                ++i;
            } else {
                lane = lanes[--active];
            }
        }
    }
    if (hints.found != NoEntry) lastNode_ = hints.found;
    if (hints.failedKey != NoEntry) RememberInsertionPoint(*keys[hints.failedKey], hints.failed);
}

// What Find does before a descent: false when the key is answered already (not usable, or held by
// its cursor or the last node found).
bool RedBlackTreeIndex::StartFind(Key& key, std::uint32_t k, std::uint32_t& recordId, StatusCode& status,
                                  BatchHints& hints) {
    status = CheckUsable(key);
    if (status != Status::Success) return false;
    const std::uint32_t known = KnownNode(key);
    if (known == sentinel_) return true;
    DeliverFound(key, k, known, recordId, status, hints);
    return false;
}

void RedBlackTreeIndex::DeliverFound(Key& key, std::uint32_t k, std::uint32_t node, std::uint32_t& recordId,
                                     StatusCode& status, BatchHints& hints) {
    key.SetCursor(node);
    recordId = NodeAt(node).GetRecord();
    status = Status::Success;
    if (hints.foundKey == NoEntry || k > hints.foundKey) {
        hints.foundKey = k;
        hints.found = node;
    }
}

// The first step is Step's; from there the walk follows links only, which is what each further
// step would do in an index of distinct keys (the key then names the node delivered last). Up to
// WalkAhead nodes are found before their records are due, and each record is announced to the
// sink as soon as its node is known. Each node found is checked to lie beyond the one before, as
// each step checks it, so a damaged tree ends the walk with 23 where the steps would.
StatusCode RedBlackTreeIndex::Walk(Key& key, bool forward, bool prefix, std::uint16_t fieldId, std::uint32_t length,
                                   std::uint32_t count, RecordSink& sink) {
    // Equal keys: a step by the key's bytes may land on another of them; take the steps one by one.
    if (!distinctKeys_ || count == 0) return Index::Walk(key, forward, prefix, fieldId, length, count, sink);
    if (const StatusCode usable = CheckUsable(key); usable != Status::Success) return usable;
    Prefix bounds{};
    if (prefix) {
        if (const StatusCode status = PreparePrefix(key, fieldId, length, bounds); status != Status::Success) {
            return status;
        }
    }
    const Side side = forward ? Node::Right : Node::Left;
    const auto matches = [&](std::uint32_t node) {
        return node != sentinel_ && (!prefix || ComparePrefix(key.GetData(), NodeAt(node).GetKey(), bounds) == 0);
    };
    std::uint32_t node = sentinel_;
    if (const StatusCode status = StepNode(key, side, node); status != Status::Success) return status;
    if (!matches(node)) return Status::NotFound;

    std::uint32_t ring[WalkAhead];
    std::uint32_t first = 0;
    std::uint32_t queued = 0;
    std::uint32_t found = 0;
    // The key of the node queued last, which the next node must lie beyond: nothing grows the
    // store during the walk, so the address stays good.
    const unsigned char* lastKey = nullptr;
    const auto enqueue = [&](std::uint32_t id) {
        const Node view = NodeAt(id);
        lastKey = view.GetKey();
        sink.Prefetch(view.GetRecord());
        store_.PrefetchEntry(view.GetChild(side));
        store_.PrefetchEntry(view.GetParent());
        ring[(first + queued++) % WalkAhead] = id;
        ++found;
    };
    enqueue(node);
    bool ended = false;
    bool damaged = false;
    std::uint32_t taken = 0;
    std::uint32_t last = sentinel_;
    bool stopped = false;
    while (queued != 0 && !stopped) {
        while (!ended && queued < WalkAhead && found < count) {
            std::uint32_t following = Neighbour(ring[(first + queued - 1) % WalkAhead], side);
            // The step that would deliver `following` would answer 23 for it (CheckStep).
            damaged = CheckStep(lastKey, following, side) != Status::Success;
            ended = damaged || !matches(following);
            if (!ended) enqueue(following);
        }
        last = ring[first];
        first = (first + 1) % WalkAhead;
        --queued;
        ++taken;
        stopped = !sink.Take(NodeAt(last).GetRecord());
    }
    std::uint32_t recordId = 0;
    if (prefix) key.SetCursor(last);
    Deliver(last, key, recordId);
    if (taken == count || stopped) return Status::Success;
    return damaged ? Status::Invalid : Status::NotFound;
}

}  // namespace Tavrin::Database
