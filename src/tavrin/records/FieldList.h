#pragma once
// FieldList: the layout of a record image and every field operation on it.
//
// A list is built once from a list of FieldSpecification objects and then shared by every record,
// key and index of a table. It holds no per-record state: every operation takes a pointer to an
// image of GetDataLength() bytes laid out by this list, and every operation is const. The list is
// immutable after construction and may be used from any number of threads at once; images belong
// to their callers and are not locked here. Nothing in an image names its list, so handing an
// operation an image of another list is not detected.
//
// Fields are found by id through a direct table (field number by id, as long as the highest id
// plus one), so a lookup is one bounds check and one table access. By-id operations answer status
// 6 (Status::NotFound) for an id not in the list unless they say otherwise. Operations on a single
// field allocate nothing.
//
// The two concrete layouts are ManagedFieldList (presence bitmap, length prefixes, a slot of the
// full maximum length per field) and UnmanagedFieldList (caller-chosen offsets, every field always
// defined).

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/base/Status.h"
#include "tavrin/base/Throw.h"
#include "tavrin/records/FieldEntry.h"
#include "tavrin/records/FieldSpecification.h"

namespace Tavrin {
class IFieldType;
class BinaryArray;
class BinaryString;
class Blob;
class CrcBlob;
class Date;
class DateTime;
class Rational;
class SInt;
class TextArray;
class TextString;
class Time;
class TRational;
class UInt;
}  // namespace Tavrin

namespace Tavrin::Database {

/// The layout of a record image and every field operation on it. Built once from a list of field
/// specifications, immutable after that and shared by every record, key and index of a table; the
/// images belong to the callers. Abstract: ManagedFieldList and UnmanagedFieldList are the layouts.
class FieldList {
public:
    /// The number that no field has: an id's entry in the id table when the id is not in the list,
    /// and the end iterator's position.
    static constexpr std::uint32_t NoFieldNumber = 0xFFFFFFFF;
    /// As the length of SetFieldLength: the field's maxLength.
    static constexpr std::uint32_t FullLength = 0xFFFFFFFF;

    /// Walks the fields in list order. The end iterator holds no list and position 0xFFFFFFFF; two
    /// iterators are equal when they hold the same list and position. Valid while its list lives.
    class ConstIterator {
    public:
        /// The end iterator.
        ConstIterator() = default;

        /// Moves to the next field; behind the last field it becomes the end iterator, which stays.
        ConstIterator& operator++() noexcept;
        /// Equal when both hold the same list and position; all end iterators are equal.
        bool operator==(const ConstIterator& other) const noexcept = default;

        ///@{
        /// The field at the position; 65535, "", None and a default specification at the end.
        std::uint16_t GetId() const noexcept { return GetSpecification().GetId(); }
        const std::string& GetName() const noexcept { return GetSpecification().GetName(); }
        FieldSpecification::Type GetType() const noexcept { return GetSpecification().GetType(); }
        const FieldSpecification& GetSpecification() const noexcept;
        ///@}
        /// The field number, 0xFFFFFFFF at the end.
        std::uint32_t GetNumber() const noexcept { return position_; }

    private:
        friend class FieldList;
        ConstIterator(const std::vector<FieldEntry>* entries, std::uint32_t position) noexcept
            : entries_(entries), position_(position) {}

        const std::vector<FieldEntry>* entries_ = nullptr;
        std::uint32_t position_ = NoFieldNumber;
    };

    /// Not copyable: records, keys and indexes hold their list by pointer.
    FieldList(const FieldList&) = delete;
    /// Not copyable: records, keys and indexes hold their list by pointer.
    FieldList& operator=(const FieldList&) = delete;
    /// Frees the list; images laid out by it stay the callers'.
    virtual ~FieldList() = default;

    // ---- Layout-specific operations ------------------------------------------------------------
    // Field numbers given to the by-number operations must be below GetFieldCount().

