#include "tables/UnmanagedTable.h"

#include "base/Throw.h"
#include "records/UnmanagedFieldListFactory.h"

namespace Tavrin::Database {

UnmanagedTable::~UnmanagedTable() { ReleaseStorage(); }

void UnmanagedTable::Construct(const Settings& settings) { Table::Construct(settings, &UnmanagedTable::MakeFieldList); }

FieldList* UnmanagedTable::MakeFieldList(const std::vector<FieldSpecification>& fields,
                                          std::uint32_t recordLength) {
    return UnmanagedFieldListFactory::GetInstance().Create(fields, recordLength);
}

void UnmanagedTable::CreateIndexes(std::vector<IndexSpecification>&) {
    ThrowStatus("Tavrin::Database::UnmanagedTable::CreateIndexes", Status::NotAvailable);  // not available yet
}

void UnmanagedTable::CreateTemporaryIndex(IndexSpecification&) {
    ThrowStatus("Tavrin::Database::UnmanagedTable::CreateTemporaryIndex", Status::NotAvailable);  // not available yet
}

}  // namespace Tavrin::Database
