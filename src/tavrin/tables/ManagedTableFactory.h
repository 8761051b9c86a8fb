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
//   cannot be made or that exists and does not open, a cache size other than 0xFFFFFFFF), with
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

class ManagedTableFactory : public Tavrin::Singleton<ManagedTableFactory> {
public:
    ///@{
    /// A table without files: it lives in a temporary mapped file.
    ITable* Create(const std::string& name, std::uint32_t properties, const FieldSpecification* const fields,
                   std::uint32_t numberOfFields, std::uint32_t maxRecords, std::uint32_t growRecords,
                   std::uint32_t cacheSize) const;
    ITable* Create(const std::string& name, std::uint32_t properties, const std::vector<FieldSpecification>& fields,
                   std::uint32_t maxRecords, std::uint32_t growRecords, std::uint32_t cacheSize) const;
    ///@}
    ///@{
    /// A table whose files lie in `directory`.
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
