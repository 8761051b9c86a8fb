#pragma once
// RemoteTable: a table without records, built from the description that another process's table
// wrote with SerializeSpecification. It has that table's name, layout, property bits and indexes,
// so Record and Key objects can be bound to it, built, and moved through messages with the same
// field ids, record length and index numbers as the far side. Made by RemoteTableFactory.
//
// Owns: a mutex (always, whatever property bit 1 says), the field list and one plain Index per
// index of the far table, which lays keys out and holds nothing. No store, no files: IsInMemory()
// is true and the key field set stays empty. Nothing changes after construction, so the operations
// that work here (accessors, SerializeSpecification, ResetRecord, BuildRecord and the message
// operations) may be called from several threads; only construction takes the mutex.
//
// Everything that needs records answers status 13 (Status::NotAvailable: not available in this
// class), never 16, because no store will ever be opened here: the reads by key and in store
// order, WriteRecord, RemoveRecord, Clear, the record file operations, SaveAs, CopyFiles, Convert,
// CopyRecords and the record counts. The operations without a status result (CreateRecordFile,
// Clone, CheckIntegrity) throw StatusCodeException 13; CreateIndexes and CreateTemporaryIndex throw
// DatabaseException 4 whatever the arguments.

#include <cstdint>
#include <string>
#include <vector>

#include "tables/Table.h"

namespace Tavrin::Database {

class RemoteTable final : public Table {
public:
    ~RemoteTable() override;

    void CreateIndexes(std::vector<IndexSpecification>& specifications) override;
    void CreateTemporaryIndex(IndexSpecification& specification) override;
    bool IsManaged() override { return managed_; }

    // Nothing to work on: 13, see above.
    void CreateRecordFile() override;
    StatusCode OpenRecordFile() override;
    StatusCode CloseRecordFile() override;
    StatusCode Convert() override;
    StatusCode SaveAs(const std::string& directory) override;
    StatusCode CopyFiles(const std::string& source, const std::string& destination) override;
    ITable* Clone(const std::string& directory, bool createMutex, bool copyRecords, std::uint32_t batchSize) override;
    StatusCode Clear() override;
    StatusCode CopyRecords(ITable* source, bool clearFirst, std::uint32_t batchSize) override;
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
    void CheckIntegrity() override;
    // 13, with the count set to 0.
    StatusCode GetMaxRecords(std::uint32_t& maxRecords) override;
    StatusCode GetCurrentRecords(std::uint32_t& currentRecords) override;

private:
    friend class RemoteTableFactory;

    RemoteTable() = default;
    // Reads the table description, the number of indexes and each index description, then builds
    // the mutex, the field list and the indexes (under the mutex), taking index numbers as they come.
    // A short or malformed message throws StatusCodeException with its status (23, 21 for a newer
    // version, or a status of the specifications); a field list or index that can't be built throws
    // what its constructor throws, DatabaseException 4 when an index can't be allocated.
    void Construct(MessageValidator& validator);

    bool managed_ = false;
};

}  // namespace Tavrin::Database
