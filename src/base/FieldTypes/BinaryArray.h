#pragma once
// BinaryArray: bytes held in a fixed-size field.
//
// Body: the bytes, padded with zero bytes to the field's size. SerializeBody fills the whole buffer
// it is given (status 22 if the value is longer); DeserializeBody keeps every byte of the field.
// Order: as the padded bytes. Everything else, the message form included, is as BinaryString.

#include "base/FieldTypes/BinaryString.h"

namespace Tavrin {

class BinaryArray final : public BinaryString {
public:
    BinaryArray() noexcept : BinaryString(FieldTypeNumber::BinaryArray) {}

    StatusCode Compare(const void* data, std::uint32_t length, int& result) const override;
    StatusCode SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const override;
    StatusCode IsDifferent(const void* data, std::uint32_t length, bool& different) const override;
};

}  // namespace Tavrin
