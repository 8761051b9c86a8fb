#pragma once
// Rational: a signed 64-bit numerator over a denominator given by a code below 30.
//
// Denominator codes:
//   0-18   10 to the power of the code: a decimal with that many digits after the point
//   19-27  2 to the power of (code - 18), that is 2, 4, 8 ... 512: a binary fraction
//   28     minus infinity, 29 plus infinity: values without a numerator (stored as numerator 0)
// A numerator of INT64_MIN is refused, so the magnitude of every numerator fits 63 bits.
//
// Body, 1 + n bytes (2, 3, 5 or 9):
//   byte 0     bits 0-4: denominator code; bit 5: numerator negative; bits 6-7: w, where the
//              magnitude takes n = 1 << w bytes
//   bytes 1-n  magnitude of the numerator, little-endian, in the fewest of 1, 2, 4 or 8 bytes
// Only the shortest width is valid, a negative zero is not, and an infinity has magnitude 0, so
// every value has one body. The body tells its own length (byte 0), so the length-and-body form is
// the body.
//
// Order: by numeric worth; minus infinity before every number, plus infinity after. Two bodies of
// equal worth in different forms, such as 0.5 and 1/2, compare equal.
//
// Text form: a decimal with exactly `code` digits after the point ("-12.340", "7"), a fraction
// "25/8", or "inf" / "-inf".
// Converts from TRational (its value), SInt and UInt (as integers). No locks.

#include <cstdint>
#include <string>

#include "tavrin/base/FieldTypes/IFieldType.h"
#include "tavrin/base/Throw.h"

namespace Tavrin {

class TextScanner;

class Rational : public IFieldType {
public:
    static constexpr std::uint32_t MaxDecimalCode = 18;
    static constexpr std::uint32_t FirstFractionCode = 19;
    static constexpr std::uint32_t LastFractionCode = 27;
    static constexpr std::uint32_t NegativeInfinity = 28;
    static constexpr std::uint32_t PositiveInfinity = 29;
    static constexpr std::uint32_t CodeCount = 30;
    static constexpr std::uint32_t MaxBodySize = 9;

    Rational() noexcept : IFieldType(FieldTypeNumber::Rational) {}

    /// Status 23 for a numerator of INT64_MIN or a code of 30 or more. With an infinity code the
    /// numerator is stored as 0.
    StatusCode Set(std::int64_t numerator, std::uint32_t denominator);
    ///@{
    /// Throws StatusCodeException 14 when undefined.
    std::int64_t GetNumerator() const;
    std::uint32_t GetDenominator() const {
        if (!defined) ThrowStatus("Tavrin::Rational::GetDenominator", Status::NotUsable);
        return denominator_;
    }
    bool IsInfinite() const noexcept { return denominator_ >= NegativeInfinity; }
    ///@}
    /// Compares the worth of two defined values; status 14 if either is undefined.
    StatusCode Compare(const Rational& other, int& result) const;

    /// The number that a finite code stands for: 10^code or 2^(code-18).
    static std::uint64_t DenominatorValue(std::uint32_t code) noexcept;
    /// Orders two Rational bodies by worth.
    static StatusCode Compare(const void* a, std::uint32_t lengthA, const void* b, std::uint32_t lengthB,
                              int& result);
    /// A value as a body holds it.
    struct Worth {
        std::int64_t numerator;
        std::uint32_t denominator;
    };
    /// Decodes a body; false if it is not one.
    static bool Decode(const void* data, std::uint32_t length, Worth& worth) noexcept;
    /// Orders two values by worth.
    static int CompareWorth(const Worth& a, const Worth& b) noexcept;
    /// The body length that a body's first byte announces.
    static std::uint32_t BodyLength(std::uint8_t firstByte) noexcept { return 1 + (1u << (firstByte >> 6)); }
    /// Writes a body for a valid value; returns its length (REQUIRES: size >= MaxBodySize or enough).
    static std::uint32_t Encode(std::int64_t numerator, std::uint32_t denominator, unsigned char* body) noexcept;
    ///@{
    /// The text form of a value, and its reverse for longer text forms.
    static std::string Format(std::int64_t numerator, std::uint32_t denominator);
    static bool Parse(TextScanner& scanner, std::int64_t& numerator, std::uint32_t& denominator);
    ///@}

    void Reset() override { defined = false; }
    void Clear() override { defined = false; }
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
    std::uint32_t GetLengthAndBodySize() const override { return GetBodySize(); }
    std::uint32_t GetBodySize() const override;

protected:
    StatusCode ConvertFrom(const IFieldType& other) override;

private:
    std::int64_t numerator_ = 0;
    std::uint32_t denominator_ = 0;
};

}  // namespace Tavrin
