#pragma once
// RedBlackTreeIndex: the ordered index of a table. Every key sits in a red-black tree whose nodes
// are the entries of a MemoryDataStore that the index owns (node layout: RedBlackTreeNode.h), so a
// key can be found exactly, the keys walked in order both ways, and a leading part of a key matched.
//
// Thread safety
//   None of its own. The table's mutex serialises every call; the scratch node makes Add usable by
//   one thread at a time. Lookups do not change the tree but write the Key passed in (its bytes and
//   its cursor) and the index's two hints below, so they too need the caller's serialisation.
//
// Hints (never observable: each is used only where it gives what a descent from the root gives)
//   - The node found or delivered last. In an index whose full keys are distinct (Unique,
//     PrimaryUnique or Duplicate), a key that compares 0 with that node can only be that node, so
//     Find, Remove and the steps take it as a key's cursor is taken: checked to be in use and to
//     compare 0. A walk therefore follows links instead of descending for every step.
//   - Where the last Find that failed ended (the last node and the last result) and the key it had,
//     valid until the tree next changes. An Add of the same key bytes into the unchanged tree would
//     descend the same path, so it starts from there: a table's insert descends once, not twice.
//
// Invariants (while open; CheckTree tests all of them)
//   1. Every link is an entry number of the store, never an address: a node's address is worked out
//      from its number at each use and never kept across a store Add, which may re-map the file.
//   2. The sentinel is an entry in use: record 0xFFFFFFFF, black, key bytes zero, left and right its
//      own number. Its parent is scratch space of Remove and may hold anything.
//   3. root is the sentinel's number when the tree is empty; the root's parent is the sentinel.
//   4. The root is black; no red node has a red child; every path from a node down to the sentinel
//      passes the same number of black nodes. So a tree of n nodes is at most 2 log2(n + 1) deep.
//   5. An in-order walk gives the keys in ascending order of the full comparison: CompareKey over
//      the compared fields, then, in a Duplicate index, the record id in the key's last 4 bytes.
//      Equal keys of an index without that property lie in the order they were added.
//   6. Each child's parent link names its parent.
//   7. The store holds exactly the tree's nodes and the sentinel: GetCurrentRecords() + 1 entries.
//   8. A node keeps its entry number and its key bytes for its whole life: Remove relinks the
//      successor of a node with two children instead of copying its key, so a cursor stays good.
//
// Root and sentinel reach the file, in the store's user data behind the IndexSpecification, only
// when the store saves (SaveAs, or when the index is destroyed); until then the file's clean flag
// is 0. The index reads nothing but its own file: a damaged file gives wrong answers or status 23,
// never a read outside the mapping or an endless walk, since every walk is bounded by the deepest
// tree that a store can hold, and every step answers a key beyond the one it started from in the
// full order (strictly, in an index of distinct keys) or 23, so a walk can end early but never go
// back or round. GetNext and GetPrevious hand out with that 23 the key and record id that the step
// met, so that a check can name them.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/base/Status.h"
#include "tavrin/base/Uuid.h"
#include "tavrin/indexes/Index.h"
#include "tavrin/indexes/KeyOrder.h"
#include "tavrin/indexes/RedBlackTreeNode.h"
#include "tavrin/records/Key.h"
#include "tavrin/storage/MemoryDataStore.h"
#include "tavrin/storage/UserDataStore.h"

namespace Tavrin::Database {

/// The ordered index of a table: a red-black tree whose nodes are the entries of a MemoryDataStore
/// that the index owns (see the file comment above). No lock of its own: the table's mutex
/// serialises every call.
class RedBlackTreeIndex final : public Index, public UserDataStore {
public:
    /// No entry: the root and sentinel before the first Create or Open.
    static constexpr std::uint32_t NoEntry = 0xFFFFFFFF;

