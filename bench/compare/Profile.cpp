#include "Profile.h"

#include "Phases.h"

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#define TAVRIN_COMPARE_TOGGLE() CALLGRIND_TOGGLE_COLLECT
#else
#define TAVRIN_COMPARE_TOGGLE() ((void)0)
#endif

namespace Tavrin::Compare {

namespace {
std::optional<Phase> profiled;
}  // namespace

bool SetProfiledPhase(const std::string& name) {
    for (const Phase phase : {Phase::Insert, Phase::Get, Phase::GetBatch, Phase::Scan, Phase::Update, Phase::Remove}) {
        if (name == PhaseName(phase)) {
            profiled = phase;
            return true;
        }
    }
    return false;
}

PhaseProfile::PhaseProfile(Phase phase) : collecting_(profiled == phase) {
    if (collecting_) TAVRIN_COMPARE_TOGGLE();
}

PhaseProfile::~PhaseProfile() {
    if (collecting_) TAVRIN_COMPARE_TOGGLE();
}

}  // namespace Tavrin::Compare
