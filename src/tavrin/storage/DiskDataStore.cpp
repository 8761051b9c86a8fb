// Construction, creation, saving and closing of a disk store; opening is in DiskDataStoreOpen.cpp,
// the entry operations in DiskDataStoreEntries.cpp.
#include "tavrin/storage/DiskDataStore.h"

#include <limits>

namespace Tavrin::Database {

namespace {

constexpr const char* ConstructorOperation = "Tavrin::Database::DiskDataStore::DiskDataStore";
constexpr const char* CreateOperation = "Tavrin::Database::DiskDataStore::Create";
constexpr unsigned TemporaryPermissions = 0600;

// A cache size of 0 asks for one record's slot.
std::uint64_t CacheBytes(std::uint32_t recordSize, std::uint32_t cacheSize) {
    return cacheSize == 0 ? recordSize : std::uint64_t{cacheSize} * 1024;
}

void ThrowOnFailure(StatusCode status) {
    if (status != Status::Success) ThrowStatus(CreateOperation, status);
}

}  // namespace

DiskDataStore::DiskDataStore(UserDataStore* userData, std::uint32_t recordSize, std::uint32_t initialEntries,
                             std::uint32_t growEntries, std::uint32_t cacheSize)
    : cache_(recordSize, CacheBytes(recordSize, cacheSize)), userData_(userData), createEntries_(initialEntries) {
    header_.storeType = DataStoreHeader::DiskStoreType;
    header_.valid = true;
    header_.headerSize = MeasureHeaderSize(DiskStoreHeaders{header_, extension_}, ConstructorOperation);
    header_.userDataSize = MeasureUserDataSize(userData, ConstructorOperation);
    header_.recordSize = recordSize;
    header_.initialEntries = initialEntries;
    header_.growEntries = growEntries;
    header_.currentEntries = 0;
    header_.maxEntries = initialEntries;
    extension_.cacheSize = cacheSize;
    const std::uint64_t scratchOffset = std::uint64_t{header_.headerSize} + header_.userDataSize;
    const std::uint64_t entryTableOffset = scratchOffset + recordSize;
    const std::uint64_t dataSize = entryTableOffset + std::uint64_t{DiskDataStoreHeader::EntrySize} * initialEntries;
    if (initialEntries > EntryTable::MaxEntries || dataSize > EntryTable::MaxDataSize) {
        ThrowDatabase(ConstructorOperation, DatabaseException::InvalidParameter,
                      "<%u> entries of <%u> bytes do not fit one file", initialEntries, recordSize);
    }
    extension_.scratchOffset = static_cast<std::uint32_t>(scratchOffset);
    extension_.entryTableOffset = static_cast<std::uint32_t>(entryTableOffset);
}

DiskDataStore::~DiskDataStore() { Close(); }

void DiskDataStore::Create(const std::string& fileName, const Uuid& uuid) { CreateFiles(&fileName, &uuid); }

void DiskDataStore::Create() { CreateFiles(nullptr, nullptr); }

// The control file is put in place before the record file: a kill between the two leaves a control
// file whose entries are all free, which serves no record of the former record file.
void DiskDataStore::CreateFiles(const std::string* fileName, const Uuid* uuid) {
    // The constructor checked that this size fits 32 bits.
    const std::uint32_t dataSize = extension_.entryTableOffset + DiskDataStoreHeader::EntrySize * createEntries_;
    data_ = fileName != nullptr ? manager_.Create(*fileName, dataSize, *uuid) : manager_.Create(dataSize);
    bool published = false;
    try {
        CreateRecordFile(fileName, uuid);
        header_.initialEntries = createEntries_;
        header_.currentEntries = 0;
        header_.maxEntries = 0;
        extension_.freeHead = extension_.freeTail = EntryTable::NoEntry;
        Entries().Append(createEntries_);
        Save();
        if (fileName != nullptr) RefuseHeldRecordFile(RecordFileName(*fileName));
        manager_.Publish();
        published = fileName != nullptr;
        if (fileName != nullptr) ThrowOnFailure(recordFile_.CommitReplacement(true));
    } catch (...) {
        recordFile_.Close();  // a record file never committed goes with it
        if (published) {
            DataStore::Discard();
        } else {
            Release();
        }
        temporaryRecordName_.clear();
        throw;
    }
    fileName_ = fileName != nullptr ? *fileName : std::string();
}

// The control file takes its name before the record file does, so another opener that holds only
// the record file of that name must be found before either is put in place.
void DiskDataStore::RefuseHeldRecordFile(const std::string& name) {
    File probe;
    if (probe.OpenExclusive(name, File::ReadAccess) == Status::AlreadyOpen) {
        ThrowStatus(CreateOperation, Status::AlreadyOpen);
    }
}

// A named record file is made beside its name with the Uuid in front; a temporary one under the
// temporary path, only for this process, and without a name from the start, so that nothing is
// left of it when the process dies.
void DiskDataStore::CreateRecordFile(const std::string* fileName, const Uuid* uuid) {
    constexpr std::uint32_t access = File::ReadAccess | File::WriteAccess;
    if (fileName != nullptr) {
        ThrowOnFailure(recordFile_.CreateReplacement(RecordFileName(*fileName), access));
    } else {
        const std::string name = File::MakePath(File::GetTemporaryPath(), Uuid().ToString());
        ThrowOnFailure(recordFile_.CreateNew(name, access, TemporaryPermissions));
        ThrowOnFailure(recordFile_.Lock());
        ThrowOnFailure(File::Remove(name));
        temporaryRecordName_ = name;
    }
    const std::int64_t size =
        DiskDataStoreHeader::RecordFileHeaderSize + std::int64_t{header_.recordSize} * createEntries_;
    ThrowOnFailure(recordFile_.SetSize(size));
    if (uuid == nullptr) return;
    unsigned char bytes[Uuid::BinarySize] = {};
    ThrowOnFailure(uuid->GetBinary(bytes, Uuid::BinarySize));
    ThrowOnFailure(recordFile_.Write(bytes, Uuid::BinarySize));
}

StatusCode DiskDataStore::Flush() {
    if (!IsOpen()) return Status::NotOpen;
    if (IsTemporary()) return Status::Success;
    return Save();
}

// The user data, the cached records, the header: the records go back even when the owner's data
// does not fit, and only `valid` tells of that.
StatusCode DiskDataStore::Save() {
    const StatusCode userStatus = WriteUserData(userData_);
    header_.valid = userStatus == Status::Success;
    WriteBackAll();
    MessageBuilder builder;
    builder.SetFixedBuffer(data_, header_.headerSize);
    return DiskStoreHeaders{header_, extension_}.Serialize(builder);
}

// The record file reaches the disk before the control file is released with its clean flag, so
// that the marks in the control file never vouch for records that a power loss could still take.
StatusCode DiskDataStore::Close() {
    if (!IsOpen()) {
        Forget();
        return Status::Success;
    }
    StatusCode status = Flush();
    if (status == Status::Success && !IsTemporary()) status = recordFile_.Sync();
    Forget();
    return status;
}

void DiskDataStore::Forget() noexcept {
    recordFile_.Close();
    Release();
    fileName_.clear();
    temporaryRecordName_.clear();
}

StatusCode DiskDataStore::Sync() {
    StatusCode status = Flush();
    if (status != Status::Success || IsTemporary()) return status;
    status = recordFile_.Sync();
    return status != Status::Success ? status : SyncMapping();
}

void DiskDataStore::Discard() {
    if (!IsOpen()) return;
    if (IsTemporary()) {
        recordFile_.Close();
    } else {
        recordFile_.CloseAndRemove();
    }
    DataStore::Discard();
    fileName_.clear();
    temporaryRecordName_.clear();
}

StatusCode DiskDataStore::SaveAs(const std::string& fileName) {
    if (!IsOpen()) return Status::NotOpen;
    if (IsTemporary()) return Status::NotAvailable;
    StatusCode status = Flush();
    if (status == Status::Success) status = manager_.SaveAs(fileName);
    if (status == Status::Success) status = File::Copy(RecordFileName(fileName_), RecordFileName(fileName), true);
    return status;
}

StatusCode DiskDataStore::SetUuid(const Uuid& uuid) {
    if (!IsOpen()) return Status::NotOpen;
    manager_.SetUuid(uuid);
    unsigned char bytes[Uuid::BinarySize] = {};
    StatusCode status = uuid.GetBinary(bytes, Uuid::BinarySize);
    if (status != Status::Success) ThrowStatus("Tavrin::Database::DiskDataStore::SetUuid", status);
    status = recordFile_.SetPosition(0, File::FromStart);
    return status != Status::Success ? status : recordFile_.Write(bytes, Uuid::BinarySize);
}

Uuid DiskDataStore::GetDataUuid() {
    constexpr const char* operation = "Tavrin::Database::DiskDataStore::GetDataUuid";
    unsigned char bytes[Uuid::BinarySize] = {};
    StatusCode status = recordFile_.SetPosition(0, File::FromStart);
    if (status == Status::Success) status = recordFile_.Read(bytes, Uuid::BinarySize);
    if (status != Status::Success) ThrowStatus(operation, status);
    return Uuid(bytes, Uuid::BinarySize);
}

}  // namespace Tavrin::Database
