#pragma once
// Every store that this build can compare, by name. Peers are compiled in only when their
// development package was found; the in-process references and our tables are always there.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "Phases.h"

namespace Tavrin::Compare {

struct StoreEntry {
    std::string name;
    // How the store is set up, one line for the report.
    std::string settings;
    // Runs W1 with n records; files go to `directory`, which exists and is empty.
    std::function<RunResult(std::uint64_t n, const std::string& directory)> run;
};

// In the order of the report: ours, the references, then the peers.
std::vector<StoreEntry> AllStores();
// Null if this build has no store of that name.
const StoreEntry* FindStore(const std::vector<StoreEntry>& stores, const std::string& name);

void AddTavrinStores(std::vector<StoreEntry>& stores);
void AddStdStores(std::vector<StoreEntry>& stores);
void AddLmdbStores(std::vector<StoreEntry>& stores);
void AddBerkeleyStores(std::vector<StoreEntry>& stores);
void AddKyotoStores(std::vector<StoreEntry>& stores);
void AddTkrzwStores(std::vector<StoreEntry>& stores);
void AddSqliteStores(std::vector<StoreEntry>& stores);

}  // namespace Tavrin::Compare
