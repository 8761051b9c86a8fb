#pragma once
// HashIndex: the index that finds one exact key. A linear hash table in mapped files: the keys lie
// in fixed-size entries of the entry file (HashIndexEntryHandler.h), each entry in use on the doubly
// linked chain of one bucket of the bucket file (HashIndexBucketHandler.h); a third file holds the
// IndexSpecification, so that a directory walk finds the index (HashIndexFiles.cpp). The table
// grows and shrinks one bucket at a time, so no operation ever rehashes everything.
//
// Thread safety
//   None of its own: the table's mutex serialises every call. The hash, the key order and the
//   accessors are immutable after construction.
//
// Invariants (while open; CheckIntegrity tests 1 to 4)
//   1. The buckets in use are 0 to bucketCount + splitIndex - 1; every other slot up to capacity is
//      empty. A key's bucket is its hash modulo bucketCount, or modulo 2 * bucketCount when that
//      is below splitIndex (the buckets already split in this pass).
//   2. Every entry in use (record id not -1) is on the chain of the bucket of its own key, exactly
//      once; every free entry is on the free list. Chains are linked both ways, free entries by
//      next only.
//   3. No two entries of one chain hold equal keys: CompareKey over the compared fields and, in a
//      Duplicate index, the record id behind them (KeyHash.h: equal keys hash alike).
//   4. usedEntries counts the entries in use.
//   5. Entries in use stay at most 2 * (bucketCount + splitIndex) after an Add (one split each) and,
//      above the minimum, at least bucketCount + splitIndex after a Remove (one merge each).
//
// Links are byte offsets into the entry area and bucket numbers, never addresses: an extension
// re-maps a file, and nothing the operations hold survives it but offsets. All state lies in the
// mappings, so there is nothing to save; the files' clean flags are 0 while they are open.
//
// A damaged file never makes an operation read outside a mapping or walk for ever: Open checks every
// field of the two blocks (HashIndexEntryHandler.h, HashIndexBucketHandler.h) and answers 1 when one
// does not fit, every link is checked before it is followed, and every walk ends after as many
// steps as there are entries, with status 23.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tavrin/base/Status.h"
#include "tavrin/base/Uuid.h"
#include "tavrin/indexes/Index.h"
#include "tavrin/indexes/KeyHash.h"
#include "tavrin/indexes/KeyOrder.h"
#include "tavrin/records/IFieldListFactory.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/storage/FileMappedMemoryManager.h"

namespace Tavrin::Database {

/// The exact-match index of a table: a linear hash table in three mapped files (specification,
/// entries, buckets). Not thread-safe: its table's mutex covers every call.
class HashIndex final : public Index {
public:
    /// The entry file: its handler block, the entries, the free list and two of the checks
    /// (tavrin/indexes/HashIndexEntryHandler.h).
    class EntryHandler;
    /// The bucket file: its handler block, the bucket array, the addressing and the bucket check
    /// (tavrin/indexes/HashIndexBucketHandler.h).
    class BucketHandler;

    /// An entry offset or a bucket end that names no entry.
    static constexpr std::uint32_t NoEntry = 0xFFFFFFFF;

    /// Builds the key layout (Index) and the hash over it. Opens no file. `initialEntries` is the
    /// number of entries that Create makes (the table passes its store's maximum) and the basis of
    /// MinimumBuckets; `growEntries` is the number that one extension adds, 0 for none. Throws what
    /// Index throws.
    HashIndex(const IndexSpecification& specification, const FieldList& tableFieldList,
              const IFieldListFactory& factory, std::uint32_t initialEntries, std::uint32_t growEntries);
    /// Closes the bucket, the entry and the description file, in this order, each with its clean
    /// flag set.
    ~HashIndex() override;

    /// The entries in use; 0 while no file is open.
    std::uint32_t GetCurrentRecords() override;
    /// Checks the bucket chains, then the free list, then every entry (the checks of the two
    /// handlers). Throws DatabaseException code 12 with the first failure's report; nothing while no
    /// file is open.
    void CheckIntegrity() override;

