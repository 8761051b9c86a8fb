#include "records/FieldTypeTable.h"

#include <algorithm>

#include "base/Encoding.h"
#include "records/FieldValidators.h"

namespace Tavrin::Database {

namespace {
constexpr unsigned char kNoBase = FieldSpecification::NoBaseType;

template <class T>
int ThreeWay(T a, T b) noexcept {
    return a < b ? -1 : (b < a ? 1 : 0);
}
}  // namespace

// Rows in type number order; the position of a row is its type number.
const std::array<FieldTypeInfo, FieldSpecification::TypeCount> FieldTypeTable = {{
    {"None", false, false, kNoBase, ValidateNoneSpecification, CompareBytes, nullptr},
    {"BinaryArray", false, true, 10, ValidateSpecification, CompareBytes, nullptr},
    {"BinaryString", true, true, 9, ValidateSpecification, CompareBytes, nullptr},
    {"Bitmap", false, false, kNoBase, ValidateSpecification, CompareBytes, nullptr},
    {"Blob", true, false, 11, ValidateBlobSpecification, nullptr, nullptr},
    {"Date", false, false, 0, ValidateDateSpecification, nullptr, nullptr},
    {"DateTime", false, false, 2, ValidateDateTimeSpecification, nullptr, nullptr},
    {"Pointer", false, false, kNoBase, ValidateSpecification, CompareBytes, nullptr},
    {"Rational", true, false, 5, ValidateRationalSpecification, nullptr, nullptr},
    {"SInt", false, false, 3, ValidateSignedIntegralSpecification, CompareSignedIntegers, nullptr},
    {"TextArray", false, true, 8, ValidateSpecification, CompareBytes, nullptr},
    {"TextString", true, true, 7, ValidateSpecification, CompareBytes, nullptr},
    {"Time", false, false, 1, ValidateTimeSpecification, nullptr, nullptr},
    {"TRational", true, false, 6, ValidateTRationalSpecification, nullptr, nullptr},
    {"UInt", false, false, 4, ValidateUnsignedIntegralSpecification, CompareUnsignedIntegers, nullptr},
    {"Boolean", false, false, kNoBase, ValidateBooleanSpecification, CompareUnsignedIntegers, nullptr},
    {"CrcBlob", true, false, 12, ValidateCrcBlobSpecification, nullptr, nullptr},
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
