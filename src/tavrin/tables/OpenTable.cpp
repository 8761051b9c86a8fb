#include "tavrin/tables/OpenTable.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "tavrin/base/File.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/base/Throw.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/schema/TableSpecification.h"
#include "tavrin/storage/DataStore.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Database {

namespace {

constexpr const char* OpenOperation = "Tavrin::Database::Table::Open";

}  // namespace

// The description in the record file's user data, read through a plain store that is closed again.
TableSpecification Table::ReadStoredSpecification(const std::string& fileName) {
    DataStore store;
    StatusCode status = store.Open(fileName, nullptr);
    if (status != Status::Success) ThrowStatus(OpenOperation, status);
    unsigned char* userData = nullptr;
    std::uint32_t size = 0;
    store.GetUserData(userData, size);
    MessageValidator validator(userData, size);
    TableSpecification specification;
    status = specification.Deserialize(validator);
    store.Close();
    if (status != Status::Success) ThrowStatus(OpenOperation, status);
    return specification;
}

namespace {

// Up to and including the later of the last '/' and the last '\'; "./" without either.
std::string DirectoryOf(const std::string& fileName) {
    const std::size_t separator = fileName.find_last_of("/\\");
    return separator == std::string::npos ? "./" : fileName.substr(0, separator + 1);
}

// The stored description with bit 0 added when the caller asks for the record file.
TableSpecification WithProperties(const TableSpecification& stored, bool openRecordFile) {
    std::uint32_t properties = stored.GetProperties();
    if (openRecordFile) properties |= TableSpecification::CreateRecordFileProperty;
    return TableSpecification(stored.GetName(), stored.IsManaged(), properties, stored.GetFields(),
                              stored.GetInitialMaximumRecords(), stored.GetRecordLength(), stored.GetGrowRecords(),
                              stored.GetCacheSize());
}

void CreateStoredIndexes(ITable& table, const std::string& directory) {
    std::vector<IndexSpecification> indexes;
    const StatusCode status = Table::FindIndexSpecifications(directory, table.GetName(), indexes);
    if (status != Status::Success) ThrowStatus(OpenOperation, status);
    std::stable_sort(indexes.begin(), indexes.end(), [](const IndexSpecification& a, const IndexSpecification& b) {
        return a.GetNumber() < b.GetNumber();
    });
    table.CreateIndexes(indexes);
}

}  // namespace

ITable* OpenTable(const std::string& fileName, bool openRecordFile, bool openIndexes) {
    // A conversion that a kill interrupted after its new file was complete is finished first, so
    // that the description read is the new one.
    const StatusCode converted = Table::CompleteConversion(fileName);
    if (converted != Status::Success) ThrowStatus(OpenOperation, converted);
    const TableSpecification stored = Table::ReadStoredSpecification(fileName);
    const std::string directory = DirectoryOf(fileName);
    // The table opens the file that its name gives. A record file renamed or copied under another
    // name would make the table open, or create, another file than the caller's.
    if (!File::IsSameFile(directory + Table::GetRecordFileName(stored.GetName()), fileName)) {
        ThrowStatus(OpenOperation, Status::DescriptionDiffers);
    }
    std::unique_ptr<ITable> table(WithProperties(stored, openRecordFile).CreateTable(directory));
    if (openIndexes) CreateStoredIndexes(*table, directory);
    return table.release();
}

}  // namespace Tavrin::Database
