#include "tavrin/indexes/KeyCopy.h"

#include <cstring>

namespace Tavrin::Database {

KeyCopy::KeyCopy(const FieldList& keyList, const FieldList& tableList, const std::vector<std::uint32_t>& tableNumbers)
    : keyList_(&keyList), tableList_(&tableList), tableNumbers_(&tableNumbers) {
    const std::vector<FieldSpecification> tableFields = tableList.GetFieldSpecificationList();
    for (auto key = keyList.Begin(); key != keyList.End(); ++key) {
        const FieldSpecification& target = key.GetSpecification();
        const std::uint32_t number = tableNumbers[key.GetNumber()];
        const FieldSpecification& source = tableFields[number];
        const Field field{source.GetOffset(), target.GetOffset(), target.GetMaxLength(),
                          DefinedBit::Of(tableList, number), DefinedBit::Of(keyList, key.GetNumber())};
        // Both layouts must agree on whether fields can be undefined, as the general copy refuses an
        // undefined value where the key can't hold one.
        if (!IsFixedFilled(target) || !IsFixedFilled(source) || target.GetMaxLength() != source.GetMaxLength() ||
            field.source.IsAlwaysDefined() != field.target.IsAlwaysDefined()) {
            direct_ = false;
            fields_.clear();
            return;
        }
        fields_.push_back(field);
    }
}

bool KeyCopy::IsFixedFilled(const FieldSpecification& field) noexcept {
    const FieldSpecification::Type type = field.GetType();
    return !GetFieldTypeInfo(type).isVariableLength && type != FieldSpecification::DateTime &&
           type != FieldSpecification::Time;
}

StatusCode KeyCopy::Build(unsigned char* key, const unsigned char* record) const {
    if (!direct_) {
        const std::uint32_t count = keyList_->GetFieldCount();
        for (std::uint32_t i = 0; i < count; ++i) {
            const StatusCode status = keyList_->CopyFieldByNumber(i, key, (*tableNumbers_)[i], *tableList_, record);
            if (status != Status::Success) return status;
        }
        return Status::Success;
    }
    for (const Field& field : fields_) {
        const bool defined = field.source.IsSet(record);
        if (defined) std::memcpy(key + field.to, record + field.from, field.length);
        field.target.Set(key, defined);
    }
    return Status::Success;
}

}  // namespace Tavrin::Database
