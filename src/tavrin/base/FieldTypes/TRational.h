#pragma once
// TRational: a Rational with three trends beside it, each 0 to 3.
//
//   value trend      the value against the field's previous value
//   reference trend  the value against the value of a reference field
//   custom trend     kept for the application; the library never sets it
// Trend numbers: 0 equal (for the value trend: unchanged), 1 above, 2 below, 3 none (nothing to
// compare with). A new object has all three at 3. Reset and Clear leave the trends as they are.
//
// Body: the Rational body, then one trend byte (so 3, 4, 6 or 10 bytes):
//   last byte  bits 0-1: value trend; bits 2-3: reference trend; bits 4-5: custom trend; bits 6-7: 0
// An undefined TRational counts the trend byte alone as its size (1), but has no body to write.
// Bodies order by the worth of their Rational; the trends take no part. The length-and-body form is
// the body.
//
// Text form: the Rational's text, a blank, and the trends in parentheses: "12.50 (1,3,3)".
// Converts from Rational, SInt and UInt (trends 3). No locks.

#include <cstdint>
#include <string>

#include "tavrin/base/FieldTypes/Rational.h"

namespace Tavrin {

/// A Rational with a value trend, a reference trend and a custom trend beside it (see the file
/// comment above).
class TRational : public IFieldType {
public:
    /// Trend 0: equal to what it was compared with (for the value trend: unchanged).
    static constexpr std::uint32_t TrendEqual = 0;
    /// Trend 1: above what it was compared with.
    static constexpr std::uint32_t TrendAbove = 1;
    /// Trend 2: below what it was compared with.
    static constexpr std::uint32_t TrendBelow = 2;
    /// Trend 3: nothing to compare with; what a new object holds.
    static constexpr std::uint32_t TrendNone = 3;
    /// Bytes of the longest body: the longest Rational body and the trend byte.
    static constexpr std::uint32_t MaxBodySize = Rational::MaxBodySize + 1;

    /// An undefined value with all three trends at TrendNone.
    TRational() noexcept : IFieldType(FieldTypeNumber::TRational) {}

    /// As Rational::Set (status 23, and then the value is unchanged); the trends stay.
    StatusCode Set(std::int64_t numerator, std::uint32_t denominator);
    /// Takes the value of a Rational and marks this value defined; status 14 if it is undefined, and
    /// then this value is unchanged. The trends stay.
    StatusCode Set(const Rational& value);
    /// The Rational part; undefined while this value is.
    const Rational& GetRational() const noexcept { return rational_; }

    /// The value trend, 0 to 3; also kept while the value is undefined.
    std::uint32_t GetValueTrend() const noexcept { return valueTrend_; }
    /// The reference trend, 0 to 3; also kept while the value is undefined.
    std::uint32_t GetReferenceTrend() const noexcept { return referenceTrend_; }
    /// The custom trend, 0 to 3; also kept while the value is undefined.
    std::uint32_t GetCustomTrend() const noexcept { return customTrend_; }
    ///@{
    /// Each sets the trend or trends it names, whether the value is defined or not: status 23 for a
    /// trend above 3, and then no trend changes.
    StatusCode SetValueTrend(std::uint32_t trend);
    StatusCode SetReferenceTrend(std::uint32_t trend);
    StatusCode SetCustomTrend(std::uint32_t trend);
    StatusCode SetTrends(std::uint32_t valueTrend, std::uint32_t referenceTrend, std::uint32_t customTrend);
    ///@}

    /// Orders two TRational bodies by the worth of their Rational; bodies of equal worth are then
    /// ordered by their bytes (form, then trend byte), so only identical bodies compare equal.
    /// Status 23 when either does not decode; `result` is set all the same (an undecodable body
    /// orders before every valid one).
    static StatusCode Compare(const void* a, std::uint32_t lengthA, const void* b, std::uint32_t lengthB,
                              int& result);
    /// Decodes a body into the worth of its Rational and its trend byte; false if it is not one, and
    /// then `worth` and `trendByte` may have been written.
    static bool Decode(const void* data, std::uint32_t length, Rational::Worth& worth, std::uint8_t& trendByte) noexcept;

    void Reset() override;
    void Clear() override;
    StatusCode Compare(const void* data, std::uint32_t length, int& result) const override;
    std::string ToString() const override;
    StatusCode FromString(MessageValidator& text) override;
    std::string GetFromStringFormat() const override;
    StatusCode SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const override;
    StatusCode SerializeLengthAndBody(MessageBuilder& builder, std::uint32_t) const override {
        return AppendBody(builder);
    }
    StatusCode DeserializeBody(const void* data, std::uint32_t length) override;
    StatusCode DeserializeLengthAndBody(MessageValidator& validator, std::uint32_t options) override;
    std::uint32_t GetLengthAndBodySize() const override { return rational_.GetLengthAndBodySize() + 1; }
    std::uint32_t GetBodySize() const override { return rational_.GetBodySize() + 1; }

protected:
    StatusCode ConvertFrom(const IFieldType& other) override;

private:
    std::uint8_t GetTrendByte() const noexcept;
    void SetTrendByte(std::uint8_t trendByte) noexcept;

    Rational rational_;
    std::uint32_t valueTrend_ = TrendNone;
    std::uint32_t referenceTrend_ = TrendNone;
    std::uint32_t customTrend_ = TrendNone;
};

}  // namespace Tavrin
