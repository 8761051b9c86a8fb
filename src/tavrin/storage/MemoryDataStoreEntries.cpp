// The entry operations of a memory store.
//
// Order of the writes. The bookkeeping lives in the mapping, and a process may die between any two
// stores into it. The writes of each operation are ordered so that such a death leaves no entry that
// is both in use and on the free list, and no entry marked in use before its record is in place; at
// worst one entry is leaked (neither used nor free), or, inside a growth step, the new entries are.
// The free list is empty exactly when freeHead is -1; freeTail is looked at only when it is not.
// - Add: freeHead moves on (and freeTail becomes -1 if the list is now empty), the entry's next is
//   cleared, the record is copied, then the used flag is set and currentEntries counted up.
// - Remove: the used flag is cleared and currentEntries counted down first; then the entry's next
//   points at the old head, freeTail is set if the list was empty, and freeHead is set last.
// - Linking new entries (creation, growth, Clear): the entries are written while no list reaches
//   them; then an empty list gets freeTail before freeHead, a non-empty one its old tail's next
//   before the new freeTail.
// - Growth: the file is extended (its blocks reserved first), maxEntries is written at once so that
//   the header and the file's length agree again, then the new entries are linked. A death before
//   maxEntries is written leaves zero entries behind the last one, which Open turns into free ones.
// - Clear: freeHead becomes -1 and currentEntries 0 before the entries are rewritten as free.
// - The count: a death between a used flag and currentEntries leaves the count one off; Open
//   counts the used flags again (RecountEntries).
#include <cstring>
#include <exception>
#include <limits>

#include "tavrin/base/Encoding.h"
#include "tavrin/storage/MemoryDataStore.h"

namespace Tavrin::Database {

namespace {

using Layout = MemoryDataStoreHeader;

constexpr std::uint64_t MaxDataSize = std::numeric_limits<std::uint32_t>::max() - FileMappedMemoryManager::HeaderSize;
constexpr std::uint64_t MaxEntries = static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max());

std::int32_t NextOf(const unsigned char* entry) noexcept { return DecodeI32(entry + Layout::EntryNextOffset); }

void SetNext(unsigned char* entry, std::int32_t next) noexcept { EncodeI32(entry + Layout::EntryNextOffset, next); }

}  // namespace

// The used flags are the truth about which entries hold records: a process killed between setting
// (or clearing) a flag and counting it leaves currentEntries one off, so Open counts the flags again.
// A cleanly closed file already agrees and is not written.
void MemoryDataStore::RecountEntries() noexcept {
    std::uint32_t used = 0;
    for (std::uint32_t id = 0; id < header_.maxEntries; ++id) used += IsUsed(id) ? 1u : 0u;
    if (used != header_.currentEntries) SetCurrentEntries(used);
}

// The used flags are the truth about the free list too. A damaged header can point freeHead at an
// entry in use (every Add would then answer 23), and a process killed inside Add leaves an entry
// that is neither used nor free; both show as a walk that does not lead through exactly the entries
// not in use. Such a list is made again, in rising id order, with the writes ordered as for linking
// new entries. A sound list whose tail is wrong only gets its tail. A sound file is not written.
void MemoryDataStore::RelinkFreeEntries() noexcept {
    const std::uint32_t free = header_.maxEntries - header_.currentEntries;
    std::uint32_t walked = 0;
    std::int32_t last = Layout::NoEntry;
    for (std::int32_t id = extension_.freeHead; id != Layout::NoEntry;) {
        const auto at = static_cast<std::uint32_t>(id);
        // Out of range, in use, or longer than the entries not in use (a circle): a damaged list.
        if (id < 0 || at >= header_.maxEntries || IsUsed(at) || walked == free) {
            walked = free + 1;
            break;
        }
        last = id;
        ++walked;
        id = NextOf(EntryAt(at));
    }
    if (walked == free) {
        if (last != extension_.freeTail) SetFreeTail(last);
        return;
    }
    SetFreeHead(Layout::NoEntry);
    std::int32_t head = Layout::NoEntry;
    std::int32_t tail = Layout::NoEntry;
    for (std::uint32_t id = header_.maxEntries; id-- > 0;) {
        if (IsUsed(id)) continue;
        SetNext(EntryAt(id), head);
        head = static_cast<std::int32_t>(id);
        if (tail == Layout::NoEntry) tail = head;
    }
    SetFreeTail(tail);
    SetFreeHead(head);
}

