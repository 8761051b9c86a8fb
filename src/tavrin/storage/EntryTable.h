#pragma once
// The entries of a store file and the free list through them, kept alike by the memory store (an
// entry is its front and its record) and the disk store (an entry is its front alone; the records lie
// in the record file). Entry i stands at data area offset firstEntryOffset + i * entryStride, and
// begins with an 8-byte front, little-endian, unaligned:
//
//   0   1   used   bit 0 set when the entry holds a record; written as 1 or 0
//   1   3          not written here: a memory store leaves them 0; a disk store keeps its write-back
//                  mark in byte 1 (DiskDataStoreHeader.h)
//   4   4   next   signed id of the next free entry; -1 at the end of the list and in every used entry
//
// Free entries form a singly linked list from freeHead to freeTail: new entries are appended at its
// tail in rising id order, a freed entry is pushed at its head, so a freed id is the next one taken.
//
// Order of the writes. The bookkeeping lives in the mapping, and a process may die between any two
// stores into it. The writes of each operation are ordered so that such a death leaves no entry that
// is both in use and on the free list, and no entry marked in use before its record is in place; at
// worst one entry is leaked (neither used nor free), or, inside a growth step, the new entries are.
// The free list is empty exactly when freeHead is -1; freeTail is looked at only when it is not.
// - Take and MarkUsed (an add): freeHead moves on (and freeTail becomes -1 if the list is now empty),
//   the entry's next is cleared; the owner puts the record in place; then the used flag is set and
//   currentEntries counted up.
// - Free (a removal): the used flag is cleared and currentEntries counted down first; then the
//   entry's next points at the old head, freeTail is set if the list was empty, and freeHead last.
// - Link (creation, growth, clearing): the entries are written while no list reaches them; then an
//   empty list gets freeTail before freeHead, a non-empty one its old tail's next before freeTail.
// - Append (growth): maxEntries is written as soon as the file has its new length, so that the
//   header and the file agree again, then the new entries are linked. A death before maxEntries is
//   written leaves zero entries behind the last one, which CountSurplus finds at the next open.
// - Clear: freeHead becomes -1 and currentEntries 0 before the entries are rewritten as free.
// - The count: a death between a used flag and currentEntries leaves the count one off; Repair
//   counts the used flags again.

#include <cstddef>
#include <cstdint>

#include "tavrin/base/Encoding.h"
#include "tavrin/base/Status.h"
#include "tavrin/storage/DataStoreHeader.h"
#include "tavrin/storage/FileMappedMemoryManager.h"

namespace Tavrin::Database {

/// A view of a store's entries and free list in its mapped data area; every change of the header
/// fields it keeps (currentEntries, maxEntries, freeHead, freeTail) is written through to the
/// mapping at once. Made for one operation: it holds the data area's address, which a growth of the
/// mapping invalidates. Not thread-safe.
class EntryTable {
public:
    /// Data area offset of the used flag in an entry's front.
    static constexpr std::uint32_t UsedOffset = 0;
    /// Data area offset of the next link in an entry's front.
    static constexpr std::uint32_t NextOffset = 4;
    /// Bytes of an entry's front.
    static constexpr std::uint32_t FrontSize = 8;
    /// The bit of the used flag.
    static constexpr std::uint8_t UsedBit = 1;
    /// The id that ends the free list.
    static constexpr std::int32_t NoEntry = -1;
    /// The most entries a store has: ids are compared as signed 32-bit numbers.
    static constexpr std::uint32_t MaxEntries = 0x7FFFFFFF;
    /// The largest data area of a mapped file: the file stays below 4 GiB.
    static constexpr std::uint64_t MaxDataSize = 0xFFFFFFFFull - FileMappedMemoryManager::HeaderSize;

    /// Where a store keeps its entries and the ends of its free list in the data area.
    struct Layout {
        std::uint32_t firstEntryOffset;  ///< data area offset of entry 0
        std::uint32_t entryStride;       ///< bytes from one entry to the next
        std::uint32_t freeHeadOffset;    ///< data area offset of the header's freeHead
        std::uint32_t freeTailOffset;    ///< data area offset of the header's freeTail
    };

    /// A view of the entries in `data` laid out as `layout`, whose counts are `header`'s and whose
    /// free list ends are `freeHead` and `freeTail`; all three are written as the entries change.
    EntryTable(unsigned char* data, const Layout& layout, DataStoreHeader& header, std::int32_t& freeHead,
               std::int32_t& freeTail) noexcept
        : data_(data), layout_(layout), header_(header), freeHead_(freeHead), freeTail_(freeTail) {}

    /// The front of entry `id`; no check.
    unsigned char* EntryAt(std::uint32_t id) const noexcept {
        return data_ + layout_.firstEntryOffset + static_cast<std::size_t>(id) * layout_.entryStride;
    }
    /// Whether `id` is an entry and holds a record.
    bool IsUsed(std::uint32_t id) const noexcept {
        return id < header_.maxEntries && (EntryAt(id)[UsedOffset] & UsedBit) != 0;
    }
    /// Whether the free list has an entry.
    bool HasFree() const noexcept { return freeHead_ != NoEntry; }

    /// Takes the head of the free list off the list and gives its id, not yet marked used: 40 when
    /// the list is empty, 23 when its head is in use or links out of range (nothing is taken).
    StatusCode Take(std::uint32_t& id) noexcept;
    /// Marks a taken entry used and counts it.
    void MarkUsed(std::uint32_t id) noexcept;
    /// Frees the used entry `id` and pushes it at the head of the free list.
    void Free(std::uint32_t id) noexcept;
    /// Makes every entry free again, ids from 0 in rising order.
    void Clear() noexcept;
    /// Adds `count` new entries behind the last (the mapping has room for them) and links them.
    void Append(std::uint32_t count) noexcept;
    /// The used entry of the lowest id from `from` on: 0 and its id, or 6 when there is none.
    StatusCode Scan(std::uint64_t from, std::uint32_t& id) const noexcept;
    /// Counts the used flags again, and makes the free list again from them when it does not lead
    /// through exactly the entries not in use. A sound table is not written.
    void Repair() noexcept;

    /// Whether `id` is an entry id below `maxEntries`, or -1.
    static bool IsIdOrNone(std::int32_t id, std::uint32_t maxEntries) noexcept {
        return id == NoEntry || (id >= 0 && static_cast<std::uint32_t>(id) < maxEntries);
    }
    /// The whole entries of zero bytes that a data area of `dataSize` bytes holds behind `maxEntries`
    /// entries, which a process that died inside a growth step leaves: false when the area is shorter
    /// than `maxEntries` entries or ends in anything but whole entries of zeros.
    static bool CountSurplus(const unsigned char* data, std::uint64_t dataSize, const Layout& layout,
                             std::uint32_t maxEntries, std::uint32_t& surplus) noexcept;

private:
    void Link(std::uint32_t first, std::uint32_t count) noexcept;
    void Relink() noexcept;
    static std::int32_t NextOf(const unsigned char* entry) noexcept { return DecodeI32(entry + NextOffset); }
    static void SetNext(unsigned char* entry, std::int32_t next) noexcept { EncodeI32(entry + NextOffset, next); }
    void SetCurrentEntries(std::uint32_t value) noexcept;
    void SetMaxEntries(std::uint32_t value) noexcept;
    void SetFreeHead(std::int32_t value) noexcept;
    void SetFreeTail(std::int32_t value) noexcept;

    unsigned char* data_;
    Layout layout_;
    DataStoreHeader& header_;
    std::int32_t& freeHead_;
    std::int32_t& freeTail_;
};

}  // namespace Tavrin::Database