    /// Appends the image's contents to `builder`; any status of the builder.
    virtual StatusCode SerializeFields(MessageBuilder& builder, const unsigned char* data) const = 0;
    /// Reads what SerializeFields wrote, straight into `data`. Status 23 for a message that ends early,
    /// 22 for a stored length that does not fit its field. On failure the image is partly written.
    virtual StatusCode DeserializeFields(MessageValidator& validator, unsigned char* data) const = 0;
    /// Brings an image to its empty state.
    virtual void ResetData(unsigned char* data) const = 0;
    /// Writes a Boolean field: status 6; 28 if the type is not Boolean; 22 if maxLength is not 1.
    virtual StatusCode SetField(unsigned char* data, std::uint16_t id, bool value) const = 0;
    /// Raw write by number under the length rule (status 22, image untouched).
    virtual StatusCode SetFieldByNumber(std::uint32_t number, unsigned char* data, const void* value,
                                        std::uint32_t length) const = 0;
    /// Copies field `sourceNumber` of `source`'s image into field `number` of this image at the source
    /// value's current length, under the length rule (status 22).
    virtual StatusCode CopyFieldByNumber(std::uint32_t number, unsigned char* data, std::uint32_t sourceNumber,
                                         const FieldList& source, const unsigned char* sourceData) const = 0;
    /// Orders field `id` of this image against field `otherId` of `other`'s image; `result` speaks of
    /// this field against the other. Status 6 if either id is missing, 28 if the types differ. An
    /// undefined field orders before a defined one; two undefined fields are equal.
    virtual StatusCode CompareField(std::uint16_t id, const unsigned char* data, const FieldList& other,
                                    std::uint16_t otherId, const unsigned char* otherData, int& result) const;
    /// Orders the field against a text or byte string. Status 6; 28 unless the type is string
    /// compatible; 22 if the type has no length prefix and the size is not maxLength. A managed list
    /// also gives 22 for an empty value and result -1 for an undefined field.
    virtual StatusCode CompareField(std::uint16_t id, const unsigned char* data, const std::string& value,
                                    int& result) const = 0;
    /// Orders the field against a value object of the field's type (status 28 for another type), by
    /// the object's Compare; a status of that is passed on. A managed list first answers undefined
    /// sides: value undefined gives 1 against a defined field and 0 against an undefined one, a defined
    /// value against an undefined field -1.
    virtual StatusCode CompareField(std::uint16_t id, const unsigned char* data, const IFieldType& value,
                                    int& result) const = 0;
    /// Marks field `number` defined without touching its value; nothing on a layout whose fields are
    /// always defined.
    virtual void SetFieldDefined(std::uint32_t number, unsigned char* data) const = 0;
    /// Stores a length (FullLength means maxLength) under the length rule (22) and marks the field
    /// defined, so that a caller can fill the value in place through the writable GetField. Status 6.
    virtual StatusCode SetFieldLength(unsigned char* data, std::uint16_t id, std::uint32_t length) const = 0;
    /// Marks field `number` undefined; nothing on a layout whose fields are always defined.
    virtual void ClearFieldDefined(std::uint32_t number, unsigned char* data) const = 0;
    /// Makes a field undefined; `changed` says whether it was defined. Status 6 (`changed` untouched),
    /// 13 on a layout whose fields cannot be undefined.
    virtual StatusCode ClearField(unsigned char* data, std::uint16_t id, bool& changed) const = 0;
    /// Makes a field undefined, as the form with `changed`: status 6, 13.
    virtual StatusCode ClearField(unsigned char* data, std::uint16_t id) const = 0;
    /// Whether field `number` is defined; always true on a layout without defined marks.
    virtual bool IsFieldDefined(std::uint32_t number, const unsigned char* data) const = 0;
    /// Where an image keeps the bit that says field `number` is defined: true with the bit's byte
    /// offset and mask; false for a layout without such bits, whose fields are always defined. Lets
    /// a hot loop test definedness without a virtual call per field.
    virtual bool LocateDefinedBit(std::uint32_t number, std::uint32_t& byte, unsigned char& mask) const noexcept = 0;
    /// Sets `isDefined` to whether the field is defined; status 6 (`isDefined` untouched).
    virtual StatusCode IsFieldDefined(const unsigned char* data, std::uint16_t id, bool& isDefined) const = 0;
    /// Current length of the field's value, 0 if it is undefined. Never more than maxLength.
    virtual std::uint32_t GetFieldLength(std::uint32_t number, const unsigned char* data) const = 0;

    // ---- Raw field access ----------------------------------------------------------------------

    /// Stores `length` bytes of `value` and marks the field defined. No type check. Status 6, or 22
    /// if the length does not fit the field (then no byte of the image changes).
    StatusCode SetField(unsigned char* data, std::uint16_t id, const void* value, std::uint32_t length) const;
    /// As above; writes nothing and sets `changed` false if the field is defined and already holds
    /// these bytes, else sets `changed` true on success.
    StatusCode SetField(unsigned char* data, std::uint16_t id, const void* value, std::uint32_t length,
                        bool& changed) const;

