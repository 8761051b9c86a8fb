// The statics that find and copy the files of a table's tree indexes.
#include "tavrin/base/FileSet.h"
#include "tavrin/indexes/RedBlackTreeIndex.h"
#include "tavrin/indexes/RedBlackTreeIndexDirectoryWalker.h"

namespace Tavrin::Database {

StatusCode RedBlackTreeIndex::GetSpecifications(const std::string& directory, const std::string& tableName,
                                                std::vector<IndexSpecification>& specifications) {
    return RedBlackTreeIndexDirectoryWalker::Find(directory, tableName, IndexDirectoryWalker::Scope::Pattern,
                                                  specifications);
}

StatusCode RedBlackTreeIndex::CopyFiles(const std::string& source, const std::string& destination,
                                        const std::string& tableName) {
    std::vector<IndexSpecification> specifications;
    const StatusCode status = RedBlackTreeIndexDirectoryWalker::Find(
        source, tableName, IndexDirectoryWalker::Scope::OwnFiles, specifications);
    if (status != Status::Success) return status;
    std::vector<std::string> names;
    for (const IndexSpecification& specification : specifications) {
        names.push_back(GetFileName("", tableName, specification.GetName()));
    }
    return Tavrin::FileSet::Copy(source, destination, names);
}

}  // namespace Tavrin::Database
