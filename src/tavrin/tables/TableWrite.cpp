// The write path of a table: adding, updating and removing records on the store and every index.
//
// A write is an insert or an update by primary key; the table decides which. A record that keeps
// its id and its key fields is updated in the store alone. Otherwise the primary key is looked
// up: a new key adds a record (AddNewRecord), a known key replaces that record (AddExistingRecord).
// Both undo a failure midway, so that store and indexes are left as they were; an exception that
// an index or the store throws inside them is undone the same way and ends as a status.
//
// Pointers into the store (GetEntry) are used only until the store's next Add.

#include <exception>
#include <new>

#include "tavrin/base/Exception.h"
#include "tavrin/base/MutexHolder.h"
#include "tavrin/indexes/Index.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/Record.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Database {

namespace {

constexpr std::uint32_t NoRecordId = FieldListObject::NoRecordId;

// Runs a step of a write that may throw, and gives what it threw as a status: a
// StatusCodeException's code, 41 for exhausted memory, 1 for any other exception.
template <class Step>
StatusCode StatusOf(Step step) noexcept {
    try {
        return step();
    } catch (const StatusCodeException& exception) {
        return static_cast<StatusCode>(exception.GetCode());
    } catch (const std::bad_alloc&) {
        return Status::OutOfMemory;
    } catch (const std::exception&) {
        return Status::Failure;
    }
}

}  // namespace

StatusCode Table::ResetRecord(Record& record) {
    if (!record.GetTableToken().IsSame(GetIdentityToken())) return Status::OtherTable;
    fieldList_->ResetData(record.GetData());
    record.SetRecordId(NoRecordId);
    return Status::Success;
}

StatusCode Table::Clear() {
    if (HasNoStore()) return Status::NotAvailable;
    MutexHolder holder(GetMutex());
    if (!IsRecordFileOpen()) return Status::NotOpen;
    const StatusCode cleared = StatusOf([this] {
        dataStore_->Clear();
        return Status::Success;
    });
    if (cleared != Status::Success) return cleared;
    for (std::uint16_t number = 0; number < numberOfIndexes_; ++number) {
        const StatusCode status = IndexAt(number).Clear();
        if (status != Status::Success) return status;
    }
    return Status::Success;
}

// ---- Writes ----------------------------------------------------------------------------------------

StatusCode Table::WriteRecord(Record& record, Record& previous) { return Write(record, &previous, nullptr); }

StatusCode Table::WriteRecord(Record& record, const std::vector<std::uint16_t>& fieldIds) {
    return Write(record, nullptr, &fieldIds);
}

StatusCode Table::WriteRecord(Record& record) { return Write(record, nullptr, nullptr); }

StatusCode Table::Write(Record& record, Record* previous, const std::vector<std::uint16_t>* fieldIds) {
    if (HasNoStore()) return Status::NotAvailable;
    MutexHolder holder(GetMutex());
    if (!record.GetTableToken().IsSame(GetIdentityToken())) return Status::OtherTable;
    if (primaryIndex_ == NoIndex) return Status::NoPrimaryIndex;
    StatusCode status = Status::Success;
    if (WriteInPlace(record, previous, fieldIds, status)) return status;
    return WriteByKey(record, previous, fieldIds);
}

bool Table::WriteInPlace(Record& record, Record* previous, const std::vector<std::uint16_t>* fieldIds,
                         StatusCode& status) {
    const std::uint32_t id = record.GetRecordId();
    unsigned char* stored = nullptr;
    if (id == NoRecordId || dataStore_->GetEntry(id, stored) != Status::Success) return false;
    if (HasKeyFieldChanged(record.GetData(), stored)) return false;

    if (previous != nullptr) {
        status = previous->Initialize(this, stored, id);
        if (status != Status::Success) return true;
    }
    if (fieldIds == nullptr) {
        status = dataStore_->Update(id, record.GetData());
        return true;
    }
    Record merged(this, stored, id);
    status = MergeFields(merged, record, *fieldIds);
    if (status == Status::Success) status = dataStore_->Update(id, merged.GetData());
    return true;
}

bool Table::HasKeyFieldChanged(const unsigned char* image, const unsigned char* stored) const {
    for (std::uint16_t fieldId : keyFieldIds_) {
        bool different = true;
        const StatusCode status = fieldList_->IsFieldDifferent(fieldId, image, *fieldList_, stored, different);
        if (status != Status::Success || different) return true;
    }
    return false;
}

