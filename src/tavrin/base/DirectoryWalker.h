#pragma once
// Visits the entries of one directory: derive from it and override OnFile (and OnDirectory if
// needed). The walk does not go down into subdirectories; OnDirectory may start a walk of its own.

#include <string>

#include "tavrin/base/Status.h"

namespace Tavrin {

/// Calls a virtual callback for each regular file and each subdirectory of one directory, without
/// going down into the subdirectories. Not thread-safe: one walk at a time per object.
class DirectoryWalker {
public:
    /// A walker with no state of its own.
    DirectoryWalker() = default;
    /// Not copyable.
    DirectoryWalker(const DirectoryWalker&) = delete;
    /// Not copyable.
    DirectoryWalker& operator=(const DirectoryWalker&) = delete;
    /// Destroys the walker.
    virtual ~DirectoryWalker() = default;

    /// Calls OnFile for each regular file of `directory` (a link counts as what it points to) and
    /// OnDirectory for each subdirectory other than "." and "..", in the byte order of their names.
    /// Other kinds of entry are skipped. A non-empty `name` restricts the walk to the entry of that
    /// name. A callback that returns false ends the walk. The entries are listed before the first
    /// callback, so a callback may remove or add files. Status 0, or the status of the system's
    /// error when the directory cannot be read (6 when it does not exist).
    StatusCode Walk(const std::string& directory, const std::string& name);

    /// Called for the subdirectory `name` of `directory` (as given to Walk); true goes on, false ends
    /// the walk. This one does nothing and goes on.
    virtual bool OnDirectory(const std::string& directory, const std::string& name);
    /// Called for the regular file `name` of `directory` (as given to Walk); true goes on, false ends
    /// the walk.
    virtual bool OnFile(const std::string& directory, const std::string& name) = 0;
};

}  // namespace Tavrin
