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

class FileMappedMemoryManager {
public:
    static constexpr std::uint32_t CleanFlagOffset = 0;
    static constexpr std::uint32_t UuidOffset = 1;
    static constexpr std::uint32_t HeaderSize = 17;

    FileMappedMemoryManager() = default;
    FileMappedMemoryManager(const FileMappedMemoryManager&) = delete;
    FileMappedMemoryManager& operator=(const FileMappedMemoryManager&) = delete;
    /// Releases the file as Close does.
    ~FileMappedMemoryManager();

    /// Each Create and Open gives the address of the data area (file offset 17) and throws
    /// StatusCodeException on failure, with nothing left mapped:
    ///   47 Create while mapped; 17 Open while mapped; 22 file shorter than 17 bytes;
    ///   23 clean flag 0, or a Uuid other than `uuid`; 17 when another opener holds the file;
    ///   else the factory's status.
    /// A temporary file, under the temporary path and named by a new Uuid.
    unsigned char* Create(std::uint32_t dataSize);
    ///@{
    /// A new file that takes the name `name` only at Publish.
    unsigned char* Create(const std::string& name, std::uint32_t dataSize, const Uuid& uuid);
    unsigned char* Open(const std::string& name);
    unsigned char* Open(const std::string& name, const Uuid& uuid);
    ///@}
    /// Puts a file made by the named Create in place under its name, complete as the owner has
    /// written it: clean flag 1 while it is synced and renamed, so that a kill from here on leaves a
    /// file that opens, then 0 again. Throws StatusCodeException, 17 when another opener holds a
    /// file of that name, which stays as it was; the owner then closes this manager, and the part
    /// file goes. Nothing to do for an opened or temporary file.
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
    /// Writes the first `size` bytes of the file through to the disk.
    void Flush(std::uint32_t size);

    ///@{
    /// Reads or writes the Uuid in the header; neither touches the clean flag. SetUuid throws
    /// StatusCodeException 16 when nothing is mapped; GetUuid gives Uuid::Nil() then.
    void SetUuid(const Uuid& uuid);
    Uuid GetUuid() const;
    ///@}

    bool IsMapped() const noexcept { return memory_ != nullptr; }
    ///@{
    /// Data area address and size; null and 0 when nothing is mapped.
    unsigned char* GetDataArea() const noexcept { return header_ == nullptr ? nullptr : header_ + HeaderSize; }
    std::uint32_t GetDataSize() const noexcept;
    const std::string& GetName() const noexcept { return name_; }
    ///@}

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
