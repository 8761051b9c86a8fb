#pragma once
// A store that keeps every record inside one mapped file (layout: DataStoreHeader.h and
// MemoryDataStoreHeader.h). Free entries form a singly linked list through their `next` fields:
// new entries are appended at its tail in rising id order, a removed entry is pushed at its head,
// so a removed id is the next one that Add gives out.
//
// Guarantees:
// - Add, Remove, Update, Read and GetEntry are constant time and allocate nothing.
// - The fields of the header that change with the entries (currentEntries, maxEntries, freeHead,
//   freeTail) are written through to the mapping at every change, so after any completed
//   operation the file agrees with itself, and a process that dies keeps every record it added.
//   A save (Flush, Close, SaveAs) writes the whole header and the user data.
// - When the free list is empty and growEntries is not 0, Add grows the file by growEntries
//   entries; a growth that fails (no disk space, size limit) is dropped and Add answers 40.
// - A record never moves within the file; a pointer to it (GetEntry, GetFirst, GetNext) stays
//   valid until the next Add, which may grow the store and move the mapping, or until Close.
//   Ids stay valid across growth.
//
// Statuses: 16 for any entry operation on a store that is not open; 40 when Add finds no room;
// 36 from Update and GetEntry and 23 from Read and Remove for an id not in use or not below
// GetMaxEntries(); 6 at the end of a scan; 23 from Add when the free list is found damaged.
// Not thread-safe: the owner locks.

#include <cstddef>
#include <cstdint>
#include <string>

#include "tavrin/storage/DataStore.h"
#include "tavrin/storage/EntryTable.h"
#include "tavrin/storage/MemoryDataStoreHeader.h"

namespace Tavrin::Database {

/// A store that keeps every record in one mapped file, with a free list through the free entries
/// (see the file comment above). Not thread-safe: the owner locks.
class MemoryDataStore : public DataStore {
public:
    /// Sizes the store without mapping anything: the header, the user data area (what `userData`
    /// would write now; it can't grow later) and `initialEntries` entries of `recordSize` bytes.
    /// `userData` may be null (no user data). Throws DatabaseException 12 when a size can't be
    /// measured or the store would not fit a 32-bit file.
    MemoryDataStore(UserDataStore* userData, std::uint32_t recordSize, std::uint32_t initialEntries,
                    std::uint32_t growEntries);
    /// Closes the store (with a save) if it is open.
    ~MemoryDataStore() override;

    ///@{
    /// Makes the file (named, or temporary under the temporary path) with the constructor's
    /// `initialEntries` free entries and writes its header and user data. A named file is made
    /// beside its name and takes it only when complete (FileMappedMemoryManager::Publish), so a
    /// failure or a kill leaves the former file, or none. Throws StatusCodeException: 47 when open
    /// already, 17 when another opener holds a file of that name (which stays), else the status of
    /// the mapping's failure.
    void Create(const std::string& fileName, const Uuid& uuid) override;
    void Create() override;
    ///@}
    /// As DataStore::Open, and also: 6 when the file does not exist; 21 for an extension of another
    /// format; 25 when the store type, user data size, record size or first entry offset differ from
    /// this object's; 23 when the entry stride or the file's length disagree with the header or the
    /// free list ends are out of range; the owner's status from DeserializeUserData. growEntries
    /// stays this object's. A file that ends in whole entries of zero bytes beyond the header's
    /// maxEntries was left by a process that died while growing it: those entries become free ones.
    /// A free list that runs into an entry in use, leaves the entries, goes round or misses a free
    /// entry is made again from the used flags, so a damaged list never stops Add.
    /// The whole header is checked before any of it is taken; a failed open leaves this object as
    /// it was, so a Create after it makes the store of the constructor's settings.
    StatusCode Open(const std::string& fileName, const Uuid* uuid) override;
    /// Saves, then releases the file with clean flag 1; the save's status, 0 if not open.
    StatusCode Close() override;
    /// Saves, then copies the file to `fileName` (clean flag 1, same Uuid); the store stays open on
    /// its own file. Also a temporary store is saved first, so the copy is a complete store file.
    StatusCode SaveAs(const std::string& fileName) override;
    /// Makes every entry free again, ids from 0 in rising order; the file keeps its size. Throws
    /// StatusCodeException 16 when not open.
    void Clear() override;
    /// Copies the record (the record size's bytes at `record`) into the entry at the head of the free
    /// list and gives its id in `id`: 16 when not open; 40 when no entry is free and the store can't
    /// grow (growEntries 0, or the growth failed); 23 when the head of the free list is in use or
    /// links out of range (nothing is taken). `id` is untouched on failure. A growth moves the
    /// mapping: every pointer into it is then invalid.
    StatusCode Add(std::uint32_t& id, const void* record) override;
    /// Frees the entry `id`, which becomes the next id that Add gives: 16 when not open, 23 when the
    /// entry is not in use or `id` is not below GetMaxEntries().
    StatusCode Remove(std::uint32_t id) override;
    /// Overwrites the record of the entry `id` with the record size's bytes at `record`: 16 when not
    /// open, 36 when the entry is not in use or `id` is not below GetMaxEntries().
    StatusCode Update(std::uint32_t id, const void* record) override;
    /// Copies the record of the entry `id` into `buffer` (the record size's bytes): 16 when not open,
    /// 23 when the entry is not in use or `id` is not below GetMaxEntries(); `buffer` is then
    /// untouched.
    StatusCode Read(std::uint32_t id, void* buffer) override;
    /// Points `record` at the record of the entry `id` in the mapping (writable; valid until the next
    /// Add or Close): 16 when not open, 36 when the entry is not in use or `id` is not below
    /// GetMaxEntries(); `record` is then untouched.
    StatusCode GetEntry(std::uint32_t id, unsigned char*& record) override;
    /// The used entry of the lowest id, found by a scan from id 0: its id and a pointer to its record
    /// in the mapping. 16 when not open, 6 when no entry is in use; `id` and `record` are then
    /// untouched.
    StatusCode GetFirst(std::uint32_t& id, unsigned char*& record) override;
    /// The used entry of the lowest id above `id`, found by a scan: its id (replacing `id`) and a
    /// pointer to its record in the mapping. 16 when not open, 6 at the end; `id` and `record` are
    /// then untouched.
    StatusCode GetNext(std::uint32_t& id, unsigned char*& record) override;
    /// The number of entries in use; meaningful while open. May be read without the lock that
    /// serialises the changes (DataStoreHeader::LoadCounter).
    std::uint32_t GetCurrentEntries() const override { return DataStoreHeader::LoadCounter(header_.currentEntries); }
    /// The number of entries that exist, in use or free; every id is below it. Meaningful while open;
    /// may be read without the lock, as GetCurrentEntries.
    std::uint32_t GetMaxEntries() const override { return DataStoreHeader::LoadCounter(header_.maxEntries); }
    /// Whether the open store was made by Create() without a name; false when not open.
    bool IsTemporary() const override { return temporary_; }
    /// Saves the header and user data (Flush), then writes the whole file through to the disk: 16
    /// when not open, 0 without a write for a temporary store, else the status of the save or of the
    /// write.
    StatusCode Sync() override;
    /// Closes the store without a save and removes its file (DataStore::Discard); the name is
    /// forgotten. Nothing when not open.
    void Discard() override;