    /// Builds the key layout (Index), then the store, which measures the user data area by
    /// serialising once, then the scratch node. Opens no file. Throws what Index and the store's
    /// constructor throw, and DatabaseException code 4 when the scratch node can't be allocated.
    RedBlackTreeIndex(const IndexSpecification& specification, const FieldList& tableFieldList,
                      const IFieldListFactory& factory, std::uint32_t initialEntries, std::uint32_t growEntries);
    /// Frees the scratch node, then closes the store, which saves root and sentinel into the file.
    ~RedBlackTreeIndex() override;

    /// The nodes in the tree: the store's entries less the sentinel; 0 while no file is open.
    std::uint32_t GetCurrentRecords() override;

    ///@{
    /// Creates the tree file (named by GetFileName, carrying `uuid`) or a temporary one, with an
    /// empty tree. Throws the store's StatusCodeException (47 when a file is open already), or
    /// DatabaseException code 4 when the sentinel can't be stored.
    void Create(const std::string& directory, const std::string& tableName, const Tavrin::Uuid& uuid) override;
    void Create() override;
    ///@}
    /// Opens the tree file, which must carry `uuid`. Never throws: 6 for a missing file; 25 or 23 for
    /// a file made for other key sizes; 23 for a file not closed in order, another Uuid, another
    /// specification, truncated user data, or a root or sentinel that names no entry in use; 17
    /// when a file is open already. On failure the index has no file.
    StatusCode Open(const std::string& directory, const std::string& tableName, const Tavrin::Uuid& uuid) override;
    /// Saves root and sentinel, then copies the file under the name of `directory` and `tableName`.
    StatusCode SaveAs(const std::string& directory, const std::string& tableName) override;
    /// Empties the tree; the file keeps its size. 1 when the store can't be cleared or refilled.
    StatusCode Clear() override;

    // Every operation below answers 16 while no file is open, 23 for a key whose buffer is shorter
    // than GetKeySize() (a key of another index), and 23 when it meets a damaged tree. The key is
    // read as its first GetKeySize() bytes; it need not be bound to a table.

