#pragma once
// A file mapped shared and writable into the process, made by FileMappedMemoryFactory.
//
// The object owns the mapping and the open file: the destructor unmaps and closes, and a temporary
// file is already gone from its directory (it is unlinked as soon as it is made), so it leaves
// nothing behind, also after a crash. Whatever is stored in the mapping is in the file once the store
// is done: the mapping is shared, and the page cache keeps it if the process dies. Flush writes
// bytes through to the storage device; only what was flushed survives a power loss.
//
// A named file is held under an exclusive lock (File::Lock) for the object's whole life, so no
// second opener, in this process or another, maps it meanwhile. A new named file is made as a part
// file beside its name and is not under that name until Commit: the destructor of an object never
// committed removes the part file, so a failed or killed creation leaves no half-made file.
//
// The file's disk blocks are reserved before the mapping is extended over them, so a full disk or a
// size limit shows as an exception from the factory or from Resize, never as a fault on a later
// access. Not thread-safe: the owner guards it.

#include <cstdint>

namespace Tavrin {

class IFileMappedMemory {
public:
    IFileMappedMemory() = default;
    IFileMappedMemory(const IFileMappedMemory&) = delete;
    IFileMappedMemory& operator=(const IFileMappedMemory&) = delete;
    virtual ~IFileMappedMemory() = default;

    /// Base address of the mapping; null while the size is 0.
    virtual void* GetAddress() = 0;
    /// The mapped size: what was asked for, or the file's length when an existing file was opened.
    virtual std::uint32_t GetSize() = 0;
    /// Extends the file and the mapping to `size` bytes, keeping the contents, and gives the new base
    /// address, which may differ from the old one: every pointer into the old mapping is then invalid.
    /// The new bytes are 0. A size below the current one is refused. Throws StatusCodeException on
    /// failure (40 when the disk or the file size limit has no room), and the file and the mapping
    /// are then as they were.
    virtual void* Resize(std::uint32_t size) = 0;
    /// Writes the first `size` bytes (at most the mapped size) through to the file and waits for it.
    /// Throws StatusCodeException when the system reports that it could not.
    virtual void Flush(std::uint32_t size) = 0;
    /// Puts a new named file (factory mode 1) in place under its name: flushes it whole, then renames
    /// it over the name (File::CommitReplacement). Throws StatusCodeException: 17 when another opener
    /// holds a file under that name, which stays as it was, and so does this object. Nothing to do
    /// for an opened, a temporary or an already committed file.
    virtual void Commit() = 0;
};

}  // namespace Tavrin
