#pragma once
// Table: the frame that ManagedTable, UnmanagedTable and RemoteTable share. It implements ITable but
// for the index-building operations and the layout flag, and keeps its own description in the user
// data area of its record file (it is the store's UserDataStore).
//
// A table without a store (a RemoteTable, which only describes a table of another process) has no
// records and no index files, and never will: every operation that needs them answers status 13
// (Status::NotAvailable) before it looks at its arguments, and throws StatusCodeException 13 where it
// has no status result. That covers the record file operations, the reads, writes and removals,
// Clear, the record counts (which also give 0), SaveAs, CopyFiles, Convert, CopyRecords, Clone and
// CheckIntegrity.
//
// Owns: the mutex (property bit 1), the field list, the data store and the indexes. They are made
// in that order by Construct and released in the reverse one: indexes, store, field list, mutex.
// The store's last save asks the table for its description, which calls the layout flag, so a
// derived destructor releases the indexes and the store (ReleaseStorage) while its own IsManaged
// still answers.
//
// Files: a table with a directory keeps its records in `directory` + `fileName`, where the file
// name is the table's name with each blank written '_' and ".tab" behind it (GetRecordFileName).
// A table without a directory lives in a temporary mapped file. The index files lie beside the
// record file, named from the table's and the index's names; SaveAs and CopyFiles
// (TableFiles.cpp) write and copy them all as one set.
//
// Locking: the accessors, the record file operations and ResetRecord take no lock (index numbers
// and the field list never change while indexes exist). The record operations hold the mutex for
// the whole call, through a MutexHolder on GetMutex(); a table without bit 1 has no mutex and
// relies on its caller.

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tavrin/base/IMutex.h"
#include "tavrin/records/FieldList.h"
#include "tavrin/schema/TableSpecification.h"
#include "tavrin/storage/DataStore.h"
#include "tavrin/storage/StoreStatistics.h"
#include "tavrin/storage/UserDataStore.h"
#include "tavrin/tables/ITable.h"

namespace Tavrin::Database {

class IFieldListFactory;
class Index;

class Table : public ITable, public UserDataStore {
public:
    /// A growRecords value that means half of maxRecords.
    static constexpr std::uint32_t HalfOfMaxRecords = 0xFFFFFFFF;
    static constexpr std::uint16_t NoIndex = 0xFFFF;

    /// The name of the record file of table `tableName`, without directory: the name with each
    /// blank written '_', then ".tab".
    static std::string GetRecordFileName(const std::string& tableName);
    /// Appends the specifications of the indexes of table `tableName` whose files lie in `directory`:
    /// the tree indexes, then the hash indexes, each kind in the order of the walk. Only the table's
    /// own files count: a file is taken only under the exact name that its index's file name rule
    /// gives for this table and the index name stored in it, so another table's files never are.
    /// Reads the files and writes none. Status 0, or the walk's (6 for a missing directory).
    static StatusCode FindIndexSpecifications(const std::string& directory, const std::string& tableName,
                                              std::vector<IndexSpecification>& specifications);
    /// The paths of the files of the index `specification` of table `tableName` in `directory`:
    /// one tree file, or the three files of a hash index.
    static std::vector<std::string> GetIndexFilePaths(const std::string& directory, const std::string& tableName,
                                                      const IndexSpecification& specification);

    /// What a factory hands to Construct. `directory` null means a table without files; `recordLength`
    /// is used by the unmanaged layout only.
    struct Settings {
        const std::string& name;
        const std::string* directory;
        std::uint32_t properties;
        const std::vector<FieldSpecification>& fields;
        std::uint32_t maxRecords;
        std::uint32_t recordLength;
        std::uint32_t growRecords;
        std::uint32_t cacheSize;
    };

    ~Table() override;

