#include "tavrin/tables/Table.h"

#include <new>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/PrivateMutexFactory.h"
#include "tavrin/base/Throw.h"
#include "tavrin/indexes/IIndex.h"
#include "tavrin/schema/TableSpecification.h"
#include "tavrin/storage/DiskDataStore.h"
#include "tavrin/storage/MemoryDataStore.h"

namespace Tavrin::Database {

Table::Table() = default;

Table::~Table() {
    ReleaseStorage();
    fieldList_.reset();
    mutex_.reset();
}

void Table::ReleaseStorage() noexcept {
    for (auto& index : indexes_) index.reset();
    indexes_.clear();
    numberOfIndexes_ = 0;
    dataStore_.reset();
}

void Table::Construct(const Settings& settings, FieldListMaker makeFieldList) {
    name_ = settings.name;
    properties_ = settings.properties;
    initialMaxRecords_ = settings.maxRecords;
    growRecords_ = settings.growRecords == HalfOfMaxRecords ? settings.maxRecords >> 1 : settings.growRecords;
    cacheSize_ = settings.cacheSize;
    if (settings.directory != nullptr && !settings.directory->empty()) SetFileNames(*settings.directory);

    if (TableSpecification::ShouldCreateMutex(properties_)) {
        mutex_.reset(PrivateMutexFactory::GetInstance().Create(false));
    }
    fieldList_.reset(makeFieldList(settings.fields, settings.recordLength));
    if (!fieldList_) ThrowDatabase("Tavrin::Database::Table::Construct", DatabaseException::AllocateFieldList);
    MakeStore();
    if (TableSpecification::ShouldCreateRecordFile(properties_)) CreateOrOpenRecordFile();
}

void Table::MakeStore() {
    // The whole store in one mapping, or, for a cache size, the records in a file of their own
    // behind a cache of that many kilobytes.
    if (HasDiskStore()) {
        dataStore_.reset(new (std::nothrow) DiskDataStore(this, fieldList_->GetDataLength(), initialMaxRecords_,
                                                          growRecords_, cacheSize_));
    } else {
        dataStore_.reset(new (std::nothrow)
                             MemoryDataStore(this, fieldList_->GetDataLength(), initialMaxRecords_, growRecords_));
    }
    if (!dataStore_) ThrowDatabase("Tavrin::Database::Table::Construct", DatabaseException::AllocateTable);
}

StatusCode Table::SerializeUserData(MessageBuilder& builder) {
    return GetSpecification().Serialize(builder, TableSpecification::CurrentVersion);
}

StatusCode Table::DeserializeUserData(MessageValidator& validator) {
    TableSpecification stored;
    const StatusCode status = stored.Deserialize(validator);
    if (status != Status::Success) return status;
    // Equality of specifications compares exactly name, layout, fields one by one and record length.
    return stored == GetSpecification() ? Status::Success : Status::DescriptionDiffers;
}

// Not available yet, on any table. Once one of these works, it must still answer 13 for a table
// without a store (HasNoStore), which has nothing to copy, convert or check.
StatusCode Table::Convert() { return Status::NotAvailable; }

ITable* Table::Clone(const std::string&, bool, bool, std::uint32_t) {
    ThrowStatus("Tavrin::Database::Table::Clone", Status::NotAvailable);
}

StatusCode Table::CopyRecords(ITable*, bool, std::uint32_t) { return Status::NotAvailable; }

void Table::CheckIntegrity() {
    ThrowStatus("Tavrin::Database::Table::CheckIntegrity", Status::NotAvailable);
}

}  // namespace Tavrin::Database
