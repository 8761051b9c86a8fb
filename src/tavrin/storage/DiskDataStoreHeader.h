#pragma once
// The two files of a disk store.
//
// The control file `<name>` is a mapped file (file header: FileMappedMemoryManager.h) whose data
// area opens with the common header (DataStoreHeader.h, storeType 1, headerSize 58) and this
// extension. Data area offsets; file offsets are 17 more. Little-endian, unaligned:
//
//   37      1   format            always 2; another value is status 23
//   38      4   scratchOffset     data area offset of the scratch record: headerSize + userDataSize
//   42      4   entryTableOffset  data area offset of entry 0: scratchOffset + recordSize
//   46      4   cacheSize         cache size in KB of the store that saved the file; informative
//   50      4   freeHead          signed id of the first free entry, -1 when none
//   54      4   freeTail          signed id of the last free entry, -1 when none
//   58          user data area, userDataSize bytes
//   scratchOffset                 the scratch record, recordSize bytes, meaningless between calls
//   entryTableOffset + 8 * i      entry i: the 8-byte front of EntryTable.h, and in its byte 1 the
//                                 write-back mark below
//
// The control file is exactly 17 + entryTableOffset + 8 * maxEntries bytes long.
//
// The record file `<name>.data`:
//
//   0                             16  the binary Uuid, the one in the control file's header
//   16 + recordSize * id          recordSize  the record of entry id (a 64-bit position)
//
// and is exactly 16 + recordSize * maxEntries bytes long. A free entry's bytes mean nothing.
//
// The write-back mark (entry byte 1) tells what the record file holds of an entry whose newest bytes
// are still only in the cache: 0 when the record file has the entry's newest bytes, or the entry is
// free; 1 when the entry was added and its record never reached the record file; 2 when the record
// file has an earlier version of the record. A store closed in order has written every cached
// record back, so all its marks are 0. At an open, a used entry marked 1 goes back to the free list
// and one marked 2 keeps the version in the record file: a process that died never leaves an entry
// whose bytes were never written.

#include <cstdint>

#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/base/Status.h"
#include "tavrin/storage/DataStoreHeader.h"

namespace Tavrin::Database {

/// The disk store's extension of the common header (see the file comment above for both files).
struct DiskDataStoreHeader {
    /// The format byte of the extension.
    static constexpr std::uint8_t Format = 2;
    ///@{
    /// Data area offsets of the free list's ends.
    static constexpr std::uint32_t FreeHeadOffset = 50;
    static constexpr std::uint32_t FreeTailOffset = 54;
    ///@}
    /// Bytes of the common header and this extension: headerSize.
    static constexpr std::uint32_t Size = 58;
    /// Bytes of an entry of the entry table.
    static constexpr std::uint32_t EntrySize = 8;
    /// Bytes of the record file before the record of entry 0: the Uuid.
    static constexpr std::uint32_t RecordFileHeaderSize = 16;

    ///@{
    /// The write-back mark of an entry (see the file comment above) and where it stands.
    static constexpr std::uint32_t MarkOffset = 1;
    static constexpr std::uint8_t Written = 0;
    static constexpr std::uint8_t NeverWritten = 1;
    static constexpr std::uint8_t OlderWritten = 2;
    ///@}

    std::uint32_t scratchOffset = 0;
    std::uint32_t entryTableOffset = 0;
    std::uint32_t cacheSize = 0;
    std::int32_t freeHead = -1;
    std::int32_t freeTail = -1;

    /// Appends the 21 bytes of the extension.
    StatusCode Serialize(MessageBuilder& builder) const;
    /// Reads the extension: 23 for a format byte other than 2 or an extension cut short.
    StatusCode Deserialize(MessageValidator& validator);
};

/// The whole header of a disk store, in file order.
struct DiskStoreHeaders {
    const DataStoreHeader& common;
    const DiskDataStoreHeader& extension;

    /// Appends the common header and the extension; the builder's status when they do not fit.
    StatusCode Serialize(MessageBuilder& builder) const {
        const StatusCode status = common.Serialize(builder);
        return status != Status::Success ? status : extension.Serialize(builder);
    }
};

}  // namespace Tavrin::Database
