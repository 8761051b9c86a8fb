// Convert: carries the records of a record file written with another description into this table's
// layout, field by field name.
//
// The conversion never strands records. The new store is built beside the record file under the
// name `<file>.converting` (a disk store's records in `<file>.converting.data`) while the old file
// stays in place and untouched; a failure up to here removes what was built, and the table is as
// before. A complete and closed new store is then renamed to `<file>.converted` (its records file
// first, the control file last): that name is the point of no return. From there on the switch
// (CompleteConversion) moves the old index files, the old records file and the old record file into
// the sub-directory "Convert", and the converted files to the record file's names. A kill anywhere
// in the switch leaves `<file>.converted` behind, and the next open (OpenRecordFile, OpenTable)
// finishes the switch before it reads anything: it sees the old table until the new one is complete,
// and the complete new one after.
//
// Old index files leave with the old record file because their key field ids belong to the old
// layout: a later open would otherwise rebuild them over whatever field carries those ids now.

#include <memory>
#include <vector>

#include <boost/filesystem.hpp>

#include "tavrin/base/File.h"
#include "tavrin/base/Uuid.h"
#include "tavrin/records/Record.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/schema/TableSpecification.h"
#include "tavrin/tables/MatchedFields.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Database {

namespace {

constexpr const char* ConversionDirectoryName = "Convert";
constexpr const char* BuildingSuffix = ".converting";
constexpr const char* ConvertedSuffix = ".converted";
constexpr const char* RecordsSuffix = ".data";  // a disk store's file of records beside its control file

// The conversion directory exists afterwards: 0, or 1 when it can't be made. An error while its
// existence is asked passes as Boost's exception.
StatusCode MakeConversionDirectory(const std::string& path) {
    if (boost::filesystem::exists(path)) return Status::Success;
    try {
        boost::filesystem::create_directory(path);
    } catch (...) {
        return Status::Failure;
    }
    return Status::Success;
}

// Moves `path` into `directory` under its own file name, replacing a file of that name there.
StatusCode MoveInto(const std::string& path, const std::string& directory) {
    const std::size_t separator = path.find_last_of("/\\");
    const std::string name = separator == std::string::npos ? path : path.substr(separator + 1);
    return File::Rename(path, File::MakePath(directory, name), true);
}

// Moves the files of every index of the table whose record file is `recordFile` into `target`; the
// description file of a hash index last, since it is the file by which the index is found.
StatusCode MoveIndexFiles(const std::string& directory, const std::string& tableName, const std::string& target) {
    std::vector<IndexSpecification> indexes;
    StatusCode status = Table::FindIndexSpecifications(directory, tableName, indexes);
    for (const IndexSpecification& index : indexes) {
        const std::vector<std::string> paths = Table::GetIndexFilePaths(directory, tableName, index);
        for (auto path = paths.rbegin(); status == Status::Success && path != paths.rend(); ++path) {
            status = MoveInto(*path, target);
        }
    }
    return status;
}

}  // namespace

StatusCode Table::CompleteConversion(const std::string& recordFile) {
    const std::string converted = recordFile + ConvertedSuffix;
    if (!File::IsFound(converted)) return Status::Success;
    const std::size_t separator = recordFile.find_last_of("/\\");
    const std::string directory = separator == std::string::npos ? "" : recordFile.substr(0, separator + 1);
    const std::string fileName = recordFile.substr(directory.size());
    const std::string target = directory + ConversionDirectoryName;
    StatusCode status = Status::Success;
    try {
        status = MakeConversionDirectory(target);
    } catch (...) {
        status = Status::Failure;
    }
    // While the old record file is in place, nothing of the old table has left yet but index files
    // (the record file leaves last), so a records file beside it is the old one too.
    if (status == Status::Success && File::IsFound(recordFile)) {
        // Index files are named from the name that the record file's name was made of.
        status = MoveIndexFiles(directory, fileName.substr(0, fileName.size() - 4), target);
        if (status == Status::Success && File::IsFound(recordFile + RecordsSuffix)) {
            status = MoveInto(recordFile + RecordsSuffix, target);
        }
        if (status == Status::Success) status = MoveInto(recordFile, target);
    }
    if (status == Status::Success && File::IsFound(converted + RecordsSuffix)) {
        status = File::Rename(converted + RecordsSuffix, recordFile + RecordsSuffix, true);
    }
    return status == Status::Success ? File::Rename(converted, recordFile, true) : status;
}

