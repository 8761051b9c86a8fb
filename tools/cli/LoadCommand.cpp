// tavrin load: a new table from a dump stream. The table is made empty and closed; its store is then
// filled straight from the record frames, with no index to update on the way; last the table is
// opened and its indexes are made, each rebuilt from the records in one pass.

#include <iostream>
#include <memory>
#include <vector>

#include "Commands.h"
#include "DumpStream.h"
#include "Progress.h"
#include "Report.h"
#include "TableFiles.h"
#include "tavrin/base/Exception.h"
#include "tavrin/base/File.h"
#include "tavrin/records/Record.h"
#include "tavrin/storage/DiskDataStore.h"
#include "tavrin/storage/MemoryDataStore.h"
#include "tavrin/storage/UserDataStore.h"
#include "tavrin/tables/OpenTable.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Tool {

using Database::IndexSpecification;
using Database::ITable;
using Database::TableSpecification;

namespace {

// Keeps the user data area of the store file as the table wrote it: the description.
class KeptUserData : public Database::UserDataStore {
public:
    explicit KeptUserData(std::vector<unsigned char> bytes) : bytes_(std::move(bytes)) {}
    StatusCode SerializeUserData(MessageBuilder& builder) override {
        return builder.AppendBytes(bytes_.data(), static_cast<std::uint32_t>(bytes_.size()));
    }

private:
    std::vector<unsigned char> bytes_;
};

const char* const StreamName = "<stdin>";

int ReportStream(StatusCode status, const std::string& what) {
    Complain(StreamName, what + ": " + DescribeStatus(status) + "; give the output of tavrin dump --messages");
    return ExitError;
}

// Removes the table of record file `path` with its indexes, after making sure nobody holds it.
int RemoveTable(const std::string& path, const std::string& directory, const std::string& name) {
    try {
        std::unique_ptr<ITable> held(Database::OpenTable(path, true, false));
    } catch (const StatusCodeException& error) {
        const StatusCode status = static_cast<StatusCode>(error.GetCode());
        if (status == Status::AlreadyOpen) return ReportOpenFailure(path, status, true);
    }
    std::vector<IndexSpecification> indexes;
    Database::Table::FindIndexSpecifications(directory, name, indexes);
    for (const IndexSpecification& index : indexes) {
        for (const std::string& file : Database::Table::GetIndexFilePaths(directory, name, index)) File::Remove(file);
    }
    File::Remove(path + ".data");
    File::Remove(path);
    return ExitSuccess;
}

// The store of the new, empty table at `path`, opened as the table would open it.
std::unique_ptr<Database::DataStore> OpenStore(const std::string& path, KeptUserData& userData, StatusCode& status) {
    StoreImage image;
    status = image.Open(path);
    if (status != Status::Success) return nullptr;
    const Database::DataStoreHeader& header = image.GetHeader();
    userData = KeptUserData(image.GetUserData());
    std::unique_ptr<Database::DataStore> store;
    if (image.IsDisk()) {
        store = std::make_unique<Database::DiskDataStore>(&userData, header.recordSize, header.initialEntries,
                                                          header.growEntries, image.GetCacheSize());
    } else {
        store = std::make_unique<Database::MemoryDataStore>(&userData, header.recordSize, header.initialEntries,
                                                            header.growEntries);
    }
    status = store->Open(path, nullptr);
    return store;
}

// Adds the records of every record frame to the store, up to the end frame.
int AddRecords(ITable& fileless, Database::DataStore& store, std::uint64_t& added, Progress& progress) {
    std::vector<unsigned char> body;
    std::vector<Database::Record> records;
    for (;;) {
        FrameKind kind = FrameKind::End;
        StatusCode status = ReadFrame(std::cin, kind, body);
        if (status != Status::Success) return ReportStream(status, "the stream ends early or is damaged");
        if (kind == FrameKind::End) return ExitSuccess;
        if (kind != FrameKind::Records) return ReportStream(Status::Invalid, "a second table description");
        MessageValidator validator(body.data(), static_cast<std::uint32_t>(body.size()));
        records.clear();
        status = fileless.DeserializeRecords(validator, records);
        if (status != Status::Success) return ReportStream(status, "a record frame can't be read");
        for (const Database::Record& record : records) {
            std::uint32_t id = 0;
            status = store.Add(id, record.GetData());
            if (status != Status::Success) return ReportStream(status, "a record could not be added");
            progress.Update(++added, 0);
        }
    }
}

int ReadDescription(TableSpecification& table, std::vector<IndexSpecification>& indexes) {
    StatusCode status = ReadStreamStart(std::cin);
    if (status != Status::Success) return ReportStream(status, "this is no dump stream");
    std::vector<unsigned char> body;
    FrameKind kind = FrameKind::End;
    status = ReadFrame(std::cin, kind, body);
    if (status == Status::Success && kind != FrameKind::Table) status = Status::Invalid;
    if (status != Status::Success) return ReportStream(status, "the stream holds no table description");
    MessageValidator validator(body.data(), static_cast<std::uint32_t>(body.size()));
    status = DeserializeTableMessage(validator, table, indexes);
    return status == Status::Success ? ExitSuccess : ReportStream(status, "the table description can't be read");
}

// Makes the empty table with its record file, and closes it again.
void CreateEmptyTable(const TableSpecification& stored, const std::string& directory) {
    const TableSpecification table(stored.GetName(), stored.IsManaged(),
                                   stored.GetProperties() | TableSpecification::CreateRecordFileProperty,
                                   stored.GetFields(), stored.GetInitialMaximumRecords(), stored.GetRecordLength(),
                                   stored.GetGrowRecords(), stored.GetCacheSize());
    std::unique_ptr<ITable> created(table.CreateTable(directory));
}

int FillAndIndex(const std::string& path, const TableSpecification& table, std::vector<IndexSpecification>& indexes,
                 bool quiet) {
    std::unique_ptr<ITable> fileless = MakeFilelessTable(table);
    KeptUserData userData({});
    StatusCode status = Status::Success;
    std::unique_ptr<Database::DataStore> store = OpenStore(path, userData, status);
    if (status != Status::Success) return ReportOpenFailure(path, status, true);
    std::uint64_t added = 0;
    Progress loading("loading records", quiet);
    int result = AddRecords(*fileless, *store, added, loading);
    loading.Finish();
    status = store->Close();
    if (result != ExitSuccess) return result;
    if (status != Status::Success) return ReportOpenFailure(path, status, true);
    std::unique_ptr<ITable> loaded(Database::OpenTable(path, true, false));
    Progress building("building the indexes", quiet);
    if (added >= LongRebuildRecords && !indexes.empty()) building.Announce();
    loaded->CreateIndexes(indexes);
    std::cout << path << ": " << added << " records, " << indexes.size() << " indexes\n";
    return ExitSuccess;
}

}  // namespace

