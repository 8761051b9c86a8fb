#pragma once
// Visits the entries of one directory: derive from it and override OnFile (and OnDirectory if
// needed). The walk does not go down into subdirectories; OnDirectory may start a walk of its own.

#include <string>

#include "tavrin/base/Status.h"

namespace Tavrin {

class DirectoryWalker {
public:
    DirectoryWalker() = default;
    DirectoryWalker(const DirectoryWalker&) = delete;
    DirectoryWalker& operator=(const DirectoryWalker&) = delete;
    virtual ~DirectoryWalker() = default;

    /// Calls OnFile for each regular file of `directory` (a link counts as what it points to) and
    /// OnDirectory for each subdirectory other than "." and "..", in the byte order of their names.
    /// Other kinds of entry are skipped. A non-empty `name` restricts the walk to the entry of that
    /// name. A callback that returns false ends the walk. The entries are listed before the first
    /// callback, so a callback may remove or add files. Status 0, or the status of the system's
    /// error when the directory cannot be read (6 when it does not exist).
    StatusCode Walk(const std::string& directory, const std::string& name);

    ///@{
    /// Does nothing and goes on.
    virtual bool OnDirectory(const std::string& directory, const std::string& name);
    virtual bool OnFile(const std::string& directory, const std::string& name) = 0;
    ///@}
};

}  // namespace Tavrin
