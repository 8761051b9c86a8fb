#include "base/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>

#include "base/SystemStatus.h"
#include "base/Uuid.h"

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

// Puts the finished copy `partial` in place as `to`: a rename when `to` may be replaced, otherwise
// a hard link, which fails rather than replace an existing file.
StatusCode PublishCopy(const std::string& partial, const std::string& to, bool overwrite) {
    if (overwrite) return ::rename(partial.c_str(), to.c_str()) == 0 ? Status::Success : LastErrorStatus();
    const StatusCode status = ::link(partial.c_str(), to.c_str()) == 0 ? Status::Success : LastErrorStatus();
    ::unlink(partial.c_str());
    return status;
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

StatusCode File::OpenWithFlags(const std::string& path, std::uint32_t mode, int extraFlags) {
    if (IsOpen()) return Status::AlreadyOpen;
    const int access = AccessFlags(mode);
    if (access < 0) return Status::Invalid;
    const int descriptor = ::open(path.c_str(), access | extraFlags | O_CLOEXEC, 0666);
    if (descriptor < 0) return LastErrorStatus();
    descriptor_ = descriptor;
    return Status::Success;
}

StatusCode File::Create(const std::string& path, std::uint32_t mode, std::uint32_t /*sharing*/) {
    return OpenWithFlags(path, mode, O_CREAT | O_TRUNC);
}

StatusCode File::Open(const std::string& path, std::uint32_t mode, std::uint32_t /*sharing*/) {
    return OpenWithFlags(path, mode, 0);
}

StatusCode File::Close() {
    if (!IsOpen()) return Status::Success;
    const int descriptor = descriptor_;
    descriptor_ = -1;
    // The descriptor is gone after close() even when it reports an error, so it is never retried.
    return ::close(descriptor) == 0 ? Status::Success : LastErrorStatus();
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
    const std::string partial = to + "." + Uuid().ToString() + ".part";
    File destination;
    status = destination.Create(partial, WriteAccess, 0);
    if (status != Status::Success) return status;
    status = CopyContents(source, destination);
    const StatusCode closed = destination.Close();
    if (status == Status::Success) status = closed;
    if (status == Status::Success) return PublishCopy(partial, to, overwrite);
    ::unlink(partial.c_str());
    return status;
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