int RunLoad(const std::string& directory, bool force, const CommonOptions& options) {
    TableSpecification table;
    std::vector<IndexSpecification> indexes;
    int result = ReadDescription(table, indexes);
    if (result != ExitSuccess) return result;
    // The table's files are named from its name: one that holds a path would put them elsewhere.
    if (table.GetName().empty() || table.GetName().find('/') != std::string::npos) {
        return ReportStream(Status::Invalid, "the table's name \"" + table.GetName() + "\" can't name a file");
    }
    const std::string root = directory.empty() || directory.back() == '/' ? directory : directory + "/";
    const std::string path = root + Database::Table::GetRecordFileName(table.GetName());
    if (File::IsFound(path)) {
        if (!force) {
            Complain(path, "a table of this name is there already; give --force to replace it");
            return ExitError;
        }
        result = RemoveTable(path, root, table.GetName());
        if (result != ExitSuccess) return result;
    }
    try {
        CreateEmptyTable(table, root);
        result = FillAndIndex(path, table, indexes, options.quiet);
    } catch (const std::exception& error) {
        Complain(path, std::string("the table could not be made: ") + error.what());
        result = ExitError;
    }
    // A table that the load could not complete is taken away again.
    if (result != ExitSuccess) RemoveTable(path, root, table.GetName());
    return result;
}

}  // namespace Tavrin::Tool
