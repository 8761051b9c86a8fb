#pragma once
// FieldSpecification: the description of one field of a record layout (id, name, type, maximum
// length, offset and property bits). A plain value class; copies are independent and it takes no
// locks. The full constructor validates, so an object made by it is always a legal field.

#include <cstdint>
#include <ostream>
#include <string>

#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/base/Status.h"

namespace Tavrin::Database {

/// The description of one field of a record layout: id, name, type, maximum length, offset and
/// property bits. A plain value class that takes no locks; the full constructor validates.
class FieldSpecification {
public:
    /// Stored in files and messages as a 32-bit number; values of 17 and above are invalid but may
    /// arrive in a message, so the enum can hold any 32-bit value.
    enum Type : std::uint32_t {
        None = 0,
        BinaryArray = 1,
        BinaryString = 2,
        Bitmap = 3,
        Blob = 4,
        Date = 5,
        DateTime = 6,
        Pointer = 7,
        Rational = 8,
        SInt = 9,
        TextArray = 10,
        TextString = 11,
        Time = 12,
        TRational = 13,
        UInt = 14,
        Boolean = 15,
        CrcBlob = 16,
    };

    /// The number of types, None included; a Type of this value or above is invalid.
    static constexpr std::uint32_t TypeCount = 17;
    /// The id that no field has: the default specification's id, and "no field" where an id is asked for.
    static constexpr std::uint16_t NoFieldId = 0xFFFF;
    /// Property bit 31: the field orders descending in a key. Other bits are only carried along.
    static constexpr std::uint32_t DescendingProperty = 0x80000000u;
    /// The base library's number for types that have no value class.
    static constexpr unsigned char NoBaseType = 0xFF;

    /// Id 65535, empty name, type None, zero length, offset and properties.
    FieldSpecification() = default;
    /// Assigns all six members, then Validate(): throws DatabaseException code 12 if they do not
    /// describe a legal field.
    FieldSpecification(std::uint16_t id, const std::string& name, Type type, std::uint32_t maxLength,
                       std::uint32_t offset, std::uint32_t properties);

    ///@{
    /// Equality compares id, name, type and maxLength; offset and properties take no part.
    bool operator==(const FieldSpecification& other) const noexcept;
    bool operator!=(const FieldSpecification& other) const noexcept { return !(*this == other); }
    ///@}
    /// Orders by id.
    bool operator<(const FieldSpecification& other) const noexcept { return id_ < other.id_; }

    /// Throws DatabaseException code 12 naming the field if the type is unknown or the type's rules
    /// (id range, length) are broken.
    void Validate() const;

    /// Wire form, little-endian, no padding:
    ///   offset 0    4 bytes  id (a 16-bit value; readers refuse 65536 and above with status 36)
    ///   offset 4    2 bytes  name length n
    ///   offset 6    n bytes  name, no terminator
    ///   offset 6+n  4 bytes  type
    ///   offset 10+n 4 bytes  maxLength
    ///   offset 14+n 4 bytes  offset
    ///   offset 18+n 4 bytes  properties
    /// Serialize: status 23 for a name longer than 65535 bytes, or any status of the builder.
    StatusCode Serialize(MessageBuilder& builder) const;
    /// Status 23 if the message ends early, 36 for an id above 65535. Members read before a failure
    /// keep their new values. Does not validate.
    StatusCode Deserialize(MessageValidator& validator);

    /// Base library type number -> Type. Status 28 for 14 and above, or for 13 (no database type,
    /// `type` then becomes 17).
    static StatusCode GetDatabaseFieldType(unsigned char baseType, Type& type) noexcept;
    /// Type -> base library type number. Status 28 for types of 17 and above, or for a type without a
    /// value class (`baseType` then becomes 255).
    static StatusCode GetTavrinFieldType(Type type, unsigned char& baseType) noexcept;

    /// True if this object equals `pattern` in every member in which the pattern differs from the
    /// default specification. A pattern with no such member matches only the default specification.
    bool IsMatch(const FieldSpecification& pattern) const;

    /// Seven labelled lines, one per member plus the descending flag.
    std::string ToString() const;
    ///@{
    /// One line of a six-column table, and the matching header line.
    static std::string ToFormattedHeaderString();
    std::string ToFormattedString() const;
    ///@}

    /// The type's name, or "Unknown" for a type of 17 and above.
    static const char* GetTypeName(Type type) noexcept;

    /// The field's id, unique within a layout.
    std::uint16_t GetId() const noexcept { return id_; }
    /// The field's name.
    const std::string& GetName() const noexcept { return name_; }
    /// The field's type.
    Type GetType() const noexcept { return type_; }
    /// The most bytes the value takes; the whole length of a fixed-length type.
    std::uint32_t GetMaxLength() const noexcept { return maxLength_; }
    /// Where the value lies in an image; a managed list ignores what the caller gave and sets its own.
    std::uint32_t GetOffset() const noexcept { return offset_; }
    /// The property bits; only DescendingProperty steers anything, the others are carried along.
    std::uint32_t GetProperties() const noexcept { return properties_; }
    /// Whether the field orders descending in a key (DescendingProperty).
    bool IsDescending() const noexcept { return (properties_ & DescendingProperty) != 0; }

protected:
    ///@{
    /// For the field lists, which place fields themselves.
    void SetMaxLength(std::uint32_t maxLength) noexcept { maxLength_ = maxLength; }
    void SetOffset(std::uint32_t offset) noexcept { offset_ = offset; }
    ///@}

private:
    std::uint16_t id_ = NoFieldId;
    std::string name_;
    Type type_ = None;
    std::uint32_t maxLength_ = 0;
    std::uint32_t offset_ = 0;
    std::uint32_t properties_ = 0;
};

/// Writes ToString().
std::ostream& operator<<(std::ostream& stream, const FieldSpecification& specification);

}  // namespace Tavrin::Database
