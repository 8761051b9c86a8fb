#pragma once
// Owns one mapped file of the library and its 17-byte file header:
//
//   file offset 0    1 byte    clean flag: 1 when the file was closed in order, 0 while it is open
//   file offset 1    16 bytes  Uuid in binary form, tying the files of one table together
//   file offset 17   ...       data area, the owner's; unaligned, its size is the mapped size - 17
//
// A file whose clean flag is 0 when it is opened was not closed in order (its process died); the
// open is refused once with status 23 and the refusal itself sets the flag to 1, so the next open
// passes. The manager does not grow the file: the owner calls ResizeDataArea and refreshes every
// pointer it keeps into the mapping. Not thread-safe; the owner guards it.
//
// One opener per file: a named file is locked while it is mapped (IFileMappedMemory), and an open
// or a create that finds the lock taken throws 17 having written nothing into that file.
//
// Creation is atomic: a named Create makes a part file beside the name; the owner writes its
// header and structure into it and then calls Publish, which syncs it and renames it over the
// name. Until then the name shows the former file or none, and a failure or a kill leaves no
// half-made file under it.
//
// Durability: a clean flag of 1 never stands over older data. Close writes the whole mapping
// through to the disk before it sets the flag, and then writes the flag through; when the data
// can't be written the flag stays 0 and the next open refuses the file once. Sync writes the
// mapping through while the file stays open.

#include <cstdint>
#include <memory>
#include <string>

#include "tavrin/base/IFileMappedMemory.h"
#include "tavrin/base/Status.h"
#include "tavrin/base/Uuid.h"

namespace Tavrin::Database {

/// Owns one mapped file of the library with its 17-byte file header (clean flag and Uuid) and gives
/// the owner the data area behind it (see the file comment above). Not thread-safe.
class FileMappedMemoryManager {
public:
    /// File offset of the clean flag.
    static constexpr std::uint32_t CleanFlagOffset = 0;
    /// File offset of the Uuid's binary form.
    static constexpr std::uint32_t UuidOffset = 1;
    /// Bytes of the file header; the data area starts there.
    static constexpr std::uint32_t HeaderSize = 17;

    /// A manager with nothing mapped.
    FileMappedMemoryManager() = default;
    /// Not copyable: the manager owns its mapping.
    FileMappedMemoryManager(const FileMappedMemoryManager&) = delete;
    /// Not copyable: the manager owns its mapping.
    FileMappedMemoryManager& operator=(const FileMappedMemoryManager&) = delete;
    /// Releases the file as Close does.
    ~FileMappedMemoryManager();

    /// Makes and maps a temporary file of `dataSize` bytes of data area, under the temporary path and
    /// named by a new Uuid, which its header carries (clean flag 0); the file is gone from its
    /// directory at once. Gives the address of the data area (file offset 17). Throws
    /// StatusCodeException: 47 when mapped already (the mapping stays); otherwise, with nothing left
    /// mapped, 22 when the file would pass 4 GiB - 1, 1 when no Uuid can be drawn, else the
    /// factory's status.
    unsigned char* Create(std::uint32_t dataSize);
    /// Makes and maps a new file of `dataSize` bytes of data area, with `uuid` and clean flag 0, as a
    /// part file beside `name`: it takes the name only at Publish. Gives the address of the data
    /// area. Throws StatusCodeException: 47 when mapped already (the mapping stays); otherwise, with
    /// nothing left mapped and no file made, 22 when the file would pass 4 GiB - 1, else the
    /// factory's status.
    unsigned char* Create(const std::string& name, std::uint32_t dataSize, const Uuid& uuid);
    /// Maps the existing file `name` under its lock and sets its clean flag to 0 (written through).
    /// Gives the address of the data area. Throws StatusCodeException: 17 when mapped already (the
    /// mapping stays); otherwise, with nothing left mapped, 17 when another opener holds the file
    /// (which is then not written), 22 for a file shorter than 17 bytes or longer than 4 GiB - 1,
    /// 23 for a clean flag of 0 (the refusal sets it to 1, so the next open passes), else the
    /// factory's status (6 for a missing file).
    unsigned char* Open(const std::string& name);
    /// As Open(name), and also 23 when the file's Uuid is not `uuid`; the file is then left with
    /// clean flag 1, as it was.
    unsigned char* Open(const std::string& name, const Uuid& uuid);
    /// Puts a file made by the named Create in place under its name, complete as the owner has
    /// written it: clean flag 1 while it is synced and renamed, so that a kill from here on leaves a
    /// file that opens, then 0 again. Throws StatusCodeException: 16 when nothing is mapped; 17 when
    /// another opener holds a file of that name, which stays as it was; the owner then closes this
    /// manager, and the part file goes. Nothing to do for an opened or temporary file.
    void Publish();
    /// Writes the data through, sets the clean flag and writes it through, and unmaps; nothing when
    /// nothing is mapped. A file never published is removed instead.
    void Close();
    /// Removes the mapped file from its directory while it is still held, then unmaps it without
    /// setting the clean flag: no other opener gets hold of it in between.
    void Discard();
    /// Writes the whole mapping through to the disk; throws StatusCodeException when the system
    /// can't, and 16 when nothing is mapped.
    void Sync();
    /// Writes a copy of the mapping as it stands to `name`, with clean flag 1, as a replacement
    /// (File::CreateReplacement): status 16 when nothing is mapped, 23 when `name` is the mapped
    /// file itself, 17 when another opener holds `name`, else the status of the writing.
    StatusCode SaveAs(const std::string& name) const;

    /// Grows the file and the mapping to `dataSize` bytes of data area and gives the data area's new
    /// address; keeps the mapping when it has that size already. Throws as IFileMappedMemory::Resize.
    unsigned char* ResizeDataArea(std::uint32_t dataSize);
    /// Writes the first `size` bytes of the file (at most the mapped size) through to the disk; throws
    /// StatusCodeException as IFileMappedMemory::Flush. Nothing when nothing is mapped.
    void Flush(std::uint32_t size);

    /// Writes `uuid` into the file header (in the mapping, not written through); the clean flag
    /// stays. Throws StatusCodeException 16 when nothing is mapped.
    void SetUuid(const Uuid& uuid);
    /// The Uuid in the file header; Uuid::Nil() when nothing is mapped.
    Uuid GetUuid() const;

    /// Whether a file is mapped.
    bool IsMapped() const noexcept { return memory_ != nullptr; }
    /// The address of the data area (file offset 17); null when nothing is mapped. Invalid after
    /// ResizeDataArea or Close.
    unsigned char* GetDataArea() const noexcept { return header_ == nullptr ? nullptr : header_ + HeaderSize; }
    /// The size of the data area: the mapped size less 17; 0 when nothing is mapped.
    std::uint32_t GetDataSize() const noexcept;
    /// The name given to Create or Open (for a temporary file, its path under the temporary path);
    /// empty when nothing is mapped.
    const std::string& GetName() const noexcept { return name_; }

private:
    unsigned char* CreateMapping(const std::string& name, std::uint32_t dataSize, const Uuid& uuid,
                                 std::uint32_t mode);
    unsigned char* OpenMapping(const std::string& name, const Uuid* uuid);
    void MarkClean() noexcept;
    void Forget() noexcept;

    std::string name_;
    bool temporary_ = false;  // nothing to write through: the file has no name
    bool pending_ = false;    // made by the named Create and not yet published: a part file
    std::unique_ptr<IFileMappedMemory> memory_;
    unsigned char* header_ = nullptr;  // start of the mapping: the file header
};

}  // namespace Tavrin::Database
