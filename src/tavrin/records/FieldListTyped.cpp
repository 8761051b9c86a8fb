// The typed field families: SetFieldV (integers by value), SetFieldR (strings and value objects by
// reference), GetFieldT (all of them), and the TRational write that works out its trends.
//
// The families are defined here only and explicitly instantiated at the end of this file for the
// listed types, so no other type can reach them; the public overloads that forward to them are in
// FieldListTypedOverloads.cpp.

#include <cstring>
#include <new>
#include <type_traits>

#include "tavrin/base/Encoding.h"
#include "tavrin/base/FieldTypes/BinaryArray.h"
#include "tavrin/base/FieldTypes/BinaryString.h"
#include "tavrin/base/FieldTypes/Blob.h"
#include "tavrin/base/FieldTypes/CrcBlob.h"
#include "tavrin/base/FieldTypes/Date.h"
#include "tavrin/base/FieldTypes/DateTime.h"
#include "tavrin/base/FieldTypes/FieldTypeFactory.h"
#include "tavrin/base/FieldTypes/Rational.h"
#include "tavrin/base/FieldTypes/SInt.h"
#include "tavrin/base/FieldTypes/TRational.h"
#include "tavrin/base/FieldTypes/TextArray.h"
#include "tavrin/base/FieldTypes/TextString.h"
#include "tavrin/base/FieldTypes/Time.h"
#include "tavrin/base/FieldTypes/UInt.h"
#include "tavrin/records/FieldList.h"

