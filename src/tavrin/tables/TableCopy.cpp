// CopyRecords, which writes the records of one table into another field by field name, and Clone,
// which makes a new table of this one's shape and can fill it.

#include <memory>
#include <new>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/File.h"
#include "tavrin/base/FileSet.h"
#include "tavrin/base/Throw.h"
#include "tavrin/records/Record.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/schema/TableSpecification.h"
#include "tavrin/tables/MatchedFields.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Database {

namespace {

constexpr const char* CloneOperation = "Tavrin::Database::Table::Clone";

// A record bound to `table` with an empty image: 0, or 41 when it can't be made.
StatusCode Bind(ITable* table, std::unique_ptr<Record>& record) {
    try {
        record = std::make_unique<Record>(table);
    } catch (const std::bad_alloc&) {
        return Status::OutOfMemory;
    } catch (const Exception&) {
        return Status::OutOfMemory;
    }
    return Status::Success;
}

}  // namespace

StatusCode Table::CopyRecords(ITable* source, bool clearFirst, std::uint32_t batchSize) {
    if (HasNoStore()) return Status::NotAvailable;
    // Copying a table into itself would read the records it is rewriting.
    if (source == nullptr || source == this) return Status::Invalid;
    std::unique_ptr<Record> sourceRecord;
    std::unique_ptr<Record> targetRecord;
    StatusCode status = Bind(source, sourceRecord);
    if (status == Status::Success) status = Bind(this, targetRecord);
    if (status != Status::Success) return status;
    MatchedFields fields;
    status = fields.Match(*targetRecord, *sourceRecord);
    if (status != Status::Success) return status;
    if (clearFirst && (status = Clear()) != Status::Success) return status;

    // A batch size of 0 asks the batch reads for every record at once.
    std::uint32_t recordId = FieldListObject::NoRecordId;
    std::vector<Record> batch;
    for (status = source->GetFirstRecord(recordId, batch, batchSize); status == Status::Success;
         status = source->GetNextRecord(recordId, batch, batchSize)) {
        for (const Record& record : batch) {
            // The image is reset for every record, so no value of the one before carries over,
            // also not in an unmanaged layout, whose fields are never undefined.
            status = ResetRecord(*targetRecord);
            if (status == Status::Success && !record.IsInitialized()) status = Status::NotUsable;
            if (status == Status::Success) {
                status = fields.Copy(*fieldList_, targetRecord->GetData(), *record.GetFieldList(), record.GetData(),
                                     nullptr);
            }
            if (status == Status::Success) status = WriteRecord(*targetRecord);
            if (status != Status::Success) return status;
        }
        batch.clear();
    }
    return status == Status::NotFound ? Status::Success : status;
}

ITable* Table::Clone(const std::string& directory, bool createMutex, bool copyRecords, std::uint32_t batchSize) {
    if (HasNoStore()) ThrowStatus(CloneOperation, Status::NotAvailable);
    // The clone has this table's name: in this table's directory it would take this table's files.
    if (!directory.empty() && !IsInMemory() && File::IsSameFile(directory, directory_)) {
        ThrowDatabase(CloneOperation, DatabaseException::InvalidParameter,
                      "clone of table <%s> into its own directory <%s>", name_.c_str(), directory.c_str());
    }
    const TableSpecification specification = GetSpecification();
    std::uint32_t properties = specification.GetProperties() | TableSpecification::CreateRecordFileProperty;
    if (createMutex) properties |= TableSpecification::CreateMutexProperty;
    const TableSpecification cloneSpecification(name_, specification.IsManaged(), properties,
                                                specification.GetFields(), specification.GetInitialMaximumRecords(),
                                                specification.GetRecordLength(), specification.GetGrowRecords(),
                                                specification.GetCacheSize());
    std::vector<IndexSpecification> indexes = GetIndexSpecificationList();

    // What lies under the clone's file names now, so that a failure takes back what the clone made.
    std::vector<std::string> paths;
    if (!directory.empty()) {
        paths = GetStoreFilePaths(directory);
        for (const IndexSpecification& index : indexes) {
            for (std::string& path : GetIndexFilePaths(directory, name_, index)) paths.push_back(std::move(path));
        }
    }
    const FileSet files(std::move(paths));

    std::unique_ptr<ITable> clone(cloneSpecification.CreateTable(directory));
    try {
        clone->CreateIndexes(indexes);
        if (copyRecords) {
            const StatusCode status = clone->CopyRecords(this, true, batchSize);
            if (status != Status::Success) ThrowStatus(CloneOperation, status);
        }
    } catch (const Exception&) {
        clone.reset();  // closes the clone's files before they are removed
        files.RemoveChanged();
        throw;
    }
    return clone.release();
}

}  // namespace Tavrin::Database
