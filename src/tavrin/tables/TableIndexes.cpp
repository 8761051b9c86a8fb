// Index management of a table: making its indexes, bringing their files into line with the records,
// and choosing the primary index.
//
// Recovery lives here. An index file that is missing, carries another Uuid (it was written beside
// another record file) or was not closed in order does not open, and the index is rebuilt from the
// records without a word to the caller. A rebuild that fails must not leave a file behind that
// the next open would trust: the index removes the files it holds before it is deleted (a tree
// would otherwise save itself with a clean flag). A file that another opener holds is never the
// index's, and stays.

#include <exception>
#include <memory>
#include <new>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/Exception.h"
#include "tavrin/base/File.h"
#include "tavrin/base/Throw.h"
#include "tavrin/base/Uuid.h"
#include "tavrin/indexes/HashIndex.h"
#include "tavrin/indexes/Index.h"
#include "tavrin/indexes/RedBlackTreeIndex.h"
#include "tavrin/records/IFieldListFactory.h"
#include "tavrin/records/Key.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/tables/Table.h"
#include "tavrin/tables/TableIndexRules.h"

namespace Tavrin::Database {

namespace {

constexpr const char* CreateIndexesOperation = "Tavrin::Database::Table::CreateIndexes";
constexpr const char* CreateIndexOperation = "Tavrin::Database::Table::CreateIndex";
constexpr const char* InitializeIndexOperation = "Tavrin::Database::Table::InitializeIndex";

}  // namespace

Index& Table::IndexAt(std::uint16_t number) const noexcept { return static_cast<Index&>(*indexes_[number]); }

void Table::CreateIndexes(std::vector<IndexSpecification>& specifications, const IFieldListFactory& fieldListFactory) {
    if (GetNumberOfIndexes() != 0) {
        ThrowDatabase(CreateIndexesOperation, DatabaseException::InvalidParameter,
                      "permanent indexes already created for table <%s>", name_.c_str());
    }
    if (!IsRecordFileOpen()) {
        ThrowDatabase(CreateIndexesOperation, DatabaseException::NotCreated, "record file not created for table <%s>",
                      name_.c_str());
    }
    for (IndexSpecification& specification : specifications) CreateIndex(specification, fieldListFactory);

    // A file whose Uuid could not be changed no longer matches the others and is rebuilt at the
    // next open, so a failing SetUuid costs time, never records: its status is not needed.
    const Uuid uuid;
    dataStore_->SetUuid(uuid);
    for (std::uint16_t number = 0; number < numberOfIndexes_; ++number) IndexAt(number).SetUuid(uuid);
}

void Table::CreateIndex(IndexSpecification& specification, const IFieldListFactory& fieldListFactory) {
    CheckNewIndex(CreateIndexOperation, name_, indexes_, specification);
    specification.SetNumber(numberOfIndexes_);

    indexes_.reserve(indexes_.size() + 1);  // so that the push below cannot throw
    indexes_.push_back(MakeIndex(specification, fieldListFactory));
    ++numberOfIndexes_;
    try {
        InitializeIndex(IndexAt(static_cast<std::uint16_t>(numberOfIndexes_ - 1)));
    } catch (...) {
        DiscardNewestIndex();
        throw;
    }

    for (const IndexSpecification::Field& field : specification.GetFields()) keyFieldIds_.insert(field.GetId());
    // The additional fields travel in the key image too: a change to one must reach the index.
    for (std::uint16_t id : specification.GetAdditionalFieldIds()) keyFieldIds_.insert(id);
}

std::unique_ptr<Index> Table::MakeIndex(const IndexSpecification& specification,
                                        const IFieldListFactory& fieldListFactory) const {
    // Both structures start with room for as many keys as the store has entries, and grow as it does.
    std::unique_ptr<Index> index;
    try {
        if (specification.IsHash()) {
            index.reset(new (std::nothrow) HashIndex(specification, *fieldList_, fieldListFactory,
                                                     dataStore_->GetMaxEntries(), growRecords_));
        } else {
            index.reset(new (std::nothrow) RedBlackTreeIndex(specification, *fieldList_, fieldListFactory,
                                                             dataStore_->GetMaxEntries(), growRecords_));
        }
    } catch (const std::bad_alloc&) {
        index.reset();
    }
    if (!index) ThrowDatabase(CreateIndexOperation, DatabaseException::AllocateIndex);
    return index;
}

void Table::InitializeIndex(Index& index) {
    const bool hasRecords = dataStore_->GetCurrentEntries() != 0;
    if (IsInMemory()) {
        // A temporary index made after records were written needs them as much as one on disk.
        index.Create();
        if (hasRecords) RebuildIndex(index);
    } else if (!hasRecords) {
        index.Create(directory_, name_, dataStore_->GetUuid());
    } else if (index.Open(directory_, name_, dataStore_->GetUuid()) != Status::Success) {
        // Missing, stale or left open by a crash: whatever the reason, the file can't be used.
        index.Create(directory_, name_, dataStore_->GetUuid());
        RebuildIndex(index);
    }
    ApplyPrimaryRule(index);
}

void Table::RebuildIndex(Index& index) {
    Key key;
    StatusCode status = key.Initialize(this, index.GetNumber());
    if (status != Status::Success) ThrowStatus(InitializeIndexOperation, status);
    std::uint32_t id = FieldListObject::NoRecordId;
    unsigned char* image = nullptr;
    for (status = dataStore_->GetFirst(id, image); status == Status::Success;
         status = dataStore_->GetNext(id, image)) {
        status = index.BuildKey(key, image, id);
        if (status != Status::Success) ThrowStatus(InitializeIndexOperation, status);
        std::uint32_t foundId = FieldListObject::NoRecordId;
        status = index.Find(key, foundId);
        // A key that the records hold twice can't go into this index.
        if (status == Status::Success) ThrowStatus(InitializeIndexOperation, Status::IndexConflict);
        if (status != Status::NotFound) ThrowStatus(InitializeIndexOperation, status);
        status = index.Add(key, id);
        if (status != Status::Success) ThrowStatus(InitializeIndexOperation, status);
    }
    if (status != Status::NotFound) ThrowStatus(InitializeIndexOperation, status);
}

void Table::DiscardNewestIndex() noexcept {
    std::unique_ptr<IIndex> index = std::move(indexes_.back());
    indexes_.pop_back();
    --numberOfIndexes_;
    static_cast<Index&>(*index).Discard();
}

void Table::ApplyPrimaryRule(const IIndex& index) noexcept {
    if (index.IsPrimaryUnique() || (primaryIndex_ == NoIndex && index.IsUnique())) primaryIndex_ = index.GetNumber();
}

}  // namespace Tavrin::Database
