// The write path of a table: adding, updating and removing records on the store and every index.

#include "records/Key.h"
#include "records/Record.h"
#include "tables/Table.h"

namespace Tavrin::Database {

StatusCode Table::ResetRecord(Record& record) {
    if (!record.GetTableToken().IsSame(GetIdentityToken())) return Status::OtherTable;
    fieldList_->ResetData(record.GetData());
    record.SetRecordId(FieldListObject::NoRecordId);
    return Status::Success;
}

StatusCode Table::Clear() { return Status::NotAvailable; }  // not available yet

// Writes.
StatusCode Table::WriteRecord(Record&, Record&) { return Status::NotAvailable; }  // not available yet
StatusCode Table::WriteRecord(Record&, const std::vector<std::uint16_t>&) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::WriteRecord(Record&) { return Status::NotAvailable; }           // not available yet
StatusCode Table::RemoveRecord(Key&, Record&) { return Status::NotAvailable; }    // not available yet
StatusCode Table::RemoveRecord(Key&) { return Status::NotAvailable; }             // not available yet

}  // namespace Tavrin::Database
