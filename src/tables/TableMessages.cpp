// Records, keys, statuses and counts in messages.

#include "records/Key.h"
#include "records/Record.h"
#include "tables/Table.h"

namespace Tavrin::Database {

StatusCode Table::SerializeSpecification(MessageBuilder&) { return Status::NotAvailable; }  // not available yet

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

}  // namespace Tavrin::Database
