// The load of a hash index: the bucket block's figures and one walk along every chain in use.
#include "tavrin/indexes/HashIndex.h"
#include "tavrin/indexes/HashIndexBucketHandler.h"
#include "tavrin/indexes/HashIndexEntryHandler.h"
#include "tavrin/indexes/IndexStatistics.h"

namespace Tavrin::Database {

HashStatistics GetStatistics(const HashIndex& index) {
    HashStatistics statistics;
    if (!index.IsOpen()) return statistics;
    const HashIndex::BucketHandler& buckets = index.GetBucketHandler();
    const HashIndex::EntryHandler& entries = index.GetEntryHandler();
    statistics.bucketCount = buckets.GetBucketCount();
    statistics.splitIndex = buckets.GetSplitIndex();
    statistics.bucketsInUse = buckets.GetBucketsInUse();
    statistics.capacity = buckets.GetCapacity();
    statistics.entries = entries.GetUsedEntries();
    const std::uint32_t inUse = statistics.bucketsInUse < statistics.capacity ? statistics.bucketsInUse
                                                                             : statistics.capacity;
    for (std::uint32_t bucket = 0; bucket < inUse; ++bucket) {
        // A chain is never longer than the entries in use; a damaged one ends there.
        std::uint32_t length = 0;
        for (std::uint32_t entry = buckets.GetHead(bucket);
             entry != HashIndex::NoEntry && entries.IsEntry(entry) && length <= statistics.entries;
             entry = entries.GetNext(entry)) {
            ++length;
        }
        if (length >= statistics.chainLengths.size()) statistics.chainLengths.resize(length + 1, 0);
        ++statistics.chainLengths[length];
        if (length > statistics.longestChain) statistics.longestChain = length;
    }
    return statistics;
}

}  // namespace Tavrin::Database
