#include "StoreCheck.h"

#include <vector>

#include "Report.h"
#include "tavrin/storage/DiskDataStoreHeader.h"
#include "tavrin/storage/EntryTable.h"

namespace Tavrin::Tool {

using Database::DiskDataStoreHeader;
using Database::EntryTable;

namespace {

std::string EntryText(std::uint64_t id) { return "entry " + std::to_string(id); }

// Offsets and sizes that the header gives and the file's length, against each other.
std::string CheckSizes(const StoreImage& store) {
    const Database::DataStoreHeader& header = store.GetHeader();
    const std::uint64_t userDataEnd = static_cast<std::uint64_t>(header.headerSize) + header.userDataSize;
    const std::uint64_t firstEntry = store.IsDisk() ? userDataEnd + header.recordSize : userDataEnd;
    const std::uint64_t stride =
        store.IsDisk() ? DiskDataStoreHeader::EntrySize : static_cast<std::uint64_t>(header.recordSize) + 8;
    if (store.GetEntryOffset() != firstEntry) {
        return "the first entry stands at " + std::to_string(store.GetEntryOffset()) + ", the header sizes say " +
               std::to_string(firstEntry);
    }
    if (store.GetEntryStride() != stride) return "the entry size " + std::to_string(store.GetEntryStride()) +
                                                 " does not fit the record size " + std::to_string(header.recordSize);
    if (header.maxEntries > static_cast<std::uint32_t>(EntryTable::MaxEntries)) return "too many entries in the header";
    if (static_cast<std::uint64_t>(store.GetFileHeader().size) != store.GetExpectedSize()) {
        return "the file holds " + std::to_string(store.GetFileHeader().size) + " bytes, its header says " +
               std::to_string(store.GetExpectedSize());
    }
    const std::uint64_t recordFileSize =
        DiskDataStoreHeader::RecordFileHeaderSize + static_cast<std::uint64_t>(header.recordSize) * header.maxEntries;
    if (store.IsDisk() && static_cast<std::uint64_t>(store.GetRecordFileHeader().size) != recordFileSize) {
        return "the record file holds " + std::to_string(store.GetRecordFileHeader().size) + " bytes, the header says " +
               std::to_string(recordFileSize);
    }
    if (store.IsDisk() && !(store.GetRecordFileHeader().uuid == store.GetFileHeader().uuid)) {
        return "the record file belongs to another store (its Uuid differs)";
    }
    return header.currentEntries > header.maxEntries ? "more entries in use than exist" : "";
}

// Every entry's used flag; a used entry must not link anywhere.
std::string ReadUsedFlags(StoreImage& store, std::vector<bool>& used, ProgressFunction progress, void* context) {
    const std::uint32_t count = store.GetHeader().maxEntries;
    used.assign(count, false);
    std::uint32_t inUse = 0;
    for (std::uint32_t id = 0; id < count; ++id) {
        EntryFront front;
        const StatusCode status = store.ReadFront(id, front);
        if (status != Status::Success) return EntryText(id) + " can't be read: " + DescribeStatus(status);
        if (front.used && front.next != EntryTable::NoEntry) return EntryText(id) + " is in use and links to another";
        used[id] = front.used;
        inUse += front.used ? 1 : 0;
        if (progress != nullptr && id % 65536 == 0) progress(context, id, count);
    }
    if (inUse != store.GetHeader().currentEntries) {
        return std::to_string(inUse) + " entries are in use, the header counts " +
               std::to_string(store.GetHeader().currentEntries);
    }
    return "";
}

// The free list from its head: each free entry once, no entry in use, no loop, ending at the tail.
std::string WalkFreeList(StoreImage& store, const std::vector<bool>& used) {
    const std::uint32_t count = store.GetHeader().maxEntries;
    std::vector<bool> seen(count, false);
    std::uint64_t length = 0;
    std::int32_t last = EntryTable::NoEntry;
    for (std::int32_t id = store.GetFreeHead(); id != EntryTable::NoEntry;) {
        if (id < 0 || static_cast<std::uint32_t>(id) >= count) {
            return "the free list leads to entry " + std::to_string(id) + ", which does not exist";
        }
        if (used[id]) return "the free list runs into " + EntryText(id) + ", which is in use";
        if (seen[id]) return "the free list comes back to " + EntryText(id) + ": a loop";
        seen[id] = true;
        ++length;
        last = id;
        EntryFront front;
        const StatusCode status = store.ReadFront(static_cast<std::uint32_t>(id), front);
        if (status != Status::Success) return EntryText(id) + " can't be read: " + DescribeStatus(status);
        id = front.next;
    }
    if (last != EntryTable::NoEntry && last != store.GetFreeTail()) {
        return "the free list ends at " + EntryText(last) + ", the header says " + std::to_string(store.GetFreeTail());
    }
    for (std::uint32_t id = 0; id < count; ++id) {
        if (!used[id] && !seen[id]) return EntryText(id) + " is neither in use nor on the free list";
    }
    return "";
}

}  // namespace

std::string CheckStoreStructure(StoreImage& store, ProgressFunction progress, void* context) {
    std::string problem = CheckSizes(store);
    if (!problem.empty()) return problem;
    std::vector<bool> used;
    problem = ReadUsedFlags(store, used, progress, context);
    return problem.empty() ? WalkFreeList(store, used) : problem;
}

}  // namespace Tavrin::Tool
