#pragma once
// Figures of a store for people and for tuning: how full it is, how large its files are and, for a
// disk store, how well its cache serves the reads.

#include <cstdint>

namespace Tavrin::Database {

class DataStore;
class DiskDataStore;
class MemoryDataStore;

/// What GetStatistics tells of a store. A store that is not open gives zeros.
struct StoreStatistics {
    /// True for a disk store, whose records lie in a record file behind a cache.
    bool disk = false;
    /// Entries that hold a record.
    std::uint32_t usedEntries = 0;
    /// Entries that exist and hold none.
    std::uint32_t freeEntries = 0;
    /// Bytes of the store's files on the disk (the record file included); 0 for a temporary store.
    std::uint64_t fileBytes = 0;
    /// Reads of a record through the cache since the store was made (disk store only).
    std::uint64_t cacheLookups = 0;
    /// Those of them that the cache answered without reading the record file.
    std::uint64_t cacheHits = 0;

    /// cacheHits / cacheLookups, 0 before the first lookup.
    double GetHitRate() const noexcept {
        return cacheLookups == 0 ? 0.0 : static_cast<double>(cacheHits) / static_cast<double>(cacheLookups);
    }
};

/// The figures of a memory store: used and free entries, the file's bytes.
StoreStatistics GetStatistics(const MemoryDataStore& store);
/// The figures of a disk store: as a memory store's, with both files' bytes and the cache's hits.
StoreStatistics GetStatistics(const DiskDataStore& store);
/// The figures of any store: the two above by the store's class, otherwise the entries alone.
StoreStatistics GetStatistics(const DataStore& store);

}  // namespace Tavrin::Database
