#include "tavrin/records/FieldTypeTable.h"

#include <algorithm>

#include "tavrin/base/Encoding.h"
#include "tavrin/base/FieldTypes/BinaryString.h"
#include "tavrin/base/FieldTypes/Blob.h"
#include "tavrin/base/FieldTypes/CrcBlob.h"
#include "tavrin/base/FieldTypes/Date.h"
#include "tavrin/base/FieldTypes/DateTime.h"
#include "tavrin/base/FieldTypes/Rational.h"
#include "tavrin/base/FieldTypes/TRational.h"
#include "tavrin/base/FieldTypes/Time.h"
#include "tavrin/records/FieldTypeText.h"
#include "tavrin/records/FieldValidators.h"

namespace Tavrin::Database {

namespace {
constexpr unsigned char kNoBase = FieldSpecification::NoBaseType;

template <class T>
int ThreeWay(T a, T b) noexcept {
    return a < b ? -1 : (b < a ? 1 : 0);
}

// The compare column of a type whose order a value class gives. The class's status is dropped: it
// orders bodies that do not decode itself (before every valid one, consistently). The result is
// brought to -1, 0 or 1 so that a key's direction can turn it around.
template <StatusCode (*CompareBodies)(const void*, std::uint32_t, const void*, std::uint32_t, int&)>
int CompareByClass(const unsigned char* a, std::uint32_t lengthA, const unsigned char* b,
                   std::uint32_t lengthB) noexcept {
    int order = 0;
    CompareBodies(a, lengthA, b, lengthB, order);
    return ThreeWay(order, 0);
}
}  // namespace

// Rows in type number order; the position of a row is its type number.
const std::array<FieldTypeInfo, FieldSpecification::TypeCount> FieldTypeTable = {{
    {"None", false, false, kNoBase, ValidateNoneSpecification, CompareBytes, TextOfBody<BinaryString>},
    {"BinaryArray", false, true, 10, ValidateSpecification, CompareBytes, TextOfBody<BinaryString>},
    {"BinaryString", true, true, 9, ValidateSpecification, CompareBytes, TextOfBody<BinaryString>},
    {"Bitmap", false, false, kNoBase, ValidateSpecification, CompareBytes, TextOfBody<BinaryString>},
    {"Blob", true, false, 11, ValidateBlobSpecification, CompareByClass<Blob::Compare>, TextOfBody<Blob>},
    {"Date", false, false, 0, ValidateDateSpecification, CompareByClass<Date::Compare>, TextOfBody<Date>},
    {"DateTime", false, false, 2, ValidateDateTimeSpecification, CompareByClass<DateTime::Compare>,
     TextOfBody<DateTime>},
    {"Pointer", false, false, kNoBase, ValidateSpecification, CompareBytes, TextOfBody<BinaryString>},
    {"Rational", true, false, 5, ValidateRationalSpecification, CompareByClass<Rational::Compare>,
     TextOfBody<Rational>},
    {"SInt", false, false, 3, ValidateSignedIntegralSpecification, CompareSignedIntegers, TextOfSignedInteger},
    {"TextArray", false, true, 8, ValidateSpecification, CompareBytes, TextOfCharacters},
    {"TextString", true, true, 7, ValidateSpecification, CompareBytes, TextOfCharacters},
    {"Time", false, false, 1, ValidateTimeSpecification, CompareByClass<Time::Compare>, TextOfBody<Time>},
    {"TRational", true, false, 6, ValidateTRationalSpecification, CompareByClass<TRational::Compare>,
     TextOfBody<TRational>},
    {"UInt", false, false, 4, ValidateUnsignedIntegralSpecification, CompareUnsignedIntegers, TextOfUnsignedInteger},
    {"Boolean", false, false, kNoBase, ValidateBooleanSpecification, CompareUnsignedIntegers, TextOfBoolean},
    {"CrcBlob", true, false, 12, ValidateCrcBlobSpecification, CompareByClass<CrcBlob::Compare>, TextOfBody<CrcBlob>},
}};

int CompareBytes(const unsigned char* a, std::uint32_t lengthA, const unsigned char* b,
                 std::uint32_t lengthB) noexcept {
    const std::uint32_t common = std::min(lengthA, lengthB);
    for (std::uint32_t i = 0; i < common; ++i) {
        if (a[i] != b[i]) return static_cast<int>(a[i]) - static_cast<int>(b[i]);
    }
    return ThreeWay(lengthA, lengthB);
}

int CompareSignedIntegers(const unsigned char* a, std::uint32_t lengthA, const unsigned char* b,
                          std::uint32_t lengthB) noexcept {
    return ThreeWay(DecodeSigned(a, lengthA), DecodeSigned(b, lengthB));
}

int CompareUnsignedIntegers(const unsigned char* a, std::uint32_t lengthA, const unsigned char* b,
                            std::uint32_t lengthB) noexcept {
    return ThreeWay(DecodeUnsigned(a, lengthA), DecodeUnsigned(b, lengthB));
}

}  // namespace Tavrin::Database
