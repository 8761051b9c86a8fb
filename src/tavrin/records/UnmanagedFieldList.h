#pragma once
// UnmanagedFieldList: a fixed record layout that the caller decides. Each field's value is the
// maxLength bytes at the offset of its specification; there is no bitmap and no length prefix, so
// every field is always defined and variable-length types are refused. Fields are not checked
// against each other: gaps, overlaps and any order of offsets are accepted, and nothing is aligned.
// DateTime and Time values still tell their own length by their marker bit (6 or 7, 3 or 4 bytes).
//
// Immutable after construction, shared freely between threads like every FieldList.

#include <cstdint>
#include <vector>

#include "tavrin/records/FieldList.h"

namespace Tavrin::Database {

/// The layout whose field offsets the caller gives: each value is the maxLength bytes at its
/// specification's offset, with no bitmap and no length prefix, so every field is always defined and
/// variable-length types are refused.
class UnmanagedFieldList final : public FieldList {
public:
    /// dataLength is the highest offset + maxLength of the fields. Throws DatabaseException code 12
    /// for an empty list ("empty field specification list"), a repeated id ("repeated field id <id>
    /// at field <name>"), a field its validator refuses, a variable-length field ("variable length
    /// field <name> in unmanaged table"), and a field that ends beyond 4 GB ("max offset greater than
    /// data length in unmanaged table").
    explicit UnmanagedFieldList(const std::vector<FieldSpecification>& specifications);
    /// dataLength as given; it may leave bytes behind the last field, and a field ending exactly at
    /// dataLength is accepted. Throws as the other constructor, and for a field that ends beyond
    /// dataLength ("max offset greater than data length in unmanaged table").
    UnmanagedFieldList(const std::vector<FieldSpecification>& specifications, std::uint32_t dataLength);

    // The CompareField forms of FieldList, which the overrides below would hide otherwise. Each keeps
    // its own comment in the reference.
    using FieldList::CompareField;
    /// The raw, typed and value-object SetField forms of FieldList, brought in beside this class's
    /// Boolean override; they work on this layout as FieldList documents them. Every field stays
    /// defined, whatever they answer.
    using FieldList::SetField;

    /// Wire form: maxLength bytes of each field's slot in field order; any status of the builder.
    /// Bytes that no field covers are not sent.
    StatusCode SerializeFields(MessageBuilder& builder, const unsigned char* data) const override;
    /// Reads maxLength bytes into each field's slot in field order. Status 23 for a message that ends
    /// early; the fields read before it keep their new bytes. Bytes that no field covers keep theirs.
    StatusCode DeserializeFields(MessageValidator& validator, unsigned char* data) const override;
    /// Zeroes the whole image, GetDataLength() bytes.
    void ResetData(unsigned char* data) const override;
    /// Writes the byte: status 6; 28 if the type is not Boolean; 22 if maxLength is not 1 (image
    /// untouched). Nothing to mark.
    StatusCode SetField(unsigned char* data, std::uint16_t id, bool value) const override;
    /// Copies the value into the field's slot; there is no prefix to store and nothing to mark. Status
    /// 22 leaves the image untouched.
    StatusCode SetFieldByNumber(std::uint32_t number, unsigned char* data, const void* value,
                                std::uint32_t length) const override;
    /// Takes the source value at its current length whether or not it is defined there (22 leaves the
    /// image untouched).
    StatusCode CopyFieldByNumber(std::uint32_t number, unsigned char* data, std::uint32_t sourceNumber,
                                 const FieldList& source, const unsigned char* sourceData) const override;
    /// Every field is defined: status 6, then the order of the stored value (28 unless the type is
    /// string compatible, 22 unless the string has exactly maxLength bytes).
    StatusCode CompareField(std::uint16_t id, const unsigned char* data, const std::string& value,
                            int& result) const override;
    /// Every field is defined: status 6, then the object's Compare against the stored value (28 for
    /// another type); whether `value` is defined is left to its Compare.
    StatusCode CompareField(std::uint16_t id, const unsigned char* data, const IFieldType& value,
                            int& result) const override;
    /// Does nothing: every field is always defined.
    void SetFieldDefined(std::uint32_t number, unsigned char* data) const override;
    /// Does nothing: a field cannot be undefined here.
    void ClearFieldDefined(std::uint32_t number, unsigned char* data) const override;
    /// Only checks the length rule, as there is no prefix to store or bit to set: status 6, 22, else
    /// 0. A DateTime or Time value tells its own length by its marker bit.
    StatusCode SetFieldLength(unsigned char* data, std::uint16_t id, std::uint32_t length) const override;
    /// A field cannot be undefined here: status 13 for any id, `changed` untouched.
    StatusCode ClearField(unsigned char* data, std::uint16_t id, bool& changed) const override;
    /// A field cannot be undefined here: status 13 for any id.
    StatusCode ClearField(unsigned char* data, std::uint16_t id) const override;
    /// Always true.
    bool IsFieldDefined(std::uint32_t number, const unsigned char* data) const override;
    /// Always false, as there are no defined bits; `byte` and `mask` are untouched.
    bool LocateDefinedBit(std::uint32_t number, std::uint32_t& byte, unsigned char& mask) const noexcept override;
    /// Sets `isDefined` true; status 6 for an id not in the list (`isDefined` untouched).
    StatusCode IsFieldDefined(const unsigned char* data, std::uint16_t id, bool& isDefined) const override;
    /// maxLength, or for a DateTime or Time the length its marker bit tells (6 or 7, 3 or 4).
    std::uint32_t GetFieldLength(std::uint32_t number, const unsigned char* data) const override;

private:
    /// Appends the fields and returns the highest end of a field.
    std::uint64_t AppendFields(const std::vector<FieldSpecification>& specifications);
};

}  // namespace Tavrin::Database
