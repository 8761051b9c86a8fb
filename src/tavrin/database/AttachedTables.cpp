#include "tavrin/database/AttachedTables.h"

#include <mutex>
#include <unordered_set>

namespace Tavrin::Database {

namespace {

// Both live to the end of the process, never destroyed: a Database that is itself a static object
// may release its tables after every other static is gone. The mutex is a plain standard one: it is
// never handed out and is held for one set operation only.
std::mutex& SetMutex() {
    static std::mutex* const mutex = new std::mutex;
    return *mutex;
}

std::unordered_set<const ITable*>& Tables() {
    static auto* const tables = new std::unordered_set<const ITable*>;
    return *tables;
}

}  // namespace

bool AttachedTables::Claim(const ITable* table) {
    const std::lock_guard<std::mutex> lock(SetMutex());
    return Tables().insert(table).second;
}

void AttachedTables::Release(const ITable* table) noexcept {
    const std::lock_guard<std::mutex> lock(SetMutex());
    Tables().erase(table);
}

}  // namespace Tavrin::Database