namespace Tavrin::Database {

namespace {

using Type = FieldSpecification::Type;

// ---- Integers --------------------------------------------------------------------------------------

// char is a one-character text; the other 8-bit types are small integers.
template <class T>
constexpr Type IntegerFieldType = std::is_same_v<T, char>  ? FieldSpecification::TextArray
                                  : std::is_signed_v<T> ? FieldSpecification::SInt
                                                        : FieldSpecification::UInt;

constexpr bool IsIntegerWidth(std::uint32_t width) noexcept {
    return width == 1 || width == 2 || width == 4 || width == 8;
}

// Whether a T may be written into the field: the width of the type decides, never the value.
template <class T>
StatusCode CheckIntegerWrite(const FieldEntry& entry) noexcept {
    if (entry.GetType() != IntegerFieldType<T>) return Status::WrongType;
    const std::uint32_t maxLength = entry.GetMaxLength();
    if (maxLength < sizeof(T) || (sizeof(T) == 1 && maxLength != 1)) return Status::Invalid;
    return IsIntegerWidth(maxLength) ? Status::Success : Status::LengthMismatch;
}

// Whether the field may be read into a T: it must not be wider than the type.
template <class T>
StatusCode CheckIntegerRead(const FieldEntry& entry) noexcept {
    if (entry.GetType() != IntegerFieldType<T>) return Status::WrongType;
    const std::uint32_t maxLength = entry.GetMaxLength();
    return maxLength <= sizeof(T) && IsIntegerWidth(maxLength) ? Status::Success : Status::LengthMismatch;
}

// The value extended to 64 bits, sign-extended for signed types; a narrower field takes its low bytes.
template <class T>
std::uint64_t ExtendedBits(T value) noexcept {
    if constexpr (std::is_signed_v<T>) {
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
    } else {
        return static_cast<std::uint64_t>(value);
    }
}

template <class T>
T DecodeInteger(const unsigned char* slot, std::uint32_t width) noexcept {
    if constexpr (std::is_signed_v<T> && !std::is_same_v<T, char>) {
        return static_cast<T>(DecodeSigned(slot, width));
    } else {
        return static_cast<T>(DecodeUnsigned(slot, width));
    }
}

// ---- Value objects ---------------------------------------------------------------------------------

// The field type that a value class belongs in.
template <class T>
constexpr Type ClassFieldType = FieldSpecification::None;
template <>
constexpr Type ClassFieldType<BinaryArray> = FieldSpecification::BinaryArray;
template <>
constexpr Type ClassFieldType<BinaryString> = FieldSpecification::BinaryString;
template <>
constexpr Type ClassFieldType<Blob> = FieldSpecification::Blob;
template <>
constexpr Type ClassFieldType<CrcBlob> = FieldSpecification::CrcBlob;
template <>
constexpr Type ClassFieldType<Date> = FieldSpecification::Date;
template <>
constexpr Type ClassFieldType<DateTime> = FieldSpecification::DateTime;
template <>
constexpr Type ClassFieldType<Rational> = FieldSpecification::Rational;
template <>
constexpr Type ClassFieldType<SInt> = FieldSpecification::SInt;
template <>
constexpr Type ClassFieldType<TextArray> = FieldSpecification::TextArray;
template <>
constexpr Type ClassFieldType<TextString> = FieldSpecification::TextString;
template <>
constexpr Type ClassFieldType<Time> = FieldSpecification::Time;
template <>
constexpr Type ClassFieldType<TRational> = FieldSpecification::TRational;
template <>
constexpr Type ClassFieldType<UInt> = FieldSpecification::UInt;

// Whether a write of `value` may go into the field.
template <class T>
bool AcceptsWrite(const FieldEntry& entry, const T& value) noexcept {
    if constexpr (std::is_same_v<T, std::string>) {
        return entry.GetTypeInfo().isStringCompatible;
    } else if constexpr (std::is_same_v<T, IFieldType>) {
        return IsFieldTypeOf(entry.GetType(), value.number);
    } else {
        return entry.GetType() == ClassFieldType<T>;
    }
}

bool SameBytes(const unsigned char* stored, std::uint32_t storedLength, const std::string& value) noexcept {
    return value.size() == storedLength && (storedLength == 0 || std::memcmp(stored, value.data(), storedLength) == 0);
}

// A string's size as a field length; FullLength, which no field takes, for one of 4 GB or more.
std::uint32_t StringLength(const std::string& value) noexcept {
    return value.size() < FieldList::FullLength ? static_cast<std::uint32_t>(value.size()) : FieldList::FullLength;
}

// ---- Reads of a defined field's value (`value`, `length`) ---------------------------------------------

StatusCode ReadString(const FieldEntry& entry, const unsigned char* value, std::uint32_t length,
                      std::string& text) {
    if (!entry.GetTypeInfo().isStringCompatible) return Status::WrongType;
    try {
        text.assign(reinterpret_cast<const char*>(value), length);
    } catch (const std::bad_alloc&) {
        return Status::OutOfMemory;
    }
    return Status::Success;
}

StatusCode ReadObject(Type required, const FieldEntry& entry, const unsigned char* value, std::uint32_t length,
                      IFieldType& object) {
    if (entry.GetType() != required) return Status::WrongType;
    return object.DeserializeBody(value, length);
}

// A TRational field holds a Rational body and one trend byte behind it.
StatusCode ReadRational(const FieldEntry& entry, const unsigned char* value, std::uint32_t length,
                        Rational& rational) {
    if (entry.GetType() == FieldSpecification::TRational) {
        return rational.DeserializeBody(value, length == 0 ? 0 : length - 1);
    }
    return ReadObject(FieldSpecification::Rational, entry, value, length, rational);
}

// A Rational field gives a TRational with every trend 3 (nothing to compare with).
StatusCode ReadTRational(const FieldEntry& entry, const unsigned char* value, std::uint32_t length,
                         TRational& trending) {
    if (entry.GetType() != FieldSpecification::Rational) {
        return ReadObject(FieldSpecification::TRational, entry, value, length, trending);
    }
    Rational rational;
    StatusCode status = rational.DeserializeBody(value, length);
    if (status == Status::Success) status = trending.Set(rational.GetNumerator(), rational.GetDenominator());
    if (status == Status::Success) {
        status = trending.SetTrends(TRational::TrendNone, TRational::TrendNone, TRational::TrendNone);
    }
    return status;
}

StatusCode ReadNewObject(const FieldEntry& entry, const unsigned char* value, std::uint32_t length,
                         std::unique_ptr<IFieldType>& object) {
    unsigned char baseType = 0;
    if (FieldSpecification::GetTavrinFieldType(entry.GetType(), baseType) != Status::Success) return Status::WrongType;
    object.reset(FieldTypeFactory::GetInstance().Create(baseType));
    if (object == nullptr) return Status::WrongType;
    return object->DeserializeBody(value, length);
}

template <class T>
StatusCode ReadValue(const FieldEntry& entry, const unsigned char* value, std::uint32_t length, T& out) {
    if constexpr (std::is_integral_v<T>) {
        const StatusCode status = CheckIntegerRead<T>(entry);
        if (status == Status::Success) out = DecodeInteger<T>(value, entry.GetMaxLength());
        return status;
    } else if constexpr (std::is_same_v<T, std::string>) {
        return ReadString(entry, value, length, out);
    } else if constexpr (std::is_same_v<T, std::unique_ptr<IFieldType>>) {
        return ReadNewObject(entry, value, length, out);
    } else if constexpr (std::is_same_v<T, Rational>) {
        return ReadRational(entry, value, length, out);
    } else if constexpr (std::is_same_v<T, TRational>) {
        return ReadTRational(entry, value, length, out);
    } else if constexpr (std::is_same_v<T, IFieldType>) {
        if (!IsFieldTypeOf(entry.GetType(), out.number)) return Status::WrongType;
        return out.DeserializeBody(value, length);
    } else {
        return ReadObject(ClassFieldType<T>, entry, value, length, out);
    }
}

// The trend of `value` against `other`: 1 above, 2 below, `equal` if of equal worth.
StatusCode TrendAgainst(const Rational& value, const Rational& other, std::uint32_t equal, std::uint32_t& trend) {
    int order = 0;
    const StatusCode status = value.Compare(other, order);
    if (status == Status::Success) {
        trend = order > 0 ? TRational::TrendAbove : (order < 0 ? TRational::TrendBelow : equal);
    }
    return status;
}

// The value trend against the field's old value (`stored`, `length`; null for an undefined field).
// Equal worth keeps the old value's trend.
StatusCode SetValueTrend(const FieldEntry& entry, const unsigned char* stored, std::uint32_t length,
                         TRational& value) {
    if (stored == nullptr) return value.defined ? value.SetValueTrend(TRational::TrendNone) : Status::NotUsable;
    TRational old;
    StatusCode status = ReadTRational(entry, stored, length, old);
    std::uint32_t trend = TRational::TrendNone;
    if (status == Status::Success) {
        status = TrendAgainst(value.GetRational(), old.GetRational(), old.GetValueTrend(), trend);
    }
    return status == Status::Success ? value.SetValueTrend(trend) : status;
}

// The reference trend against the Rational or TRational field `referenceId`; 3 if it is undefined.
StatusCode SetReferenceTrend(const FieldList& list, const unsigned char* data, std::uint16_t referenceId,
                             TRational& value) {
    Rational reference;
    const StatusCode read = list.GetField(data, referenceId, reference);
    if (read == Status::Undefined) {
        return value.defined ? value.SetReferenceTrend(TRational::TrendNone) : Status::NotUsable;
    }
    std::uint32_t trend = TRational::TrendNone;
    const StatusCode status = read == Status::Success
                                  ? TrendAgainst(value.GetRational(), reference, TRational::TrendEqual, trend)
                                  : read;
    return status == Status::Success ? value.SetReferenceTrend(trend) : status;
}

}  // namespace

// ---- Integers --------------------------------------------------------------------------------------

template <class T>
StatusCode FieldList::SetFieldV(unsigned char* data, std::uint16_t id, T value) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    const StatusCode status = CheckIntegerWrite<T>(*entry);
    if (status != Status::Success) return status;
    EncodeUnsigned(data + entry->GetOffset(), entry->GetMaxLength(), ExtendedBits(value));
    SetFieldDefined(number, data);
    return Status::Success;
}