    /// Record file. CreateRecordFile throws StatusCodeException 26 while indexes exist, and adds
    /// DatabaseException 9 to anything the store throws. OpenRecordFile: 26 while indexes exist, 6
    /// for a table without files, else the store's status (25 for a file that holds another table's
    /// description). CloseRecordFile: 26 while indexes exist, else the store's status.
    void CreateRecordFile() override;
    StatusCode OpenRecordFile() override;
    StatusCode CloseRecordFile() override;
    StatusCode Sync() override;
    /// TableConvert.cpp: the new store is built beside the record file and takes its place only when
    /// complete; the old files move into the sub-directory "Convert".
    StatusCode Convert() override;
    ConversionReport GetLastConversionReport() override { return conversionReport_; }
    /// Finishes a conversion of the record file `recordFile` that was stopped (by a kill) after its
    /// new store was complete: the old files go into "Convert", the new ones take their names. 0
    /// also when there is nothing to finish; else the status of the move that failed. Opens nothing.
    static StatusCode CompleteConversion(const std::string& recordFile);
    /// The description stored in the record file `fileName`, read through a plain store that is
    /// closed again (OpenTable.cpp). Throws StatusCodeException with the store's or the reader's
    /// status, at "Tavrin::Database::Table::Open".
    static TableSpecification ReadStoredSpecification(const std::string& fileName);
    StatusCode SaveAs(const std::string& directory) override;
    StatusCode CopyFiles(const std::string& source, const std::string& destination) override;

    ITable* Clone(const std::string& directory, bool createMutex, bool copyRecords,
                  std::uint32_t batchSize) override;
    StatusCode Clear() override;
    StatusCode CopyRecords(ITable* source, bool clearFirst, std::uint32_t batchSize) override;

    StatusCode SerializeSpecification(MessageBuilder& builder) override;
    StatusCode SerializeRecords(MessageBuilder& builder, const std::vector<unsigned char>& statuses,
                                const std::vector<Record>& records) override;
    StatusCode SerializeRecords(MessageBuilder& builder, const std::vector<Record>& records) override;
    StatusCode SerializeKeys(MessageBuilder& builder, const std::vector<Key>& keys) override;
    StatusCode DeserializeRecords(MessageValidator& validator, std::vector<unsigned char>& statuses,
                                  std::vector<Record>& records) override;
    StatusCode DeserializeCounts(MessageValidator& validator, std::uint32_t& first, std::uint32_t& second) override;
    StatusCode DeserializeRecords(MessageValidator& validator, std::vector<Record>& records) override;
    StatusCode DeserializeKeys(MessageValidator& validator, std::vector<Key>& keys) override;

    /// Empties the image of a record of this table and forgets its id; 30 for a record of another
    /// table (or one not bound at all).
    StatusCode ResetRecord(Record& record) override;
    StatusCode WriteRecord(Record& record, Record& previous) override;
    StatusCode WriteRecord(Record& record, const std::vector<std::uint16_t>& fieldIds) override;
    StatusCode WriteRecord(Record& record) override;
    StatusCode RemoveRecord(Key& key, Record& removed) override;
    StatusCode RemoveRecord(Key& key) override;

    StatusCode GetEqual(std::vector<Key>& keys, std::vector<unsigned char>& statuses,
                        std::vector<Record>& records) override;
    StatusCode GetEqual(Key& key, Record& record) override;
    StatusCode GetFirst(Key& key, std::vector<Record>& records, std::uint32_t maxRecords) override;
    StatusCode GetFirst(Key& key, Record& record) override;
    StatusCode GetLast(Key& key, std::vector<Record>& records, std::uint32_t maxRecords) override;
    StatusCode GetLast(Key& key, Record& record) override;
    StatusCode GetNext(Key& key, std::vector<Record>& records, std::uint32_t maxRecords) override;
    StatusCode GetNext(Key& key, Record& record) override;
    StatusCode GetPrevious(Key& key, std::vector<Record>& records, std::uint32_t maxRecords) override;
    StatusCode GetPrevious(Key& key, Record& record) override;
    StatusCode GetFirstEqual(Key& key, std::vector<Record>& records, std::uint16_t fieldId, std::uint32_t length,
                             std::uint32_t maxRecords) override;
    StatusCode GetFirstEqual(Key& key, Record& record, std::uint16_t fieldId, std::uint32_t length) override;
    StatusCode GetLastEqual(Key& key, std::vector<Record>& records, std::uint16_t fieldId, std::uint32_t length,
                            std::uint32_t maxRecords) override;
    StatusCode GetLastEqual(Key& key, Record& record, std::uint16_t fieldId, std::uint32_t length) override;
    StatusCode GetNextEqual(Key& key, std::vector<Record>& records, std::uint16_t fieldId, std::uint32_t length,
                            std::uint32_t maxRecords) override;
    StatusCode GetNextEqual(Key& key, Record& record, std::uint16_t fieldId, std::uint32_t length) override;
    StatusCode GetPreviousEqual(Key& key, std::vector<Record>& records, std::uint16_t fieldId,
                                std::uint32_t length, std::uint32_t maxRecords) override;
    StatusCode GetPreviousEqual(Key& key, Record& record, std::uint16_t fieldId, std::uint32_t length) override;

