#include "StoreImage.h"

#include <algorithm>

#include "tavrin/base/Encoding.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/storage/DiskDataStoreHeader.h"
#include "tavrin/storage/EntryTable.h"
#include "tavrin/storage/FileMappedMemoryManager.h"
#include "tavrin/storage/MemoryDataStoreHeader.h"

namespace Tavrin::Tool {

using Database::DataStoreHeader;
using Database::DiskDataStoreHeader;
using Database::EntryTable;
using Database::FileMappedMemoryManager;
using Database::MemoryDataStoreHeader;

namespace {

// No table description comes near this; a larger user data area is not read into memory.
constexpr std::uint32_t MaxUserDataSize = 64u << 20;
constexpr std::uint64_t FileHeaderSize = FileMappedMemoryManager::HeaderSize;

}  // namespace

StatusCode ReadFileHeader(const std::string& path, FileHeaderInfo& info) {
    StatusCode status = File::GetSize(path, info.size);
    if (status != Status::Success) return status;
    if (info.size < static_cast<std::int64_t>(FileHeaderSize)) return Status::LengthMismatch;
    File file;
    status = file.Open(path, File::ReadAccess, 0);
    unsigned char bytes[FileHeaderSize] = {};
    if (status == Status::Success) status = file.ReadAt(bytes, sizeof bytes, 0);
    if (status != Status::Success) return status;
    info.clean = bytes[FileMappedMemoryManager::CleanFlagOffset] == 1;
    info.uuid = Uuid(bytes + FileMappedMemoryManager::UuidOffset, Uuid::BinarySize);
    return Status::Success;
}

StatusCode WindowReader::Open(const std::string& path) {
    window_.clear();
    const StatusCode status = File::GetSize(path, fileSize_);
    return status != Status::Success ? status : file_.Open(path, File::ReadAccess, 0);
}

StatusCode WindowReader::Read(std::uint64_t offset, std::uint32_t size, unsigned char* destination) {
    const std::uint64_t end = offset + size;
    if (end > static_cast<std::uint64_t>(fileSize_)) return Status::LengthMismatch;
    if (size > WindowSize) return file_.ReadAt(destination, size, offset);
    if (offset < windowStart_ || end > windowStart_ + window_.size()) {
        const std::uint64_t length = std::min<std::uint64_t>(WindowSize, static_cast<std::uint64_t>(fileSize_) - offset);
        window_.resize(static_cast<std::size_t>(length));
        windowStart_ = offset;
        const StatusCode status = file_.ReadAt(window_.data(), static_cast<std::uint32_t>(length), offset);
        if (status != Status::Success) {
            window_.clear();
            return status;
        }
    }
    std::copy_n(window_.data() + (offset - windowStart_), size, destination);
    return Status::Success;
}

StatusCode StoreImage::Open(const std::string& path) {
    path_ = path;
    StatusCode status = ReadFileHeader(path, file_);
    if (status != Status::Success) return status;
    const std::uint64_t dataSize = static_cast<std::uint64_t>(file_.size) - FileHeaderSize;
    if (dataSize < DataStoreHeader::Size) return Status::LengthMismatch;
    File file;
    status = file.Open(path, File::ReadAccess, 0);
    unsigned char bytes[DataStoreHeader::Size] = {};
    if (status == Status::Success) status = file.ReadAt(bytes, sizeof bytes, FileHeaderSize);
    if (status != Status::Success) return status;
    MessageValidator validator(bytes, sizeof bytes);
    status = common_.Deserialize(validator, dataSize);
    if (status == Status::Success) status = ReadExtension(file);
    if (status != Status::Success) return status;
    if (common_.userDataSize > MaxUserDataSize) return Status::Invalid;
    userData_.resize(common_.userDataSize);
    if (!userData_.empty()) {
        status = file.ReadAt(userData_.data(), common_.userDataSize, FileHeaderSize + common_.headerSize);
        if (status != Status::Success) return status;
    }
    status = entries_.Open(path);
    if (status != Status::Success || !IsDisk()) return status;
    records_ = std::make_unique<WindowReader>();
    status = records_->Open(GetRecordFilePath());
    if (status == Status::Success) status = File::GetSize(GetRecordFilePath(), recordFile_.size);
    unsigned char uuid[Uuid::BinarySize] = {};
    if (status == Status::Success) status = records_->Read(0, sizeof uuid, uuid);
    if (status == Status::Success) recordFile_.uuid = Uuid(uuid, sizeof uuid);
    return status;
}

// The extension of the store's kind, which says where the entries lie.
StatusCode StoreImage::ReadExtension(File& file) {
    const bool disk = IsDisk();
    if (!disk && common_.storeType != DataStoreHeader::MemoryStoreType) return Status::Invalid;
    const std::uint32_t size = disk ? DiskDataStoreHeader::Size : MemoryDataStoreHeader::Size;
    if (common_.headerSize != size) return Status::Invalid;
    unsigned char bytes[DiskDataStoreHeader::Size] = {};
    const std::uint32_t extension = size - DataStoreHeader::Size;
    StatusCode status = file.ReadAt(bytes, extension, FileHeaderSize + DataStoreHeader::Size);
    if (status != Status::Success) return status;
    MessageValidator validator(bytes, extension);
    if (disk) {
        DiskDataStoreHeader header;
        status = header.Deserialize(validator);
        entryOffset_ = header.entryTableOffset;
        entryStride_ = DiskDataStoreHeader::EntrySize;
        freeHead_ = header.freeHead;
        freeTail_ = header.freeTail;
        cacheSize_ = header.cacheSize;
        return status;
    }
    MemoryDataStoreHeader header;
    status = header.Deserialize(validator);
    entryOffset_ = header.firstEntryOffset;
    entryStride_ = header.entryStride;
    freeHead_ = header.freeHead;
    freeTail_ = header.freeTail;
    return status;
}

std::uint64_t StoreImage::GetExpectedSize() const noexcept {
    return FileHeaderSize + entryOffset_ + static_cast<std::uint64_t>(common_.maxEntries) * entryStride_;
}

StatusCode StoreImage::ReadFront(std::uint32_t id, EntryFront& front) {
    unsigned char bytes[EntryTable::FrontSize] = {};
    const std::uint64_t offset = FileHeaderSize + entryOffset_ + static_cast<std::uint64_t>(id) * entryStride_;
    const StatusCode status = entries_.Read(offset, sizeof bytes, bytes);
    if (status != Status::Success) return status;
    front.used = (bytes[EntryTable::UsedOffset] & EntryTable::UsedBit) != 0;
    front.mark = bytes[DiskDataStoreHeader::MarkOffset];
    front.next = DecodeI32(bytes + EntryTable::NextOffset);
    return Status::Success;
}

StatusCode StoreImage::ReadRecord(std::uint32_t id, unsigned char* record) {
    const std::uint64_t index = id;
    if (IsDisk()) {
        return records_->Read(DiskDataStoreHeader::RecordFileHeaderSize + index * common_.recordSize,
                              common_.recordSize, record);
    }
    const std::uint64_t offset = FileHeaderSize + entryOffset_ + index * entryStride_ + EntryTable::FrontSize;
    return entries_.Read(offset, common_.recordSize, record);
}

}  // namespace Tavrin::Tool
