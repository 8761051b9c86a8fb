// tavrin info: what a table's files say about it, read without opening the table, so that it works
// on a file that a table holds or that a crash left, and changes nothing.

#include <iomanip>
#include <iostream>
#include <sstream>

#include "Commands.h"
#include "Report.h"
#include "TableFiles.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Tool {

using Database::IndexSpecification;
using Database::TableSpecification;

namespace {

std::string NameOf(const std::string& path) { return path.substr(path.find_last_of('/') + 1); }

// One line of the file list: name, size, clean flag, Uuid.
void PrintFile(std::ostream& out, const std::string& path, const FileHeaderInfo& header, bool hasFlag) {
    out << "  " << std::left << std::setw(36) << NameOf(path) << std::right << std::setw(12) << header.size
        << " bytes  " << std::left << std::setw(9) << (hasFlag ? (header.clean ? "clean" : "unclean") : "-")
        << header.uuid.ToString() << std::right << '\n';
}

void PrintStore(std::ostream& out, const TableFiles& files) {
    const StoreImage& store = files.store;
    const Database::DataStoreHeader& header = store.GetHeader();
    out << "Store:           ";
    if (store.IsDisk()) {
        out << "disk, records in " << NameOf(store.GetRecordFilePath()) << ", cache " << files.table.GetCacheSize()
            << " KB\n";
    } else {
        out << "memory, the whole table mapped\n";
    }
    out << "Records:         " << header.currentEntries << '\n'
        << "Capacity:        " << header.maxEntries << '\n'
        << "Free entries:    "
        << (header.maxEntries >= header.currentEntries ? header.maxEntries - header.currentEntries : 0) << '\n'
        << "Growth:          ";
    if (header.growEntries == 0) {
        out << "none, the table never grows\n";
    } else {
        out << header.growEntries << " entries per step\n";
    }
    out << "Record size:     " << header.recordSize << " bytes\n";
}

// Whether the table's next open takes the index's files as they are or rebuilds the index, and why.
std::string IndexVerdict(const std::vector<std::string>& paths, const std::vector<FileHeaderInfo>& headers,
                         const std::vector<StatusCode>& statuses, const Uuid& tableUuid) {
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (statuses[i] != Status::Success) return "rebuilt: " + NameOf(paths[i]) + " can't be read";
        if (!headers[i].clean) return "rebuilt: " + NameOf(paths[i]) + " was not closed in order";
        if (!(headers[i].uuid == tableUuid)) return "rebuilt: " + NameOf(paths[i]) + " belongs to another table";
    }
    return "opened as it is";
}

void PrintIndex(std::ostream& out, const TableFiles& files, const IndexSpecification& index) {
    const std::vector<std::string> paths =
        Database::Table::GetIndexFilePaths(files.directory, files.table.GetName(), index);
    std::vector<FileHeaderInfo> headers(paths.size());
    std::vector<StatusCode> statuses(paths.size());
    for (std::size_t i = 0; i < paths.size(); ++i) statuses[i] = ReadFileHeader(paths[i], headers[i]);
    out << "Index " << index.GetNumber() << " " << index.GetName() << ": "
        << IndexVerdict(paths, headers, statuses, files.store.GetFileHeader().uuid) << '\n';
    std::istringstream text(index.ToString());
    for (std::string line; std::getline(text, line);) out << "    " << line << '\n';
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (statuses[i] == Status::Success) {
            PrintFile(out, paths[i], headers[i], true);
        } else {
            out << "  " << NameOf(paths[i]) << ": " << DescribeStatus(statuses[i]) << '\n';
        }
    }
}

}  // namespace

int RunInfo(const std::string& path) {
    TableFiles files;
    const int result = ReadTableFiles(path, files);
    if (result != ExitSuccess) return result;
    std::ostream& out = std::cout;
    out << "Table file:      " << path << '\n' << files.table.ToString();
    if (files.table.ToString().back() != '\n') out << '\n';
    PrintStore(out, files);
    out << "Files:\n";
    PrintFile(out, path, files.store.GetFileHeader(), true);
    if (files.store.IsDisk()) PrintFile(out, files.store.GetRecordFilePath(), files.store.GetRecordFileHeader(), false);
    out << "Indexes:         " << files.indexes.size() << '\n';
    for (const IndexSpecification& index : files.indexes) PrintIndex(out, files, index);
    if (!files.store.GetFileHeader().clean) Complain(path, CrashLeftText(false));
    return ExitSuccess;
}

}  // namespace Tavrin::Tool