    /// Copies the value into `buffer`. Status 6; 33 if undefined; 11 if `bufferSize` is below the
    /// value's length (buffer and length untouched).
    StatusCode GetField(const unsigned char* data, std::uint16_t id, void* buffer, std::uint32_t bufferSize,
                        std::uint32_t& length) const;
    /// Points `value` at the value inside the image. Status 6, 33.
    StatusCode GetField(const unsigned char* data, std::uint16_t id, const void*& value,
                        std::uint32_t& length) const;
    /// Points `value` at the field's slot whether the field is defined or not; `length` is the current
    /// length, 0 if undefined. Status 6 only.
    StatusCode GetField(unsigned char* data, std::uint16_t id, void*& value, std::uint32_t& length) const;
    /// By iterator: status 14 at the end (or for an iterator of another list), 33 if undefined.
    StatusCode GetField(const unsigned char* data, const ConstIterator& iterator, const void*& value,
                        std::uint32_t& length) const;
    /// The same, and the field's id and type, which are set also when the field is undefined.
    StatusCode GetField(const unsigned char* data, const ConstIterator& iterator, std::uint16_t& id,
                        FieldSpecification::Type& type, const void*& value, std::uint32_t& length) const;

    // ---- Typed field access --------------------------------------------------------------------
    // Every typed write checks the field's type (status 28) and every typed read too; all give 6 for
    // an unknown id, and reads give 33 for an undefined field. A successful write marks the field
    // defined; a failed plain write leaves its defined state as it was.

    ///@{
    /// Writes an integer. It goes only into a field of its own kind (char: TextArray; signed: SInt;
    /// unsigned: UInt) that is at least as wide as its type, whatever the value: status 6 for an
    /// unknown id, 28 for another kind, 23 for a narrower field, 22 for a field whose width is not 1,
    /// 2, 4 or 8. The 8-bit types need a 1-byte field (23 for a wider one); wider types are sign- or
    /// zero-extended to the field's width. A successful write marks the field defined; a failed one
    /// leaves the image as it was. Touches the image only: no value object, no allocation.
    ///
    /// The forms with `changed`: on an undefined field `changed` becomes true before the write and
    /// stays true if it fails; on a defined field they compare the value at the field's width with
    /// the stored bytes and write only a different value. A failure of the lookup, or of the type
    /// and width checks on a defined field, leaves `changed` untouched.
    StatusCode SetField(unsigned char* data, std::uint16_t id, char value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, signed char value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, unsigned char value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, std::int16_t value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, std::uint16_t value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, std::int32_t value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, std::uint32_t value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, std::int64_t value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, std::uint64_t value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, char value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, signed char value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, unsigned char value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, std::int16_t value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, std::uint16_t value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, std::int32_t value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, std::uint32_t value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, std::int64_t value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, std::uint64_t value, bool& changed) const;
    ///@}

    ///@{
    /// Any other arithmetic or pointer argument (long long, double, a string literal) would reach one
    /// of the overloads here by a silent conversion, narrowed or taken as a bool: such calls do not
    /// compile. Write text as a std::string, other integers as one of the widths above.
    template <class T>
        requires(std::is_arithmetic_v<T> || std::is_pointer_v<T>)
    StatusCode SetField(unsigned char* data, std::uint16_t id, T value) const = delete;
    template <class T>
        requires(std::is_arithmetic_v<T> || std::is_pointer_v<T>)
    StatusCode SetField(unsigned char* data, std::uint16_t id, T value, bool& changed) const = delete;
    ///@}

