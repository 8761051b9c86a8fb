#include "tavrin/indexes/RedBlackTreeIndexDirectoryWalker.h"

#include "tavrin/base/MessageValidator.h"
#include "tavrin/indexes/RedBlackTreeIndex.h"
#include "tavrin/storage/DataStoreHeader.h"
#include "tavrin/storage/FileMappedMemoryManager.h"

namespace Tavrin::Database {

RedBlackTreeIndexDirectoryWalker::RedBlackTreeIndexDirectoryWalker(const std::string& pattern,
                                                                   std::vector<IndexSpecification>& specifications)
    : IndexDirectoryWalker(pattern, specifications) {}

RedBlackTreeIndexDirectoryWalker::~RedBlackTreeIndexDirectoryWalker() = default;

StatusCode RedBlackTreeIndexDirectoryWalker::Find(const std::string& directory, const std::string& tableName,
                                                  Scope scope, std::vector<IndexSpecification>& specifications) {
    return FindFiles<RedBlackTreeIndexDirectoryWalker>(directory, tableName, scope, "\\.rb\\.idx",
                                                       &RedBlackTreeIndex::GetFileName, specifications);
}

StatusCode RedBlackTreeIndexDirectoryWalker::ReadSpecification(Tavrin::File& file, std::int64_t size,
                                                               IndexSpecification& specification) {
    constexpr std::int64_t dataStart = FileMappedMemoryManager::HeaderSize;
    const std::int64_t dataSize = size - dataStart;
    if (dataSize < DataStoreHeader::Size) return Status::Invalid;
    std::vector<unsigned char> bytes;
    StatusCode status = ReadAt(file, dataStart, DataStoreHeader::Size, bytes);
    if (status != Status::Success) return status;
    MessageValidator headerBytes(bytes.data(), DataStoreHeader::Size);
    DataStoreHeader header;
    status = header.Deserialize(headerBytes, static_cast<std::uint64_t>(dataSize));
    if (status != Status::Success) return status;
    // The specification, then root and sentinel; a longer area than ReadAt takes holds no
    // specification that a table could have made.
    status = ReadAt(file, dataStart + header.headerSize, header.userDataSize, bytes);
    if (status != Status::Success) return status;
    MessageValidator userData(bytes.data(), header.userDataSize);
    return specification.Deserialize(userData);
}

}  // namespace Tavrin::Database
