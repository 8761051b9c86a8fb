#include "tavrin/tables/ManagedTableFactory.h"

#include "tavrin/tables/ManagedTable.h"
#include "tavrin/tables/TableFactorySupport.h"

namespace Tavrin::Database {

namespace {
constexpr const char* kCreate = "Tavrin::Database::ManagedTableFactory::Create";
}  // namespace

ITable* ManagedTableFactory::Create(const std::string& name, std::uint32_t properties,
                                    const FieldSpecification* const fields, std::uint32_t numberOfFields,
                                    std::uint32_t maxRecords, std::uint32_t growRecords,
                                    std::uint32_t cacheSize) const {
    return Create(name, properties, TableFactorySupport::FieldArrayToVector(kCreate, name, fields, numberOfFields),
                  maxRecords, growRecords, cacheSize);
}

ITable* ManagedTableFactory::Create(const std::string& name, std::uint32_t properties,
                                    const std::vector<FieldSpecification>& fields, std::uint32_t maxRecords,
                                    std::uint32_t growRecords, std::uint32_t cacheSize) const {
    return Build(kCreate, {name, nullptr, properties, fields, maxRecords, 0, growRecords, cacheSize});
}

ITable* ManagedTableFactory::Create(const std::string& name, const std::string& directory, std::uint32_t properties,
                                    const FieldSpecification* const fields, std::uint32_t numberOfFields,
                                    std::uint32_t maxRecords, std::uint32_t growRecords,
                                    std::uint32_t cacheSize) const {
    return Create(name, directory, properties,
                  TableFactorySupport::FieldArrayToVector(kCreate, name, fields, numberOfFields), maxRecords,
                  growRecords, cacheSize);
}

ITable* ManagedTableFactory::Create(const std::string& name, const std::string& directory, std::uint32_t properties,
                                    const std::vector<FieldSpecification>& fields, std::uint32_t maxRecords,
                                    std::uint32_t growRecords, std::uint32_t cacheSize) const {
    return Build(kCreate, {name, &directory, properties, fields, maxRecords, 0, growRecords, cacheSize});
}

ITable* ManagedTableFactory::Build(ThrowSite site, const Table::Settings& settings) const {
    TableFactorySupport::CheckSettings(site, settings, true);
    return TableFactorySupport::ConstructTable(site, settings, new (std::nothrow) ManagedTable,
                                               [&settings](ManagedTable& table) { table.Construct(settings); });
}

}  // namespace Tavrin::Database
