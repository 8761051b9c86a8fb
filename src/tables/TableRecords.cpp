// The operations of a table on records and keys. The write and read paths need the indexes and
// come with them; until then they answer status 13.

#include "records/Record.h"
#include "tables/Table.h"

namespace Tavrin::Database {

StatusCode Table::ResetRecord(Record& record) {
    if (!record.GetTableToken().IsSame(GetIdentityToken())) return Status::OtherTable;
    fieldList_->ResetData(record.GetData());
    record.SetRecordId(FieldListObject::NoRecordId);
    return Status::Success;
}

// Messages.
StatusCode Table::SerializeRecords(MessageBuilder&, const std::vector<unsigned char>&, const std::vector<Record>&) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::SerializeRecords(MessageBuilder&, const std::vector<Record>&) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::SerializeKeys(MessageBuilder&, const std::vector<Key>&) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::DeserializeRecords(MessageValidator&, std::vector<unsigned char>&, std::vector<Record>&) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::DeserializeCounts(MessageValidator&, std::uint32_t&, std::uint32_t&) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::DeserializeRecords(MessageValidator&, std::vector<Record>&) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::DeserializeKeys(MessageValidator&, std::vector<Key>&) {
    return Status::NotAvailable;  // not available yet
}

// Writes.
StatusCode Table::WriteRecord(Record&, Record&) { return Status::NotAvailable; }  // not available yet
StatusCode Table::WriteRecord(Record&, const std::vector<std::uint16_t>&) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::WriteRecord(Record&) { return Status::NotAvailable; }           // not available yet
StatusCode Table::RemoveRecord(Key&, Record&) { return Status::NotAvailable; }    // not available yet
StatusCode Table::RemoveRecord(Key&) { return Status::NotAvailable; }             // not available yet

// Reads by key.
StatusCode Table::GetEqual(std::vector<Key>&, std::vector<unsigned char>&, std::vector<Record>&) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::GetEqual(Key&, Record&) { return Status::NotAvailable; }  // not available yet
StatusCode Table::GetFirst(Key&, std::vector<Record>&, std::uint32_t) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::GetFirst(Key&, Record&) { return Status::NotAvailable; }  // not available yet
StatusCode Table::GetLast(Key&, std::vector<Record>&, std::uint32_t) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::GetLast(Key&, Record&) { return Status::NotAvailable; }  // not available yet
StatusCode Table::GetNext(Key&, std::vector<Record>&, std::uint32_t) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::GetNext(Key&, Record&) { return Status::NotAvailable; }  // not available yet
StatusCode Table::GetPrevious(Key&, std::vector<Record>&, std::uint32_t) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::GetPrevious(Key&, Record&) { return Status::NotAvailable; }  // not available yet
StatusCode Table::GetFirstEqual(Key&, std::vector<Record>&, std::uint16_t, std::uint32_t, std::uint32_t) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::GetFirstEqual(Key&, Record&, std::uint16_t, std::uint32_t) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::GetLastEqual(Key&, std::vector<Record>&, std::uint16_t, std::uint32_t, std::uint32_t) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::GetLastEqual(Key&, Record&, std::uint16_t, std::uint32_t) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::GetNextEqual(Key&, std::vector<Record>&, std::uint16_t, std::uint32_t, std::uint32_t) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::GetNextEqual(Key&, Record&, std::uint16_t, std::uint32_t) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::GetPreviousEqual(Key&, std::vector<Record>&, std::uint16_t, std::uint32_t, std::uint32_t) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::GetPreviousEqual(Key&, Record&, std::uint16_t, std::uint32_t) {
    return Status::NotAvailable;  // not available yet
}

// Reads in store order.
StatusCode Table::GetFirstRecord(std::uint32_t&, std::vector<Record>&, std::uint32_t) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::GetFirstRecord(std::uint32_t&, Record&) { return Status::NotAvailable; }  // not available yet
StatusCode Table::GetNextRecord(std::uint32_t&, std::vector<Record>&, std::uint32_t) {
    return Status::NotAvailable;  // not available yet
}
StatusCode Table::GetNextRecord(std::uint32_t&, Record&) { return Status::NotAvailable; }  // not available yet

StatusCode Table::BuildRecord(Record&, std::uint16_t, const KeyValueList&) {
    return Status::NotAvailable;  // not available yet
}

}  // namespace Tavrin::Database