    /// Inserts `key` with `recordId`; an equal key goes behind its equals. The store's status (40 when
    /// it is full and can't grow) with the tree unchanged.
    StatusCode Add(const Key& key, std::uint32_t recordId) override;
    /// Removes the node of `key` (found as Find finds it); 0 also when there is none.
    StatusCode Remove(const Key& key) override;
    /// Exact lookup: 6 when absent; else the record and the key's cursor are set, its bytes untouched.
    StatusCode Find(const Key& key, std::uint32_t& recordId) override;
    /// The smallest key: 6 when the tree is empty (`key` and `recordId` untouched); else the record
    /// is set and the node's key bytes are copied over the key's.
    StatusCode GetFirst(Key& key, std::uint32_t& recordId) override;
    /// The greatest key: 6 when the tree is empty (`key` and `recordId` untouched); else the record
    /// is set and the node's key bytes are copied over the key's.
    StatusCode GetLast(Key& key, std::uint32_t& recordId) override;
    /// The key after the key's bytes in the tree's order: 6 when there is none (`key` and `recordId`
    /// untouched); else the record is set and the node's key bytes are copied over the key's. The
    /// key need not be in the tree, so a walk may remove the entries that it has passed.
    StatusCode GetNext(Key& key, std::uint32_t& recordId) override;
    /// The key before the key's bytes in the tree's order: 6 when there is none (`key` and
    /// `recordId` untouched); else the record is set and the node's key bytes are copied over the
    /// key's. The key need not be in the tree.
    StatusCode GetPrevious(Key& key, std::uint32_t& recordId) override;
    /// Prefix walks: keys that match the key's bytes in all key fields before `fieldId` and in the
    /// first `length` bytes of that field (0: the field is left out; 0xFFFFFFFF: the whole field).
    /// This one gives the first key of the matching range: 29 when `fieldId` is not a compared field
    /// of the key, 23 when `length` exceeds the field's length in the key, 6 when nothing matches
    /// (then the key and `recordId` are unchanged); else the record is set and the node's key bytes
    /// are copied over the key's.
    StatusCode GetFirstEqual(Key& key, std::uint32_t& recordId, std::uint16_t fieldId, std::uint32_t length) override;
    /// The last key of the range that GetFirstEqual describes, with its statuses.
    StatusCode GetLastEqual(Key& key, std::uint32_t& recordId, std::uint16_t fieldId, std::uint32_t length) override;
    /// The key after the key's bytes (as GetNext), if it still matches as GetFirstEqual describes;
    /// the statuses of GetFirstEqual, 6 also when the next key does not match. On success the key's
    /// cursor is set too.
    StatusCode GetNextEqual(Key& key, std::uint32_t& recordId, std::uint16_t fieldId, std::uint32_t length) override;
    /// The key before the key's bytes (as GetPrevious), if it still matches as GetFirstEqual
    /// describes; the statuses of GetFirstEqual, 6 also when the previous key does not match. On
    /// success the key's cursor is set too.
    StatusCode GetPreviousEqual(Key& key, std::uint32_t& recordId, std::uint16_t fieldId,
                                std::uint32_t length) override;
    /// Runs up to 16 descents side by side, each a level at a time with the next node asked for
    /// ahead; answers, cursors and hints are those of Find per key in order.
    void FindMany(Key* const* keys, std::uint32_t count, std::uint32_t* recordIds, StatusCode* statuses) override;
    /// Follows links from the first step on, finding nodes up to 8 ahead of the records it hands to
    /// `sink` and announcing each record as soon as its node is known; in an index without distinct
    /// keys the steps one by one (Index::Walk). Keys and hints end as the steps in order leave them.
    StatusCode Walk(Key& key, bool forward, bool prefix, std::uint16_t fieldId, std::uint32_t length,
                    std::uint32_t count, RecordSink& sink) override;
    /// Writes `uuid` into the file header: the store's status (16 when not open).
    StatusCode SetUuid(const Tavrin::Uuid& uuid) override;
    /// Saves root and sentinel with the store's header, then writes the tree file through to the
    /// disk (MemoryDataStore::Sync): 16 when not open, 0 without a write for a temporary index, else
    /// the status of the save or of the write.
    StatusCode Sync() override;
    /// Closes the tree file without a save and removes it (MemoryDataStore::Discard). Nothing when
    /// no file is open.
    void Discard() noexcept override;

    /// User data of the tree file, little-endian: the IndexSpecification in its serialised form, then
    /// root and sentinel as signed 32-bit numbers. Serialize stops at the first failing append.
    StatusCode SerializeUserData(MessageBuilder& builder) override;
    /// 23 for another specification, a short area, a root or sentinel that names no entry in use, a
    /// sentinel that is not one, a root that does not hang under it, or an empty tree in a store that
    /// holds more; a status of IndexSpecification::Deserialize. Root and sentinel are taken only on
    /// success.
    StatusCode DeserializeUserData(MessageValidator& validator) override;

    /// directory ["/"] stem ".rb.idx", the stem being "tableName-indexName" with blanks as "_"; the
    /// "/" is left out after an empty directory or one that ends in "/" or "\".
    static std::string GetFileName(const std::string& directory, const std::string& tableName,
                                   const std::string& indexName);
    /// The files of one tree index: GetFileName alone.
    static std::vector<std::string> GetFileNames(const std::string& directory, const std::string& tableName,
                                                 const std::string& indexName) {
        return {GetFileName(directory, tableName, indexName)};
    }
    /// Appends the specifications of the tree files in `directory` whose names match the pattern of
    /// `tableName` (RedBlackTreeIndexDirectoryWalker), in the order of the walk, which is the byte
    /// order of the names. The pattern may also find the files of other tables ("a-b" for "a").
    /// Writes nothing. Status 0, 6 for a missing directory, 23 when the table name makes no regular
    /// expression, else the walk's status.
    static StatusCode GetSpecifications(const std::string& directory, const std::string& tableName,
                                        std::vector<IndexSpecification>& specifications);
    /// Copies the tree files of table `tableName` (only its own: named exactly by GetFileName for the
    /// index name stored inside) from the directory `source` to `destination`, as one set
    /// (Tavrin::FileSet::Copy): 0; the walk's status; 23 when both are the same directory; 17 while a
    /// table holds one of the files; else the status of the failed copy, after the copies made are
    /// removed again.
    static StatusCode CopyFiles(const std::string& source, const std::string& destination,
                                const std::string& tableName);

