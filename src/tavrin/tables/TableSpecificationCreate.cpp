// The operations of TableSpecification that need tables: they live in the tables layer, which
// stands above the schema layer.

#include "tavrin/schema/TableSpecification.h"
#include "tavrin/tables/ITable.h"
#include "tavrin/tables/ManagedTableFactory.h"
#include "tavrin/tables/UnmanagedTableFactory.h"

namespace Tavrin::Database {

StatusCode TableSpecification::Serialize(MessageBuilder& builder, ITable* table, std::uint8_t version) {
    if (table == nullptr) return Status::Invalid;
    return table->GetSpecification().Serialize(builder, version);
}

ITable* TableSpecification::CreateTable(const std::string& path) const {
    if (managed_) {
        const ManagedTableFactory& factory = ManagedTableFactory::GetInstance();
        return path.empty() ? factory.Create(name_, properties_, fields_, initialMaximumRecords_, growRecords_,
                                             cacheSize_)
                            : factory.Create(name_, path, properties_, fields_, initialMaximumRecords_,
                                             growRecords_, cacheSize_);
    }
    const UnmanagedTableFactory& factory = UnmanagedTableFactory::GetInstance();
    return path.empty() ? factory.Create(name_, properties_, fields_, initialMaximumRecords_, recordLength_,
                                         growRecords_, cacheSize_)
                        : factory.Create(name_, path, properties_, fields_, initialMaximumRecords_, recordLength_,
                                         growRecords_, cacheSize_);
}

}  // namespace Tavrin::Database
