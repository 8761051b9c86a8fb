#pragma once
// BasicInteger: the common implementation of SInt (T = std::int64_t) and UInt (T = std::uint64_t).
//
// Body: the value as a little-endian integer of exactly the field's width, 1, 2, 4 or 8 bytes
// (signed: two's complement). SerializeBody fills the whole buffer it is given, as a fixed-size
// field needs: status 22 for a width other than 1, 2, 4 or 8, status 23 if the value does not fit
// that width. DeserializeBody takes any of those widths and extends the value (sign or zero).
// GetBodySize is the narrowest width that holds the value; the length-and-body form is a 4-byte
// length and the body.
//
// Text form: the value in decimal, "-" for a negative SInt. Converts from the other integer class
// (status 23 out of range) and from a Rational of whole worth. No locks.

#include <cstdint>
#include <string>

#include "tavrin/base/FieldTypes/IFieldType.h"

namespace Tavrin {

/// An integer value of T held in an integer field of 1, 2, 4 or 8 bytes; the common implementation of
/// SInt and UInt (see the file comment above).
template <class T>
class BasicInteger : public IFieldType {
public:
    /// Takes `value` and marks the value defined.
    void Set(T value) noexcept {
        value_ = value;
        defined = true;
    }
    /// REQUIRES: defined.
    T Get() const noexcept { return value_; }

    /// Whether `value` fits an integer field `width` bytes wide (1, 2, 4 or 8; any width of 8 or more
    /// holds every value).
    static bool Fits(T value, std::uint32_t width) noexcept;
    /// Whether `width` is a width of an integer field: 1, 2, 4 or 8.
    static bool IsWidth(std::uint32_t width) noexcept { return width == 1 || width == 2 || width == 4 || width == 8; }
    /// Reads a body of width 1, 2, 4 or 8, extended by sign (SInt) or by zeros (UInt); 0 for another
    /// width.
    static T Decode(const void* data, std::uint32_t width) noexcept;

    void Reset() override { defined = false; }
    void Clear() override { defined = false; }
    StatusCode Compare(const void* data, std::uint32_t length, int& result) const override;
    std::string ToString() const override;
    StatusCode FromString(MessageValidator& text) override;
    std::string GetFromStringFormat() const override;
    StatusCode SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const override;
    StatusCode DeserializeBody(const void* data, std::uint32_t length) override;
    std::uint32_t GetBodySize() const override;
    StatusCode IsDifferent(const void* data, std::uint32_t length, bool& different) const override;

protected:
    /// An undefined value of the class numbered `typeNumber`.
    explicit BasicInteger(std::uint8_t typeNumber) noexcept : IFieldType(typeNumber) {}
    StatusCode ConvertFrom(const IFieldType& other) override;

private:
    T value_ = 0;
};

extern template class BasicInteger<std::int64_t>;
extern template class BasicInteger<std::uint64_t>;

}  // namespace Tavrin
