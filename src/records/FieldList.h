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
#include <string>
#include <vector>

#include "base/MessageBuilder.h"
#include "base/MessageValidator.h"
#include "base/Status.h"
#include "base/Throw.h"
#include "records/FieldEntry.h"
#include "records/FieldSpecification.h"

namespace Tavrin::Database {

class FieldList {
public:
    static constexpr std::uint32_t NoFieldNumber = 0xFFFFFFFF;
    // As the length of SetFieldLength: the field's maxLength.
    static constexpr std::uint32_t FullLength = 0xFFFFFFFF;

    // Walks the fields in list order. The end iterator holds no list and position 0xFFFFFFFF; two
    // iterators are equal when they hold the same list and position. Valid while its list lives.
    class ConstIterator {
    public:
        // The end iterator.
        ConstIterator() = default;

        // Moves to the next field; behind the last field it becomes the end iterator, which stays.
        ConstIterator& operator++() noexcept;
        bool operator==(const ConstIterator& other) const noexcept = default;

        // The field at the position; 65535, "", None and a default specification at the end.
        std::uint16_t GetId() const noexcept { return GetSpecification().GetId(); }
        const std::string& GetName() const noexcept { return GetSpecification().GetName(); }
        FieldSpecification::Type GetType() const noexcept { return GetSpecification().GetType(); }
        const FieldSpecification& GetSpecification() const noexcept;
        // The field number, 0xFFFFFFFF at the end.
        std::uint32_t GetNumber() const noexcept { return position_; }

    private:
        friend class FieldList;
        ConstIterator(const std::vector<FieldEntry>* entries, std::uint32_t position) noexcept
            : entries_(entries), position_(position) {}

        const std::vector<FieldEntry>* entries_ = nullptr;
        std::uint32_t position_ = NoFieldNumber;
    };

    FieldList(const FieldList&) = delete;
    FieldList& operator=(const FieldList&) = delete;
    virtual ~FieldList() = default;

    // ---- Layout-specific operations ------------------------------------------------------------
    // Field numbers given to the by-number operations must be below GetFieldCount().

    // Appends the image's contents to `builder`; any status of the builder.
    virtual StatusCode SerializeFields(MessageBuilder& builder, const unsigned char* data) const = 0;
    // Reads what SerializeFields wrote, straight into `data`. Status 23 for a message that ends early,
    // 22 for a stored length that does not fit its field. On failure the image is partly written.
    virtual StatusCode DeserializeFields(MessageValidator& validator, unsigned char* data) const = 0;
    // Brings an image to its empty state.
    virtual void ResetData(unsigned char* data) const = 0;
    // Writes a Boolean field: status 6; 28 if the type is not Boolean; 22 if maxLength is not 1.
    virtual StatusCode SetField(unsigned char* data, std::uint16_t id, bool value) const = 0;
    // Raw write by number under the length rule (status 22, image untouched).
    virtual StatusCode SetFieldByNumber(std::uint32_t number, unsigned char* data, const void* value,
                                        std::uint32_t length) const = 0;
    // Copies field `sourceNumber` of `source`'s image into field `number` of this image at the source
    // value's current length, under the length rule (status 22).
    virtual StatusCode CopyFieldByNumber(std::uint32_t number, unsigned char* data, std::uint32_t sourceNumber,
                                         const FieldList& source, const unsigned char* sourceData) const = 0;
    virtual void SetFieldDefined(std::uint32_t number, unsigned char* data) const = 0;
    // Stores a length (FullLength means maxLength) under the length rule (22) and marks the field
    // defined, so that a caller can fill the value in place through the writable GetField.
    virtual StatusCode SetFieldLength(unsigned char* data, std::uint16_t id, std::uint32_t length) const = 0;
    virtual void ClearFieldDefined(std::uint32_t number, unsigned char* data) const = 0;
    // Makes a field undefined; `changed` says whether it was defined.
    virtual StatusCode ClearField(unsigned char* data, std::uint16_t id, bool& changed) const = 0;
    virtual StatusCode ClearField(unsigned char* data, std::uint16_t id) const = 0;
    virtual bool IsFieldDefined(std::uint32_t number, const unsigned char* data) const = 0;
    virtual StatusCode IsFieldDefined(const unsigned char* data, std::uint16_t id, bool& isDefined) const = 0;
    // Current length of the field's value, 0 if it is undefined. Never more than maxLength.
    virtual std::uint32_t GetFieldLength(std::uint32_t number, const unsigned char* data) const = 0;