    ///@{
    /// Make the three files, each complete before it takes its name: the description file, the
    /// entry file of `initialEntries` free entries and the bucket file of MinimumBuckets() empty
    /// buckets, named by GetSpecificationFileName, GetEntryFileName and GetBucketFileName and
    /// carrying `uuid`; or, without arguments, three temporary files that no walk finds. Throw
    /// StatusCodeException 47 when a file is open already; otherwise what the files throw (17 when
    /// another opener holds a file of one of the names, 40 for a full disk), or DatabaseException 12
    /// for entries that don't fit a file. On failure the files made by this call are removed again
    /// and the index has none.
    void Create(const std::string& directory, const std::string& tableName, const Tavrin::Uuid& uuid) override;
    void Create() override;
    ///@}
    /// Opens the three files, which must carry `uuid`, have been closed in order and fit this index:
    /// the same specification, entries of GetKeySize() + 20 bytes and blocks whose every field agrees
    /// with the file's size (see the handlers). 0, or 1 on any failure, also when a file is open
    /// already; what this call opened is closed again then. Never throws.
    StatusCode Open(const std::string& directory, const std::string& tableName, const Tavrin::Uuid& uuid) override;
    /// Copies the three files as they stand to the names for `directory` and `tableName`: the first
    /// status of the copies that is not 0 (16 while not open; 23 for a file's own name; 17 when
    /// another opener holds a target).
    StatusCode SaveAs(const std::string& directory, const std::string& tableName) override;
    /// Empties the index; the files keep their sizes, and all entries become free. 16 while not open.
    StatusCode Clear() override;

    // Add, Remove and Find answer 16 while no file is open, 23 for a key whose buffer is shorter than
    // GetKeySize() (a key of another index), and 23 when they meet a damaged file. The key is read
    // as its first GetKeySize() bytes; it need not be bound to a table. None allocates.

    /// Stores `key` with `recordId`. A key that is there already takes `recordId` and nothing else
    /// changes: it is the table that refuses repeated keys. 40 when there is no free entry and none
    /// can be added (the index is unchanged then); 23 for the record id 0xFFFFFFFF, which marks a
    /// free entry. May grow the entry file and the bucket file; a growth that fails is dropped.
    StatusCode Add(const Key& key, std::uint32_t recordId) override;
    /// Removes the entry of `key`: 0, or 6 when there is none.
    StatusCode Remove(const Key& key) override;
    /// The record of `key`: 0 with `recordId` set, or 6 (then `recordId` is untouched).
    StatusCode Find(const Key& key, std::uint32_t& recordId) override;
    /// Writes `uuid` into the headers of the three files: 0. Throws StatusCodeException 16 (at
    /// Tavrin::Database::FileMappedMemoryManager::SetUuid) while no file is open.
    StatusCode SetUuid(const Tavrin::Uuid& uuid) override;
    /// Writes the three files through to the disk: 0, 16 while not open, else the failed write's
    /// status. Nothing to write for a temporary index.
    StatusCode Sync() override;
    /// Removes the files that the index holds (also those of a failed Create) and closes them
    /// without setting their clean flags; files of the names that another opener holds stay.
    void Discard() noexcept override;

    /// Whether the index has its files.
    bool IsOpen() const noexcept;
    /// The bucket minimum: half of `initialEntries`, rounded up, then up to a multiple of 256.
    static std::uint32_t MinimumBuckets(std::uint32_t initialEntries) noexcept;
    /// MinimumBuckets of this index's initialEntries: the initial size of the bucket array and the
    /// number of buckets below which merges never take it.
    std::uint32_t MinimumBuckets() const noexcept { return MinimumBuckets(initialEntries_); }
    /// The hash of key image `key` (KeyHash.h), from which its bucket is worked out.
    std::uint32_t HashKey(const unsigned char* key) const noexcept { return hash_(key); }

    ///@{
    /// The handlers of the two data files, for their counts and for tests. Valid for the index's
    /// life; their fields can be read only while the index is open.
    const EntryHandler& GetEntryHandler() const noexcept { return *entries_; }
    const BucketHandler& GetBucketHandler() const noexcept { return *buckets_; }
    ///@}

