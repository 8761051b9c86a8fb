#pragma once
// Makes ManagedFieldList objects; one process-wide instance through GetInstance().

#include <cstdint>
#include <vector>

#include "tavrin/base/Singleton.h"
#include "tavrin/records/IFieldListFactory.h"

namespace Tavrin::Database {

/// Makes ManagedFieldList objects; one process-wide instance through GetInstance(), stateless and
/// usable from any thread.
class ManagedFieldListFactory final : public IFieldListFactory, public Tavrin::Singleton<ManagedFieldListFactory> {
public:
    /// A managed list decides its own data length: always throws DatabaseException code 3, without
    /// looking at the arguments.
    FieldList* Create(const std::vector<FieldSpecification>& specifications,
                      std::uint32_t dataLength) const override;
    /// A new ManagedFieldList, owned by the caller. Throws the list constructor's DatabaseException
    /// code 12, or code 3 when the allocation fails.
    FieldList* Create(const std::vector<FieldSpecification>& specifications) const override;

private:
    friend class Tavrin::Singleton<ManagedFieldListFactory>;
    ManagedFieldListFactory() = default;
};

}  // namespace Tavrin::Database
