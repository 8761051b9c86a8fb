#include "tavrin/schema/DatabaseSpecification.h"

#include <sstream>

namespace Tavrin::Database {

using DatabaseTableSpecification = DatabaseSpecification::DatabaseTableSpecification;

DatabaseTableSpecification::DatabaseTableSpecification(std::uint16_t tableId, const TableSpecification& table,
                                                       const std::vector<IndexSpecification>& indexes)
    : tableId_(tableId), table_(table), indexes_(indexes) {}

StatusCode DatabaseTableSpecification::Serialize(MessageBuilder& builder) const {
    StatusCode status = builder.AppendUInt16(tableId_);
    if (status == Status::Success) status = table_.Serialize(builder, TableSpecification::CurrentVersion);
    if (status == Status::Success) status = builder.AppendUInt32(static_cast<std::uint32_t>(indexes_.size()));
    for (auto index = indexes_.begin(); status == Status::Success && index != indexes_.end(); ++index) {
        status = index->Serialize(builder);
    }
    return status;
}

StatusCode DatabaseTableSpecification::Deserialize(MessageValidator& validator) {
    indexes_.clear();
    StatusCode status = validator.ReadUInt16(tableId_);
    if (status == Status::Success) status = table_.Deserialize(validator);
    std::uint32_t count = 0;
    if (status == Status::Success) status = validator.ReadUInt32(count);
    // The count comes from the message: the list grows as indexes arrive, and a short message ends
    // the loop with 23 long before a false count could matter.
    for (std::uint32_t i = 0; status == Status::Success && i < count; ++i) {
        IndexSpecification index;
        status = index.Deserialize(validator);
        if (status == Status::Success) indexes_.push_back(index);
    }
    return status;
}

std::string DatabaseTableSpecification::ToString() const {
    std::ostringstream stream;
    stream << "Table Id:            " << tableId_ << std::endl << table_.ToString();
    for (const IndexSpecification& index : indexes_) stream << index.ToString();
    return stream.str();
}

DatabaseSpecification::DatabaseSpecification(const std::string& name, std::uint32_t properties,
                                             const std::vector<DatabaseTableSpecification>& tables)
    : name_(name), properties_(properties), tables_(tables) {}

StatusCode DatabaseSpecification::Serialize(MessageBuilder& builder) const {
    StatusCode status = builder.AppendUInt8(Version);
    if (status == Status::Success) status = builder.AppendString(name_);
    if (status == Status::Success) status = builder.AppendUInt32(properties_);
    if (status == Status::Success) status = builder.AppendUInt32(static_cast<std::uint32_t>(tables_.size()));
    for (auto table = tables_.begin(); status == Status::Success && table != tables_.end(); ++table) {
        status = table->Serialize(builder);
    }
    return status;
}

StatusCode DatabaseSpecification::Deserialize(MessageValidator& validator) {
    std::uint8_t version = 0;
    StatusCode status = validator.ReadUInt8(version);
    if (status != Status::Success) return status;
    // Stricter than a table's description: version 0 has no database form.
    if (version != Version) return Status::WrongVersion;
    status = validator.ValidateString(&name_, nullptr, nullptr);
    if (status == Status::Success) status = validator.ReadUInt32(properties_);
    if (status != Status::Success) return status;
    tables_.clear();
    return DeserializeTables(validator);
}

// The count and the tables behind it. A repeated id is refused: a receiver that attached the
// tables by id would otherwise fail halfway, or one table would shadow another.
StatusCode DatabaseSpecification::DeserializeTables(MessageValidator& validator) {
    std::uint32_t count = 0;
    StatusCode status = validator.ReadUInt32(count);
    std::vector<bool> seen(std::uint32_t{DatabaseTableSpecification::NoTableId} + 1, false);
    for (std::uint32_t i = 0; status == Status::Success && i < count; ++i) {
        DatabaseTableSpecification table;
        status = table.Deserialize(validator);
        if (status != Status::Success) break;
        if (seen[table.GetTableId()]) return Status::Invalid;
        seen[table.GetTableId()] = true;
        tables_.push_back(table);
    }
    return status;
}

std::string DatabaseSpecification::ToString() const {
    std::ostringstream stream;
    stream << "Name ......................... " << name_ << std::endl
           << "Properties ................... " << properties_ << std::endl
           << "Create mutex ................. " << (ShouldCreateMutex(properties_) ? "true" : "false")
           << std::endl;
    for (const DatabaseTableSpecification& table : tables_) stream << table.ToString();
    return stream.str();
}

std::ostream& operator<<(std::ostream& stream, const DatabaseSpecification& specification) {
    return stream << specification.ToString();
}

}  // namespace Tavrin::Database