    StatusCode GetFirstRecord(std::uint32_t& recordId, std::vector<Record>& records,
                              std::uint32_t maxRecords) override;
    StatusCode GetFirstRecord(std::uint32_t& recordId, Record& record) override;
    StatusCode GetNextRecord(std::uint32_t& recordId, std::vector<Record>& records,
                             std::uint32_t maxRecords) override;
    StatusCode GetNextRecord(std::uint32_t& recordId, Record& record) override;

    StatusCode BuildRecord(Record& record, std::uint16_t indexNumber, const KeyValueList& values) override;
    void CheckIntegrity() override;

    /// Accessors: the field operations forward to the field list, the counts to the store.
    FieldList* GetFieldList() override { return fieldList_.get(); }
    TableSpecification GetSpecification() override;
    bool GetMatchingFields(const FieldSpecification& pattern, std::vector<std::uint16_t>& fieldIds) override;
    std::vector<FieldSpecification> GetFieldSpecificationList() override;
    StatusCode GetFieldSpecification(std::uint16_t id, FieldSpecification& specification) override;
    void GetFirstFieldSpecification(FieldSpecification& specification) override;
    StatusCode GetNextFieldSpecification(FieldSpecification& specification) override;
    bool GetMatchingIndexes(const IndexSpecification& pattern,
                            std::vector<IndexSpecification>& specifications) override;
    std::vector<IndexSpecification> GetIndexSpecificationList() override;
    /// Status 6 for a number that is no index.
    StatusCode GetIndexSpecification(std::uint16_t number, IndexSpecification& specification) override;
    std::vector<std::uint16_t> GetFieldIdList() override;
    void GetFirstFieldId(std::uint16_t& id) override;
    /// Status 23 for an id that is no field, 6 after the last field.
    StatusCode GetNextFieldId(std::uint16_t& id) override;
    StatusCode GetFieldType(std::uint16_t id, FieldSpecification::Type& type) override;
    std::string GetName() override { return name_; }
    std::string GetDirectory() override { return directory_; }
    std::string GetFileName() override { return fileName_; }
    StatusCode GetMaxRecords(std::uint32_t& maxRecords) override;
    StatusCode GetCurrentRecords(std::uint32_t& currentRecords) override;
    std::uint32_t GetRecordLength() override { return fieldList_->GetDataLength(); }
    std::uint32_t GetNumberOfIndexes() override { return numberOfIndexes_; }
    std::uint32_t GetNumberOfTemporaryIndexes() override { return temporaryIndexes_; }
    std::uint16_t GetPrimaryIndex() override { return primaryIndex_; }
    /// Status 26 for a number that is no index; the index stays the table's.
    StatusCode GetIndex(std::uint16_t number, IIndex*& index) override;
    bool IsRecordFileOpen() override;
    bool IsInMemory() override { return fileName_.empty(); }
    /// True when `left` is initialized and `right` is not.
    bool IsOrderedBefore(const FieldListObject& left, const FieldListObject& right) override;
    /// True when both are initialized and bound to the same table.
    bool IsSameBinding(const FieldListObject& left, const FieldListObject& right) override;
    bool HasField(std::uint16_t id) override;

