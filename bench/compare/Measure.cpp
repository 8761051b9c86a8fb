#include "Measure.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <set>
#include <string>
#include <utility>

namespace Tavrin::Compare {

std::uint64_t CurrentRssBytes() {
    std::FILE* file = std::fopen("/proc/self/statm", "r");
    if (file == nullptr) return 0;
    unsigned long long size = 0, resident = 0;
    const int read = std::fscanf(file, "%llu %llu", &size, &resident);
    std::fclose(file);
    return read == 2 ? resident * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE)) : 0;
}

std::uint64_t PeakRssBytes() {
    struct rusage usage {};
    if (::getrusage(RUSAGE_SELF, &usage) != 0) return 0;
    return static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;  // ru_maxrss is in KiB on Linux
}

std::uint64_t OpenFileBytes() {
    std::set<std::pair<dev_t, ino_t>> seen;
    std::uint64_t total = 0;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd", error)) {
        const std::string name = entry.path().filename().string();
        if (name == "0" || name == "1" || name == "2") continue;
        struct stat information {};
        if (::stat(entry.path().c_str(), &information) != 0 || !S_ISREG(information.st_mode)) continue;
        if (seen.insert({information.st_dev, information.st_ino}).second) {
            total += static_cast<std::uint64_t>(information.st_size);
        }
    }
    return total;
}

}  // namespace Tavrin::Compare
