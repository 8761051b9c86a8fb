#pragma once
// One open file, read and written by position, and the static file operations of the library.
//
// File owns its descriptor and closes it in the destructor. Every operation answers a status: 0,
// 16 when the file is not open, 17 when Create or Open finds it open already or another opener
// holds the file's lock, 22 when Read(buffer, size) meets the end of the file early, 23 for an
// unknown mode or seek method, and otherwise the status of the system's error (SystemStatus.h).
// Not thread-safe: one File belongs to one thread or is guarded by its owner.
//
// Locks: Lock takes an exclusive advisory lock (flock) of the open file description, so it keeps
// out a second open of the same file in this process as well as in another; it goes with Close,
// and with the process when it dies. The library's files are opened and created only under it.
//
// Replacement: a file that must never be seen half-made is written as a part file beside its
// target, "<target>.<uuid>.part", and renamed over the target only when it is complete and synced
// (CreateReplacement, CommitReplacement). A kill leaves the former target or the new one, and at
// most a part file, which no reader takes for the target and the next replacement removes.

#include <cstdint>
#include <string>

#include "tavrin/base/Status.h"

namespace Tavrin {

/// One open file, read and written by position, with its advisory lock and the replacement of a file
/// through a part file; also the library's static file operations. Owns its descriptor. Not
/// thread-safe.
class File {
public:
    ///@{
    /// Access bits of `mode` in Create and Open; `sharing` has no counterpart here and is ignored.
    static constexpr std::uint32_t ReadAccess = 1;
    static constexpr std::uint32_t WriteAccess = 2;
    ///@}

    /// Where SetPosition counts from: the start, the current position or the end of the file.
    enum SeekMethod { FromStart = 0, FromCurrent = 1, FromEnd = 2 };

    /// A closed file.
    File() = default;
    /// Not copyable: the object owns its descriptor.
    File(const File&) = delete;
    /// Not copyable: the object owns its descriptor.
    File& operator=(const File&) = delete;
    /// Closes the file (Close: a part file not yet committed is removed).
    ~File();

    /// Whether the object holds an open descriptor.
    bool IsOpen() const noexcept { return descriptor_ >= 0; }

    /// Creates the file, or truncates an existing one, and opens it with the access of `mode`.
    StatusCode Create(const std::string& path, std::uint32_t mode, std::uint32_t sharing);
    /// Opens an existing file with the access of `mode`.
    StatusCode Open(const std::string& path, std::uint32_t mode, std::uint32_t sharing);
    /// Creates a file that must not exist yet (47 when it does), with `permissions` less the umask.
    StatusCode CreateNew(const std::string& path, std::uint32_t mode, unsigned permissions);
    /// Opens an existing file with the access of `mode` and takes its lock: 17 when another opener
    /// holds it. Makes sure that the locked file is still the one under `path` (a replacement may
    /// have renamed a new file over it between the open and the lock).
    StatusCode OpenExclusive(const std::string& path, std::uint32_t mode);
    /// Creates the part file of `target` exclusively, with `permissions` less the umask, opens it with
    /// the access of `mode` and locks it. Until CommitReplacement, Close (and the destructor) removes
    /// the part file again.
    StatusCode CreateReplacement(const std::string& target, std::uint32_t mode, unsigned permissions = 0666);
    /// Puts the part file in place of its target: syncs it, takes the lock of an existing target
    /// (17 when another opener holds it: the target stays as it was and so does the part file),
    /// renames the part file over the target (without `overwrite` an existing target is 47), syncs
    /// the directory, and removes the part files of the target that earlier creations left and
    /// that nobody holds. The file stays open and locked, now under the target's name.
    StatusCode CommitReplacement(bool overwrite);
    /// Unlinks a file that this object holds (opened or replaced), then closes it: nobody can open
    /// the file by its name from the moment the lock is given up. A part file is just removed.
    StatusCode CloseAndRemove();
    /// Closes the file; a part file not yet committed is removed.
    StatusCode Close();
    /// The exclusive lock of this open file, taken without waiting: 17 when another open file holds it.
    StatusCode Lock();
    /// Writes the file's data and size through to the storage device.
    StatusCode Sync();
    /// The descriptor, for the base layer's platform classes (mapped memory); -1 when closed.
    int GetDescriptor() const noexcept { return descriptor_; }
    /// The name under which this object opened or created the file: the part file's name until a
    /// replacement is committed, the target's after.
    const std::string& GetPath() const noexcept { return path_; }

    /// Reads exactly `size` bytes at the position; fewer (the end of the file) is status 22.
    StatusCode Read(void* buffer, std::uint32_t size);
    /// Reads up to `size` bytes and gives the number read in `count`; 0 at the end of the file.
    StatusCode Read(void* buffer, std::uint32_t size, std::uint32_t& count);
    /// Writes all `size` bytes at the position.
    StatusCode Write(const void* data, std::uint32_t size);
    /// Reads exactly `size` bytes at byte `offset` in one call, leaving the position where it was;
    /// fewer (the end of the file) is status 22.
    StatusCode ReadAt(void* buffer, std::uint32_t size, std::uint64_t offset);
    /// Writes all `size` bytes at byte `offset`, leaving the position where it was.
    StatusCode WriteAt(const void* data, std::uint32_t size, std::uint64_t offset);
    /// Moves the position to `position` bytes from where `method` says; 23 for an unknown method.
    StatusCode SetPosition(std::int64_t position, SeekMethod method);
    /// Truncates or extends (with zero bytes) the file to `size` bytes; 23 for a negative size. The
    /// position stays.
    StatusCode SetSize(std::int64_t size);

    /// Whether anything exists under `path`.
    static bool IsFound(const std::string& path);
    /// The size in bytes of the file under `path`; `size` is untouched on failure.
    static StatusCode GetSize(const std::string& path, std::int64_t& size);
    /// Unlinks `path`; the status of the system's error when that fails (6 when nothing is there).
    static StatusCode Remove(const std::string& path);
    /// Without `overwrite` an existing `to` is status 47 and stays as it was.
    static StatusCode Rename(const std::string& from, const std::string& to, bool overwrite);
    /// Copies into a new file beside `to` and renames it over `to` only when the copy is complete,
    /// so a failed copy leaves an existing `to` untouched. Without `overwrite` an existing `to` is 47.
    /// The copy is a replacement (see above), so a held `to` is 17 and stays as it was.
    static StatusCode Copy(const std::string& from, const std::string& to, bool overwrite);
    /// Whether `name` (a file name without directory) is a part file that a replacement of a file
    /// named `target` (also without directory) makes.
    static bool IsPartFileOf(const std::string& name, const std::string& target);
    /// Whether both paths name the same existing file (the same device and inode).
    static bool IsSameFile(const std::string& first, const std::string& second);
    /// `directory` and `name` joined by one "/"; `name` alone when `directory` is empty.
    static std::string MakePath(const std::string& directory, const std::string& name);
    /// "/tmp": the directory of temporary files.
    static std::string GetTemporaryPath();
    /// "\n", the line end of the library's text files; a static constant.
    static const std::string& GetEndOfLine();

private:
    StatusCode OpenWithFlags(const std::string& path, std::uint32_t mode, int extraFlags, unsigned permissions);
    StatusCode RenameOverTarget(bool overwrite);

    int descriptor_ = -1;
    std::string path_;
    std::string target_;  // while a replacement is not committed: the file that it replaces
};

}  // namespace Tavrin