    /// Tests the invariants above by a walk of the whole tree: 0 when they all hold, 23 at the first
    /// that fails, 16 when not open. For tests and diagnosis; it allocates nothing.
    StatusCode CheckTree();

    /// The entry number of the root (the sentinel's when the tree is empty); NoEntry before the
    /// first Create or Open.
    std::uint32_t GetRoot() const noexcept { return root_; }
    /// The entry number of the sentinel; NoEntry before the first Create or Open.
    std::uint32_t GetSentinel() const noexcept { return sentinel_; }
    /// The store of nodes, for its file name and sizes.
    const MemoryDataStore& GetStore() const noexcept { return store_; }

private:
    using Node = RedBlackTreeNode;
    using Side = RedBlackTreeNode::Side;

    /// No walk of a valid tree is longer: a tree of fewer than 2^31 nodes is at most 62 deep.
    static constexpr std::uint32_t MaxWalk = 64;

    /// Where a descent ended: the node that compared 0 (the sentinel if none, or if the descent does
    /// not stop there), the last node visited before the sentinel, and the last comparison's result.
    struct Descent {
        std::uint32_t found;
        std::uint32_t last;
        int result;
    };

    /// The fixed arguments of the four prefix walks.
    struct Prefix {
        std::uint32_t fieldNumber;
        std::uint32_t length;
    };

    // ---- Nodes (RedBlackTreeIndex.cpp) --------------------------------------------------------
    /// 16 when no file is open, 23 when `key` can't hold a key image of this index.
    StatusCode CheckUsable(const Key& key) const noexcept;
    /// The node of entry `id`. A link that names no entry in use (a damaged file) gives the
    /// sentinel's node, so no walk leaves the mapping.
    Node NodeAt(std::uint32_t id) const noexcept {
        unsigned char* bytes = store_.FindUsedEntry(id);
        return Node(bytes != nullptr ? bytes : store_.FindUsedEntry(sentinel_));
    }
    /// The child on `side` of the node of entry `id` (through NodeAt).
    std::uint32_t ChildOf(std::uint32_t id, Side side) { return NodeAt(id).GetChild(side); }
    /// The parent of the node of entry `id` (through NodeAt).
    std::uint32_t ParentOf(std::uint32_t id) { return NodeAt(id).GetParent(); }
    /// Whether the node of entry `id` is red (through NodeAt: the sentinel is black).
    bool IsRed(std::uint32_t id) { return NodeAt(id).IsRed(); }
    /// The side of its parent on which `id` hangs.
    Side SideOf(std::uint32_t id);
    /// Fills the scratch node and stores it as the sentinel; throws code 4 when the store refuses.
    void Initialize();
    /// The key kept with the insertion point: the part of the scratch buffer behind the node image.
    unsigned char* InsertionKey() const noexcept { return scratch_.get() + GetKeySize() + Node::HeaderSize; }

