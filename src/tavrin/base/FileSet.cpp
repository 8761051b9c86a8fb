#include "tavrin/base/FileSet.h"

#include <sys/stat.h>

#include <memory>
#include <utility>

#include "tavrin/base/File.h"

namespace Tavrin {

namespace {

std::string DirectoryPath(const std::string& directory) { return directory.empty() ? "." : directory; }

}  // namespace

FileSet::FileSet(std::vector<std::string> paths) : paths_(std::move(paths)) {
    identities_.reserve(paths_.size());
    for (const std::string& path : paths_) identities_.push_back(IdentityOf(path));
}

void FileSet::RemoveChanged() const noexcept {
    for (std::size_t i = 0; i < paths_.size(); ++i) {
        const Identity now = IdentityOf(paths_[i]);
        if (now.found && !(now == identities_[i])) File::Remove(paths_[i]);
    }
}

StatusCode FileSet::Copy(const std::string& source, const std::string& destination,
                         const std::vector<std::string>& names) {
    if (File::IsSameFile(DirectoryPath(source), DirectoryPath(destination))) return Status::Invalid;
    // The locks of the sources, held until every copy is made.
    std::vector<std::unique_ptr<File>> sources;
    std::vector<std::string> targets;
    sources.reserve(names.size());
    targets.reserve(names.size());
    for (const std::string& name : names) {
        sources.push_back(std::make_unique<File>());
        const StatusCode status = sources.back()->OpenExclusive(File::MakePath(source, name), File::ReadAccess);
        if (status != Status::Success) return status;
        targets.push_back(File::MakePath(destination, name));
    }
    const FileSet written(targets);
    for (std::size_t i = 0; i < names.size(); ++i) {
        const StatusCode status = File::Copy(File::MakePath(source, names[i]), targets[i], true);
        if (status != Status::Success) {
            written.RemoveChanged();
            return status;
        }
    }
    return Status::Success;
}

FileSet::Identity FileSet::IdentityOf(const std::string& path) noexcept {
    struct stat information {};
    if (::stat(path.c_str(), &information) != 0) return {};
    return {true, static_cast<std::uint64_t>(information.st_dev), static_cast<std::uint64_t>(information.st_ino)};
}

}  // namespace Tavrin