    ///@{
    /// Writes a string or a value object; status 6 for an unknown id, 28 for a field that does not
    /// take the value (nothing written). Strings go into any string-compatible field by the raw write
    /// (status 22 for an empty string or a length the field does not take; the image is then
    /// untouched). A value object goes into a field of its own type (an IFieldType into the type its
    /// base number maps to): its SerializeBody writes straight into the slot, and its status is
    /// returned; then the length rule applies (22; the slot may then already hold the new bytes,
    /// while the prefix and the defined bit are as they were). A successful write marks the field
    /// defined.
    ///
    /// The forms with `changed`: on an undefined field `changed` becomes true before the write and
    /// stays true if it fails; on a defined field they compare first (strings by length and bytes,
    /// value objects by their IsDifferent, whose status is passed on) and write only a different
    /// value, and `changed` says whether it differed also when that write then fails. A failure of
    /// the lookup, or of the type check on a defined field, leaves `changed` untouched.
    StatusCode SetField(unsigned char* data, std::uint16_t id, const std::string& value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const IFieldType& value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const BinaryArray& value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const BinaryString& value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const Blob& value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const CrcBlob& value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const Date& value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const DateTime& value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const Rational& value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const SInt& value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const TextArray& value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const TextString& value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const Time& value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const TRational& value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const UInt& value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const std::string& value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const IFieldType& value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const BinaryArray& value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const BinaryString& value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const Blob& value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const CrcBlob& value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const Date& value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const DateTime& value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const Rational& value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const SInt& value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const TextArray& value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const TextString& value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const Time& value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const TRational& value, bool& changed) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, const UInt& value, bool& changed) const;
    ///@}

    ///@{
    /// Writes a TRational into a TRational field after working out its trends, which change `value`:
    /// the value trend against the field's old value (1 above, 2 below, the old value's trend if
    /// equal, 3 for an undefined field), and unless `referenceId` is FieldSpecification::NoFieldId the
    /// reference trend against the Rational or TRational field `referenceId` (1, 2, 0 if equal, 3 if
    /// that field is undefined). Status 6 for either id (the value trend is set before the reference
    /// is looked up); 14 if `value` is undefined and there is nothing to compare it with; 28 for a
    /// field of another type; then as the TRational write.
    StatusCode SetField(unsigned char* data, std::uint16_t id, std::uint16_t referenceId, TRational& value) const;
    StatusCode SetField(unsigned char* data, std::uint16_t id, std::uint16_t referenceId, TRational& value,
                        bool& changed) const;
    ///@}

    ///@{
    /// Reads an integer field of the type's own kind (char: TextArray; signed: SInt; unsigned: UInt)
    /// that is no wider than the type, and sign- or zero-extends the stored value. Status 6 for an
    /// unknown id, 33 for an undefined field, 28 for another kind, 22 for a wider field or one whose
    /// width is not 1, 2, 4 or 8. `value` is set only on status 0. Allocates nothing.
    StatusCode GetField(const unsigned char* data, std::uint16_t id, char& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, signed char& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, unsigned char& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, std::int16_t& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, std::uint16_t& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, std::int32_t& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, std::uint32_t& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, std::int64_t& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, std::uint64_t& value) const;
    ///@}
    /// Any string-compatible field, at the value's current length. Status 6, 33, 28 for a type that
    /// is not string compatible, 41 if memory runs out; `value` is untouched on failure.
    StatusCode GetField(const unsigned char* data, std::uint16_t id, std::string& value) const;
    ///@{
    /// The object's DeserializeBody on the field's bytes, and its status, for a field of the object's
    /// type (an IFieldType: the type its base number maps to). A Rational also reads a TRational field
    /// (without its trends), and a TRational a Rational field (trends 3). Status 6, 33, 28 for a field
    /// of another type; the object is untouched on those.
    StatusCode GetField(const unsigned char* data, std::uint16_t id, IFieldType& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, BinaryArray& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, BinaryString& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, Blob& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, CrcBlob& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, Date& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, DateTime& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, Rational& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, SInt& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, TextArray& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, TextString& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, Time& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, TRational& value) const;
    StatusCode GetField(const unsigned char* data, std::uint16_t id, UInt& value) const;
    ///@}
    /// Replaces `value` by a new object of the field's type, filled from the field; the caller owns
    /// it. Status 6 and 33 (`value` untouched); 28 for a type without a value class (untouched) or if
    /// no object could be made (`value` then null); else the object's DeserializeBody status.
    StatusCode GetField(const unsigned char* data, std::uint16_t id, std::unique_ptr<IFieldType>& value) const;

    // ---- Ordering, difference and copy -----------------------------------------------------------
    // Field counts and numbers given here are not checked: the caller keeps them inside the list.
    // The int forms cannot fail. A field undefined on one side orders before the defined one; two
    // undefined fields are equal. Values order by their type's compare function.

