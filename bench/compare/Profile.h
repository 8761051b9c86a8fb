#pragma once
// A callgrind profile of one phase alone. Run the program under
//   valgrind --tool=callgrind --collect-atstart=no tavrin_compare --store=S --n=N --profile=PHASE
// and only that phase is counted. Outside valgrind, or in a build without valgrind's headers,
// nothing happens.

#include <optional>
#include <string>

namespace Tavrin::Compare {

enum class Phase;

// False for a name that is no phase.
bool SetProfiledPhase(const std::string& name);

// Switches collection on for the life of the object if `phase` is the profiled one.
class PhaseProfile {
public:
    explicit PhaseProfile(Phase phase);
    ~PhaseProfile();
    PhaseProfile(const PhaseProfile&) = delete;
    PhaseProfile& operator=(const PhaseProfile&) = delete;

private:
    bool collecting_;
};

}  // namespace Tavrin::Compare
