#pragma once
// The status that an action throws as a StatusCodeException; 0 if it throws none.

#include <cstdint>

#include "tavrin/base/Exception.h"

namespace Tavrin::Testing {

template <class Action>
std::uint32_t ThrownStatus(Action action) {
    try {
        action();
    } catch (const StatusCodeException& e) {
        return e.GetCode();
    }
    return 0;
}

}  // namespace Tavrin::Testing
