#pragma once
// A table as its files describe it, read without opening it: the record file's store headers and
// stored description, and the specifications that its index files hold.

#include <memory>
#include <string>
#include <vector>

#include "StoreImage.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/schema/TableSpecification.h"
#include "tavrin/tables/ITable.h"

namespace Tavrin::Tool {

/// What ReadTableFiles finds.
struct TableFiles {
    /// The record file.
    StoreImage store;
    /// The description stored in the record file.
    Database::TableSpecification table;
    /// The record file's directory, ending in "/".
    std::string directory;
    /// The table's own index files' specifications, sorted by their numbers.
    std::vector<Database::IndexSpecification> indexes;
};

/// The directory of `path` up to and including its last '/', or "./".
std::string DirectoryOf(const std::string& path);

/// Reads the table of record file `path` read-only into `files`. On failure says why on stderr
/// and returns ExitError; ExitSuccess otherwise.
int ReadTableFiles(const std::string& path, TableFiles& files);

/// A table of `table`'s description without files or indexes, to which records of that table are
/// bound for their text and message forms. Throws what the factory throws.
std::unique_ptr<Database::ITable> MakeFilelessTable(const Database::TableSpecification& table);

/// Appends a table's description as ITable::SerializeSpecification does: the table, the number of
/// indexes, each index.
StatusCode SerializeTableMessage(MessageBuilder& builder, const Database::TableSpecification& table,
                                 const std::vector<Database::IndexSpecification>& indexes);

/// Reads what SerializeTableMessage wrote: 23 when it is cut short or too long, else the status of
/// a specification.
StatusCode DeserializeTableMessage(MessageValidator& validator, Database::TableSpecification& table,
                                   std::vector<Database::IndexSpecification>& indexes);

}  // namespace Tavrin::Tool
