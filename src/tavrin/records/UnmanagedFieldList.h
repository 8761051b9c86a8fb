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

class UnmanagedFieldList final : public FieldList {
public:
    /// dataLength is the highest offset + maxLength of the fields.
    explicit UnmanagedFieldList(const std::vector<FieldSpecification>& specifications);
    /// dataLength as given; it may leave bytes behind the last field, and a field ending exactly at
    /// dataLength is accepted.
    UnmanagedFieldList(const std::vector<FieldSpecification>& specifications, std::uint32_t dataLength);
    // Both throw DatabaseException code 12 for an empty list ("empty field specification list"), a
    // repeated id ("repeated field id <id> at field <name>"), a field its validator refuses, a
    // variable-length field ("variable length field <name> in unmanaged table"), and a field that
    // ends beyond dataLength or beyond 4 GB ("max offset greater than data length in unmanaged table").

    using FieldList::CompareField;
    using FieldList::SetField;

    ///@{
    /// Wire form: maxLength bytes of each field's slot in field order. Bytes that no field covers are
    /// not sent.
    StatusCode SerializeFields(MessageBuilder& builder, const unsigned char* data) const override;
    StatusCode DeserializeFields(MessageValidator& validator, unsigned char* data) const override;
    ///@}
    ///@{
    /// Zeroes the whole image.
    void ResetData(unsigned char* data) const override;
    StatusCode SetField(unsigned char* data, std::uint16_t id, bool value) const override;
    StatusCode SetFieldByNumber(std::uint32_t number, unsigned char* data, const void* value,
                                std::uint32_t length) const override;
    ///@}
    /// Takes the source value at its current length whether or not it is defined there.
    StatusCode CopyFieldByNumber(std::uint32_t number, unsigned char* data, std::uint32_t sourceNumber,
                                 const FieldList& source, const unsigned char* sourceData) const override;
    ///@{
    /// Every field is defined: status 6, then the order of the stored value.
    StatusCode CompareField(std::uint16_t id, const unsigned char* data, const std::string& value,
                            int& result) const override;
    StatusCode CompareField(std::uint16_t id, const unsigned char* data, const IFieldType& value,
                            int& result) const override;
    ///@}
    ///@{
    /// Nothing to mark: these do nothing.
    void SetFieldDefined(std::uint32_t number, unsigned char* data) const override;
    void ClearFieldDefined(std::uint32_t number, unsigned char* data) const override;
    StatusCode SetFieldLength(unsigned char* data, std::uint16_t id, std::uint32_t length) const override;
    ///@}
    ///@{
    /// A field cannot be undefined here: status 13 for any id.
    StatusCode ClearField(unsigned char* data, std::uint16_t id, bool& changed) const override;
    StatusCode ClearField(unsigned char* data, std::uint16_t id) const override;
    ///@}
    ///@{
    /// Always true (status 6 for an id not in the list).
    bool IsFieldDefined(std::uint32_t number, const unsigned char* data) const override;
    bool LocateDefinedBit(std::uint32_t number, std::uint32_t& byte, unsigned char& mask) const noexcept override;
    StatusCode IsFieldDefined(const unsigned char* data, std::uint16_t id, bool& isDefined) const override;
    std::uint32_t GetFieldLength(std::uint32_t number, const unsigned char* data) const override;
    ///@}

private:
    /// Appends the fields and returns the highest end of a field.
    std::uint64_t AppendFields(const std::vector<FieldSpecification>& specifications);
};

}  // namespace Tavrin::Database
