// The batch operations of an index as plain sequences of single ones; a structure that can overlap
// the memory waits of several steps overrides them.
#include "tavrin/indexes/Index.h"

namespace Tavrin::Database {

void Index::FindMany(Key* const* keys, std::uint32_t count, std::uint32_t* recordIds, StatusCode* statuses) {
    for (std::uint32_t i = 0; i < count; ++i) statuses[i] = Find(*keys[i], recordIds[i]);
}

StatusCode Index::Walk(Key& key, bool forward, bool prefix, std::uint16_t fieldId, std::uint32_t length,
                       std::uint32_t count, RecordSink& sink) {
    for (std::uint32_t taken = 0; taken < count; ++taken) {
        std::uint32_t recordId = 0;
        StatusCode status = Status::Success;
        if (prefix) {
            status = forward ? GetNextEqual(key, recordId, fieldId, length)
                             : GetPreviousEqual(key, recordId, fieldId, length);
        } else {
            status = forward ? GetNext(key, recordId) : GetPrevious(key, recordId);
        }
        if (status != Status::Success) return status;
        if (!sink.Take(recordId)) break;
    }
    return Status::Success;
}

}  // namespace Tavrin::Database
