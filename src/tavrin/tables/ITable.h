#pragma once
// The interface of every table.
//
// A table owns one FieldList (the record layout), one data store (the records; none in a remote
// table), its indexes (numbered from 0 in the order of their creation) and, with property bit 1, a
// mutex private to the process. A caller gets an ITable* from a factory, OpenTable,
// TableSpecification::CreateTable or Clone, owns it and deletes it.
//
// Failures: everything that builds or reshapes a table throws (DatabaseException or
// StatusCodeException); everything that works on records and keys returns a status (base/Status.h).
// A record of another table is refused with status 30, a key of another table with 27.
//
// Locking: with property bit 1 the record operations, walks, SaveAs, Clear, CreateIndexes and
// CreateTemporaryIndex hold the table's mutex for the whole call (a batch for the whole batch).
// Accessors, the record file operations, Convert, Clone, CopyRecords, CheckIntegrity and the
// serialising operations take no lock. A table without bit 1 relies on its caller.
//
// The operations stand in the order of the virtual table; overloads of one name stand together,
// the batch form before the one-record form.

#include <cstdint>
#include <string>
#include <vector>

#include "tavrin/indexes/KeyValueList.h"
#include "tavrin/records/FieldSpecification.h"
#include "tavrin/records/IdentityToken.h"

namespace Tavrin {
class MessageBuilder;
class MessageValidator;
}  // namespace Tavrin

namespace Tavrin::Database {

class FieldList;
class FieldListObject;
class IIndex;
class IndexSpecification;
class Key;
class Record;
class TableSpecification;

class ITable {
public:
    ITable() : identityToken_(IdentityToken::Issue(this)) {}
    ITable(const ITable&) = delete;
    ITable& operator=(const ITable&) = delete;
    virtual ~ITable() { identityToken_.Revoke(); }

    ///@{
    /// Record file.
    virtual void CreateRecordFile() = 0;
    virtual StatusCode OpenRecordFile() = 0;
    virtual StatusCode CloseRecordFile() = 0;
    ///@}
    ///@{
    /// Writes the record file and every index file through to the disk (msync), with the store's
    /// header and description saved first. What a completed call wrote survives the death of the
    /// process anyway; what survives a power loss is what came before the last Sync or orderly
    /// close. 0, also for a table without files (in memory); 16 when the record file is not open;
    /// 13 for a table without a store (remote); else the status of the write that failed. Holds
    /// the mutex.
    virtual StatusCode Sync() = 0;
    virtual StatusCode Convert() = 0;
    virtual StatusCode SaveAs(const std::string& directory) = 0;
    virtual StatusCode CopyFiles(const std::string& source, const std::string& destination) = 0;
    ///@}

    ///@{
    /// Indexes.
    virtual void CreateIndexes(std::vector<IndexSpecification>& specifications) = 0;
    virtual void CreateTemporaryIndex(IndexSpecification& specification) = 0;
    ///@}

    virtual ITable* Clone(const std::string& directory, bool createMutex, bool copyRecords,
                          std::uint32_t batchSize) = 0;
    virtual StatusCode Clear() = 0;
    virtual StatusCode CopyRecords(ITable* source, bool clearFirst, std::uint32_t batchSize) = 0;

    ///@{
    /// Messages.
    virtual StatusCode SerializeSpecification(MessageBuilder& builder) = 0;
    virtual StatusCode SerializeRecords(MessageBuilder& builder, const std::vector<unsigned char>& statuses,
                                        const std::vector<Record>& records) = 0;
    virtual StatusCode SerializeRecords(MessageBuilder& builder, const std::vector<Record>& records) = 0;
    virtual StatusCode SerializeKeys(MessageBuilder& builder, const std::vector<Key>& keys) = 0;
    virtual StatusCode DeserializeRecords(MessageValidator& validator, std::vector<unsigned char>& statuses,
                                          std::vector<Record>& records) = 0;
    virtual StatusCode DeserializeCounts(MessageValidator& validator, std::uint32_t& first,
                                         std::uint32_t& second) = 0;
    virtual StatusCode DeserializeRecords(MessageValidator& validator, std::vector<Record>& records) = 0;
    virtual StatusCode DeserializeKeys(MessageValidator& validator, std::vector<Key>& keys) = 0;
    ///@}

    ///@{
    /// Writes.
    virtual StatusCode ResetRecord(Record& record) = 0;
    virtual StatusCode WriteRecord(Record& record, Record& previous) = 0;
    virtual StatusCode WriteRecord(Record& record, const std::vector<std::uint16_t>& fieldIds) = 0;
    virtual StatusCode WriteRecord(Record& record) = 0;
    virtual StatusCode RemoveRecord(Key& key, Record& removed) = 0;
    virtual StatusCode RemoveRecord(Key& key) = 0;
    ///@}

