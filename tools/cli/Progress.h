#pragma once
// A progress bar on stderr for a step that runs longer than a second, drawn only when stderr is a
// terminal and the user did not ask for quiet.

#include <chrono>
#include <cstdint>
#include <string>

namespace Tavrin::Tool {

/// Records from which an index rebuild takes about a second or more on a small machine: the tool
/// names the rebuild while it runs (Progress::Announce).
constexpr std::uint64_t LongRebuildRecords = 200000;

/// One step's bar. Not thread-safe.
class Progress {
public:
    /// A bar for the step `what`; none at all when `quiet` or stderr is no terminal.
    Progress(std::string what, bool quiet);
    /// Finishes the bar.
    ~Progress();
    /// Shows `done` of `total` once the step has run a second, at most ten times a second; with a
    /// `total` of 0 (not known ahead) the count alone.
    void Update(std::uint64_t done, std::uint64_t total);
    /// Shows the step's name at once, for a step that reports no counts (an index rebuild) and that
    /// the caller expects to run longer than a second.
    void Announce();
    /// Clears the bar's line if one was drawn.
    void Finish();
    /// Update through a plain function pointer; `context` is the Progress.
    static void Report(void* context, std::uint64_t done, std::uint64_t total);

private:
    std::string what_;
    bool enabled_;
    bool drawn_ = false;
    std::chrono::steady_clock::time_point start_;
    std::chrono::steady_clock::time_point last_;
};

}  // namespace Tavrin::Tool
