#pragma once
// The bytes of a value of the byte-holding classes, for conversions between them.

#include <cstdint>

#include "tavrin/base/FieldTypes/IFieldType.h"

namespace Tavrin {

/// The data of a BinaryString, BinaryArray, Blob or CrcBlob, or the characters of a TextString or
/// TextArray; false for any other class.
bool GetValueBytes(const IFieldType& value, const unsigned char*& data, std::uint32_t& length);

}  // namespace Tavrin