StatusCode MemoryDataStore::Add(std::uint32_t& id, const void* record) {
    if (data_ == nullptr) return Status::NotOpen;
    const bool full = header_.currentEntries == header_.maxEntries || extension_.freeHead == Layout::NoEntry;
    if (header_.growEntries != 0 && full) Grow();
    if (extension_.freeHead == Layout::NoEntry) return Status::StoreFull;

    const auto taken = static_cast<std::uint32_t>(extension_.freeHead);
    unsigned char* entry = EntryAt(taken);
    const std::int32_t next = NextOf(entry);
    const bool damaged = (entry[Layout::EntryUsedOffset] & Layout::EntryUsedBit) != 0 ||
                         (next != Layout::NoEntry && (next < 0 || static_cast<std::uint32_t>(next) >= header_.maxEntries));
    if (damaged) return Status::Invalid;  // a used entry on the list, or a link out of range: take nothing

    SetFreeHead(next);
    if (next == Layout::NoEntry) SetFreeTail(Layout::NoEntry);
    SetNext(entry, Layout::NoEntry);
    std::memcpy(entry + Layout::EntryFrontSize, record, header_.recordSize);
    entry[Layout::EntryUsedOffset] = 1;
    SetCurrentEntries(header_.currentEntries + 1);
    id = taken;
    return Status::Success;
}

StatusCode MemoryDataStore::Remove(std::uint32_t id) {
    if (data_ == nullptr) return Status::NotOpen;
    if (!IsUsed(id)) return Status::Invalid;
    unsigned char* entry = EntryAt(id);
    entry[Layout::EntryUsedOffset] = 0;
    if (header_.currentEntries != 0) SetCurrentEntries(header_.currentEntries - 1);
    SetNext(entry, extension_.freeHead);
    if (extension_.freeHead == Layout::NoEntry) SetFreeTail(static_cast<std::int32_t>(id));
    SetFreeHead(static_cast<std::int32_t>(id));
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

StatusCode MemoryDataStore::Scan(std::uint64_t from, std::uint32_t& id, unsigned char*& record) const noexcept {
    if (data_ == nullptr) return Status::NotOpen;
    for (std::uint64_t candidate = from; candidate < header_.maxEntries; ++candidate) {
        if (IsUsed(static_cast<std::uint32_t>(candidate))) {
            id = static_cast<std::uint32_t>(candidate);
            record = EntryAt(id) + Layout::EntryFrontSize;
            return Status::Success;
        }
    }
    return Status::NotFound;
}

void MemoryDataStore::Clear() {
    if (data_ == nullptr) ThrowStatus("Tavrin::Database::DataStore::Clear", Status::NotOpen);
    if (header_.currentEntries == 0) return;
    SetFreeHead(Layout::NoEntry);
    SetCurrentEntries(0);
    LinkEntries(0, header_.maxEntries);
}

void MemoryDataStore::LinkEntries(std::uint32_t first, std::uint32_t count) noexcept {
    if (count == 0) return;
    const std::uint32_t last = first + count - 1;
    for (std::uint32_t id = first; id <= last; ++id) {
        unsigned char* entry = EntryAt(id);
        entry[Layout::EntryUsedOffset] = 0;
        SetNext(entry, id == last ? Layout::NoEntry : static_cast<std::int32_t>(id + 1));
    }
    if (extension_.freeHead == Layout::NoEntry) {
        SetFreeTail(static_cast<std::int32_t>(last));
        SetFreeHead(static_cast<std::int32_t>(first));
    } else if (extension_.freeTail == Layout::NoEntry) {
        // The tail is unknown (a damaged file): put the new entries in front instead.
        SetNext(EntryAt(last), extension_.freeHead);
        SetFreeHead(static_cast<std::int32_t>(first));
    } else {
        SetNext(EntryAt(static_cast<std::uint32_t>(extension_.freeTail)), static_cast<std::int32_t>(first));
        SetFreeTail(static_cast<std::int32_t>(last));
    }
}

void MemoryDataStore::Grow() noexcept {
    const std::uint64_t maxEntries = static_cast<std::uint64_t>(header_.maxEntries) + header_.growEntries;
    const std::uint64_t dataSize = extension_.firstEntryOffset + maxEntries * extension_.entryStride;
    if (maxEntries > MaxEntries || dataSize > MaxDataSize) return;
    try {
        data_ = manager_.ResizeDataArea(static_cast<std::uint32_t>(dataSize));
    } catch (const std::exception&) {
        return;  // no room: the store stays as it was, and Add answers 40
    }
    const std::uint32_t first = header_.maxEntries;
    SetMaxEntries(static_cast<std::uint32_t>(maxEntries));
    LinkEntries(first, header_.growEntries);
}

void MemoryDataStore::SetCurrentEntries(std::uint32_t value) noexcept {
    header_.currentEntries = value;
    EncodeU32(data_ + DataStoreHeader::CurrentEntriesOffset, value);
}

void MemoryDataStore::SetMaxEntries(std::uint32_t value) noexcept {
    header_.maxEntries = value;
    EncodeU32(data_ + DataStoreHeader::MaxEntriesOffset, value);
}

void MemoryDataStore::SetFreeHead(std::int32_t value) noexcept {
    extension_.freeHead = value;
    EncodeI32(data_ + Layout::FreeHeadOffset, value);
}

void MemoryDataStore::SetFreeTail(std::int32_t value) noexcept {
    extension_.freeTail = value;
    EncodeI32(data_ + Layout::FreeTailOffset, value);
}

}  // namespace Tavrin::Database
