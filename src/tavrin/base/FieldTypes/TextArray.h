#pragma once
// TextArray: a text held in a fixed-size field.
//
// Body: the characters, padded with zero bytes to the field's size (see PaddedBytes);
// DeserializeBody drops trailing zero bytes. Everything else is as TextString.

#include "tavrin/base/FieldTypes/PaddedBytes.h"
#include "tavrin/base/FieldTypes/TextString.h"

namespace Tavrin {

class TextArray final : public PaddedBytes<TextString> {
public:
    TextArray() noexcept : PaddedBytes(FieldTypeNumber::TextArray) {}

    StatusCode DeserializeBody(const void* data, std::uint32_t length) override;
};

}  // namespace Tavrin
