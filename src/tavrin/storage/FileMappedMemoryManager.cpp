#include "tavrin/storage/FileMappedMemoryManager.h"

#include <limits>

#include "tavrin/base/Exception.h"
#include "tavrin/base/File.h"
#include "tavrin/base/FileMappedMemoryFactory.h"
#include "tavrin/base/Throw.h"

namespace Tavrin::Database {

namespace {

constexpr const char* CreateOperation = "Tavrin::Database::FileMappedMemoryManager::Create";
constexpr const char* OpenOperation = "Tavrin::Database::FileMappedMemoryManager::Open";

// The mapped size for `dataSize` bytes of data area; status 22 when it passes 32 bits.
std::uint32_t MappedSize(ThrowSite site, std::uint32_t dataSize) {
    if (dataSize > std::numeric_limits<std::uint32_t>::max() - FileMappedMemoryManager::HeaderSize) {
        ThrowStatus(site, Status::LengthMismatch);
    }
    return dataSize + FileMappedMemoryManager::HeaderSize;
}

}  // namespace

FileMappedMemoryManager::~FileMappedMemoryManager() { Close(); }

unsigned char* FileMappedMemoryManager::Create(std::uint32_t dataSize) {
    if (IsMapped()) ThrowStatus(CreateOperation, Status::AlreadyCreated);
    const Uuid uuid;
    return CreateMapping(File::MakePath(File::GetTemporaryPath(), uuid.ToString()), dataSize, uuid,
                         FileMappedMemoryFactory::ModeCreateTemporary);
}

unsigned char* FileMappedMemoryManager::Create(const std::string& name, std::uint32_t dataSize, const Uuid& uuid) {
    if (IsMapped()) ThrowStatus(CreateOperation, Status::AlreadyCreated);
    return CreateMapping(name, dataSize, uuid, FileMappedMemoryFactory::ModeCreate);
}

unsigned char* FileMappedMemoryManager::CreateMapping(const std::string& name, std::uint32_t dataSize,
                                                      const Uuid& uuid, std::uint32_t mode) {
    try {
        const std::uint32_t size = MappedSize(CreateOperation, dataSize);
        memory_.reset(FileMappedMemoryFactory::GetInstance().Create(name, size, false, mode, 0));
        header_ = static_cast<unsigned char*>(memory_->GetAddress());
        name_ = name;
        temporary_ = mode == FileMappedMemoryFactory::ModeCreateTemporary;
        pending_ = mode == FileMappedMemoryFactory::ModeCreate;
        const StatusCode status = uuid.GetBinary(header_ + UuidOffset, Uuid::BinarySize);
        if (status != Status::Success) ThrowStatus(CreateOperation, status);
        header_[CleanFlagOffset] = 0;
        memory_->Flush(HeaderSize);
        return GetDataArea();
    } catch (const Exception&) {
        Close();
        throw;
    }
}

unsigned char* FileMappedMemoryManager::Open(const std::string& name) { return OpenMapping(name, nullptr); }

unsigned char* FileMappedMemoryManager::Open(const std::string& name, const Uuid& uuid) {
    return OpenMapping(name, &uuid);
}

unsigned char* FileMappedMemoryManager::OpenMapping(const std::string& name, const Uuid* uuid) {
    if (IsMapped()) ThrowStatus(OpenOperation, Status::AlreadyOpen);
    try {
        memory_.reset(FileMappedMemoryFactory::GetInstance().Create(name, 0, false, FileMappedMemoryFactory::ModeOpen, 0));
        header_ = static_cast<unsigned char*>(memory_->GetAddress());
        name_ = name;
        if (memory_->GetSize() < HeaderSize) ThrowStatus(OpenOperation, Status::LengthMismatch);
        if (header_[CleanFlagOffset] == 0) ThrowStatus(OpenOperation, Status::Invalid);
        header_[CleanFlagOffset] = 0;
        memory_->Flush(HeaderSize);
        if (uuid != nullptr && GetUuid() != *uuid) ThrowStatus(OpenOperation, Status::Invalid);
        return GetDataArea();
    } catch (const Exception&) {
        Close();
        throw;
    }
}

void FileMappedMemoryManager::Publish() {
    if (!IsMapped()) ThrowStatus(CreateOperation, Status::NotOpen);
    if (!pending_) return;
    header_[CleanFlagOffset] = 1;
    try {
        memory_->Commit();  // writes the whole file through first
    } catch (const Exception&) {
        header_[CleanFlagOffset] = 0;
        throw;
    }
    pending_ = false;
    header_[CleanFlagOffset] = 0;
    memory_->Flush(HeaderSize);
}

void FileMappedMemoryManager::Close() {
    if (!IsMapped()) return;
    // A file too short to carry the header is not ours to write into; a part file goes anyway.
    if (!pending_ && memory_->GetSize() >= HeaderSize) MarkClean();
    Forget();
}

// The data first, then the flag: a flag that reaches the disk before the data would vouch for
// pages that a power loss can still take. If either write fails the flag is left at 0.
void FileMappedMemoryManager::MarkClean() noexcept {
    if (temporary_) {
        header_[CleanFlagOffset] = 1;
        return;
    }
    try {
        memory_->Flush(memory_->GetSize());
        header_[CleanFlagOffset] = 1;
        memory_->Flush(HeaderSize);
    } catch (const Exception&) {
        header_[CleanFlagOffset] = 0;
    }
}

void FileMappedMemoryManager::Discard() {
    if (!IsMapped()) return;
    if (!temporary_ && !pending_) File::Remove(name_);
    Forget();
}

void FileMappedMemoryManager::Forget() noexcept {
    memory_.reset();  // a part file never published goes here
    header_ = nullptr;
    name_.clear();
    temporary_ = false;
    pending_ = false;
}

void FileMappedMemoryManager::Sync() {
    if (!IsMapped()) ThrowStatus("Tavrin::Database::FileMappedMemoryManager::Sync", Status::NotOpen);
    if (!temporary_) memory_->Flush(memory_->GetSize());
}

StatusCode FileMappedMemoryManager::SaveAs(const std::string& name) const {
    if (!IsMapped()) return Status::NotOpen;
    // The mapped file itself is held by this manager; a copy can't take its place.
    if (File::IsSameFile(name, name_)) return Status::Invalid;
    unsigned char header[HeaderSize] = {};
    header[CleanFlagOffset] = 1;
    GetUuid().GetBinary(header + UuidOffset, Uuid::BinarySize);

    File file;
    StatusCode status = file.CreateReplacement(name, File::WriteAccess);
    if (status != Status::Success) return status;
    status = file.Write(header, HeaderSize);
    if (status == Status::Success) status = file.SetPosition(HeaderSize, File::FromStart);
    if (status == Status::Success) status = file.Write(GetDataArea(), GetDataSize());
    if (status == Status::Success) status = file.CommitReplacement(true);
    const StatusCode closed = file.Close();
    return closed != Status::Success ? closed : status;
}

unsigned char* FileMappedMemoryManager::ResizeDataArea(std::uint32_t dataSize) {
    constexpr const char* operation = "Tavrin::Database::FileMappedMemoryManager::ResizeDataArea";
    if (!IsMapped()) ThrowStatus(operation, Status::NotOpen);
    const std::uint32_t size = MappedSize(operation, dataSize);
    if (memory_->GetSize() != size) header_ = static_cast<unsigned char*>(memory_->Resize(size));
    return GetDataArea();
}

void FileMappedMemoryManager::Flush(std::uint32_t size) {
    if (IsMapped()) memory_->Flush(size);
}

void FileMappedMemoryManager::SetUuid(const Uuid& uuid) {
    constexpr const char* operation = "Tavrin::Database::FileMappedMemoryManager::SetUuid";
    if (!IsMapped()) ThrowStatus(operation, Status::NotOpen);
    const StatusCode status = uuid.GetBinary(header_ + UuidOffset, Uuid::BinarySize);
    if (status != Status::Success) ThrowStatus(operation, status);
}

Uuid FileMappedMemoryManager::GetUuid() const {
    if (!IsMapped() || memory_->GetSize() < HeaderSize) return Uuid::Nil();
    return Uuid(header_ + UuidOffset, Uuid::BinarySize);
}

std::uint32_t FileMappedMemoryManager::GetDataSize() const noexcept {
    if (!IsMapped() || memory_->GetSize() < HeaderSize) return 0;
    return memory_->GetSize() - HeaderSize;
}

}  // namespace Tavrin::Database
