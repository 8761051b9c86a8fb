// A database described in one message and rebuilt from it: the sender keeps two tables under ids in
// a Database and sends the description of all of them; the receiver, which sees only the bytes of
// the message, makes working tables of its own from it (TableSpecification::CreateTable, then
// CreateIndexes with each table's indexes), attaches them under the same ids and searches them.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

#include "TavrinDatabase.h"

using namespace Tavrin;
using namespace Tavrin::Database;

namespace {

enum : std::uint16_t { Id = 1, Name = 2 };
enum : std::uint16_t { CustomersId = 10, SuppliersId = 20 };
constexpr std::uint32_t CreateFileAndMutex = 3;

void Check(StatusCode status, const char* what) {
    if (status != Status::Success) {
        std::fprintf(stderr, "%s failed: status %u (%s)\n", what, status, StatusCodeToString(status).c_str());
        std::exit(1);
    }
}

// A directory of this process's own: a table's files have one opener at a time.
std::string Directory(const std::string& stem) {
    const auto path = std::filesystem::temp_directory_path() / (stem + "-" + std::to_string(::getpid()));
    std::filesystem::remove_all(path);
    std::filesystem::create_directories(path);
    return path.string();
}

// A table of an Id and a Name, found by either; owned by the caller until it is attached.
ITable* MakeTable(const std::string& name, const std::string& directory) {
    const std::vector<FieldSpecification> fields = {
        FieldSpecification(Id, "Id", FieldSpecification::UInt, 4, 0, 0),
        FieldSpecification(Name, "Name", FieldSpecification::TextString, 24, 0, 0),
    };
    std::unique_ptr<ITable> table(ManagedTableFactory::GetInstance().Create(
        name, directory, CreateFileAndMutex, fields, 100, 100, TableSpecification::CacheAll));
    std::vector<IndexSpecification> indexes = {
        IndexSpecification("ById", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty,
                           {IndexSpecification::Field(Id, 0)}),
        IndexSpecification("ByName", IndexSpecification::RedBlack, IndexSpecification::UniqueProperty,
                           {IndexSpecification::Field(Name, 0)}),
    };
    table->CreateIndexes(indexes);
    return table.release();
}

// The sender: a database of two tables, described in one message. The class shares its name with
// its namespace, so with both namespaces in use it is named in full.
std::vector<unsigned char> Send(const std::string& directory) {
    Tavrin::Database::Database database("Trade", DatabaseSpecification::CreateMutexProperty);
    Check(database.AttachTable(CustomersId, MakeTable("Customers", directory)), "attach customers");
    Check(database.AttachTable(SuppliersId, MakeTable("Suppliers", directory)), "attach suppliers");
    MessageBuilder message;
    Check(database.SerializeSpecification(message), "describe the database");
    return std::vector<unsigned char>(message.GetBuffer(), message.GetBuffer() + message.GetLength());
}  // the database closes its tables' files here

// The receiver: working tables of the same shape, under the same ids, in a directory of its own.
void Receive(const std::vector<unsigned char>& bytes, const std::string& directory) {
    DatabaseSpecification received;
    MessageValidator reader(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    Check(received.Deserialize(reader), "read the description");
    std::printf("received database %s with %zu tables in %zu bytes\n", received.GetName().c_str(),
                received.GetTables().size(), bytes.size());

    Tavrin::Database::Database database(received.GetName(), received.GetProperties());
    for (const auto& entry : received.GetTables()) {
        std::unique_ptr<ITable> table(entry.GetTable().CreateTable(directory));
        std::vector<IndexSpecification> indexes = entry.GetIndexes();
        table->CreateIndexes(indexes);
        Check(database.AttachTable(entry.GetTableId(), table.get()), "attach a rebuilt table");
        table.release();  // the database owns it now
    }

    ITable* suppliers = nullptr;
    Check(database.GetTable(SuppliersId, suppliers), "find the suppliers");
    Record record(suppliers);
    record.GetFieldList()->SetField(record.GetData(), Id, std::uint32_t{7});
    record.GetFieldList()->SetField(record.GetData(), Name, std::string("Acme"));
    Check(suppliers->WriteRecord(record), "write a supplier");

    // One search across every table, by a key of any table with the same fields.
    ITable* customers = nullptr;
    Check(database.GetTable(CustomersId, customers), "find the customers");
    Key byName(customers, 1);
    byName.GetFieldList()->SetField(byName.GetData(), Name, std::string("Acme"));
    Record found;
    Check(database.GetEqual(byName, found), "search by name");
    std::printf("Acme is in table %s\n", found.GetTable()->GetName().c_str());
}

}  // namespace

int main() {
    const std::string sender = Directory("tavrin-database-sender");
    const std::string receiver = Directory("tavrin-database-receiver");
    try {
        Receive(Send(sender), receiver);
    } catch (const Tavrin::Exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
    std::filesystem::remove_all(sender);
    std::filesystem::remove_all(receiver);
    return 0;
}