    // ---- Raw field access ----------------------------------------------------------------------

    // Stores `length` bytes of `value` and marks the field defined. No type check. Status 6, or 22
    // if the length does not fit the field (then no byte of the image changes).
    StatusCode SetField(unsigned char* data, std::uint16_t id, const void* value, std::uint32_t length) const;
    // As above; writes nothing and sets `changed` false if the field is defined and already holds
    // these bytes, else sets `changed` true on success.
    StatusCode SetField(unsigned char* data, std::uint16_t id, const void* value, std::uint32_t length,
                        bool& changed) const;

    // Copies the value into `buffer`. Status 6; 33 if undefined; 11 if `bufferSize` is below the
    // value's length (buffer and length untouched).
    StatusCode GetField(const unsigned char* data, std::uint16_t id, void* buffer, std::uint32_t bufferSize,
                        std::uint32_t& length) const;
    // Points `value` at the value inside the image. Status 6, 33.
    StatusCode GetField(const unsigned char* data, std::uint16_t id, const void*& value,
                        std::uint32_t& length) const;
    // Points `value` at the field's slot whether the field is defined or not; `length` is the current
    // length, 0 if undefined. Status 6 only.
    StatusCode GetField(unsigned char* data, std::uint16_t id, void*& value, std::uint32_t& length) const;
    // By iterator: status 14 at the end (or for an iterator of another list), 33 if undefined.
    StatusCode GetField(const unsigned char* data, const ConstIterator& iterator, const void*& value,
                        std::uint32_t& length) const;
    // The same, and the field's id and type, which are set also when the field is undefined.
    StatusCode GetField(const unsigned char* data, const ConstIterator& iterator, std::uint16_t& id,
                        FieldSpecification::Type& type, const void*& value, std::uint32_t& length) const;

    // ---- The fields ----------------------------------------------------------------------------

    StatusCode GetType(std::uint16_t id, FieldSpecification::Type& type) const;
    // Copies the field's specification out (with the offset this list uses). Status 6.
    StatusCode GetFieldSpecification(std::uint16_t id, FieldSpecification& specification) const;
    // The field's number and its specification inside the list, valid while the list lives. Status 6.
    StatusCode GetFieldSpecification(std::uint16_t id, std::uint32_t& number,
                                     const FieldSpecification*& specification) const;
    // True if the id is in the list and the list's field is operator== to `specification`; `number`
    // is set as soon as the id is found, even if the fields then differ.
    bool GetFieldNumber(const FieldSpecification& specification, std::uint32_t& number) const;

    // The fields in list order, as the list holds them (a managed list gives its computed offsets).
    std::vector<FieldSpecification> GetFieldSpecificationList() const;
    std::vector<std::uint16_t> GetFieldIdList() const;
    void GetFirstFieldSpecification(FieldSpecification& specification) const;
    void GetFirstFieldId(std::uint16_t& id) const;
    // Replaces the argument by the field behind the one with its id: status 23 if the id is not in
    // the list, 6 if it is the last field.
    StatusCode GetNextFieldSpecification(FieldSpecification& specification) const;
    StatusCode GetNextFieldId(std::uint16_t& id) const;

    ConstIterator Begin() const noexcept { return ConstIterator(&entries_, 0); }
    ConstIterator End() const noexcept { return ConstIterator(); }

    std::uint32_t GetDataLength() const noexcept { return dataLength_; }
    std::uint32_t GetFieldCount() const noexcept { return static_cast<std::uint32_t>(entries_.size()); }

