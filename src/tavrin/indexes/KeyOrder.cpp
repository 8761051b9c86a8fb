#include "tavrin/indexes/KeyOrder.h"

namespace Tavrin::Database {

namespace {

bool IsIntegerType(FieldSpecification::Type type) noexcept {
    return type == FieldSpecification::UInt || type == FieldSpecification::SInt ||
           type == FieldSpecification::Boolean;
}

}  // namespace

KeyOrder::KeyOrder(const FieldList& list, std::uint32_t comparedFields)
    : list_(&list), comparedFields_(comparedFields) {
    for (auto field = list.Begin(); field != list.End() && field.GetNumber() < comparedFields; ++field) {
        const FieldSpecification& specification = field.GetSpecification();
        if (!IsIntegerType(specification.GetType())) {
            integersOnly_ = false;
            fields_.clear();
            return;
        }
        fields_.push_back(IntegerField{specification.GetOffset(), specification.GetMaxLength(),
                                       DefinedBit::Of(list, field.GetNumber()),
                                       specification.GetType() == FieldSpecification::SInt,
                                       specification.IsDescending() ? -1 : 1});
    }
}

}  // namespace Tavrin::Database
