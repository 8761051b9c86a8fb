#pragma once
// HashIndexDirectoryWalker: collects the index descriptions of the hash indexes of one table from the
// description files in a directory (HashIndex::GetSpecifications makes and runs it).

#include <string>
#include <vector>

#include "tavrin/indexes/IndexDirectoryWalker.h"
#include "tavrin/schema/IndexSpecification.h"

namespace Tavrin::Database {

/// Walks one directory for hash index description files whose whole name matches a regular
/// expression, and appends the IndexSpecification that each holds to the caller's vector. Reads
/// the files without opening them as mapped files: a walk writes nothing, not even a clean flag,
/// and may run beside the process that holds the index (IndexDirectoryWalker). Not thread-safe.
class HashIndexDirectoryWalker : public IndexDirectoryWalker {
public:
    /// A walker for names that match `pattern` as a whole (Boost.Regex in its default syntax),
    /// appending to `specifications`, which must outlive the walk. Throws boost::regex_error for a
    /// pattern that is no regular expression.
    HashIndexDirectoryWalker(const std::string& pattern, std::vector<IndexSpecification>& specifications);
    /// Destroys the walker; the vector stays the caller's.
    ~HashIndexDirectoryWalker() override;

    /// Appends to `specifications` those of the description files in `directory` that `scope` takes
    /// for table `tableName` (IndexDirectoryWalker::Scope); the pattern is the table name with blanks
    /// written "_", "-", ".+", "\.hash\.idx", so entry and bucket files never match. Status 0, the
    /// walk's status (6 for a missing directory), 23 when the table name makes no regular
    /// expression, 41 when memory runs out.
    static StatusCode Find(const std::string& directory, const std::string& tableName, Scope scope,
                           std::vector<IndexSpecification>& specifications);

protected:
    /// The data area (behind the 17-byte header) as a serialised IndexSpecification, whatever the
    /// clean flag says; 23 for a file with no data area or one longer than any index description.
    StatusCode ReadSpecification(Tavrin::File& file, std::int64_t size, IndexSpecification& specification) override;
};

}  // namespace Tavrin::Database
