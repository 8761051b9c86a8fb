#pragma once
// TextArray: a text held in a fixed-size field.
//
// Body: the characters, padded with zero bytes to the field's size (see PaddedBytes);
// DeserializeBody drops trailing zero bytes. Everything else is as TextString.

#include "tavrin/base/FieldTypes/PaddedBytes.h"
#include "tavrin/base/FieldTypes/TextString.h"

namespace Tavrin {

/// A text held in a fixed-size field: a TextString whose body is padded with zero bytes to the
/// field's size.
class TextArray final : public PaddedBytes<TextString> {
public:
    /// An undefined value.
    TextArray() noexcept : PaddedBytes(FieldTypeNumber::TextArray) {}

    /// Takes the characters of a field's bytes without their trailing zero bytes and marks the value
    /// defined; 41 if memory runs out.
    StatusCode DeserializeBody(const void* data, std::uint32_t length) override;
};

}  // namespace Tavrin
