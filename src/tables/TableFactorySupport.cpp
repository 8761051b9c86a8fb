#include "tables/TableFactorySupport.h"

namespace Tavrin::Database::TableFactorySupport {

std::vector<FieldSpecification> FieldArrayToVector(ThrowSite site, const std::string& name,
                                                   const FieldSpecification* fields, std::uint32_t numberOfFields) {
    if (fields == nullptr || numberOfFields == 0) {
        ThrowDatabase(site, DatabaseException::InvalidParameter, "invalid field list for table <%s>", name.c_str());
    }
    return std::vector<FieldSpecification>(fields, fields + numberOfFields);
}

void CheckSettings(ThrowSite site, const Table::Settings& settings) {
    const char* name = settings.name.c_str();
    if (settings.maxRecords == 0) {
        ThrowDatabase(site, DatabaseException::InvalidParameter, "invalid number of records <%u> for table <%s>",
                      settings.maxRecords, name);
    }
    if (settings.fields.empty()) {
        ThrowDatabase(site, DatabaseException::InvalidParameter, "empty field list for table <%s>", name);
    }
    if (settings.directory != nullptr && settings.directory->empty()) {
        ThrowDatabase(site, DatabaseException::InvalidParameter, "empty directory for table <%s>", name);
    }
}

void ThrowAllocationFailure(ThrowSite site, const Table::Settings& settings) {
    if (settings.directory == nullptr) ThrowDatabase(site, DatabaseException::AllocateTable);
    ThrowDatabase(site, DatabaseException::AllocateTable, "<%s>", settings.name.c_str());
}

}  // namespace Tavrin::Database::TableFactorySupport