    /// The store calls these: the table's description goes into the record file's user data, and a
    /// file whose stored description has another name, layout, field list or record length is
    /// refused with 25. Properties and sizing are not compared.
    StatusCode SerializeUserData(MessageBuilder& builder) override;
    StatusCode DeserializeUserData(MessageValidator& validator) override;

    /// The figures of the table's store (GetStatistics of the store, under the table's lock); zeros
    /// for a table without a store or with its record file closed.
    StoreStatistics GetStoreStatistics();

protected:
    /// Builds the field list with the layout of the derived class.
    using FieldListMaker = FieldList* (*)(const std::vector<FieldSpecification>& fields,
                                          std::uint32_t recordLength);

    /// An empty frame: no name, no field list, no store. Construct fills it.
    Table();

    /// Sets the members, makes the mutex (bit 1), the field list (through `makeFieldList`) and the
    /// memory store, and with bit 0 creates the record file, or opens it when the table has a
    /// directory. A record file that exists but cannot be opened (left open by a crash, damaged, or
    /// holding another description) is left as it is: StatusCodeException with the open's status.
    /// A cache size other than CacheAll makes a disk store (its records in `<name>.tab.data` behind
    /// a cache of that many kilobytes), which throws what DiskDataStore's constructor throws.
    /// Everything made so far is released by the destructor.
    void Construct(const Settings& settings, FieldListMaker makeFieldList);

    /// Deletes the indexes in number order, then the store (which saves and closes its file).
    void ReleaseStorage() noexcept;

    /// Null for a table made without bit 1.
    IMutex* GetMutex() const noexcept { return mutex_.get(); }

    /// Reads and messages
    /// For a table built from a description that another process's table wrote (RemoteTable): takes
    /// the name, property bits and sizing as they are, makes a mutex whatever bit 1 says, and the
    /// field list through `makeFieldList` (DatabaseException 3 when it gives none). No store, no files:
    /// the table answers 13 wherever it would need them.
    void ConstructDescribed(const TableSpecification& specification, FieldListMaker makeFieldList);
    /// Appends an index at the next position and applies the primary rule by the index's own number:
    /// a primary unique index takes the place, a unique one takes it while it is free. The caller
    /// holds the mutex.
    void AppendDescribedIndex(std::unique_ptr<IIndex> index);

private:
    /// The index operation that one step of a key read calls; defined in TableRead.cpp.
    enum class KeyStep : std::uint8_t;
    static StatusCode StepIndex(Index& index, KeyStep step, Key& key, std::uint32_t& recordId,
                                std::uint16_t fieldId, std::uint32_t length);
    /// The structure of the key's index, or null (status 27) for a key that is not initialized, is
    /// bound to another table or names no index of this one.
    Index* GetKeyIndex(const Key& key) const noexcept;
    /// Binds `record` to this table and copies the stored image of `recordId` into it.
    StatusCode FillFromStore(std::uint32_t recordId, Record& record);
    /// Appends the stored image of `recordId` to `records`; on failure the vector is as it was.
    StatusCode AppendFromStore(std::uint32_t recordId, std::vector<Record>& records);
    /// The store check (13), the key check (27) and one index step, which gives the record id; takes
    /// no lock. Every key read and every step of a batch starts here, so a table without a store
    /// answers 13 from it.
    StatusCode StepByKey(KeyStep step, Key& key, std::uint32_t& recordId, std::uint16_t fieldId, std::uint32_t length);
    /// StepByKey and the copy of the record found into `record`; takes no lock.
    StatusCode ReadByKey(KeyStep step, Key& key, Record& record, std::uint16_t fieldId, std::uint32_t length);
    /// The one-record and batch frames of the key reads; each holds the mutex for the whole call.
    StatusCode ReadOne(KeyStep step, Key& key, Record& record, std::uint16_t fieldId = 0,
                       std::uint32_t length = 0);
    StatusCode ReadBatch(KeyStep first, KeyStep next, Key& key, std::vector<Record>& records,
                         std::uint32_t maxRecords, std::uint16_t fieldId = 0, std::uint32_t length = 0);
    /// The first step of a store walk: 13 without a store, 30 for a next step from no record, 16
    /// without an open store, else the store's GetFirst or GetNext. Takes no lock.
    StatusCode StepStore(bool fromFirst, std::uint32_t& recordId, unsigned char*& image);
    /// The one-record and batch frames of the store walks; each holds the mutex for the whole call.
    StatusCode ReadStore(bool fromFirst, std::uint32_t& recordId, Record& record);
    StatusCode ReadStoreBatch(bool fromFirst, std::uint32_t& recordId, std::vector<Record>& records,
                              std::uint32_t maxRecords);
    // End of reads and messages