template <class T>
StatusCode FieldList::SetFieldV(unsigned char* data, std::uint16_t id, T value, bool& changed) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    if (!IsFieldDefined(number, data)) {
        changed = true;
        return SetFieldV(data, id, value);
    }
    const StatusCode status = CheckIntegerWrite<T>(*entry);
    if (status != Status::Success) return status;
    // The new value at the field's width, compared with the stored bytes.
    unsigned char encoded[sizeof(std::uint64_t)];
    const std::uint32_t width = entry->GetMaxLength();
    EncodeUnsigned(encoded, width, ExtendedBits(value));
    unsigned char* slot = data + entry->GetOffset();
    changed = std::memcmp(slot, encoded, width) != 0;
    if (changed) std::memcpy(slot, encoded, width);
    return Status::Success;
}

// ---- Strings and value objects ---------------------------------------------------------------------

StatusCode FieldList::StoreObject(const FieldEntry& entry, std::uint32_t number, unsigned char* data,
                                  const IFieldType& value) const {
    std::uint32_t written = 0;
    StatusCode status = value.SerializeBody(data + entry.GetOffset(), entry.GetMaxLength(), written);
    if (status == Status::Success) status = StoreLength(entry, data, written);
    if (status == Status::Success) SetFieldDefined(number, data);
    return status;
}

