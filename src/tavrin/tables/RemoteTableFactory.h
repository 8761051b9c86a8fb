#pragma once
// Makes RemoteTable objects from the message that a table writes with SerializeSpecification; one
// process-wide instance through GetInstance(). Holds no state, so it may be used from any thread.
//
// Create returns a table that the caller owns, or throws: DatabaseException 8 (no message) when the
// table can't be allocated, else whatever the table's construction throws (see RemoteTable.h), after
// the half-made table is deleted.

#include "tavrin/base/MessageValidator.h"
#include "tavrin/base/Singleton.h"
#include "tavrin/tables/ITable.h"

namespace Tavrin::Database {

/// Makes remote tables (RemoteTable) from the description that ITable::SerializeSpecification
/// writes; one process-wide instance through GetInstance(). Holds no state, so it may be used from
/// any thread.
class RemoteTableFactory : public Tavrin::Singleton<RemoteTableFactory> {
public:
    /// Reads a table description from `validator` and makes a table with the far table's name,
    /// layout, property bits, fields and indexes, under the same field ids, record length and index
    /// numbers, but with no store and no files: records and keys bound to it can be built and moved
    /// through messages, and whatever needs records answers 13. It always has a mutex, and never
    /// changes after construction. The caller owns the table; failure is thrown, never a null
    /// result, and the half-made table is deleted: DatabaseException 8 (no message) when the table
    /// can't be allocated; StatusCodeException with the status of a short or malformed message (23,
    /// 21 for a description of a newer version); DatabaseException 12 for a description that a
    /// table factory refuses (no records, no fields, a record longer than
    /// TableSpecification::MaxRecordLength), and for an index description that
    /// IndexSpecification::Validate refuses, that repeats a name, makes a second primary unique
    /// index, has no key fields or an unknown type, or names a field that the table lacks (a hash
    /// index is taken: it only lays out keys here); what the field list throws for a field;
    /// DatabaseException 4 when an index can't be allocated.
    ITable* Create(MessageValidator& validator) const;

private:
    friend class Tavrin::Singleton<RemoteTableFactory>;
    RemoteTableFactory() = default;
};

}  // namespace Tavrin::Database
