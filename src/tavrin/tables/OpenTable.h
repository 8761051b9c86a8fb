#pragma once
// OpenTable: a table brought back from nothing but the name of its record file. The record file
// describes its table (the TableSpecification in its user data), and every index file carries the
// description of its index, so the file name is all a caller needs.

#include <string>

#include "tavrin/tables/ITable.h"

namespace Tavrin::Database {

/// Opens the table whose record file is `fileName` and gives it to the caller, who owns it.
///
/// The stored description is read first (the file is opened as a plain store and closed again);
/// the table is then built by the factory of its layout with the stored name, properties, fields
/// and sizes, in the directory of `fileName`: everything up to and including its last '/' or
/// '\', whichever stands later, or "./" when it has neither. `openRecordFile` adds property bit 0
/// (open the record file now) to the stored properties; false clears no stored bit. With
/// `openIndexes` the table's indexes are found in that directory (Table::FindIndexSpecifications:
/// only files named exactly for this table and the index stored in each), sorted by their stored
/// numbers, and made with ITable::CreateIndexes: each opens its files or is rebuilt from the
/// records; a gap in the numbers closes up. Only the directory's own level is searched.
///
/// Throws StatusCodeException ("Tavrin::Database::Table::Open"): the store's status when the file
/// can't be opened or read (6 for a missing file or directory, 17 while a table holds it, 23 for a
/// file left open by a crash, which the refusal marks, so the next call opens it); 25 when the
/// stored table name names another record file than `fileName` (a record file renamed or copied
/// under another name); the walk's status. What the factory and CreateIndexes throw passes on,
/// after the table is deleted. On every failure nothing has been created: no empty table beside
/// the caller's file, and no index file.
ITable* OpenTable(const std::string& fileName, bool openRecordFile, bool openIndexes);

}  // namespace Tavrin::Database
