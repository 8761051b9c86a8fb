#include "tavrin/storage/StoreStatistics.h"

#include "tavrin/base/File.h"
#include "tavrin/storage/DiskDataStore.h"
#include "tavrin/storage/MemoryDataStore.h"

namespace Tavrin::Database {

namespace {

std::uint64_t SizeOf(const std::string& path) {
    std::int64_t size = 0;
    return !path.empty() && Tavrin::File::GetSize(path, size) == Status::Success ? static_cast<std::uint64_t>(size) : 0;
}

StoreStatistics EntriesOf(const DataStore& store) {
    StoreStatistics statistics;
    if (!store.IsOpen()) return statistics;
    statistics.usedEntries = store.GetCurrentEntries();
    const std::uint32_t max = store.GetMaxEntries();
    statistics.freeEntries = max >= statistics.usedEntries ? max - statistics.usedEntries : 0;
    return statistics;
}

}  // namespace

StoreStatistics GetStatistics(const MemoryDataStore& store) {
    StoreStatistics statistics = EntriesOf(store);
    if (store.IsOpen() && !store.IsTemporary()) statistics.fileBytes = SizeOf(store.GetFileName());
    return statistics;
}

StoreStatistics GetStatistics(const DiskDataStore& store) {
    StoreStatistics statistics = EntriesOf(store);
    statistics.disk = true;
    if (!store.IsOpen()) return statistics;
    if (!store.IsTemporary()) statistics.fileBytes = SizeOf(store.GetFileName()) + SizeOf(store.GetRecordFileName());
    statistics.cacheLookups = store.GetRecordLookups();
    // Every lookup that the cache missed read the record file once.
    const std::uint64_t misses = store.GetRecordReads();
    statistics.cacheHits = statistics.cacheLookups > misses ? statistics.cacheLookups - misses : 0;
    return statistics;
}

StoreStatistics GetStatistics(const DataStore& store) {
    if (const auto* memory = dynamic_cast<const MemoryDataStore*>(&store)) return GetStatistics(*memory);
    if (const auto* disk = dynamic_cast<const DiskDataStore*>(&store)) return GetStatistics(*disk);
    return EntriesOf(store);
}

}  // namespace Tavrin::Database
