#include "StoreRegistry.h"

#include "StdStores.h"

namespace Tavrin::Compare {

std::vector<StoreEntry> AllStores() {
    std::vector<StoreEntry> stores;
    AddTavrinStores(stores);
    AddStdStores(stores);
#ifdef TAVRIN_COMPARE_LMDB
    AddLmdbStores(stores);
#endif
#ifdef TAVRIN_COMPARE_BERKELEY
    AddBerkeleyStores(stores);
#endif
#ifdef TAVRIN_COMPARE_KYOTO
    AddKyotoStores(stores);
#endif
#ifdef TAVRIN_COMPARE_TKRZW
    AddTkrzwStores(stores);
#endif
#ifdef TAVRIN_COMPARE_SQLITE
    AddSqliteStores(stores);
#endif
    return stores;
}

const StoreEntry* FindStore(const std::vector<StoreEntry>& stores, const std::string& name) {
    for (const StoreEntry& store : stores) {
        if (store.name == name) return &store;
    }
    return nullptr;
}

void AddStdStores(std::vector<StoreEntry>& stores) {
    stores.push_back({"std-map", "std::map<uint64_t, value struct>",
                      [](std::uint64_t n, const std::string&) { return RunW1<StdMapStore>(n); }});
    stores.push_back({"std-unordered-map", "std::unordered_map<uint64_t, value struct>, reserved for N",
                      [](std::uint64_t n, const std::string&) { return RunW1<StdUnorderedMapStore>(n); }});
}

}  // namespace Tavrin::Compare
