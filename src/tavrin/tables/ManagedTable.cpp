#include "tavrin/tables/ManagedTable.h"

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/MutexHolder.h"
#include "tavrin/records/ManagedFieldListFactory.h"

namespace Tavrin::Database {

ManagedTable::~ManagedTable() { ReleaseStorage(); }

void ManagedTable::Construct(const Settings& settings) { Table::Construct(settings, &ManagedTable::MakeFieldList); }

FieldList* ManagedTable::MakeFieldList(const std::vector<FieldSpecification>& fields, std::uint32_t) {
    return ManagedFieldListFactory::GetInstance().Create(fields);
}

void ManagedTable::CreateIndexes(std::vector<IndexSpecification>& specifications) {
    MutexHolder holder(GetMutex());
    Table::CreateIndexes(specifications, ManagedFieldListFactory::GetInstance());
}

void ManagedTable::CreateTemporaryIndex(IndexSpecification& specification) {
    MutexHolder holder(GetMutex());
    if (GetPrimaryIndex() == NoIndex) {
        ThrowDatabase("Tavrin::Database::ManagedTable::CreateTemporaryIndex", DatabaseException::AllocateIndex);
    }
    CreateIndex(specification, ManagedFieldListFactory::GetInstance());
    NoteTemporaryIndex();
}

}  // namespace Tavrin::Database
