#pragma once
// FieldEntry: what a field list holds for each field. The field's specification, validated, plus
// where its length prefix lies in an image and which way it orders in a key. Field lists hand an
// entry out as a `const FieldSpecification*`; after the list's constructor an entry never changes.

#include <cstdint>

#include "tavrin/records/FieldSpecification.h"
#include "tavrin/records/FieldTypeTable.h"

namespace Tavrin::Database {

/// A field list's own record of one field: the validated specification, the place and width of its
/// length prefix and its key direction.
class FieldEntry : public FieldSpecification {
public:
    /// Copies `specification`, validates the copy (throws DatabaseException code 12), then sizes the
    /// length prefix (LengthSizeOf).
    explicit FieldEntry(const FieldSpecification& specification)
        : FieldSpecification(specification), direction_(IsDescending() ? -1 : 1) {
        Validate();
        lengthSize_ = LengthSizeOf(*this);
    }

    /// The width of the length prefix that a field of `specification` gets: 0 for a fixed-length
    /// type (and for a type that validation refuses), 1 byte below 255, 2 below 65535, else 4.
    /// Note the boundaries: a maxLength of 255 already takes 2 bytes.
    static std::uint32_t LengthSizeOf(const FieldSpecification& specification) noexcept {
        const FieldSpecification::Type type = specification.GetType();
        if (type >= FieldSpecification::TypeCount || !GetFieldTypeInfo(type).isVariableLength) return 0;
        if (specification.GetMaxLength() < 0xFF) return 1;
        if (specification.GetMaxLength() < 0xFFFF) return 2;
        return 4;
    }

    /// Image offset of the length prefix; 0 where there is none.
    std::uint32_t GetLengthOffset() const noexcept { return lengthOffset_; }
    /// Width of the length prefix in bytes: 0, 1, 2 or 4.
    std::uint32_t GetLengthSize() const noexcept { return lengthSize_; }
    /// +1, or -1 for a field that orders descending in a key.
    int GetDirection() const noexcept { return direction_; }
    /// The field type's row of FieldTypeTable.
    const FieldTypeInfo& GetTypeInfo() const noexcept { return GetFieldTypeInfo(GetType()); }

    ///@{
    /// For the list's layout pass.
    void SetLengthOffset(std::uint32_t lengthOffset) noexcept { lengthOffset_ = lengthOffset; }
    using FieldSpecification::SetMaxLength;
    using FieldSpecification::SetOffset;
    ///@}

private:
    std::uint32_t lengthOffset_ = 0;
    std::uint32_t lengthSize_ = 0;
    int direction_;
};

}  // namespace Tavrin::Database
