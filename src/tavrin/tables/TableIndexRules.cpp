#include "tavrin/tables/TableIndexRules.h"

#include "tavrin/base/DatabaseException.h"

namespace Tavrin::Database {

void CheckNewIndex(ThrowSite site, const std::string& tableName, const std::vector<std::unique_ptr<IIndex>>& existing,
                   const IndexSpecification& specification) {
    specification.Validate();
    const std::string& indexName = specification.GetName();
    for (const auto& index : existing) {
        if (index->GetName() == indexName) {
            ThrowDatabase(site, DatabaseException::InvalidParameter, "repeated index name <%s> for table <%s>",
                          indexName.c_str(), tableName.c_str());
        }
        if (index->IsPrimaryUnique() && specification.IsPrimaryUnique()) {
            ThrowDatabase(site, DatabaseException::InvalidParameter,
                          "multiple primary unique indexes defined at index <%s> for table <%s>", indexName.c_str(),
                          tableName.c_str());
        }
    }
    if (specification.GetFields().empty()) {
        ThrowDatabase(site, DatabaseException::InvalidParameter, "empty index field list for index <%s>",
                      indexName.c_str());
    }
    if (!specification.IsHash() && !specification.IsTree()) ThrowDatabase(site, DatabaseException::InvalidParameter);
}

}  // namespace Tavrin::Database