template <class T>
StatusCode FieldList::SetFieldR(unsigned char* data, std::uint16_t id, const T& value) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    if (!AcceptsWrite(*entry, value)) return Status::WrongType;
    if constexpr (std::is_same_v<T, std::string>) {
        return SetFieldByNumber(number, data, value.data(), StringLength(value));
    } else {
        return StoreObject(*entry, number, data, value);
    }
}

template <class T>
StatusCode FieldList::SetFieldR(unsigned char* data, std::uint16_t id, const T& value, bool& changed) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    if (!IsFieldDefined(number, data)) {
        changed = true;
        return SetFieldR(data, id, value);
    }
    if (!AcceptsWrite(*entry, value)) return Status::WrongType;
    const unsigned char* slot = data + entry->GetOffset();
    const std::uint32_t length = ReadValueLength(*entry, data);
    if constexpr (std::is_same_v<T, std::string>) {
        changed = !SameBytes(slot, length, value);
        return changed ? SetFieldByNumber(number, data, value.data(), StringLength(value)) : Status::Success;
    } else {
        const StatusCode status = value.IsDifferent(slot, length, changed);
        if (status != Status::Success || !changed) return status;
        return StoreObject(*entry, number, data, value);
    }
}

// ---- Reads -----------------------------------------------------------------------------------------

template <class T>
StatusCode FieldList::GetFieldT(const unsigned char* data, std::uint16_t id, T& value) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    if (!IsFieldDefined(number, data)) return Status::Undefined;
    return ReadValue(*entry, data + entry->GetOffset(), ReadValueLength(*entry, data), value);
}

// ---- TRational with trends -------------------------------------------------------------------------

StatusCode FieldList::WorkOutTrends(const unsigned char* data, std::uint16_t id, std::uint16_t referenceId,
                                    TRational& value) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    const bool defined = IsFieldDefined(number, data);
    StatusCode status = SetValueTrend(*entry, defined ? data + entry->GetOffset() : nullptr,
                                      defined ? ReadValueLength(*entry, data) : 0, value);
    if (status == Status::Success && referenceId != FieldSpecification::NoFieldId) {
        status = SetReferenceTrend(*this, data, referenceId, value);
    }
    return status;
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, std::uint16_t referenceId,
                               TRational& value) const {
    const StatusCode status = WorkOutTrends(data, id, referenceId, value);
    return status == Status::Success ? SetFieldR<TRational>(data, id, value) : status;
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, std::uint16_t referenceId, TRational& value,
                               bool& changed) const {
    const StatusCode status = WorkOutTrends(data, id, referenceId, value);
    return status == Status::Success ? SetFieldR<TRational>(data, id, value, changed) : status;
}

// ---- The instantiations: these types and no others ---------------------------------------------------

template StatusCode FieldList::SetFieldV<char>(unsigned char*, std::uint16_t, char) const;
template StatusCode FieldList::SetFieldV<signed char>(unsigned char*, std::uint16_t, signed char) const;
template StatusCode FieldList::SetFieldV<unsigned char>(unsigned char*, std::uint16_t, unsigned char) const;
template StatusCode FieldList::SetFieldV<std::int16_t>(unsigned char*, std::uint16_t, std::int16_t) const;
template StatusCode FieldList::SetFieldV<std::uint16_t>(unsigned char*, std::uint16_t, std::uint16_t) const;
template StatusCode FieldList::SetFieldV<std::int32_t>(unsigned char*, std::uint16_t, std::int32_t) const;
template StatusCode FieldList::SetFieldV<std::uint32_t>(unsigned char*, std::uint16_t, std::uint32_t) const;
template StatusCode FieldList::SetFieldV<std::int64_t>(unsigned char*, std::uint16_t, std::int64_t) const;
template StatusCode FieldList::SetFieldV<std::uint64_t>(unsigned char*, std::uint16_t, std::uint64_t) const;

