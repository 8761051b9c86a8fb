#include "tavrin/tables/UnmanagedTableFactory.h"

#include "tavrin/tables/TableFactorySupport.h"
#include "tavrin/tables/UnmanagedTable.h"

namespace Tavrin::Database {

namespace {
constexpr const char* kCreate = "Tavrin::Database::UnmanagedTableFactory::Create";
}  // namespace

ITable* UnmanagedTableFactory::Create(const std::string& name, std::uint32_t properties,
                                      const FieldSpecification* const fields, std::uint32_t numberOfFields,
                                      std::uint32_t maxRecords, std::uint32_t recordLength, std::uint32_t growRecords,
                                      std::uint32_t cacheSize) const {
    return Create(name, properties, TableFactorySupport::FieldArrayToVector(kCreate, name, fields, numberOfFields),
                  maxRecords, recordLength, growRecords, cacheSize);
}

ITable* UnmanagedTableFactory::Create(const std::string& name, std::uint32_t properties,
                                      const std::vector<FieldSpecification>& fields, std::uint32_t maxRecords,
                                      std::uint32_t recordLength, std::uint32_t growRecords,
                                      std::uint32_t cacheSize) const {
    return Build(kCreate, {name, nullptr, properties, fields, maxRecords, recordLength, growRecords, cacheSize});
}

ITable* UnmanagedTableFactory::Create(const std::string& name, const std::string& directory, std::uint32_t properties,
                                      const FieldSpecification* const fields, std::uint32_t numberOfFields,
                                      std::uint32_t maxRecords, std::uint32_t recordLength, std::uint32_t growRecords,
                                      std::uint32_t cacheSize) const {
    return Create(name, directory, properties,
                  TableFactorySupport::FieldArrayToVector(kCreate, name, fields, numberOfFields), maxRecords,
                  recordLength, growRecords, cacheSize);
}

ITable* UnmanagedTableFactory::Create(const std::string& name, const std::string& directory, std::uint32_t properties,
                                      const std::vector<FieldSpecification>& fields, std::uint32_t maxRecords,
                                      std::uint32_t recordLength, std::uint32_t growRecords,
                                      std::uint32_t cacheSize) const {
    return Build(kCreate, {name, &directory, properties, fields, maxRecords, recordLength, growRecords, cacheSize});
}

ITable* UnmanagedTableFactory::Build(ThrowSite site, const Table::Settings& settings) const {
    TableFactorySupport::CheckSettings(site, settings, false);
    return TableFactorySupport::ConstructTable(site, settings, new (std::nothrow) UnmanagedTable,
                                               [&settings](UnmanagedTable& table) { table.Construct(settings); });
}

}  // namespace Tavrin::Database
