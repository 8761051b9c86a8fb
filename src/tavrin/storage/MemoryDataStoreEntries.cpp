// The entry operations of a memory store. The bookkeeping and the order of its writes, which keeps a
// store consistent when its process dies between any two of them, are EntryTable's (EntryTable.h);
// the record is copied in before the entry is marked used.
#include <cstring>
#include "tavrin/storage/MemoryDataStore.h"

namespace Tavrin::Database {

namespace {

using Layout = MemoryDataStoreHeader;


}  // namespace

EntryTable MemoryDataStore::Entries() noexcept {
    const EntryTable::Layout layout{extension_.firstEntryOffset, extension_.entryStride, Layout::FreeHeadOffset,
                                    Layout::FreeTailOffset};
    return EntryTable(data_, layout, header_, extension_.freeHead, extension_.freeTail);
}

StatusCode MemoryDataStore::Add(std::uint32_t& id, const void* record) {
    if (data_ == nullptr) return Status::NotOpen;
    const bool full = header_.currentEntries == header_.maxEntries || extension_.freeHead == Layout::NoEntry;
    if (header_.growEntries != 0 && full) Grow();
    EntryTable entries = Entries();
    std::uint32_t taken = 0;
    const StatusCode status = entries.Take(taken);
    if (status != Status::Success) return status;
    std::memcpy(entries.EntryAt(taken) + Layout::EntryFrontSize, record, header_.recordSize);
    entries.MarkUsed(taken);
    id = taken;
    return Status::Success;
}

StatusCode MemoryDataStore::Remove(std::uint32_t id) {
    if (data_ == nullptr) return Status::NotOpen;
    if (!IsUsed(id)) return Status::Invalid;
    Entries().Free(id);
    return Status::Success;
}

StatusCode MemoryDataStore::Update(std::uint32_t id, const void* record) {
    if (data_ == nullptr) return Status::NotOpen;
    if (!IsUsed(id)) return Status::OutOfRange;
    std::memcpy(EntryAt(id) + Layout::EntryFrontSize, record, header_.recordSize);
    return Status::Success;
}

StatusCode MemoryDataStore::Read(std::uint32_t id, void* buffer) {
    if (data_ == nullptr) return Status::NotOpen;
    if (!IsUsed(id)) return Status::Invalid;
    std::memcpy(buffer, EntryAt(id) + Layout::EntryFrontSize, header_.recordSize);
    return Status::Success;
}

StatusCode MemoryDataStore::GetEntry(std::uint32_t id, unsigned char*& record) {
    if (data_ == nullptr) return Status::NotOpen;
    unsigned char* found = FindUsedEntry(id);
    if (found == nullptr) return Status::OutOfRange;
    record = found;
    return Status::Success;
}

StatusCode MemoryDataStore::GetFirst(std::uint32_t& id, unsigned char*& record) { return Scan(0, id, record); }

StatusCode MemoryDataStore::GetNext(std::uint32_t& id, unsigned char*& record) {
    return Scan(static_cast<std::uint64_t>(id) + 1, id, record);
}

StatusCode MemoryDataStore::Scan(std::uint64_t from, std::uint32_t& id, unsigned char*& record) noexcept {
    if (data_ == nullptr) return Status::NotOpen;
    std::uint32_t found = 0;
    const StatusCode status = Entries().Scan(from, found);
    if (status != Status::Success) return status;
    id = found;
    record = EntryAt(found) + Layout::EntryFrontSize;
    return Status::Success;
}

void MemoryDataStore::Clear() {
    if (data_ == nullptr) ThrowStatus("Tavrin::Database::DataStore::Clear", Status::NotOpen);
    if (header_.currentEntries != 0) Entries().Clear();
}

void MemoryDataStore::Grow() noexcept {
    const std::uint64_t maxEntries = static_cast<std::uint64_t>(header_.maxEntries) + header_.growEntries;
    if (maxEntries > EntryTable::MaxEntries ||
        !GrowDataArea(extension_.firstEntryOffset + maxEntries * extension_.entryStride)) {
        return;  // no room: the store stays as it was, and Add answers 40
    }
    Entries().Append(header_.growEntries);
}

}  // namespace Tavrin::Database
