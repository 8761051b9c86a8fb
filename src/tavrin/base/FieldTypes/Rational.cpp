#include "tavrin/base/FieldTypes/Rational.h"

#include <limits>

#include "tavrin/base/FieldTypes/BodyOrder.h"
#include "tavrin/base/FieldTypes/SInt.h"
#include "tavrin/base/FieldTypes/TRational.h"
#include "tavrin/base/FieldTypes/TextScanner.h"
#include "tavrin/base/FieldTypes/UInt.h"

namespace Tavrin {

namespace {

constexpr std::uint8_t CodeMask = 0x1F;
constexpr std::uint8_t NegativeBit = 0x20;
constexpr unsigned WidthShift = 6;
constexpr std::uint64_t MaxMagnitude = std::numeric_limits<std::int64_t>::max();

// w of the body's first byte: the magnitude takes 1 << w bytes.
unsigned WidthCode(std::uint64_t magnitude) noexcept {
    if (magnitude <= 0xFF) return 0;
    if (magnitude <= 0xFFFF) return 1;
    if (magnitude <= 0xFFFFFFFF) return 2;
    return 3;
}

std::uint64_t Magnitude(std::int64_t numerator) noexcept {
    // Never INT64_MIN, so the negation cannot overflow.
    return numerator < 0 ? static_cast<std::uint64_t>(-numerator) : static_cast<std::uint64_t>(numerator);
}

std::uint64_t PowerOfTen(unsigned exponent) noexcept {
    std::uint64_t value = 1;
    while (exponent-- > 0) value *= 10;
    return value;
}

// -1 for minus infinity, 1 for plus infinity, 0 for a number.
int InfinityRank(std::uint32_t code) noexcept {
    if (code == Rational::NegativeInfinity) return -1;
    return code == Rational::PositiveInfinity ? 1 : 0;
}

bool IsValid(std::int64_t numerator, std::uint32_t denominator) noexcept {
    return numerator != std::numeric_limits<std::int64_t>::min() && denominator < Rational::CodeCount;
}

bool ParseFraction(TextScanner& scanner, std::uint32_t& denominator) {
    std::uint64_t value = 0;
    if (!scanner.ReadUnsigned(Rational::DenominatorValue(Rational::LastFractionCode), value)) return false;
    for (std::uint32_t code = Rational::FirstFractionCode; code <= Rational::LastFractionCode; ++code) {
        if (Rational::DenominatorValue(code) == value) {
            denominator = code;
            return true;
        }
    }
    return false;
}

bool ParseDecimals(TextScanner& scanner, std::uint64_t& magnitude, std::uint32_t& denominator) {
    std::uint64_t decimals = 0;
    unsigned digits = 0;
    if (!scanner.ReadUnsigned(std::numeric_limits<std::uint64_t>::max(), decimals, digits) ||
        digits > Rational::MaxDecimalCode) {
        return false;
    }
    const std::uint64_t scale = PowerOfTen(digits);
    if (magnitude > (MaxMagnitude - decimals) / scale) return false;
    magnitude = magnitude * scale + decimals;
    denominator = digits;
    return true;
}

}  // namespace

std::uint64_t Rational::DenominatorValue(std::uint32_t code) noexcept {
    if (code <= MaxDecimalCode) return PowerOfTen(code);
    if (code <= LastFractionCode) return std::uint64_t{1} << (code - MaxDecimalCode);
    return 0;
}

StatusCode Rational::Set(std::int64_t numerator, std::uint32_t denominator) {
    if (!IsValid(numerator, denominator)) return Status::Invalid;
    numerator_ = denominator >= NegativeInfinity ? 0 : numerator;
    denominator_ = denominator;
    defined = true;
    return Status::Success;
}

std::int64_t Rational::GetNumerator() const {
    if (!defined) ThrowStatus("Tavrin::Rational::GetNumerator", Status::NotUsable);
    return numerator_;
}

int Rational::CompareWorth(const Worth& a, const Worth& b) noexcept {
    const int rankA = InfinityRank(a.denominator);
    const int rankB = InfinityRank(b.denominator);
    if (rankA != 0 || rankB != 0) return BodyOrder::CompareValues(rankA, rankB);
    // |numerator| < 2^63 and denominators <= 10^18 < 2^60: the products fit 128 bits.
    const __int128 left = static_cast<__int128>(a.numerator) * DenominatorValue(b.denominator);
    const __int128 right = static_cast<__int128>(b.numerator) * DenominatorValue(a.denominator);
    return BodyOrder::CompareValues(left, right);
}

StatusCode Rational::Compare(const Rational& other, int& result) const {
    if (!defined || !other.defined) return Status::NotUsable;
    result = CompareWorth({numerator_, denominator_}, {other.numerator_, other.denominator_});
    return Status::Success;
}

bool Rational::Decode(const void* data, std::uint32_t length, Worth& worth) noexcept {
    if (length == 0) return false;
    const auto* bytes = static_cast<const unsigned char*>(data);
    const std::uint32_t code = bytes[0] & CodeMask;
    const unsigned widthCode = bytes[0] >> WidthShift;
    if (code >= CodeCount || length != BodyLength(bytes[0])) return false;
    const std::uint64_t magnitude = DecodeUnsigned(bytes + 1, length - 1);
    const bool negative = (bytes[0] & NegativeBit) != 0;
    if (WidthCode(magnitude) != widthCode || magnitude > MaxMagnitude || (negative && magnitude == 0) ||
        (code >= NegativeInfinity && magnitude != 0)) {
        return false;
    }
    worth.numerator = negative ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
    worth.denominator = code;
    return true;
}

std::uint32_t Rational::Encode(std::int64_t numerator, std::uint32_t denominator, unsigned char* body) noexcept {
    const std::uint64_t magnitude = Magnitude(numerator);
    const unsigned widthCode = WidthCode(magnitude);
    body[0] = static_cast<unsigned char>(denominator | (numerator < 0 ? NegativeBit : 0) | (widthCode << WidthShift));
    const std::uint32_t width = 1u << widthCode;
    EncodeUnsigned(body + 1, width, magnitude);
    return 1 + width;
}

StatusCode Rational::Compare(const void* a, std::uint32_t lengthA, const void* b, std::uint32_t lengthB,
                             int& result) {
    const StatusCode status = BodyOrder::CompareDecoded<Worth>(a, lengthA, b, lengthB, result, &Decode, &CompareWorth);
    // Equal worth in different forms (0.5 and 1/2): the bodies break the tie, so the order stays
    // total and an index keeps the two forms apart, as IsFieldDifferent does.
    if (status == Status::Success && result == 0) result = BodyOrder::CompareBytes(a, lengthA, b, lengthB);
    return status;
}

StatusCode Rational::Compare(const void* data, std::uint32_t length, int& result) const {
    return CompareSmallBody(data, length, result, &Rational::Compare);
}

std::uint32_t Rational::GetBodySize() const {
    return defined ? 1 + (1u << WidthCode(Magnitude(numerator_))) : 0;
}

StatusCode Rational::SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const {
    if (!defined) return Status::NotUsable;
    if (size < GetBodySize()) return Status::LengthMismatch;
    written = Encode(numerator_, denominator_, static_cast<unsigned char*>(buffer));
    return Status::Success;
}

StatusCode Rational::DeserializeBody(const void* data, std::uint32_t length) {
    Worth worth{};
    if (!Decode(data, length, worth)) return Status::Invalid;
    return Set(worth.numerator, worth.denominator);
}

StatusCode Rational::DeserializeLengthAndBody(MessageValidator& validator, std::uint32_t) {
    if (validator.GetRemaining() == 0) return Status::Invalid;
    return ReadBody(validator, BodyLength(validator.GetData()[validator.GetOffset()]));
}

std::string Rational::Format(std::int64_t numerator, std::uint32_t denominator) {
    if (denominator == NegativeInfinity) return "-inf";
    if (denominator == PositiveInfinity) return "inf";
    const std::uint64_t magnitude = Magnitude(numerator);
    const std::string sign = numerator < 0 ? "-" : "";
    if (denominator > MaxDecimalCode) {
        return sign + std::to_string(magnitude) + '/' + std::to_string(DenominatorValue(denominator));
    }
    const std::uint64_t scale = DenominatorValue(denominator);
    std::string text = sign + std::to_string(magnitude / scale);
    if (denominator == 0) return text;
    const std::string decimals = std::to_string(magnitude % scale);
    return text + '.' + std::string(denominator - decimals.size(), '0') + decimals;
}

bool Rational::Parse(TextScanner& scanner, std::int64_t& numerator, std::uint32_t& denominator) {
    const bool negativeInfinity = scanner.Rest().starts_with("-inf");
    if (scanner.Consume("-inf") || scanner.Consume("inf")) {
        numerator = 0;
        denominator = negativeInfinity ? NegativeInfinity : PositiveInfinity;
        return true;
    }
    const bool negative = scanner.Consume('-');
    std::uint64_t magnitude = 0;
    if (!scanner.ReadUnsigned(MaxMagnitude, magnitude)) return false;
    denominator = 0;
    if (scanner.Consume('/')) {
        if (!ParseFraction(scanner, denominator)) return false;
    } else if (scanner.Consume('.')) {
        if (!ParseDecimals(scanner, magnitude, denominator)) return false;
    }
    numerator = negative ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
    return true;
}

std::string Rational::ToString() const {
    return defined ? Format(numerator_, denominator_) : std::string();
}

StatusCode Rational::FromString(MessageValidator& text) {
    TextScanner scanner(TextScanner::TakeRest(text));
    std::int64_t numerator = 0;
    std::uint32_t denominator = 0;
    if (!Parse(scanner, numerator, denominator) || !scanner.AtEnd()) return Status::Invalid;
    return Set(numerator, denominator);
}

std::string Rational::GetFromStringFormat() const {
    return "[-]digits[.up to 18 digits], [-]digits/d with d one of 2, 4, 8 ... 512, inf or -inf";
}

StatusCode Rational::ConvertFrom(const IFieldType& other) {
    if (const auto* rational = dynamic_cast<const Rational*>(&other)) {
        *this = *rational;
        return Status::Success;
    }
    if (const auto* trending = dynamic_cast<const TRational*>(&other)) {
        *this = trending->GetRational();
        return Status::Success;
    }
    if (const auto* integer = dynamic_cast<const SInt*>(&other)) return Set(integer->Get(), 0);
    if (const auto* integer = dynamic_cast<const UInt*>(&other)) {
        if (integer->Get() > MaxMagnitude) return Status::Invalid;
        return Set(static_cast<std::int64_t>(integer->Get()), 0);
    }
    return Status::WrongType;
}

}  // namespace Tavrin
