#pragma once
// The table of field types: one row per FieldSpecification::Type, indexed by the type number.
// A row gives the type's name, its two flags, the base library's number for the type and the three
// functions that do type-specific work. The table is constant and may be read from any thread.

#include <array>
#include <cassert>
#include <cstdint>
#include <string>

#include "tavrin/records/FieldSpecification.h"

namespace Tavrin::Database {

/// Throws DatabaseException code 12 if `specification` breaks the rules of its type.
using FieldValidateFunction = void (*)(const FieldSpecification& specification);
/// Orders two values given as (bytes, length): below 0, 0 or above 0 as `a` orders before, with or
/// after `b`. Only the sign has meaning. Allocates nothing.
using FieldCompareFunction = int (*)(const unsigned char* a, std::uint32_t lengthA,
                                     const unsigned char* b, std::uint32_t lengthB);
/// The text form of a value of `length` bytes; an empty text if it cannot be shown.
using FieldTextFunction = std::string (*)(const unsigned char* value, std::uint32_t length);

/// One row of FieldTypeTable: what the field lists need to know of one field type.
struct FieldTypeInfo {
    /// The type's name, as FieldSpecification::GetTypeName gives it.
    const char* name;
    /// The value's current length is kept in a length prefix beside it.
    bool isVariableLength;
    /// The value may be read, written and compared as a std::string.
    bool isStringCompatible;
    /// The number by which the base library's value classes identify the type;
    /// FieldSpecification::NoBaseType where there is no value class.
    unsigned char baseType;
    /// Checks a specification of the type (FieldSpecification::Validate).
    FieldValidateFunction validate;
    /// Orders two values of the type (Compare, CompareKey, CompareField).
    FieldCompareFunction compare;
    /// The text form of a value of the type (FieldList::ToString).
    FieldTextFunction text;
};

/// The rows, indexed by FieldSpecification::Type.
extern const std::array<FieldTypeInfo, FieldSpecification::TypeCount> FieldTypeTable;

/// The row of a valid type (callers check the type first: a type of 17 or more is a programmer error
/// here, field lists never hold one).
inline const FieldTypeInfo& GetFieldTypeInfo(FieldSpecification::Type type) noexcept {
    assert(type < FieldSpecification::TypeCount);
    return FieldTypeTable[type];
}

/// Whether a value object of base type number `baseType` belongs in a field of `type`.
inline bool IsFieldTypeOf(FieldSpecification::Type type, std::uint8_t baseType) noexcept {
    return type < FieldSpecification::TypeCount && baseType != FieldSpecification::NoBaseType &&
           FieldTypeTable[type].baseType == baseType;
}

/// Unsigned bytes over the shorter length, then the shorter value first.
int CompareBytes(const unsigned char* a, std::uint32_t lengthA, const unsigned char* b,
                 std::uint32_t lengthB) noexcept;
///@{
/// Little-endian integers of 1, 2, 4 or 8 bytes, each side at its own width (any other width reads
/// as 0), sign- or zero-extended to 64 bits. Results are -1, 0 or 1.
int CompareSignedIntegers(const unsigned char* a, std::uint32_t lengthA, const unsigned char* b,
                          std::uint32_t lengthB) noexcept;
int CompareUnsignedIntegers(const unsigned char* a, std::uint32_t lengthA, const unsigned char* b,
                            std::uint32_t lengthB) noexcept;
///@}

}  // namespace Tavrin::Database
