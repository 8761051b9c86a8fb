// The bucket file of a hash index: creation, opening and extension of the bucket array. Its check is
// in HashIndexCheck.cpp.
#include "tavrin/indexes/HashIndexBucketHandler.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <limits>

#include "tavrin/base/Exception.h"
#include "tavrin/base/Throw.h"

namespace Tavrin::Database {

namespace {

constexpr const char* ConstructorOperation = "Tavrin::Database::HashIndex::BucketHandler::BucketHandler";
constexpr const char* OpenOperation = "Tavrin::Database::HashIndex::BucketHandler::Open";
constexpr const char* ExtendOperation = "Tavrin::Database::HashIndex::BucketHandler::Extend";
constexpr std::uint64_t MaxDataSize = std::numeric_limits<std::uint32_t>::max() - FileMappedMemoryManager::HeaderSize;

std::uint64_t DataSizeOf(std::uint64_t capacity) {
    return HashIndex::BucketHandler::BlockSize + HashIndex::BucketHandler::SlotSize * capacity;
}

}  // namespace

HashIndex::BucketHandler::BucketHandler(const HashIndex& owner) noexcept : owner_(owner) {}

HashIndex::BucketHandler::~BucketHandler() { Release(); }

void HashIndex::BucketHandler::Create(const std::string* fileName, const Tavrin::Uuid* uuid, std::uint32_t buckets) {
    const std::uint64_t dataSize = DataSizeOf(buckets);
    if (buckets == 0 || dataSize > MaxDataSize) ThrowStatus(ConstructorOperation, Status::LengthMismatch);
    const auto size = static_cast<std::uint32_t>(dataSize);
    block_ = fileName != nullptr ? manager_.Create(*fileName, size, *uuid) : manager_.Create(size);
    try {
        Write(OwnerOffset, 0);
        Write(BucketsOffset, 0);
        Write(CapacityOffset, buckets);
        SetState(buckets, 0);
        EmptySlots(0);
        manager_.Publish();
    } catch (const std::exception&) {
        Release();
        throw;
    }
}

StatusCode HashIndex::BucketHandler::Open(const std::string& fileName, const Tavrin::Uuid& uuid) noexcept {
    if (IsOpen()) return Status::Failure;
    try {
        block_ = manager_.Open(fileName, uuid);
        Adopt(OpenOperation);
    } catch (const std::exception&) {
        Release();
        return Status::Failure;
    }
    Write(OwnerOffset, 0);
    Write(BucketsOffset, 0);
    return Status::Success;
}

// What GetBucket relies on to stay inside the array: a bucket count to divide by, a split index
// below it and buckets in use that the array holds.
void HashIndex::BucketHandler::Adopt(const char* operation) const {
    const std::uint64_t dataSize = manager_.GetDataSize();
    if (dataSize < BlockSize) ThrowStatus(operation, Status::Invalid);
    const std::uint32_t capacity = GetCapacity();
    const std::uint32_t bucketCount = GetBucketCount();
    const std::uint32_t splitIndex = GetSplitIndex();
    if (DataSizeOf(capacity) != dataSize || bucketCount == 0 || splitIndex >= bucketCount ||
        std::uint64_t{bucketCount} + splitIndex > capacity) {
        ThrowStatus(operation, Status::Invalid);
    }
}

void HashIndex::BucketHandler::Extend() {
    const std::uint32_t capacity = GetCapacity();
    const std::uint64_t dataSize = DataSizeOf(2 * std::uint64_t{capacity});
    if (dataSize > MaxDataSize) ThrowStatus(ExtendOperation, Status::LengthMismatch);
    block_ = manager_.ResizeDataArea(static_cast<std::uint32_t>(dataSize));
    Write(CapacityOffset, 2 * capacity);
    EmptySlots(capacity);
}

void HashIndex::BucketHandler::Clear(std::uint32_t buckets) noexcept {
    SetState(std::min(buckets, GetCapacity()), 0);
    EmptySlots(0);
}

void HashIndex::BucketHandler::Release() noexcept {
    manager_.Close();
    block_ = nullptr;
}

void HashIndex::BucketHandler::Discard() noexcept {
    try {
        manager_.Discard();
    } catch (const std::exception&) {
        manager_.Close();
    }
    block_ = nullptr;
}

// All bytes 0xFF: head and tail -1 in every slot.
void HashIndex::BucketHandler::EmptySlots(std::uint32_t first) noexcept {
    const std::uint32_t capacity = GetCapacity();
    if (first < capacity) std::memset(Slot(first), 0xFF, std::size_t{SlotSize} * (capacity - first));
}

}  // namespace Tavrin::Database
