#pragma once
// DatabaseSpecification: the description of a whole Database (its name, its property bits and, for
// each table, the table id, the TableSpecification and the table's IndexSpecification list), nested
// in one message. Database::GetSpecification builds one and Database::SerializeSpecification sends
// it; a receiver reads it back here and rebuilds the tables from the getters. A plain value class:
// copies are independent and it takes no locks. Nothing here validates the tables or indexes.

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/base/Status.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/schema/TableSpecification.h"

namespace Tavrin::Database {

/// The description of a whole database: name, property bits and one DatabaseTableSpecification per
/// table. A plain value class that takes no locks and validates nothing.
class DatabaseSpecification {
public:
    /// One table of a database: its id there, its description and its indexes in number order.
    class DatabaseTableSpecification {
    public:
        /// The id of a table that no database has given one.
        static constexpr std::uint16_t NoTableId = 0xFFFF;

        /// Takes the three members from its arguments; the defaults describe no table.
        explicit DatabaseTableSpecification(std::uint16_t tableId = NoTableId,
                                            const TableSpecification& table = TableSpecification(),
                                            const std::vector<IndexSpecification>& indexes = {});

        /// Wire form, little-endian, no padding:
        ///   2 bytes   table id (2 bytes here, while index numbers and field ids take 4)
        ///             the TableSpecification, written with version 1
        ///   4 bytes   count of indexes
        ///             the indexes in order, each in the wire form of IndexSpecification
        /// Stops at the first failing append and returns its status (23 for a name longer than
        /// 65535 bytes, 41 when a growable builder can't grow, 23 when a fixed buffer is full).
        StatusCode Serialize(MessageBuilder& builder) const;
        /// Empties the list of indexes, then reads the form above: 23 when the message is short, or
        /// the status of the table's or an index's Deserialize (21, 23, 36). What was read before a
        /// failure stays in the object, the indexes read so far included.
        StatusCode Deserialize(MessageValidator& validator);

        /// "Table Id:            " with the id and an end of line, then the table's ToString() and
        /// each index's ToString(), with nothing between them.
        std::string ToString() const;

        /// The table's id in its database.
        std::uint16_t GetTableId() const noexcept { return tableId_; }
        /// The table's description, ready for TableSpecification::CreateTable.
        const TableSpecification& GetTable() const noexcept { return table_; }
        /// The table's indexes in number order, ready for ITable::CreateIndexes (which takes a copy
        /// that it may write the numbers into). A Database describes only a table's permanent
        /// indexes: those that CreateTemporaryIndex added are not in its list.
        const std::vector<IndexSpecification>& GetIndexes() const noexcept { return indexes_; }

    private:
        std::uint16_t tableId_;
        TableSpecification table_;
        std::vector<IndexSpecification> indexes_;
    };

    /// Property bit 0: the database has a mutex that guards its containers.
    static constexpr std::uint32_t CreateMutexProperty = 1;
    /// The one version that this class writes and reads.
    static constexpr std::uint8_t Version = 1;

    /// Takes the three members from its arguments.
    explicit DatabaseSpecification(const std::string& name = "", std::uint32_t properties = 0,
                                   const std::vector<DatabaseTableSpecification>& tables = {});

    /// Wire form, little-endian, no padding (name of n bytes):
    ///   offset 0     1 byte   version, always 1
    ///   offset 1     2 bytes  n
    ///   offset 3     n bytes  name, no terminator
    ///   offset 3+n   4 bytes  properties
    ///   offset 7+n   4 bytes  count of tables
    ///   offset 11+n           the tables in order, each in the wire form of DatabaseTableSpecification
    /// Stops at the first failing append and returns its status: 23 for a name longer than 65535
    /// bytes, or the status of the builder or of a table.
    StatusCode Serialize(MessageBuilder& builder) const;
    /// Reads the form above. 23 when the message is short or repeats a table id; 21 for a version
    /// other than 1 (0 included, which a table inside may still carry); or a table's status. The
    /// list of tables is emptied before the count is read, and the tables read before a failure
    /// stay in it; the table that fails, or repeats an id, is not added. Validates nothing else.
    StatusCode Deserialize(MessageValidator& validator);

    /// Whether `properties` hold CreateMutexProperty.
    static bool ShouldCreateMutex(std::uint32_t properties) noexcept {
        return (properties & CreateMutexProperty) != 0;
    }

    /// Labelled lines of the name, the properties and the mutex bit, then each table's ToString().
    std::string ToString() const;

    /// The database's name.
    const std::string& GetName() const noexcept { return name_; }
    /// The property bits; only CreateMutexProperty steers anything.
    std::uint32_t GetProperties() const noexcept { return properties_; }
    /// The tables in the order of the message; Database::GetSpecification gives them by ascending id.
    const std::vector<DatabaseTableSpecification>& GetTables() const noexcept { return tables_; }

private:
    StatusCode DeserializeTables(MessageValidator& validator);

    std::string name_;
    std::uint32_t properties_;
    std::vector<DatabaseTableSpecification> tables_;
};

/// Writes ToString().
std::ostream& operator<<(std::ostream& stream, const DatabaseSpecification& specification);

}  // namespace Tavrin::Database
