#pragma once
// The rules that a table applies to the description of a new index before it makes the index: one
// implementation for the indexes that a table creates and for those that a remote table receives
// in a message, so that a description one refuses is refused by the other. Internal to the tables
// layer.

#include <memory>
#include <string>
#include <vector>

#include "tavrin/base/Throw.h"
#include "tavrin/indexes/IIndex.h"
#include "tavrin/schema/IndexSpecification.h"

namespace Tavrin::Database {

/// Checks `specification` against the `existing` indexes of table `tableName`, in this order:
///   IndexSpecification::Validate, which throws what the validating constructor throws (an empty
///   name, type None, the NoProperty bit);
///   for each existing index in number order, DatabaseException 12 at `site` for the same name
///   ("repeated index name <index> for table <table>") and for the primary unique bit on both
///   ("multiple primary unique indexes defined at index <index> for table <table>");
///   DatabaseException 12 "empty index field list for index <index>" for a key without fields;
///   DatabaseException 12 without a message for a type that is neither Hash nor RedBlack.
/// Whether the table has a structure for the type, and whether the key fields are the table's, is
/// settled where the index is made (Index's constructor refuses a field the table lacks).
void CheckNewIndex(ThrowSite site, const std::string& tableName, const std::vector<std::unique_ptr<IIndex>>& existing,
                   const IndexSpecification& specification);

}  // namespace Tavrin::Database