    ///@{
    /// The names of the three files: `directory`, a "/" unless `directory` is empty or ends in "/"
    /// or "\", the stem "tableName-indexName" with every blank written "_", then ".hash.idx",
    /// ".hash-entry.idx" or ".hash-bucket.idx".
    static std::string GetSpecificationFileName(const std::string& directory, const std::string& tableName,
                                                const std::string& indexName);
    static std::string GetEntryFileName(const std::string& directory, const std::string& tableName,
                                        const std::string& indexName);
    static std::string GetBucketFileName(const std::string& directory, const std::string& tableName,
                                         const std::string& indexName);
    ///@}
    /// The three names above, in that order.
    static std::vector<std::string> GetFileNames(const std::string& directory, const std::string& tableName,
                                                 const std::string& indexName);
    /// Appends the IndexSpecification of every hash index of table `tableName` in `directory` to
    /// `specifications`, as their description files hold them (HashIndexDirectoryWalker). Reads
    /// the files and writes none. 0; 23 when the table name makes no regular expression; else the
    /// walk's status (6 for a missing directory).
    static StatusCode GetSpecifications(const std::string& directory, const std::string& tableName,
                                        std::vector<IndexSpecification>& specifications);
    /// Copies the three files of every hash index of `tableName` (only its own: the description
    /// file named exactly by GetSpecificationFileName for the index name stored inside) from
    /// `source` to `destination`, replacing files there, as one set (Tavrin::FileSet::Copy): 0; the
    /// walk's status; 23 when both are the same directory; 17 while a table holds one of the files;
    /// else the status of the failed copy, after the copies made are removed again.
    static StatusCode CopyFiles(const std::string& source, const std::string& destination,
                                const std::string& tableName);

private:
    ///@{
    /// ---- Files (HashIndex.cpp, HashIndexFiles.cpp) ---------------------------------------------
    /// Creates the three files, named when `directory` is given; on failure removes what it made.
    void CreateFiles(const std::string* directory, const std::string* tableName, const Tavrin::Uuid* uuid);
    /// The description file: the serialised GetSpecification() and nothing else. Throws
    /// DatabaseException 12 "failed to serialize specification for index <%s>" or what the file
    /// throws.
    void CreateSpecification(const std::string* fileName, const Tavrin::Uuid* uuid);
    /// 0, or 1 (with the file closed) unless the file opens with `uuid` and holds this index's
    /// specification.
    StatusCode OpenSpecification(const std::string& fileName, const Tavrin::Uuid& uuid);
    ///@}

    ///@{
    /// ---- Keys and chains (HashIndexUpdate.cpp) ---------------------------------------------------
    /// 16 while not open, 23 when `key` can't hold a key image of this index.
    StatusCode CheckUsable(const Key& key) const noexcept;
    /// The entry of bucket `bucket` that matches key image `image`, as EntryHandler::Find.
    StatusCode FindInBucket(std::uint32_t bucket, const unsigned char* image, std::uint32_t& entry) const noexcept;
    /// Puts entry `entry` at the head of the chain of `bucket`. The old head must be an entry or
    /// none; the caller has checked it.
    void LinkAtHead(std::uint32_t bucket, std::uint32_t entry) noexcept;
    /// Takes entry `entry` out of the chain of `bucket`: 23 when a neighbour names no entry.
    StatusCode Unlink(std::uint32_t bucket, std::uint32_t entry) noexcept;
    /// Adds growEntries free entries; a failure is dropped.
    void GrowEntries() noexcept;
    /// Splits bucket splitIndex into itself and bucket bucketCount + splitIndex; 0 also when the
    /// bucket array can't grow (then nothing is split), 23 for a damaged chain.
    StatusCode Split() noexcept;
    /// Joins the last bucket in use to the bucket it was split from, unless the table is at its
    /// minimum: 0, or 23 for a damaged chain end.
    StatusCode Merge() noexcept;
    ///@}

    std::uint32_t initialEntries_;
    std::uint32_t growEntries_;
    /// The hash of the compared fields and, in a Duplicate index, of the record id behind them.
    KeyHash hash_;
    /// The order of key images, chosen once for the key layout; an entry matches at 0.
    KeyOrder order_;
    /// Offset of the record id tail in a key of a Duplicate index; 0 in any other index.
    std::uint32_t duplicateTail_;
    /// Declared in the order of creation; destroyed bucket file first, description file last.
    FileMappedMemoryManager specification_;
    std::unique_ptr<EntryHandler> entries_;
    std::unique_ptr<BucketHandler> buckets_;
};

}  // namespace Tavrin::Database