    ///@{
    /// Reads by key.
    virtual StatusCode GetEqual(std::vector<Key>& keys, std::vector<unsigned char>& statuses,
                                std::vector<Record>& records) = 0;
    virtual StatusCode GetEqual(Key& key, Record& record) = 0;
    virtual StatusCode GetFirst(Key& key, std::vector<Record>& records, std::uint32_t maxRecords) = 0;
    virtual StatusCode GetFirst(Key& key, Record& record) = 0;
    virtual StatusCode GetLast(Key& key, std::vector<Record>& records, std::uint32_t maxRecords) = 0;
    virtual StatusCode GetLast(Key& key, Record& record) = 0;
    virtual StatusCode GetNext(Key& key, std::vector<Record>& records, std::uint32_t maxRecords) = 0;
    virtual StatusCode GetNext(Key& key, Record& record) = 0;
    virtual StatusCode GetPrevious(Key& key, std::vector<Record>& records, std::uint32_t maxRecords) = 0;
    virtual StatusCode GetPrevious(Key& key, Record& record) = 0;
    virtual StatusCode GetFirstEqual(Key& key, std::vector<Record>& records, std::uint16_t fieldId,
                                     std::uint32_t length, std::uint32_t maxRecords) = 0;
    virtual StatusCode GetFirstEqual(Key& key, Record& record, std::uint16_t fieldId, std::uint32_t length) = 0;
    virtual StatusCode GetLastEqual(Key& key, std::vector<Record>& records, std::uint16_t fieldId,
                                    std::uint32_t length, std::uint32_t maxRecords) = 0;
    virtual StatusCode GetLastEqual(Key& key, Record& record, std::uint16_t fieldId, std::uint32_t length) = 0;
    virtual StatusCode GetNextEqual(Key& key, std::vector<Record>& records, std::uint16_t fieldId,
                                    std::uint32_t length, std::uint32_t maxRecords) = 0;
    virtual StatusCode GetNextEqual(Key& key, Record& record, std::uint16_t fieldId, std::uint32_t length) = 0;
    virtual StatusCode GetPreviousEqual(Key& key, std::vector<Record>& records, std::uint16_t fieldId,
                                        std::uint32_t length, std::uint32_t maxRecords) = 0;
    virtual StatusCode GetPreviousEqual(Key& key, Record& record, std::uint16_t fieldId,
                                        std::uint32_t length) = 0;
    ///@}

    ///@{
    /// Reads in store order.
    virtual StatusCode GetFirstRecord(std::uint32_t& recordId, std::vector<Record>& records,
                                      std::uint32_t maxRecords) = 0;
    virtual StatusCode GetFirstRecord(std::uint32_t& recordId, Record& record) = 0;
    virtual StatusCode GetNextRecord(std::uint32_t& recordId, std::vector<Record>& records,
                                     std::uint32_t maxRecords) = 0;
    virtual StatusCode GetNextRecord(std::uint32_t& recordId, Record& record) = 0;
    ///@}

    virtual StatusCode BuildRecord(Record& record, std::uint16_t indexNumber, const KeyValueList& values) = 0;
    virtual void CheckIntegrity() = 0;

    ///@{
    /// Accessors. The field list belongs to the table; the caller must not delete it.
    virtual FieldList* GetFieldList() = 0;
    virtual TableSpecification GetSpecification() = 0;
    virtual bool GetMatchingFields(const FieldSpecification& pattern, std::vector<std::uint16_t>& fieldIds) = 0;
    virtual std::vector<FieldSpecification> GetFieldSpecificationList() = 0;
    virtual StatusCode GetFieldSpecification(std::uint16_t id, FieldSpecification& specification) = 0;
    virtual void GetFirstFieldSpecification(FieldSpecification& specification) = 0;
    virtual StatusCode GetNextFieldSpecification(FieldSpecification& specification) = 0;
    virtual bool GetMatchingIndexes(const IndexSpecification& pattern,
                                    std::vector<IndexSpecification>& specifications) = 0;
    virtual std::vector<IndexSpecification> GetIndexSpecificationList() = 0;
    virtual StatusCode GetIndexSpecification(std::uint16_t number, IndexSpecification& specification) = 0;
    virtual std::vector<std::uint16_t> GetFieldIdList() = 0;
    virtual void GetFirstFieldId(std::uint16_t& id) = 0;
    virtual StatusCode GetNextFieldId(std::uint16_t& id) = 0;
    virtual StatusCode GetFieldType(std::uint16_t id, FieldSpecification::Type& type) = 0;
    virtual std::string GetName() = 0;
    virtual std::string GetDirectory() = 0;
    virtual std::string GetFileName() = 0;
    virtual StatusCode GetMaxRecords(std::uint32_t& maxRecords) = 0;
    virtual StatusCode GetCurrentRecords(std::uint32_t& currentRecords) = 0;
    virtual std::uint32_t GetRecordLength() = 0;
    virtual std::uint32_t GetNumberOfIndexes() = 0;
    virtual std::uint16_t GetPrimaryIndex() = 0;
    virtual StatusCode GetIndex(std::uint16_t number, IIndex*& index) = 0;
    virtual bool IsRecordFileOpen() = 0;
    virtual bool IsInMemory() = 0;
    virtual bool IsOrderedBefore(const FieldListObject& left, const FieldListObject& right) = 0;
    virtual bool IsSameBinding(const FieldListObject& left, const FieldListObject& right) = 0;
    virtual bool HasField(std::uint16_t id) = 0;
    virtual bool IsManaged() = 0;
    ///@}

    /// The token that bound records and keys copy (records/IdentityToken.h).
    const IdentityToken& GetIdentityToken() const noexcept { return identityToken_; }

protected:
    /// Gives the table a new token: every record and key bound so far stops being initialized.
    void RenewIdentityToken() {
        identityToken_.Revoke();
        identityToken_ = IdentityToken::Issue(this);
    }

private:
    IdentityToken identityToken_;
};

}  // namespace Tavrin::Database
