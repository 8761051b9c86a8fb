#include "Progress.h"

#include <cstdio>

#include <unistd.h>

namespace Tavrin::Tool {

namespace {

constexpr int BarWidth = 40;

}  // namespace

Progress::Progress(std::string what, bool quiet)
    : what_(std::move(what)),
      enabled_(!quiet && ::isatty(STDERR_FILENO) == 1),
      start_(std::chrono::steady_clock::now()),
      last_(start_) {}

Progress::~Progress() { Finish(); }

void Progress::Update(std::uint64_t done, std::uint64_t total) {
    if (!enabled_) return;
    const auto now = std::chrono::steady_clock::now();
    if (now - start_ < std::chrono::seconds(1) || now - last_ < std::chrono::milliseconds(100)) return;
    last_ = now;
    drawn_ = true;
    if (total == 0) {
        std::fprintf(stderr, "\r%s %llu", what_.c_str(), static_cast<unsigned long long>(done));
        std::fflush(stderr);
        return;
    }
    const int filled = static_cast<int>(done * BarWidth / total);
    std::fprintf(stderr, "\r%s [%-*.*s] %3d%%", what_.c_str(), BarWidth, filled,
                 "########################################", static_cast<int>(done * 100 / total));
    std::fflush(stderr);
    drawn_ = true;
}

void Progress::Announce() {
    if (!enabled_) return;
    std::fprintf(stderr, "\r%s ...", what_.c_str());
    std::fflush(stderr);
    drawn_ = true;
}

void Progress::Finish() {
    if (!drawn_) return;
    std::fprintf(stderr, "\r%*s\r", static_cast<int>(what_.size()) + BarWidth + 8, "");
    std::fflush(stderr);
    drawn_ = false;
}

void Progress::Report(void* context, std::uint64_t done, std::uint64_t total) {
    static_cast<Progress*>(context)->Update(done, total);
}

}  // namespace Tavrin::Tool
