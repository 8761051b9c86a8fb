#pragma once
// The write-back record cache of a disk store: a fixed number of record-sized slots, found by entry
// id, ordered from the most to the least recently stored. The cache does no file work: Put without
// force tells the store that it is full, GetOldest which record to write back before a forced Put
// takes that record's slot.
//
// Invariants:
// 1. The age list always holds every slot: occupied slots first, from the most recently stored to
//    the oldest, then the empty ones (id NoEntry).
// 2. The id table holds exactly the occupied slots, each under its id.
// 3. Every occupied slot counts as changed: the cache has no clean state.
//
// Cost: the slots, their bytes, the id table and the id order are allocated once, at construction,
// and nothing allocates after it. The id table is open addressing with linear probing at a load of
// at most one half, so a lookup reads one or two neighbouring cells whatever the number of slots;
// the age list is intrusive, its links inside the slots. A Put is one lookup (two when it takes an
// occupied slot), one list splice and one copy of a record; Find is one lookup and changes no age.
// The walk in id order sorts the occupied slots when the set of ids changed since the last walk,
// so a save pays for the order once and the operations between saves never do. Pointers given out
// point into the slots' bytes and stay valid until the slot is taken by another id. Not
// thread-safe: the store's owner locks.

#include <boost/intrusive/list.hpp>

#include <cstdint>
#include <memory>

#include "tavrin/base/Status.h"

namespace Tavrin::Database {

/// A fixed set of record-sized slots found by entry id and kept in age order; the write-back cache
/// of a DiskDataStore (see the file comment above). Not thread-safe.
class DataStoreCache {
public:
    /// The id of an empty slot.
    static constexpr std::uint32_t NoEntry = 0xFFFFFFFF;

    /// Makes `cacheBytes / entrySize` slots of `entrySize` bytes, all empty, in one allocation of
    /// their bytes and one of their links. Throws StatusCodeException 23 when `entrySize` is 0 or
    /// `cacheBytes` is less than `entrySize`, and 41 when the slots can't be allocated (also when
    /// they would be more than 2^31 - 1, the number of ids a store has).
    DataStoreCache(std::uint32_t entrySize, std::uint64_t cacheBytes);
    /// Not copyable: the cache owns its slots.
    DataStoreCache(const DataStoreCache&) = delete;
    /// Not copyable: the cache owns its slots.
    DataStoreCache& operator=(const DataStoreCache&) = delete;
    /// Frees the slots; writes nothing anywhere.
    ~DataStoreCache();

    /// Copies `entrySize` bytes of `record` into the slot of `id` and makes it the most recently
    /// stored. An id that is cached keeps its slot; a new id takes the oldest slot if it is empty,
    /// or, with `force`, also if it holds a record, which is dropped. 40 (nothing changed) when the
    /// new id finds every slot occupied and `force` is false.
    /// `stored`, when given, is set to the slot's bytes on success.
    StatusCode Put(std::uint32_t id, const void* record, bool force, unsigned char** stored = nullptr) noexcept;
    /// Empties the slot of `id`, which is the next one taken; its bytes stay. Nothing when not cached.
    void Erase(std::uint32_t id) noexcept;
    /// Empties every slot.
    void Clear() noexcept;
    /// The bytes of `id`'s slot, or null when it is not cached; the age order stays as it is.
    unsigned char* Find(std::uint32_t id) noexcept;
    /// The cached id of the lowest number and its slot's bytes; 6 when the cache is empty (`id` and
    /// `record` untouched).
    StatusCode GetFirst(std::uint32_t& id, unsigned char*& record) noexcept;
    /// The cached id next above `id` and its slot's bytes: 23 when `id` is not cached, 6 when it is
    /// the highest (`id` and `record` untouched then).
    StatusCode GetNext(std::uint32_t& id, unsigned char*& record) noexcept;
    /// The least recently stored id and its slot's bytes, which stay where they are in the age
    /// order; 6 when the cache is empty.
    StatusCode GetOldest(std::uint32_t& id, unsigned char*& record) noexcept;

    /// The number of slots.
    std::uint32_t GetNumEntries() const noexcept { return numEntries_; }
    /// The bytes of one slot.
    std::uint32_t GetEntrySize() const noexcept { return entrySize_; }
    /// The number of occupied slots.
    std::uint32_t GetCount() const noexcept { return count_; }

private:
    using LinkMode = boost::intrusive::link_mode<boost::intrusive::normal_link>;
    struct Slot : boost::intrusive::list_base_hook<LinkMode> {
        std::uint32_t id = NoEntry;
    };
    using AgeList = boost::intrusive::list<Slot, boost::intrusive::constant_time_size<false>>;
    /// A cell of the id table: an id and the number of its slot; id NoEntry when the cell is free.
    struct Cell {
        std::uint32_t id = NoEntry;
        std::uint32_t slot = 0;
    };

    unsigned char* BytesOf(std::uint32_t slot) const noexcept {
        return buffer_.get() + static_cast<std::size_t>(slot) * entrySize_;
    }
    std::uint32_t NumberOf(const Slot& slot) const noexcept { return static_cast<std::uint32_t>(&slot - slots_.get()); }
    void MakeNewest(Slot& slot) noexcept { ages_.splice(ages_.begin(), ages_, ages_.iterator_to(slot)); }

    ///@{
    /// The id table.
    std::uint32_t HomeOf(std::uint32_t id) const noexcept;
    /// The cell that holds `id`, or the free cell where its probe ends.
    std::uint32_t Probe(std::uint32_t id) const noexcept;
    void Enter(std::uint32_t id, std::uint32_t slot) noexcept;
    void Remove(std::uint32_t id) noexcept;
    ///@}
    /// Sorts the occupied slots by id when the set of ids changed since the last sort.
    void Order() noexcept;
    /// The position in the id order of `id`, which must be cached.
    std::uint32_t PositionOf(std::uint32_t id) const noexcept;

    std::unique_ptr<unsigned char[]> buffer_;
    std::uint32_t numEntries_ = 0;
    std::uint32_t entrySize_ = 0;
    std::uint32_t count_ = 0;
    std::unique_ptr<Slot[]> slots_;
    AgeList ages_;  // declared after the slots, so that it is destroyed before them
    std::unique_ptr<Cell[]> cells_;
    std::uint32_t cellMask_ = 0;   // the number of cells less 1; a power of two less 1
    std::uint32_t cellShift_ = 0;  // 32 less the bits of a cell number
    std::unique_ptr<std::uint32_t[]> order_;  // the occupied slots by rising id, when ordered_
    bool ordered_ = false;
};

}  // namespace Tavrin::Database
