// Database::GetEqual: one key looked for in every table, index by index.

#include "tavrin/database/Database.h"

#include "tavrin/base/MutexHolder.h"
#include "tavrin/records/FieldList.h"

namespace Tavrin::Database {

namespace {

// Whether `target`, a fresh key of some index, has exactly the fields of `source`: the same ids,
// each of the same type and maximum length. A copy by id into any other key would leave fields of
// the target undefined or fill them with bytes of another type, and the search would then match
// on them.
bool HasSameFields(const Key& target, const Key& source) {
    if (!target.IsInitialized() || !source.IsInitialized()) return false;
    const FieldList& targetFields = *target.GetFieldList();
    const FieldList& sourceFields = *source.GetFieldList();
    if (targetFields.GetFieldCount() != sourceFields.GetFieldCount()) return false;
    for (auto field = sourceFields.Begin(); field != sourceFields.End(); ++field) {
        FieldSpecification ours;
        if (targetFields.GetFieldSpecification(field.GetId(), ours) != Status::Success) return false;
        if (ours.GetType() != field.GetType() ||
            ours.GetMaxLength() != field.GetSpecification().GetMaxLength()) {
            return false;
        }
    }
    return true;
}

// One index of one table: a key of the index is made and filled from the caller's key. A key that
// can't be made ends the try with that status (26 for a table without a primary index); a key that
// can't be filled is not found.
StatusCode SearchIndex(ITable& table, std::uint16_t indexNumber, const Key& key, Record& record) {
    Key indexKey;
    const StatusCode status = indexKey.Initialize(&table, indexNumber);
    if (status != Status::Success) return status;
    if (!HasSameFields(indexKey, key) || indexKey.CopyFields(key, true) != Status::Success) {
        return Status::NotFound;
    }
    return table.GetEqual(indexKey, record);
}

// One table: its primary index, then the others by ascending number.
StatusCode SearchTable(ITable& table, const Key& key, Record& record) {
    const std::uint16_t primary = table.GetPrimaryIndex();
    StatusCode status = SearchIndex(table, primary, key, record);
    const std::uint32_t count = table.GetNumberOfIndexes();
    for (std::uint32_t number = 0; status == Status::NotFound && number < count; ++number) {
        if (number != primary) status = SearchIndex(table, static_cast<std::uint16_t>(number), key, record);
    }
    return status;
}

}  // namespace

StatusCode Database::GetEqual(const Key& key, Record& record) const {
    MutexHolder holder(mutex_.get());
    for (const std::uint16_t tableId : attachOrder_) {
        const StatusCode status = SearchTable(*tables_[tableId], key, record);
        if (status != Status::NotFound) return status;
    }
    return Status::NotFound;
}

}  // namespace Tavrin::Database
