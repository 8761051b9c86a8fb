// Find, Add and Remove of a hash index, and the split and merge of one bucket that keep the chains
// at two entries or fewer on average. Entries are held as offsets and buckets as numbers only, since
// an extension of either file moves its mapping. None of this allocates.
#include <atomic>
#include <exception>
#include <limits>

#include "tavrin/indexes/HashIndexBucketHandler.h"
#include "tavrin/indexes/HashIndexEntryHandler.h"
#include "tavrin/indexes/HashIndexFaults.h"
#include "tavrin/records/Key.h"

namespace Tavrin::Database {

namespace {

std::atomic<HashIndexFault> plantedFault{HashIndexFault::None};

bool IsPlanted(HashIndexFault fault) noexcept { return plantedFault.load(std::memory_order_relaxed) == fault; }

}  // namespace

void SetHashIndexFault(HashIndexFault fault) noexcept { plantedFault.store(fault, std::memory_order_relaxed); }

StatusCode HashIndex::CheckUsable(const Key& key) const noexcept {
    if (!IsOpen()) return Status::NotOpen;
    return key.GetCapacity() < GetKeySize() ? Status::Invalid : Status::Success;
}

StatusCode HashIndex::Find(const Key& key, std::uint32_t& recordId) {
    StatusCode status = CheckUsable(key);
    if (status != Status::Success) return status;
    const unsigned char* image = key.GetData();
    std::uint32_t entry = NoEntry;
    status = FindInBucket(buckets_->GetBucket(image), image, entry);
    if (status == Status::Success) recordId = entries_->GetRecordId(entry);
    return status;
}

StatusCode HashIndex::Add(const Key& key, std::uint32_t recordId) {
    StatusCode status = CheckUsable(key);
    if (status != Status::Success) return status;
    if (recordId == NoEntry) return Status::Invalid;
    const unsigned char* image = key.GetData();
    const std::uint32_t bucket = buckets_->GetBucket(image);
    // The search also proves the chain sound to its end, so the head may be linked behind.
    std::uint32_t entry = NoEntry;
    status = FindInBucket(bucket, image, entry);
    if (status == Status::Success) {
        entries_->SetRecordId(entry, recordId);
        return Status::Success;
    }
    if (status != Status::NotFound) return status;

    // An extension that failed once is tried again when an entry is wanted.
    if (entries_->GetFreeHead() == NoEntry) GrowEntries();
    status = entries_->Allocate(image, recordId, entry);
    if (status != Status::Success) return status;
    LinkAtHead(bucket, entry);
    if (entries_->GetFreeHead() == NoEntry) GrowEntries();
    if (entries_->GetUsedEntries() > 2 * std::uint64_t{buckets_->GetBucketsInUse()}) return Split();
    return Status::Success;
}

StatusCode HashIndex::Remove(const Key& key) {
    StatusCode status = CheckUsable(key);
    if (status != Status::Success) return status;
    const unsigned char* image = key.GetData();
    const std::uint32_t bucket = buckets_->GetBucket(image);
    std::uint32_t entry = NoEntry;
    status = FindInBucket(bucket, image, entry);
    if (status == Status::Success) status = Unlink(bucket, entry);
    if (status != Status::Success) return status;
    entries_->Free(entry);
    if (entries_->GetUsedEntries() < buckets_->GetBucketsInUse()) return Merge();
    return Status::Success;
}

StatusCode HashIndex::FindInBucket(std::uint32_t bucket, const unsigned char* image,
                                   std::uint32_t& entry) const noexcept {
    // Head and tail lie side by side in the bucket: the tail's load starts before the walk needs it.
    entries_->Prefetch(buckets_->GetTail(bucket));
    return entries_->Find(buckets_->GetHead(bucket), image, entry);
}

void HashIndex::LinkAtHead(std::uint32_t bucket, std::uint32_t entry) noexcept {
    const std::uint32_t head = buckets_->GetHead(bucket);
    entries_->SetNext(entry, head);
    entries_->SetPrevious(entry, NoEntry);
    if (head != NoEntry) entries_->SetPrevious(head, entry);
    buckets_->SetHead(bucket, entry);
    if (buckets_->GetTail(bucket) == NoEntry) buckets_->SetTail(bucket, entry);
}

StatusCode HashIndex::Unlink(std::uint32_t bucket, std::uint32_t entry) noexcept {
    const std::uint32_t previous = entries_->GetPrevious(entry);
    const std::uint32_t next = entries_->GetNext(entry);
    if ((previous != NoEntry && !entries_->IsEntry(previous)) || (next != NoEntry && !entries_->IsEntry(next))) {
        return Status::Invalid;
    }
    if (previous != NoEntry) {
        entries_->SetNext(previous, next);
    } else {
        buckets_->SetHead(bucket, next);
    }
    if (next != NoEntry) {
        entries_->SetPrevious(next, previous);
    } else {
        buckets_->SetTail(bucket, previous);
    }
    return Status::Success;
}

void HashIndex::GrowEntries() noexcept {
    const std::uint64_t maxEntries = std::uint64_t{entries_->GetMaxEntries()} + growEntries_;
    if (growEntries_ == 0 || maxEntries > std::numeric_limits<std::uint32_t>::max()) return;
    try {
        entries_->Extend(static_cast<std::uint32_t>(maxEntries));
    } catch (const std::exception&) {
        // The index goes on with the entries it has; an Add without a free entry answers 40.
    }
}

StatusCode HashIndex::Split() noexcept {
    if (buckets_->GetBucketsInUse() >= buckets_->GetCapacity()) {
        try {
            buckets_->Extend();
        } catch (const std::exception&) {
            return Status::Success;  // chains grow longer instead; lookups stay right
        }
    }
    std::uint32_t bucketCount = buckets_->GetBucketCount();
    std::uint32_t splitIndex = buckets_->GetSplitIndex();
    const std::uint32_t source = splitIndex;
    const std::uint32_t target = bucketCount + splitIndex;
    // A bucket out of use is empty in a sound file; the source chain must end, and link only entries.
    if (buckets_->GetHead(target) != NoEntry || buckets_->GetTail(target) != NoEntry ||
        entries_->CheckChain(buckets_->GetHead(source)) != Status::Success) {
        return Status::Invalid;
    }
    // The new addressing first, so that each entry's bucket is worked out as it will be found.
    if (++splitIndex == bucketCount) {
        bucketCount *= 2;
        splitIndex = 0;
    }
    buckets_->SetState(bucketCount, splitIndex);

    bool lose = IsPlanted(HashIndexFault::SplitLosesEntry);
    for (std::uint32_t entry = buckets_->GetHead(source); entry != NoEntry;) {
        const std::uint32_t next = entries_->GetNext(entry);
        if (buckets_->GetBucket(entries_->GetKey(entry)) == target) {
            if (Unlink(source, entry) != Status::Success) return Status::Invalid;
            if (!lose) LinkAtHead(target, entry);
            lose = false;
        }
        entry = next;
    }
    return Status::Success;
}

// Chains are joined end to head, not walked: a merge costs the same whatever their lengths.
StatusCode HashIndex::Merge() noexcept {
    std::uint32_t bucketCount = buckets_->GetBucketCount();
    std::uint32_t splitIndex = buckets_->GetSplitIndex();
    if (MinimumBuckets() >= std::uint64_t{bucketCount} + splitIndex) return Status::Success;
    if (splitIndex == 0) {
        bucketCount /= 2;
        splitIndex = bucketCount - 1;
    } else {
        --splitIndex;
    }
    const std::uint32_t source = bucketCount + splitIndex;
    const std::uint32_t target = splitIndex;
    const std::uint32_t head = buckets_->GetHead(source);
    const std::uint32_t tail = buckets_->GetTail(source);
    const std::uint32_t targetTail = buckets_->GetTail(target);
    if (head != NoEntry && (!entries_->IsEntry(head) || !entries_->IsEntry(tail) ||
                            (targetTail != NoEntry && !entries_->IsEntry(targetTail)))) {
        return Status::Invalid;
    }
    buckets_->SetState(bucketCount, splitIndex);
    if (head == NoEntry) return Status::Success;
    if (targetTail == NoEntry) {
        buckets_->SetHead(target, head);
    } else {
        entries_->SetNext(targetTail, head);
    }
    entries_->SetPrevious(head, targetTail);
    buckets_->SetTail(target, tail);
    if (!IsPlanted(HashIndexFault::MergeKeepsSourceHead)) buckets_->SetHead(source, NoEntry);
    buckets_->SetTail(source, NoEntry);
    return Status::Success;
}

}  // namespace Tavrin::Database
