#pragma once
// FileSet: the files of one table, written or copied as a whole.
//
// A table's record file and index files only make sense together: a copy that holds some of them
// would open as a table that silently lacks indexes, or rebuild indexes from the wrong records. So
// a copy either completes or takes back what it wrote, and a save that fails part way removes
// what it wrote. "What it wrote" is told by the file's identity (device and inode): every file
// this library writes is a new file renamed over its name, so a written name shows another file
// than before, while a name that the failed work never reached still shows the file it had.

#include <cstdint>
#include <string>
#include <vector>

#include "tavrin/base/Status.h"

namespace Tavrin {

/// Notes which files lie under a list of paths, so that those made or replaced afterwards can be
/// removed again; and copies a list of files from one directory to another as a whole. Not
/// thread-safe.
class FileSet {
public:
    /// Notes the file under each of `paths` now: none, or its device and inode.
    explicit FileSet(std::vector<std::string> paths);

    /// Removes each path whose file is not the one noted at construction (made or replaced since).
    /// A path that still shows its noted file, or still none, is left alone.
    void RemoveChanged() const noexcept;

    /// Copies each of `names` (file names without directory) from `source` into `destination`
    /// (empty: the working directory), overwriting, as one set. Every source file is locked for the
    /// whole copy, so no table opens one while it is read. Status 0; 23 when both directories are
    /// the same one, with nothing written; the status of File::OpenExclusive for a source file that
    /// is missing (6) or held open by a table (17), with nothing written; else the status of the
    /// first copy that fails (17 when a destination file is held open), after every file that this
    /// copy wrote is removed again.
    static StatusCode Copy(const std::string& source, const std::string& destination,
                           const std::vector<std::string>& names);

private:
    struct Identity {
        bool found = false;
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        bool operator==(const Identity&) const = default;
    };
    static Identity IdentityOf(const std::string& path) noexcept;

    std::vector<std::string> paths_;
    std::vector<Identity> identities_;
};

}  // namespace Tavrin
