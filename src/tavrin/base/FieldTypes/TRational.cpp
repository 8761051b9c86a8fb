#include "tavrin/base/FieldTypes/TRational.h"

#include "tavrin/base/FieldTypes/BodyOrder.h"
#include "tavrin/base/FieldTypes/TextScanner.h"
#include "tavrin/base/FieldTypes/TextString.h"

namespace Tavrin {

namespace {

constexpr std::uint8_t TrendMask = 0x03;
constexpr std::uint8_t UnusedTrendBits = 0xC0;
constexpr unsigned ReferenceShift = 2;
constexpr unsigned CustomShift = 4;

}  // namespace

StatusCode TRational::Set(std::int64_t numerator, std::uint32_t denominator) {
    const StatusCode status = rational_.Set(numerator, denominator);
    if (status == Status::Success) defined = true;
    return status;
}

StatusCode TRational::Set(const Rational& value) {
    if (!value.defined) return Status::NotUsable;
    rational_ = value;
    defined = true;
    return Status::Success;
}

StatusCode TRational::SetValueTrend(std::uint32_t trend) {
    return SetTrends(trend, referenceTrend_, customTrend_);
}

StatusCode TRational::SetReferenceTrend(std::uint32_t trend) {
    return SetTrends(valueTrend_, trend, customTrend_);
}

StatusCode TRational::SetCustomTrend(std::uint32_t trend) {
    return SetTrends(valueTrend_, referenceTrend_, trend);
}

StatusCode TRational::SetTrends(std::uint32_t valueTrend, std::uint32_t referenceTrend, std::uint32_t customTrend) {
    if (valueTrend > TrendNone || referenceTrend > TrendNone || customTrend > TrendNone) return Status::Invalid;
    valueTrend_ = valueTrend;
    referenceTrend_ = referenceTrend;
    customTrend_ = customTrend;
    return Status::Success;
}

std::uint8_t TRational::GetTrendByte() const noexcept {
    return static_cast<std::uint8_t>(valueTrend_ | (referenceTrend_ << ReferenceShift) | (customTrend_ << CustomShift));
}

void TRational::SetTrendByte(std::uint8_t trendByte) noexcept {
    valueTrend_ = trendByte & TrendMask;
    referenceTrend_ = (trendByte >> ReferenceShift) & TrendMask;
    customTrend_ = (trendByte >> CustomShift) & TrendMask;
}

void TRational::Reset() {
    rational_.Reset();
    defined = false;
}

void TRational::Clear() {
    rational_.Clear();
    defined = false;
}

bool TRational::Decode(const void* data, std::uint32_t length, Rational::Worth& worth, std::uint8_t& trendByte) noexcept {
    if (length < 2) return false;
    trendByte = static_cast<const unsigned char*>(data)[length - 1];
    return (trendByte & UnusedTrendBits) == 0 && Rational::Decode(data, length - 1, worth);
}

StatusCode TRational::Compare(const void* a, std::uint32_t lengthA, const void* b, std::uint32_t lengthB,
                              int& result) {
    // Values order by worth; equal worths order by their bodies (form, then trend byte), so the
    // order stays total.
    const auto decode = [](const void* data, std::uint32_t length, Rational::Worth& worth) {
        std::uint8_t trendByte = 0;
        return Decode(data, length, worth, trendByte);
    };
    const StatusCode status =
        BodyOrder::CompareDecoded<Rational::Worth>(a, lengthA, b, lengthB, result, decode, &Rational::CompareWorth);
    if (status == Status::Success && result == 0) result = BodyOrder::CompareBytes(a, lengthA, b, lengthB);
    return status;
}

StatusCode TRational::Compare(const void* data, std::uint32_t length, int& result) const {
    return CompareSmallBody(data, length, result, &TRational::Compare);
}

std::string TRational::ToString() const {
    if (!defined) return std::string();
    return rational_.ToString() + " (" + std::to_string(valueTrend_) + ',' + std::to_string(referenceTrend_) +
           ',' + std::to_string(customTrend_) + ')';
}

StatusCode TRational::FromString(MessageValidator& text) {
    TextScanner scanner(TextScanner::TakeRest(text));
    std::int64_t numerator = 0;
    std::uint32_t denominator = 0;
    std::uint32_t trends[3] = {};
    if (!Rational::Parse(scanner, numerator, denominator) || !scanner.Consume(" (") ||
        !scanner.ReadFixedDigits(1, trends[0]) || !scanner.Consume(',') || !scanner.ReadFixedDigits(1, trends[1]) ||
        !scanner.Consume(',') || !scanner.ReadFixedDigits(1, trends[2]) || !scanner.Consume(')') ||
        !scanner.AtEnd()) {
        return Status::Invalid;
    }
    if (SetTrends(trends[0], trends[1], trends[2]) != Status::Success) return Status::Invalid;
    return Set(numerator, denominator);
}

std::string TRational::GetFromStringFormat() const {
    return rational_.GetFromStringFormat() + ", then \" (v,r,c)\" with the value, reference and custom trends 0 to 3";
}

StatusCode TRational::SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const {
    if (!defined) return Status::NotUsable;
    if (size < GetBodySize()) return Status::LengthMismatch;
    auto* body = static_cast<unsigned char*>(buffer);
    const std::uint32_t length = Rational::Encode(rational_.GetNumerator(), rational_.GetDenominator(), body);
    body[length] = GetTrendByte();
    written = length + 1;
    return Status::Success;
}

StatusCode TRational::DeserializeBody(const void* data, std::uint32_t length) {
    Rational::Worth worth{};
    std::uint8_t trendByte = 0;
    if (!Decode(data, length, worth, trendByte)) return Status::Invalid;
    SetTrendByte(trendByte);
    return Set(worth.numerator, worth.denominator);
}

StatusCode TRational::DeserializeLengthAndBody(MessageValidator& validator, std::uint32_t) {
    if (validator.GetRemaining() == 0) return Status::Invalid;
    return ReadBody(validator, Rational::BodyLength(validator.GetData()[validator.GetOffset()]) + 1);
}

StatusCode TRational::ConvertFrom(const IFieldType& other) {
    if (const auto* trending = dynamic_cast<const TRational*>(&other)) {
        *this = *trending;
        return Status::Success;
    }
    // Text goes by this class's own text form, with its trends (see IFieldType::Convert).
    if (dynamic_cast<const TextString*>(&other) != nullptr) return Status::WrongType;
    const StatusCode status = rational_.Convert(&other);
    if (status != Status::Success) return status;
    defined = true;
    return SetTrends(TrendNone, TrendNone, TrendNone);
}

}  // namespace Tavrin
