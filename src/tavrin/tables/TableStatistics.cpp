#include "tavrin/base/MutexHolder.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Database {

StoreStatistics Table::GetStoreStatistics() {
    if (HasNoStore()) return StoreStatistics();
    MutexHolder holder(GetMutex());
    return GetStatistics(*dataStore_);
}

}  // namespace Tavrin::Database
