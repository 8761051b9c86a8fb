#pragma once
// A store that keeps its records in a plain file, the record file `<name>.data`, behind a
// write-back cache of a size the owner chooses, and only its bookkeeping in the mapped control file
// `<name>`: the header, the user data, a scratch record and an entry table of 8 bytes per entry
// (layouts: DataStoreHeader.h, DiskDataStoreHeader.h, EntryTable.h).
//
// Every record that Add, Update, Read or GetEntry handles goes into the cache (DataStoreCache.h).
// A record reaches the record file when it leaves the cache to make room for another, and at every
// save (Flush, Close, SaveAs, Sync), in rising id order; a record that the record file already holds
// as it is in the cache is not written again. Remove costs no file operation at all.
//
// Guarantees:
// - The entry table and its counts are written through to the mapping at every change, as in a
//   memory store. An entry's write-back mark (DiskDataStoreHeader.h) says whether the record file
//   holds its newest bytes, an older version, or nothing yet. So a process that dies loses only the
//   writes still in the cache: at the next open, an entry added but never written back is free
//   again, and an entry updated but not written back has its last written version. Sync bounds that
//   loss: it writes the cache back and both files through to the disk.
// - Both files are held under their locks while the store is open: a second opener of either, in
//   this process or another, is refused with 17 and writes nothing into them.
// - A named Create makes both files beside their names and puts them in place only when complete;
//   a Create that fails leaves no file it made (FileMappedMemoryManager::Publish,
//   File::CreateReplacement).
// - A pointer from GetEntry, GetFirst or GetNext points into a cache slot, to be read at once: it
//   stays valid until that slot is taken by another record, at most until the cache's number of
//   slots of other records have passed through it, or until Close or Clear. Changes go through
//   Update. Ids stay valid across growth.
//
// Statuses: 16 for any entry operation on a store that is not open; 40 when Add finds no room; 36
// from Update, Read and GetEntry, and 23 from Remove, for an id not in use or not below
// GetMaxEntries(); 6 at the end of a scan; the File status of a failed read or write of the record
// file, with the store still open and the record as it was. Not thread-safe, not even for reads,
// which change the cache: the owner locks.

#include <cstdint>
#include <string>

#include "tavrin/base/File.h"
#include "tavrin/storage/DataStore.h"
#include "tavrin/storage/DataStoreCache.h"
#include "tavrin/storage/DiskDataStoreHeader.h"
#include "tavrin/storage/EntryTable.h"

namespace Tavrin::Database {

/// A store with its records in a record file behind a write-back cache and its entry table in a
/// mapped control file (see the file comment above). Not thread-safe: the owner locks.
class DiskDataStore : public DataStore {
public:
    /// Sizes the store without making a file: the header, the user data area (what `userData`
    /// would write now; it can't grow later), `initialEntries` entries, and a cache of
    /// `cacheSize` KB (one record's slot when 0). `userData` may be null. Throws
    /// StatusCodeException 23 when `recordSize` is 0 or the cache holds less than one record, 41
    /// when the cache can't be allocated, and DatabaseException 12 when a size can't be measured or
    /// the control file would not fit 32 bits.
    DiskDataStore(UserDataStore* userData, std::uint32_t recordSize, std::uint32_t initialEntries,
                  std::uint32_t growEntries, std::uint32_t cacheSize);
    /// Closes the store (with a save) if it is open.
    ~DiskDataStore() override;