// The old table is built from the description in the file, but not with it: without bit 0 and 2,
// so that no open of its own starts a conversion of the file to itself when the file does not open
// as what it says it is. Its stored bits are given back before its store is opened, so that the file
// it saves is the file it was. 25 for the file of a table of another name: a conversion carries a
// table's records into its new layout, never into another table.
StatusCode Table::OpenConversionSource(const std::string& directory, const std::string& name,
                                       std::unique_ptr<ITable>& table) {
    const std::string path = directory + GetRecordFileName(name);
    const TableSpecification stored = ReadStoredSpecification(path);
    if (stored.GetName() != name) return Status::DescriptionDiffers;
    const std::uint32_t closed =
        stored.GetProperties() & ~(TableSpecification::CreateRecordFileProperty | TableSpecification::ConvertProperty);
    const TableSpecification old(stored.GetName(), stored.IsManaged(), closed, stored.GetFields(),
                                 stored.GetInitialMaximumRecords(), stored.GetRecordLength(), stored.GetGrowRecords(),
                                 stored.GetCacheSize());
    table.reset(old.CreateTable(directory));
    Table& source = static_cast<Table&>(*table);
    source.properties_ = stored.GetProperties();
    return source.dataStore_->Open(path, nullptr);
}

StatusCode Table::Convert() {
    if (HasNoStore() || IsInMemory()) return Status::NotAvailable;
    if (numberOfIndexes_ != 0) return Status::IndexConflict;
    // The open store's files would be renamed under it.
    if (dataStore_->IsOpen()) return Status::AlreadyOpen;
    const std::string recordFile = MakeRecordFilePath(directory_);
    StatusCode status = CompleteConversion(recordFile);
    if (status == Status::Success && !File::IsFound(recordFile)) return Status::NotFound;
    std::unique_ptr<ITable> oldTable;
    if (status == Status::Success) status = OpenConversionSource(directory_, name_, oldTable);
    if (status == Status::Success) status = MakeConversionDirectory(directory_ + ConversionDirectoryName);
    if (status != Status::Success) return status;
    ConversionReport report;
    status = BuildConvertedFile(*oldTable, recordFile + BuildingSuffix, report);
    oldTable.reset();  // the old files are closed before they move
    if (status != Status::Success) return status;

    // The records file first: a control file under the converted name always has its records.
    const std::vector<std::string> paths = GetStoreFilePaths(directory_);
    for (auto path = paths.rbegin(); status == Status::Success && path != paths.rend(); ++path) {
        const std::string suffix = path->substr(recordFile.size());
        status = File::Rename(recordFile + BuildingSuffix + suffix, recordFile + ConvertedSuffix + suffix, true);
    }
    if (status == Status::Success) status = CompleteConversion(recordFile);
    if (status != Status::Success) return status;
    report.converted = true;
    conversionReport_ = report;
    return dataStore_->Open(recordFile, nullptr);
}

StatusCode Table::BuildConvertedFile(ITable& oldTable, const std::string& path, ConversionReport& report) {
    StatusCode status = Status::Success;
    try {
        dataStore_->Create(path, Uuid());
        status = CopyConvertedRecords(oldTable, report);
        if (status != Status::Success) {
            dataStore_->Discard();
        } else if ((status = dataStore_->Close()) != Status::Success) {
            // Closed all the same, but not complete: what was built must not be taken for a store.
            File::Remove(path);
            File::Remove(path + RecordsSuffix);
        }
    } catch (...) {
        dataStore_->Discard();
        throw;
    }
    return status;
}

StatusCode Table::CopyConvertedRecords(ITable& oldTable, ConversionReport& report) {
    Record oldRecord(&oldTable);
    Record newRecord(this);
    MatchedFields fields;
    StatusCode status = fields.Match(newRecord, oldRecord);
    if (status != Status::Success) return status;
    std::uint32_t oldId = FieldListObject::NoRecordId;
    // A record that the old table can't give back ends the conversion as a failure: the old file
    // stays the table's record file rather than a new one with records missing.
    for (status = oldTable.GetFirstRecord(oldId, oldRecord); status == Status::Success;
         status = oldTable.GetNextRecord(oldId, oldRecord)) {
        fieldList_->ResetData(newRecord.GetData());
        fields.Copy(*fieldList_, newRecord.GetData(), *oldRecord.GetFieldList(), oldRecord.GetData(),
                    &report.droppedValues);
        // Ids are handed out afresh, in the order of the old ones.
        std::uint32_t newId = FieldListObject::NoRecordId;
        status = dataStore_->Add(newId, newRecord.GetData());
        if (status != Status::Success) return status;
        ++report.records;
    }
    return status == Status::NotFound ? Status::Success : status;
}

}  // namespace Tavrin::Database
