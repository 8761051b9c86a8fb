#pragma once
// Database: a named container of tables, each under a 16-bit table id. It makes no tables: a caller
// builds one (a factory, OpenTable, TableSpecification::CreateTable) and hands it over with
// AttachTable, after which the database owns it until DetachTable hands it back. It offers lookup by
// id, walks in ascending id order, one search for a key across all its tables, and one
// DatabaseSpecification of all of them.
//
// Containers: `tables_` is indexed by id (null where no table is attached; its length is the
// greatest attached id plus 1, or 0), `tableIds_` holds the attached ids in ascending order, and
// `attachOrder_` in the order of their attaching. An id is in both sets exactly when its element of
// `tables_` is set.
//
// Locking: with property bit 0 the database has a mutex of its own that guards the three containers
// (and nothing else: a table locks itself if its own properties ask for it). The lock order is the
// database's mutex, then a table's.

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tavrin/base/IMutex.h"
#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/Status.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/Record.h"
#include "tavrin/schema/DatabaseSpecification.h"
#include "tavrin/tables/ITable.h"

namespace Tavrin::Database {

/// A named container that owns tables under 16-bit ids: lookup by id, walks in ascending id order,
/// one key search across all tables (GetEqual) and one description of them all (GetSpecification).
///
/// Ownership: AttachTable takes a table over, DetachTable hands it back, and the destructor destroys
/// every table still attached, which closes its files. A table is owned by one database at a time.
///
/// Locking: with property bit 0 (DatabaseSpecification::CreateMutexProperty) AttachTable,
/// DetachTable, GetTable, GetEqual, GetSpecification and ForEachTable hold the database's mutex for
/// their whole call, and SerializeSpecification while it builds the description (not while it
/// writes it). GetName, GetNumberOfTables and the iterators take no lock: a caller who walks a
/// database that other threads change must keep them out by its own means, or use ForEachTable.
/// Without bit 0 nothing is locked and the caller serialises every use. The mutex is not
/// recursive: a callback of ForEachTable must not call the locking members.
///
/// A table pointer from GetTable, from an iterator or from ForEachTable stays good while the table
/// stays attached: DetachTable of its id (on any thread) or the database's destruction ends it.
class Database {
public:
    /// A position in the attached ids, walking them in ascending order. Built by Begin() and End();
    /// stays valid across AttachTable and DetachTable of other ids, but not of its own id. A
    /// ConstIterator differs only in handing out a pointer to a const table.
    template <class TableType>
    class BasicIterator {
    public:
        /// Equal when the positions are.
        bool operator==(const BasicIterator& other) const noexcept { return position_ == other.position_; }
        /// Unequal when the positions are.
        bool operator!=(const BasicIterator& other) const noexcept { return position_ != other.position_; }
        /// Steps to the next greater id; returns this iterator.
        BasicIterator& operator++() noexcept {
            ++position_;
            return *this;
        }
        /// Steps to the next greater id; returns the former state.
        BasicIterator operator++(int) noexcept {
            BasicIterator former = *this;
            ++position_;
            return former;
        }
        /// The id at the position. Not at End().
        std::uint16_t GetTableId() const noexcept { return *position_; }
        /// The table at the position, owned by the database. Not at End().
        TableType* GetTable() const noexcept { return (*tables_)[*position_].get(); }

    private:
        friend class Database;
        BasicIterator(const std::vector<std::unique_ptr<ITable>>& tables,
                      std::set<std::uint16_t>::const_iterator position) noexcept
            : tables_(&tables), position_(position) {}

        const std::vector<std::unique_ptr<ITable>>* tables_;
        std::set<std::uint16_t>::const_iterator position_;
    };
    /// Walks the tables by ascending id.
    using Iterator = BasicIterator<ITable>;
    /// Walks the tables by ascending id, handing out const tables.
    using ConstIterator = BasicIterator<const ITable>;

    /// A walk under the mutex: called once for each attached table by ascending id.
    using TableCallback = std::function<void(std::uint16_t tableId, ITable& table)>;

    /// An empty database. With property bit 0 it makes its mutex; any failure to make it throws
    /// DatabaseException 2 (failed to allocate database).
    explicit Database(const std::string& name = "", std::uint32_t properties = 0);
    /// Detaches and destroys every attached table (closing its files), then the mutex. No other
    /// thread may use the database meanwhile.
    ~Database();
    /// Not copyable: the database owns its tables.
    Database(const Database&) = delete;
    /// Not assignable: the database owns its tables.
    Database& operator=(const Database&) = delete;