    /// Makes the control file `fileName` and the record file `fileName`.data with `uuid`, with the
    /// constructor's `initialEntries` free entries, each beside its name until complete. Throws
    /// StatusCodeException: 47 when open already, 17 when another opener holds a file of either name
    /// (which stays as it was), else the status of the failed file operation; no file made stays.
    void Create(const std::string& fileName, const Uuid& uuid) override;
    /// Makes a temporary store: the control file as FileMappedMemoryManager makes one, and a record
    /// file under the temporary path named by a new Uuid, created exclusively with mode 0600 and
    /// removed from its directory at once. Throws as the named form.
    void Create() override;
    /// Opens the control file `fileName` and the record file `fileName`.data. Never throws: 17 when
    /// open already (the store stays open) or another opener holds either file; 6 when the control
    /// file does not exist; 22 for a record file shorter than its Uuid; 23 for a malformed header,
    /// stored offsets that don't add up, a control file of the wrong length, a file left open by a
    /// crash (once), or another Uuid than `uuid` in either file; 25 when the store type, record
    /// size or user data size differ from this object's, or the record file has the wrong length;
    /// the owner's status from DeserializeUserData; the File status of the record file. growEntries
    /// and the cache size stay this object's. Entries that a process which died left added but
    /// never written become free; a growth step it left half done is completed.
    StatusCode Open(const std::string& fileName, const Uuid* uuid) override;
    /// Saves (the cache written back), writes the record file through, closes it and releases the
    /// control file with clean flag 1: the save's status, 0 when not open; a temporary store only
    /// closes, 0.
    StatusCode Close() override;
    /// Saves, then copies the control file to `fileName` and the record file to `fileName`.data; the
    /// store stays open on its own files. 16 when not open, 13 for a temporary store, else the
    /// status of the save or of a copy (23 when `fileName` is the store's own).
    StatusCode SaveAs(const std::string& fileName) override;
    /// Makes every entry free again, ids from 0 in rising order, and empties the cache; both files
    /// keep their sizes. Throws StatusCodeException 16 when not open.
    void Clear() override;
    /// Puts the record into the cache under the entry at the head of the free list and gives its id:
    /// 40 when no entry is free and the store can't grow; 23 for a damaged free list; a File status
    /// when a record had to be written back to make room and could not be (the entry stays free).
    StatusCode Add(std::uint32_t& id, const void* record) override;
    /// Frees the entry `id` and drops it from the cache: 23 when not in use or out of range.
    StatusCode Remove(std::uint32_t id) override;
    /// Puts the record into the cache as the newest version of entry `id`, writing the oldest cached
    /// record back first when the cache is full: 36 when not in use or out of range, or a File status.
    StatusCode Update(std::uint32_t id, const void* record) override;
    /// Copies the record of entry `id` into `buffer`, from the cache or from the record file (and
    /// then into the cache): 36 when not in use or out of range, or a File status.
    StatusCode Read(std::uint32_t id, void* buffer) override;
    /// Points `record` at the record of entry `id` in the cache, read in from the record file when
    /// needed: 36 when not in use or out of range, or a File status; `record` is then untouched.
    StatusCode GetEntry(std::uint32_t id, unsigned char*& record) override;
    /// The used entry of the lowest id and its record, as GetEntry gives it: 6 when none, or the
    /// status of GetEntry; `id` and `record` are then untouched.
    StatusCode GetFirst(std::uint32_t& id, unsigned char*& record) override;
    /// The used entry of the lowest id above `id` and its record, as GetFirst.
    StatusCode GetNext(std::uint32_t& id, unsigned char*& record) override;
    /// The number of entries in use; meaningful while open. May be read without the lock that
    /// serialises the changes (DataStoreHeader::LoadCounter).
    std::uint32_t GetCurrentEntries() const override { return DataStoreHeader::LoadCounter(header_.currentEntries); }
    /// The number of entries that exist, in use or free; every id is below it. Meaningful while open;
    /// may be read without the lock, as GetCurrentEntries.
    std::uint32_t GetMaxEntries() const override { return DataStoreHeader::LoadCounter(header_.maxEntries); }
    /// Writes `uuid` into the control file's header and the first 16 bytes of the record file: 16
    /// when not open, else the File status of the record file's write.
    StatusCode SetUuid(const Uuid& uuid) override;
    /// Whether the control file is mapped and the record file open.
    bool IsOpen() const override { return manager_.IsMapped() && recordFile_.IsOpen(); }
    /// Whether the open store was made by Create() without a name.
    bool IsTemporary() const override { return !temporaryRecordName_.empty(); }
    /// Saves (the cache written back), then writes the record file and the control file through to
    /// the disk: 16 when not open, 0 without a write for a temporary store, else the first failure.
    StatusCode Sync() override;
    /// Closes the store without a save and removes both files, which it holds until they are gone.
    void Discard() override;

