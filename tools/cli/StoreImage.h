#pragma once
// StoreImage: a store file as its bytes say, read without mapping it, without its lock and without
// writing anything, not even the clean flag. The tool reads a table this way wherever it was asked
// only to read (info, dump), so a file left by a crash keeps the sign of it, and a file that a
// table holds open can still be looked at.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tavrin/base/File.h"
#include "tavrin/base/Status.h"
#include "tavrin/base/Uuid.h"
#include "tavrin/storage/DataStoreHeader.h"

namespace Tavrin::Tool {

/// The 17-byte header of a mapped file of the library, and the file's size.
struct FileHeaderInfo {
    std::int64_t size = 0;
    bool clean = false;
    Uuid uuid = Uuid::Nil();
};

/// Reads the header of the mapped file `path` read-only: 22 for a file shorter than its header.
StatusCode ReadFileHeader(const std::string& path, FileHeaderInfo& info);

/// Reads a file by position through a window of 1 MiB, so that a walk over the entries costs one
/// system call per window rather than one per entry.
class WindowReader {
public:
    /// Opens `path` read-only.
    StatusCode Open(const std::string& path);
    /// Copies `size` bytes at `offset`; 22 past the end of the file.
    StatusCode Read(std::uint64_t offset, std::uint32_t size, unsigned char* destination);

private:
    static constexpr std::uint64_t WindowSize = 1 << 20;
    File file_;
    std::int64_t fileSize_ = 0;
    std::uint64_t windowStart_ = 0;
    std::vector<unsigned char> window_;
};

/// The front of one entry: its used flag, the disk store's write-back mark and its free link.
struct EntryFront {
    bool used = false;
    std::uint8_t mark = 0;
    std::int32_t next = -1;
};

/// A memory or disk store file, read as described above.
class StoreImage {
public:
    /// Reads the file header, the store header with its extension and the user data of `path`
    /// (and for a disk store the header of `<path>.data`). 6 for a missing file, 22 for a short
    /// one, 21 or 23 for a header that is no store header.
    StatusCode Open(const std::string& path);

    /// Whether the store keeps its records in `<path>.data`.
    bool IsDisk() const noexcept { return common_.storeType == Database::DataStoreHeader::DiskStoreType; }
    /// The path given to Open.
    const std::string& GetPath() const noexcept { return path_; }
    /// The path of a disk store's record file.
    std::string GetRecordFilePath() const { return path_ + ".data"; }
    /// The file header of the store file.
    const FileHeaderInfo& GetFileHeader() const noexcept { return file_; }
    /// A disk store's record file: its size and the Uuid in its first 16 bytes (clean unused).
    const FileHeaderInfo& GetRecordFileHeader() const noexcept { return recordFile_; }
    /// The common store header.
    const Database::DataStoreHeader& GetHeader() const noexcept { return common_; }
    /// The bytes of the user data area.
    const std::vector<unsigned char>& GetUserData() const noexcept { return userData_; }
    /// Data area offset of entry 0 and the distance between entries.
    std::uint32_t GetEntryOffset() const noexcept { return entryOffset_; }
    std::uint32_t GetEntryStride() const noexcept { return entryStride_; }
    /// The ends of the free list as the header gives them.
    std::int32_t GetFreeHead() const noexcept { return freeHead_; }
    std::int32_t GetFreeTail() const noexcept { return freeTail_; }
    /// A disk store's cache size in KB as it was saved; 0 for a memory store.
    std::uint32_t GetCacheSize() const noexcept { return cacheSize_; }
    /// The file's expected size from its header: 17 + entry offset + entries * stride.
    std::uint64_t GetExpectedSize() const noexcept;

    /// Reads the front of entry `id` (below maxEntries); 22 past the end of the file.
    StatusCode ReadFront(std::uint32_t id, EntryFront& front);
    /// Reads the record of entry `id` into `record` (recordSize bytes).
    StatusCode ReadRecord(std::uint32_t id, unsigned char* record);

private:
    StatusCode ReadExtension(File& file);

    std::string path_;
    FileHeaderInfo file_;
    FileHeaderInfo recordFile_;
    Database::DataStoreHeader common_;
    std::vector<unsigned char> userData_;
    std::uint32_t entryOffset_ = 0;
    std::uint32_t entryStride_ = 0;
    std::int32_t freeHead_ = -1;
    std::int32_t freeTail_ = -1;
    std::uint32_t cacheSize_ = 0;
    WindowReader entries_;
    std::unique_ptr<WindowReader> records_;
};

}  // namespace Tavrin::Tool
