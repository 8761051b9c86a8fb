#pragma once
// Index: the base of every index. It lays out and fills key images and rebuilds its
// specification; a structure (HashIndex, RedBlackTreeIndex) derives from it and overrides the
// structural operations it has. A plain Index stores nothing: it is what a remote table uses to lay
// out and fill keys, and its structural operations answer status 13 (Status::NotAvailable) without
// side effects, or throw StatusCodeException 13 where they have no status result.
//
// Owns: the key FieldList. Holds, unowned: the table's FieldList, which must outlive the index.
// Everything the key operations read is set by the constructor; no lock (see IIndex).
//
// Key image: the compared fields of the index specification in its order, each with its flags as field
// properties (bit 31 orders it descending), then the additional fields with properties 0, packed
// from offset 0 by the table's kind of list; in a Duplicate index the record id follows as a signed
// 32-bit little-endian number.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tavrin/base/Uuid.h"
#include "tavrin/indexes/IIndex.h"
#include "tavrin/indexes/KeyCopy.h"
#include "tavrin/indexes/RecordSink.h"
#include "tavrin/records/IFieldListFactory.h"

namespace Tavrin::Database {

/// The base of every index: lays out and fills key images; its structural operations answer 13 (or
/// throw StatusCodeException 13) until a structure overrides them (see the file comment above).
class Index : public IIndex {
public:
    /// Builds the key layout from `specification` and the table's list, which must outlive the
    /// index. Throws DatabaseException code 12 for a field that the table lacks, code 4 if the
    /// factory gives no list, and whatever the factory throws.
    Index(const IndexSpecification& specification, const FieldList& tableFieldList,
          const IFieldListFactory& factory);
    /// Frees the key layout.
    ~Index() override;

    void InitializeKey(Key& key) const override;
    StatusCode BuildKey(Key& key, const Key& source) const override;
    StatusCode BuildKey(Key& key, const unsigned char* recordData, std::uint32_t recordId) const override;
    StatusCode BuildKey(Key& key, const KeyValueList& values) const override;
    StatusCode BuildRecord(Record& record, const KeyValueList& values) const override;
    int CompareKeys(const Key& left, const Key& right) const override;

    std::uint16_t GetNumber() const override { return number_; }
    std::string GetName() const override { return name_; }
    std::uint32_t GetKeySize() const override { return keySize_; }
    const FieldList* GetFieldList() const override { return keyFieldList_.get(); }
    std::vector<FieldSpecification> GetFieldSpecificationList() const override;
    std::vector<std::uint16_t> GetFieldIdList() const override;
    IndexSpecification GetSpecification() const override;
    std::uint32_t GetCurrentRecords() override;

    bool IsPrimaryUnique() const override { return (properties_ & IndexSpecification::PrimaryUniqueProperty) != 0; }
    bool IsUnique() const override { return (properties_ & IndexSpecification::UniqueProperty) != 0; }
    bool IsDuplicate() const override { return (properties_ & IndexSpecification::DuplicateProperty) != 0; }
    bool IsTree() const override { return type_ == IndexSpecification::RedBlack; }

    /// Does nothing here: a plain index has no structure to check.
    void CheckIntegrity() override;

    // ---- Structural operations: 13 here -------------------------------------------------------
    // Files are named by the structure: table name, "-", index name (blanks as "_"), a type word
    // and ".idx". Create and Open take the Uuid of the table's store.

