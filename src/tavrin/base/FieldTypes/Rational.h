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

/// A signed 64-bit numerator over a decimal or binary denominator given by a code, or an infinity
/// (see the file comment above).
class Rational : public IFieldType {
public:
    /// The last decimal code: 10^18.
    static constexpr std::uint32_t MaxDecimalCode = 18;
    /// The first binary code: 2.
    static constexpr std::uint32_t FirstFractionCode = 19;
    /// The last binary code: 512.
    static constexpr std::uint32_t LastFractionCode = 27;
    /// The code of minus infinity.
    static constexpr std::uint32_t NegativeInfinity = 28;
    /// The code of plus infinity.
    static constexpr std::uint32_t PositiveInfinity = 29;
    /// The number of codes; every code below it is valid.
    static constexpr std::uint32_t CodeCount = 30;
    /// Bytes of the longest body.
    static constexpr std::uint32_t MaxBodySize = 9;

    /// An undefined value.
    Rational() noexcept : IFieldType(FieldTypeNumber::Rational) {}

    /// Sets numerator and denominator code and marks the value defined. Status 23 for a numerator of
    /// INT64_MIN or a code of 30 or more; the value is then unchanged. With an infinity code the
    /// numerator is stored as 0.
    StatusCode Set(std::int64_t numerator, std::uint32_t denominator);
    /// The numerator (0 for an infinity). Throws StatusCodeException 14 when undefined.
    std::int64_t GetNumerator() const;
    /// The denominator code. Throws StatusCodeException 14 when undefined.
    std::uint32_t GetDenominator() const {
        if (!defined) ThrowStatus("Tavrin::Rational::GetDenominator", Status::NotUsable);
        return denominator_;
    }
    /// Whether the code is an infinity. Meaningful only while defined; does not throw.
    bool IsInfinite() const noexcept { return denominator_ >= NegativeInfinity; }
    /// Compares the worth of two defined values (0.5 and 1/2 are equal here); status 14 if either is
    /// undefined, and then `result` is untouched.
    StatusCode Compare(const Rational& other, int& result) const;

    /// The number that a finite code stands for: 10^code or 2^(code-18); 0 for an infinity code or
    /// beyond.
    static std::uint64_t DenominatorValue(std::uint32_t code) noexcept;
    /// Orders two Rational bodies by worth; bodies of equal worth in different forms (0.5 and 1/2)
    /// are then ordered by their bytes, so only identical bodies compare equal. Status 23 when either
    /// does not decode; `result` is set all the same (an undecodable body orders before every valid
    /// one).
    static StatusCode Compare(const void* a, std::uint32_t lengthA, const void* b, std::uint32_t lengthB,
                              int& result);
    /// A value as a body holds it.
    struct Worth {
        std::int64_t numerator;    ///< never INT64_MIN; 0 for an infinity
        std::uint32_t denominator; ///< the denominator code, below CodeCount
    };
    /// Decodes a body; false (and `worth` untouched) if it is not one.
    static bool Decode(const void* data, std::uint32_t length, Worth& worth) noexcept;
    /// Orders two values by worth: below, equal to or above 0.
    static int CompareWorth(const Worth& a, const Worth& b) noexcept;
    /// The body length that a body's first byte announces.
    static std::uint32_t BodyLength(std::uint8_t firstByte) noexcept { return 1 + (1u << (firstByte >> 6)); }
    /// Writes the body of a valid value (as Set accepts, with numerator 0 for an infinity) at `body`,
    /// which must have room for it (MaxBodySize always does); returns its length.
    static std::uint32_t Encode(std::int64_t numerator, std::uint32_t denominator, unsigned char* body) noexcept;
    /// The text form of a valid value: a decimal with `denominator` digits after the point, a
    /// fraction "n/d", "inf" or "-inf".
    static std::string Format(std::int64_t numerator, std::uint32_t denominator);
    /// Reads a text form from `scanner`, for use inside longer text forms; false if none is there.
    /// On failure `numerator` and `denominator` may have been written and the scanner may have moved.
    static bool Parse(TextScanner& scanner, std::int64_t& numerator, std::uint32_t& denominator);

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
