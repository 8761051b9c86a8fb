#pragma once
// AttachedTables: the tables of this process that some Database owns, so that no table is attached
// twice (under a second id, or to a second database) and then destroyed twice. A Database claims a
// table in AttachTable and releases it in DetachTable; nothing else touches the set. The set holds
// addresses only and never calls a table. Safe from any thread: one lock of its own, taken last
// (after a database's and never together with a table's).

namespace Tavrin::Database {

class ITable;

/// The process-wide set of tables that a Database owns (see the file comment above).
class AttachedTables {
public:
    /// Adds `table` to the set: true, or false when it is there already (and then nothing changes).
    /// Throws std::bad_alloc when memory runs out, and then nothing changes either.
    static bool Claim(const ITable* table);
    /// Takes `table` out of the set; a table that is not in it is left alone.
    static void Release(const ITable* table) noexcept;
};

}  // namespace Tavrin::Database
