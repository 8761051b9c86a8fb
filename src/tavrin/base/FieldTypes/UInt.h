#pragma once
// UInt: an unsigned integer value of an integer field 1, 2, 4 or 8 bytes wide (see BasicInteger).

#include "tavrin/base/FieldTypes/BasicInteger.h"

namespace Tavrin {

/// An unsigned 64-bit integer value, held in an integer field 1, 2, 4 or 8 bytes wide.
class UInt final : public BasicInteger<std::uint64_t> {
public:
    /// An undefined value.
    UInt() noexcept : BasicInteger(FieldTypeNumber::UInt) {}
};

}  // namespace Tavrin
