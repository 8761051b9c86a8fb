#pragma once
// RemoteTable: a table without records, built from the description that another process's table
// wrote with SerializeSpecification. It has that table's name, layout, property bits and indexes,
// so Record and Key objects can be bound to it, built, and moved through messages with the same
// field ids, record length and index numbers as the far side. Made by RemoteTableFactory.
//
// Owns: a mutex (always, whatever property bit 1 says), the field list and one plain Index per
// index of the far table, which lays keys out and holds nothing. No store, no files: IsInMemory()
// is true and the key field set stays empty. Nothing changes after construction, so the operations
// that work here (accessors, SerializeSpecification, ResetRecord, BuildRecord and the message
// operations) may be called from several threads; only construction takes the mutex.
//
// Everything else is Table's: without a store, the operations that need records answer status 13
// (see Table.h). Only the index-building operations differ: CreateIndexes and CreateTemporaryIndex
// throw DatabaseException 4 whatever the arguments.

#include <vector>

#include "tavrin/tables/Table.h"

namespace Tavrin::Database {

class RemoteTable final : public Table {
public:
    ~RemoteTable() override;

    void CreateIndexes(std::vector<IndexSpecification>& specifications) override;
    void CreateTemporaryIndex(IndexSpecification& specification) override;
    bool IsManaged() override { return managed_; }

private:
    friend class RemoteTableFactory;

    RemoteTable() = default;
    /// Reads the table description, the number of indexes and each index description, then builds
    /// the mutex, the field list and the indexes, and appends the indexes under the mutex, taking
    /// index numbers as they come.
    /// A short or malformed message throws StatusCodeException with its status (23, 21 for a newer
    /// version, or a status of the specifications).
    /// The description is checked as one that a factory is given, before anything is made: 0
    /// records, no fields, or a record longer than TableSpecification::MaxRecordLength (64 MiB, the
    /// managed layout's length computed from the fields, or the unmanaged record length) throw
    /// DatabaseException 12 naming the table. The field list validates each field. Each index
    /// description passes IndexSpecification::Validate and the checks a table makes when it creates
    /// an index (CheckNewIndex: a repeated name, a second primary unique index, no key fields, an
    /// unknown type), and Index's constructor refuses a key field the table lacks; each throws what
    /// it throws there. DatabaseException 4 when an index can't be allocated. So every accessor that
    /// rebuilds a description (GetIndexSpecificationList, SerializeSpecification) works on the result.
    void Construct(MessageValidator& validator);

    bool managed_ = false;
};

}  // namespace Tavrin::Database
