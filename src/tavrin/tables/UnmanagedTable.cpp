#include "tavrin/tables/UnmanagedTable.h"

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/MutexHolder.h"
#include "tavrin/records/UnmanagedFieldListFactory.h"

namespace Tavrin::Database {

UnmanagedTable::~UnmanagedTable() { ReleaseStorage(); }

void UnmanagedTable::Construct(const Settings& settings) { Table::Construct(settings, &UnmanagedTable::MakeFieldList); }

FieldList* UnmanagedTable::MakeFieldList(const std::vector<FieldSpecification>& fields,
                                          std::uint32_t recordLength) {
    return UnmanagedFieldListFactory::GetInstance().Create(fields, recordLength);
}

void UnmanagedTable::CreateIndexes(std::vector<IndexSpecification>& specifications) {
    MutexHolder holder(GetMutex());
    Table::CreateIndexes(specifications, UnmanagedFieldListFactory::GetInstance());
}

void UnmanagedTable::CreateTemporaryIndex(IndexSpecification& specification) {
    MutexHolder holder(GetMutex());
    if (GetPrimaryIndex() == NoIndex) {
        ThrowDatabase("Tavrin::Database::UnmanagedTable::CreateTemporaryIndex", DatabaseException::AllocateIndex);
    }
    CreateIndex(specification, UnmanagedFieldListFactory::GetInstance());
    NoteTemporaryIndex();
}

}  // namespace Tavrin::Database