    // ---- The list's specification on the wire ----------------------------------------------------
    // A 4-byte field count, then each field's serialised specification in list order.

    // Any status of the builder, or 23 for a name longer than 65535 bytes.
    StatusCode SerializeSpecification(MessageBuilder& builder) const;
    // Empties `specifications` and reads into it. Status 23 for a short message, 36 for a wide id;
    // on failure the vector keeps the specifications read completely. Does not validate: building a
    // list from the result does.
    static StatusCode DeserializeSpecification(MessageValidator& validator,
                                               std::vector<FieldSpecification>& specifications);

protected:
    // The derived constructor builds the list: RefuseEmptyList, AppendEntry for each specification,
    // its own layout pass, SetDataLength.
    FieldList() = default;

    // Throws DatabaseException code 12 "empty field specification list" at `site`.
    static void RefuseEmptyList(ThrowSite site, const std::vector<FieldSpecification>& specifications);
    // Throws code 12 "repeated field id <id> at field <name>" at `site` if the id is already in the
    // list; else makes the field's entry (which validates it and may throw), appends it and enters
    // its number into the id table. The reference is valid until the next append.
    FieldEntry& AppendEntry(ThrowSite site, const FieldSpecification& specification);
    FieldEntry& GetMutableEntry(std::uint32_t number) noexcept { return entries_[number]; }
    void SetDataLength(std::uint32_t dataLength) noexcept { dataLength_ = dataLength; }

    // The entry of `id` and its number, or null if the id is not in the list.
    const FieldEntry* FindEntry(std::uint16_t id, std::uint32_t& number) const noexcept {
        if (id >= fieldNumbers_.size()) return nullptr;
        number = fieldNumbers_[id];
        return number == NoFieldNumber ? nullptr : &entries_[number];
    }
    const FieldEntry& GetEntry(std::uint32_t number) const noexcept { return entries_[number]; }
    const std::vector<FieldEntry>& GetEntries() const noexcept { return entries_; }

    // The length rule, which every write of a value passes:
    //   variable-length types  1 <= length <= maxLength, and the length goes into the prefix;
    //   DateTime and Time      length <= maxLength (the value itself tells its length);
    //   all other types        length == maxLength.
    static bool FitsLength(const FieldEntry& entry, std::uint32_t length) noexcept;
    // Applies the length rule and stores the prefix: status 22 with the image untouched, else 0.
    static StatusCode StoreLength(const FieldEntry& entry, unsigned char* data, std::uint32_t length) noexcept;
    // StoreLength, then copies the value into the field's slot. Definedness is the caller's.
    static StatusCode StoreValue(const FieldEntry& entry, unsigned char* data, const void* value,
                                 std::uint32_t length) noexcept;
    // Stores one byte into a Boolean field of maxLength 1 (status 6 is the caller's; 28, 22).
    static StatusCode StoreBoolean(const FieldEntry& entry, unsigned char* data, bool value) noexcept;
    // StoreValue from field `sourceNumber` of `source`'s image at its current length, whether or not
    // it is defined there (status 22).
    static StatusCode StoreValueFrom(const FieldEntry& entry, unsigned char* data, std::uint32_t sourceNumber,
                                     const FieldList& source, const unsigned char* sourceData) noexcept;
    // The value's length as the image tells it, read without looking at definedness: the prefix of
    // a variable-length type, the marker bit of a DateTime (6 or 7) or Time (3 or 4), else maxLength.
    // Never more than maxLength, whatever the bytes say.
    static std::uint32_t ReadValueLength(const FieldEntry& entry, const unsigned char* data) noexcept;

private:
    // The field of `iterator`, or null if it is the end or of another list.
    const FieldEntry* EntryAt(const ConstIterator& iterator) const noexcept;

    std::vector<FieldEntry> entries_;
    std::uint32_t dataLength_ = 0;
    // Field number by field id; NoFieldNumber for ids not in the list.
    std::vector<std::uint32_t> fieldNumbers_;
};

}  // namespace Tavrin::Database
