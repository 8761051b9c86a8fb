#pragma once
// ManagedFieldList: a record layout that the list decides by itself. Every field can be undefined,
// and a variable-length value keeps its current length in a prefix, so a value changes length
// without anything moving and every image of the list has the same size.
//
// Image layout for n fields (n >= 1) in list order, no padding, no alignment:
//
//   offset 0      B = (n + 7) / 8 bytes   presence bitmap: field i is defined when bit
//                                          (0x80 >> (i % 8)) of byte (i / 8) is set
//   offset B      P bytes                 length prefixes of the variable-length fields, in field
//                                          order, little-endian, 1 byte for maxLength below 255,
//                                          2 below 65535, else 4 (P is their sum)
//   offset B + P  sum of all maxLength    value slots, in field order, each maxLength bytes
//
// An undefined field's prefix and slot hold stale bytes that nothing reads; shortening a value
// leaves the old tail in its slot. Images go to store files byte for byte, so this is a file format.
//
// Example: UInt(4), TextString(10), Blob(300), DateTime(7) give B 1, prefixes at 1 (1 byte) and 2
// (2 bytes), values at 4, 8, 18 and 318, and 325 bytes in all.
//
// Immutable after construction, shared freely between threads like every FieldList.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tavrin/records/FieldEntry.h"
#include "tavrin/records/FieldList.h"

namespace Tavrin::Database {

/// The layout that places fields itself: a presence bitmap, then the length prefixes of the
/// variable-length fields, then a slot of the full maxLength per field, so that every field can be
/// undefined and every image has the same size (see the file comment for the byte layout).
class ManagedFieldList final : public FieldList {
public:
    /// Lays the fields out; offsets given in the specifications are ignored. Throws DatabaseException
    /// code 12 for an empty list ("empty field specification list"), a repeated id ("repeated field
    /// id <id> at field <name>"), a field its validator refuses, or a layout that would pass 4 GB.
    explicit ManagedFieldList(const std::vector<FieldSpecification>& specifications);

    /// The data length that the constructor gives `specifications` (the bitmap, the length prefixes
    /// and every maxLength), in 64 bits so that it cannot wrap. Builds and validates nothing, so a
    /// table can check the size of its records before it makes the list; a field of a type that
    /// validation refuses counts without a prefix.
    static std::uint64_t DataLengthOf(const std::vector<FieldSpecification>& specifications) noexcept;

    // The CompareField forms of FieldList, which the overrides below would hide otherwise. Each keeps
    // its own comment in the reference.
    using FieldList::CompareField;
    /// The raw, typed and value-object SetField forms of FieldList, brought in beside this class's
    /// Boolean override; they work on this layout as FieldList documents them and set the field's bit
    /// on success.
    using FieldList::SetField;

    /// Wire form: the B bitmap bytes, then for each defined field in field order its prefix and its
    /// current value if it is variable length, else all maxLength bytes of its slot. Any status of
    /// the builder.
    StatusCode SerializeFields(MessageBuilder& builder, const unsigned char* data) const override;
    /// Reads the bitmap into the image (bits beyond the last field are cleared), then each field
    /// whose bit is set straight into its slot. Status 23 for a message that ends early; a stored
    /// length of 0 or above maxLength is status 22, before anything is copied to the slot. Slots of
    /// fields whose bit is clear keep their bytes.
    StatusCode DeserializeFields(MessageValidator& validator, unsigned char* data) const override;
    /// Clears the bitmap, so every field is undefined; prefixes and slots keep their bytes.
    void ResetData(unsigned char* data) const override;
    /// Writes the byte and sets the field's bit: status 6; 28 if the type is not Boolean; 22 if
    /// maxLength is not 1 (image untouched).
    StatusCode SetField(unsigned char* data, std::uint16_t id, bool value) const override;
    /// Stores the prefix (for a variable-length type) and the value, and sets the field's bit; status
    /// 22 leaves the image untouched.
    StatusCode SetFieldByNumber(std::uint32_t number, unsigned char* data, const void* value,
                                std::uint32_t length) const override;
    /// An undefined source field makes this field undefined (status 0); else the source value goes
    /// in as by SetFieldByNumber (22 leaves the image untouched).
    StatusCode CopyFieldByNumber(std::uint32_t number, unsigned char* data, std::uint32_t sourceNumber,
                                 const FieldList& source, const unsigned char* sourceData) const override;
    /// Status 6; 22 for an empty string; an undefined field orders first (-1); else as FieldList
    /// documents it (28, 22).
    StatusCode CompareField(std::uint16_t id, const unsigned char* data, const std::string& value,
                            int& result) const override;
    /// Status 6; an undefined value orders first (1 against a defined field, 0 against an undefined
    /// one), then an undefined field (-1); two defined sides go by the object's Compare (28 for
    /// another type).
    StatusCode CompareField(std::uint16_t id, const unsigned char* data, const IFieldType& value,
                            int& result) const override;
    /// Sets the field's bit in the bitmap.
    void SetFieldDefined(std::uint32_t number, unsigned char* data) const override;
    /// Stores the prefix of a variable-length field (a fixed-length field only passes the length
    /// rule) and sets the field's bit. Status 6; 22 leaves the image untouched.
    StatusCode SetFieldLength(unsigned char* data, std::uint16_t id, std::uint32_t length) const override;
    /// Clears the field's bit in the bitmap.
    void ClearFieldDefined(std::uint32_t number, unsigned char* data) const override;
    /// Clears the field's bit; `changed` says whether it was set. Status 6 (`changed` untouched).
    StatusCode ClearField(unsigned char* data, std::uint16_t id, bool& changed) const override;
    /// Clears the field's bit. Status 6.
    StatusCode ClearField(unsigned char* data, std::uint16_t id) const override;
    /// Whether the field's bit is set.
    bool IsFieldDefined(std::uint32_t number, const unsigned char* data) const override;
    /// Always true: byte number / 8 of the bitmap, mask 0x80 >> (number % 8).
    bool LocateDefinedBit(std::uint32_t number, std::uint32_t& byte, unsigned char& mask) const noexcept override;
    /// Whether the field's bit is set. Status 6 (`isDefined` untouched).
    StatusCode IsFieldDefined(const unsigned char* data, std::uint16_t id, bool& isDefined) const override;
    /// 0 while the field's bit is clear; else the prefix of a variable-length field, the marker
    /// bit's length of a DateTime (6 or 7) or Time (3 or 4), or maxLength; never above maxLength.
    std::uint32_t GetFieldLength(std::uint32_t number, const unsigned char* data) const override;

    /// The size B of the presence bitmap in bytes.
    std::uint32_t GetBitmapLength() const noexcept { return bitmapEntry_.GetMaxLength(); }

private:
    static std::uint32_t BitmapLengthOf(std::size_t fieldCount) noexcept {
        return static_cast<std::uint32_t>((fieldCount + 7) / 8);
    }
    static unsigned char BitOf(std::uint32_t number) noexcept {
        return static_cast<unsigned char>(0x80u >> (number % 8));
    }
    /// Reads one field's prefix and value from a message into the image.
    StatusCode DeserializeField(MessageValidator& validator, const FieldEntry& entry, unsigned char* data) const;
    /// Clears bitmap bits beyond the last field, which a message may have set.
    void ClearUnusedBits(unsigned char* data) const noexcept;

    /// Describes the bitmap as if it were a field (id 0, "Bitmap", maxLength B); not in the list.
    FieldEntry bitmapEntry_;
};

}  // namespace Tavrin::Database