    // Index management and writes
protected:
    /// The work of a derived class's CreateIndexes and CreateTemporaryIndex, which hold the mutex and
    /// pass the field list factory of the table's layout for the key lists.
    /// CreateIndexes: DatabaseException 12 when the table has indexes, 10 when the store is not open;
    /// then CreateIndex for each specification in order, and a fresh Uuid on the store and on every
    /// index. A failing CreateIndex leaves the indexes made before it, with the old Uuid.
    void CreateIndexes(std::vector<IndexSpecification>& specifications, const IFieldListFactory& fieldListFactory);
    /// Checks `specification` against the existing indexes (DatabaseException 12 for a repeated name,
    /// a second primary unique index or no key fields), writes the next number into it, makes the
    /// index (a HashIndex or a RedBlackTreeIndex; 12 for an unknown type, 4 when none can be
    /// allocated) and brings its files into line with the records (InitializeIndex). On failure the
    /// table has the indexes it had before, and the failed index leaves no file that a later open
    /// would trust.
    void CreateIndex(IndexSpecification& specification, const IFieldListFactory& fieldListFactory);
    /// Counts the index that CreateTemporaryIndex has just made (GetNumberOfTemporaryIndexes).
    void NoteTemporaryIndex() noexcept { ++temporaryIndexes_; }

private:
    /// The structure behind index `number`; every index a table holds derives from Index.
    Index& IndexAt(std::uint16_t number) const noexcept;
    std::unique_ptr<Index> MakeIndex(const IndexSpecification& specification,
                                     const IFieldListFactory& fieldListFactory) const;
    /// Opens the index's files with the store's Uuid, or creates them and, when the store holds
    /// records, rebuilds the index from them; then the primary index rule. Throws what the index
    /// throws, and StatusCodeException 26 for a key that a rebuild meets twice.
    void InitializeIndex(Index& index);
    void RebuildIndex(Index& index);
    /// Takes the newest index off the table after a failed InitializeIndex and removes its files.
    void DiscardNewestIndex() noexcept;
    /// A primary unique index takes the primary place; a unique one takes it while it is free.
    void ApplyPrimaryRule(const IIndex& index) noexcept;

