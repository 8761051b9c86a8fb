#include "indexes/KeyCopy.h"

#include <cstring>

namespace Tavrin::Database {

KeyCopy::KeyCopy(const FieldList& keyList, const FieldList& tableList, const std::vector<std::uint32_t>& tableNumbers)
    : keyList_(&keyList), tableList_(&tableList), tableNumbers_(&tableNumbers) {
    const std::vector<FieldSpecification> tableFields = tableList.GetFieldSpecificationList();
    for (auto key = keyList.Begin(); key != keyList.End(); ++key) {
        const FieldSpecification& target = key.GetSpecification();
        const std::uint32_t number = tableNumbers[key.GetNumber()];
        const FieldSpecification& source = tableFields[number];
        const Field field{source.GetOffset(), target.GetOffset(), target.GetMaxLength(), Locate(tableList, number),
                          Locate(keyList, key.GetNumber())};
        // Both layouts must agree on whether fields can be undefined, as the general copy refuses an
        // undefined value where the key can't hold one.
        if (!IsFixedFilled(target) || !IsFixedFilled(source) || target.GetMaxLength() != source.GetMaxLength() ||
            (field.source.mask == 0) != (field.target.mask == 0)) {
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

KeyCopy::Bit KeyCopy::Locate(const FieldList& list, std::uint32_t number) noexcept {
    Bit bit;
    if (!list.LocateDefinedBit(number, bit.byte, bit.mask)) bit.mask = 0;
    return bit;
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
        const bool defined = field.source.mask == 0 || (record[field.source.byte] & field.source.mask) != 0;
        if (defined) std::memcpy(key + field.to, record + field.from, field.length);
        if (field.target.mask == 0) continue;
        if (defined) {
            key[field.target.byte] |= field.target.mask;
        } else {
            key[field.target.byte] &= static_cast<unsigned char>(~field.target.mask);
        }
    }
    return Status::Success;
}

}  // namespace Tavrin::Database