StatusCode Table::WriteByKey(Record& record, Record* previous, const std::vector<std::uint16_t>* fieldIds) {
    Key key;
    StatusCode status = MakeIndexKey(key, primaryIndex_, record.GetData(), record.GetRecordId());
    if (status != Status::Success) return status;
    std::uint32_t foundId = NoRecordId;
    status = IndexAt(primaryIndex_).Find(key, foundId);

    if (status == Status::NotFound) {
        if (fieldIds == nullptr) return AddNewRecord(previous, record, key);
        Record merged(key);  // holds the key's fields and nothing else
        status = MergeFields(merged, record, *fieldIds);
        return status == Status::Success ? AddNewRecord(previous, merged, key) : status;
    }
    if (status != Status::Success) return status;

    if (fieldIds == nullptr) return AddExistingRecord(previous, record, foundId);
    unsigned char* stored = nullptr;
    status = dataStore_->GetEntry(foundId, stored);
    if (status != Status::Success) return status;
    Record merged(this, stored, foundId);
    status = MergeFields(merged, record, *fieldIds);
    return status == Status::Success ? AddExistingRecord(previous, merged, foundId) : status;
}

StatusCode Table::MergeFields(Record& target, const Record& source, const std::vector<std::uint16_t>& fieldIds) const {
    for (std::uint16_t fieldId : fieldIds) {
        if (!target.IsInitialized() || !source.IsInitialized()) return Status::NotUsable;
        const StatusCode status = fieldList_->CopyField(fieldId, target.GetData(), *source.GetFieldList(),
                                                        source.GetData());
        if (status != Status::Success) return status;
    }
    return Status::Success;
}

StatusCode Table::MakeIndexKey(Key& key, std::uint16_t number, const unsigned char* image, std::uint32_t id) {
    const StatusCode status = key.Initialize(this, number);
    return status == Status::Success ? IndexAt(number).BuildKey(key, image, id) : status;
}

// ---- Adding a record -------------------------------------------------------------------------------

StatusCode Table::AddNewRecord(Record* previous, Record& record, const Key& primaryKey) {
    // Unbound: nothing was replaced.
    if (previous != nullptr) *previous = Record();
    std::uint32_t id = NoRecordId;
    const StatusCode added = dataStore_->Add(id, record.GetData());
    if (added != Status::Success) return added;
    record.SetRecordId(id);

    std::uint16_t inserted = 0;
    const StatusCode status = StatusOf([&] { return InsertKeys(record.GetData(), id, primaryKey, inserted); });
    if (status == Status::Success) return Status::Success;
    return UndoInsertKeys(record.GetData(), id, inserted, status);
}

// Adds the record's key to each index in number order; `inserted` counts the indexes that took it.
StatusCode Table::InsertKeys(const unsigned char* image, std::uint32_t id, const Key& primaryKey,
                             std::uint16_t& inserted) {
    Key key;
    for (std::uint16_t number = 0; number < numberOfIndexes_; ++number) {
        Index& index = IndexAt(number);
        // WriteRecord has just asked the primary index for this key; its key serves again unless
        // it carries a record id, which the lookup did not know.
        const bool primary = number == primaryIndex_;
        StatusCode status = Status::Success;
        if (!primary || index.IsDuplicate()) status = MakeIndexKey(key, number, image, id);
        if (status != Status::Success) return status;
        const Key& indexKey = primary && !index.IsDuplicate() ? primaryKey : key;
        if (!primary) {
            std::uint32_t foundId = NoRecordId;
            status = index.Find(indexKey, foundId);
            if (status == Status::Success) return Status::IndexConflict;
            if (status != Status::NotFound) return status;
        }
        status = index.Add(indexKey, id);
        if (status != Status::Success) return status;
        inserted = static_cast<std::uint16_t>(number + 1);
    }
    return Status::Success;
}

// Takes the record out of the store, then its key out of the first `inserted` indexes. The result
// is `failure` when all of that succeeds, else the first status that failed.
StatusCode Table::UndoInsertKeys(const unsigned char* image, std::uint32_t id, std::uint16_t inserted,
                                 StatusCode failure) {
    const StatusCode removed = dataStore_->Remove(id);
    if (removed != Status::Success) return removed;
    return StatusOf([&] {
        StatusCode result = failure;
        Key key;
        for (std::uint16_t number = 0; number < inserted; ++number) {
            StatusCode status = MakeIndexKey(key, number, image, id);
            if (status == Status::Success) status = IndexAt(number).Remove(key);
            // Go on with the other indexes: each one put right is one less to rebuild.
            if (status != Status::Success && result == failure) result = status;
        }
        return result;
    });
}

// ---- Replacing a record ----------------------------------------------------------------------------

