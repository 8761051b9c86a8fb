#pragma once
// Makes UnmanagedFieldList objects; one process-wide instance through GetInstance().

#include <cstdint>
#include <vector>

#include "tavrin/base/Singleton.h"
#include "tavrin/records/IFieldListFactory.h"

namespace Tavrin::Database {

class UnmanagedFieldListFactory final : public IFieldListFactory,
                                        public Tavrin::Singleton<UnmanagedFieldListFactory> {
public:
    FieldList* Create(const std::vector<FieldSpecification>& specifications,
                      std::uint32_t dataLength) const override;
    FieldList* Create(const std::vector<FieldSpecification>& specifications) const override;

private:
    friend class Tavrin::Singleton<UnmanagedFieldListFactory>;
    UnmanagedFieldListFactory() = default;
};

}  // namespace Tavrin::Database
