#pragma once
// The header that every store file begins its data area with (data area offset 0 is file offset 17,
// behind the file header of FileMappedMemoryManager). 37 bytes, little-endian, unaligned, no padding:
//
//   offset  width  field           meaning
//   0       1      format          always 2
//   1       4      storeType       0 memory store, 1 disk store
//   5       4      valid           1 when the last save wrote the user data; 0 makes the file unreadable
//   9       4      headerSize      length of the whole header with the store's extension
//   13      4      userDataSize    bytes of the user data area, which stands at offset headerSize
//   17      4      recordSize      bytes of one record
//   21      4      initialEntries  entries made at creation
//   25      4      growEntries     entries added by one growth step; 0: the store never grows
//   29      4      currentEntries  entries in use
//   33      4      maxEntries      entries that exist, in use or free
//
// Each kind of store follows it at once with an extension of its own.

#include <atomic>
#include <cstdint>

#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/base/Status.h"

namespace Tavrin::Database {

/// The common header of every store file, as read from and written to the data area (see the file
/// comment above for the layout and the meaning of the fields).
struct DataStoreHeader {
    /// The format byte of this layout.
    static constexpr std::uint8_t Format = 2;
    /// storeType of a memory store.
    static constexpr std::uint32_t MemoryStoreType = 0;
    /// storeType of a disk store.
    static constexpr std::uint32_t DiskStoreType = 1;

    ///@{
    /// Data area offsets of the fields that a store keeps up to date in the mapping between saves.
    static constexpr std::uint32_t CurrentEntriesOffset = 29;
    static constexpr std::uint32_t MaxEntriesOffset = 33;
    ///@}
    /// Bytes of the serialised header.
    static constexpr std::uint32_t Size = 37;

    std::uint32_t storeType = 0;
    bool valid = false;
    std::uint32_t headerSize = 0;
    std::uint32_t userDataSize = 0;
    std::uint32_t recordSize = 0;
    std::uint32_t initialEntries = 0;
    std::uint32_t growEntries = 0;
    std::uint32_t currentEntries = 0;
    std::uint32_t maxEntries = 0;

    ///@{
    /// Reads and writes currentEntries or maxEntries atomically. A table's count accessors read
    /// them without the table's lock while a writer changes them under it; so every change made
    /// while a store is open goes through StoreCounter, and such a read goes through LoadCounter:
    /// it sees the old count or the new one and is no data race. Relaxed: a count orders nothing.
    static std::uint32_t LoadCounter(const std::uint32_t& counter) noexcept {
        return std::atomic_ref<std::uint32_t>(const_cast<std::uint32_t&>(counter)).load(std::memory_order_relaxed);
    }
    static void StoreCounter(std::uint32_t& counter, std::uint32_t value) noexcept {
        std::atomic_ref<std::uint32_t>(counter).store(value, std::memory_order_relaxed);
    }
    ///@}

    /// Appends the 37 bytes; the builder's status when they do not fit.
    StatusCode Serialize(MessageBuilder& builder) const;
    /// Reads the 37 bytes and checks them against the validator's length: status 23 when a field is
    /// missing, the format is not 2, `valid` is 0, or the user data area runs past the end.
    StatusCode Deserialize(MessageValidator& validator);
    /// As Deserialize(validator), for a data area of `dataSize` bytes of which the validator holds
    /// only a first part (at least the 37 bytes): how a reader that does not map the file checks
    /// that the user data area lies inside it.
    StatusCode Deserialize(MessageValidator& validator, std::uint64_t dataSize);
};

}  // namespace Tavrin::Database
