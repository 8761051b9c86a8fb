// tavrin check: the store's structure is checked from the file's bytes, then the table is opened as
// a program opens it (a table that holds the file keeps it: 17) and checks its indexes against the
// records.

#include <iostream>
#include <memory>

#include "Commands.h"
#include "Progress.h"
#include "Report.h"
#include "StoreCheck.h"
#include "tavrin/base/Exception.h"
#include "tavrin/base/File.h"
#include "tavrin/tables/OpenTable.h"

namespace Tavrin::Tool {

namespace {

int ReportFinding(const std::string& path, const std::string& part, const std::string& problem) {
    std::cout << path << ": " << part << ": " << problem << '\n';
    return ExitFinding;
}

// The store's structure as the file holds it, before an open could mend it, under the file's lock
// so that a table that holds the file is not read in the middle of a change.
int CheckStore(const std::string& path, const CommonOptions& options, std::string& summary) {
    File lock;
    StatusCode status = lock.OpenExclusive(path, File::ReadAccess);
    if (status != Status::Success) return ReportOpenFailure(path, status, true);
    StoreImage store;
    status = store.Open(path);
    if (status != Status::Success) {
        return ReportFinding(path, "store", "its header can't be read: " + DescribeStatus(status));
    }
    Progress progress("checking the store", options.quiet);
    const std::string problem = CheckStoreStructure(store, &Progress::Report, &progress);
    progress.Finish();
    if (!problem.empty()) return ReportFinding(path, "store", problem);
    summary = std::to_string(store.GetHeader().currentEntries) + " records in " +
              std::to_string(store.GetHeader().maxEntries) + " entries";
    return ExitSuccess;
}

int CheckIndexes(const std::string& path, Database::ITable& table) {
    try {
        table.CheckIntegrity();
    } catch (const StatusCodeException& error) {
        if (error.GetCode() != Status::NotAvailable) return ReportFinding(path, "indexes", error.ToString());
        Complain(path, "this library can't check indexes against the records yet (status 13); "
                       "only the store was checked");
    } catch (const std::exception& error) {
        return ReportFinding(path, "indexes", error.what());
    }
    return ExitSuccess;
}

// The store, then the indexes: 0 when both are sound, else the first finding (1) or error (2).
int Check(const std::string& path, const CommonOptions& options) {
    FileHeaderInfo before;
    const bool wasClean = ReadFileHeader(path, before) != Status::Success || before.clean;
    std::string summary;
    int result = CheckStore(path, options, summary);
    if (result != ExitSuccess) return result;
    std::unique_ptr<Database::ITable> table;
    try {
        table.reset(Database::OpenTable(path, true, true));
    } catch (const StatusCodeException& error) {
        return ReportOpenFailure(path, static_cast<StatusCode>(error.GetCode()), wasClean);
    } catch (const std::exception& error) {
        Complain(path, std::string("cannot be opened: ") + error.what());
        return ExitError;
    }
    result = CheckIndexes(path, *table);
    if (result != ExitSuccess) return result;
    std::cout << path << ": sound: " << summary << ", " << table->GetNumberOfIndexes() << " indexes\n";
    return ExitSuccess;
}

}  // namespace

int RunCheck(const std::string& path, const CommonOptions& options, bool repair) {
    const int result = Check(path, options);
    return result == ExitFinding && repair ? RunRepair(path, options.quiet) : result;
}

}  // namespace Tavrin::Tool
