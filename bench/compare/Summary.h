#pragma once
// Reads the result lines of many runs and reduces them to medians with their spread.
//
// A result line is a list of name=value words: `store=NAME n=N phase=PHASE`, then one or more
// numeric metrics, such as `ns_per_op=812.5`. Lines of another shape are skipped, so a whole log
// can be fed in. The summary prints, for each N, a table of medians (min-max) per store and phase,
// the ratios of our stores to the others, and one machine-readable line per store, N, phase and
// metric with the median, min, max and number of runs.

#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace Tavrin::Compare {

struct Sample {
    std::string store;
    std::uint64_t n = 0;
    std::string phase;
    std::vector<std::pair<std::string, double>> metrics;
};

// Nothing for a line without store, n, phase and at least one numeric metric.
std::optional<Sample> ParseSample(const std::string& line);

struct Spread {
    double median = 0;
    double min = 0;
    double max = 0;
    std::size_t runs = 0;
};

// The median of an even count is the mean of the middle two. `values` must not be empty.
Spread SpreadOf(std::vector<double> values);

class Summary {
public:
    void Add(const Sample& sample);
    // Adds every result line of the stream.
    void AddLines(std::istream& input);

    std::optional<Spread> Get(const std::string& store, std::uint64_t n, const std::string& phase,
                              const std::string& metric) const;
    // The store other than ours and the std references with the lowest median ns per op.
    std::optional<std::pair<std::string, double>> FastestPeer(std::uint64_t n, const std::string& phase) const;

    void PrintTables(std::ostream& output) const;
    // Ratios of each store whose name begins with `ours` to the fastest peer, std-map and lmdb,
    // and to `ours` itself; below 1 is faster. Memory: resident store bytes to the least bytes.
    void PrintRatios(std::ostream& output, const std::string& ours) const;
    void PrintLines(std::ostream& output) const;

private:
    using Cell = std::tuple<std::string, std::uint64_t, std::string, std::string>;  // store n phase metric

    void PrintRatioRow(std::ostream& output, const std::string& label, std::uint64_t n, const std::string& store,
                       const std::string& other) const;

    std::map<Cell, std::vector<double>> values_;
    std::vector<std::string> stores_;  // in the order first seen
    std::vector<std::uint64_t> ns_;    // ascending
};

}  // namespace Tavrin::Compare
