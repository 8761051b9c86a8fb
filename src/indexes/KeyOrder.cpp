#include "indexes/KeyOrder.h"

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
        IntegerField integer{specification.GetOffset(), specification.GetMaxLength(), 0, 0,
                             specification.GetType() == FieldSpecification::SInt,
                             specification.IsDescending() ? -1 : 1};
        if (!list.LocateDefinedBit(field.GetNumber(), integer.definedByte, integer.definedMask)) {
            integer.definedMask = 0;
        }
        fields_.push_back(integer);
    }
}

}  // namespace Tavrin::Database
