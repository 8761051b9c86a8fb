#pragma once
// The in-process references: std::map (ordered) and std::unordered_map (hashed, reserved for N),
// holding the value as a struct. What a program pays with no store at all.

#include <cstdint>
#include <map>
#include <unordered_map>

#include "Phases.h"

namespace Tavrin::Compare {

template <class Map, bool IsOrdered>
class StdStore {
public:
    static constexpr bool Ordered = IsOrdered;

    explicit StdStore(std::uint64_t n) {
        if constexpr (!IsOrdered) map_.reserve(n);
    }

    void Begin(Phase) {}
    void End(Phase) {}

    void Insert(std::uint64_t key, const Value& value) {
        if (!map_.emplace(key, value).second) throw CompareError("insert: key exists");
    }
    bool Get(std::uint64_t key, Value& value) {
        const auto found = map_.find(key);
        if (found == map_.end()) return false;
        value = found->second;
        return true;
    }
    bool Update(std::uint64_t key) {
        const auto found = map_.find(key);
        if (found == map_.end()) return false;
        Value value = found->second;
        ++value.counter;
        found->second = value;
        return true;
    }
    bool Remove(std::uint64_t key) { return map_.erase(key) == 1; }
    template <class Visit>
    void Scan(Visit&& visit) {
        for (const auto& [key, value] : map_) visit(key, value.counter, value.number);
    }
    std::uint64_t Count() { return map_.size(); }

private:
    Map map_;
};

using StdMapStore = StdStore<std::map<std::uint64_t, Value>, true>;
using StdUnorderedMapStore = StdStore<std::unordered_map<std::uint64_t, Value>, false>;

}  // namespace Tavrin::Compare
