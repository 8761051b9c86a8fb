#include "tavrin/records/ManagedFieldListFactory.h"

#include "tavrin/records/ManagedFieldList.h"

namespace Tavrin::Database {

FieldList* ManagedFieldListFactory::Create(const std::vector<FieldSpecification>&, std::uint32_t) const {
    ThrowDatabase("Tavrin::Database::ManagedFieldListFactory::Create", DatabaseException::AllocateFieldList);
}

FieldList* ManagedFieldListFactory::Create(const std::vector<FieldSpecification>& specifications) const {
    return NewFieldList<ManagedFieldList>("Tavrin::Database::ManagedFieldListFactory::Create", specifications);
}

}  // namespace Tavrin::Database