    /// Writes the user data, every cached record not yet in the record file (in rising id order; the
    /// first failed write ends that part without a report) and the whole header: 16 when not open, 0
    /// without a write for a temporary store, else the status of the header's write. When the
    /// owner's data does not fit, `valid` is written as 0 and the next Open fails with 23.
    StatusCode Flush();
    /// The Uuid in the first 16 bytes of the record file. Throws StatusCodeException with the File
    /// status: 16 when not open, 22 for a file shorter than 16 bytes.
    Uuid GetDataUuid();
    /// The name given to Create or Open; empty for a temporary store.
    const std::string& GetFileName() const noexcept { return fileName_; }
    /// The path of the open record file: `<name>`.data, or the name under the temporary path that it
    /// was removed from at once.
    const std::string& GetRecordFileName() const noexcept { return recordFile_.GetPath(); }
    /// The cache size in KB that the store was built with.
    std::uint32_t GetCacheSize() const noexcept { return extension_.cacheSize; }
    /// The record file that belongs to the control file `fileName`.
    static std::string RecordFileName(const std::string& fileName) { return fileName + ".data"; }

    ///@{
    /// Records read from and written to the record file since construction.
    std::uint64_t GetRecordReads() const noexcept { return recordReads_; }
    std::uint64_t GetRecordWrites() const noexcept { return recordWrites_; }
    /// Reads of an entry in use (Read, GetEntry) since construction: the cache's lookups, of which
    /// GetRecordReads() missed it.
    std::uint64_t GetRecordLookups() const noexcept { return recordLookups_; }
    ///@}

private:
    void CreateFiles(const std::string* fileName, const Uuid* uuid);
    void CreateRecordFile(const std::string* fileName, const Uuid* uuid);
    static void RefuseHeldRecordFile(const std::string& name);
    void OpenFiles(const std::string& fileName, const Uuid* uuid);
    std::uint32_t CheckAgainstSelf(const DataStoreHeader& common, const DiskDataStoreHeader& extension) const;
    void CheckRecordFile(const std::string& name, std::uint32_t maxEntries, std::uint32_t surplus) const;
    void AdoptFile(const DataStoreHeader& common, const DiskDataStoreHeader& extension);
    void ExtendRecordFile(std::uint64_t maxEntries);
    void SettleMarks() noexcept;
    StatusCode Save();
    void Forget() noexcept;

    EntryTable Entries() noexcept;
    unsigned char* EntryAt(std::uint32_t id) const noexcept {
        return data_ + extension_.entryTableOffset + static_cast<std::size_t>(id) * DiskDataStoreHeader::EntrySize;
    }
    bool IsUsed(std::uint32_t id) const noexcept {
        return data_ != nullptr && id < header_.maxEntries && (EntryAt(id)[EntryTable::UsedOffset] & EntryTable::UsedBit) != 0;
    }
    void Grow() noexcept;
    /// Puts the record into the cache (writing the oldest back when full); `stored`, when given,
    /// is set to its slot's bytes.
    StatusCode Cache(std::uint32_t id, const void* record, unsigned char** stored = nullptr) noexcept;
    StatusCode WriteBack(std::uint32_t id, const unsigned char* record) noexcept;
    void WriteBackAll() noexcept;
    StatusCode ReadRecord(std::uint32_t id, void* buffer) noexcept;
    StatusCode Scan(std::uint64_t from, std::uint32_t& id, unsigned char*& record);

    File recordFile_;
    DataStoreCache cache_;
    DiskDataStoreHeader extension_;
    UserDataStore* userData_;  // not owned
    std::uint32_t createEntries_;  // initialEntries as constructed: what Create makes, whatever a file said
    std::string fileName_;
    std::string temporaryRecordName_;
    std::uint64_t recordReads_ = 0;
    std::uint64_t recordWrites_ = 0;
    std::uint64_t recordLookups_ = 0;
};

}  // namespace Tavrin::Database