    /// All fields in list order, ascending.
    int Compare(const unsigned char* a, const unsigned char* b) const noexcept;
    /// Fields 0 to fieldCount - 1.
    int Compare(const unsigned char* a, const unsigned char* b, std::uint32_t fieldCount) const noexcept;
    /// Fields 0 to fieldCount - 1, then field fieldCount with both values cut to partialLength bytes.
    /// partialLength 0 leaves that field out; FullLength takes it whole.
    int Compare(const unsigned char* a, const unsigned char* b, std::uint32_t fieldCount,
                std::uint32_t partialLength) const noexcept;
    /// The one field `fieldNumber`.
    int Compare(std::uint32_t fieldNumber, const unsigned char* a, const unsigned char* b) const noexcept;
    ///@{
    /// As Compare, with each field's result turned around where the field orders descending (so there
    /// an undefined field orders last). The order of every index; allocates nothing.
    int CompareKey(const unsigned char* a, const unsigned char* b) const noexcept;
    int CompareKey(const unsigned char* a, const unsigned char* b, std::uint32_t fieldCount) const noexcept;
    int CompareKey(const unsigned char* a, const unsigned char* b, std::uint32_t fieldCount,
                   std::uint32_t partialLength) const noexcept;
    ///@}

    /// Whether a field differs from a value, by length and raw bytes, except for the IFieldType form,
    /// which asks the object. `different` is set only on status 0. Status 6 for an unknown id.
    /// Bytes: 22 for length 0; an undefined field differs.
    StatusCode IsFieldDifferent(std::uint16_t id, const unsigned char* data, const void* value, std::uint32_t length,
                                bool& different) const;
    /// Value object: if both are defined, 28 unless the field has the object's type, then the
    /// object's IsDifferent; else they differ when exactly one of them is defined.
    StatusCode IsFieldDifferent(std::uint16_t id, const unsigned char* data, const IFieldType& value,
                                bool& different) const;
    /// String: 22 if empty; an undefined field differs; else 28 unless the type is string compatible.
    StatusCode IsFieldDifferent(std::uint16_t id, const unsigned char* data, const std::string& value,
                                bool& different) const;
    /// The field of the same id in `other`'s image (6 if either list lacks it); types are not compared.
    /// They differ when exactly one is defined, or both are and the bytes differ.
    StatusCode IsFieldDifferent(std::uint16_t id, const unsigned char* data, const FieldList& other,
                                const unsigned char* otherData, bool& different) const;
    /// Field `otherId` of `other`'s image; 28 if the two types differ.
    StatusCode IsFieldDifferent(std::uint16_t id, const unsigned char* data, const FieldList& other,
                                std::uint16_t otherId, const unsigned char* otherData, bool& different) const;

    /// Copies field `id` of `source`'s image into this image (6 unless both lists have it). An
    /// undefined source makes this field undefined (a no-op on an unmanaged list); else the source's
    /// current length goes through this field's length rule (22) and the bytes are copied. Types are
    /// not compared.
    StatusCode CopyField(std::uint16_t id, unsigned char* data, const FieldList& source,
                         const unsigned char* sourceData) const;
    /// The same from field `sourceId`, which must have this field's type (28).
    StatusCode CopyField(std::uint16_t id, unsigned char* data, const FieldList& source, std::uint16_t sourceId,
                         const unsigned char* sourceData) const;
    /// CopyField for every field of this list in order, by id. A field that `source` lacks stops the
    /// walk with status 29 if `strict`, else keeps its value; a length that does not fit stops it with
    /// 22. Fields copied before a stop stay copied.
    StatusCode CopyFields(unsigned char* data, const FieldList& source, const unsigned char* sourceData,
                          bool strict) const;

    // ---- Text forms --------------------------------------------------------------------------------

    /// One line per field: the name cut to 30 characters and padded to 32, then "Undefined" or the
    /// first 47 characters of the value's text, so that no line passes 79 characters.
    std::string ToString(const unsigned char* data) const;
    /// The fields' values joined by ",", by their value classes' text forms. An undefined field, a
    /// type without a value class and a value that does not decode give an empty text.
    std::string ToLogString(const unsigned char* data) const;

    // ---- The fields ----------------------------------------------------------------------------

