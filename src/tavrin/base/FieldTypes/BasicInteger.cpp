#include "tavrin/base/FieldTypes/BasicInteger.h"

#include <limits>
#include <type_traits>
#include <utility>

#include "tavrin/base/Encoding.h"
#include "tavrin/base/FieldTypes/BodyOrder.h"
#include "tavrin/base/FieldTypes/Rational.h"
#include "tavrin/base/FieldTypes/TextScanner.h"

namespace Tavrin {

namespace {

constexpr bool IsSigned(std::int64_t) { return true; }
constexpr bool IsSigned(std::uint64_t) { return false; }

// Whether a value of one integer type can be held by another, and the value there.
template <class To, class From>
bool Narrow(From value, To& result) noexcept {
    if (!std::in_range<To>(value)) return false;
    result = static_cast<To>(value);
    return true;
}

}  // namespace

template <class T>
bool BasicInteger<T>::Fits(T value, std::uint32_t width) noexcept {
    if (width >= 8) return true;
    const unsigned bits = width * 8;
    if constexpr (std::is_signed_v<T>) {
        const T limit = T{1} << (bits - 1);
        return value >= -limit && value < limit;
    } else {
        return value < (T{1} << bits);
    }
}

template <class T>
T BasicInteger<T>::Decode(const void* data, std::uint32_t width) noexcept {
    if constexpr (std::is_signed_v<T>) {
        return DecodeSigned(data, width);
    } else {
        return DecodeUnsigned(data, width);
    }
}

template <class T>
StatusCode BasicInteger<T>::Compare(const void* data, std::uint32_t length, int& result) const {
    if (!defined) return Status::NotUsable;
    if (!IsWidth(length)) {
        result = 1;
        return Status::Invalid;
    }
    result = BodyOrder::CompareValues(value_, Decode(data, length));
    return Status::Success;
}

template <class T>
std::string BasicInteger<T>::ToString() const {
    return defined ? std::to_string(value_) : std::string();
}

template <class T>
StatusCode BasicInteger<T>::FromString(MessageValidator& text) {
    TextScanner scanner(TextScanner::TakeRest(text));
    const bool negative = IsSigned(T{}) && scanner.Consume('-');
    // A negative value may reach one further than the positive maximum.
    const std::uint64_t maximum = static_cast<std::uint64_t>(std::numeric_limits<T>::max()) + (negative ? 1 : 0);
    std::uint64_t magnitude = 0;
    if (!scanner.ReadUnsigned(maximum, magnitude) || !scanner.AtEnd()) return Status::Invalid;
    Set(negative ? static_cast<T>(0 - magnitude) : static_cast<T>(magnitude));
    return Status::Success;
}

template <class T>
std::string BasicInteger<T>::GetFromStringFormat() const {
    return IsSigned(T{}) ? "[-]decimal digits" : "decimal digits";
}

template <class T>
StatusCode BasicInteger<T>::SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const {
    if (!defined) return Status::NotUsable;
    if (!IsWidth(size)) return Status::LengthMismatch;
    if (!Fits(value_, size)) return Status::Invalid;
    EncodeUnsigned(buffer, size, static_cast<std::uint64_t>(value_));
    written = size;
    return Status::Success;
}

template <class T>
StatusCode BasicInteger<T>::DeserializeBody(const void* data, std::uint32_t length) {
    if (!IsWidth(length)) return Status::LengthMismatch;
    Set(Decode(data, length));
    return Status::Success;
}

template <class T>
std::uint32_t BasicInteger<T>::GetBodySize() const {
    if (!defined) return 0;
    std::uint32_t width = 1;
    while (!Fits(value_, width)) width *= 2;
    return width;
}

template <class T>
StatusCode BasicInteger<T>::IsDifferent(const void* data, std::uint32_t length, bool& different) const {
    if (!defined) return Status::NotUsable;
    different = !IsWidth(length) || !Fits(value_, length) || Decode(data, length) != value_;
    return Status::Success;
}

template <class T>
StatusCode BasicInteger<T>::ConvertFrom(const IFieldType& other) {
    T value = 0;
    if (const auto* same = dynamic_cast<const BasicInteger<T>*>(&other)) {
        value = same->Get();
    } else if (const auto* signedValue = dynamic_cast<const BasicInteger<std::int64_t>*>(&other)) {
        if (!Narrow(signedValue->Get(), value)) return Status::Invalid;
    } else if (const auto* unsignedValue = dynamic_cast<const BasicInteger<std::uint64_t>*>(&other)) {
        if (!Narrow(unsignedValue->Get(), value)) return Status::Invalid;
    } else if (const auto* rational = dynamic_cast<const Rational*>(&other)) {
        if (rational->IsInfinite()) return Status::Invalid;
        const auto denominator = static_cast<std::int64_t>(Rational::DenominatorValue(rational->GetDenominator()));
        if (rational->GetNumerator() % denominator != 0) return Status::Invalid;
        if (!Narrow(rational->GetNumerator() / denominator, value)) return Status::Invalid;
    } else {
        return Status::WrongType;
    }
    Set(value);
    return Status::Success;
}

template class BasicInteger<std::int64_t>;
template class BasicInteger<std::uint64_t>;

}  // namespace Tavrin