template StatusCode FieldList::SetFieldV<char>(unsigned char*, std::uint16_t, char, bool&) const;
template StatusCode FieldList::SetFieldV<signed char>(unsigned char*, std::uint16_t, signed char, bool&) const;
template StatusCode FieldList::SetFieldV<unsigned char>(unsigned char*, std::uint16_t, unsigned char, bool&) const;
template StatusCode FieldList::SetFieldV<std::int16_t>(unsigned char*, std::uint16_t, std::int16_t, bool&) const;
template StatusCode FieldList::SetFieldV<std::uint16_t>(unsigned char*, std::uint16_t, std::uint16_t, bool&) const;
template StatusCode FieldList::SetFieldV<std::int32_t>(unsigned char*, std::uint16_t, std::int32_t, bool&) const;
template StatusCode FieldList::SetFieldV<std::uint32_t>(unsigned char*, std::uint16_t, std::uint32_t, bool&) const;
template StatusCode FieldList::SetFieldV<std::int64_t>(unsigned char*, std::uint16_t, std::int64_t, bool&) const;
template StatusCode FieldList::SetFieldV<std::uint64_t>(unsigned char*, std::uint16_t, std::uint64_t, bool&) const;

template StatusCode FieldList::SetFieldR<std::string>(unsigned char*, std::uint16_t, const std::string&) const;
template StatusCode FieldList::SetFieldR<IFieldType>(unsigned char*, std::uint16_t, const IFieldType&) const;
template StatusCode FieldList::SetFieldR<BinaryArray>(unsigned char*, std::uint16_t, const BinaryArray&) const;
template StatusCode FieldList::SetFieldR<BinaryString>(unsigned char*, std::uint16_t, const BinaryString&) const;
template StatusCode FieldList::SetFieldR<Blob>(unsigned char*, std::uint16_t, const Blob&) const;
template StatusCode FieldList::SetFieldR<CrcBlob>(unsigned char*, std::uint16_t, const CrcBlob&) const;
template StatusCode FieldList::SetFieldR<Date>(unsigned char*, std::uint16_t, const Date&) const;
template StatusCode FieldList::SetFieldR<DateTime>(unsigned char*, std::uint16_t, const DateTime&) const;
template StatusCode FieldList::SetFieldR<Rational>(unsigned char*, std::uint16_t, const Rational&) const;
template StatusCode FieldList::SetFieldR<SInt>(unsigned char*, std::uint16_t, const SInt&) const;
template StatusCode FieldList::SetFieldR<TextArray>(unsigned char*, std::uint16_t, const TextArray&) const;
template StatusCode FieldList::SetFieldR<TextString>(unsigned char*, std::uint16_t, const TextString&) const;
template StatusCode FieldList::SetFieldR<Time>(unsigned char*, std::uint16_t, const Time&) const;
template StatusCode FieldList::SetFieldR<TRational>(unsigned char*, std::uint16_t, const TRational&) const;
template StatusCode FieldList::SetFieldR<UInt>(unsigned char*, std::uint16_t, const UInt&) const;

template StatusCode FieldList::SetFieldR<std::string>(unsigned char*, std::uint16_t, const std::string&, bool&) const;
template StatusCode FieldList::SetFieldR<IFieldType>(unsigned char*, std::uint16_t, const IFieldType&, bool&) const;
template StatusCode FieldList::SetFieldR<BinaryArray>(unsigned char*, std::uint16_t, const BinaryArray&, bool&) const;
template StatusCode FieldList::SetFieldR<BinaryString>(unsigned char*, std::uint16_t, const BinaryString&,
                                                       bool&) const;
