#pragma once
// HashIndex::EntryHandler: the entry file of a hash index. The file is the 17-byte header of
// FileMappedMemoryManager.h, then this block and the entries, little-endian and unaligned. Data area
// offsets (file offsets are 17 more):
//
//    0   4  owner        reserved: an address in the writing process where addresses are 32 bits
//    4   4  entries      reserved, the same; this build writes 0 into both and never reads them
//    8   4  maxEntries   entries that exist
//   12   4  usedEntries  entries in use, each on one bucket's chain
//   16   4  entrySize    GetKeySize() + 20
//   20   4  freeHead     offset of the first free entry, -1 when none
//   24   4  freeTail     offset of the last free entry, -1 when none
//   28      the entry area: maxEntries entries of entrySize bytes
//
// The entry at offset o of the entry area (o a multiple of entrySize; file offset 45 + o):
//
//    0   4  offset       o itself
//    4   4  next         next entry of its chain or of the free list, -1 at the end
//    8   4  previous     previous entry of its chain, -1 at the head; not kept up on the free list
//   12   4  record id    signed; -1 in a free entry, and that is the test of whether an entry is free
//   16   4  key offset   o + 20
//   20      the key image, GetKeySize() bytes
//
// The file is exactly 17 + 28 + maxEntries * entrySize bytes long, but for one case that Open heals:
// a file extended by whole entries of zero bytes whose block was not brought up to date (a process
// that died inside an extension) gets the extra entries linked behind the free list.
//
// The free list is a stack: Allocate takes its head, Free pushes onto its head, and entries that an
// extension adds join at its tail. A free entry keeps its key bytes and its previous link.
//
// Every field of the block is read and written in the mapping at its offset (the handler holds no
// copy but the entry area's size, which changes with maxEntries only), so the file is up to date
// after every operation. Offsets read from the mapping are checked before they are followed.

#include <cstdint>
#include <string>

#include "tavrin/base/Encoding.h"
#include "tavrin/base/Status.h"
#include "tavrin/base/Uuid.h"
#include "tavrin/indexes/HashIndex.h"
#include "tavrin/storage/FileMappedMemoryManager.h"

namespace Tavrin::Database {

/// The entry file of a HashIndex (layout above). Owns the file's FileMappedMemoryManager; holds its
/// index unowned. Not thread-safe: the index's table guards it.
class HashIndex::EntryHandler {
public:
    ///@{
    /// Data area offsets of the block's fields, and the block's size.
    static constexpr std::uint32_t OwnerOffset = 0;
    static constexpr std::uint32_t EntriesOffset = 4;
    static constexpr std::uint32_t MaxEntriesOffset = 8;
    static constexpr std::uint32_t UsedEntriesOffset = 12;
    static constexpr std::uint32_t EntrySizeOffset = 16;
    static constexpr std::uint32_t FreeHeadOffset = 20;
    static constexpr std::uint32_t FreeTailOffset = 24;
    static constexpr std::uint32_t BlockSize = 28;
    ///@}
    ///@{
    /// Offsets of an entry's fields, and the size of all of them before the key.
    static constexpr std::uint32_t EntryOffsetOffset = 0;
    static constexpr std::uint32_t NextOffset = 4;
    static constexpr std::uint32_t PreviousOffset = 8;
    static constexpr std::uint32_t RecordIdOffset = 12;
    static constexpr std::uint32_t KeyOffsetOffset = 16;
    static constexpr std::uint32_t EntryHeaderSize = 20;
    ///@}

    /// A handler of `owner`'s entries with no file.
    explicit EntryHandler(const HashIndex& owner) noexcept;
    EntryHandler(const EntryHandler&) = delete;
    EntryHandler& operator=(const EntryHandler&) = delete;
    /// Closes the file as Release does.
    ~EntryHandler();

    /// Makes the file with `entries` free entries, named `fileName` with `uuid` (complete before it
    /// takes the name), or temporary when `fileName` is null. Throws DatabaseException 12 "invalid
    /// entry list size for index <%s>" for entries that don't fit a file, else what the manager
    /// throws; nothing is open then.
    void Create(const std::string* fileName, const Tavrin::Uuid* uuid, std::uint32_t entries);
    /// Opens the file, which must carry `uuid` and fit the layout (see the head of this file): 0, or
    /// 1 with nothing open.
    StatusCode Open(const std::string& fileName, const Tavrin::Uuid& uuid) noexcept;
    /// Grows the file to `maxEntries` entries; the new ones join the free list at its tail. Throws
    /// StatusCodeException 23 for fewer entries than there are, 22 for more than a file holds,
    /// else what the resize throws (40 for a full disk), and the file is as it was then.
    void Extend(std::uint32_t maxEntries);
    /// Makes every entry free again: usedEntries 0, and all entries linked anew in offset order.
    void Clear() noexcept;
    /// Closes the file with its clean flag set; nothing when none is open.
    void Release() noexcept;
    /// Removes the file from its directory and closes it without the clean flag (FileMappedMemoryManager::Discard).
    void Discard() noexcept;
    /// The file's manager: its name, Uuid, Sync and SaveAs.
    FileMappedMemoryManager& GetManager() noexcept { return manager_; }
    /// Whether the file is open.
    bool IsOpen() const noexcept { return manager_.IsMapped(); }

