#include "tavrin/storage/DataStore.h"

#include <exception>
#include <limits>

namespace Tavrin::Database {

namespace {

[[noreturn]] void NotAvailable(ThrowSite site) { ThrowStatus(site, Status::NotAvailable); }

}  // namespace

DataStore::~DataStore() { Release(); }

void DataStore::Create(const std::string&, const Uuid&) { NotAvailable("Tavrin::Database::DataStore::Create"); }

void DataStore::Create() { NotAvailable("Tavrin::Database::DataStore::Create"); }

StatusCode DataStore::Open(const std::string& fileName, const Uuid* uuid) {
    if (IsOpen()) return Status::AlreadyOpen;
    return GuardOpen([&] {
        data_ = uuid != nullptr ? manager_.Open(fileName, *uuid) : manager_.Open(fileName);
        MessageValidator validator(data_, manager_.GetDataSize());
        DataStoreHeader header;
        const StatusCode status = header.Deserialize(validator);
        if (status != Status::Success) ThrowStatus("Tavrin::Database::DataStore::Open", status);
        header_ = header;
    });
}

StatusCode DataStore::Close() {
    Release();
    return Status::Success;
}

StatusCode DataStore::SaveAs(const std::string&) { return Status::NotAvailable; }

void DataStore::Clear() { NotAvailable("Tavrin::Database::DataStore::Clear"); }

StatusCode DataStore::Add(std::uint32_t&, const void*) { NotAvailable("Tavrin::Database::DataStore::Add"); }

StatusCode DataStore::Remove(std::uint32_t) { return Status::NotAvailable; }

StatusCode DataStore::Update(std::uint32_t, const void*) { return Status::NotAvailable; }

StatusCode DataStore::Read(std::uint32_t, void*) { return Status::NotAvailable; }

StatusCode DataStore::GetEntry(std::uint32_t, unsigned char*&) { return Status::NotAvailable; }

StatusCode DataStore::GetFirst(std::uint32_t&, unsigned char*&) { return Status::NotAvailable; }

StatusCode DataStore::GetNext(std::uint32_t&, unsigned char*&) { return Status::NotAvailable; }

std::uint32_t DataStore::GetCurrentEntries() const {
    NotAvailable("Tavrin::Database::DataStore::GetCurrentEntries");
}

std::uint32_t DataStore::GetMaxEntries() const { NotAvailable("Tavrin::Database::DataStore::GetMaxEntries"); }

void DataStore::GetUserData(unsigned char*& address, std::uint32_t& size) const {
    address = IsOpen() ? data_ + header_.headerSize : nullptr;
    size = IsOpen() ? header_.userDataSize : 0;
}

StatusCode DataStore::SetUuid(const Uuid& uuid) {
    if (!IsOpen()) return Status::NotOpen;
    manager_.SetUuid(uuid);
    return Status::Success;
}

Uuid DataStore::GetUuid() const { return manager_.GetUuid(); }

bool DataStore::IsOpen() const { return manager_.IsMapped(); }

bool DataStore::IsTemporary() const { return false; }

StatusCode DataStore::Sync() { return IsOpen() ? Status::NotAvailable : Status::NotOpen; }

void DataStore::Discard() {
    manager_.Discard();
    data_ = nullptr;
}

std::uint32_t DataStore::MeasureUserDataSize(UserDataStore* userData, ThrowSite site) {
    if (userData == nullptr) return 0;
    MessageBuilder builder;
    if (userData->SerializeUserData(builder) != Status::Success) {
        ThrowDatabase(site, DatabaseException::InvalidParameter, "failed to get user data store size");
    }
    return builder.GetLength();
}

StatusCode DataStore::WriteUserData(UserDataStore* userData) {
    if (userData == nullptr) return Status::Success;
    MessageBuilder builder;
    builder.SetFixedBuffer(data_ + header_.headerSize, header_.userDataSize);
    return userData->SerializeUserData(builder);
}

bool DataStore::GrowDataArea(std::uint64_t dataSize) noexcept {
    if (dataSize > std::numeric_limits<std::uint32_t>::max() - FileMappedMemoryManager::HeaderSize) return false;
    try {
        data_ = manager_.ResizeDataArea(static_cast<std::uint32_t>(dataSize));
    } catch (const std::exception&) {
        return false;
    }
    return true;
}

StatusCode DataStore::SyncMapping() {
    try {
        manager_.Sync();
    } catch (const StatusCodeException& e) {
        return static_cast<StatusCode>(e.GetCode());
    }
    return Status::Success;
}

void DataStore::Release() {
    manager_.Close();
    data_ = nullptr;
}

}  // namespace Tavrin::Database