    /// The one routine behind the three WriteRecord forms; at most one of the pointers is given.
    StatusCode Write(Record& record, Record* previous, const std::vector<std::uint16_t>* fieldIds);
    /// The update of a record whose id is in use and whose key fields are unchanged: no index is
    /// touched. False, with nothing done, when the write must take the key path.
    bool WriteInPlace(Record& record, Record* previous, const std::vector<std::uint16_t>* fieldIds,
                      StatusCode& status);
    StatusCode WriteByKey(Record& record, Record* previous, const std::vector<std::uint16_t>* fieldIds);
    bool HasKeyFieldChanged(const unsigned char* image, const unsigned char* stored) const;
    /// Copies the listed fields of `source` into `target`, in list order; 14 unless both are initialized.
    StatusCode MergeFields(Record& target, const Record& source, const std::vector<std::uint16_t>& fieldIds) const;
    /// Binds `key` to index `number` and builds it from a record image and its id.
    StatusCode MakeIndexKey(Key& key, std::uint16_t number, const unsigned char* image, std::uint32_t id);
    /// Stores a new record and adds its key to every index; a failure is undone and is the result.
    /// `primaryKey` is the primary index's key of the record, as the lookup that found it new built it.
    StatusCode AddNewRecord(Record* previous, Record& record, const Key& primaryKey);
    StatusCode InsertKeys(const unsigned char* image, std::uint32_t id, const Key& primaryKey, std::uint16_t& inserted);
    StatusCode UndoInsertKeys(const unsigned char* image, std::uint32_t id, std::uint16_t inserted,
                              StatusCode failure);
    /// Replaces the record `id` that the primary key found, moving the keys of the other indexes
    /// whose key changed; a failure is undone and is the result.
    StatusCode AddExistingRecord(Record* previous, Record& record, std::uint32_t id);
    StatusCode MoveKeys(const unsigned char* image, const unsigned char* stored, std::uint32_t id,
                        std::uint16_t& failedAt);
    StatusCode UndoMoveKeys(const unsigned char* image, const unsigned char* stored, std::uint32_t id,
                            std::uint16_t failedAt, StatusCode failure);
    /// The two RemoveRecord forms; `removed`, when given, receives the record.
    StatusCode Remove(Key& key, Record* removed);
    // End of index management and writes

private:
    /// True for a table built by ConstructDescribed, which answers 13 (see the head of this file).
    /// The store is made once by Construct and kept until destruction, so this needs no lock.
    bool HasNoStore() const noexcept { return !dataStore_; }
    /// Whether the table asks for a store that keeps its records in a file of their own beside the
    /// record file (a cache size other than CacheAll).
    bool HasDiskStore() const noexcept { return cacheSize_ != TableSpecification::CacheAll; }
    /// The files that hold the store of this table in `directory` (TableFiles.cpp).
    std::vector<std::string> GetStoreFilePaths(const std::string& directory) const;
    void SetFileNames(const std::string& directory);
    void MakeStore();
    void CreateOrOpenRecordFile();
    /// The table that the record file `name` in `directory` describes, with its store open and no
    /// indexes, as the source of a conversion (TableConvert.cpp).
    static StatusCode OpenConversionSource(const std::string& directory, const std::string& name,
                                           std::unique_ptr<ITable>& table);
    /// Creates the store at `path`, fills it with the records of `oldTable` in this layout and closes
    /// it; on failure the store is closed and nothing built is left (TableConvert.cpp).
    StatusCode BuildConvertedFile(ITable& oldTable, const std::string& path, ConversionReport& report);
    StatusCode CopyConvertedRecords(ITable& oldTable, ConversionReport& report);
    /// `directory`, with '/' appended unless it is empty or ends in '/' or '\', then the record file's
    /// name (GetRecordFileName), also for a table without files.
    std::string MakeRecordFilePath(const std::string& directory) const;

    std::string name_;
    std::string directory_;  // ends in '/' or '\'; empty for a table without files
    std::string fileName_;   // empty for a table without files
    std::uint32_t properties_ = 0;
    std::unique_ptr<IMutex> mutex_;
    std::unique_ptr<FieldList> fieldList_;
    std::uint32_t initialMaxRecords_ = 0;
    std::uint32_t growRecords_ = HalfOfMaxRecords;
    std::uint32_t cacheSize_ = 0xFFFFFFFF;
    std::unique_ptr<DataStore> dataStore_;
    std::vector<std::unique_ptr<IIndex>> indexes_;  // position is the index number
    std::uint16_t numberOfIndexes_ = 0;             // always indexes_.size()
    std::uint16_t temporaryIndexes_ = 0;            // the last ones, made by CreateTemporaryIndex
    std::set<std::uint16_t> keyFieldIds_;           // ids of the fields that any index uses
    std::uint16_t primaryIndex_ = NoIndex;
    ConversionReport conversionReport_;  // of the last Convert that ran to its end
};

}  // namespace Tavrin::Database
