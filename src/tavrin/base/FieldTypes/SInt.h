#pragma once
// SInt: a signed integer value of an integer field 1, 2, 4 or 8 bytes wide (see BasicInteger).

#include "tavrin/base/FieldTypes/BasicInteger.h"

namespace Tavrin {

/// A signed 64-bit integer value, held in an integer field 1, 2, 4 or 8 bytes wide.
class SInt final : public BasicInteger<std::int64_t> {
public:
    /// An undefined value.
    SInt() noexcept : BasicInteger(FieldTypeNumber::SInt) {}
};

}  // namespace Tavrin