    /// Creates the index's files in `directory` under names made from `tableName` and the index's
    /// name, carrying `uuid`, with no keys; failures are thrown. Here: throws StatusCodeException 13.
    virtual void Create(const std::string& directory, const std::string& tableName, const Tavrin::Uuid& uuid);
    /// Creates a temporary index, in files that no walk of a directory finds; failures are thrown.
    /// Here: throws StatusCodeException 13.
    virtual void Create();
    /// Opens the index's files in `directory` for `tableName`; they must carry `uuid`. Here: throws
    /// StatusCodeException 13.
    virtual StatusCode Open(const std::string& directory, const std::string& tableName, const Tavrin::Uuid& uuid);
    /// Saves the index, then copies its files under the names for `directory` and `tableName`; the
    /// index stays on its own files. 13 here.
    virtual StatusCode SaveAs(const std::string& directory, const std::string& tableName);
    /// Removes every key. 13 here.
    virtual StatusCode Clear();
    /// Adds `key` with `recordId`. 13 here.
    virtual StatusCode Add(const Key& key, std::uint32_t recordId);
    /// Removes the entry that holds `key`. 13 here.
    virtual StatusCode Remove(const Key& key);
    /// Exact lookup of `key`: the record id of its entry in `recordId`. 13 here.
    virtual StatusCode Find(const Key& key, std::uint32_t& recordId);
    /// The smallest key, copied into `key`, and its record id. 13 here.
    virtual StatusCode GetFirst(Key& key, std::uint32_t& recordId);
    /// The greatest key, copied into `key`, and its record id. 13 here.
    virtual StatusCode GetLast(Key& key, std::uint32_t& recordId);
    /// The key after `key` in the index's order, copied into `key`, and its record id. 13 here.
    virtual StatusCode GetNext(Key& key, std::uint32_t& recordId);
    /// The key before `key` in the index's order, copied into `key`, and its record id. 13 here.
    virtual StatusCode GetPrevious(Key& key, std::uint32_t& recordId);
    /// The first key that matches `key` in the key fields before `fieldId` and in the first `length`
    /// bytes of that field, copied into `key`, and its record id. 13 here.
    virtual StatusCode GetFirstEqual(Key& key, std::uint32_t& recordId, std::uint16_t fieldId, std::uint32_t length);
    /// The last key that matches `key` as GetFirstEqual matches, copied into `key`, and its record
    /// id. 13 here.
    virtual StatusCode GetLastEqual(Key& key, std::uint32_t& recordId, std::uint16_t fieldId, std::uint32_t length);
    /// The key after `key` if it still matches as GetFirstEqual matches, copied into `key`, and its
    /// record id. 13 here.
    virtual StatusCode GetNextEqual(Key& key, std::uint32_t& recordId, std::uint16_t fieldId, std::uint32_t length);
    /// The key before `key` if it still matches as GetFirstEqual matches, copied into `key`, and its
    /// record id. 13 here.
    virtual StatusCode GetPreviousEqual(Key& key, std::uint32_t& recordId, std::uint16_t fieldId,
                                        std::uint32_t length);
    /// Finds `count` keys as `count` calls of Find in order would: recordIds[i] and statuses[i]
    /// belong to keys[i] (recordIds[i] is left as it was where the status is not 0), and each key's
    /// cursor is set as Find sets it. A structure may run the lookups side by side. Here: Find per
    /// key.
    virtual void FindMany(Key* const* keys, std::uint32_t count, std::uint32_t* recordIds, StatusCode* statuses);
    /// Up to `count` steps on from `key` as GetNext (`forward`) or GetPrevious would take them, or,
    /// with `prefix`, GetNextEqual or GetPreviousEqual with `fieldId` and `length`: each record goes
    /// to `sink` (Take) in walk order, and the walk stops early where Take answers false. The key
    /// ends as the last step that delivered leaves it. The status of the step that ended the walk
    /// (6 at the end of the keys), or 0 when `count` records were taken or Take stopped it. Here:
    /// the steps one by one.
    virtual StatusCode Walk(Key& key, bool forward, bool prefix, std::uint16_t fieldId, std::uint32_t length,
                            std::uint32_t count, RecordSink& sink);
    /// Writes `uuid` into the index's files. Here: throws StatusCodeException 13.
    virtual StatusCode SetUuid(const Tavrin::Uuid& uuid);
    /// Writes the index's files through to the disk: 0 here and for a temporary index, 16 when
    /// the files are not open, else the status of the failed write.
    virtual StatusCode Sync();
    /// Closes the index without a save and removes the files that it holds open; files that it does
    /// not hold (another opener's) stay. Nothing here.
    virtual void Discard() noexcept;

protected:
    /// The table's field list, not owned.
    const FieldList& GetTableFieldList() const noexcept { return *tableFieldList_; }
    /// How many leading key fields are compared and hashed.
    std::uint32_t GetComparedFieldCount() const noexcept { return comparedFields_; }
    /// The number in the table's list of key field `keyFieldNumber`.
    std::uint32_t GetTableFieldNumber(std::uint32_t keyFieldNumber) const noexcept {
        return fieldNumbers_[keyFieldNumber];
    }

private:
    /// Appends one key field: a copy of the table's field `id` at `offset` with `properties`; returns
    /// its maximum length. Throws code 12 if the table lacks it.
    std::uint32_t AppendKeyField(std::vector<FieldSpecification>& keyFields, std::uint16_t id,
                                 std::uint32_t offset, std::uint32_t properties);
    /// True when `key` is laid out by this index, so that its buffer holds GetKeySize() bytes.
    bool IsOwnKey(const Key& key) const noexcept;

    std::uint16_t number_;
    std::string name_;
    IndexSpecification::Type type_;
    std::uint32_t properties_;
    std::unique_ptr<FieldList> keyFieldList_;
    const FieldList* tableFieldList_;
    std::vector<std::uint32_t> fieldNumbers_;
    std::uint32_t comparedFields_;
    /// The key list's data length, plus 4 for the duplicate tail.
    std::uint32_t keySize_ = 0;
    /// How keys are built from record images; planned once the key list exists.
    std::optional<KeyCopy> keyCopy_;
};

}  // namespace Tavrin::Database