    // ---- Comparison and walks (RedBlackTreeWalk.cpp) ------------------------------------------
    /// CompareKey over the compared fields, then the duplicate tails as signed numbers. Inline: it
    /// runs at every level of every descent.
    int CompareFull(const unsigned char* key, const unsigned char* nodeKey) const noexcept {
        const int result = order_.Compare(key, nodeKey);
        if (result != 0 || duplicateTail_ == 0) return result;
        // The record id as a signed number, so that -1 (not set) orders first.
        const std::int32_t left = DecodeI32(key + duplicateTail_);
        const std::int32_t right = DecodeI32(nodeKey + duplicateTail_);
        return left < right ? -1 : (left > right ? 1 : 0);
    }
    /// Whether `to` lies beyond `from` towards `side` (Right: after, Left: before) in the full order:
    /// strictly in an index of distinct keys, else also when equal. One comparison, inline: a walk
    /// runs it at every step.
    bool Beyond(const unsigned char* from, const unsigned char* to, Side side) const noexcept {
        const int order = CompareFull(from, to);
        const int towards = side == Node::Right ? -order : order;
        return towards > 0 || (towards == 0 && !distinctKeys_);
    }
    /// 0 when `node` (a step's answer from the key image `from`) is the sentinel or lies beyond
    /// `from` towards `side`; else 23, `node` kept: a damaged tree.
    StatusCode CheckStep(const unsigned char* from, std::uint32_t& node, Side side) const noexcept;
    /// CompareKey over the key fields before the prefix's field and the prefix's length of that
    /// field.
    int ComparePrefix(const unsigned char* key, const unsigned char* nodeKey, const Prefix& prefix) const noexcept;
    /// Descends from the root by `compare(nodeKey)`: below 0 left, else right, stopping at 0 when
    /// `stopAtEqual`. 23 when the walk is longer than any valid tree.
    template <class Compare>
    StatusCode Descend(Compare compare, bool stopAtEqual, Descent& descent);
    /// Descend by the full comparison with the key's bytes.
    StatusCode DescendFull(const Key& key, bool stopAtEqual, Descent& descent);
    /// `candidate` when it is an entry in use that holds the key; else the sentinel, which means none.
    std::uint32_t NodeIfHolding(std::uint32_t candidate, const Key& key) const noexcept;
    /// The cursor's node, else (in an index of distinct keys) the last found or delivered node, when
    /// it holds the key; else the sentinel.
    std::uint32_t KnownNode(const Key& key) const noexcept;
    /// Keeps where a failed search ended, for an Add of the same key.
    void RememberInsertionPoint(const Key& key, const Descent& descent) noexcept;
    /// The insertion point kept for `key`: true when it is still good.
    bool RecallInsertionPoint(const Key& key, Descent& descent) const noexcept;
    /// The tree changes: the insertion point kept is no longer good.
    void ForgetInsertionPoint() noexcept { insertionPointValid_ = false; }
    /// The node of `key`, by the cursor or a descent; the sentinel when absent.
    StatusCode FindNode(const Key& key, std::uint32_t& node);
    /// The node that GetNext (side Right) or GetPrevious (side Left) lands on; the sentinel if none.
    /// 23 when the walk is longer than any valid tree or the node is not beyond the key (CheckStep).
    StatusCode StepNode(const Key& key, Side side, std::uint32_t& node);
    /// Leftmost (side Left) or rightmost node under `id`; the sentinel for the sentinel.
    std::uint32_t Extreme(std::uint32_t id, Side side);
    /// In-order neighbour on `side` (Right: successor, Left: predecessor); the sentinel if none.
    std::uint32_t Neighbour(std::uint32_t id, Side side);
    /// GetNext and GetPrevious.
    StatusCode Step(Key& key, std::uint32_t& recordId, Side side);
    /// 29 or 23 as the prefix walks answer; else the field's number in the key and the length.
    StatusCode PreparePrefix(const Key& key, std::uint16_t fieldId, std::uint32_t length, Prefix& prefix);
    /// GetFirstEqual (side Left) and GetLastEqual (side Right), by PrefixBound.
    StatusCode PrefixEnd(Key& key, std::uint32_t& recordId, std::uint16_t fieldId, std::uint32_t length, Side side);
    /// The first (side Left) or last (side Right) node that matches the prefix, by one descent that
    /// keeps the last match and goes on towards `side`; the sentinel when none matches. False when
    /// the walk is longer than any valid tree.
    bool PrefixBound(const Key& key, const Prefix& prefix, Side side, std::uint32_t& bound);
    /// GetNextEqual and GetPreviousEqual: the step of Step, if it still matches.
    StatusCode PrefixStep(Key& key, std::uint32_t& recordId, std::uint16_t fieldId, std::uint32_t length,
                          Side side);
    /// 6 for the sentinel; else gives the node's record and copies its key bytes into `key`.
    StatusCode Deliver(std::uint32_t node, Key& key, std::uint32_t& recordId);

