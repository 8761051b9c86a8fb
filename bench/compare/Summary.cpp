#include "Summary.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <istream>
#include <ostream>
#include <sstream>

namespace Tavrin::Compare {

namespace {

const char* const TimedPhases[] = {"insert", "get", "get64", "scan", "update", "remove"};
constexpr const char* NsPerOp = "ns_per_op";
constexpr const char* MemoryPhase = "memory";

bool ParseNumber(const std::string& text, double& value) {
    if (text.empty()) return false;
    char* end = nullptr;
    value = std::strtod(text.c_str(), &end);
    return end == text.c_str() + text.size();
}

std::string Format(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

// "812 (790-840)": whole numbers from 10 up, one decimal below.
std::string FormatSpread(const Spread& spread) {
    const char* format = spread.median >= 10 ? "%.0f" : "%.1f";
    return Format(format, spread.median) + " (" + Format(format, spread.min) + "-" + Format(format, spread.max) + ")";
}

void PrintRow(std::ostream& output, const std::vector<std::string>& cells) {
    output << "| ";
    for (const std::string& cell : cells) output << cell << " | ";
    output << "\n";
}

bool IsReference(const std::string& store) { return store.rfind("std-", 0) == 0; }

}  // namespace

std::optional<Sample> ParseSample(const std::string& line) {
    Sample sample;
    bool hasN = false;
    std::istringstream words(line);
    std::string word;
    while (words >> word) {
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos || equals == 0) return std::nullopt;
        const std::string name = word.substr(0, equals);
        const std::string text = word.substr(equals + 1);
        double value = 0;
        if (name == "store") {
            sample.store = text;
        } else if (name == "phase") {
            sample.phase = text;
        } else if (name == "n") {
            if (!ParseNumber(text, value) || value < 1) return std::nullopt;
            sample.n = static_cast<std::uint64_t>(value);
            hasN = true;
        } else if (ParseNumber(text, value)) {
            sample.metrics.emplace_back(name, value);
        } else {
            return std::nullopt;
        }
    }
    if (sample.store.empty() || sample.phase.empty() || !hasN || sample.metrics.empty()) return std::nullopt;
    return sample;
}

Spread SpreadOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    const double median = values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
    return {median, values.front(), values.back(), values.size()};
}

void Summary::Add(const Sample& sample) {
    if (std::find(stores_.begin(), stores_.end(), sample.store) == stores_.end()) stores_.push_back(sample.store);
    if (std::find(ns_.begin(), ns_.end(), sample.n) == ns_.end()) {
        ns_.insert(std::upper_bound(ns_.begin(), ns_.end(), sample.n), sample.n);
    }
    for (const auto& [metric, value] : sample.metrics) {
        values_[{sample.store, sample.n, sample.phase, metric}].push_back(value);
    }
}

void Summary::AddLines(std::istream& input) {
    std::string line;
    while (std::getline(input, line)) {
        if (const auto sample = ParseSample(line)) Add(*sample);
    }
}

std::optional<Spread> Summary::Get(const std::string& store, std::uint64_t n, const std::string& phase,
                                   const std::string& metric) const {
    const auto found = values_.find({store, n, phase, metric});
    if (found == values_.end()) return std::nullopt;
    return SpreadOf(found->second);
}

std::optional<std::pair<std::string, double>> Summary::FastestPeer(std::uint64_t n, const std::string& phase) const {
    std::optional<std::pair<std::string, double>> fastest;
    for (const std::string& store : stores_) {
        if (store.rfind("tavrin", 0) == 0 || IsReference(store)) continue;
        const auto spread = Get(store, n, phase, NsPerOp);
        if (spread && (!fastest || spread->median < fastest->second)) fastest.emplace(store, spread->median);
    }
    return fastest;
}

void Summary::PrintTables(std::ostream& output) const {
    for (const std::uint64_t n : ns_) {
        output << "\nN = " << n << ": ns per operation, median (min-max); memory and files in bytes per record\n\n";
        PrintRow(output, {"store", "insert", "get", "get64", "scan", "update", "remove", "peak RSS", "store RSS", "files"});
        PrintRow(output, {"---", "---:", "---:", "---:", "---:", "---:", "---:", "---:", "---:", "---:"});
        for (const std::string& store : stores_) {
            std::vector<std::string> cells{store};
            bool any = false;
            for (const char* phase : TimedPhases) {
                const auto spread = Get(store, n, phase, NsPerOp);
                cells.push_back(spread ? FormatSpread(*spread) : "-");
                any = any || spread.has_value();
            }
            for (const char* metric :
                 {"rss_bytes_per_record", "store_rss_bytes_per_record", "file_bytes_per_record"}) {
                const auto spread = Get(store, n, MemoryPhase, metric);
                cells.push_back(spread ? Format("%.0f", spread->median) : "-");
            }
            if (any) PrintRow(output, cells);
        }
    }
}

void Summary::PrintRatioRow(std::ostream& output, const std::string& label, std::uint64_t n,
                            const std::string& store, const std::string& other) const {
    std::vector<std::string> cells{label};
    bool any = false;
    for (const char* phase : TimedPhases) {
        const auto ours = Get(store, n, phase, NsPerOp);
        std::string peer = other;
        std::optional<double> theirs;
        if (other.empty()) {
            if (const auto fastest = FastestPeer(n, phase)) std::tie(peer, theirs) = *fastest;
        } else if (const auto spread = Get(other, n, phase, NsPerOp)) {
            theirs = spread->median;
        }
        if (!ours || !theirs || *theirs <= 0) {
            cells.push_back("-");
            continue;
        }
        any = true;
        cells.push_back(Format("%.2f", ours->median / *theirs) + (other.empty() ? " (" + peer + ")" : ""));
    }
    if (any) PrintRow(output, cells);
}

void Summary::PrintRatios(std::ostream& output, const std::string& ours) const {
    for (const std::uint64_t n : ns_) {
        output << "\nN = " << n << ": ratio of medians, ours / other (below 1: ours is faster)\n\n";
        PrintRow(output, {"ratio", "insert", "get", "get64", "scan", "update", "remove"});
        PrintRow(output, {"---", "---:", "---:", "---:", "---:", "---:", "---:"});
        for (const std::string& store : stores_) {
            if (store.rfind(ours, 0) != 0) continue;
            PrintRatioRow(output, store + " / fastest peer", n, store, "");
            for (const char* other : {"std-map", "lmdb"}) PrintRatioRow(output, store + " / " + other, n, store, other);
            if (store != ours) PrintRatioRow(output, store + " / " + ours, n, store, ours);
        }
        for (const std::string& store : stores_) {
            const auto resident = Get(store, n, MemoryPhase, "store_rss_bytes_per_record");
            const auto least = Get(store, n, MemoryPhase, "model_bytes_per_record");
            if (!resident || !least || least->median <= 0) continue;
            output << "\n" << store << ": store RSS " << Format("%.0f", resident->median) << " B per record = "
                   << Format("%.2f", resident->median / least->median) << " x the " << Format("%.0f", least->median)
                   << " B of a record and its tree node\n";
        }
    }
}

void Summary::PrintLines(std::ostream& output) const {
    for (const auto& [cell, values] : values_) {
        const auto& [store, n, phase, metric] = cell;
        const Spread spread = SpreadOf(values);
        output << "store=" << store << " n=" << n << " phase=" << phase << " " << metric << "="
               << Format("%.1f", spread.median) << " " << metric << "_min=" << Format("%.1f", spread.min) << " "
               << metric << "_max=" << Format("%.1f", spread.max) << " runs=" << spread.runs << "\n";
    }
}

}  // namespace Tavrin::Compare
