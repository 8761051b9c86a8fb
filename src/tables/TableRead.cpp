// The read path of a table: lookups and walks by key, walks of the store.

#include "records/Key.h"
#include "records/Record.h"
#include "tables/Table.h"

namespace Tavrin::Database {

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
