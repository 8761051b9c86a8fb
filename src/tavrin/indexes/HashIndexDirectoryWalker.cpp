#include "tavrin/indexes/HashIndexDirectoryWalker.h"

#include "tavrin/base/MessageValidator.h"
#include "tavrin/indexes/HashIndex.h"
#include "tavrin/storage/FileMappedMemoryManager.h"

namespace Tavrin::Database {

HashIndexDirectoryWalker::HashIndexDirectoryWalker(const std::string& pattern,
                                                   std::vector<IndexSpecification>& specifications)
    : IndexDirectoryWalker(pattern, specifications) {}

HashIndexDirectoryWalker::~HashIndexDirectoryWalker() = default;

StatusCode HashIndexDirectoryWalker::Find(const std::string& directory, const std::string& tableName, Scope scope,
                                          std::vector<IndexSpecification>& specifications) {
    return FindFiles<HashIndexDirectoryWalker>(directory, tableName, scope, "\\.hash\\.idx",
                                               &HashIndex::GetSpecificationFileName, specifications);
}

StatusCode HashIndexDirectoryWalker::ReadSpecification(Tavrin::File& file, std::int64_t size,
                                                       IndexSpecification& specification) {
    const std::int64_t dataSize = size - FileMappedMemoryManager::HeaderSize;
    if (dataSize <= 0) return Status::Invalid;
    std::vector<unsigned char> bytes;
    const StatusCode status = ReadAt(file, FileMappedMemoryManager::HeaderSize, dataSize, bytes);
    if (status != Status::Success) return status;
    MessageValidator validator(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    return specification.Deserialize(validator);
}

}  // namespace Tavrin::Database
