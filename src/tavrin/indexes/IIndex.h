#pragma once
// IIndex: what a table and its Key objects use of an index.
//
// These are the operations that do not depend on how an index stores its keys: the key layout,
// building and comparing key images, the properties and the index specification. The structural
// operations (create, open, add, find, walk) are declared by Index, which every index derives from.
//
// A key image is laid out by the index's own FieldList (GetFieldList): the compared fields in the
// index's order, then the additional fields, packed from offset 0. In an index that allows
// duplicates the record id follows as a signed 32-bit number (-1: not set), and a key together
// with its record id identifies an entry. GetKeySize() is the whole size.
//
// An index has no lock of its own: its table's mutex covers the structural operations. The
// operations here read only what the constructor set and the caller's objects, and need none.

#include <cstdint>
#include <string>
#include <vector>

#include "tavrin/base/Status.h"
#include "tavrin/indexes/KeyValueList.h"
#include "tavrin/records/FieldList.h"
#include "tavrin/records/FieldSpecification.h"
#include "tavrin/schema/IndexSpecification.h"

namespace Tavrin::Database {

class Key;
class Record;

/// What a table and its Key objects use of an index: the key layout, the building and comparing of
/// key images, the properties and the index description. Needs no lock (see the file comment above).
class IIndex {
public:
    /// An index with no state of its own here.
    IIndex() = default;
    /// Not copyable.
    IIndex(const IIndex&) = delete;
    /// Not copyable.
    IIndex& operator=(const IIndex&) = delete;
    /// Destroys the index.
    virtual ~IIndex() = default;

    /// Empties a key bound to this index; a duplicate tail becomes -1.
    virtual void InitializeKey(Key& key) const = 0;
    /// Fills `key` from a key of another index of the same table, by field id. 14 if `source` is not
    /// initialized or `key` is not laid out by this index.
    virtual StatusCode BuildKey(Key& key, const Key& source) const = 0;
    /// Fills `key` from a record image of the table; a duplicate tail takes `recordId`. 14 if `key`
    /// is not laid out by this index.
    virtual StatusCode BuildKey(Key& key, const unsigned char* recordData, std::uint32_t recordId) const = 0;
    /// Sets the key's fields from values in key order. 23 (key untouched) for more values than fields.
    virtual StatusCode BuildKey(Key& key, const KeyValueList& values) const = 0;
    /// Sets a record's key fields from values in key order. 23 for more values than key fields.
    virtual StatusCode BuildRecord(Record& record, const KeyValueList& values) const = 0;
    /// -1, 0 or 1: the compared fields in their directions, then a duplicate tail as signed numbers.
    virtual int CompareKeys(const Key& left, const Key& right) const = 0;

    /// The index's number in its table, from its specification.
    virtual std::uint16_t GetNumber() const = 0;
    /// The index's name, from its specification.
    virtual std::string GetName() const = 0;
    /// Bytes of a key image, the duplicate tail included.
    virtual std::uint32_t GetKeySize() const = 0;
    /// The key layout, owned by the index and valid for its life.
    virtual const FieldList* GetFieldList() const = 0;
    /// A copy of the key fields' specifications, in key order.
    virtual std::vector<FieldSpecification> GetFieldSpecificationList() const = 0;
    /// The ids of the key fields, in key order.
    virtual std::vector<std::uint16_t> GetFieldIdList() const = 0;
    /// The index specification that the index was made from, rebuilt from its key layout.
    virtual IndexSpecification GetSpecification() const = 0;
    /// Keys the index holds; throws StatusCodeException 13 where the index stores nothing.
    virtual std::uint32_t GetCurrentRecords() = 0;

    /// Whether the index description has the PrimaryUnique property.
    virtual bool IsPrimaryUnique() const = 0;
    /// Whether the index description has the Unique property.
    virtual bool IsUnique() const = 0;
    /// Whether the index description has the Duplicate property: keys carry the record id as a tail.
    virtual bool IsDuplicate() const = 0;
    /// Whether the index is a red-black tree.
    virtual bool IsTree() const = 0;

    /// Checks the index's own structure; failures are thrown.
    virtual void CheckIntegrity() = 0;
};

}  // namespace Tavrin::Database
