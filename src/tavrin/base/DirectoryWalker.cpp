#include "tavrin/base/DirectoryWalker.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

#include "tavrin/base/File.h"
#include "tavrin/base/SystemStatus.h"

namespace Tavrin {

namespace {

enum class EntryKind { File, Directory, Other };

struct Entry {
    std::string name;
    EntryKind kind;
};

EntryKind KindOf(const std::string& directory, const dirent& entry) {
    if (entry.d_type == DT_REG) return EntryKind::File;
    if (entry.d_type == DT_DIR) return EntryKind::Directory;
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) return EntryKind::Other;
    struct stat information {};
    if (::stat(File::MakePath(directory, entry.d_name).c_str(), &information) != 0) return EntryKind::Other;
    if (S_ISREG(information.st_mode)) return EntryKind::File;
    if (S_ISDIR(information.st_mode)) return EntryKind::Directory;
    return EntryKind::Other;
}

StatusCode ListEntries(const std::string& directory, const std::string& only, std::vector<Entry>& entries) {
    DIR* stream = ::opendir(directory.empty() ? "." : directory.c_str());
    if (stream == nullptr) return StatusFromErrno(errno);
    StatusCode status = Status::Success;
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(stream);
        if (entry == nullptr) {
            status = StatusFromErrno(errno);
            break;
        }
        const std::string name = entry->d_name;
        if (name == "." || name == ".." || (!only.empty() && name != only)) continue;
        const EntryKind kind = KindOf(directory, *entry);
        if (kind != EntryKind::Other) entries.push_back({name, kind});
    }
    ::closedir(stream);
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return status;
}

}  // namespace

StatusCode DirectoryWalker::Walk(const std::string& directory, const std::string& name) {
    std::vector<Entry> entries;
    const StatusCode status = ListEntries(directory, name, entries);
    if (status != Status::Success) return status;
    for (const Entry& entry : entries) {
        const bool goOn = entry.kind == EntryKind::File ? OnFile(directory, entry.name)
                                                        : OnDirectory(directory, entry.name);
        if (!goOn) break;
    }
    return Status::Success;
}

bool DirectoryWalker::OnDirectory(const std::string& /*directory*/, const std::string& /*name*/) { return true; }

}  // namespace Tavrin