    /// The field's type. Status 6 (`type` untouched).
    StatusCode GetType(std::uint16_t id, FieldSpecification::Type& type) const;
    /// Copies the field's specification out (with the offset this list uses). Status 6.
    StatusCode GetFieldSpecification(std::uint16_t id, FieldSpecification& specification) const;
    /// The field's number and its specification inside the list, valid while the list lives. Status 6
    /// (`specification` untouched; `number` untouched or NoFieldNumber).
    StatusCode GetFieldSpecification(std::uint16_t id, std::uint32_t& number,
                                     const FieldSpecification*& specification) const;
    /// True if the id is in the list and the list's field is operator== to `specification`; `number`
    /// is set as soon as the id is found, even if the fields then differ.
    bool GetFieldNumber(const FieldSpecification& specification, std::uint32_t& number) const;

    /// Copies of the fields' specifications in list order, as the list holds them (a managed list
    /// gives its computed offsets).
    std::vector<FieldSpecification> GetFieldSpecificationList() const;
    /// The fields' ids in list order.
    std::vector<std::uint16_t> GetFieldIdList() const;
    /// Copies the first field's specification (with the offset this list uses); a list always has one.
    void GetFirstFieldSpecification(FieldSpecification& specification) const;
    /// The id of the first field; a list always has one.
    void GetFirstFieldId(std::uint16_t& id) const;
    ///@{
    /// Replaces the argument by the field behind the one with its id: status 23 if the id is not in
    /// the list, 6 if it is the last field.
    StatusCode GetNextFieldSpecification(FieldSpecification& specification) const;
    StatusCode GetNextFieldId(std::uint16_t& id) const;
    ///@}

    /// An iterator at the first field.
    ConstIterator Begin() const noexcept { return ConstIterator(&entries_, 0); }
    /// The end iterator.
    ConstIterator End() const noexcept { return ConstIterator(); }

    /// The size in bytes of every image of this list.
    std::uint32_t GetDataLength() const noexcept { return dataLength_; }
    /// The number of fields, at least 1; field numbers run from 0 to one below it.
    std::uint32_t GetFieldCount() const noexcept { return static_cast<std::uint32_t>(entries_.size()); }

    // ---- The list's specification on the wire ----------------------------------------------------
    // A 4-byte field count, then each field's serialised specification in list order.

    /// Any status of the builder, or 23 for a name longer than 65535 bytes.
    StatusCode SerializeSpecification(MessageBuilder& builder) const;
    /// Empties `specifications` and reads into it. Status 23 for a short message, 36 for a wide id;
    /// on failure the vector keeps the specifications read completely. Does not validate: building a
    /// list from the result does.
    static StatusCode DeserializeSpecification(MessageValidator& validator,
                                               std::vector<FieldSpecification>& specifications);

protected:
    /// The derived constructor builds the list: RefuseEmptyList, AppendEntry for each specification,
    /// its own layout pass, SetDataLength.
    FieldList() = default;

    /// Throws DatabaseException code 12 "empty field specification list" at `site`.
    static void RefuseEmptyList(ThrowSite site, const std::vector<FieldSpecification>& specifications);
    /// Throws code 12 "repeated field id <id> at field <name>" at `site` if the id is already in the
    /// list; else makes the field's entry (which validates it and may throw), appends it and enters
    /// its number into the id table. The reference is valid until the next append.
    FieldEntry& AppendEntry(ThrowSite site, const FieldSpecification& specification);
    /// The entry of field `number` (below GetFieldCount()), for the derived constructor's layout pass.
    FieldEntry& GetMutableEntry(std::uint32_t number) noexcept { return entries_[number]; }
    /// Sets the image size that GetDataLength() answers; the derived constructor's last step.
    void SetDataLength(std::uint32_t dataLength) noexcept { dataLength_ = dataLength; }

    /// The entry of `id` and its number, or null if the id is not in the list (`number` is then
    /// untouched, or NoFieldNumber for an id inside the id table).
    const FieldEntry* FindEntry(std::uint16_t id, std::uint32_t& number) const noexcept {
        if (id >= fieldNumbers_.size()) return nullptr;
        number = fieldNumbers_[id];
        return number == NoFieldNumber ? nullptr : &entries_[number];
    }
    /// The entry of field `number`, which must be below GetFieldCount().
    const FieldEntry& GetEntry(std::uint32_t number) const noexcept { return entries_[number]; }
    /// Every entry, in list order.
    const std::vector<FieldEntry>& GetEntries() const noexcept { return entries_; }

