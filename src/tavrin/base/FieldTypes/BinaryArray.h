#pragma once
// BinaryArray: bytes held in a fixed-size field.
//
// Body: the bytes, padded with zero bytes to the field's size (see PaddedBytes); DeserializeBody
// keeps every byte of the field. Everything else, the message form included, is as BinaryString.

#include "tavrin/base/FieldTypes/BinaryString.h"
#include "tavrin/base/FieldTypes/PaddedBytes.h"

namespace Tavrin {

/// Bytes held in a fixed-size field: a BinaryString whose body is padded with zero bytes to the
/// field's size.
class BinaryArray final : public PaddedBytes<BinaryString> {
public:
    /// An undefined value.
    BinaryArray() noexcept : PaddedBytes(FieldTypeNumber::BinaryArray) {}
};

}  // namespace Tavrin