    /// Takes `table` over under `tableId` (0 to 0xFFFF; the list of tables grows to the id plus 1).
    /// 0, and the database owns the table from here on; 23, with nothing changed, for a null table,
    /// an id that is taken, or a table that is attached already (here under another id, or to
    /// another database of the process), so that no table is destroyed twice; 41 when the
    /// containers can't grow, with nothing changed. Holds the mutex.
    StatusCode AttachTable(std::uint16_t tableId, ITable* table);
    /// Hands the table of `tableId` back: 0, `table` receives it and the caller owns it again, the
    /// other tables keep their search order, and the list of tables shrinks to the greatest id left
    /// plus 1 when `tableId` was the greatest; 23 when no table has the id, with `table` untouched.
    /// Holds the mutex.
    StatusCode DetachTable(std::uint16_t tableId, ITable*& table);
    /// The table of `tableId`, which the database keeps owning: 0; 6 when no table has the id, with
    /// `table` untouched. Holds the mutex.
    StatusCode GetTable(std::uint16_t tableId, ITable*& table) const;

    /// Looks for `key`, which may belong to any table, in every attached table: the tables in the
    /// order of their attaching, and in each its primary index, then its other indexes by ascending
    /// number. For each index a key of that index is made and the caller's key is copied into it by
    /// field id; an index whose key does not have exactly the fields of `key`, each with the same
    /// type and maximum length, counts as not found, as does a copy that fails, so no index is ever
    /// searched on undefined or foreign bytes. (In an index that allows duplicates a copied key
    /// carries no record id and so finds nothing; a key of that very index is taken whole.)
    ///
    /// 0, and `record` holds the record found, bound to its table; 6 when no table has the key, no
    /// table is attached, or `key` is not initialized; 26 from the first table in the order that
    /// has no primary index (no key can be made on it): that ends the search, the tables after it
    /// are not searched. After 6 and 26 `record` is untouched. Any other status of a table's
    /// GetEqual (13 from a remote table, say) also ends the search and is returned. Holds the
    /// database's mutex and, inside each table's GetEqual, that table's.
    StatusCode GetEqual(const Key& key, Record& record) const;

    /// The description of every attached table by ascending id: its id, GetSpecification() and its
    /// indexes in number order without those that CreateTemporaryIndex added (which a receiver
    /// must not make permanent). Holds the mutex. Throws std::bad_alloc when memory runs out.
    DatabaseSpecification GetSpecification() const;
    /// Appends GetSpecification() in its wire form. 0; 41 when memory runs out; else the builder's
    /// status (23 for a fixed buffer that is full or a name longer than 65535 bytes), with what was
    /// appended before it staying. Holds the mutex while it builds the description only.
    StatusCode SerializeSpecification(MessageBuilder& builder) const;

    /// Calls `callback` for each attached table by ascending id, holding the mutex for the whole
    /// walk, so that no table is attached or detached meanwhile. The callback must not call the
    /// members of this database that lock, nor keep the table beyond the walk. An exception from
    /// it ends the walk and passes through, with the mutex released.
    void ForEachTable(const TableCallback& callback);

    /// A copy of the name. Takes no lock (the name never changes).
    std::string GetName() const { return name_; }
    /// The number of attached tables. Takes no lock.
    std::uint32_t GetNumberOfTables() const noexcept { return static_cast<std::uint32_t>(tableIds_.size()); }

    ///@{
    /// The first attached table by id; End() when there is none. Takes no lock.
    Iterator Begin() noexcept { return Iterator(tables_, tableIds_.begin()); }
    ConstIterator Begin() const noexcept { return ConstIterator(tables_, tableIds_.begin()); }
    ///@}
    ///@{
    /// The position past the greatest attached id. Takes no lock.
    Iterator End() noexcept { return Iterator(tables_, tableIds_.end()); }
    ConstIterator End() const noexcept { return ConstIterator(tables_, tableIds_.end()); }
    ///@}

private:
    /// AttachTable's work after the checks; the caller holds the mutex and has claimed the table.
    StatusCode Insert(std::uint16_t tableId, ITable* table);

    const std::string name_;
    const std::uint32_t properties_;
    std::unique_ptr<IMutex> mutex_;                 // null without property bit 0
    std::vector<std::unique_ptr<ITable>> tables_;   // by id; null where free
    std::set<std::uint16_t> tableIds_;              // the attached ids, ascending
    std::vector<std::uint16_t> attachOrder_;        // the attached ids, in the order of attaching
};

}  // namespace Tavrin::Database
