#pragma once
// Makes UnmanagedFieldList objects; one process-wide instance through GetInstance().

#include <cstdint>
#include <vector>

#include "tavrin/base/Singleton.h"
#include "tavrin/records/IFieldListFactory.h"

namespace Tavrin::Database {

/// Makes UnmanagedFieldList objects; one process-wide instance through GetInstance(), stateless and
/// usable from any thread.
class UnmanagedFieldListFactory final : public IFieldListFactory,
                                        public Tavrin::Singleton<UnmanagedFieldListFactory> {
public:
    /// A new UnmanagedFieldList of `dataLength` bytes, owned by the caller. Throws the list
    /// constructor's DatabaseException code 12 (also for a field that ends beyond `dataLength`), or
    /// code 3 when the allocation fails.
    FieldList* Create(const std::vector<FieldSpecification>& specifications,
                      std::uint32_t dataLength) const override;
    /// A new UnmanagedFieldList whose data length is the highest end of a field, owned by the caller.
    /// Throws the list constructor's DatabaseException code 12, or code 3 when the allocation fails.
    FieldList* Create(const std::vector<FieldSpecification>& specifications) const override;

private:
    friend class Tavrin::Singleton<UnmanagedFieldListFactory>;
    UnmanagedFieldListFactory() = default;
};

}  // namespace Tavrin::Database
