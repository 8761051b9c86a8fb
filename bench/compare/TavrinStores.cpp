// Our table as a W1 store: fields key UInt 8, counter UInt 4, number SInt 8, text TextArray 44, a
// primary unique index on the key (a red-black tree or a hash index), no mutex (one thread), sized
// for N records up front. Managed or unmanaged (64 bytes, fields packed from offset 0), without a
// directory (temporary mapped files) or with one.
//
// The scan phase walks the tree index in key order; a hash index has no order (its GetFirst
// answers 13), so over a hash index the scan walks the store in record id order
// (GetFirstRecord / GetNextRecord) and the harness checks its count and sums only.

#include <memory>
#include <string>
#include <vector>

#include "StoreRegistry.h"
#include "tavrin/indexes/HashIndex.h"
#include "tavrin/indexes/HashIndexBucketHandler.h"
#include "tavrin/indexes/IIndex.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/Record.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/tables/ITable.h"
#include "tavrin/tables/ManagedTableFactory.h"
#include "tavrin/tables/UnmanagedTableFactory.h"

namespace Tavrin::Compare {

namespace {

using namespace Tavrin::Database;

constexpr std::uint16_t KeyField = 1;
constexpr std::uint16_t CounterField = 2;
constexpr std::uint16_t NumberField = 3;
constexpr std::uint16_t TextField = 4;
constexpr std::uint32_t UnmanagedLength = 64;
// Property bit 0 makes the record file (a temporary one without a directory); bit 1, a mutex, stays
// off: one thread uses the table.
constexpr std::uint32_t CreateRecordFile = 1;
constexpr std::uint32_t HalfOfMax = 0xFFFFFFFF;
constexpr std::uint32_t WholeStoreInMemory = 0xFFFFFFFF;
constexpr std::uint32_t ScanBatch = 1024;

enum class Layout { Managed, Unmanaged };

std::vector<FieldSpecification> W1Fields() {
    // The offsets are those of the unmanaged layout; the managed one places fields itself.
    return {FieldSpecification(KeyField, "Key", FieldSpecification::UInt, 8, 0, 0),
            FieldSpecification(CounterField, "Counter", FieldSpecification::UInt, 4, 8, 0),
            FieldSpecification(NumberField, "Number", FieldSpecification::SInt, 8, 12, 0),
            FieldSpecification(TextField, "Text", FieldSpecification::TextArray, TextSize, 20, 0)};
}

// An empty directory asks for a table in temporary mapped files; a cache size other than
// WholeStoreInMemory for a disk store.
ITable* MakeTable(Layout layout, const std::string& directory, std::uint32_t n,
                  std::uint32_t cacheSize = WholeStoreInMemory) {
    const auto& managed = ManagedTableFactory::GetInstance();
    const auto& unmanaged = UnmanagedTableFactory::GetInstance();
    if (directory.empty()) {
        return layout == Layout::Managed
                   ? managed.Create("W1", CreateRecordFile, W1Fields(), n, HalfOfMax, cacheSize)
                   : unmanaged.Create("W1", CreateRecordFile, W1Fields(), n, UnmanagedLength, HalfOfMax, cacheSize);
    }
    return layout == Layout::Managed
               ? managed.Create("W1", directory, CreateRecordFile, W1Fields(), n, HalfOfMax, cacheSize)
               : unmanaged.Create("W1", directory, CreateRecordFile, W1Fields(), n, UnmanagedLength, HalfOfMax,
                                  cacheSize);
}

void Require(StatusCode status, const char* what) {
    if (status != Status::Success) throw CompareError(std::string(what) + ": status " + std::to_string(status));
}

template <IndexSpecification::Type IndexType>
class TavrinStore {
public:
    static constexpr bool IsHash = IndexType == IndexSpecification::Hash;
    static constexpr bool Ordered = !IsHash;

    TavrinStore(std::uint64_t n, Layout layout, const std::string& directory, std::uint32_t cacheSize) : n_(n) {
        table_.reset(MakeTable(layout, directory, static_cast<std::uint32_t>(n), cacheSize));
        std::vector<IndexSpecification> indexes{IndexSpecification("ByKey", IndexType,
                                                                   IndexSpecification::PrimaryUniqueProperty,
                                                                   {IndexSpecification::Field(KeyField, 0)})};
        table_->CreateIndexes(indexes);
        record_ = Record(table_.get());
        key_ = Key(table_.get(), 0);
        list_ = record_.GetFieldList();
        keyList_ = key_.GetFieldList();
    }

