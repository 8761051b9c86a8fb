#pragma once
// RecordSink: where a batch walk of an index delivers record ids. The index names each record twice:
// once as soon as it knows the id (Prefetch), so that the caller can ask for the record's bytes
// early, and again, in walk order and some steps later, when the record is due (Take).

#include <cstdint>

namespace Tavrin::Database {

/// Receives the record ids of a batch walk (Index::Walk): Prefetch when an id becomes known, Take
/// in walk order. Implemented by the caller of the walk; used by one thread.
class RecordSink {
public:
    /// The record `recordId` will be taken soon: start loading it. Must not fail or change anything
    /// that a caller sees.
    virtual void Prefetch(std::uint32_t recordId) noexcept = 0;
    /// The next record of the walk. False stops the walk at this record: the walk's key is left at
    /// it, as a walk of one record per call would leave it.
    virtual bool Take(std::uint32_t recordId) = 0;

protected:
    /// Not deleted through this interface: a sink lives on its caller's stack.
    ~RecordSink() = default;
};

}  // namespace Tavrin::Database
