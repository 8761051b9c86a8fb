#include "tavrin/base/File.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <cstdio>
#include <memory>
#include <new>
#include <vector>

#include "tavrin/base/SystemStatus.h"
#include "tavrin/base/Uuid.h"

namespace Tavrin {

namespace {

StatusCode LastErrorStatus() noexcept { return StatusFromErrno(errno); }

int AccessFlags(std::uint32_t mode) noexcept {
    switch (mode & (File::ReadAccess | File::WriteAccess)) {
        case File::ReadAccess: return O_RDONLY;
        case File::WriteAccess: return O_WRONLY;
        case File::ReadAccess | File::WriteAccess: return O_RDWR;
        default: return -1;
    }
}

constexpr const char* PartSuffix = ".part";
constexpr unsigned CreatePermissions = 0666;  // less the umask
// How often an open or a replacement starts again when a replacement renamed a new file over the
// name between its open and its lock; more than that many renames in a row is a name in constant
// use, which answers 17.
constexpr int LockAttempts = 8;

bool SameFile(const struct stat& a, const struct stat& b) noexcept {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// The directory part of `path` ("." for a bare name) and the name in it.
std::string DirectoryOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string NameOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// Makes a rename in `directory` survive a power loss.
StatusCode SyncDirectory(const std::string& directory) {
    const int descriptor = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return LastErrorStatus();
    const StatusCode status = ::fsync(descriptor) == 0 ? Status::Success : LastErrorStatus();
    ::close(descriptor);
    return status;
}

// Removes the part files of `target` that killed replacements left. One that a live replacement
// still holds is locked, and stays.
void RemoveLeftoverParts(const std::string& target) {
    const std::string directory = DirectoryOf(target);
    const std::string name = NameOf(target);
    std::vector<std::string> leftovers;
    if (DIR* listing = ::opendir(directory.c_str())) {
        while (const dirent* entry = ::readdir(listing)) {
            if (File::IsPartFileOf(entry->d_name, name)) leftovers.push_back(File::MakePath(directory, entry->d_name));
        }
        ::closedir(listing);
    }
    for (const std::string& leftover : leftovers) {
        File part;
        if (part.OpenExclusive(leftover, File::ReadAccess) == Status::Success) part.CloseAndRemove();
    }
}

StatusCode CopyContents(File& source, File& destination) {
    constexpr std::uint32_t ChunkSize = 64 * 1024;
    std::unique_ptr<unsigned char[]> chunk(new (std::nothrow) unsigned char[ChunkSize]);
    if (!chunk) return Status::OutOfMemory;
    for (;;) {
        std::uint32_t count = 0;
        StatusCode status = source.Read(chunk.get(), ChunkSize, count);
        if (status != Status::Success || count == 0) return status;
        status = destination.Write(chunk.get(), count);
        if (status != Status::Success) return status;
    }
}

}  // namespace

File::~File() { Close(); }

StatusCode File::OpenWithFlags(const std::string& path, std::uint32_t mode, int extraFlags, unsigned permissions) {
    if (IsOpen()) return Status::AlreadyOpen;
    const int access = AccessFlags(mode);
    if (access < 0) return Status::Invalid;
    const int descriptor = ::open(path.c_str(), access | extraFlags | O_CLOEXEC, permissions);
    if (descriptor < 0) return LastErrorStatus();
    descriptor_ = descriptor;
    path_ = path;
    return Status::Success;
}

StatusCode File::Create(const std::string& path, std::uint32_t mode, std::uint32_t /*sharing*/) {
    return OpenWithFlags(path, mode, O_CREAT | O_TRUNC, CreatePermissions);
}

StatusCode File::CreateNew(const std::string& path, std::uint32_t mode, unsigned permissions) {
    return OpenWithFlags(path, mode, O_CREAT | O_EXCL, permissions);
}

StatusCode File::Open(const std::string& path, std::uint32_t mode, std::uint32_t /*sharing*/) {
    return OpenWithFlags(path, mode, 0, 0);
}

StatusCode File::OpenExclusive(const std::string& path, std::uint32_t mode) {
    if (IsOpen()) return Status::AlreadyOpen;
    for (int attempt = 0; attempt < LockAttempts; ++attempt) {
        StatusCode status = OpenWithFlags(path, mode, 0, 0);
        if (status == Status::Success) status = Lock();
        if (status != Status::Success) {
            Close();
            return status;
        }
        struct stat opened {};
        struct stat named {};
        if (::fstat(descriptor_, &opened) == 0 && ::stat(path.c_str(), &named) == 0 && SameFile(opened, named)) {
            return Status::Success;
        }
        Close();  // the name was given to a new file meanwhile: lock that one
    }
    return Status::AlreadyOpen;
}

StatusCode File::CreateReplacement(const std::string& target, std::uint32_t mode, unsigned permissions) {
    if (IsOpen()) return Status::AlreadyOpen;
    std::string part;
    try {
        part = target + "." + Uuid().ToString() + PartSuffix;
    } catch (const std::bad_alloc&) {
        return Status::OutOfMemory;
    } catch (const std::exception&) {
        return Status::Failure;  // no randomness for the name
    }
    StatusCode status = CreateNew(part, mode, permissions);
    if (status != Status::Success) return status;
    target_ = target;
    status = Lock();
    if (status != Status::Success) Close();
    return status;
}

// Renames the part file over the target while holding the lock of the file under the target's
// name, if there is one: 17 when another opener holds it.
StatusCode File::RenameOverTarget(bool overwrite) {
    for (int attempt = 0; attempt < LockAttempts; ++attempt) {
        File held;
        const StatusCode locked = held.OpenExclusive(target_, ReadAccess);
        if (locked == Status::NotFound) {
            // No file to lock: the rename must not replace one that appeared since.
            if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target_.c_str(), RENAME_NOREPLACE) == 0) {
                return Status::Success;
            }
            if (errno != EEXIST) return LastErrorStatus();
            continue;
        }
        if (locked != Status::Success) return locked;
        if (!overwrite) return Status::AlreadyCreated;
        // No opener is left writing to the file that this replaces: its lock is held here.
        return ::rename(path_.c_str(), target_.c_str()) == 0 ? Status::Success : LastErrorStatus();
    }
    return Status::AlreadyOpen;
}

