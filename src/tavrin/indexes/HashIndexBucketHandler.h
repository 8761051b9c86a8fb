#pragma once
// HashIndex::BucketHandler: the bucket file of a hash index. The file is the 17-byte header of
// FileMappedMemoryManager.h, then this block and the bucket array, little-endian and unaligned.
// Data area offsets (file offsets are 17 more):
//
//    0   4  owner        reserved: an address in the writing process where addresses are 32 bits
//    4   4  buckets      reserved, the same; this build writes 0 into both and never reads them
//    8   4  capacity     slots in the bucket array
//   12   4  bucketCount  buckets at the start of this pass of splitting, at least 1
//   16   4  splitIndex   next bucket to split, below bucketCount; the buckets below it are split
//   20      the bucket array: capacity slots of head (4 bytes) and tail (4 bytes), each an entry
//           offset, -1 in an empty bucket
//
// The buckets in use are 0 to bucketCount + splitIndex - 1, never more than capacity; every other
// slot is -1, -1. The file is exactly 17 + 20 + 8 * capacity bytes long, and capacity doubles at
// each extension. Open refuses a file whose fields break any of these rules, so a bucket number
// worked out by GetBucket always lies inside the array.

#include <cstdint>
#include <string>

#include "tavrin/base/Encoding.h"
#include "tavrin/base/Status.h"
#include "tavrin/base/Uuid.h"
#include "tavrin/indexes/HashIndex.h"
#include "tavrin/storage/FileMappedMemoryManager.h"

namespace Tavrin::Database {

/// The bucket file of a HashIndex (layout above). Owns the file's FileMappedMemoryManager; holds its
/// index unowned. Not thread-safe: the index's table guards it.
class HashIndex::BucketHandler {
public:
    ///@{
    /// Data area offsets of the block's fields, the block's size and the size of one slot.
    static constexpr std::uint32_t OwnerOffset = 0;
    static constexpr std::uint32_t BucketsOffset = 4;
    static constexpr std::uint32_t CapacityOffset = 8;
    static constexpr std::uint32_t BucketCountOffset = 12;
    static constexpr std::uint32_t SplitIndexOffset = 16;
    static constexpr std::uint32_t BlockSize = 20;
    static constexpr std::uint32_t SlotSize = 8;
    ///@}

    /// A handler of `owner`'s buckets with no file.
    explicit BucketHandler(const HashIndex& owner) noexcept;
    BucketHandler(const BucketHandler&) = delete;
    BucketHandler& operator=(const BucketHandler&) = delete;
    /// Closes the file as Release does.
    ~BucketHandler();

    /// Makes the file with `buckets` empty buckets, all in use, named `fileName` with `uuid`
    /// (complete before it takes the name), or temporary when `fileName` is null. Throws
    /// StatusCodeException 22 for a count that doesn't fit a file, else what the manager throws;
    /// nothing is open then.
    void Create(const std::string* fileName, const Tavrin::Uuid* uuid, std::uint32_t buckets);
    /// Opens the file, which must carry `uuid` and fit the layout (see the head of this file): 0, or
    /// 1 with nothing open.
    StatusCode Open(const std::string& fileName, const Tavrin::Uuid& uuid) noexcept;
    /// Doubles capacity; the new slots are empty. Throws StatusCodeException 22 when the array
    /// would not fit a file, else what the resize throws, and the file is as it was then.
    void Extend();
    /// Empties every slot and starts again with min(`buckets`, capacity) buckets in use.
    void Clear(std::uint32_t buckets) noexcept;
    /// Closes the file with its clean flag set; nothing when none is open.
    void Release() noexcept;
    /// Removes the file from its directory and closes it without the clean flag (FileMappedMemoryManager::Discard).
    void Discard() noexcept;
    /// The file's manager: its name, Uuid, Sync and SaveAs.
    FileMappedMemoryManager& GetManager() noexcept { return manager_; }
    /// Whether the file is open.
    bool IsOpen() const noexcept { return manager_.IsMapped(); }

    /// The bucket of key image `key`: its hash addressed by GetBucketOfHash. Allocates nothing.
    std::uint32_t GetBucket(const unsigned char* key) const noexcept { return GetBucketOfHash(owner_.HashKey(key)); }
    /// The bucket of hash `hash`: hash modulo bucketCount, or modulo 2 * bucketCount when that is
    /// below splitIndex.
    std::uint32_t GetBucketOfHash(std::uint32_t hash) const noexcept {
        const std::uint32_t count = GetBucketCount();
        const std::uint32_t bucket = hash % count;
        return bucket < GetSplitIndex() ? hash % (2 * count) : bucket;
    }

    ///@{
    /// The block's fields, read from the mapping; only while open.
    std::uint32_t GetCapacity() const noexcept { return Read(CapacityOffset); }
    std::uint32_t GetBucketCount() const noexcept { return Read(BucketCountOffset); }
    std::uint32_t GetSplitIndex() const noexcept { return Read(SplitIndexOffset); }
    /// bucketCount + splitIndex: the buckets 0 to this less 1 are in use.
    std::uint32_t GetBucketsInUse() const noexcept { return GetBucketCount() + GetSplitIndex(); }
    /// Writes bucketCount and splitIndex: `bucketCount` of at least 1 and `splitIndex` below it,
    /// whose sum does not pass capacity.
    void SetState(std::uint32_t bucketCount, std::uint32_t splitIndex) noexcept {
        Write(BucketCountOffset, bucketCount);
        Write(SplitIndexOffset, splitIndex);
    }
    ///@}
    ///@{
    /// Head and tail of bucket `bucket`, below capacity: entry offsets, NoEntry when empty.
    std::uint32_t GetHead(std::uint32_t bucket) const noexcept { return DecodeU32(Slot(bucket)); }
    std::uint32_t GetTail(std::uint32_t bucket) const noexcept { return DecodeU32(Slot(bucket) + 4); }
    void SetHead(std::uint32_t bucket, std::uint32_t entry) noexcept { EncodeU32(Slot(bucket), entry); }
    void SetTail(std::uint32_t bucket, std::uint32_t entry) noexcept { EncodeU32(Slot(bucket) + 4, entry); }
    ///@}

    /// The two lines that describe bucket `bucket` in a check's report: head and tail.
    std::string Dump(std::uint32_t bucket) const;

    /// Throws DatabaseException 12 with a report when a chain of a bucket in use (its entries in
    /// `entries`) has a loop, a link that names no entry, a link that does not point back, or a tail
    /// that is not its last entry, or when a slot out of use is not empty. Allocates; for tests and
    /// diagnosis.
    void CheckIntegrity(const EntryHandler& entries) const;

private:
    std::uint32_t Read(std::uint32_t fieldOffset) const noexcept { return DecodeU32(block_ + fieldOffset); }
    void Write(std::uint32_t fieldOffset, std::uint32_t value) noexcept { EncodeU32(block_ + fieldOffset, value); }
    unsigned char* Slot(std::uint32_t bucket) const noexcept { return block_ + BlockSize + SlotSize * bucket; }
    /// Empties the slots `first` to capacity - 1.
    void EmptySlots(std::uint32_t first) noexcept;
    /// Checks the mapped block against the file's size. Throws StatusCodeException 23 at
    /// `operation`.
    void Adopt(const char* operation) const;

    const HashIndex& owner_;
    FileMappedMemoryManager manager_;
    /// The block at the start of the data area; null with no file.
    unsigned char* block_ = nullptr;
};

}  // namespace Tavrin::Database
