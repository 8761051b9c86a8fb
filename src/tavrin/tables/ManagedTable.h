#pragma once
// ManagedTable: a table whose records have the managed layout (ManagedFieldList: a presence bitmap,
// length prefixes and a slot of the full maximum length per field), so the table works out its
// record length itself. Adds nothing to Table but the layout; made by ManagedTableFactory.

#include <cstdint>
#include <vector>

#include "tavrin/tables/Table.h"

namespace Tavrin::Database {

class ManagedTable final : public Table {
public:
    /// Deletes the indexes and the store while the layout is still known, then the rest as Table.
    ~ManagedTable() override;

    /// Both hold the mutex for the whole call and give the indexes key lists of this table's layout.
    /// CreateIndexes runs once, on an open store, and gives the store and every index a new Uuid.
    /// CreateTemporaryIndex adds one index to a table that has a primary index (else
    /// DatabaseException 4), under the store's current Uuid.
    void CreateIndexes(std::vector<IndexSpecification>& specifications) override;
    void CreateTemporaryIndex(IndexSpecification& specification) override;

    bool IsManaged() override { return true; }

private:
    friend class ManagedTableFactory;

    ManagedTable() = default;
    /// Table::Construct with a managed field list; the record length of `settings` is not used.
    void Construct(const Settings& settings);
    static FieldList* MakeFieldList(const std::vector<FieldSpecification>& fields, std::uint32_t recordLength);
};

}  // namespace Tavrin::Database