template StatusCode FieldList::SetFieldR<Blob>(unsigned char*, std::uint16_t, const Blob&, bool&) const;
template StatusCode FieldList::SetFieldR<CrcBlob>(unsigned char*, std::uint16_t, const CrcBlob&, bool&) const;
template StatusCode FieldList::SetFieldR<Date>(unsigned char*, std::uint16_t, const Date&, bool&) const;
template StatusCode FieldList::SetFieldR<DateTime>(unsigned char*, std::uint16_t, const DateTime&, bool&) const;
template StatusCode FieldList::SetFieldR<Rational>(unsigned char*, std::uint16_t, const Rational&, bool&) const;
template StatusCode FieldList::SetFieldR<SInt>(unsigned char*, std::uint16_t, const SInt&, bool&) const;
template StatusCode FieldList::SetFieldR<TextArray>(unsigned char*, std::uint16_t, const TextArray&, bool&) const;
template StatusCode FieldList::SetFieldR<TextString>(unsigned char*, std::uint16_t, const TextString&, bool&) const;
template StatusCode FieldList::SetFieldR<Time>(unsigned char*, std::uint16_t, const Time&, bool&) const;
template StatusCode FieldList::SetFieldR<TRational>(unsigned char*, std::uint16_t, const TRational&, bool&) const;
template StatusCode FieldList::SetFieldR<UInt>(unsigned char*, std::uint16_t, const UInt&, bool&) const;

template StatusCode FieldList::GetFieldT<char>(const unsigned char*, std::uint16_t, char&) const;
template StatusCode FieldList::GetFieldT<signed char>(const unsigned char*, std::uint16_t, signed char&) const;
template StatusCode FieldList::GetFieldT<unsigned char>(const unsigned char*, std::uint16_t, unsigned char&) const;
template StatusCode FieldList::GetFieldT<std::int16_t>(const unsigned char*, std::uint16_t, std::int16_t&) const;
template StatusCode FieldList::GetFieldT<std::uint16_t>(const unsigned char*, std::uint16_t, std::uint16_t&) const;
template StatusCode FieldList::GetFieldT<std::int32_t>(const unsigned char*, std::uint16_t, std::int32_t&) const;
template StatusCode FieldList::GetFieldT<std::uint32_t>(const unsigned char*, std::uint16_t, std::uint32_t&) const;
template StatusCode FieldList::GetFieldT<std::int64_t>(const unsigned char*, std::uint16_t, std::int64_t&) const;
template StatusCode FieldList::GetFieldT<std::uint64_t>(const unsigned char*, std::uint16_t, std::uint64_t&) const;
template StatusCode FieldList::GetFieldT<std::string>(const unsigned char*, std::uint16_t, std::string&) const;
template StatusCode FieldList::GetFieldT<IFieldType>(const unsigned char*, std::uint16_t, IFieldType&) const;
template StatusCode FieldList::GetFieldT<BinaryArray>(const unsigned char*, std::uint16_t, BinaryArray&) const;
template StatusCode FieldList::GetFieldT<BinaryString>(const unsigned char*, std::uint16_t, BinaryString&) const;
template StatusCode FieldList::GetFieldT<Blob>(const unsigned char*, std::uint16_t, Blob&) const;
template StatusCode FieldList::GetFieldT<CrcBlob>(const unsigned char*, std::uint16_t, CrcBlob&) const;
template StatusCode FieldList::GetFieldT<Date>(const unsigned char*, std::uint16_t, Date&) const;
template StatusCode FieldList::GetFieldT<DateTime>(const unsigned char*, std::uint16_t, DateTime&) const;
template StatusCode FieldList::GetFieldT<Rational>(const unsigned char*, std::uint16_t, Rational&) const;
template StatusCode FieldList::GetFieldT<SInt>(const unsigned char*, std::uint16_t, SInt&) const;
template StatusCode FieldList::GetFieldT<TextArray>(const unsigned char*, std::uint16_t, TextArray&) const;
template StatusCode FieldList::GetFieldT<TextString>(const unsigned char*, std::uint16_t, TextString&) const;
template StatusCode FieldList::GetFieldT<Time>(const unsigned char*, std::uint16_t, Time&) const;
template StatusCode FieldList::GetFieldT<TRational>(const unsigned char*, std::uint16_t, TRational&) const;
template StatusCode FieldList::GetFieldT<UInt>(const unsigned char*, std::uint16_t, UInt&) const;
template StatusCode FieldList::GetFieldT<std::unique_ptr<IFieldType>>(const unsigned char*, std::uint16_t,
                                                                      std::unique_ptr<IFieldType>&) const;

}  // namespace Tavrin::Database
