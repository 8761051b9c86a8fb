#pragma once
// UnmanagedTable: a table whose records have the unmanaged layout (UnmanagedFieldList: values at
// offsets chosen by the caller, every field always defined), with a record length that the caller
// gives. Adds nothing to Table but the layout; made by UnmanagedTableFactory.

#include <cstdint>
#include <vector>

#include "tavrin/tables/Table.h"

namespace Tavrin::Database {

class UnmanagedTable final : public Table {
public:
    /// Deletes the indexes and the store while the layout is still known, then the rest as Table.
    ~UnmanagedTable() override;

    /// Both hold the mutex for the whole call and give the indexes key lists of this table's layout.
    /// CreateIndexes runs once, on an open store, and gives the store and every index a new Uuid.
    /// CreateTemporaryIndex adds one index to a table that has a primary index (else
    /// DatabaseException 4), under the store's current Uuid.
    void CreateIndexes(std::vector<IndexSpecification>& specifications) override;
    void CreateTemporaryIndex(IndexSpecification& specification) override;

    bool IsManaged() override { return false; }

private:
    friend class UnmanagedTableFactory;

    UnmanagedTable() = default;
    /// Table::Construct with an unmanaged field list of the record length of `settings`.
    void Construct(const Settings& settings);
    static FieldList* MakeFieldList(const std::vector<FieldSpecification>& fields, std::uint32_t recordLength);
};

}  // namespace Tavrin::Database
