#pragma once
// IndexSpecification: the description of one index of a table (number, name, type, properties and
// the ordered key fields). A caller fills one in to ask a table for an index, an index hands one
// back, and index files and database descriptions store it in its wire form. A plain value class:
// copies are independent and it takes no locks.

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/base/Status.h"

namespace Tavrin::Database {

/// The description of one index of a table: number, name, type, properties and the ordered key
/// fields. A plain value class that takes no locks.
class IndexSpecification {
public:
    /// Stored as a 32-bit number; any value may arrive in a message, so the enum holds all of them.
    enum Type : std::uint32_t {
        None = 0,
        Hash = 1,
        RedBlack = 2,
    };

    /// Property bit of no property: the default, which Validate refuses.
    static constexpr std::uint32_t NoProperty = 1;
    /// Property bit: no two records may have equal keys in the index.
    static constexpr std::uint32_t UniqueProperty = 2;
    /// The stored key gets the record id behind its fields, so equal keys may repeat.
    static constexpr std::uint32_t DuplicateProperty = 4;
    /// Unique, and the primary index of the table.
    static constexpr std::uint32_t PrimaryUniqueProperty = 8;

    /// The number of a specification that no table has numbered yet.
    static constexpr std::uint16_t NoNumber = 0xFFFF;

    /// One compared field of the key: a field id and flags. Bit 31 of the flags orders the field
    /// descending; the other bits are carried along unread.
    class Field {
    public:
        /// Flag bit 31: the field orders descending.
        static constexpr std::uint32_t DescendingFlag = 0x80000000u;

        /// Id 0xFFFF (no field), flags 0.
        Field() = default;
        /// Field `id` with `flags`, unchecked.
        Field(std::uint16_t id, std::uint32_t flags) noexcept : id_(id), flags_(flags) {}

        /// Equal when id and flags are.
        bool operator==(const Field& other) const noexcept = default;

        /// Wire form, 8 bytes: id as a 32-bit number, then the flags. Any status of the builder.
        StatusCode Serialize(MessageBuilder& builder) const;
        /// Reads the wire form: status 23 when the message is short, 36 for an id above 0xFFFF. An id
        /// read before a failure keeps its new value.
        StatusCode Deserialize(MessageValidator& validator);

        /// Whether `flags` order a field ascending (bit 31 clear).
        static bool IsAscending(std::uint32_t flags) noexcept { return (flags & DescendingFlag) == 0; }
        /// Whether `flags` order a field descending (bit 31 set).
        static bool IsDescending(std::uint32_t flags) noexcept { return !IsAscending(flags); }

        /// The field's id.
        std::uint16_t GetId() const noexcept { return id_; }
        /// The flags as given; only DescendingFlag is read.
        std::uint32_t GetFlags() const noexcept { return flags_; }

    private:
        std::uint16_t id_ = 0xFFFF;
        std::uint32_t flags_ = 0;
    };

    /// Number 0xFFFF, empty name, type None, properties NoProperty, no fields. Not validated: this
    /// is also the pattern that IsMatch accepts for every specification.
    IndexSpecification() = default;
    /// Number 0xFFFF and no additional fields; then Validate(), which may throw.
    IndexSpecification(const std::string& name, Type type, std::uint32_t properties,
                       const std::vector<Field>& fields);

    ///@{
    /// Compares name, type, properties and the fields; the number and the additional field ids take
    /// no part.
    bool operator==(const IndexSpecification& other) const noexcept;
    bool operator!=(const IndexSpecification& other) const noexcept { return !(*this == other); }
    ///@}

    /// Throws DatabaseException code 12 for an empty name, type None, or properties with the
    /// NoProperty bit. Looks at nothing else: the table that makes the index checks the rest.
    void Validate() const;

    /// Wire form, little-endian, no version and no total length (c fields, name of n bytes):
    ///   offset 0     4 bytes   number (readers refuse values above 0xFFFF with status 36)
    ///   offset 4     2 bytes   n
    ///   offset 6     n bytes   name, no terminator
    ///   offset 6+n   4 bytes   type
    ///   offset 10+n  4 bytes   properties
    ///   offset 14+n  4 bytes   c
    ///   offset 18+n  8c bytes  the fields, each in the form of Field
    /// The additional field ids are not part of it.
    /// Serialize stops at the first failing append: status 23 for a name longer than 65535 bytes
    /// (the number is then already written), or the builder's status.
    StatusCode Serialize(MessageBuilder& builder) const;
    /// Status 23 if the message is short, 36 for a number or field id above 0xFFFF. Members read
    /// before a failure keep their new values, as do the fields read so far; the additional field
    /// ids are left as they were. Does not validate.
    StatusCode Deserialize(MessageValidator& validator);

    /// Whether the PrimaryUniqueProperty bit is set.
    bool IsPrimaryUnique() const noexcept { return (properties_ & PrimaryUniqueProperty) != 0; }
    /// Whether the UniqueProperty bit is set; PrimaryUniqueProperty alone does not count.
    bool IsUnique() const noexcept { return (properties_ & UniqueProperty) != 0; }
    /// Whether the DuplicateProperty bit is set.
    bool IsDuplicate() const noexcept { return (properties_ & DuplicateProperty) != 0; }
    /// Whether the type is Hash.
    bool IsHash() const noexcept { return type_ == Hash; }
    /// Whether the type is RedBlack, a tree index.
    bool IsTree() const noexcept { return type_ == RedBlack; }

    /// True if this specification equals `pattern` in every member that the pattern sets: a number
    /// other than 0xFFFF, a name that is not empty, a type other than None, properties other than
    /// NoProperty, a non-empty list of fields, a non-empty list of additional field ids. A default
    /// pattern matches everything.
    bool IsMatch(const IndexSpecification& pattern) const;

    /// Labelled lines: number, name, type, properties and one line per field.
    std::string ToString() const;

    /// The index's number in its table; NoNumber until a table gives one.
    std::uint16_t GetNumber() const noexcept { return number_; }
    /// The index's name.
    const std::string& GetName() const noexcept { return name_; }
    /// The index's type.
    Type GetType() const noexcept { return type_; }
    /// The property bits.
    std::uint32_t GetProperties() const noexcept { return properties_; }
    /// The compared fields of the key, in key order.
    const std::vector<Field>& GetFields() const noexcept { return fields_; }
    /// Fields stored in the key behind the compared ones; they take no part in comparison.
    const std::vector<std::uint16_t>& GetAdditionalFieldIds() const noexcept { return additionalFieldIds_; }

    /// A table writes the number it gives the index into the caller's specification.
    void SetNumber(std::uint16_t number) noexcept { number_ = number; }

private:
    /// An index describes itself with its number and additional fields.
    friend class Index;
    /// Tests reach the private constructor the same way.
    friend class IndexSpecificationTestPeer;

    /// Takes every member from its arguments, then Validate(), which may throw.
    IndexSpecification(std::uint16_t number, const std::string& name, Type type, std::uint32_t properties,
                       const std::vector<Field>& fields, const std::vector<std::uint16_t>& additionalFieldIds);

    std::uint16_t number_ = NoNumber;
    std::string name_;
    Type type_ = None;
    std::uint32_t properties_ = NoProperty;
    std::vector<Field> fields_;
    std::vector<std::uint16_t> additionalFieldIds_;
};

/// Writes ToString().
std::ostream& operator<<(std::ostream& stream, const IndexSpecification& specification);

}  // namespace Tavrin::Database
