#pragma once
// Makes ManagedTable objects; one process-wide instance through GetInstance(). Holds no state, so
// it may be used from any thread.
//
// Every Create returns a table that the caller owns, and reports failure by exception only:
//   DatabaseException 12 for bad arguments, checked in this order and before anything is made:
//     "invalid field list for table <name>"        null array or count 0 (array forms)
//     "invalid number of records <0> for table <name>"
//     "empty field list for table <name>"
//     "empty directory for table <name>"           (forms with a directory)
//     "record length <length> of table <name> passes the limit of <limit> bytes"
//                                                   the fields' layout is longer than
//                                                   TableSpecification::MaxRecordLength (64 MiB)
//   DatabaseException 8 when the table cannot be allocated;
//   anything thrown while the table is constructed (a field the layout refuses, a record file that
//   cannot be made or that exists and does not open), with
//   DatabaseException 8 "<name>" added to its chain.
//
// growRecords 0xFFFFFFFF means maxRecords / 2; cacheSize 0xFFFFFFFF keeps the whole store in memory.
// With property bit 0 and a directory, the record file directory/name.tab is opened, or created
// when there is none; no directory is ever created.

#include <cstdint>
#include <string>
#include <vector>

#include "tavrin/base/Singleton.h"
#include "tavrin/records/FieldSpecification.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Database {

/// Makes managed tables (ManagedTable), whose layout works out the record length from the fields;
/// one process-wide instance through GetInstance(). Holds no state, so it may be used from any
/// thread.
class ManagedTableFactory : public Tavrin::Singleton<ManagedTableFactory> {
public:
    ///@{
    /// A managed table without files: its store lives in a temporary mapped file, and its records
    /// go with the table. The array form copies `numberOfFields` specifications from `fields` and
    /// goes on as the vector form. growRecords 0xFFFFFFFF means maxRecords / 2; cacheSize
    /// 0xFFFFFFFF keeps the whole store in memory, any other value is the kilobytes of a disk store's
    /// cache. With property bit 0 the store is created at once,
    /// else the caller calls CreateRecordFile; with bit 1 the table has a mutex. The caller owns
    /// the table; failure is thrown, never a null result. Before anything is made,
    /// DatabaseException 12 for, in this order, a null array or a count of 0, maxRecords 0, no
    /// fields, a layout longer than TableSpecification::MaxRecordLength; then DatabaseException 8
    /// (no message) when the table can't be allocated; then what the construction throws (a field
    /// that the layout refuses, a store that can't be
    /// made) with DatabaseException 8 `<name>` added to its chain.
    ITable* Create(const std::string& name, std::uint32_t properties, const FieldSpecification* const fields,
                   std::uint32_t numberOfFields, std::uint32_t maxRecords, std::uint32_t growRecords,
                   std::uint32_t cacheSize) const;
    ITable* Create(const std::string& name, std::uint32_t properties, const std::vector<FieldSpecification>& fields,
                   std::uint32_t maxRecords, std::uint32_t growRecords, std::uint32_t cacheSize) const;
    ///@}
    ///@{
    /// A managed table whose record file is `directory` + name + ".tab" (each blank of the name
    /// written '_'), its index files beside it. With property bit 0 the record file is opened and
    /// its stored description checked, or created when there is none; a file that exists but does
    /// not open (left open by a crash, damaged, another table's) is left as it is, and the
    /// construction throws StatusCodeException with the open's status. No directory is ever
    /// created: in a missing one the record file can't be made (DatabaseException 9, then 8).
    /// Otherwise as the forms without a directory, and also DatabaseException 12 for an empty
    /// `directory` (checked after the fields, before the length), and the message `<name>` when
    /// the table can't be allocated.
    ITable* Create(const std::string& name, const std::string& directory, std::uint32_t properties,
                   const FieldSpecification* const fields, std::uint32_t numberOfFields, std::uint32_t maxRecords,
                   std::uint32_t growRecords, std::uint32_t cacheSize) const;
    ITable* Create(const std::string& name, const std::string& directory, std::uint32_t properties,
                   const std::vector<FieldSpecification>& fields, std::uint32_t maxRecords,
                   std::uint32_t growRecords, std::uint32_t cacheSize) const;
    ///@}

private:
    friend class Tavrin::Singleton<ManagedTableFactory>;
    ManagedTableFactory() = default;

    ITable* Build(ThrowSite site, const Table::Settings& settings) const;
};

}  // namespace Tavrin::Database