    void Begin(Phase) {}
    void End(Phase) {}

    void Insert(std::uint64_t key, const Value& value) {
        Require(table_->ResetRecord(record_), "reset");
        unsigned char* data = record_.GetData();
        Require(list_->SetField(data, KeyField, key), "set key");
        Require(list_->SetField(data, CounterField, value.counter), "set counter");
        Require(list_->SetField(data, NumberField, value.number), "set number");
        Require(list_->SetField(data, TextField, value.text.data(), TextSize), "set text");
        Require(table_->WriteRecord(record_), "insert");
    }

    bool Get(std::uint64_t key, Value& value) {
        if (!Find(key)) return false;
        const unsigned char* data = record_.GetData();
        std::uint32_t length = 0;
        Require(list_->GetField(data, CounterField, value.counter), "get counter");
        Require(list_->GetField(data, NumberField, value.number), "get number");
        Require(list_->GetField(data, TextField, value.text.data(), TextSize, length), "get text");
        return true;
    }

    bool Update(std::uint64_t key) {
        if (!Find(key)) return false;
        std::uint32_t counter = 0;
        Require(list_->GetField(record_.GetData(), CounterField, counter), "get counter");
        Require(list_->SetField(record_.GetData(), CounterField, counter + 1), "set counter");
        // The record keeps the id GetEqual gave it and its key, so the table rewrites it in place.
        Require(table_->WriteRecord(record_), "update");
        return true;
    }

    bool Remove(std::uint64_t key) {
        SetKey(key);
        const StatusCode status = table_->RemoveRecord(key_);
        if (status == Status::NotFound) return false;
        Require(status, "remove");
        return true;
    }

    // One GetEqual for all the keys: the table looks them up side by side.
    void GetBatch(const std::uint64_t* keys, std::size_t count, Value* values) {
        batchKeys_.resize(count, key_);
        for (std::size_t i = 0; i < count; ++i) {
            Require(keyList_->SetField(batchKeys_[i].GetData(), KeyField, keys[i]), "set key");
        }
        batchStatuses_.clear();
        batchRecords_.clear();
        Require(table_->GetEqual(batchKeys_, batchStatuses_, batchRecords_), "get64");
        for (std::size_t i = 0; i < count; ++i) {
            if (batchStatuses_[i] != Status::Success) throw CompareError("get64: key missing");
            const unsigned char* data = batchRecords_[i].GetData();
            std::uint32_t length = 0;
            Require(list_->GetField(data, CounterField, values[i].counter), "get64 counter");
            Require(list_->GetField(data, NumberField, values[i].number), "get64 number");
            Require(list_->GetField(data, TextField, values[i].text.data(), TextSize, length), "get64 text");
        }
    }

    // A batch of records at a time: GetFirst, then GetNext over the tree index (key order), or
    // GetFirstRecord, then GetNextRecord over the store (record id order) beside a hash index.
    template <class Visit>
    void Scan(Visit&& visit) {
        Key walk(table_.get(), 0);
        std::uint32_t recordId = 0;
        std::vector<Record> batch;
        batch.reserve(ScanBatch);
        StatusCode status = IsHash ? table_->GetFirstRecord(recordId, batch, ScanBatch)
                                   : table_->GetFirst(walk, batch, ScanBatch);
        while (status == Status::Success) {
            for (const Record& record : batch) {
                std::uint64_t key = 0;
                std::uint32_t counter = 0;
                std::int64_t number = 0;
                Require(list_->GetField(record.GetData(), KeyField, key), "scan key");
                Require(list_->GetField(record.GetData(), CounterField, counter), "scan counter");
                Require(list_->GetField(record.GetData(), NumberField, number), "scan number");
                visit(key, counter, number);
            }
            batch.clear();
            status = IsHash ? table_->GetNextRecord(recordId, batch, ScanBatch)
                            : table_->GetNext(walk, batch, ScanBatch);
        }
        if (status != Status::NotFound) Require(status, "scan");
    }

