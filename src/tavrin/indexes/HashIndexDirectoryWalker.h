#pragma once
// HashIndexDirectoryWalker: collects the specifications of the hash indexes of one table from the
// description files in a directory (HashIndex::GetSpecifications makes and runs it).

#include <memory>
#include <string>
#include <vector>

#include "tavrin/base/DirectoryWalker.h"
#include "tavrin/schema/IndexSpecification.h"

namespace Tavrin::Database {

/// Walks one directory for hash index description files whose whole name matches a regular
/// expression, and appends the IndexSpecification that each holds to the caller's vector. Reads
/// the files without opening them as mapped files: a walk writes nothing, not even a clean flag,
/// and may run beside the process that holds the index. Not thread-safe.
class HashIndexDirectoryWalker : public Tavrin::DirectoryWalker {
public:
    /// A walker for names that match `pattern` as a whole (Boost.Regex in its default syntax),
    /// appending to `specifications`, which must outlive the walk. Throws boost::regex_error for a
    /// pattern that is no regular expression.
    HashIndexDirectoryWalker(const std::string& pattern, std::vector<IndexSpecification>& specifications);
    /// Destroys the walker; the vector stays the caller's.
    ~HashIndexDirectoryWalker() override;

    /// For a matching name, reads the file's data area (behind its 17-byte header) as a serialised
    /// IndexSpecification and appends it. A file that can't be read, is longer than any
    /// specification or holds none is passed over, whatever its clean flag says: the walk only
    /// learns which indexes exist, and the open of each index decides whether its files can be
    /// used. Always true, so the walk goes on.
    bool OnFile(const std::string& directory, const std::string& name) override;

private:
    struct Pattern;

    std::unique_ptr<Pattern> pattern_;
    std::vector<IndexSpecification>& specifications_;
};

}  // namespace Tavrin::Database
