// The entry file of a hash index: creation, opening, extension, the free list and the chain walks.
// Its two checks are in HashIndexCheck.cpp.
#include "tavrin/indexes/HashIndexEntryHandler.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <limits>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/Exception.h"
#include "tavrin/base/Throw.h"

namespace Tavrin::Database {

namespace {

constexpr const char* ConstructorOperation = "Tavrin::Database::HashIndex::EntryHandler::EntryHandler";
constexpr const char* OpenOperation = "Tavrin::Database::HashIndex::EntryHandler::Open";
constexpr const char* ExtendOperation = "Tavrin::Database::HashIndex::EntryHandler::Extend";
constexpr std::uint64_t MaxDataSize = std::numeric_limits<std::uint32_t>::max() - FileMappedMemoryManager::HeaderSize;

}  // namespace

HashIndex::EntryHandler::EntryHandler(const HashIndex& owner) noexcept
    : owner_(owner),
      entrySize_(owner.GetKeySize() + EntryHeaderSize),
      entryReciprocal_(~std::uint64_t{0} / entrySize_ + 1) {}

HashIndex::EntryHandler::~EntryHandler() { Release(); }

void HashIndex::EntryHandler::Create(const std::string* fileName, const Tavrin::Uuid* uuid, std::uint32_t entries) {
    const std::uint64_t dataSize = BlockSize + std::uint64_t{entries} * entrySize_;
    if (dataSize > MaxDataSize) {
        ThrowDatabase(ConstructorOperation, DatabaseException::InvalidParameter,
                      "invalid entry list size for index <%s>", owner_.GetName().c_str());
    }
    const auto size = static_cast<std::uint32_t>(dataSize);
    Map(fileName != nullptr ? manager_.Create(*fileName, size, *uuid) : manager_.Create(size));
    try {
        Write(OwnerOffset, 0);
        Write(EntriesOffset, 0);
        SetMaxEntries(0);
        Write(UsedEntriesOffset, 0);
        Write(EntrySizeOffset, entrySize_);
        Write(FreeHeadOffset, NoEntry);
        Write(FreeTailOffset, NoEntry);
        LinkEntries(entries);
        manager_.Publish();
    } catch (const std::exception&) {
        Release();
        throw;
    }
}

StatusCode HashIndex::EntryHandler::Open(const std::string& fileName, const Tavrin::Uuid& uuid) noexcept {
    if (IsOpen()) return Status::Failure;
    try {
        Map(manager_.Open(fileName, uuid));
        Adopt(OpenOperation);
    } catch (const std::exception&) {
        Release();
        return Status::Failure;
    }
    return Status::Success;
}

// Every field is checked, in 64 bits, before anything follows from it: the entry size first, since
// the entry count is worked out by dividing by it.
void HashIndex::EntryHandler::Adopt(const char* operation) {
    const std::uint64_t dataSize = manager_.GetDataSize();
    if (dataSize < BlockSize || Read(EntrySizeOffset) != entrySize_) ThrowStatus(operation, Status::Invalid);
    const std::uint64_t area = dataSize - BlockSize;
    const std::uint32_t maxEntries = Read(MaxEntriesOffset);
    if (area % entrySize_ != 0 || maxEntries > area / entrySize_ || Read(UsedEntriesOffset) > maxEntries) {
        ThrowStatus(operation, Status::Invalid);
    }
    const std::uint64_t limit = std::uint64_t{maxEntries} * entrySize_;
    const auto isEntryOrNone = [&](std::uint32_t offset) {
        return offset == NoEntry || (offset < limit && offset % entrySize_ == 0);
    };
    const std::uint32_t head = Read(FreeHeadOffset);
    const std::uint32_t tail = Read(FreeTailOffset);
    // A list with a head and no tail (or the reverse) would link new entries behind an entry in use.
    if (!isEntryOrNone(head) || !isEntryOrNone(tail) || (head == NoEntry) != (tail == NoEntry)) {
        ThrowStatus(operation, Status::Invalid);
    }
    // Entries behind maxEntries are what an extension left when its process died before it linked
    // them: zero bytes. Anything else there is a maxEntries damaged below the entries in use.
    const unsigned char* surplus = area_ + limit;
    const unsigned char* end = area_ + area;
    if (std::any_of(surplus, end, [](unsigned char byte) { return byte != 0; })) {
        ThrowStatus(operation, Status::Invalid);
    }
    Write(OwnerOffset, 0);
    Write(EntriesOffset, 0);
    areaSize_ = static_cast<std::uint32_t>(limit);
    LinkEntries(static_cast<std::uint32_t>(area / entrySize_ - maxEntries));
}

void HashIndex::EntryHandler::Extend(std::uint32_t maxEntries) {
    if (maxEntries < GetMaxEntries()) ThrowStatus(ExtendOperation, Status::Invalid);
    const std::uint64_t dataSize = BlockSize + std::uint64_t{maxEntries} * entrySize_;
    if (dataSize > MaxDataSize) ThrowStatus(ExtendOperation, Status::LengthMismatch);
    // The block moves with the mapping and keeps its fields; only the pointers are taken anew.
    Map(manager_.ResizeDataArea(static_cast<std::uint32_t>(dataSize)));
    Adopt(ExtendOperation);
}

void HashIndex::EntryHandler::Clear() noexcept {
    const std::uint32_t entries = GetMaxEntries();
    Write(UsedEntriesOffset, 0);
    SetMaxEntries(0);
    Write(FreeHeadOffset, NoEntry);
    Write(FreeTailOffset, NoEntry);
    LinkEntries(entries);
}

void HashIndex::EntryHandler::Release() noexcept {
    manager_.Close();
    Map(nullptr);
}

void HashIndex::EntryHandler::Discard() noexcept {
    try {
        manager_.Discard();
    } catch (const std::exception&) {
        manager_.Close();
    }
    Map(nullptr);
}

void HashIndex::EntryHandler::Map(unsigned char* data) noexcept {
    block_ = data;
    area_ = data == nullptr ? nullptr : data + BlockSize;
    if (data == nullptr) areaSize_ = 0;
}

void HashIndex::EntryHandler::SetMaxEntries(std::uint32_t maxEntries) noexcept {
    Write(MaxEntriesOffset, maxEntries);
    areaSize_ = maxEntries * entrySize_;
}

// The mapping holds room for `count` more entries behind maxEntries (the callers made sure).
void HashIndex::EntryHandler::LinkEntries(std::uint32_t count) noexcept {
    if (count == 0) return;
    const std::uint32_t maxEntries = GetMaxEntries();
    const std::uint32_t first = maxEntries * entrySize_;
    std::uint32_t offset = first;
    for (std::uint32_t i = 0; i < count; ++i, offset += entrySize_) {
        unsigned char* entry = area_ + offset;
        EncodeU32(entry + EntryOffsetOffset, offset);
        EncodeU32(entry + NextOffset, i + 1 < count ? offset + entrySize_ : NoEntry);
        EncodeU32(entry + PreviousOffset, NoEntry);
        EncodeU32(entry + RecordIdOffset, NoEntry);
        EncodeU32(entry + KeyOffsetOffset, offset + EntryHeaderSize);
    }
    const std::uint32_t tail = GetFreeTail();
    if (tail != NoEntry) {
        SetNext(tail, first);
    } else {
        Write(FreeHeadOffset, first);
    }
    SetMaxEntries(maxEntries + count);
    Write(FreeTailOffset, offset - entrySize_);
}

StatusCode HashIndex::EntryHandler::Allocate(const unsigned char* key, std::uint32_t recordId,
                                             std::uint32_t& entry) noexcept {
    const std::uint32_t head = GetFreeHead();
    if (head == NoEntry) return Status::StoreFull;
    // A damaged list may name an entry outside the area or one that a chain holds.
    if (!IsEntry(head) || GetRecordId(head) != NoEntry) return Status::Invalid;
    const std::uint32_t next = GetNext(head);
    if (next != NoEntry && !IsEntry(next)) return Status::Invalid;
    std::memcpy(area_ + head + EntryHeaderSize, key, entrySize_ - EntryHeaderSize);
    SetRecordId(head, recordId);
    Write(UsedEntriesOffset, GetUsedEntries() + 1);
    Write(FreeHeadOffset, next);
    if (next == NoEntry) Write(FreeTailOffset, NoEntry);
    entry = head;
    return Status::Success;
}

void HashIndex::EntryHandler::Free(std::uint32_t entry) noexcept {
    SetNext(entry, GetFreeHead());
    SetRecordId(entry, NoEntry);
    // A count damaged to 0 stays at 0 rather than wrap to a count that would split without end.
    const std::uint32_t used = GetUsedEntries();
    if (used != 0) Write(UsedEntriesOffset, used - 1);
    Write(FreeHeadOffset, entry);
    if (GetFreeTail() == NoEntry) Write(FreeTailOffset, entry);
}

bool HashIndex::EntryHandler::Matches(std::uint32_t entry, const unsigned char* key) const noexcept {
    const unsigned char* stored = GetKey(entry);
    if (owner_.order_.Compare(key, stored) != 0) return false;
    const std::uint32_t tail = owner_.duplicateTail_;
    return tail == 0 || std::memcmp(key + tail, stored + tail, 4) == 0;
}

// A chain of a valid file has at most maxEntries entries, so a walk that takes more steps has met
// a loop.
StatusCode HashIndex::EntryHandler::Find(std::uint32_t head, const unsigned char* key,
                                         std::uint32_t& entry) const noexcept {
    const std::uint32_t steps = GetMaxEntries();
    std::uint32_t offset = head;
    for (std::uint32_t step = 0; offset != NoEntry; ++step) {
        if (step == steps || !IsEntry(offset)) return Status::Invalid;
        if (Matches(offset, key)) {
            entry = offset;
            return Status::Success;
        }
        offset = GetNext(offset);
    }
    return Status::NotFound;
}

StatusCode HashIndex::EntryHandler::CheckChain(std::uint32_t head) const noexcept {
    const std::uint32_t steps = GetMaxEntries();
    std::uint32_t offset = head;
    for (std::uint32_t step = 0; offset != NoEntry; ++step) {
        if (step == steps || !IsEntry(offset)) return Status::Invalid;
        offset = GetNext(offset);
    }
    return Status::Success;
}

}  // namespace Tavrin::Database
