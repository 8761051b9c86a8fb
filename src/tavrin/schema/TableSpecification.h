#pragma once
// TableSpecification: the description of one table apart from its indexes (name, managed or
// unmanaged layout, property bits, fields and sizing). A table's record file keeps one in its user
// data area, so a table can be described before any table object exists. A plain value class:
// copies are independent and it takes no locks. Nothing here validates the fields; that happens
// when a field list is built from them.

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/base/Status.h"
#include "tavrin/records/FieldSpecification.h"

namespace Tavrin::Database {

class ITable;

/// The description of one table apart from its indexes: name, managed or unmanaged layout,
/// property bits, fields and sizing. A plain value class that takes no locks and validates nothing.
class TableSpecification {
public:
    // Property bits of a table; all others are carried and stored but steer nothing.
    /// Property bit: create or open the record file when the table is constructed.
    static constexpr std::uint32_t CreateRecordFileProperty = 1;
    /// Property bit: give the table a mutex; without it the table does no locking.
    static constexpr std::uint32_t CreateMutexProperty = 2;
    /// Property bit: convert a record file whose stored description differs.
    static constexpr std::uint32_t ConvertProperty = 4;

    /// The version this library writes; readers also accept 0, which has the same layout.
    static constexpr std::uint8_t CurrentVersion = 1;
    /// A cache size that keeps the whole store in memory.
    static constexpr std::uint32_t CacheAll = 0xFFFFFFFF;
    /// The longest record that a table of this library may have, 64 MiB: the data length of its field
    /// list (for an unmanaged table, its record length), which every Record of the table allocates
    /// and every store entry holds. The table factories and RemoteTableFactory refuse a longer one
    /// with DatabaseException 12 before they make anything.
    static constexpr std::uint32_t MaxRecordLength = 64 * 1024 * 1024;

    /// Empty name, unmanaged, everything else 0.
    TableSpecification() = default;
    /// A managed table: record length 0.
    TableSpecification(const std::string& name, std::uint32_t properties,
                       const std::vector<FieldSpecification>& fields,
                       std::uint32_t initialMaximumRecords, std::uint32_t growRecords, std::uint32_t cacheSize);
    /// An unmanaged table with records of `recordLength` bytes.
    TableSpecification(const std::string& name, std::uint32_t properties,
                       const std::vector<FieldSpecification>& fields,
                       std::uint32_t initialMaximumRecords, std::uint32_t recordLength, std::uint32_t growRecords,
                       std::uint32_t cacheSize);
    /// Every member from its argument; for a table describing itself, not for callers of the library.
    TableSpecification(const std::string& name, bool managed, std::uint32_t properties,
                       const std::vector<FieldSpecification>& fields, std::uint32_t initialMaximumRecords,
                       std::uint32_t recordLength, std::uint32_t growRecords, std::uint32_t cacheSize);

    ///@{
    /// Compares name, layout, fields (by FieldSpecification::operator==) and record length. Properties
    /// and sizing take no part, so a stored table can be resized and still be the same table.
    bool operator==(const TableSpecification& other) const noexcept;
    bool operator!=(const TableSpecification& other) const noexcept { return !(*this == other); }
    ///@}

    /// Wire form, little-endian, no padding (name of n bytes):
    ///   offset 0     1 byte   version (0 or 1; both have this layout)
    ///   offset 1     2 bytes  n
    ///   offset 3     n bytes  name, no terminator
    ///   offset 3+n   4 bytes  managed, 1 or 0 (readers take any value but 0 as true)
    ///   offset 7+n   4 bytes  properties
    ///   offset 11+n  4 bytes  count of fields
    ///   offset 15+n           the fields, each in the wire form of FieldSpecification
    ///   then         4 bytes  each: initial maximum records, record length, grow records, cache size
    /// Serialize writes `version` as the first byte and stops at the first failing append: status 23
    /// for a name longer than 65535 bytes, or the status of the builder or of a field.
    StatusCode Serialize(MessageBuilder& builder, std::uint8_t version) const;
    /// Status 23 if the message is short, 21 for a version above 1 (the validator then stands behind
    /// the version byte), or a field's status. Members and fields read before a failure keep their
    /// new values. While reading, the validator carries the message's version; its own version is
    /// restored on every way out. Does not validate.
    StatusCode Deserialize(MessageValidator& validator);
    /// Writes `table`'s own description (ITable::GetSpecification) as above; 23 for a null table.
    static StatusCode Serialize(MessageBuilder& builder, ITable* table, std::uint8_t version);

    /// A new table of this description, owned by the caller: managed or unmanaged by the layout flag
    /// (a managed table ignores the record length), with its files in `path`, or without files when
    /// `path` is empty. The factory's exceptions pass through; never returns null.
    ITable* CreateTable(const std::string& path) const;

    /// Whether `properties` hold CreateRecordFileProperty.
    static bool ShouldCreateRecordFile(std::uint32_t properties) noexcept {
        return (properties & CreateRecordFileProperty) != 0;
    }
    /// Whether `properties` hold CreateMutexProperty.
    static bool ShouldCreateMutex(std::uint32_t properties) noexcept {
        return (properties & CreateMutexProperty) != 0;
    }
    /// Whether `properties` hold ConvertProperty.
    static bool ShouldConvert(std::uint32_t properties) noexcept { return (properties & ConvertProperty) != 0; }

    /// Labelled lines of the members, then the fields as a table.
    std::string ToString() const;

    /// The table's name.
    const std::string& GetName() const noexcept { return name_; }
    /// True for the managed layout (ManagedFieldList), false for the unmanaged one.
    bool IsManaged() const noexcept { return managed_; }
    /// The property bits; only CreateRecordFileProperty, CreateMutexProperty and ConvertProperty steer
    /// anything, the others are carried and stored.
    std::uint32_t GetProperties() const noexcept { return properties_; }
    /// The fields in list order, as given (not validated).
    const std::vector<FieldSpecification>& GetFields() const noexcept { return fields_; }
    /// The number of records the table's store makes room for when it is created.
    std::uint32_t GetInitialMaximumRecords() const noexcept { return initialMaximumRecords_; }
    /// The record length of an unmanaged table; a managed table ignores it (the managed constructor
    /// sets 0), as its field list works the length out.
    std::uint32_t GetRecordLength() const noexcept { return recordLength_; }
    /// The number of records by which a full store grows: 0 for none, 0xFFFFFFFF for half of the
    /// initial maximum.
    std::uint32_t GetGrowRecords() const noexcept { return growRecords_; }
    /// Kilobytes of the store's cache; CacheAll keeps the whole store in memory.
    std::uint32_t GetCacheSize() const noexcept { return cacheSize_; }

private:
    StatusCode DeserializeMembers(MessageValidator& validator);

    std::string name_;
    bool managed_ = false;
    std::uint32_t properties_ = 0;
    std::vector<FieldSpecification> fields_;
    std::uint32_t initialMaximumRecords_ = 0;
    std::uint32_t recordLength_ = 0;
    std::uint32_t growRecords_ = 0;
    std::uint32_t cacheSize_ = 0;
};

/// Writes ToString().
std::ostream& operator<<(std::ostream& stream, const TableSpecification& specification);

/// The table specification message carries nothing of its own: returns status 0 and writes nothing.
StatusCode SerializeTableSpecificationMessage(MessageBuilder& builder);

}  // namespace Tavrin::Database
