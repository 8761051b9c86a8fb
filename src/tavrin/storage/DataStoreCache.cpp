#include "tavrin/storage/DataStoreCache.h"

#include <algorithm>
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
    // At least twice as many cells as slots, a power of two: probes stay short.
    std::uint32_t bits = 1;
    while ((std::uint64_t{1} << bits) < 2 * slots) ++bits;
    buffer_.reset(new (std::nothrow) unsigned char[static_cast<std::size_t>(bytes)]);
    slots_.reset(new (std::nothrow) Slot[static_cast<std::size_t>(slots)]);
    cells_.reset(new (std::nothrow) Cell[std::size_t{1} << bits]);
    order_.reset(new (std::nothrow) std::uint32_t[static_cast<std::size_t>(slots)]);
    if (!buffer_ || !slots_ || !cells_ || !order_) ThrowStatus(ConstructorOperation, Status::OutOfMemory);
    numEntries_ = static_cast<std::uint32_t>(slots);
    cellMask_ = static_cast<std::uint32_t>((std::uint64_t{1} << bits) - 1);
    cellShift_ = 32 - bits;
    for (std::uint32_t slot = 0; slot < numEntries_; ++slot) ages_.push_front(slots_[slot]);
}

DataStoreCache::~DataStoreCache() { ages_.clear(); }

// Fibonacci hashing: the high bits of the id times 2^32 / phi, so that neighbouring ids, which a
// store hands out in runs, land far apart.
std::uint32_t DataStoreCache::HomeOf(std::uint32_t id) const noexcept {
    return static_cast<std::uint32_t>((std::uint64_t{id} * 0x9E3779B9u) & 0xFFFFFFFFu) >> cellShift_;
}

std::uint32_t DataStoreCache::Probe(std::uint32_t id) const noexcept {
    std::uint32_t cell = HomeOf(id) & cellMask_;
    while (cells_[cell].id != NoEntry && cells_[cell].id != id) cell = (cell + 1) & cellMask_;
    return cell;
}

void DataStoreCache::Enter(std::uint32_t id, std::uint32_t slot) noexcept {
    cells_[Probe(id)] = Cell{id, slot};
    ++count_;
    ordered_ = false;
}

// Deletion by backward shift: every cell after the freed one that its probe passed moves up, so
// that no probe ever stops early at the hole.
void DataStoreCache::Remove(std::uint32_t id) noexcept {
    std::uint32_t hole = Probe(id);
    if (cells_[hole].id == NoEntry) return;
    for (std::uint32_t next = (hole + 1) & cellMask_; cells_[next].id != NoEntry; next = (next + 1) & cellMask_) {
        const std::uint32_t home = HomeOf(cells_[next].id) & cellMask_;
        // The cell at `next` may fill the hole when its home does not lie in (hole, next].
        if (((next - home) & cellMask_) >= ((next - hole) & cellMask_)) {
            cells_[hole] = cells_[next];
            hole = next;
        }
    }
    cells_[hole] = Cell{};
    --count_;
    ordered_ = false;
}

StatusCode DataStoreCache::Put(std::uint32_t id, const void* record, bool force, unsigned char** stored) noexcept {
    const Cell& found = cells_[Probe(id)];
    Slot* slot = nullptr;
    if (found.id == id) {
        slot = &slots_[found.slot];
    } else {
        slot = &ages_.back();
        if (slot->id != NoEntry) {
            if (!force) return Status::StoreFull;
            Remove(slot->id);
        }
        slot->id = id;
        Enter(id, NumberOf(*slot));
    }
    MakeNewest(*slot);
    unsigned char* bytes = BytesOf(NumberOf(*slot));
    std::memmove(bytes, record, entrySize_);  // the record may be a slot's own bytes
    if (stored != nullptr) *stored = bytes;
    return Status::Success;
}

void DataStoreCache::Erase(std::uint32_t id) noexcept {
    const Cell found = cells_[Probe(id)];
    if (found.id != id) return;
    Remove(id);
    Slot& slot = slots_[found.slot];
    slot.id = NoEntry;
    ages_.splice(ages_.end(), ages_, ages_.iterator_to(slot));
}

void DataStoreCache::Clear() noexcept {
    for (std::uint32_t number = 0; number < numEntries_; ++number) {
        Slot& slot = slots_[number];
        if (slot.id == NoEntry) continue;
        slot.id = NoEntry;
        ages_.splice(ages_.end(), ages_, ages_.iterator_to(slot));
    }
    std::fill(cells_.get(), cells_.get() + cellMask_ + 1, Cell{});
    count_ = 0;
    ordered_ = false;
}

unsigned char* DataStoreCache::Find(std::uint32_t id) noexcept {
    const Cell& found = cells_[Probe(id)];
    return found.id == id ? BytesOf(found.slot) : nullptr;
}

void DataStoreCache::Order() noexcept {
    if (ordered_) return;
    std::uint32_t count = 0;
    for (std::uint32_t number = 0; number < numEntries_; ++number) {
        if (slots_[number].id != NoEntry) order_[count++] = number;
    }
    std::sort(order_.get(), order_.get() + count,
              [this](std::uint32_t a, std::uint32_t b) { return slots_[a].id < slots_[b].id; });
    ordered_ = true;
}

std::uint32_t DataStoreCache::PositionOf(std::uint32_t id) const noexcept {
    const std::uint32_t* found = std::lower_bound(order_.get(), order_.get() + count_, id,
                                                  [this](std::uint32_t slot, std::uint32_t key) {
                                                      return slots_[slot].id < key;
                                                  });
    return static_cast<std::uint32_t>(found - order_.get());
}

StatusCode DataStoreCache::GetFirst(std::uint32_t& id, unsigned char*& record) noexcept {
    if (count_ == 0) return Status::NotFound;
    Order();
    id = slots_[order_[0]].id;
    record = BytesOf(order_[0]);
    return Status::Success;
}

StatusCode DataStoreCache::GetNext(std::uint32_t& id, unsigned char*& record) noexcept {
    if (Find(id) == nullptr) return Status::Invalid;
    Order();
    const std::uint32_t next = PositionOf(id) + 1;
    if (next >= count_) return Status::NotFound;
    id = slots_[order_[next]].id;
    record = BytesOf(order_[next]);
    return Status::Success;
}

StatusCode DataStoreCache::GetOldest(std::uint32_t& id, unsigned char*& record) noexcept {
    if (count_ == 0) return Status::NotFound;
    // The empty slots stand behind the occupied ones; a full cache, where this is asked, has none.
    for (auto slot = ages_.rbegin(); slot != ages_.rend(); ++slot) {
        if (slot->id == NoEntry) continue;
        id = slot->id;
        record = BytesOf(NumberOf(*slot));
        return Status::Success;
    }
    return Status::NotFound;
}

}  // namespace Tavrin::Database
