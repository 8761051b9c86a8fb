// Construction of a hash index and the life of its three files: creation, opening, copies, Uuid,
// Sync, Discard, Clear and the checks. The key operations are in HashIndexUpdate.cpp, the names and
// the description file in HashIndexFiles.cpp.
#include "tavrin/indexes/HashIndex.h"

#include <exception>

#include "tavrin/base/Exception.h"
#include "tavrin/base/Throw.h"
#include "tavrin/indexes/HashIndexBucketHandler.h"
#include "tavrin/indexes/HashIndexEntryHandler.h"

namespace Tavrin::Database {

namespace {

std::uint32_t DuplicateTailOf(const Index& index) {
    return index.IsDuplicate() ? index.GetFieldList()->GetDataLength() : 0;
}

}  // namespace

HashIndex::HashIndex(const IndexSpecification& specification, const FieldList& tableFieldList,
                     const IFieldListFactory& factory, std::uint32_t initialEntries, std::uint32_t growEntries)
    : Index(specification, tableFieldList, factory),
      initialEntries_(initialEntries),
      growEntries_(growEntries),
      hash_(*GetFieldList(), GetComparedFieldCount(), DuplicateTailOf(*this)),
      order_(*GetFieldList(), GetComparedFieldCount()),
      duplicateTail_(DuplicateTailOf(*this)),
      entries_(std::make_unique<EntryHandler>(*this)),
      buckets_(std::make_unique<BucketHandler>(*this)) {}

HashIndex::~HashIndex() = default;

bool HashIndex::IsOpen() const noexcept {
    return specification_.IsMapped() && entries_->IsOpen() && buckets_->IsOpen();
}

std::uint32_t HashIndex::MinimumBuckets(std::uint32_t initialEntries) noexcept {
    const std::uint64_t half = (std::uint64_t{initialEntries} + 1) / 2;
    return static_cast<std::uint32_t>((half + 255) / 256 * 256);
}

std::uint32_t HashIndex::GetCurrentRecords() { return IsOpen() ? entries_->GetUsedEntries() : 0; }

void HashIndex::CheckIntegrity() {
    if (!IsOpen()) return;
    buckets_->CheckIntegrity(*entries_);
    entries_->CheckFreeListIntegrity();
    entries_->CheckEntryListIntegrity(*buckets_);
}

void HashIndex::Create(const std::string& directory, const std::string& tableName, const Tavrin::Uuid& uuid) {
    CreateFiles(&directory, &tableName, &uuid);
}

void HashIndex::Create() { CreateFiles(nullptr, nullptr, nullptr); }

void HashIndex::CreateFiles(const std::string* directory, const std::string* tableName, const Tavrin::Uuid* uuid) {
    if (specification_.IsMapped() || entries_->IsOpen() || buckets_->IsOpen()) {
        ThrowStatus("Tavrin::Database::HashIndex::Create", Status::AlreadyCreated);
    }
    try {
        if (directory == nullptr) {
            CreateSpecification(nullptr, nullptr);
            entries_->Create(nullptr, nullptr, initialEntries_);
            buckets_->Create(nullptr, nullptr, MinimumBuckets());
            return;
        }
        const std::string specificationName = GetSpecificationFileName(*directory, *tableName, GetName());
        const std::string entryName = GetEntryFileName(*directory, *tableName, GetName());
        const std::string bucketName = GetBucketFileName(*directory, *tableName, GetName());
        CreateSpecification(&specificationName, uuid);
        entries_->Create(&entryName, uuid, initialEntries_);
        buckets_->Create(&bucketName, uuid, MinimumBuckets());
    } catch (...) {
        // Files of one index without the others are of no use, and must not open later.
        Discard();
        throw;
    }
}

StatusCode HashIndex::Open(const std::string& directory, const std::string& tableName, const Tavrin::Uuid& uuid) {
    if (specification_.IsMapped() || entries_->IsOpen() || buckets_->IsOpen()) return Status::Failure;
    try {
        if (OpenSpecification(GetSpecificationFileName(directory, tableName, GetName()), uuid) == Status::Success &&
            entries_->Open(GetEntryFileName(directory, tableName, GetName()), uuid) == Status::Success &&
            buckets_->Open(GetBucketFileName(directory, tableName, GetName()), uuid) == Status::Success) {
            return Status::Success;
        }
    } catch (const std::exception&) {
        // A name that could not be made: nothing more is opened.
    }
    entries_->Release();
    specification_.Close();
    return Status::Failure;
}

StatusCode HashIndex::SaveAs(const std::string& directory, const std::string& tableName) {
    if (!IsOpen()) return Status::NotOpen;
    try {
        StatusCode status = specification_.SaveAs(GetSpecificationFileName(directory, tableName, GetName()));
        if (status == Status::Success) {
            status = entries_->GetManager().SaveAs(GetEntryFileName(directory, tableName, GetName()));
        }
        if (status == Status::Success) {
            status = buckets_->GetManager().SaveAs(GetBucketFileName(directory, tableName, GetName()));
        }
        return status;
    } catch (const std::exception&) {
        return Status::Failure;
    }
}

StatusCode HashIndex::Clear() {
    if (!IsOpen()) return Status::NotOpen;
    entries_->Clear();
    buckets_->Clear(MinimumBuckets());
    return Status::Success;
}

StatusCode HashIndex::SetUuid(const Tavrin::Uuid& uuid) {
    specification_.SetUuid(uuid);
    entries_->GetManager().SetUuid(uuid);
    buckets_->GetManager().SetUuid(uuid);
    return Status::Success;
}

StatusCode HashIndex::Sync() {
    if (!IsOpen()) return Status::NotOpen;
    try {
        specification_.Sync();
        entries_->GetManager().Sync();
        buckets_->GetManager().Sync();
    } catch (const StatusCodeException& exception) {
        return static_cast<StatusCode>(exception.GetCode());
    } catch (const std::exception&) {
        return Status::Failure;
    }
    return Status::Success;
}

void HashIndex::Discard() noexcept {
    buckets_->Discard();
    entries_->Discard();
    try {
        specification_.Discard();
    } catch (const std::exception&) {
        specification_.Close();
    }
}

}  // namespace Tavrin::Database
