// Construction, creation, opening and saving of a memory store; the entry operations are in
// MemoryDataStoreEntries.cpp.
#include "tavrin/storage/MemoryDataStore.h"

#include <limits>

#include "tavrin/base/File.h"
#include "tavrin/base/MessageValidator.h"

namespace Tavrin::Database {

namespace {

constexpr const char* ConstructorOperation = "Tavrin::Database::MemoryDataStore::MemoryDataStore";
constexpr const char* OpenOperation = "Tavrin::Database::MemoryDataStore::Open";

}  // namespace

MemoryDataStore::MemoryDataStore(UserDataStore* userData, std::uint32_t recordSize, std::uint32_t initialEntries,
                                 std::uint32_t growEntries)
    : userData_(userData), createEntries_(initialEntries) {
    header_.storeType = DataStoreHeader::MemoryStoreType;
    header_.valid = true;
    header_.headerSize = MeasureHeaderSize(MemoryStoreHeaders{header_, extension_}, ConstructorOperation);
    header_.userDataSize = MeasureUserDataSize(userData, ConstructorOperation);
    if (recordSize > std::numeric_limits<std::uint32_t>::max() - MemoryDataStoreHeader::EntryFrontSize) {
        ThrowDatabase(ConstructorOperation, DatabaseException::InvalidParameter, "record size <%u> too large",
                      recordSize);
    }
    header_.recordSize = recordSize;
    header_.initialEntries = initialEntries;
    header_.growEntries = growEntries;
    header_.currentEntries = 0;
    header_.maxEntries = initialEntries;
    extension_.firstEntryOffset = header_.headerSize + header_.userDataSize;
    extension_.entryStride = recordSize + MemoryDataStoreHeader::EntryFrontSize;
    const std::uint64_t dataSize =
        extension_.firstEntryOffset + static_cast<std::uint64_t>(extension_.entryStride) * initialEntries;
    if (initialEntries > EntryTable::MaxEntries || dataSize > EntryTable::MaxDataSize) {
        ThrowDatabase(ConstructorOperation, DatabaseException::InvalidParameter,
                      "<%u> entries of <%u> bytes do not fit one file", initialEntries, recordSize);
    }
}

MemoryDataStore::~MemoryDataStore() { Close(); }

void MemoryDataStore::Create(const std::string& fileName, const Uuid& uuid) { CreateFile(&fileName, &uuid); }

void MemoryDataStore::Create() { CreateFile(nullptr, nullptr); }

void MemoryDataStore::CreateFile(const std::string* fileName, const Uuid* uuid) {
    // The constructor checked that this size fits 32 bits.
    const std::uint32_t dataSize = extension_.firstEntryOffset + extension_.entryStride * createEntries_;
    data_ = fileName != nullptr ? manager_.Create(*fileName, dataSize, *uuid) : manager_.Create(dataSize);
    header_.initialEntries = createEntries_;
    header_.currentEntries = 0;
    header_.maxEntries = 0;
    extension_.freeHead = extension_.freeTail = MemoryDataStoreHeader::NoEntry;
    Entries().Append(createEntries_);
    try {
        // The whole header and the user data before the file takes its name, so that it opens
        // even if its process dies before the first save.
        Save();
        manager_.Publish();
    } catch (const Exception&) {
        Release();
        throw;
    }
    fileName_ = fileName != nullptr ? *fileName : std::string();
    temporary_ = fileName == nullptr;
}

StatusCode MemoryDataStore::Open(const std::string& fileName, const Uuid* uuid) {
    if (IsOpen()) return Status::AlreadyOpen;
    if (!File::IsFound(fileName)) return Status::NotFound;
    return GuardOpen([&] { OpenFile(fileName, uuid); });
}

void MemoryDataStore::OpenFile(const std::string& fileName, const Uuid* uuid) {
    DataStoreHeader common;
    MemoryDataStoreHeader extension;
    MapAndReadHeaders(fileName, uuid, common, extension, OpenOperation);
    const std::uint32_t surplus = CheckAgainstSelf(common, extension);

    // The owner's check of its user data runs on the adopted header (a tree looks up its root
    // entry); if it refuses, the object goes back to what it was.
    const DataStoreHeader ownHeader = header_;
    const MemoryDataStoreHeader ownExtension = extension_;
    common.growEntries = header_.growEntries;
    header_ = common;
    extension_ = extension;
    if (userData_ != nullptr) {
        MessageValidator userData(data_ + header_.headerSize, header_.userDataSize);
        const StatusCode status = userData_->DeserializeUserData(userData);
        if (status != Status::Success) {
            header_ = ownHeader;
            extension_ = ownExtension;
            ThrowStatus(OpenOperation, status);
        }
    }
    // Entries that a process which died inside a growth step added become free ones.
    EntryTable entries = Entries();
    if (surplus != 0) entries.Append(surplus);
    entries.Repair();
    fileName_ = fileName;
    temporary_ = false;
}

// Throws 25 for a store built for other records, 23 for a header that disagrees with the file. Gives
// the number of entries that the file has beyond the header's maxEntries: see SurplusEntries.
std::uint32_t MemoryDataStore::CheckAgainstSelf(const DataStoreHeader& common,
                                                const MemoryDataStoreHeader& extension) const {
    if (common.storeType != header_.storeType || common.userDataSize != header_.userDataSize ||
        common.recordSize != header_.recordSize || extension.firstEntryOffset != extension_.firstEntryOffset) {
        ThrowStatus(OpenOperation, Status::DescriptionDiffers);
    }
    if (extension.entryStride != extension_.entryStride) ThrowStatus(OpenOperation, Status::Invalid);
    const std::uint32_t surplus = SurplusEntries(common.maxEntries);
    // What the entry operations rely on to stay inside the mapping.
    if (common.headerSize != header_.headerSize || common.maxEntries + std::uint64_t{surplus} > EntryTable::MaxEntries ||
        common.currentEntries > common.maxEntries || common.initialEntries == 0 ||
        common.initialEntries > common.maxEntries || !EntryTable::IsIdOrNone(extension.freeHead, common.maxEntries) ||
        !EntryTable::IsIdOrNone(extension.freeTail, common.maxEntries)) {
        ThrowStatus(OpenOperation, Status::Invalid);
    }
    return surplus;
}

// The file must be exactly as long as `maxEntries` entries make it (else 23), with one exception: a
// process that died inside a growth step, after the file was extended and before maxEntries was
// written, leaves whole entries of zero bytes behind the last one. They were never linked and hold
// nothing, so they are counted here and linked by OpenFile rather than making the file unusable.
std::uint32_t MemoryDataStore::SurplusEntries(std::uint32_t maxEntries) const {
    const EntryTable::Layout layout{extension_.firstEntryOffset, extension_.entryStride, 0, 0};
    std::uint32_t surplus = 0;
    if (!EntryTable::CountSurplus(data_, manager_.GetDataSize(), layout, maxEntries, surplus)) {
        ThrowStatus(OpenOperation, Status::Invalid);
    }
    return surplus;
}

StatusCode MemoryDataStore::Flush() {
    if (!IsOpen()) return Status::NotOpen;
    if (temporary_) return Status::Success;
    return Save();
}

StatusCode MemoryDataStore::Save() {
    header_.valid = WriteUserData(userData_) == Status::Success;
    MessageBuilder builder;
    builder.SetFixedBuffer(data_, header_.headerSize);
    return MemoryStoreHeaders{header_, extension_}.Serialize(builder);
}

StatusCode MemoryDataStore::Close() {
    if (!IsOpen()) return Status::Success;
    const StatusCode status = Flush();
    Release();
    fileName_.clear();
    temporary_ = false;
    return status;
}

StatusCode MemoryDataStore::Sync() {
    const StatusCode status = Flush();
    if (status != Status::Success || temporary_) return status;
    return SyncMapping();
}

void MemoryDataStore::Discard() {
    DataStore::Discard();
    fileName_.clear();
    temporary_ = false;
}

StatusCode MemoryDataStore::SaveAs(const std::string& fileName) {
    if (!IsOpen()) return Status::NotOpen;
    const StatusCode status = Save();
    return status != Status::Success ? status : manager_.SaveAs(fileName);
}

}  // namespace Tavrin::Database