StatusCode File::CommitReplacement(bool overwrite) {
    if (!IsOpen() || target_.empty()) return Status::Invalid;
    StatusCode status = Sync();
    if (status == Status::Success) status = RenameOverTarget(overwrite);
    if (status != Status::Success) return status;
    path_ = target_;
    target_.clear();
    status = SyncDirectory(DirectoryOf(path_));
    RemoveLeftoverParts(path_);
    return status;
}

StatusCode File::CloseAndRemove() {
    if (!IsOpen()) return Status::NotOpen;
    target_.clear();
    const StatusCode removed = ::unlink(path_.c_str()) == 0 ? Status::Success : LastErrorStatus();
    const StatusCode closed = Close();
    return removed != Status::Success ? removed : closed;
}

StatusCode File::Close() {
    if (!IsOpen()) return Status::Success;
    // A part file that was never committed is no file of anybody's: it goes while still locked.
    if (!target_.empty()) ::unlink(path_.c_str());
    target_.clear();
    path_.clear();
    const int descriptor = descriptor_;
    descriptor_ = -1;
    // The descriptor is gone after close() even when it reports an error, so it is never retried.
    return ::close(descriptor) == 0 ? Status::Success : LastErrorStatus();
}

StatusCode File::Lock() {
    if (!IsOpen()) return Status::NotOpen;
    int result = 0;
    do {
        result = ::flock(descriptor_, LOCK_EX | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    if (result == 0) return Status::Success;
    return errno == EWOULDBLOCK ? Status::AlreadyOpen : LastErrorStatus();
}

StatusCode File::Sync() {
    if (!IsOpen()) return Status::NotOpen;
    return ::fsync(descriptor_) == 0 ? Status::Success : LastErrorStatus();
}

StatusCode File::Read(void* buffer, std::uint32_t size) {
    std::uint32_t count = 0;
    const StatusCode status = Read(buffer, size, count);
    if (status != Status::Success) return status;
    return count == size ? Status::Success : Status::LengthMismatch;
}

StatusCode File::Read(void* buffer, std::uint32_t size, std::uint32_t& count) {
    count = 0;
    if (!IsOpen()) return Status::NotOpen;
    auto* bytes = static_cast<unsigned char*>(buffer);
    while (count < size) {
        const ssize_t done = ::read(descriptor_, bytes + count, size - count);
        if (done < 0 && errno == EINTR) continue;
        if (done < 0) return LastErrorStatus();
        if (done == 0) break;
        count += static_cast<std::uint32_t>(done);
    }
    return Status::Success;
}

StatusCode File::Write(const void* data, std::uint32_t size) {
    if (!IsOpen()) return Status::NotOpen;
    const auto* bytes = static_cast<const unsigned char*>(data);
    std::uint32_t written = 0;
    while (written < size) {
        const ssize_t done = ::write(descriptor_, bytes + written, size - written);
        if (done < 0 && errno == EINTR) continue;
        if (done < 0) return LastErrorStatus();
        written += static_cast<std::uint32_t>(done);
    }
    return Status::Success;
}

StatusCode File::ReadAt(void* buffer, std::uint32_t size, std::uint64_t offset) {
    if (!IsOpen()) return Status::NotOpen;
    auto* bytes = static_cast<unsigned char*>(buffer);
    std::uint32_t count = 0;
    while (count < size) {
        const ssize_t done = ::pread(descriptor_, bytes + count, size - count, static_cast<off_t>(offset + count));
        if (done < 0 && errno == EINTR) continue;
        if (done < 0) return LastErrorStatus();
        if (done == 0) return Status::LengthMismatch;
        count += static_cast<std::uint32_t>(done);
    }
    return Status::Success;
}

StatusCode File::WriteAt(const void* data, std::uint32_t size, std::uint64_t offset) {
    if (!IsOpen()) return Status::NotOpen;
    const auto* bytes = static_cast<const unsigned char*>(data);
    std::uint32_t written = 0;
    while (written < size) {
        const ssize_t done =
            ::pwrite(descriptor_, bytes + written, size - written, static_cast<off_t>(offset + written));
        if (done < 0 && errno == EINTR) continue;
        if (done < 0) return LastErrorStatus();
        written += static_cast<std::uint32_t>(done);
    }
    return Status::Success;
}

StatusCode File::SetPosition(std::int64_t position, SeekMethod method) {
    if (!IsOpen()) return Status::NotOpen;
    int whence = SEEK_SET;
    switch (method) {
        case FromStart: whence = SEEK_SET; break;
        case FromCurrent: whence = SEEK_CUR; break;
        case FromEnd: whence = SEEK_END; break;
        default: return Status::Invalid;
    }
    return ::lseek(descriptor_, static_cast<off_t>(position), whence) < 0 ? LastErrorStatus() : Status::Success;
}

StatusCode File::SetSize(std::int64_t size) {
    if (!IsOpen()) return Status::NotOpen;
    if (size < 0) return Status::Invalid;
    return ::ftruncate(descriptor_, static_cast<off_t>(size)) == 0 ? Status::Success : LastErrorStatus();
}

bool File::IsFound(const std::string& path) {
    struct stat information {};
    return ::stat(path.c_str(), &information) == 0;
}

StatusCode File::GetSize(const std::string& path, std::int64_t& size) {
    struct stat information {};
    if (::stat(path.c_str(), &information) != 0) return LastErrorStatus();
    size = static_cast<std::int64_t>(information.st_size);
    return Status::Success;
}

StatusCode File::Remove(const std::string& path) {
    return ::unlink(path.c_str()) == 0 ? Status::Success : LastErrorStatus();
}

StatusCode File::Rename(const std::string& from, const std::string& to, bool overwrite) {
    const int result = overwrite ? ::rename(from.c_str(), to.c_str())
                                 : ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
    return result == 0 ? Status::Success : LastErrorStatus();
}

StatusCode File::Copy(const std::string& from, const std::string& to, bool overwrite) {
    if (!overwrite && IsFound(to)) return Status::AlreadyCreated;
    File source;
    StatusCode status = source.Open(from, ReadAccess, 0);
    if (status != Status::Success) return status;
    File destination;
    status = destination.CreateReplacement(to, WriteAccess);
    if (status == Status::Success) status = CopyContents(source, destination);
    if (status == Status::Success) status = destination.CommitReplacement(overwrite);
    const StatusCode closed = destination.Close();
    return status != Status::Success ? status : closed;
}

bool File::IsPartFileOf(const std::string& name, const std::string& target) {
    const std::size_t suffixLength = std::char_traits<char>::length(PartSuffix);
    if (name.size() != target.size() + 1 + Uuid::TextSize + suffixLength) return false;
    const auto uuidBegin = name.begin() + static_cast<std::ptrdiff_t>(target.size() + 1);
    const bool uuidText = std::all_of(uuidBegin, uuidBegin + Uuid::TextSize, [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || c == '-';
    });
    return uuidText && name.compare(0, target.size(), target) == 0 && name[target.size()] == '.' &&
           name.compare(name.size() - suffixLength, suffixLength, PartSuffix) == 0;
}

bool File::IsSameFile(const std::string& first, const std::string& second) {
    struct stat a {};
    struct stat b {};
    if (::stat(first.c_str(), &a) != 0 || ::stat(second.c_str(), &b) != 0) return false;
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

std::string File::MakePath(const std::string& directory, const std::string& name) {
    if (directory.empty()) return name;
    if (directory.back() == '/') return directory + name;
    return directory + "/" + name;
}

std::string File::GetTemporaryPath() { return "/tmp"; }

const std::string& File::GetEndOfLine() {
    static const std::string endOfLine = "\n";
    return endOfLine;
}

}  // namespace Tavrin
