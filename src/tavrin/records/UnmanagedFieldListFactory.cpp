#include "tavrin/records/UnmanagedFieldListFactory.h"

#include "tavrin/records/UnmanagedFieldList.h"

namespace Tavrin::Database {

FieldList* UnmanagedFieldListFactory::Create(const std::vector<FieldSpecification>& specifications,
                                             std::uint32_t dataLength) const {
    return NewFieldList<UnmanagedFieldList>("Tavrin::Database::UnmanagedFieldListFactory::Create", specifications,
                                            dataLength);
}

FieldList* UnmanagedFieldListFactory::Create(const std::vector<FieldSpecification>& specifications) const {
    return NewFieldList<UnmanagedFieldList>("Tavrin::Database::UnmanagedFieldListFactory::Create", specifications);
}

}  // namespace Tavrin::Database
