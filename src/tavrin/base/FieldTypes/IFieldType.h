#pragma once
// IFieldType: the common interface of the field value classes.
//
// A value object holds one typed value, or none ("undefined"), and turns it into the bytes of a
// record image (its body) and back. Three forms exist:
//   - the body: what a record field holds; its length comes from the field (a length prefix, or
//     the field's size, or for Time and DateTime bit 7 of a marker byte);
//   - the length-and-body form: the body with whatever a reader needs to find its end in a message
//     (nothing for the classes whose body tells its own length, a length prefix for the others);
//   - the message form of Serialize: one byte 0 or 1 for "defined", then the length-and-body form
//     of a defined value.
// Every class also has a text form (ToString / FromString) that round-trips exactly.
//
// Statuses used by all classes: 14 for an operation that needs a defined value on an undefined one,
// 22 for a body that does not fit the buffer or field it is given, 23 for bytes or text that do not
// decode, 28 for a Convert between types that have no conversion, 41 when memory runs out.
//
// The `options` argument of the message operations is reserved: no option is defined, pass 0.
//
// Value objects have no locks; one belongs to one thread at a time.

#include <cstdint>
#include <string>

#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/base/Status.h"

namespace Tavrin {

// The base type numbers by which value objects name their class.
namespace FieldTypeNumber {
inline constexpr std::uint8_t Date = 0;
inline constexpr std::uint8_t Time = 1;
inline constexpr std::uint8_t DateTime = 2;
inline constexpr std::uint8_t SInt = 3;
inline constexpr std::uint8_t UInt = 4;
inline constexpr std::uint8_t Rational = 5;
inline constexpr std::uint8_t TRational = 6;
inline constexpr std::uint8_t TextString = 7;
inline constexpr std::uint8_t TextArray = 8;
inline constexpr std::uint8_t BinaryString = 9;
inline constexpr std::uint8_t BinaryArray = 10;
inline constexpr std::uint8_t Blob = 11;
inline constexpr std::uint8_t CrcBlob = 12;
/// 13 is a number of the base library without a class here; numbers from 14 on are unknown.
inline constexpr std::uint8_t Count = 14;
}  // namespace FieldTypeNumber

/// Orders two bodies of one class: result below, equal to or above 0. Status 23 when a body does not
/// decode; the result is set all the same (see each class for where undecodable bodies stand).
using BodyCompareFunction = StatusCode (*)(const void* a, std::uint32_t lengthA, const void* b,
                                           std::uint32_t lengthB, int& result);

/// The common interface of the field value classes: one typed value or none, with its body,
/// message and text forms (see the file comment above).
class IFieldType {
public:
    bool defined;         ///< false until the object holds a value
    std::uint8_t number;  ///< the class's base type number (FieldTypeNumber), fixed at construction

    /// Gives back the buffers the value owns.
    virtual ~IFieldType() = default;

    /// Makes the value undefined; keeps allocated buffers.
    virtual void Reset() = 0;
    /// Makes the value undefined and gives allocated buffers back.
    virtual void Clear() = 0;
    /// Compares this value with a body of the same class: result below 0 when this value orders
    /// first. Status 14 if this value is undefined, 23 if the body does not decode (result then 1).
    virtual StatusCode Compare(const void* data, std::uint32_t length, int& result) const = 0;
    /// Takes the value of `other` where a conversion exists, else 28. Every class converts from its
    /// own class and from the text classes: by FromString of their text, except the byte classes,
    /// which take the text's bytes. Each class lists its other conversions.
    /// An undefined `other` makes this value undefined; a null one is 23.
    virtual StatusCode Convert(const IFieldType* other);
    /// The text form; empty for an undefined value.
    virtual std::string ToString() const = 0;
    /// Reads the text form from all characters left in `text`. 23 if they are not a valid text form;
    /// the value is then unchanged.
    virtual StatusCode FromString(MessageValidator& text) = 0;
    /// Describes the text that FromString takes.
    virtual std::string GetFromStringFormat() const = 0;
    /// Appends the message form: a byte 1 and the length-and-body form, or a byte 0 if undefined.
    virtual StatusCode Serialize(MessageBuilder& builder, std::uint32_t options) const;
    /// Writes the body into `buffer` of `size` bytes and sets `written`. 14 if undefined, 22 if the
    /// body does not fit.
    virtual StatusCode SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const = 0;
    /// Appends the length-and-body form. 14 if undefined.
    virtual StatusCode SerializeLengthAndBody(MessageBuilder& builder, std::uint32_t options) const;
    /// Reads the message form written by Serialize: a byte 0 makes the value undefined (Reset); a
    /// byte 1 is followed by the length-and-body form. 23 for another byte or a short message.
    virtual StatusCode Deserialize(MessageValidator& validator, std::uint32_t options);
    /// Takes the value from a body and marks it defined; 23 (or 22) if the body does not decode.
    virtual StatusCode DeserializeBody(const void* data, std::uint32_t length) = 0;
    /// Reads the length-and-body form; by default a 4-byte length and the body (DeserializeBody).
    /// 23 when the message is short.
    virtual StatusCode DeserializeLengthAndBody(MessageValidator& validator, std::uint32_t options);
    /// Bytes of the length-and-body form. By default a 4-byte length and the body; 0 for an undefined
    /// value.
    virtual std::uint32_t GetLengthAndBodySize() const;
    /// Bytes of the body; 0 for an undefined value.
    virtual std::uint32_t GetBodySize() const = 0;
    /// Whether a body differs from this value's body byte for byte. 14 if this value is undefined.
    virtual StatusCode IsDifferent(const void* data, std::uint32_t length, bool& different) const;

protected:
    /// An undefined value of the class with base type number `typeNumber`.
    explicit IFieldType(std::uint8_t typeNumber) noexcept : defined(false), number(typeNumber) {}
    /// Copies `defined` and `number`; for the copies of the derived classes.
    IFieldType(const IFieldType&) = default;
    /// Copies `defined` and `number`; for the assignments of the derived classes.
    IFieldType& operator=(const IFieldType&) = default;

    /// The conversions of one class from a defined value of another: 28 where there is none.
    virtual StatusCode ConvertFrom(const IFieldType& other) = 0;

    /// Bodies up to this size are built on the stack by the helpers below.
    static constexpr std::uint32_t SmallBodyCapacity = 16;

    /// Compare for classes whose body fits SmallBodyCapacity: builds this value's body on the stack
    /// and orders it against `data` with the class's body compare function.
    StatusCode CompareSmallBody(const void* data, std::uint32_t length, int& result,
                                BodyCompareFunction compare) const;
    /// Appends the body alone: the length-and-body form of classes whose body tells its own length.
    StatusCode AppendBody(MessageBuilder& builder) const;
    /// Takes the next `bodyLength` bytes of the message as a body (DeserializeBody); 23 if the message
    /// is shorter.
    StatusCode ReadBody(MessageValidator& validator, std::uint32_t bodyLength);
};

}  // namespace Tavrin
