// The record file of a table: where it lies, how construction creates or opens it, and the three
// operations that callers use on it.

#include <algorithm>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/File.h"
#include "tavrin/base/MutexHolder.h"
#include "tavrin/base/Throw.h"
#include "tavrin/base/Uuid.h"
#include "tavrin/indexes/Index.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Database {

namespace {

bool EndsInSeparator(const std::string& path) { return !path.empty() && (path.back() == '/' || path.back() == '\\'); }

}  // namespace

std::string Table::GetRecordFileName(const std::string& tableName) {
    std::string fileName = tableName;
    std::replace(fileName.begin(), fileName.end(), ' ', '_');
    return fileName + ".tab";
}

void Table::SetFileNames(const std::string& directory) {
    directory_ = directory;
    if (!EndsInSeparator(directory_)) directory_ += '/';
    fileName_ = GetRecordFileName(name_);
}

std::string Table::MakeRecordFilePath(const std::string& directory) const {
    std::string path = directory;
    if (!path.empty() && !EndsInSeparator(path)) path += '/';
    return path + GetRecordFileName(name_);
}

void Table::CreateOrOpenRecordFile() {
    if (IsInMemory()) {
        CreateRecordFile();
        return;
    }
    const StatusCode status = OpenRecordFile();
    if (status == Status::Success) return;
    // The store's Create would overwrite the file: a file that exists but does not open (left open by
    // a crash, damaged, another table's) keeps its records and the construction fails instead.
    if (File::IsFound(MakeRecordFilePath(directory_))) ThrowStatus("Tavrin::Database::Table::Construct", status);
    CreateRecordFile();
}

void Table::CreateRecordFile() {
    if (HasNoStore()) ThrowStatus("Tavrin::Database::Table::CreateRecordFile", Status::NotAvailable);
    if (numberOfIndexes_ != 0) ThrowStatus("Tavrin::Database::Table::CreateRecordFile", Status::IndexConflict);
    try {
        if (IsInMemory()) {
            dataStore_->Create();
        } else {
            dataStore_->Create(MakeRecordFilePath(GetDirectory()), Uuid());
        }
    } catch (const Exception& exception) {
        exception.AddException(NewDatabaseException("Tavrin::Database::Table::CreateRecordFile",
                                                    DatabaseException::CreateFile,
                                                    "error creating record file for table <%s>", name_.c_str()));
        throw;
    }
}

StatusCode Table::OpenRecordFile() {
    if (HasNoStore()) return Status::NotAvailable;
    if (numberOfIndexes_ != 0) return Status::IndexConflict;
    if (IsInMemory()) return Status::NotFound;
    const std::string path = MakeRecordFilePath(GetDirectory());
    // A conversion that a kill stopped after its new file was complete is finished first.
    StatusCode status = CompleteConversion(path);
    // No Uuid is asked of the record file; the store hands the stored description to
    // DeserializeUserData, which answers 25 when it is another table's.
    if (status == Status::Success) status = dataStore_->Open(path, nullptr);
    if (status == Status::DescriptionDiffers && TableSpecification::ShouldConvert(properties_)) return Convert();
    return status;
}

StatusCode Table::CloseRecordFile() {
    if (HasNoStore()) return Status::NotAvailable;
    if (numberOfIndexes_ != 0) return Status::IndexConflict;
    return dataStore_->Close();
}

StatusCode Table::Sync() {
    if (HasNoStore()) return Status::NotAvailable;
    MutexHolder holder(GetMutex());
    if (!dataStore_->IsOpen()) return Status::NotOpen;
    StatusCode status = dataStore_->Sync();
    for (std::uint16_t number = 0; status == Status::Success && number < numberOfIndexes_; ++number) {
        status = IndexAt(number).Sync();
    }
    return status;
}

bool Table::IsRecordFileOpen() { return dataStore_ && dataStore_->IsOpen(); }

}  // namespace Tavrin::Database