    /// Writes the user data and the whole header into the mapping: 16 when not open, 0 without a
    /// write for a temporary store, else the status of the header's write. When the owner's data
    /// does not fit, `valid` is written as 0 and the next Open fails with 23.
    StatusCode Flush();
    /// The name given to Create or Open; empty for a temporary store.
    const std::string& GetFileName() const noexcept { return fileName_; }

    /// GetEntry for the hot loops of an owner: the record of entry `id` when the store is open and
    /// the entry in use, else null. Inline and non-virtual; the same checks as GetEntry.
    unsigned char* FindUsedEntry(std::uint32_t id) const noexcept {
        if (data_ == nullptr || !IsUsed(id)) return nullptr;
        return EntryAt(id) + MemoryDataStoreHeader::EntryFrontSize;
    }
    /// Asks the processor to start loading entry `id` for a read that comes soon; reads nothing, so
    /// any id is harmless. Only the line the entry begins in: enough for the small entries of a tree.
    void PrefetchEntry(std::uint32_t id) const noexcept {
        if (data_ != nullptr && id < header_.maxEntries) __builtin_prefetch(EntryAt(id));
    }
    /// PrefetchEntry for a whole record: every 64-byte cache line of the entry's first 256 bytes,
    /// the last one included (an entry of 73 bytes may straddle three lines).
    void PrefetchRecord(std::uint32_t id) const noexcept {
        if (data_ == nullptr || id >= header_.maxEntries) return;
        const unsigned char* entry = EntryAt(id);
        const std::uint32_t span = extension_.entryStride < 256 ? extension_.entryStride : 256;
        for (std::uint32_t offset = 0; offset < span; offset += 64) __builtin_prefetch(entry + offset);
        __builtin_prefetch(entry + span - 1);
    }

private:
    void CreateFile(const std::string* fileName, const Uuid* uuid);
    void OpenFile(const std::string& fileName, const Uuid* uuid);
    void AdoptFile(const DataStoreHeader& common, const MemoryDataStoreHeader& extension, std::uint32_t surplus);
    std::uint32_t CheckAgainstSelf(const DataStoreHeader& common, const MemoryDataStoreHeader& extension) const;
    std::uint32_t SurplusEntries(std::uint32_t maxEntries) const;
    /// The entries and free list in the mapping as it is now.
    EntryTable Entries() noexcept;
    /// Writes the user data and the whole header into the mapping; `valid` is written as 0 when the
    /// owner's data does not fit. The status of the header's write.
    StatusCode Save();

    unsigned char* EntryAt(std::uint32_t id) const noexcept {
        return data_ + extension_.firstEntryOffset + static_cast<std::size_t>(id) * extension_.entryStride;
    }
    bool IsUsed(std::uint32_t id) const noexcept {
        return id < header_.maxEntries &&
               (EntryAt(id)[MemoryDataStoreHeader::EntryUsedOffset] & MemoryDataStoreHeader::EntryUsedBit) != 0;
    }
    StatusCode Scan(std::uint64_t from, std::uint32_t& id, unsigned char*& record) noexcept;
    void Grow() noexcept;

    MemoryDataStoreHeader extension_;
    UserDataStore* userData_;  // not owned
    std::uint32_t createEntries_;  // initialEntries as constructed: what Create makes, whatever a file said
    std::string fileName_;
    bool temporary_ = false;
};

}  // namespace Tavrin::Database
