#include "tables/ManagedTable.h"

#include "base/Throw.h"
#include "records/ManagedFieldListFactory.h"

namespace Tavrin::Database {

ManagedTable::~ManagedTable() { ReleaseStorage(); }

void ManagedTable::Construct(const Settings& settings) { Table::Construct(settings, &ManagedTable::MakeFieldList); }

FieldList* ManagedTable::MakeFieldList(const std::vector<FieldSpecification>& fields, std::uint32_t) {
    return ManagedFieldListFactory::GetInstance().Create(fields);
}

void ManagedTable::CreateIndexes(std::vector<IndexSpecification>&) {
    ThrowStatus("Tavrin::Database::ManagedTable::CreateIndexes", Status::NotAvailable);  // not available yet
}

void ManagedTable::CreateTemporaryIndex(IndexSpecification&) {
    ThrowStatus("Tavrin::Database::ManagedTable::CreateTemporaryIndex", Status::NotAvailable);  // not available yet
}

}  // namespace Tavrin::Database
