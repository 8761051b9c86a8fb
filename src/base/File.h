#pragma once
// One open file, read and written by position, and the static file operations of the library.
//
// File owns its descriptor and closes it in the destructor. Every operation answers a status: 0,
// 16 when the file is not open, 17 when Create or Open finds it open already, 22 when Read(buffer,
// size) meets the end of the file early, 23 for an unknown mode or seek method, and otherwise the
// status of the system's error (SystemStatus.h). Not thread-safe: one File belongs to one thread
// or is guarded by its owner.

#include <cstdint>
#include <string>

#include "base/Status.h"

namespace Tavrin {

class File {
public:
    // Access bits of `mode` in Create and Open; `sharing` has no counterpart here and is ignored.
    static constexpr std::uint32_t ReadAccess = 1;
    static constexpr std::uint32_t WriteAccess = 2;

    enum SeekMethod { FromStart = 0, FromCurrent = 1, FromEnd = 2 };

    File() = default;
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File();

    bool IsOpen() const noexcept { return descriptor_ >= 0; }

    // Creates the file, or truncates an existing one, and opens it with the access of `mode`.
    StatusCode Create(const std::string& path, std::uint32_t mode, std::uint32_t sharing);
    // Opens an existing file with the access of `mode`.
    StatusCode Open(const std::string& path, std::uint32_t mode, std::uint32_t sharing);
    StatusCode Close();

    // Reads exactly `size` bytes at the position; fewer (the end of the file) is status 22.
    StatusCode Read(void* buffer, std::uint32_t size);
    // Reads up to `size` bytes and gives the number read in `count`; 0 at the end of the file.
    StatusCode Read(void* buffer, std::uint32_t size, std::uint32_t& count);
    // Writes all `size` bytes at the position.
    StatusCode Write(const void* data, std::uint32_t size);
    StatusCode SetPosition(std::int64_t position, SeekMethod method);
    StatusCode SetSize(std::int64_t size);

    // Whether anything exists under `path`.
    static bool IsFound(const std::string& path);
    static StatusCode GetSize(const std::string& path, std::int64_t& size);
    static StatusCode Remove(const std::string& path);
    // Without `overwrite` an existing `to` is status 47 and stays as it was.
    static StatusCode Rename(const std::string& from, const std::string& to, bool overwrite);
    // Copies into a new file beside `to` and renames it over `to` only when the copy is complete,
    // so a failed copy leaves an existing `to` untouched. Without `overwrite` an existing `to` is 47.
    static StatusCode Copy(const std::string& from, const std::string& to, bool overwrite);
    // Whether both paths name the same existing file (the same device and inode).
    static bool IsSameFile(const std::string& first, const std::string& second);
    // `directory` and `name` joined by one "/"; `name` alone when `directory` is empty.
    static std::string MakePath(const std::string& directory, const std::string& name);
    // "/tmp": the directory of temporary files.
    static std::string GetTemporaryPath();
    static const std::string& GetEndOfLine();

private:
    StatusCode OpenWithFlags(const std::string& path, std::uint32_t mode, int extraFlags);

    int descriptor_ = -1;
};

}  // namespace Tavrin
