#pragma once
// TextString: a text of any length (the value of a text field with a length prefix).
//
// Body: the characters, no terminator; the field's prefix holds the length. The length-and-body
// form is a 4-byte length and the characters. Order: bytes as unsigned, a shorter text before a
// longer one that begins with it; no locale, no case folding.
//
// Text form: the characters themselves; FromString takes every character given.
// Converts from any defined value, by that value's text form. No locks.

#include <cstdint>
#include <string>
#include <string_view>

#include "tavrin/base/FieldTypes/IFieldType.h"

namespace Tavrin {

/// A text of any length, held in a std::string (see the file comment above).
class TextString : public IFieldType {
public:
    /// An undefined value.
    TextString() noexcept : IFieldType(FieldTypeNumber::TextString) {}

    /// Copies the characters of `text` and marks the value defined. Status 41 if memory runs out.
    StatusCode Set(std::string_view text);
    /// The characters, owned by this object; empty while undefined.
    const std::string& GetText() const noexcept { return text_; }

    void Reset() override;
    void Clear() override;
    StatusCode Compare(const void* data, std::uint32_t length, int& result) const override;
    std::string ToString() const override;
    StatusCode FromString(MessageValidator& text) override;
    std::string GetFromStringFormat() const override { return "any characters"; }
    StatusCode SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const override;
    StatusCode DeserializeBody(const void* data, std::uint32_t length) override;
    std::uint32_t GetBodySize() const override;
    StatusCode IsDifferent(const void* data, std::uint32_t length, bool& different) const override;

protected:
    /// An undefined value of the class numbered `typeNumber` (TextArray).
    explicit TextString(std::uint8_t typeNumber) noexcept : IFieldType(typeNumber) {}
    StatusCode ConvertFrom(const IFieldType& other) override;

    /// The number of characters.
    std::uint32_t GetTextLength() const noexcept { return static_cast<std::uint32_t>(text_.size()); }
    /// The characters, for PaddedBytes.
    const void* ValueData() const noexcept { return text_.data(); }
    /// The number of characters, for PaddedBytes.
    std::uint32_t ValueLength() const noexcept { return GetTextLength(); }

private:
    std::string text_;
};

}  // namespace Tavrin
