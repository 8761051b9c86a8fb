// The entry operations of a disk store: the entry table in the mapping (EntryTable.h), the records in
// the cache and the record file.
//
// Order of the writes, beside those of EntryTable.h. An entry is marked NeverWritten before it is
// marked used, and a record's mark becomes Written only after its bytes are in the record file, so
// that a process that dies between any two steps never leaves a used entry marked Written whose
// record file bytes are not its newest written ones. An updated entry is marked OlderWritten after
// the cache took the record: a death before that loses the update, and the record file has the
// version before it.
#include <cstring>

#include "tavrin/storage/DiskDataStore.h"

namespace Tavrin::Database {

namespace {

using Layout = DiskDataStoreHeader;


std::uint64_t PositionOf(std::uint32_t id, std::uint32_t recordSize) {
    return Layout::RecordFileHeaderSize + std::uint64_t{recordSize} * id;
}

}  // namespace

EntryTable DiskDataStore::Entries() noexcept {
    const EntryTable::Layout layout{extension_.entryTableOffset, Layout::EntrySize, Layout::FreeHeadOffset,
                                    Layout::FreeTailOffset};
    return EntryTable(data_, layout, header_, extension_.freeHead, extension_.freeTail);
}

StatusCode DiskDataStore::Add(std::uint32_t& id, const void* record) {
    if (!IsOpen()) return Status::NotOpen;
    const bool full = header_.currentEntries == header_.maxEntries || extension_.freeHead == EntryTable::NoEntry;
    if (header_.growEntries != 0 && full) Grow();
    EntryTable entries = Entries();
    std::uint32_t taken = 0;
    StatusCode status = entries.Take(taken);
    if (status != Status::Success) return status;
    unsigned char* entry = entries.EntryAt(taken);
    entry[Layout::MarkOffset] = Layout::NeverWritten;
    entries.MarkUsed(taken);
    status = Cache(taken, record);
    if (status != Status::Success) {
        entries.Free(taken);
        entry[Layout::MarkOffset] = Layout::Written;
        return status;
    }
    id = taken;
    return Status::Success;
}

StatusCode DiskDataStore::Remove(std::uint32_t id) {
    if (!IsOpen()) return Status::NotOpen;
    if (!IsUsed(id)) return Status::Invalid;
    cache_.Erase(id);
    Entries().Free(id);
    EntryAt(id)[Layout::MarkOffset] = Layout::Written;
    return Status::Success;
}

StatusCode DiskDataStore::Update(std::uint32_t id, const void* record) {
    if (!IsOpen()) return Status::NotOpen;
    if (!IsUsed(id)) return Status::OutOfRange;
    const StatusCode status = Cache(id, record);
    if (status != Status::Success) return status;
    unsigned char& mark = EntryAt(id)[Layout::MarkOffset];
    if (mark == Layout::Written) mark = Layout::OlderWritten;
    return Status::Success;
}

StatusCode DiskDataStore::Read(std::uint32_t id, void* buffer) {
    if (!IsOpen()) return Status::NotOpen;
    if (!IsUsed(id)) return Status::OutOfRange;
    ++recordLookups_;
    if (const unsigned char* cached = cache_.Find(id)) {
        std::memcpy(buffer, cached, header_.recordSize);
        return Status::Success;
    }
    const StatusCode status = ReadRecord(id, buffer);
    if (status != Status::Success) return status;
    Cache(id, buffer);  // the buffer is good whether or not the cache takes it
    return Status::Success;
}

StatusCode DiskDataStore::GetEntry(std::uint32_t id, unsigned char*& record) {
    if (!IsOpen()) return Status::NotOpen;
    if (!IsUsed(id)) return Status::OutOfRange;
    ++recordLookups_;
    unsigned char* cached = cache_.Find(id);
    if (cached == nullptr) {
        unsigned char* scratch = data_ + extension_.scratchOffset;
        StatusCode status = ReadRecord(id, scratch);
        if (status == Status::Success) status = Cache(id, scratch, &cached);
        if (status != Status::Success) return status;
    }
    record = cached;
    return Status::Success;
}

StatusCode DiskDataStore::GetFirst(std::uint32_t& id, unsigned char*& record) { return Scan(0, id, record); }

StatusCode DiskDataStore::GetNext(std::uint32_t& id, unsigned char*& record) {
    return Scan(static_cast<std::uint64_t>(id) + 1, id, record);
}

StatusCode DiskDataStore::Scan(std::uint64_t from, std::uint32_t& id, unsigned char*& record) {
    if (!IsOpen()) return Status::NotOpen;
    std::uint32_t found = 0;
    StatusCode status = Entries().Scan(from, found);
    if (status == Status::Success) status = GetEntry(found, record);
    if (status == Status::Success) id = found;
    return status;
}

void DiskDataStore::Clear() {
    if (!IsOpen()) ThrowStatus("Tavrin::Database::DataStore::Clear", Status::NotOpen);
    if (header_.currentEntries == 0) return;
    cache_.Clear();
    Entries().Clear();
    for (std::uint32_t id = 0; id < header_.maxEntries; ++id) EntryAt(id)[Layout::MarkOffset] = Layout::Written;
}

// The control file grows first and the record file after it; a death between the two leaves zero
// entries in the control file, which the next open links (and gives their records).
void DiskDataStore::Grow() noexcept {
    const std::uint64_t maxEntries = static_cast<std::uint64_t>(header_.maxEntries) + header_.growEntries;
    if (maxEntries > EntryTable::MaxEntries ||
        !GrowDataArea(extension_.entryTableOffset + maxEntries * Layout::EntrySize)) {
        return;  // no room: the store stays as it was, and Add answers 40
    }
    // When the record file can't grow, the mapping stays larger than the header says; the next
    // growth finds it at its size already.
    const std::int64_t recordFileSize =
        Layout::RecordFileHeaderSize + static_cast<std::int64_t>(maxEntries * header_.recordSize);
    if (recordFile_.SetSize(recordFileSize) != Status::Success) return;
    Entries().Append(header_.growEntries);
}

// Puts the record into the cache, writing the oldest cached record back first when the cache is full.
StatusCode DiskDataStore::Cache(std::uint32_t id, const void* record, unsigned char** stored) noexcept {
    StatusCode status = cache_.Put(id, record, false, stored);
    if (status != Status::StoreFull) return status;
    std::uint32_t oldest = 0;
    unsigned char* bytes = nullptr;
    status = cache_.GetOldest(oldest, bytes);
    if (status == Status::Success) status = WriteBack(oldest, bytes);
    return status != Status::Success ? status : cache_.Put(id, record, true, stored);
}

// Writes a cached record to its place unless the record file holds it as it is already.
StatusCode DiskDataStore::WriteBack(std::uint32_t id, const unsigned char* record) noexcept {
    unsigned char& mark = EntryAt(id)[Layout::MarkOffset];
    if (mark == Layout::Written) return Status::Success;
    const StatusCode status = recordFile_.WriteAt(record, header_.recordSize, PositionOf(id, header_.recordSize));
    if (status != Status::Success) return status;
    ++recordWrites_;
    mark = Layout::Written;
    return Status::Success;
}

void DiskDataStore::WriteBackAll() noexcept {
    std::uint32_t id = 0;
    unsigned char* record = nullptr;
    for (StatusCode status = cache_.GetFirst(id, record); status == Status::Success;
         status = cache_.GetNext(id, record)) {
        if (WriteBack(id, record) != Status::Success) return;
    }
}

StatusCode DiskDataStore::ReadRecord(std::uint32_t id, void* buffer) noexcept {
    const StatusCode status = recordFile_.ReadAt(buffer, header_.recordSize, PositionOf(id, header_.recordSize));
    if (status == Status::Success) ++recordReads_;
    return status;
}

}  // namespace Tavrin::Database
