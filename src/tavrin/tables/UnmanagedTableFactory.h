#pragma once
// Makes UnmanagedTable objects; one process-wide instance through GetInstance(). Holds no state, so
// it may be used from any thread.
//
// The four forms and their failures are those of ManagedTableFactory, with the record length that
// the caller chooses standing right behind maxRecords; a record length above
// TableSpecification::MaxRecordLength (64 MiB) is refused with the argument checks, and a field that
// ends beyond the record length by the layout (DatabaseException 12, with code 8 "<name>" added).

#include <cstdint>
#include <string>
#include <vector>

#include "tavrin/base/Singleton.h"
#include "tavrin/records/FieldSpecification.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Database {

class UnmanagedTableFactory : public Tavrin::Singleton<UnmanagedTableFactory> {
public:
    ///@{
    /// A table without files: it lives in a temporary mapped file.
    ITable* Create(const std::string& name, std::uint32_t properties, const FieldSpecification* const fields,
                   std::uint32_t numberOfFields, std::uint32_t maxRecords, std::uint32_t recordLength,
                   std::uint32_t growRecords, std::uint32_t cacheSize) const;
    ITable* Create(const std::string& name, std::uint32_t properties, const std::vector<FieldSpecification>& fields,
                   std::uint32_t maxRecords, std::uint32_t recordLength, std::uint32_t growRecords,
                   std::uint32_t cacheSize) const;
    ///@}
    ///@{
    /// A table whose files lie in `directory`.
    ITable* Create(const std::string& name, const std::string& directory, std::uint32_t properties,
                   const FieldSpecification* const fields, std::uint32_t numberOfFields, std::uint32_t maxRecords,
                   std::uint32_t recordLength, std::uint32_t growRecords, std::uint32_t cacheSize) const;
    ITable* Create(const std::string& name, const std::string& directory, std::uint32_t properties,
                   const std::vector<FieldSpecification>& fields, std::uint32_t maxRecords,
                   std::uint32_t recordLength, std::uint32_t growRecords, std::uint32_t cacheSize) const;
    ///@}

private:
    friend class Tavrin::Singleton<UnmanagedTableFactory>;
    UnmanagedTableFactory() = default;

    ITable* Build(ThrowSite site, const Table::Settings& settings) const;
};

}  // namespace Tavrin::Database
