// tavrin check --repair: the store's counts and free list rewritten from the used flags and every
// index rebuilt, on a copy in a directory beside the table; the copy takes the place of the table's
// files only when it checks clean, so a repair that fails leaves the table as it was.

#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <memory>
#include <vector>

#include "Commands.h"
#include "Progress.h"
#include "Report.h"
#include "StoreCheck.h"
#include "TableFiles.h"
#include "tavrin/base/Encoding.h"
#include "tavrin/base/Exception.h"
#include "tavrin/base/File.h"
#include "tavrin/storage/DiskDataStoreHeader.h"
#include "tavrin/storage/EntryTable.h"
#include "tavrin/storage/FileMappedMemoryManager.h"
#include "tavrin/storage/MemoryDataStoreHeader.h"
#include "tavrin/tables/OpenTable.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Tool {

using namespace Tavrin::Database;

namespace {

constexpr std::uint64_t FileHeaderSize = FileMappedMemoryManager::HeaderSize;

StatusCode WriteU32(File& file, std::uint64_t offset, std::uint32_t value) {
    unsigned char bytes[4];
    EncodeU32(bytes, value);
    return file.WriteAt(bytes, sizeof bytes, offset);
}

// Links every entry that is not in use into a new free list in rising order, and sets the count of
// entries in use and the clean flag. The sizes must agree already: they are not repaired.
StatusCode RewriteEntries(const std::string& path) {
    StoreImage store;
    StatusCode status = store.Open(path);
    File file;
    if (status == Status::Success) status = file.Open(path, File::ReadAccess | File::WriteAccess, 0);
    const std::uint32_t count = store.GetHeader().maxEntries;
    std::uint32_t used = 0;
    std::int32_t head = EntryTable::NoEntry;
    std::int32_t previous = EntryTable::NoEntry;
    auto frontOf = [&store](std::int64_t id) {
        return FileHeaderSize + store.GetEntryOffset() + static_cast<std::uint64_t>(id) * store.GetEntryStride();
    };
    for (std::uint32_t id = 0; status == Status::Success && id < count; ++id) {
        EntryFront front;
        status = store.ReadFront(id, front);
        if (status != Status::Success) break;
        // A disk store's entry whose record never reached the record file holds none, as an open
        // decides too; an older version written back is kept and counts as written.
        const bool holdsRecord = front.used && !(store.IsDisk() && front.mark == DiskDataStoreHeader::NeverWritten);
        const unsigned char cleared[4] = {holdsRecord ? std::uint8_t{1} : std::uint8_t{0}, 0, 0, 0};
        status = file.WriteAt(cleared, sizeof cleared, frontOf(id));
        if (status == Status::Success) status = WriteU32(file, frontOf(id) + EntryTable::NextOffset, 0xFFFFFFFF);
        if (holdsRecord) {
            ++used;
            continue;
        }
        if (status == Status::Success && previous != EntryTable::NoEntry) {
            status = WriteU32(file, frontOf(previous) + EntryTable::NextOffset, id);
        }
        if (head == EntryTable::NoEntry) head = static_cast<std::int32_t>(id);
        previous = static_cast<std::int32_t>(id);
    }
    const std::uint64_t headOffset = FileHeaderSize + (store.IsDisk() ? DiskDataStoreHeader::FreeHeadOffset
                                                                        : MemoryDataStoreHeader::FreeHeadOffset);
    const std::uint64_t tailOffset = FileHeaderSize + (store.IsDisk() ? DiskDataStoreHeader::FreeTailOffset
                                                                        : MemoryDataStoreHeader::FreeTailOffset);
    if (status == Status::Success) status = WriteU32(file, headOffset, static_cast<std::uint32_t>(head));
    if (status == Status::Success) status = WriteU32(file, tailOffset, static_cast<std::uint32_t>(previous));
    if (status == Status::Success) {
        status = WriteU32(file, FileHeaderSize + DataStoreHeader::CurrentEntriesOffset, used);
    }
    const unsigned char clean = 1;
    if (status == Status::Success) status = file.WriteAt(&clean, 1, FileMappedMemoryManager::CleanFlagOffset);
    return status == Status::Success ? file.Sync() : status;
}

// Rebuilds every index of the repaired copy beside it, then checks the whole copy.
std::string RebuildAndCheck(const std::string& copy, std::vector<IndexSpecification> indexes, bool quiet) {
    {
        std::unique_ptr<ITable> table(OpenTable(copy, true, false));
        Progress building("rebuilding the indexes", quiet);
        std::uint32_t records = 0;
        const bool isLong = table->GetCurrentRecords(records) == Status::Success && records >= LongRebuildRecords;
        if (isLong && !indexes.empty()) building.Announce();
        table->CreateIndexes(indexes);
    }
    StoreImage store;
    const StatusCode status = store.Open(copy);
    if (status != Status::Success) return "the repaired store can't be read: " + DescribeStatus(status);
    std::string problem = CheckStoreStructure(store);
    if (!problem.empty()) return problem;
    std::unique_ptr<ITable> table(OpenTable(copy, true, true));
    table->CheckIntegrity();
    return "";
}

// Puts the copy's files in place of the table's: the old index files go, the copy's take their names.
StatusCode ReplaceFiles(const TableFiles& files, const std::string& workDirectory) {
    for (const IndexSpecification& index : files.indexes) {
        for (const std::string& file :
             Table::GetIndexFilePaths(files.directory, files.table.GetName(), index)) {
            File::Remove(file);
        }
    }
    StatusCode status = Status::Success;
    for (const auto& entry : std::filesystem::directory_iterator(workDirectory)) {
        const std::string name = entry.path().filename().string();
        status = File::Rename(entry.path().string(), files.directory + name, true);
        if (status != Status::Success) return status;
    }
    return status;
}

int Repair(const std::string& path, const TableFiles& files, const std::string& work, bool quiet) {
    const std::string copy = work + "/" + Table::GetRecordFileName(files.table.GetName());
    StatusCode status = File::Copy(path, copy, false);
    if (status == Status::Success && files.store.IsDisk()) {
        status = File::Copy(files.store.GetRecordFilePath(), copy + ".data", false);
    }
    if (status == Status::Success) status = RewriteEntries(copy);
    if (status != Status::Success) {
        Complain(path, "could not be repaired on a copy: " + DescribeStatus(status) + "; the table is as it was");
        return ExitError;
    }
    std::string problem;
    try {
        problem = RebuildAndCheck(copy, files.indexes, quiet);
    } catch (const std::exception& error) {
        problem = error.what();
    }
    if (!problem.empty()) {
        std::cout << path << ": not repaired, the repaired copy still fails: " << problem << '\n';
        return ExitFinding;
    }
    status = ReplaceFiles(files, work);
    if (status != Status::Success) {
        Complain(path, "the repaired files could not all take their places: " + DescribeStatus(status) +
                           "; the rest lie in " + work);
        return ExitError;
    }
    std::cout << path << ": repaired: store rewritten, " << files.indexes.size() << " indexes rebuilt\n";
    return ExitSuccess;
}

}  // namespace

int RunRepair(const std::string& path, bool quiet) {
    // The table's lock is held through the whole repair, so no table opens it meanwhile.
    File lock;
    StatusCode status = lock.OpenExclusive(path, File::ReadAccess);
    if (status != Status::Success) return ReportOpenFailure(path, status, true);
    TableFiles files;
    const int result = ReadTableFiles(path, files);
    if (result != ExitSuccess) return result;
    const std::string work = files.directory + ".tavrin-repair-" + std::to_string(::getpid());
    std::error_code error;
    std::filesystem::remove_all(work, error);
    if (!std::filesystem::create_directory(work, error)) {
        Complain(work, "can't be made: " + error.message());
        return ExitError;
    }
    const int repaired = Repair(path, files, work, quiet);
    std::filesystem::remove_all(work, error);
    return repaired;
}

}  // namespace Tavrin::Tool
