#include "tavrin/tables/TableFactorySupport.h"

#include "tavrin/records/ManagedFieldList.h"
#include "tavrin/schema/TableSpecification.h"

namespace Tavrin::Database::TableFactorySupport {

std::vector<FieldSpecification> FieldArrayToVector(ThrowSite site, const std::string& name,
                                                   const FieldSpecification* fields, std::uint32_t numberOfFields) {
    if (fields == nullptr || numberOfFields == 0) {
        ThrowDatabase(site, DatabaseException::InvalidParameter, "invalid field list for table <%s>", name.c_str());
    }
    return std::vector<FieldSpecification>(fields, fields + numberOfFields);
}

void CheckSettings(ThrowSite site, const Table::Settings& settings, bool managed) {
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
    // Every Record of the table allocates this much, and a description from a message may ask for
    // gigabytes: the bound holds before the list or anything else is made.
    const std::uint64_t recordLength =
        managed ? ManagedFieldList::DataLengthOf(settings.fields) : std::uint64_t{settings.recordLength};
    if (recordLength > TableSpecification::MaxRecordLength) {
        ThrowDatabase(site, DatabaseException::InvalidParameter,
                      "record length <%llu> of table <%s> passes the limit of <%u> bytes",
                      static_cast<unsigned long long>(recordLength), name,
                      static_cast<unsigned>(TableSpecification::MaxRecordLength));
    }
}

void ThrowAllocationFailure(ThrowSite site, const Table::Settings& settings) {
    if (settings.directory == nullptr) ThrowDatabase(site, DatabaseException::AllocateTable);
    ThrowDatabase(site, DatabaseException::AllocateTable, "<%s>", settings.name.c_str());
}

}  // namespace Tavrin::Database::TableFactorySupport
