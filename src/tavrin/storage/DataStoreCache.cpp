#include "tavrin/storage/DataStoreCache.h"

#include <cstring>
#include <limits>
#include <new>

#include "tavrin/base/Throw.h"

namespace Tavrin::Database {

namespace {

constexpr const char* ConstructorOperation = "Tavrin::Database::DataStoreCache::DataStoreCache";
// A store's ids are signed 32-bit numbers: more slots could never be filled.
constexpr std::uint64_t MaxSlots = static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max());

}  // namespace

DataStoreCache::DataStoreCache(std::uint32_t entrySize, std::uint64_t cacheBytes) : entrySize_(entrySize) {
    if (entrySize == 0 || cacheBytes < entrySize) ThrowStatus(ConstructorOperation, Status::Invalid);
    const std::uint64_t slots = cacheBytes / entrySize;
    const std::uint64_t bytes = slots * entrySize;  // at most cacheBytes
    if (slots > MaxSlots || bytes > std::numeric_limits<std::ptrdiff_t>::max()) {
        ThrowStatus(ConstructorOperation, Status::OutOfMemory);
    }
    buffer_.reset(new (std::nothrow) unsigned char[static_cast<std::size_t>(bytes)]);
    slots_.reset(new (std::nothrow) Slot[static_cast<std::size_t>(slots)]);
    if (!buffer_ || !slots_) ThrowStatus(ConstructorOperation, Status::OutOfMemory);
    numEntries_ = static_cast<std::uint32_t>(slots);
    for (std::uint32_t slot = 0; slot < numEntries_; ++slot) ages_.push_front(slots_[slot]);
}

DataStoreCache::~DataStoreCache() {
    map_.clear();
    ages_.clear();
}

StatusCode DataStoreCache::Put(std::uint32_t id, const void* record, bool force) noexcept {
    IdMap::insert_commit_data commit;
    const auto [found, isNew] = map_.insert_unique_check(id, commit);
    Slot* slot = nullptr;
    if (!isNew) {
        slot = &*found;
    } else {
        slot = &ages_.back();
        if (slot->id == NoEntry) {
            slot->id = id;
            map_.insert_unique_commit(*slot, commit);
        } else {
            if (!force) return Status::StoreFull;
            // Erasing the oldest changes the tree, so the place found for `id` is found again.
            map_.erase(map_.iterator_to(*slot));
            slot->id = id;
            map_.insert_unique(*slot);
        }
    }
    MakeNewest(*slot);
    std::memmove(BytesOf(*slot), record, entrySize_);  // the record may be a slot's own bytes
    return Status::Success;
}

void DataStoreCache::Erase(std::uint32_t id) noexcept {
    const auto found = map_.find(id);
    if (found == map_.end()) return;
    Slot& slot = *found;
    map_.erase(found);
    slot.id = NoEntry;
    ages_.splice(ages_.end(), ages_, ages_.iterator_to(slot));
}

void DataStoreCache::Clear() noexcept {
    map_.clear_and_dispose([this](Slot* slot) {
        slot->id = NoEntry;
        ages_.splice(ages_.end(), ages_, ages_.iterator_to(*slot));
    });
}

unsigned char* DataStoreCache::Find(std::uint32_t id) noexcept {
    const auto found = map_.find(id);
    return found == map_.end() ? nullptr : BytesOf(*found);
}

StatusCode DataStoreCache::GetFirst(std::uint32_t& id, unsigned char*& record) noexcept {
    if (map_.empty()) return Status::NotFound;
    id = map_.begin()->id;
    record = BytesOf(*map_.begin());
    return Status::Success;
}

StatusCode DataStoreCache::GetNext(std::uint32_t& id, unsigned char*& record) noexcept {
    auto found = map_.find(id);
    if (found == map_.end()) return Status::Invalid;
    if (++found == map_.end()) return Status::NotFound;
    id = found->id;
    record = BytesOf(*found);
    return Status::Success;
}

StatusCode DataStoreCache::GetOldest(std::uint32_t& id, unsigned char*& record) noexcept {
    if (map_.empty()) return Status::NotFound;
    // The empty slots stand behind the occupied ones; a full cache, where this is asked, has none.
    for (auto slot = ages_.rbegin(); slot != ages_.rend(); ++slot) {
        if (slot->id == NoEntry) continue;
        id = slot->id;
        record = BytesOf(*slot);
        return Status::Success;
    }
    return Status::NotFound;
}

}  // namespace Tavrin::Database
