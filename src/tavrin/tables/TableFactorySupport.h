#pragma once
// What the table factories share: the argument checks in their order, and the way a table is
// allocated, constructed and handed over. RemoteTable applies the same checks to a description it
// receives. Internal to the tables layer.
//
// Nothing is allocated before the checks pass. The table is allocated without throwing; an
// exception out of its construction gets DatabaseException code 8 "<name>" added to its chain and
// is thrown on, after the half-made table is deleted.

#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/Exception.h"
#include "tavrin/base/Throw.h"
#include "tavrin/records/FieldSpecification.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Database::TableFactorySupport {

/// The step of an array form: DatabaseException 12 "invalid field list for table <name>" for a null
/// array or a count of 0, else the array as a vector for the vector form.
std::vector<FieldSpecification> FieldArrayToVector(ThrowSite site, const std::string& name,
                                                   const FieldSpecification* fields, std::uint32_t numberOfFields);

/// The checks of a vector form, in order, each DatabaseException 12: no records, no fields, in the
/// forms with a directory an empty one, and a record longer than TableSpecification::MaxRecordLength
/// ("record length <length> of table <name> passes the limit of <limit> bytes"). The record length
/// is the managed layout's data length of the fields, or the unmanaged record length, computed in
/// 64 bits before any field list exists; the fields themselves are validated by the list.
void CheckSettings(ThrowSite site, const Table::Settings& settings, bool managed);

/// DatabaseException 8 for a table that could not be allocated; "<name>" in the forms with a
/// directory, no message in the others.
[[noreturn]] void ThrowAllocationFailure(ThrowSite site, const Table::Settings& settings);

/// Takes ownership of `allocated` (null when the allocation failed) and runs `construct` on it.
template <class T, class Construct>
ITable* ConstructTable(ThrowSite site, const Table::Settings& settings, T* allocated, Construct construct) {
    std::unique_ptr<T> table(allocated);
    if (!table) ThrowAllocationFailure(site, settings);
    try {
        construct(*table);
    } catch (const Exception& exception) {
        exception.AddException(
            NewDatabaseException(site, DatabaseException::AllocateTable, "<%s>", settings.name.c_str()));
        throw;
    } catch (const std::bad_alloc&) {
        ThrowDatabase(site, DatabaseException::AllocateTable, "<%s>", settings.name.c_str());
    }
    return table.release();
}

}  // namespace Tavrin::Database::TableFactorySupport
