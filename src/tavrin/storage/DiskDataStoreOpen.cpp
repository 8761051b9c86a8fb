// Opening a disk store: both files checked against each other and against the object before anything
// of them is taken, then what a process that died left behind is settled.
#include <limits>

#include "tavrin/base/MessageValidator.h"
#include "tavrin/storage/DiskDataStore.h"

namespace Tavrin::Database {

namespace {

constexpr const char* OpenOperation = "Tavrin::Database::DiskDataStore::Open";

std::int64_t RecordFileSize(std::uint32_t recordSize, std::uint64_t entries) {
    return DiskDataStoreHeader::RecordFileHeaderSize + static_cast<std::int64_t>(recordSize * entries);
}

}  // namespace

StatusCode DiskDataStore::Open(const std::string& fileName, const Uuid* uuid) {
    if (manager_.IsMapped() || recordFile_.IsOpen()) return Status::AlreadyOpen;
    if (!File::IsFound(fileName)) return Status::NotFound;
    const StatusCode status = GuardOpen([&] { OpenFiles(fileName, uuid); });
    if (status != Status::Success) recordFile_.Close();
    return status;
}

void DiskDataStore::OpenFiles(const std::string& fileName, const Uuid* uuid) {
    DataStoreHeader common;
    DiskDataStoreHeader extension;
    MapAndReadHeaders(fileName, uuid, common, extension, OpenOperation);
    const std::uint32_t surplus = CheckAgainstSelf(common, extension);

    const std::string recordName = RecordFileName(fileName);
    CheckRecordFile(recordName, common.maxEntries, surplus);
    const StatusCode status = recordFile_.OpenExclusive(recordName, File::ReadAccess | File::WriteAccess);
    if (status != Status::Success) ThrowStatus(OpenOperation, status);
    if (uuid != nullptr && GetDataUuid() != *uuid) ThrowStatus(OpenOperation, Status::Invalid);

    // Entries that a process which died inside a growth step added become free ones.
    if (surplus != 0) ExtendRecordFile(std::uint64_t{common.maxEntries} + surplus);
    AdoptFile(common, extension);
    if (surplus != 0) Entries().Append(surplus);
    SettleMarks();
    fileName_ = fileName;
    temporaryRecordName_.clear();
}

// Throws 25 for a store built for other records, 23 for a header that disagrees with itself or with
// the control file's length. Gives the number of entries that the file has beyond the header's
// maxEntries: zero entries that a process which died inside a growth step left (see EntryTable.h).
std::uint32_t DiskDataStore::CheckAgainstSelf(const DataStoreHeader& common,
                                              const DiskDataStoreHeader& extension) const {
    if (common.storeType != header_.storeType || common.recordSize != header_.recordSize ||
        common.userDataSize != header_.userDataSize) {
        ThrowStatus(OpenOperation, Status::DescriptionDiffers);
    }
    const std::uint64_t scratchOffset = std::uint64_t{common.headerSize} + common.userDataSize;
    if (common.headerSize != header_.headerSize || extension.scratchOffset != scratchOffset ||
        extension.entryTableOffset != scratchOffset + common.recordSize || common.maxEntries > EntryTable::MaxEntries ||
        common.currentEntries > common.maxEntries || common.initialEntries == 0 ||
        common.initialEntries > common.maxEntries || !EntryTable::IsIdOrNone(extension.freeHead, common.maxEntries) ||
        !EntryTable::IsIdOrNone(extension.freeTail, common.maxEntries)) {
        ThrowStatus(OpenOperation, Status::Invalid);
    }
    const EntryTable::Layout layout{extension.entryTableOffset, DiskDataStoreHeader::EntrySize, 0, 0};
    std::uint32_t surplus = 0;
    if (!EntryTable::CountSurplus(data_, manager_.GetDataSize(), layout, common.maxEntries, surplus) ||
        std::uint64_t{common.maxEntries} + surplus > EntryTable::MaxEntries) {
        ThrowStatus(OpenOperation, Status::Invalid);
    }
    return surplus;
}

// The record file must hold `maxEntries` records (else 25) and its Uuid (else 22). After a growth
// step that its process did not finish it may already hold the records of the surplus entries.
void DiskDataStore::CheckRecordFile(const std::string& name, std::uint32_t maxEntries, std::uint32_t surplus) const {
    std::int64_t size = 0;
    const StatusCode status = File::GetSize(name, size);
    if (status != Status::Success) ThrowStatus(OpenOperation, status);
    if (size < DiskDataStoreHeader::RecordFileHeaderSize) ThrowStatus(OpenOperation, Status::LengthMismatch);
    if (size < RecordFileSize(header_.recordSize, maxEntries) ||
        size > RecordFileSize(header_.recordSize, std::uint64_t{maxEntries} + surplus) ||
        (surplus == 0 && size != RecordFileSize(header_.recordSize, maxEntries))) {
        ThrowStatus(OpenOperation, Status::DescriptionDiffers);
    }
}

// The owner's check of its user data runs on the adopted header; if it refuses, the object goes
// back to what it was. growEntries and the cache size stay this object's.
void DiskDataStore::AdoptFile(const DataStoreHeader& common, const DiskDataStoreHeader& extension) {
    const DataStoreHeader ownHeader = header_;
    const DiskDataStoreHeader ownExtension = extension_;
    header_ = common;
    header_.growEntries = ownHeader.growEntries;
    extension_ = extension;
    extension_.cacheSize = ownExtension.cacheSize;
    if (userData_ == nullptr) return;
    MessageValidator userData(data_ + header_.headerSize, header_.userDataSize);
    const StatusCode status = userData_->DeserializeUserData(userData);
    if (status != Status::Success) {
        header_ = ownHeader;
        extension_ = ownExtension;
        ThrowStatus(OpenOperation, status);
    }
}

// Gives the record file the length of `maxEntries` records, as the growth step that a dead process
// began would have.
void DiskDataStore::ExtendRecordFile(std::uint64_t maxEntries) {
    const StatusCode status = recordFile_.SetSize(RecordFileSize(header_.recordSize, maxEntries));
    if (status != Status::Success) ThrowStatus(OpenOperation, status);
}

// What a process that died left in the marks (DiskDataStoreHeader.h): an entry added whose record
// never reached the record file is freed, one whose newer bytes were lost keeps the version in the
// file. Then the count and the free list are made to agree with the used flags. A file closed in
// order has all marks 0 and is not written.
void DiskDataStore::SettleMarks() noexcept {
    for (std::uint32_t id = 0; id < header_.maxEntries; ++id) {
        unsigned char* entry = EntryAt(id);
        unsigned char& mark = entry[DiskDataStoreHeader::MarkOffset];
        if (mark == DiskDataStoreHeader::Written) continue;
        if (mark == DiskDataStoreHeader::NeverWritten) entry[EntryTable::UsedOffset] = 0;
        mark = DiskDataStoreHeader::Written;
    }
    Entries().Repair();
}

}  // namespace Tavrin::Database
