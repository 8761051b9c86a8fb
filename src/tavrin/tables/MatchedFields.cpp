#include "tavrin/tables/MatchedFields.h"

#include <limits>

#include "tavrin/records/FieldListObject.h"

namespace Tavrin::Database {

namespace {

bool IsInteger(FieldSpecification::Type type) {
    return type == FieldSpecification::UInt || type == FieldSpecification::SInt;
}

// Writes `value` into an integer field of `width` bytes through the integer type of that width, so
// the field's own width check passes; 36 when the value does not fit.
template <class Wide, class T1, class T2, class T4, class T8>
StatusCode WriteWidth(const FieldList& list, unsigned char* data, std::uint16_t id, std::uint32_t width,
                      Wide value) {
    const auto fits = [value]<class T>(T) {
        return value >= static_cast<Wide>(std::numeric_limits<T>::min()) &&
               value <= static_cast<Wide>(std::numeric_limits<T>::max());
    };
    switch (width) {
        case 1:
            return fits(T1{}) ? list.SetField(data, id, static_cast<T1>(value)) : Status::OutOfRange;
        case 2:
            return fits(T2{}) ? list.SetField(data, id, static_cast<T2>(value)) : Status::OutOfRange;
        case 4:
            return fits(T4{}) ? list.SetField(data, id, static_cast<T4>(value)) : Status::OutOfRange;
        case 8:
            return list.SetField(data, id, static_cast<T8>(value));
        default:
            return Status::LengthMismatch;
    }
}

}  // namespace

StatusCode MatchedFields::Match(const FieldListObject& target, const FieldListObject& source) {
    std::vector<std::uint16_t> targetIds;
    std::vector<std::uint16_t> sourceIds;
    const StatusCode status = target.GetMatchingFieldsByName(targetIds, source, sourceIds);
    if (status != Status::Success) return status;
    pairs_.clear();
    pairs_.reserve(targetIds.size());
    for (std::size_t i = 0; i < targetIds.size(); ++i) {
        FieldSpecification targetField;
        FieldSpecification sourceField;
        target.GetFieldList()->GetFieldSpecification(targetIds[i], targetField);
        source.GetFieldList()->GetFieldSpecification(sourceIds[i], sourceField);
        const bool convertsInteger =
            IsInteger(targetField.GetType()) && targetField.GetMaxLength() != sourceField.GetMaxLength();
        pairs_.push_back({targetIds[i], sourceIds[i], convertsInteger,
                          targetField.GetType() == FieldSpecification::SInt, targetField.GetMaxLength()});
    }
    return Status::Success;
}

StatusCode MatchedFields::Copy(const FieldList& targetList, unsigned char* targetData, const FieldList& sourceList,
                               const unsigned char* sourceData, std::uint64_t* dropped) const {
    for (const Pair& pair : pairs_) {
        const StatusCode status =
            pair.convertsInteger
                ? CopyInteger(pair, targetList, targetData, sourceList, sourceData)
                : targetList.CopyField(pair.targetId, targetData, sourceList, pair.sourceId, sourceData);
        if (status == Status::Success) continue;
        if (dropped == nullptr) return status;
        ++*dropped;
    }
    return Status::Success;
}

StatusCode MatchedFields::CopyInteger(const Pair& pair, const FieldList& targetList, unsigned char* targetData,
                                      const FieldList& sourceList, const unsigned char* sourceData) {
    StatusCode status = Status::Success;
    if (pair.isSigned) {
        std::int64_t value = 0;
        status = sourceList.GetField(sourceData, pair.sourceId, value);
        if (status == Status::Success) {
            return WriteWidth<std::int64_t, std::int8_t, std::int16_t, std::int32_t, std::int64_t>(
                targetList, targetData, pair.targetId, pair.targetWidth, value);
        }
    } else {
        std::uint64_t value = 0;
        status = sourceList.GetField(sourceData, pair.sourceId, value);
        if (status == Status::Success) {
            return WriteWidth<std::uint64_t, std::uint8_t, std::uint16_t, std::uint32_t, std::uint64_t>(
                targetList, targetData, pair.targetId, pair.targetWidth, value);
        }
    }
    // An undefined value: the plain copy makes the target field undefined too.
    if (status == Status::Undefined) {
        return targetList.CopyField(pair.targetId, targetData, sourceList, pair.sourceId, sourceData);
    }
    return status;
}

}  // namespace Tavrin::Database
