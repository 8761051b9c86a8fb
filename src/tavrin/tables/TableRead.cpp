// The read path of a table: lookups and walks by key, walks of the store.
//
// Every key read has one frame: check the key (27), one step on the key's index, the stored image
// of the record id that the step gives, a copy of it into the caller's record. A walk keeps its
// place in the caller's Key (the index leaves the key it found there), a store walk in the caller's
// record id, so the table keeps no walk state. A batch repeats the frame under one hold of the
// mutex, filling each record in place at the end of the caller's vector. A table without a store
// answers 13 from the key check (StepByKey, which every key read starts with) and the first store
// step.

#include <algorithm>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/MutexHolder.h"
#include "tavrin/indexes/Index.h"
#include "tavrin/indexes/RecordSink.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/Record.h"
#include "tavrin/storage/MemoryDataStore.h"
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
    unsigned char* image = nullptr;
    const StatusCode status = dataStore_->GetEntry(recordId, image);
    if (status != Status::Success) return status;
    // Filled in place, its buffer not zeroed first: no temporary record and no second copy.
    try {
        records.emplace_back(this, image, recordId);
    } catch (const DatabaseException&) {
        return Status::OutOfMemory;
    }
    return Status::Success;
}

namespace {

/// Records per batch step of an index walk or a batch lookup.
constexpr std::uint32_t BatchStep = 64;

/// The memory store behind a table, whose entries can be asked for ahead; null for any other.
MemoryDataStore* PrefetchingStore(DataStore* store) noexcept { return dynamic_cast<MemoryDataStore*>(store); }

}  // namespace

StatusCode Table::ReadBatch(KeyStep first, KeyStep next, Key& key, std::vector<Record>& records,
                            std::uint32_t maxRecords, std::uint16_t fieldId, std::uint32_t length) {
    MutexHolder holder(GetMutex());
    std::uint32_t recordId = FieldListObject::NoRecordId;
    StatusCode status = StepByKey(first, key, recordId, fieldId, length);
    if (status == Status::Success) status = AppendFromStore(recordId, records);
    if (status != Status::Success) return status;
    if (maxRecords != 0 && records.size() < maxRecords) {
        records.reserve(std::min<std::size_t>(maxRecords, records.size() + dataStore_->GetCurrentEntries()));
    }
    // The index hands the records over in walk order, each announced some steps ahead so that its
    // bytes load while the records before it are copied.
    class Sink final : public RecordSink {
    public:
        Sink(Table& table, std::vector<Record>& records)
            : table_(table), memory_(PrefetchingStore(table.dataStore_.get())), records_(records) {}
        void Prefetch(std::uint32_t id) noexcept override {
            if (memory_ != nullptr) memory_->PrefetchRecord(id);
        }
        bool Take(std::uint32_t id) override { return table_.AppendFromStore(id, records_) == Status::Success; }

    private:
        Table& table_;
        MemoryDataStore* memory_;
        std::vector<Record>& records_;
    } sink(*this, records);
    const bool prefix = next == KeyStep::NextEqual || next == KeyStep::PreviousEqual;
    const bool forward = next == KeyStep::Next || next == KeyStep::NextEqual;
    Index& index = *GetKeyIndex(key);
    // Whatever ends the walk, a batch that found its first record succeeded; the next call tells
    // the end. The count is of the whole vector, records the caller left in it included.
    // A vector that holds more than maxRecords already never reaches the count: the walk goes on
    // to the end.
    const bool unbounded = maxRecords == 0 || records.size() > maxRecords;
    while (unbounded || records.size() != maxRecords) {
        const std::size_t before = records.size();
        const std::size_t room = unbounded ? BatchStep : maxRecords - before;
        const auto step = static_cast<std::uint32_t>(std::min<std::size_t>(room, BatchStep));
        status = index.Walk(key, forward, prefix, fieldId, length, step, sink);
        if (status != Status::Success || records.size() != before + step) break;
    }
    return Status::Success;
}

// Reads by key: the keys of one index are looked up side by side, a run of them at a time, and
// the records they name are asked for before the first of them is copied.
StatusCode Table::GetEqual(std::vector<Key>& keys, std::vector<unsigned char>& statuses,
                           std::vector<Record>& records) {
    if (HasNoStore()) return Status::NotAvailable;
    MutexHolder holder(GetMutex());
    const Record blank(this);
    MemoryDataStore* memory = PrefetchingStore(dataStore_.get());
    records.reserve(records.size() + keys.size());
    statuses.reserve(statuses.size() + keys.size());
    Key* run[BatchStep];
    std::uint32_t recordIds[BatchStep];
    StatusCode found[BatchStep];
    for (std::size_t begin = 0; begin < keys.size();) {
        // A run: keys of one index of this table, or a single key that is not.
        Index* index = GetKeyIndex(keys[begin]);
        std::uint32_t count = 0;
        while (count < BatchStep && begin + count < keys.size() &&
               (count == 0 || (index != nullptr && GetKeyIndex(keys[begin + count]) == index))) {
            run[count] = &keys[begin + count];
            ++count;
        }
        if (index != nullptr) {
            index->FindMany(run, count, recordIds, found);
        } else {
            found[0] = Status::KeyInvalid;
        }
        for (std::uint32_t i = 0; i < count; ++i) {
            if (found[i] == Status::Success && memory != nullptr) memory->PrefetchRecord(recordIds[i]);
        }
        for (std::uint32_t i = 0; i < count; ++i) {
            StatusCode status = found[i];
            // Position i of both vectors belongs to key i: a key that finds nothing gets a blank record.
            if (status == Status::Success) status = AppendFromStore(recordIds[i], records);
            if (status != Status::Success) records.push_back(blank);
            statuses.push_back(status);
        }
        begin += count;
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