    // ---- Batch reads (RedBlackTreeBatch.cpp) ---------------------------------------------------
    /// What a batch of lookups leaves in the hints: the node of the last key in order that was
    /// found, and where the last key in order whose descent failed ended.
    struct BatchHints {
        std::uint32_t foundKey = NoEntry;
        std::uint32_t found = NoEntry;
        std::uint32_t failedKey = NoEntry;
        Descent failed{};
    };
    /// Find's checks and shortcuts for key `k` of a batch: false when they answered it.
    bool StartFind(Key& key, std::uint32_t k, std::uint32_t& recordId, StatusCode& status, BatchHints& hints);
    /// One level of key `k`'s descent at node `id`: false when the descent has its answer.
    bool AdvanceFind(Key& key, std::uint32_t k, std::uint32_t& id, std::uint32_t& depth, std::uint32_t& recordId,
                     StatusCode& status, BatchHints& hints);
    /// Key `k` found at `node`: its cursor, record and status, and the hint of the last found.
    void DeliverFound(Key& key, std::uint32_t k, std::uint32_t node, std::uint32_t& recordId, StatusCode& status,
                      BatchHints& hints);

    // ---- Changes of shape (RedBlackTreeUpdate.cpp) --------------------------------------------
    /// Rotates `id` down to `side`: its child on the other side takes its place.
    void Rotate(std::uint32_t id, Side side);
    /// Puts `replacement` where `id` hangs under its parent (or at the root) and sets the parent of
    /// `replacement`, also when it is the sentinel.
    void Transplant(std::uint32_t id, std::uint32_t replacement);
    /// Colours the new node `id` red and restores the red-black rules on the way up by recolouring
    /// and rotating; the root ends black. Bounded by MaxWalk steps.
    void InsertFixup(std::uint32_t id);
    /// Unlinks `node` and restores the colours; `node` keeps the colour of the node that left the
    /// path.
    void Unlink(std::uint32_t node);
    /// Restores the red-black rules below a removal: `id` (possibly the sentinel, whose parent Unlink
    /// set) carries one black too few on its path. Bounded by MaxWalk steps.
    void RemoveFixup(std::uint32_t id);

    // ---- The validator (RedBlackTreeCheck.cpp) ------------------------------------------------
    /// Checks the subtree under `id`, whose parent must be `parent`, and gives its black height and
    /// size; 23 at the first fault.
    StatusCode CheckSubtree(std::uint32_t id, std::uint32_t parent, std::uint32_t depth, std::uint32_t& blackHeight,
                            std::uint32_t& nodes);
    /// Checks that an in-order walk gives the keys in ascending order of the full comparison; 23 at
    /// the first that is out of order.
    StatusCode CheckOrder();

    std::uint32_t root_ = NoEntry;
    std::uint32_t sentinel_ = NoEntry;
    /// The order of key images, chosen once for the key layout.
    KeyOrder order_;
    /// True when no two nodes can hold equal full keys, so the last node found is a safe hint.
    bool distinctKeys_;
    /// Offset of the record id tail in a key of a Duplicate index; 0 in any other index.
    std::uint32_t duplicateTail_;
    ///@{
    /// The hints (see the top of this file).
    std::uint32_t lastNode_ = NoEntry;
    Descent insertionPoint_{};
    bool insertionPointValid_ = false;
    ///@}
    /// One node image, GetKeySize() + 20 bytes, built here before it is handed to the store, then
    /// the key of the insertion point, GetKeySize() bytes.
    std::unique_ptr<unsigned char[]> scratch_;
    /// Owner of every node; its user data store is this index. Declared last: its constructor
    /// serialises the user data, which reads root and sentinel.
    MemoryDataStore store_;
};

}  // namespace Tavrin::Database