    std::uint64_t Count() {
        std::uint32_t count = 0;
        Require(table_->GetCurrentRecords(count), "count");
        return count;
    }

    // What the records and the index take at the least: the record image and, for each record,
    // one tree node or one hash entry (20 bytes of links, record id and offsets, then the key
    // image); a hash index adds its bucket array (8 bytes a slot), spread over the N records.
    double ModelBytesPerRecord() {
        IIndex* index = nullptr;
        Require(table_->GetIndex(0, index), "index");
        double bytes = table_->GetRecordLength() + 20.0 + index->GetKeySize();
        if constexpr (IsHash) {
            const auto* hash = dynamic_cast<const HashIndex*>(index);
            if (hash == nullptr) throw CompareError("index 0 is no hash index");
            bytes += HashIndex::BucketHandler::SlotSize * static_cast<double>(hash->MinimumBuckets()) /
                     static_cast<double>(n_ ? n_ : 1);
        }
        return bytes;
    }

private:
    void SetKey(std::uint64_t key) { Require(keyList_->SetField(key_.GetData(), KeyField, key), "set key"); }

    bool Find(std::uint64_t key) {
        SetKey(key);
        const StatusCode status = table_->GetEqual(key_, record_);
        if (status == Status::NotFound) return false;
        Require(status, "get");
        return true;
    }

    std::uint64_t n_;
    std::unique_ptr<ITable> table_;
    Record record_;
    Key key_;
    std::vector<Key> batchKeys_;
    std::vector<unsigned char> batchStatuses_;
    std::vector<Record> batchRecords_;
    const FieldList* list_ = nullptr;
    const FieldList* keyList_ = nullptr;
};

template <IndexSpecification::Type IndexType>
void AddTavrin(std::vector<StoreEntry>& stores, const char* name, Layout layout, bool inDirectory,
               const std::string& settings, bool diskStore = false) {
    stores.push_back({name, settings, [layout, inDirectory, diskStore](std::uint64_t n, const std::string& directory) {
                          // A disk store's cache holds a quarter of the keys and values, in kilobytes.
                          const std::uint32_t cacheSize =
                              diskStore ? static_cast<std::uint32_t>(QuarterCacheBytes(n) / 1024) : WholeStoreInMemory;
                          return RunW1<TavrinStore<IndexType>>(n, layout, inDirectory ? directory : std::string(),
                                                               cacheSize);
                      }});
}

}  // namespace

void AddTavrinStores(std::vector<StoreEntry>& stores) {
    constexpr auto Tree = IndexSpecification::RedBlack;
    constexpr auto Hash = IndexSpecification::Hash;
    const std::string common = "primary unique red-black tree on the key, no mutex, maxRecords N";
    AddTavrin<Tree>(stores, "tavrin", Layout::Managed, false, "managed table, temporary mapped files, " + common);
    AddTavrin<Tree>(stores, "tavrin-dir", Layout::Managed, true, "managed table in a directory, " + common);
    AddTavrin<Tree>(stores, "tavrin-unmanaged", Layout::Unmanaged, false,
                    "unmanaged table of 64 bytes, temporary mapped files, " + common);
    AddTavrin<Tree>(stores, "tavrin-unmanaged-dir", Layout::Unmanaged, true,
                    "unmanaged table of 64 bytes in a directory, " + common);
    const std::string hash =
        "primary unique hash index on the key, no mutex, maxRecords N; scan in record id order";
    AddTavrin<Hash>(stores, "tavrin-hash", Layout::Managed, false, "managed table, temporary mapped files, " + hash);
    AddTavrin<Hash>(stores, "tavrin-hash-dir", Layout::Managed, true, "managed table in a directory, " + hash);
    AddTavrin<Hash>(stores, "tavrin-hash-unmanaged", Layout::Unmanaged, false,
                    "unmanaged table of 64 bytes, temporary mapped files, " + hash);
    AddTavrin<Tree>(stores, "tavrin-disk", Layout::Managed, true,
                    "managed table in a directory, records in a disk store whose cache holds a quarter of the "
                    "keys and values, " + common, true);
}

}  // namespace Tavrin::Compare