    /// Takes the free list's head for `key` (GetKeySize() bytes) and `recordId`; `entry` is its
    /// offset, its links are the caller's. 40 when the list is empty, 23 when its head names no
    /// entry; `entry` is untouched then.
    StatusCode Allocate(const unsigned char* key, std::uint32_t recordId, std::uint32_t& entry) noexcept;
    /// Gives entry `entry`, unlinked from its chain, back to the free list.
    void Free(std::uint32_t entry) noexcept;
    /// Walks the chain from `head` for the entry that matches `key`: its compared fields are equal by
    /// CompareKey and, in a Duplicate index, so are the record ids behind them. 0 with `entry` set,
    /// 6 at the end of the chain, 23 for a link that names no entry or a chain longer than there are
    /// entries.
    StatusCode Find(std::uint32_t head, const unsigned char* key, std::uint32_t& entry) const noexcept;
    /// Asks for the lines of entry `entry` ahead of their use, when it names one; reads nothing.
    /// The walk of a chain of two, the usual length, then waits for both entries at once.
    void Prefetch(std::uint32_t entry) const noexcept {
        if (!IsEntry(entry)) return;
        __builtin_prefetch(area_ + entry);
        __builtin_prefetch(area_ + entry + entrySize_ - 1);
    }
    /// 0 when the chain from `head` ends within as many steps as there are entries and every link of
    /// it names an entry, else 23.
    StatusCode CheckChain(std::uint32_t head) const noexcept;

    ///@{
    /// The block's fields, read from the mapping; only while open.
    std::uint32_t GetMaxEntries() const noexcept { return Read(MaxEntriesOffset); }
    std::uint32_t GetUsedEntries() const noexcept { return Read(UsedEntriesOffset); }
    std::uint32_t GetEntrySize() const noexcept { return Read(EntrySizeOffset); }
    std::uint32_t GetFreeHead() const noexcept { return Read(FreeHeadOffset); }
    std::uint32_t GetFreeTail() const noexcept { return Read(FreeTailOffset); }
    ///@}

    /// Whether `offset` is the offset of an entry: inside the entry area and a multiple of the
    /// entry size. Every offset read from the mapping is tested with it before it is followed.
    bool IsEntry(std::uint32_t offset) const noexcept {
        // offset % entrySize_ == 0 by a multiplication: a chain step then costs no division.
        return offset < areaSize_ && std::uint64_t{offset} * entryReciprocal_ <= entryReciprocal_ - 1;
    }
    ///@{
    /// The fields of the entry at `entry`, which IsEntry must accept.
    std::uint32_t GetNext(std::uint32_t entry) const noexcept { return DecodeU32(area_ + entry + NextOffset); }
    std::uint32_t GetPrevious(std::uint32_t entry) const noexcept { return DecodeU32(area_ + entry + PreviousOffset); }
    std::uint32_t GetRecordId(std::uint32_t entry) const noexcept { return DecodeU32(area_ + entry + RecordIdOffset); }
    const unsigned char* GetKey(std::uint32_t entry) const noexcept { return area_ + entry + EntryHeaderSize; }
    void SetNext(std::uint32_t entry, std::uint32_t next) noexcept { EncodeU32(area_ + entry + NextOffset, next); }
    void SetPrevious(std::uint32_t entry, std::uint32_t previous) noexcept {
        EncodeU32(area_ + entry + PreviousOffset, previous);
    }
    void SetRecordId(std::uint32_t entry, std::uint32_t recordId) noexcept {
        EncodeU32(area_ + entry + RecordIdOffset, recordId);
    }
    ///@}

    /// The six lines that describe entry `entry` in a check's report: offset, previous, next,
    /// record id (signed), key offset and the key's ToLogString.
    std::string Dump(std::uint32_t entry) const;

    /// Throws DatabaseException 12 with a report when the free list has a loop, a link that names no
    /// entry, or a tail that is not its last entry. Allocates; for tests and diagnosis.
    void CheckFreeListIntegrity() const;
    /// Throws DatabaseException 12 with a report when an entry in use is not found on the chain of
    /// its key's bucket in `buckets`, a free entry is not on the free list, or usedEntries differs
    /// from the entries in use. Allocates; for tests and diagnosis.
    void CheckEntryListIntegrity(const BucketHandler& buckets) const;

private:
    std::uint32_t Read(std::uint32_t fieldOffset) const noexcept { return DecodeU32(block_ + fieldOffset); }
    void Write(std::uint32_t fieldOffset, std::uint32_t value) noexcept { EncodeU32(block_ + fieldOffset, value); }
    /// Takes the data area at `data`, of `dataSize` bytes, into the pointers.
    void Map(unsigned char* data) noexcept;
    /// maxEntries in the mapping and the entry area's size beside it.
    void SetMaxEntries(std::uint32_t maxEntries) noexcept;
    /// Links `count` new entries behind the last one onto the free list's tail.
    void LinkEntries(std::uint32_t count) noexcept;
    /// Checks the mapped block against the file's size and this index; links whole entries that
    /// the file has beyond maxEntries. Throws StatusCodeException 23 at `operation`.
    void Adopt(const char* operation);
    /// Whether the entry at `entry` holds `key`.
    bool Matches(std::uint32_t entry, const unsigned char* key) const noexcept;

    const HashIndex& owner_;
    FileMappedMemoryManager manager_;
    /// The block at the start of the data area, and the entry area behind it; null with no file.
    unsigned char* block_ = nullptr;
    unsigned char* area_ = nullptr;
    /// maxEntries * entrySize: the bytes of the entry area in use as entries.
    std::uint32_t areaSize_ = 0;
    /// GetKeySize() + 20; the file's entrySize must be this.
    std::uint32_t entrySize_;
    /// 2^64 / entrySize_, rounded up: n is a multiple of entrySize_ when n * this wraps below it.
    std::uint64_t entryReciprocal_;
};

}  // namespace Tavrin::Database
