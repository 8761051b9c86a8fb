// The read path of a table: lookups and walks by key, walks of the store.
//
// Every key read has one frame: check the key (27), one step on the key's index, the stored image
// of the record id that the step gives, a copy of it into the caller's record. A walk keeps its
// place in the caller's Key (the index leaves the key it found there), a store walk in the caller's
// record id, so the table keeps no walk state. A batch repeats the frame under one hold of the
// mutex, filling each record in place at the end of the caller's vector. A table without a store
// answers 13 from the key check (StepByKey, which every key read starts with) and the first store
// step.

#include "tavrin/base/MutexHolder.h"
#include "tavrin/indexes/Index.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/Record.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Database {

enum class Table::KeyStep : std::uint8_t {
    Find,
    First,
    Last,
    Next,
    Previous,
    FirstEqual,
    LastEqual,
    NextEqual,
    PreviousEqual
};

StatusCode Table::StepIndex(Index& index, KeyStep step, Key& key, std::uint32_t& recordId, std::uint16_t fieldId,
                            std::uint32_t length) {
    switch (step) {
        case KeyStep::Find: return index.Find(key, recordId);
        case KeyStep::First: return index.GetFirst(key, recordId);
        case KeyStep::Last: return index.GetLast(key, recordId);
        case KeyStep::Next: return index.GetNext(key, recordId);
        case KeyStep::Previous: return index.GetPrevious(key, recordId);
        case KeyStep::FirstEqual: return index.GetFirstEqual(key, recordId, fieldId, length);
        case KeyStep::LastEqual: return index.GetLastEqual(key, recordId, fieldId, length);
        case KeyStep::NextEqual: return index.GetNextEqual(key, recordId, fieldId, length);
        case KeyStep::PreviousEqual: return index.GetPreviousEqual(key, recordId, fieldId, length);
    }
    return Status::Invalid;
}

Index* Table::GetKeyIndex(const Key& key) const noexcept {
    if (!key.IsInitialized() || !key.GetTableToken().IsSame(GetIdentityToken())) return nullptr;
    if (key.GetIndexNumber() >= numberOfIndexes_) return nullptr;
    return &IndexAt(key.GetIndexNumber());
}

StatusCode Table::FillFromStore(std::uint32_t recordId, Record& record) {
    unsigned char* image = nullptr;
    const StatusCode status = dataStore_->GetEntry(recordId, image);
    if (status != Status::Success) return status;
    return record.Initialize(this, image, recordId);
}

StatusCode Table::StepByKey(KeyStep step, Key& key, std::uint32_t& recordId, std::uint16_t fieldId,
                            std::uint32_t length) {
    if (HasNoStore()) return Status::NotAvailable;
    Index* index = GetKeyIndex(key);
    if (index == nullptr) return Status::KeyInvalid;
    return StepIndex(*index, step, key, recordId, fieldId, length);
}

StatusCode Table::ReadByKey(KeyStep step, Key& key, Record& record, std::uint16_t fieldId, std::uint32_t length) {
    std::uint32_t recordId = FieldListObject::NoRecordId;
    const StatusCode status = StepByKey(step, key, recordId, fieldId, length);
    return status == Status::Success ? FillFromStore(recordId, record) : status;
}

StatusCode Table::ReadOne(KeyStep step, Key& key, Record& record, std::uint16_t fieldId, std::uint32_t length) {
    MutexHolder holder(GetMutex());
    return ReadByKey(step, key, record, fieldId, length);
}

StatusCode Table::AppendFromStore(std::uint32_t recordId, std::vector<Record>& records) {
    // Filled in place: no temporary record and no second copy of the image.
    const StatusCode status = FillFromStore(recordId, records.emplace_back());
    if (status != Status::Success) records.pop_back();
    return status;
}

