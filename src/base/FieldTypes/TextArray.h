#pragma once
// TextArray: a text held in a fixed-size field.
//
// Body: the characters, padded with zero bytes to the field's size. SerializeBody fills the whole
// buffer it is given (status 22 if the text is longer); DeserializeBody drops trailing zero bytes.
// Order: as the padded bytes. Everything else is as TextString.

#include "base/FieldTypes/TextString.h"

namespace Tavrin {

class TextArray final : public TextString {
public:
    TextArray() noexcept : TextString(FieldTypeNumber::TextArray) {}

    StatusCode Compare(const void* data, std::uint32_t length, int& result) const override;
    StatusCode SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const override;
    StatusCode DeserializeBody(const void* data, std::uint32_t length) override;
    StatusCode IsDifferent(const void* data, std::uint32_t length, bool& different) const override;
};

}  // namespace Tavrin
