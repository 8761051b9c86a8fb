#pragma once
// The five timed phases of W1 and their checks, run on any store type.
//
// A store is a plain class, not an interface, so that the per-record calls inline into the loops
// below and a virtual call costs no store anything. It provides:
//   static constexpr bool Ordered;                 does Scan give keys in ascending order?
//   void Begin(Phase), End(Phase);                 around each phase (transactions, statements)
//   void Insert(std::uint64_t key, const Value&);  throws CompareError on failure
//   bool Get(std::uint64_t key, Value& value);     copies the value out; false if missing
//   bool Update(std::uint64_t key);                reads, adds 1 to the counter, writes back
//   bool Remove(std::uint64_t key);
//   template <class Visit> void Scan(Visit&&);     visit(key, counter, number) for every record
//   std::uint64_t Count();
// and, if it has a lookup of many keys at once, void GetBatch(const std::uint64_t* keys,
// std::size_t count, Value* values), which throws CompareError for a key it misses: the phase
// get64 then times it on runs of 64 keys of the get phase's order, in ns per key.
// and, if it can tell, double ModelBytesPerRecord(): the least bytes that its data needs.
// Every phase is timed with Begin and End included. A check that fails throws CompareError: a
// store that loses, misorders or damages a record has no result at all.

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "Measure.h"
#include "Profile.h"
#include "Workload.h"

namespace Tavrin::Compare {

class CompareError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class Phase { Insert, Get, GetBatch, Scan, Update, Remove };

/// Keys per call of the get64 phase.
constexpr std::size_t GetBatchKeys = 64;

constexpr const char* PhaseName(Phase phase) noexcept {
    switch (phase) {
        case Phase::Insert: return "insert";
        case Phase::Get: return "get";
        case Phase::GetBatch: return "get64";
        case Phase::Scan: return "scan";
        case Phase::Update: return "update";
        case Phase::Remove: return "remove";
    }
    return "?";
}

struct PhaseTime {
    Phase phase;
    double nsPerOp;
};

struct RunResult {
    std::vector<PhaseTime> phases;
    // Peak resident bytes of the process, and that peak less what it held before the store was made.
    double rssBytes = 0;
    double storeRssBytes = 0;
    // Bytes of the files the store held open, with all N records in it.
    double fileBytes = 0;
    // Bytes per record of the data the store must hold at the least, for stores that can tell.
    double modelBytesPerRecord = 0;
};

struct ScanTotals {
    std::uint64_t count = 0;
    std::int64_t numberSum = 0;
    std::uint64_t counterSum = 0;
};

// One walk over the store; in an ordered store every key must be above the one before.
template <class Store>
ScanTotals ScanAll(Store& store) {
    ScanTotals totals;
    std::uint64_t previous = 0;
    store.Scan([&](std::uint64_t key, std::uint32_t counter, std::int64_t number) {
        if (Store::Ordered && totals.count != 0 && key <= previous) {
            throw CompareError("scan: key " + std::to_string(key) + " after " + std::to_string(previous));
        }
        previous = key;
        ++totals.count;
        totals.numberSum += number;
        totals.counterSum += counter;
    });
    return totals;
}

template <class Store>
void CheckScan(const ScanTotals& totals, std::uint64_t n, std::uint64_t counterSum) {
    if (totals.count != n) throw CompareError("scan: " + std::to_string(totals.count) + " records");
    if (totals.numberSum != ExpectedNumberSum(n)) throw CompareError("scan: wrong sum of numbers");
    if (totals.counterSum != counterSum) throw CompareError("scan: wrong sum of counters");
}

template <class Store>
void CheckCount(Store& store, std::uint64_t expected, const char* after) {
    const std::uint64_t count = store.Count();
    if (count != expected) {
        throw CompareError(std::string("count after ") + after + ": " + std::to_string(count) + ", expected " +
                           std::to_string(expected));
    }
}

// Runs `body` between the store's Begin and End of `phase` and records ns per operation.
template <class Store, class Body>
void TimePhase(Store& store, Phase phase, std::uint64_t operations, RunResult& result, Body&& body) {
    const auto start = std::chrono::steady_clock::now();
    {
        const PhaseProfile profile(phase);
        store.Begin(phase);
        body();
        store.End(phase);
    }
    const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
    result.phases.push_back({phase, elapsed.count() / static_cast<double>(operations ? operations : 1)});
}

template <class Store>
void RunPhases(Store& store, KeyOrder& order, std::uint64_t n, RunResult& result) {
    const std::vector<std::uint64_t>& inserts = order.Next();
    TimePhase(store, Phase::Insert, n, result, [&] {
        for (const std::uint64_t key : inserts) store.Insert(key, ValueOf(key));
    });
    CheckCount(store, n, "insert");

    const std::vector<std::uint64_t>& gets = order.Next();
    TimePhase(store, Phase::Get, n, result, [&] {
        Value value;
        for (const std::uint64_t key : gets) {
            if (!store.Get(key, value)) throw CompareError("get: key " + std::to_string(key) + " missing");
            if (value.number != NumberOf(key)) throw CompareError("get: wrong number at key " + std::to_string(key));
        }
    });

    if constexpr (requires(const std::uint64_t* keys, Value* values) { store.GetBatch(keys, n, values); }) {
        TimePhase(store, Phase::GetBatch, n, result, [&] {
            std::vector<Value> values(GetBatchKeys);
            for (std::size_t begin = 0; begin < gets.size(); begin += GetBatchKeys) {
                const std::size_t count = std::min(GetBatchKeys, gets.size() - begin);
                store.GetBatch(gets.data() + begin, count, values.data());
                for (std::size_t i = 0; i < count; ++i) {
                    if (values[i].number != NumberOf(gets[begin + i])) throw CompareError("get64: wrong number");
                }
            }
        });
    }

    ScanTotals totals;
    TimePhase(store, Phase::Scan, n, result, [&] { totals = ScanAll(store); });
    CheckScan<Store>(totals, n, 0);

    const std::vector<std::uint64_t>& updates = order.Next();
    TimePhase(store, Phase::Update, n, result, [&] {
        for (const std::uint64_t key : updates) {
            if (!store.Update(key)) throw CompareError("update: key " + std::to_string(key) + " missing");
        }
    });
    // Untimed: every counter went up by exactly one, and the store is at its fullest.
    store.Begin(Phase::Scan);
    CheckScan<Store>(ScanAll(store), n, n);
    store.End(Phase::Scan);
    result.fileBytes = static_cast<double>(OpenFileBytes());

    const std::vector<std::uint64_t>& removes = order.Next();
    TimePhase(store, Phase::Remove, n, result, [&] {
        for (const std::uint64_t key : removes) {
            if (!store.Remove(key)) throw CompareError("remove: key " + std::to_string(key) + " missing");
        }
    });
    CheckCount(store, 0, "remove");
}

// Makes the store from `arguments` once the key order exists, so that the store's own memory is
// the peak less the resident bytes at that moment.
template <class Store, class... Arguments>
RunResult RunW1(std::uint64_t n, Arguments&&... arguments) {
    KeyOrder order(n);
    RunResult result;
    const std::uint64_t baseline = CurrentRssBytes();
    {
        Store store(n, std::forward<Arguments>(arguments)...);
        if constexpr (requires { store.ModelBytesPerRecord(); }) {
            result.modelBytesPerRecord = store.ModelBytesPerRecord();
        }
        RunPhases(store, order, n, result);
    }
    result.rssBytes = static_cast<double>(PeakRssBytes());
    result.storeRssBytes = result.rssBytes - static_cast<double>(baseline);
    return result;
}

}  // namespace Tavrin::Compare
