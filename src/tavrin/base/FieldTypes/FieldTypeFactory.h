#pragma once
// FieldTypeFactory: makes a value object of a class given its base type number.
//
// A process-wide singleton without state: Create is const and may be called from any thread.

#include <cstdint>

#include "tavrin/base/FieldTypes/IFieldType.h"
#include "tavrin/base/Singleton.h"

namespace Tavrin {

/// The process-wide maker of value objects by base type number (GetInstance); stateless, so usable
/// from any thread.
class FieldTypeFactory : public Singleton<FieldTypeFactory> {
public:
    /// A new, undefined object of the class with base type number `number`, owned by the caller;
    /// null for a number without a class (13 and above) or if memory runs out.
    IFieldType* Create(std::uint8_t number) const;

private:
    friend class Singleton<FieldTypeFactory>;
    FieldTypeFactory() = default;
};

}  // namespace Tavrin