StatusCode Table::AddExistingRecord(Record* previous, Record& record, std::uint32_t id) {
    unsigned char* stored = nullptr;
    StatusCode status = dataStore_->GetEntry(id, stored);
    if (status != Status::Success) return status;
    // The former content, without an id: the caller's record took its place.
    if (previous != nullptr) {
        status = previous->Initialize(this, stored, NoRecordId);
        if (status != Status::Success) return status;
    }
    // The only index is the primary one, whose key is the one that found the record.
    if (numberOfIndexes_ == 1) return dataStore_->Update(id, record.GetData());

    std::uint16_t failedAt = numberOfIndexes_;
    status = StatusOf([&] {
        const StatusCode moved = MoveKeys(record.GetData(), stored, id, failedAt);
        return moved == Status::Success ? dataStore_->Update(id, record.GetData()) : moved;
    });
    if (status == Status::Success) return Status::Success;
    return UndoMoveKeys(record.GetData(), stored, id, failedAt, status);
}

// Moves the record's entry in each index but the primary one from the stored key to the new key,
// where they differ. `failedAt` is the index at which it stopped, which is left as it was.
StatusCode Table::MoveKeys(const unsigned char* image, const unsigned char* stored, std::uint32_t id,
                           std::uint16_t& failedAt) {
    Key newKey;
    Key oldKey;
    for (std::uint16_t number = 0; number < numberOfIndexes_; ++number) {
        if (number == primaryIndex_) continue;
        failedAt = number;
        StatusCode status = MakeIndexKey(newKey, number, image, id);
        if (status == Status::Success) status = MakeIndexKey(oldKey, number, stored, id);
        if (status != Status::Success) return status;
        Index& index = IndexAt(number);
        if (index.CompareKeys(newKey, oldKey) == 0) continue;

        std::uint32_t foundId = NoRecordId;
        if (index.Find(newKey, foundId) != Status::NotFound) return Status::IndexConflict;
        status = index.Remove(oldKey);
        if (status != Status::Success) return status;
        status = StatusOf([&] { return index.Add(newKey, id); });
        if (status != Status::Success) {
            // The old key goes back, so that this index too is as it was.
            const StatusCode restored = index.Add(oldKey, id);
            return restored == Status::Success ? status : restored;
        }
    }
    failedAt = numberOfIndexes_;
    return Status::Success;
}

// Moves the keys of the indexes before `failedAt` back from the new key to the stored one. The
// result is `failure` when all of that succeeds, else the first status that failed.
StatusCode Table::UndoMoveKeys(const unsigned char* image, const unsigned char* stored, std::uint32_t id,
                               std::uint16_t failedAt, StatusCode failure) {
    return StatusOf([&] {
        StatusCode result = failure;
        Key newKey;
        Key oldKey;
        for (std::uint16_t number = 0; number < failedAt; ++number) {
            if (number == primaryIndex_) continue;
            StatusCode status = MakeIndexKey(newKey, number, image, id);
            if (status == Status::Success) status = MakeIndexKey(oldKey, number, stored, id);
            Index& index = IndexAt(number);
            // An index whose key did not change was not touched.
            if (status == Status::Success && index.CompareKeys(newKey, oldKey) == 0) continue;
            if (status == Status::Success) {
                index.Remove(newKey);
                status = index.Add(oldKey, id);
            }
            if (status != Status::Success && result == failure) result = status;
        }
        return result;
    });
}

// ---- Removing a record -----------------------------------------------------------------------------

StatusCode Table::RemoveRecord(Key& key, Record& removed) { return Remove(key, &removed); }

StatusCode Table::RemoveRecord(Key& key) { return Remove(key, nullptr); }

StatusCode Table::Remove(Key& key, Record* removed) {
    if (HasNoStore()) return Status::NotAvailable;
    MutexHolder holder(GetMutex());
    Index* keyIndex = GetKeyIndex(key);
    if (keyIndex == nullptr) return Status::KeyInvalid;
    std::uint32_t id = NoRecordId;
    StatusCode status = keyIndex->Find(key, id);
    if (status != Status::Success) return status;
    unsigned char* stored = nullptr;
    status = dataStore_->GetEntry(id, stored);
    if (status != Status::Success) return status;
    if (removed != nullptr) {
        status = removed->Initialize(this, stored, id);
        if (status != Status::Success) return status;
    }

    // Every index loses the record's key, also when one of them fails: the last failure is kept.
    StatusCode kept = Status::Success;
    Key indexKey;
    for (std::uint16_t number = 0; number < numberOfIndexes_; ++number) {
        status = MakeIndexKey(indexKey, number, stored, id);
        if (status == Status::Success) status = IndexAt(number).Remove(indexKey);
        if (status != Status::Success) kept = status;
    }
    status = dataStore_->Remove(id);
    return status != Status::Success ? status : kept;
}

}  // namespace Tavrin::Database