StatusCode Table::ReadBatch(KeyStep first, KeyStep next, Key& key, std::vector<Record>& records,
                            std::uint32_t maxRecords, std::uint16_t fieldId, std::uint32_t length) {
    MutexHolder holder(GetMutex());
    std::uint32_t recordId = FieldListObject::NoRecordId;
    StatusCode status = StepByKey(first, key, recordId, fieldId, length);
    if (status == Status::Success) status = AppendFromStore(recordId, records);
    if (status != Status::Success) return status;
    // Whatever ends the walk, a batch that found its first record succeeded; the next call tells
    // the end. The count is of the whole vector, records the caller left in it included.
    while (maxRecords == 0 || records.size() != maxRecords) {
        if (StepByKey(next, key, recordId, fieldId, length) != Status::Success) break;
        if (AppendFromStore(recordId, records) != Status::Success) break;
    }
    return Status::Success;
}

// Reads by key.
StatusCode Table::GetEqual(std::vector<Key>& keys, std::vector<unsigned char>& statuses,
                           std::vector<Record>& records) {
    if (HasNoStore()) return Status::NotAvailable;
    MutexHolder holder(GetMutex());
    const Record blank(this);
    Record found;
    for (Key& key : keys) {
        const StatusCode status = ReadByKey(KeyStep::Find, key, found, 0, 0);
        // Position i of both vectors belongs to key i: a key that finds nothing gets a blank record.
        statuses.push_back(status);
        records.push_back(status == Status::Success ? found : blank);
    }
    return Status::Success;
}

StatusCode Table::GetEqual(Key& key, Record& record) { return ReadOne(KeyStep::Find, key, record); }

StatusCode Table::GetFirst(Key& key, std::vector<Record>& records, std::uint32_t maxRecords) {
    return ReadBatch(KeyStep::First, KeyStep::Next, key, records, maxRecords);
}
StatusCode Table::GetFirst(Key& key, Record& record) { return ReadOne(KeyStep::First, key, record); }

StatusCode Table::GetLast(Key& key, std::vector<Record>& records, std::uint32_t maxRecords) {
    return ReadBatch(KeyStep::Last, KeyStep::Previous, key, records, maxRecords);
}
StatusCode Table::GetLast(Key& key, Record& record) { return ReadOne(KeyStep::Last, key, record); }

StatusCode Table::GetNext(Key& key, std::vector<Record>& records, std::uint32_t maxRecords) {
    return ReadBatch(KeyStep::Next, KeyStep::Next, key, records, maxRecords);
}
StatusCode Table::GetNext(Key& key, Record& record) { return ReadOne(KeyStep::Next, key, record); }

StatusCode Table::GetPrevious(Key& key, std::vector<Record>& records, std::uint32_t maxRecords) {
    return ReadBatch(KeyStep::Previous, KeyStep::Previous, key, records, maxRecords);
}
StatusCode Table::GetPrevious(Key& key, Record& record) { return ReadOne(KeyStep::Previous, key, record); }

// Prefix walks: the keys that match up to the key field `fieldId`, in its first `length` bytes
// unless `length` is 0xFFFFFFFF. Both go to the index unchanged.
StatusCode Table::GetFirstEqual(Key& key, std::vector<Record>& records, std::uint16_t fieldId, std::uint32_t length,
                                std::uint32_t maxRecords) {
    return ReadBatch(KeyStep::FirstEqual, KeyStep::NextEqual, key, records, maxRecords, fieldId, length);
}
StatusCode Table::GetFirstEqual(Key& key, Record& record, std::uint16_t fieldId, std::uint32_t length) {
    return ReadOne(KeyStep::FirstEqual, key, record, fieldId, length);
}

StatusCode Table::GetLastEqual(Key& key, std::vector<Record>& records, std::uint16_t fieldId, std::uint32_t length,
                               std::uint32_t maxRecords) {
    return ReadBatch(KeyStep::LastEqual, KeyStep::PreviousEqual, key, records, maxRecords, fieldId, length);
}
StatusCode Table::GetLastEqual(Key& key, Record& record, std::uint16_t fieldId, std::uint32_t length) {
    return ReadOne(KeyStep::LastEqual, key, record, fieldId, length);
}

