#include "TableFiles.h"

#include <algorithm>

#include "Report.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Tool {

using Database::IndexSpecification;

std::string DirectoryOf(const std::string& path) {
    const std::size_t separator = path.find_last_of('/');
    return separator == std::string::npos ? "./" : path.substr(0, separator + 1);
}

int ReadTableFiles(const std::string& path, TableFiles& files) {
    StatusCode status = files.store.Open(path);
    if (status != Status::Success) {
        if (status == Status::NotFound) return ReportOpenFailure(path, status, true);
        Complain(path, "is no table file, or its header is damaged: " + DescribeStatus(status));
        return ExitError;
    }
    const std::vector<unsigned char>& userData = files.store.GetUserData();
    MessageValidator validator(userData.data(), static_cast<std::uint32_t>(userData.size()));
    status = files.table.Deserialize(validator);
    if (status != Status::Success) {
        Complain(path, "holds no readable table description: " + DescribeStatus(status));
        return ExitError;
    }
    files.directory = DirectoryOf(path);
    status = Database::Table::FindIndexSpecifications(files.directory, files.table.GetName(), files.indexes);
    if (status != Status::Success) {
        Complain(files.directory, "the index files could not be listed: " + DescribeStatus(status));
        return ExitError;
    }
    std::stable_sort(files.indexes.begin(), files.indexes.end(),
                     [](const IndexSpecification& a, const IndexSpecification& b) {
                         return a.GetNumber() < b.GetNumber();
                     });
    return ExitSuccess;
}

std::unique_ptr<Database::ITable> MakeFilelessTable(const Database::TableSpecification& table) {
    const std::uint32_t properties = table.GetProperties() & ~(Database::TableSpecification::CreateRecordFileProperty |
                                                               Database::TableSpecification::ConvertProperty);
    const Database::TableSpecification fileless(table.GetName(), table.IsManaged(), properties, table.GetFields(),
                                                table.GetInitialMaximumRecords(), table.GetRecordLength(),
                                                table.GetGrowRecords(), table.GetCacheSize());
    return std::unique_ptr<Database::ITable>(fileless.CreateTable(""));
}

StatusCode SerializeTableMessage(MessageBuilder& builder, const Database::TableSpecification& table,
                                 const std::vector<IndexSpecification>& indexes) {
    StatusCode status = table.Serialize(builder, Database::TableSpecification::CurrentVersion);
    if (status == Status::Success && indexes.size() > 0xFFFF) status = Status::Invalid;
    if (status == Status::Success) status = builder.AppendUInt32(static_cast<std::uint32_t>(indexes.size()));
    for (auto index = indexes.begin(); status == Status::Success && index != indexes.end(); ++index) {
        status = index->Serialize(builder);
    }
    return status;
}

StatusCode DeserializeTableMessage(MessageValidator& validator, Database::TableSpecification& table,
                                   std::vector<IndexSpecification>& indexes) {
    StatusCode status = table.Deserialize(validator);
    std::uint32_t count = 0;
    if (status == Status::Success) status = validator.ReadUInt32(count);
    // A table has at most 65535 indexes; a larger count is no description this tool wrote.
    if (status == Status::Success && count > 0xFFFF) status = Status::Invalid;
    for (std::uint32_t read = 0; status == Status::Success && read < count; ++read) {
        IndexSpecification index;
        status = index.Deserialize(validator);
        if (status == Status::Success) indexes.push_back(index);
    }
    if (status == Status::Success && validator.GetRemaining() != 0) status = Status::Invalid;
    return status;
}

}  // namespace Tavrin::Tool
