#pragma once
// What the process holds: resident memory from the kernel's counters, and the sizes of the files
// it has open (a store's files, temporary ones already unlinked included).

#include <cstdint>

namespace Tavrin::Compare {

// Resident bytes now (/proc/self/statm).
std::uint64_t CurrentRssBytes();
// Highest resident bytes so far (getrusage ru_maxrss).
std::uint64_t PeakRssBytes();
// Sum of the sizes of the regular files open in this process, each file counted once; standard
// input, output and error are left out, as the driver sends output to files.
std::uint64_t OpenFileBytes();

}  // namespace Tavrin::Compare