StatusCode Table::GetNextEqual(Key& key, std::vector<Record>& records, std::uint16_t fieldId, std::uint32_t length,
                               std::uint32_t maxRecords) {
    return ReadBatch(KeyStep::NextEqual, KeyStep::NextEqual, key, records, maxRecords, fieldId, length);
}
StatusCode Table::GetNextEqual(Key& key, Record& record, std::uint16_t fieldId, std::uint32_t length) {
    return ReadOne(KeyStep::NextEqual, key, record, fieldId, length);
}

StatusCode Table::GetPreviousEqual(Key& key, std::vector<Record>& records, std::uint16_t fieldId,
                                   std::uint32_t length, std::uint32_t maxRecords) {
    return ReadBatch(KeyStep::PreviousEqual, KeyStep::PreviousEqual, key, records, maxRecords, fieldId, length);
}
StatusCode Table::GetPreviousEqual(Key& key, Record& record, std::uint16_t fieldId, std::uint32_t length) {
    return ReadOne(KeyStep::PreviousEqual, key, record, fieldId, length);
}

// Reads in store order: the store's entries by ascending id, without keys or indexes.
StatusCode Table::StepStore(bool fromFirst, std::uint32_t& recordId, unsigned char*& image) {
    if (HasNoStore()) return Status::NotAvailable;
    // 30, the status of a record that is not this table's, also answers a next step from no record.
    if (!fromFirst && recordId == FieldListObject::NoRecordId) return Status::OtherTable;
    if (!dataStore_->IsOpen()) return Status::NotOpen;
    return fromFirst ? dataStore_->GetFirst(recordId, image) : dataStore_->GetNext(recordId, image);
}

StatusCode Table::ReadStore(bool fromFirst, std::uint32_t& recordId, Record& record) {
    MutexHolder holder(GetMutex());
    unsigned char* image = nullptr;
    const StatusCode status = StepStore(fromFirst, recordId, image);
    return status == Status::Success ? record.Initialize(this, image, recordId) : status;
}

StatusCode Table::ReadStoreBatch(bool fromFirst, std::uint32_t& recordId, std::vector<Record>& records,
                                 std::uint32_t maxRecords) {
    MutexHolder holder(GetMutex());
    unsigned char* image = nullptr;
    StatusCode status = StepStore(fromFirst, recordId, image);
    if (status != Status::Success) return status;
    Record found;
    for (;;) {
        status = found.Initialize(this, image, recordId);
        if (status != Status::Success) return status;
        records.push_back(found);
        if (maxRecords != 0 && records.size() == maxRecords) break;
        // The store leaves the id at the last record when it finds no further one.
        if (dataStore_->GetNext(recordId, image) != Status::Success) break;
    }
    return Status::Success;
}

StatusCode Table::GetFirstRecord(std::uint32_t& recordId, std::vector<Record>& records, std::uint32_t maxRecords) {
    return ReadStoreBatch(true, recordId, records, maxRecords);
}
StatusCode Table::GetFirstRecord(std::uint32_t& recordId, Record& record) { return ReadStore(true, recordId, record); }

StatusCode Table::GetNextRecord(std::uint32_t& recordId, std::vector<Record>& records, std::uint32_t maxRecords) {
    return ReadStoreBatch(false, recordId, records, maxRecords);
}
StatusCode Table::GetNextRecord(std::uint32_t& recordId, Record& record) { return ReadStore(false, recordId, record); }

// Sets a record's key fields from values in the index's key order. Takes no lock: it touches only
// the caller's record and the index's layout, which never changes.
StatusCode Table::BuildRecord(Record& record, std::uint16_t indexNumber, const KeyValueList& values) {
    if (indexNumber >= numberOfIndexes_) return Status::IndexConflict;
    if (!record.GetTableToken().IsSame(GetIdentityToken())) return Status::OtherTable;
    return indexes_[indexNumber]->BuildRecord(record, values);
}

}  // namespace Tavrin::Database
