#include "tavrin/storage/EntryTable.h"

#include <algorithm>

namespace Tavrin::Database {

StatusCode EntryTable::Take(std::uint32_t& id) noexcept {
    if (freeHead_ == NoEntry) return Status::StoreFull;
    const auto taken = static_cast<std::uint32_t>(freeHead_);
    unsigned char* entry = EntryAt(taken);
    const std::int32_t next = NextOf(entry);
    // A used entry on the list, or a link out of range: take nothing.
    if ((entry[UsedOffset] & UsedBit) != 0 || !IsIdOrNone(next, header_.maxEntries)) return Status::Invalid;
    SetFreeHead(next);
    if (next == NoEntry) SetFreeTail(NoEntry);
    SetNext(entry, NoEntry);
    id = taken;
    return Status::Success;
}

void EntryTable::MarkUsed(std::uint32_t id) noexcept {
    EntryAt(id)[UsedOffset] = 1;
    SetCurrentEntries(header_.currentEntries + 1);
}

void EntryTable::Free(std::uint32_t id) noexcept {
    unsigned char* entry = EntryAt(id);
    entry[UsedOffset] = 0;
    if (header_.currentEntries != 0) SetCurrentEntries(header_.currentEntries - 1);
    SetNext(entry, freeHead_);
    if (freeHead_ == NoEntry) SetFreeTail(static_cast<std::int32_t>(id));
    SetFreeHead(static_cast<std::int32_t>(id));
}

void EntryTable::Clear() noexcept {
    SetFreeHead(NoEntry);
    SetCurrentEntries(0);
    Link(0, header_.maxEntries);
}

void EntryTable::Append(std::uint32_t count) noexcept {
    const std::uint32_t first = header_.maxEntries;
    SetMaxEntries(first + count);
    Link(first, count);
}

StatusCode EntryTable::Scan(std::uint64_t from, std::uint32_t& id) const noexcept {
    for (std::uint64_t candidate = from; candidate < header_.maxEntries; ++candidate) {
        if (IsUsed(static_cast<std::uint32_t>(candidate))) {
            id = static_cast<std::uint32_t>(candidate);
            return Status::Success;
        }
    }
    return Status::NotFound;
}

void EntryTable::Link(std::uint32_t first, std::uint32_t count) noexcept {
    if (count == 0) return;
    const std::uint32_t last = first + count - 1;
    for (std::uint32_t id = first; id <= last; ++id) {
        unsigned char* entry = EntryAt(id);
        entry[UsedOffset] = 0;
        SetNext(entry, id == last ? NoEntry : static_cast<std::int32_t>(id + 1));
    }
    if (freeHead_ == NoEntry) {
        SetFreeTail(static_cast<std::int32_t>(last));
        SetFreeHead(static_cast<std::int32_t>(first));
    } else if (freeTail_ == NoEntry) {
        // The tail is unknown (a damaged file): put the new entries in front instead.
        SetNext(EntryAt(last), freeHead_);
        SetFreeHead(static_cast<std::int32_t>(first));
    } else {
        SetNext(EntryAt(static_cast<std::uint32_t>(freeTail_)), static_cast<std::int32_t>(first));
        SetFreeTail(static_cast<std::int32_t>(last));
    }
}

// The used flags are the truth about which entries hold records: a process killed between setting
// (or clearing) a flag and counting it leaves currentEntries one off. They are the truth about the
// free list too: a damaged header can point freeHead at an entry in use, and a process killed inside
// an add leaves an entry that is neither used nor free; both show as a walk that does not lead
// through exactly the entries not in use.
void EntryTable::Repair() noexcept {
    std::uint32_t used = 0;
    for (std::uint32_t id = 0; id < header_.maxEntries; ++id) used += IsUsed(id) ? 1u : 0u;
    if (used != header_.currentEntries) SetCurrentEntries(used);
    Relink();
}

// A damaged list is made again, in rising id order, with the writes ordered as for linking new
// entries. A sound list whose tail is wrong only gets its tail.
void EntryTable::Relink() noexcept {
    const std::uint32_t free = header_.maxEntries - header_.currentEntries;
    std::uint32_t walked = 0;
    std::int32_t last = NoEntry;
    for (std::int32_t id = freeHead_; id != NoEntry;) {
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
        if (last != freeTail_) SetFreeTail(last);
        return;
    }
    SetFreeHead(NoEntry);
    std::int32_t head = NoEntry;
    std::int32_t tail = NoEntry;
    for (std::uint32_t id = header_.maxEntries; id-- > 0;) {
        if (IsUsed(id)) continue;
        SetNext(EntryAt(id), head);
        head = static_cast<std::int32_t>(id);
        if (tail == NoEntry) tail = head;
    }
    SetFreeTail(tail);
    SetFreeHead(head);
}

bool EntryTable::CountSurplus(const unsigned char* data, std::uint64_t dataSize, const Layout& layout,
                              std::uint32_t maxEntries, std::uint32_t& surplus) noexcept {
    const std::uint64_t expected = layout.firstEntryOffset + std::uint64_t{layout.entryStride} * maxEntries;
    if (dataSize < expected || (dataSize - expected) % layout.entryStride != 0) return false;
    const unsigned char* begin = data + expected;
    if (std::any_of(begin, data + dataSize, [](unsigned char byte) { return byte != 0; })) return false;
    surplus = static_cast<std::uint32_t>((dataSize - expected) / layout.entryStride);
    return true;
}

void EntryTable::SetCurrentEntries(std::uint32_t value) noexcept {
    DataStoreHeader::StoreCounter(header_.currentEntries, value);
    EncodeU32(data_ + DataStoreHeader::CurrentEntriesOffset, value);
}

void EntryTable::SetMaxEntries(std::uint32_t value) noexcept {
    DataStoreHeader::StoreCounter(header_.maxEntries, value);
    EncodeU32(data_ + DataStoreHeader::MaxEntriesOffset, value);
}

void EntryTable::SetFreeHead(std::int32_t value) noexcept {
    freeHead_ = value;
    EncodeI32(data_ + layout_.freeHeadOffset, value);
}

void EntryTable::SetFreeTail(std::int32_t value) noexcept {
    freeTail_ = value;
    EncodeI32(data_ + layout_.freeTailOffset, value);
}

}  // namespace Tavrin::Database