    /// The length rule, which every write of a value passes:
    ///   variable-length types  1 <= length <= maxLength, and the length goes into the prefix;
    ///   DateTime and Time      length <= maxLength (the value itself tells its length);
    ///   all other types        length == maxLength.
    static bool FitsLength(const FieldEntry& entry, std::uint32_t length) noexcept;
    /// Applies the length rule and stores the prefix: status 22 with the image untouched, else 0.
    static StatusCode StoreLength(const FieldEntry& entry, unsigned char* data, std::uint32_t length) noexcept;
    /// StoreLength, then copies the value into the field's slot. Definedness is the caller's.
    static StatusCode StoreValue(const FieldEntry& entry, unsigned char* data, const void* value,
                                 std::uint32_t length) noexcept;
    /// Stores one byte into a Boolean field of maxLength 1 (status 6 is the caller's; 28, 22).
    static StatusCode StoreBoolean(const FieldEntry& entry, unsigned char* data, bool value) noexcept;
    /// StoreValue from field `sourceNumber` of `source`'s image at its current length, whether or not
    /// it is defined there (status 22).
    static StatusCode StoreValueFrom(const FieldEntry& entry, unsigned char* data, std::uint32_t sourceNumber,
                                     const FieldList& source, const unsigned char* sourceData) noexcept;
    /// The value's length as the image tells it, read without looking at definedness: the prefix of
    /// a variable-length type, the marker bit of a DateTime (6 or 7) or Time (3 or 4), else maxLength.
    /// Never more than maxLength, whatever the bytes say.
    static std::uint32_t ReadValueLength(const FieldEntry& entry, const unsigned char* data) noexcept;

    ///@{
    /// The order of a defined field against a string, and against a defined value object, as both
    /// layouts' CompareField give it once definedness has been settled.
    static StatusCode CompareStoredString(const FieldEntry& entry, const unsigned char* data, const std::string& value,
                                          int& result);
    static StatusCode CompareStoredValue(const FieldEntry& entry, const unsigned char* data, const IFieldType& value,
                                         int& result);
    ///@}

private:
    /// The field of `iterator`, or null if it is the end or of another list.
    const FieldEntry* EntryAt(const ConstIterator& iterator) const noexcept;

    ///@{
    /// The typed families behind the public SetField and GetField overloads, instantiated for their
    /// listed types only.
    template <class T>
    StatusCode SetFieldV(unsigned char* data, std::uint16_t id, T value) const;
    template <class T>
    StatusCode SetFieldV(unsigned char* data, std::uint16_t id, T value, bool& changed) const;
    template <class T>
    StatusCode SetFieldR(unsigned char* data, std::uint16_t id, const T& value) const;
    template <class T>
    StatusCode SetFieldR(unsigned char* data, std::uint16_t id, const T& value, bool& changed) const;
    template <class T>
    StatusCode GetFieldT(const unsigned char* data, std::uint16_t id, T& value) const;
    ///@}
    /// A value object's write once the type is checked: SerializeBody into the slot, length rule,
    /// defined bit.
    StatusCode StoreObject(const FieldEntry& entry, std::uint32_t number, unsigned char* data,
                           const IFieldType& value) const;
    /// Sets the value trend and, unless referenceId is NoFieldId, the reference trend of a TRational
    /// about to be written into field `id`.
    StatusCode WorkOutTrends(const unsigned char* data, std::uint16_t id, std::uint16_t referenceId,
                             TRational& value) const;

    /// Order of field `number` of two images, each value cut to `limit` bytes, with no direction.
    int CompareFieldValues(std::uint32_t number, const unsigned char* a, const unsigned char* b,
                           std::uint32_t limit) const noexcept;
    /// The loop of every Compare and CompareKey form; `keyOrder` applies each field's direction.
    int CompareRange(const unsigned char* a, const unsigned char* b, std::uint32_t fieldCount,
                     std::uint32_t partialLength, bool keyOrder) const noexcept;
    /// IsFieldDifferent of two located fields of two images.
    bool IsDifferentFrom(std::uint32_t number, const unsigned char* data, const FieldList& other,
                         std::uint32_t otherNumber, const unsigned char* otherData) const;
    /// CopyField of two located fields.
    StatusCode CopyLocatedField(std::uint32_t number, unsigned char* data, const FieldList& source,
                                std::uint32_t sourceNumber, const unsigned char* sourceData) const;

    std::vector<FieldEntry> entries_;
    std::uint32_t dataLength_ = 0;
    /// Field number by field id; NoFieldNumber for ids not in the list.
    std::vector<std::uint32_t> fieldNumbers_;
};

}  // namespace Tavrin::Database
