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
    const TableSpecification own = GetSpecification();
    if (!(stored == own)) return Status::DescriptionDiffers;
    // An unmanaged image holds each value where its offset says: a field that moved is another layout.
    if (own.IsManaged()) return Status::Success;
    const std::vector<FieldSpecification>& fields = own.GetFields();
    for (std::size_t number = 0; number < fields.size(); ++number) {
        if (stored.GetFields()[number].GetOffset() != fields[number].GetOffset()) return Status::DescriptionDiffers;
    }
    return Status::Success;
}

}  // namespace Tavrin::Database
