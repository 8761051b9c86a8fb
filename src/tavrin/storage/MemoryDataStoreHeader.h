#pragma once
// The layout of a memory store file behind its common header (DataStoreHeader.h). Data area
// offsets; file offsets are 17 more. Little-endian, unaligned.
//
//   37      1   format            always 2; another value is status 21
//   38      4   firstEntryOffset  data area offset of entry 0: headerSize + userDataSize
//   42      4   entryStride       recordSize + 8
//   46      4   freeHead          signed id of the first free entry, -1 when none
//   50      4   freeTail          signed id of the last free entry, -1 when none
//   54          user data area, userDataSize bytes (headerSize is 54)
//   firstEntryOffset + i * entryStride: entry i
//
// Entry i:
//   0   1   used     bit 0 set when the entry holds a record; written as 1 or 0
//   1   3            never written
//   4   4   next     signed id of the next free entry; -1 at the end of the list and in every used entry
//   8   recordSize   the record
//
// The file is exactly 17 + firstEntryOffset + maxEntries * entryStride bytes long. Ids are signed
// 32-bit numbers wherever they are compared, so a store has fewer than 2^31 entries.

#include <cstdint>

#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/base/Status.h"
#include "tavrin/storage/DataStoreHeader.h"
#include "tavrin/storage/EntryTable.h"

namespace Tavrin::Database {

struct MemoryDataStoreHeader {
    static constexpr std::uint8_t Format = 2;
    static constexpr std::uint32_t FreeHeadOffset = 46;
    static constexpr std::uint32_t FreeTailOffset = 50;
    static constexpr std::uint32_t Size = 54;  // common header and this extension

    // The entry's front and the free list's end (EntryTable.h).
    static constexpr std::uint32_t EntryUsedOffset = EntryTable::UsedOffset;
    static constexpr std::uint32_t EntryFrontSize = EntryTable::FrontSize;
    static constexpr std::uint8_t EntryUsedBit = EntryTable::UsedBit;
    static constexpr std::int32_t NoEntry = EntryTable::NoEntry;

    std::uint32_t firstEntryOffset = 0;
    std::uint32_t entryStride = 0;
    std::int32_t freeHead = NoEntry;
    std::int32_t freeTail = NoEntry;

    /// Appends the 17 bytes of the extension.
    StatusCode Serialize(MessageBuilder& builder) const;
    /// Reads the extension: 21 for a format byte other than 2, 23 when it is cut short.
    StatusCode Deserialize(MessageValidator& validator);
};

/// The whole header of a memory store, in file order.
struct MemoryStoreHeaders {
    const DataStoreHeader& common;
    const MemoryDataStoreHeader& extension;

    StatusCode Serialize(MessageBuilder& builder) const {
        const StatusCode status = common.Serialize(builder);
        return status != Status::Success ? status : extension.Serialize(builder);
    }
};

}  // namespace Tavrin::Database
