// The names of a hash index's files, its description file, and the statics that find and copy the
// files of a table's hash indexes.
//
// The description file is the 17-byte header, then the IndexSpecification in its serialised form
// (IndexSpecification.h) and nothing after it. Additional field ids are not serialised, so the file
// does not hold them. It is what a directory walk reads to learn that the index exists.
#include <algorithm>
#include <cstring>
#include <exception>
#include <utility>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/FileSet.h"
#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/indexes/HashIndex.h"
#include "tavrin/indexes/HashIndexDirectoryWalker.h"

namespace Tavrin::Database {

namespace {

constexpr const char* CreateSpecificationOperation = "Tavrin::Database::HashIndex::CreateSpecification";
constexpr const char* OpenSpecificationOperation = "Tavrin::Database::HashIndex::OpenSpecification";

std::string WithoutBlanks(std::string text) {
    std::replace(text.begin(), text.end(), ' ', '_');
    return text;
}

// directory ["/"] "tableName-indexName", blanks written "_".
std::string Stem(const std::string& directory, const std::string& tableName, const std::string& indexName) {
    std::string name = directory;
    if (!name.empty() && name.back() != '/' && name.back() != '\\') name += '/';
    return name + WithoutBlanks(tableName + "-" + indexName);
}

}  // namespace

std::string HashIndex::GetSpecificationFileName(const std::string& directory, const std::string& tableName,
                                                const std::string& indexName) {
    return Stem(directory, tableName, indexName) + ".hash.idx";
}

std::string HashIndex::GetEntryFileName(const std::string& directory, const std::string& tableName,
                                        const std::string& indexName) {
    return Stem(directory, tableName, indexName) + ".hash-entry.idx";
}

std::string HashIndex::GetBucketFileName(const std::string& directory, const std::string& tableName,
                                         const std::string& indexName) {
    return Stem(directory, tableName, indexName) + ".hash-bucket.idx";
}

std::vector<std::string> HashIndex::GetFileNames(const std::string& directory, const std::string& tableName,
                                                 const std::string& indexName) {
    return {GetSpecificationFileName(directory, tableName, indexName),
            GetEntryFileName(directory, tableName, indexName), GetBucketFileName(directory, tableName, indexName)};
}

void HashIndex::CreateSpecification(const std::string* fileName, const Tavrin::Uuid* uuid) {
    MessageBuilder builder;
    if (GetSpecification().Serialize(builder) != Status::Success) {
        ThrowDatabase(CreateSpecificationOperation, DatabaseException::InvalidParameter,
                      "failed to serialize specification for index <%s>", GetName().c_str());
    }
    const std::uint32_t size = builder.GetLength();
    unsigned char* data =
        fileName != nullptr ? specification_.Create(*fileName, size, *uuid) : specification_.Create(size);
    try {
        std::memcpy(data, builder.GetBuffer(), size);
        specification_.Publish();
    } catch (const std::exception&) {
        specification_.Close();
        throw;
    }
}

StatusCode HashIndex::OpenSpecification(const std::string& fileName, const Tavrin::Uuid& uuid) {
    try {
        const unsigned char* data = specification_.Open(fileName, uuid);
        MessageValidator validator(data, specification_.GetDataSize());
        IndexSpecification stored;
        const StatusCode status = stored.Deserialize(validator);
        if (status != Status::Success) ThrowStatus(OpenSpecificationOperation, status);
        // Name, type, properties and the key fields in their order and directions.
        if (stored != GetSpecification()) ThrowStatus(OpenSpecificationOperation, Status::Failure);
    } catch (const std::exception&) {
        specification_.Close();
        return Status::Failure;
    }
    return Status::Success;
}

StatusCode HashIndex::GetSpecifications(const std::string& directory, const std::string& tableName,
                                        std::vector<IndexSpecification>& specifications) {
    return HashIndexDirectoryWalker::Find(directory, tableName, IndexDirectoryWalker::Scope::Pattern, specifications);
}

StatusCode HashIndex::CopyFiles(const std::string& source, const std::string& destination,
                                const std::string& tableName) {
    std::vector<IndexSpecification> specifications;
    const StatusCode status =
        HashIndexDirectoryWalker::Find(source, tableName, IndexDirectoryWalker::Scope::OwnFiles, specifications);
    if (status != Status::Success) return status;
    std::vector<std::string> names;
    for (const IndexSpecification& specification : specifications) {
        for (std::string& name : GetFileNames("", tableName, specification.GetName())) names.push_back(std::move(name));
    }
    return Tavrin::FileSet::Copy(source, destination, names);
}

}  // namespace Tavrin::Database
