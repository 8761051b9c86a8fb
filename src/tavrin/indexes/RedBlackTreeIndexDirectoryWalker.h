#pragma once
// RedBlackTreeIndexDirectoryWalker: collects the index descriptions of the tree indexes of one table
// from the tree files in a directory (RedBlackTreeIndex::GetSpecifications makes and runs it).

#include <string>
#include <vector>

#include "tavrin/indexes/IndexDirectoryWalker.h"
#include "tavrin/schema/IndexSpecification.h"

namespace Tavrin::Database {

/// Walks one directory for tree index files whose whole name matches a regular expression, and
/// appends the IndexSpecification at the head of each file's user data to the caller's vector.
/// Reads only the file header, the store header and the user data, read-only and without the
/// file's lock, so that a walk costs the same whatever the number of keys, writes nothing (not
/// even a clean flag), and may run beside the process that holds the index
/// (IndexDirectoryWalker). Not thread-safe.
class RedBlackTreeIndexDirectoryWalker : public IndexDirectoryWalker {
public:
    /// A walker for names that match `pattern` as a whole (Boost.Regex in its default syntax),
    /// appending to `specifications`, which must outlive the walk. Throws boost::regex_error for a
    /// pattern that is no regular expression.
    RedBlackTreeIndexDirectoryWalker(const std::string& pattern, std::vector<IndexSpecification>& specifications);
    /// Destroys the walker; the vector stays the caller's.
    ~RedBlackTreeIndexDirectoryWalker() override;

    /// Appends to `specifications` those of the tree files in `directory` that `scope` takes for
    /// table `tableName` (IndexDirectoryWalker::Scope); the pattern is the table name with blanks
    /// written "_", "-", ".+", "\.rb\.idx": for table Items 2, Items_2-.+\.rb\.idx. Status 0, the
    /// walk's status (6 for a missing directory), 23 when the table name makes no regular
    /// expression, 41 when memory runs out.
    static StatusCode Find(const std::string& directory, const std::string& tableName, Scope scope,
                           std::vector<IndexSpecification>& specifications);

protected:
    /// The store header behind the 17-byte file header (DataStoreHeader), then the index description at
    /// the head of the user data area, whatever the clean flag says: 23 for a header that no store
    /// writes, a user data area outside the file or longer than any specification.
    StatusCode ReadSpecification(Tavrin::File& file, std::int64_t size, IndexSpecification& specification) override;
};

}  // namespace Tavrin::Database
