#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace Tavrin::Database {

/// Values of a key's fields in key order, each as (pointer to the value's bytes, length). The
/// pointers are the caller's and must stay valid for the call that takes the list.
using KeyValueList = std::vector<std::pair<const void*, std::uint32_t>>;

}  // namespace Tavrin::Database
