#pragma once
// Key: the key of one index of a table, as a caller holds it.
//
// Owns its key image (see FieldListObject); holds the table and the index unowned. The image is
// laid out by the index's own key FieldList (IIndex::GetFieldList), not by the table's: the index's
// compared fields, then its additional fields, packed from offset 0. An index that allows
// duplicates puts the record id (signed 32-bit, little-endian, -1 for none) behind them, so the
// image is IIndex::GetKeySize() bytes. That tail is filled by IIndex::BuildKey; the object's record
// id (GetRecordId) is set by the index operations that land on a record. The two are separate.
//
// Constructors and assignment report failure by DatabaseException code 4 (AllocateIndex) with no
// message; the other operations return a status. Not locked: one thread at a time.

#include <cstdint>

#include "tavrin/records/FieldListObject.h"

namespace Tavrin::Database {

class IIndex;
class Record;

/// The key of one index of a table, as a caller holds it: an image in the index's key layout that
/// the object owns, bound to the table and the index. Not locked: one thread at a time.
class Key : public FieldListObject {
public:
    /// The version byte that Serialize writes and Deserialize requires.
    static constexpr std::uint8_t Version = 1;

    /// Not initialized: no index, index number 0.
    Key() noexcept = default;
    /// Binds to index `indexNumber` of `table` with an empty key. Throws DatabaseException code 4
    /// where Initialize answers a failure.
    Key(ITable* table, std::uint16_t indexNumber);
    /// The key of index `indexNumber` built from `record`. Throws DatabaseException code 4 where
    /// Initialize answers a failure.
    Key(std::uint16_t indexNumber, const Record& record);
    ///@{
    /// A copy of `other`'s binding, image and record id; an `other` that is not initialized gives
    /// an object that is not initialized. Throws DatabaseException code 4 when the binding fails.
    Key(const Key& other);
    Key& operator=(const Key& other);
    ///@}
    ///@{
    /// Takes over `other`'s image without allocating and leaves `other` not initialized.
    Key(Key&& other) noexcept;
    Key& operator=(Key&& other) noexcept;
    ///@}
    /// Frees an image array that the key took.
    ~Key() override = default;

    /// Binds to index `indexNumber` of `table`: 23 for a null table or one without an identity
    /// token; the status of ITable::GetIndex (26 for a number too high); 41 if the image cannot be
    /// allocated. On failure the object is as it was; on success the key is empty
    /// (IIndex::InitializeKey) and has no record id.
    StatusCode Initialize(ITable* table, std::uint16_t indexNumber);
    /// Copies `other`'s binding, key image and record id; if `other` is not initialized, this
    /// object is cleared and the status is 0.
    StatusCode Initialize(const Key& other);
    /// Status 14 if `record` is not initialized; else binds to its table and builds the key from it.
    StatusCode Initialize(std::uint16_t indexNumber, const Record& record);
    /// Rebuilds this key from `record`: 14 if this key is not initialized, 30 if the record is not
    /// bound to this key's table.
    StatusCode BuildKey(const Record& record);

    /// Empties the key (IIndex::InitializeKey) and forgets the record id; 14 if not initialized.
    StatusCode Reset() override;

    /// Serialised form, little-endian:
    ///   1 byte                version, 1
    ///   4 bytes               index number, unsigned
    ///   GetKeySize() bytes    the raw key image, with the duplicate tail if the index has one
    ///   4 bytes               record id, signed; -1 for none
    /// Status 14 if the key is not initialized, else any status of the builder.
    StatusCode Serialize(MessageBuilder& builder) const override;
    /// 23 if the message is empty or ends early, 21 for another version, 36 for an index number
    /// beyond the table's indexes, any status of Initialize(table, number), 23 for a null table.
    /// Failures before the binding leave the object as it was; after it the key stays bound to the
    /// index, with no record id.
    StatusCode Deserialize(ITable* table, MessageValidator& validator) override;

    // The FieldListObject form, which the overloads below would hide otherwise.
    using FieldListObject::CopyFields;
    /// Status 14 unless both are initialized. From a record of another table: FieldList::CopyFields
    /// by id (with `strict`); of this table: IIndex::BuildKey from the record's image.
    virtual StatusCode CopyFields(const Record& source, bool strict);
    /// Status 14 unless both are initialized. A key of the same index is copied whole; of another
    /// table, FieldList::CopyFields by id (with `strict`); of another index of this table,
    /// IIndex::BuildKey by field id.
    virtual StatusCode CopyFields(const Key& source, bool strict);

    /// The index that lays the key out; null before binding. Do not call through it unless
    /// IsInitialized().
    IIndex* GetIndex() const noexcept { return index_; }
    /// The number of that index in its table; 0 before binding.
    std::uint16_t GetIndexNumber() const noexcept { return indexNumber_; }

    ///@{
    /// A tree index's hint of the entry that a lookup last landed on: it lives in the record id and
    /// is written also through a const key. -1 when there is none.
    std::uint32_t GetCursor() const noexcept { return GetRecordId(); }
    void SetCursor(std::uint32_t cursor) const noexcept { SetRecordId(cursor); }
    ///@}

private:
    void ClearKey() noexcept;

    IIndex* index_ = nullptr;
    std::uint16_t indexNumber_ = 0;
};

}  // namespace Tavrin::Database
