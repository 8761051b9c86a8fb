#pragma once
// Record: one table record that a caller holds, an image of the table's FieldList.
//
// Owns its image (see FieldListObject); holds the table unowned. The image is
// ITable::GetRecordLength() bytes long, in the table's layout. The record id says where the image
// was read from or written to, and takes no part in comparison.
//
// Constructors and assignment report failure by DatabaseException code 7 (AllocateRecord) with no
// message; the other operations return a status. Not locked: one thread at a time.

#include <cstdint>

#include "tavrin/records/FieldListObject.h"
#include "tavrin/records/Key.h"

namespace Tavrin::Database {

/// One table record that a caller holds: an image in the table's layout that the object owns,
/// bound to the table. Not locked: one thread at a time.
class Record : public FieldListObject {
public:
    /// Not initialized.
    Record() noexcept = default;
    /// Binds to `table` with an empty image. Throws DatabaseException code 7 for a null table or one
    /// without an identity token, or when the image cannot be allocated or reset.
    explicit Record(ITable* table);
    /// Binds to the key's table with just the key's fields defined. Throws DatabaseException code 7
    /// where Initialize(key) answers a failure.
    explicit Record(const Key& key);
    ///@{
    /// A copy of `other`'s binding, image and record id; an `other` that is not initialized gives
    /// an object that is not initialized. Throws DatabaseException code 7 when the binding fails.
    Record(const Record& other);
    Record& operator=(const Record& other);
    ///@}
    ///@{
    /// Takes over `other`'s image without allocating and leaves `other` not initialized.
    Record(Record&& other) noexcept;
    Record& operator=(Record&& other) noexcept;
    ///@}
    /// For the table's own use: binds and copies GetRecordLength() bytes from `data`; the inline
    /// buffer beyond them is left unwritten. Throws DatabaseException code 7 where Initialize
    /// answers a failure.
    Record(ITable* table, const unsigned char* data, std::uint32_t recordId);
    /// Frees an image array that the record took.
    ~Record() override = default;

    /// Status 14 if `key` is not initialized; else binds to its table and copies the key's fields
    /// (not strict). A failing copy leaves the record bound with the fields copied so far.
    StatusCode Initialize(const Key& key);
    /// Copies `other`'s binding, image and record id; if it is not initialized, this object is
    /// cleared and the status is 0. Else as Initialize(table, data, recordId).
    StatusCode Initialize(const Record& other);
    /// For the table's own use: binds, copies GetRecordLength() bytes from `data`, sets the id. 23
    /// for a null table or one without an identity token, 41 if the image cannot be allocated; the
    /// object is then as it was.
    StatusCode Initialize(ITable* table, const unsigned char* data, std::uint32_t recordId);

    ///@{
    /// Two records are equal when neither is initialized, or when both are bound to one table and
    /// no field differs by FieldList::IsFieldDifferent. The record ids take no part.
    bool operator==(const Record& other) const;
    bool operator!=(const Record& other) const { return !(*this == other); }
    ///@}

    /// Brings the image to the layout's empty state (FieldList::ResetData) and forgets the record
    /// id; 14 if not initialized.
    StatusCode Reset() override;

    /// Records of up to this many bytes are serialised as their raw image, longer ones field by field.
    static constexpr std::uint32_t CompactFormThreshold = 2048;
    /// The version byte that Serialize writes and Deserialize requires.
    static constexpr std::uint8_t Version = 1;
    /// Serialised form, little-endian:
    ///   1 byte                version, 1
    ///   fields                the raw image of GetRecordLength() bytes when that is at most
    ///                         CompactFormThreshold, else what FieldList::SerializeFields writes
    ///   4 bytes               record id, signed; -1 for none
    /// Nothing in the message says which fields form it is: the reader decides by its own table's
    /// record length, so both sides need the same table specification. Status 14 if the record is
    /// not initialized, else any status of the builder.
    StatusCode Serialize(MessageBuilder& builder) const override;
    /// 23 if the message is empty or ends early, 21 for another version (the record is then left
    /// as it was), 22 for a stored field length that does not fit, 23 for a null table or one without
    /// an identity token, 41 if the image cannot be allocated. A failure after the binding leaves the
    /// record bound to `table`, with the image partly read and no record id.
    StatusCode Deserialize(ITable* table, MessageValidator& validator) override;

    /// The key of index `indexNumber` built from this record; throws code 4 on failure.
    Key GetKey(std::uint16_t indexNumber) const;
    /// The key of the table's primary index; throws code 5 if this record is not initialized and
    /// code 4 if the table has no primary index.
    Key GetPrimaryKey() const;

private:
    /// Binds to `table` (23 for a null table or one without an identity token, 41 if the image
    /// cannot be allocated) and resets the image through the table.
    StatusCode BindTo(ITable* table);
    /// BindTo without the reset, for a caller that writes the whole image next.
    StatusCode BindWithoutReset(ITable* table);
};

}  // namespace Tavrin::Database
