// tavrin_compare: workload W1 on one store, or the summary of many runs.
//
//   tavrin_compare --store=NAME --n=N [--dir=DIRECTORY]
//       runs W1 once and prints one line per phase, `store=NAME n=N phase=PHASE ns_per_op=...`,
//       then `phase=memory` with peak and store resident bytes and file bytes per record. Files go
//       to a fresh folder in DIRECTORY (default /tmp), removed afterwards.
//       With --profile=PHASE under callgrind (--collect-atstart=no), only that phase is profiled.
//   tavrin_compare --list
//       the stores of this build, with their settings.
//   tavrin_compare --summarize=FILE [--ours=PREFIX]
//       tables of medians (min-max), ratios of the stores named PREFIX... (default tavrin), and
//       machine-readable median lines, from the result lines in FILE.
// Exit status 1 for a failed check or a store error, 2 for bad arguments.

#include <unistd.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <string>

#include "Profile.h"
#include "StoreRegistry.h"
#include "Summary.h"

namespace {

using namespace Tavrin::Compare;

int Usage() {
    std::cerr << "usage: tavrin_compare --store=NAME --n=N [--dir=DIRECTORY] [--profile=PHASE]\n"
                 "       tavrin_compare --list\n"
                 "       tavrin_compare --summarize=FILE [--ours=PREFIX]\n";
    return 2;
}

// A folder of its own for one run, removed with everything in it at the end.
class RunDirectory {
public:
    explicit RunDirectory(const std::string& parent)
        : path_(std::filesystem::path(parent) / ("tavrin-compare-" + std::to_string(::getpid()))) {
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~RunDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    std::string Path() const { return path_.string(); }

private:
    std::filesystem::path path_;
};

void PrintResult(const std::string& store, std::uint64_t n, const RunResult& result) {
    for (const PhaseTime& time : result.phases) {
        std::printf("store=%s n=%llu phase=%s ns_per_op=%.1f\n", store.c_str(), static_cast<unsigned long long>(n),
                    PhaseName(time.phase), time.nsPerOp);
    }
    const double records = static_cast<double>(n);
    std::printf("store=%s n=%llu phase=memory rss_bytes_per_record=%.1f store_rss_bytes_per_record=%.1f "
                "file_bytes_per_record=%.1f",
                store.c_str(), static_cast<unsigned long long>(n), result.rssBytes / records,
                result.storeRssBytes / records, result.fileBytes / records);
    if (result.modelBytesPerRecord > 0) std::printf(" model_bytes_per_record=%.1f", result.modelBytesPerRecord);
    std::printf("\n");
}

int Run(const std::string& name, const std::string& count, const std::string& parent) {
    const std::vector<StoreEntry> stores = AllStores();
    const StoreEntry* store = FindStore(stores, name);
    if (store == nullptr) {
        std::cerr << "tavrin_compare: no store " << name << " in this build (see --list)\n";
        return 2;
    }
    char* end = nullptr;
    const unsigned long long n = std::strtoull(count.c_str(), &end, 10);
    if (count.empty() || *end != '\0' || n == 0 || n > 0xFFFFFFF0ull) return Usage();
    RunDirectory directory(parent);
    const RunResult result = store->run(n, directory.Path());
    PrintResult(name, n, result);
    return 0;
}

int Summarize(const std::string& file, const std::string& ours) {
    std::ifstream input(file);
    if (!input) {
        std::cerr << "tavrin_compare: cannot read " << file << "\n";
        return 2;
    }
    Summary summary;
    summary.AddLines(input);
    summary.PrintTables(std::cout);
    summary.PrintRatios(std::cout, ours);
    std::cout << "\n";
    summary.PrintLines(std::cout);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    std::map<std::string, std::string> options{{"dir", "/tmp"}, {"ours", "tavrin"}};
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument.rfind("--", 0) != 0) return Usage();
        const std::size_t equals = argument.find('=');
        options[argument.substr(2, equals == std::string::npos ? std::string::npos : equals - 2)] =
            equals == std::string::npos ? "" : argument.substr(equals + 1);
    }
    try {
        if (options.count("list")) {
            for (const StoreEntry& store : AllStores()) std::cout << store.name << "\t" << store.settings << "\n";
            return 0;
        }
        if (options.count("summarize")) return Summarize(options["summarize"], options["ours"]);
        if (options.count("profile") && !SetProfiledPhase(options["profile"])) return Usage();
        if (options.count("store") && options.count("n")) return Run(options["store"], options["n"], options["dir"]);
        return Usage();
    } catch (const std::exception& error) {
        std::cerr << "tavrin_compare: " << error.what() << "\n";
        return 1;
    }
}
