#pragma once
// The structural check of a store file: every entry in use or on the free list exactly once, a
// free list without a loop, header counts equal to the entries, and sizes that agree.

#include <string>

#include "StoreImage.h"

namespace Tavrin::Tool {

/// Reports progress through the entries of a long walk: `done` of `total`.
using ProgressFunction = void (*)(void* context, std::uint64_t done, std::uint64_t total);

/// The first problem found in `store`, in words; empty when the store is sound. Reads every entry's
/// front once. `progress` (may be null) is called now and then with `context`.
std::string CheckStoreStructure(StoreImage& store, ProgressFunction progress = nullptr, void* context = nullptr);

}  // namespace Tavrin::Tool
