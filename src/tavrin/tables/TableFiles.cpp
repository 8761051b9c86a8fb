// A table's files as a set: the files that hold its store and its indexes, SaveAs, which writes
// copies of the open files, and CopyFiles, which copies closed ones. Either writes the whole set
// or, when it fails part way, takes back every file that it wrote (Tavrin::FileSet).

#include "tavrin/base/File.h"
#include "tavrin/base/FileSet.h"
#include "tavrin/base/MutexHolder.h"
#include "tavrin/indexes/HashIndex.h"
#include "tavrin/indexes/HashIndexDirectoryWalker.h"
#include "tavrin/indexes/Index.h"
#include "tavrin/indexes/RedBlackTreeIndex.h"
#include "tavrin/indexes/RedBlackTreeIndexDirectoryWalker.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Database {

StatusCode Table::FindIndexSpecifications(const std::string& directory, const std::string& tableName,
                                          std::vector<IndexSpecification>& specifications) {
    constexpr IndexDirectoryWalker::Scope own = IndexDirectoryWalker::Scope::OwnFiles;
    const StatusCode status = RedBlackTreeIndexDirectoryWalker::Find(directory, tableName, own, specifications);
    if (status != Status::Success) return status;
    return HashIndexDirectoryWalker::Find(directory, tableName, own, specifications);
}

std::vector<std::string> Table::GetIndexFilePaths(const std::string& directory, const std::string& tableName,
                                                  const IndexSpecification& specification) {
    return specification.IsHash() ? HashIndex::GetFileNames(directory, tableName, specification.GetName())
                                  : RedBlackTreeIndex::GetFileNames(directory, tableName, specification.GetName());
}

// The record file, and the file of records that a disk store keeps beside it. A disk store's SaveAs
// writes both, so both belong to what a failed SaveAs takes back and to what CopyFiles copies.
std::vector<std::string> Table::GetStoreFilePaths(const std::string& directory) const {
    const std::string recordFile = MakeRecordFilePath(directory);
    if (!HasDiskStore()) return {recordFile};
    return {recordFile, recordFile + ".data"};
}

StatusCode Table::SaveAs(const std::string& directory) {
    if (HasNoStore()) return Status::NotAvailable;
    MutexHolder holder(GetMutex());
    if (IsInMemory()) return Status::Success;
    if (!dataStore_->IsOpen()) return Status::NotOpen;
    const std::string path = MakeRecordFilePath(directory);
    // The table's own directory: each copy would have to replace the file that it copies.
    if (File::IsSameFile(path, MakeRecordFilePath(directory_))) return Status::Invalid;

    std::vector<std::string> paths = GetStoreFilePaths(directory);
    for (std::uint16_t number = 0; number < numberOfIndexes_; ++number) {
        for (std::string& file : GetIndexFilePaths(directory, name_, IndexAt(number).GetSpecification())) {
            paths.push_back(std::move(file));
        }
    }
    const FileSet written(std::move(paths));
    StatusCode status = dataStore_->SaveAs(path);
    for (std::uint16_t number = 0; status == Status::Success && number < numberOfIndexes_; ++number) {
        status = IndexAt(number).SaveAs(directory, name_);
    }
    if (status != Status::Success) written.RemoveChanged();
    return status;
}

StatusCode Table::CopyFiles(const std::string& source, const std::string& destination) {
    if (HasNoStore()) return Status::NotAvailable;
    std::vector<IndexSpecification> indexes;
    const StatusCode status = FindIndexSpecifications(source, name_, indexes);
    if (status != Status::Success) return status;
    std::vector<std::string> names = GetStoreFilePaths("");
    for (const IndexSpecification& specification : indexes) {
        for (std::string& name : GetIndexFilePaths("", name_, specification)) names.push_back(std::move(name));
    }
    return FileSet::Copy(source, destination, names);
}

}  // namespace Tavrin::Database
