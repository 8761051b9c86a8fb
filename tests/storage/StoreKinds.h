#pragma once
// The stores that the contract suite runs against: a memory store, and disk stores whose caches hold
// one record, a few records, or every record of the tests.

#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include "tavrin/storage/DiskDataStore.h"
#include "tavrin/storage/MemoryDataStore.h"

namespace Tavrin::Database::Testing {

// Records big enough that 1 KB of cache holds only a few.
constexpr std::uint32_t ContractRecordSize = 300;

struct StoreKind {
    std::string name;
    std::function<std::unique_ptr<DataStore>(UserDataStore*, std::uint32_t initial, std::uint32_t grow)> make;
    StatusCode readOfUnusedEntry;  // what Read answers for an entry not in use
    bool temporaryCopies;          // whether SaveAs copies a temporary store
};

inline std::ostream& operator<<(std::ostream& out, const StoreKind& kind) { return out << kind.name; }

inline StoreKind DiskKind(const std::string& name, std::uint32_t cacheSize) {
    return {name,
            [cacheSize](UserDataStore* owner, std::uint32_t initial, std::uint32_t grow) {
                return std::make_unique<DiskDataStore>(owner, ContractRecordSize, initial, grow, cacheSize);
            },
            Status::OutOfRange, false};
}

inline std::vector<StoreKind> StoreKinds() {
    return {{"Memory",
             [](UserDataStore* owner, std::uint32_t initial, std::uint32_t grow) {
                 return std::make_unique<MemoryDataStore>(owner, ContractRecordSize, initial, grow);
             },
             Status::Invalid, true},
            DiskKind("DiskOneSlot", 0), DiskKind("DiskFewSlots", 1), DiskKind("DiskWholeStore", 4096)};
}

}  // namespace Tavrin::Database::Testing
