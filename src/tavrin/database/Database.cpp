#include "tavrin/database/Database.h"

#include <algorithm>
#include <new>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/MutexHolder.h"
#include "tavrin/base/PrivateMutexFactory.h"
#include "tavrin/database/AttachedTables.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/schema/TableSpecification.h"

namespace Tavrin::Database {

Database::Database(const std::string& name, std::uint32_t properties) : name_(name), properties_(properties) {
    if (!DatabaseSpecification::ShouldCreateMutex(properties_)) return;
    try {
        mutex_.reset(PrivateMutexFactory::GetInstance().Create(false));
    } catch (...) {
        // Whatever went wrong, the caller learns one thing: the database could not be made.
    }
    if (!mutex_) ThrowDatabase("Tavrin::Database::Database::Database", DatabaseException::AllocateDatabase);
}

Database::~Database() {
    // Detached one by one, the smallest id first, as DetachTable changes the set; no copy of the set
    // is made, so nothing here allocates.
    while (!tableIds_.empty()) {
        ITable* table = nullptr;
        if (DetachTable(*tableIds_.begin(), table) != Status::Success) break;  // never: the invariant holds
        delete table;
    }
}

StatusCode Database::AttachTable(std::uint16_t tableId, ITable* table) {
    MutexHolder holder(mutex_.get());
    if (table == nullptr) return Status::Invalid;
    if (tableId < tables_.size() && tables_[tableId] != nullptr) return Status::Invalid;
    if (tableIds_.contains(tableId)) return Status::Invalid;
    try {
        if (!AttachedTables::Claim(table)) return Status::Invalid;
    } catch (const std::bad_alloc&) {
        return Status::OutOfMemory;
    }
    const StatusCode status = Insert(tableId, table);
    if (status != Status::Success) AttachedTables::Release(table);
    return status;
}

// Every step that may allocate comes before the table is stored, and a failing one undoes the steps
// before it: an attach either completes or changes nothing.
StatusCode Database::Insert(std::uint16_t tableId, ITable* table) {
    const std::size_t formerLength = tables_.size();
    try {
        if (tableId >= formerLength) tables_.resize(std::size_t{tableId} + 1);
        attachOrder_.push_back(tableId);
    } catch (const std::bad_alloc&) {
        tables_.resize(formerLength);
        return Status::OutOfMemory;
    }
    try {
        tableIds_.insert(tableId);
    } catch (const std::bad_alloc&) {
        attachOrder_.pop_back();
        tables_.resize(formerLength);
        return Status::OutOfMemory;
    }
    tables_[tableId].reset(table);
    return Status::Success;
}

StatusCode Database::DetachTable(std::uint16_t tableId, ITable*& table) {
    MutexHolder holder(mutex_.get());
    if (tableId >= tables_.size() || tables_[tableId] == nullptr || !tableIds_.contains(tableId)) {
        return Status::Invalid;
    }
    attachOrder_.erase(std::find(attachOrder_.begin(), attachOrder_.end(), tableId));
    tableIds_.erase(tableId);
    table = tables_[tableId].release();
    AttachedTables::Release(table);
    if (std::size_t{tableId} + 1 == tables_.size()) {
        tables_.resize(tableIds_.empty() ? 0 : std::size_t{*tableIds_.rbegin()} + 1);
    }
    return Status::Success;
}

StatusCode Database::GetTable(std::uint16_t tableId, ITable*& table) const {
    MutexHolder holder(mutex_.get());
    if (tableId >= tables_.size() || tables_[tableId] == nullptr) return Status::NotFound;
    table = tables_[tableId].get();
    return Status::Success;
}

DatabaseSpecification Database::GetSpecification() const {
    MutexHolder holder(mutex_.get());
    std::vector<DatabaseSpecification::DatabaseTableSpecification> tables;
    tables.reserve(tableIds_.size());
    for (const std::uint16_t tableId : tableIds_) {
        ITable& table = *tables_[tableId];
        std::vector<IndexSpecification> indexes = table.GetIndexSpecificationList();
        // The temporary indexes are the last ones; a receiver would make them permanent.
        const std::size_t temporary = std::min<std::size_t>(indexes.size(), table.GetNumberOfTemporaryIndexes());
        indexes.erase(indexes.end() - static_cast<std::ptrdiff_t>(temporary), indexes.end());
        tables.emplace_back(tableId, table.GetSpecification(), indexes);
    }
    return DatabaseSpecification(name_, properties_, tables);
}

StatusCode Database::SerializeSpecification(MessageBuilder& builder) const {
    DatabaseSpecification specification;
    try {
        specification = GetSpecification();
    } catch (const std::bad_alloc&) {
        return Status::OutOfMemory;
    }
    return specification.Serialize(builder);
}

void Database::ForEachTable(const TableCallback& callback) {
    MutexHolder holder(mutex_.get());
    for (const std::uint16_t tableId : tableIds_) callback(tableId, *tables_[tableId]);
}

}  // namespace Tavrin::Database
