// Ordering, difference and copy between images: Compare, CompareKey, CompareField,
// IsFieldDifferent, CopyField and CopyFields.
//
// Three ideas of sameness live here and are kept apart: ordering goes by each type's compare
// function (FieldTypeTable); difference goes by length and raw bytes (but for a value object, which
// decides itself); copying goes by id and length and looks at types only when told two ids.

#include <algorithm>
#include <cstring>

#include "tavrin/base/FieldTypes/IFieldType.h"
#include "tavrin/records/FieldList.h"

namespace Tavrin::Database {

namespace {

bool SameBytes(const unsigned char* a, std::uint32_t lengthA, const void* b, std::uint32_t lengthB) noexcept {
    return lengthA == lengthB && (lengthA == 0 || std::memcmp(a, b, lengthA) == 0);
}

// -1, 0 or 1 as `order` is below, at or above 0 (safe to negate, unlike the order itself).
int SignOf(int order) noexcept { return order < 0 ? -1 : (order > 0 ? 1 : 0); }

}  // namespace

// ---- Ordering --------------------------------------------------------------------------------------
// CompareKey runs at every step of every index descent: per field it makes one definedness test per
// side and one call through the type table, and allocates nothing.

int FieldList::CompareFieldValues(std::uint32_t number, const unsigned char* a, const unsigned char* b,
                                  std::uint32_t limit) const noexcept {
    const bool definedA = IsFieldDefined(number, a);
    const bool definedB = IsFieldDefined(number, b);
    if (!definedA) return definedB ? -1 : 0;
    if (!definedB) return 1;
    const FieldEntry& entry = GetEntry(number);
    const std::uint32_t offset = entry.GetOffset();
    return entry.GetTypeInfo().compare(a + offset, std::min(ReadValueLength(entry, a), limit), b + offset,
                                       std::min(ReadValueLength(entry, b), limit));
}

int FieldList::CompareRange(const unsigned char* a, const unsigned char* b, std::uint32_t fieldCount,
                            std::uint32_t partialLength, bool keyOrder) const noexcept {
    // The partial field takes part only with a non-zero partialLength; FullLength cuts nothing.
    const std::uint32_t end = partialLength == 0 ? fieldCount : fieldCount + 1;
    for (std::uint32_t number = 0; number < end; ++number) {
        const std::uint32_t limit = number < fieldCount ? FullLength : partialLength;
        const int order = CompareFieldValues(number, a, b, limit);
        if (order != 0) return keyOrder && GetEntry(number).GetDirection() < 0 ? -order : order;
    }
    return 0;
}

int FieldList::Compare(const unsigned char* a, const unsigned char* b) const noexcept {
    return CompareRange(a, b, GetFieldCount(), 0, false);
}

int FieldList::Compare(const unsigned char* a, const unsigned char* b, std::uint32_t fieldCount) const noexcept {
    return CompareRange(a, b, fieldCount, 0, false);
}

int FieldList::Compare(const unsigned char* a, const unsigned char* b, std::uint32_t fieldCount,
                       std::uint32_t partialLength) const noexcept {
    return CompareRange(a, b, fieldCount, partialLength, false);
}

int FieldList::Compare(std::uint32_t fieldNumber, const unsigned char* a, const unsigned char* b) const noexcept {
    return CompareFieldValues(fieldNumber, a, b, FullLength);
}

int FieldList::CompareKey(const unsigned char* a, const unsigned char* b) const noexcept {
    return CompareRange(a, b, GetFieldCount(), 0, true);
}

int FieldList::CompareKey(const unsigned char* a, const unsigned char* b, std::uint32_t fieldCount) const noexcept {
    return CompareRange(a, b, fieldCount, 0, true);
}

int FieldList::CompareKey(const unsigned char* a, const unsigned char* b, std::uint32_t fieldCount,
                          std::uint32_t partialLength) const noexcept {
    return CompareRange(a, b, fieldCount, partialLength, true);
}

// ---- CompareField ----------------------------------------------------------------------------------

StatusCode FieldList::CompareField(std::uint16_t id, const unsigned char* data, const FieldList& other,
                                   std::uint16_t otherId, const unsigned char* otherData, int& result) const {
    std::uint32_t number = 0;
    std::uint32_t otherNumber = 0;
    const FieldEntry* entry = FindEntry(id, number);
    const FieldEntry* otherEntry = other.FindEntry(otherId, otherNumber);
    if (entry == nullptr || otherEntry == nullptr) return Status::NotFound;
    if (entry->GetType() != otherEntry->GetType()) return Status::WrongType;
    const bool defined = IsFieldDefined(number, data);
    if (!other.IsFieldDefined(otherNumber, otherData)) {
        result = defined ? 1 : 0;
    } else if (!defined) {
        result = -1;
    } else {
        result = entry->GetTypeInfo().compare(data + entry->GetOffset(), ReadValueLength(*entry, data),
                                              otherData + otherEntry->GetOffset(),
                                              ReadValueLength(*otherEntry, otherData));
    }
    return Status::Success;
}

StatusCode FieldList::CompareStoredString(const FieldEntry& entry, const unsigned char* data,
                                          const std::string& value, int& result) {
    const FieldTypeInfo& info = entry.GetTypeInfo();
    if (!info.isStringCompatible) return Status::WrongType;
    if (value.size() >= FullLength || (entry.GetLengthSize() == 0 && value.size() != entry.GetMaxLength())) {
        return Status::LengthMismatch;
    }
    const auto* bytes = reinterpret_cast<const unsigned char*>(value.data());
    result = info.compare(data + entry.GetOffset(), ReadValueLength(entry, data), bytes,
                          static_cast<std::uint32_t>(value.size()));
    return Status::Success;
}

StatusCode FieldList::CompareStoredValue(const FieldEntry& entry, const unsigned char* data, const IFieldType& value,
                                         int& result) {
    if (!IsFieldTypeOf(entry.GetType(), value.number)) return Status::WrongType;
    int order = 0;
    const StatusCode status = value.Compare(data + entry.GetOffset(), ReadValueLength(entry, data), order);
    // The object ordered itself against the field; the result speaks of the field against it.
    if (status == Status::Success) result = -SignOf(order);
    return status;
}

// ---- IsFieldDifferent ------------------------------------------------------------------------------

bool FieldList::IsDifferentFrom(std::uint32_t number, const unsigned char* data, const FieldList& other,
                                std::uint32_t otherNumber, const unsigned char* otherData) const {
    const bool defined = IsFieldDefined(number, data);
    if (defined != other.IsFieldDefined(otherNumber, otherData)) return true;
    if (!defined) return false;
    return !SameBytes(data + GetEntry(number).GetOffset(), ReadValueLength(GetEntry(number), data),
                      otherData + other.GetEntry(otherNumber).GetOffset(),
                      ReadValueLength(other.GetEntry(otherNumber), otherData));
}

StatusCode FieldList::IsFieldDifferent(std::uint16_t id, const unsigned char* data, const void* value,
                                       std::uint32_t length, bool& different) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    if (length == 0) return Status::LengthMismatch;
    different = !IsFieldDefined(number, data) ||
                !SameBytes(data + entry->GetOffset(), ReadValueLength(*entry, data), value, length);
    return Status::Success;
}

StatusCode FieldList::IsFieldDifferent(std::uint16_t id, const unsigned char* data, const IFieldType& value,
                                       bool& different) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    const bool defined = IsFieldDefined(number, data);
    if (!defined || !value.defined) {
        different = defined != value.defined;
        return Status::Success;
    }
    if (!IsFieldTypeOf(entry->GetType(), value.number)) return Status::WrongType;
    return value.IsDifferent(data + entry->GetOffset(), ReadValueLength(*entry, data), different);
}

StatusCode FieldList::IsFieldDifferent(std::uint16_t id, const unsigned char* data, const std::string& value,
                                       bool& different) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    if (value.empty()) return Status::LengthMismatch;
    if (!IsFieldDefined(number, data)) {
        different = true;
        return Status::Success;
    }
    if (!entry->GetTypeInfo().isStringCompatible) return Status::WrongType;
    different = value.size() >= FullLength || !SameBytes(data + entry->GetOffset(), ReadValueLength(*entry, data),
                                                         value.data(), static_cast<std::uint32_t>(value.size()));
    return Status::Success;
}

StatusCode FieldList::IsFieldDifferent(std::uint16_t id, const unsigned char* data, const FieldList& other,
                                       const unsigned char* otherData, bool& different) const {
    std::uint32_t number = 0;
    std::uint32_t otherNumber = 0;
    if (FindEntry(id, number) == nullptr || other.FindEntry(id, otherNumber) == nullptr) return Status::NotFound;
    different = IsDifferentFrom(number, data, other, otherNumber, otherData);
    return Status::Success;
}

StatusCode FieldList::IsFieldDifferent(std::uint16_t id, const unsigned char* data, const FieldList& other,
                                       std::uint16_t otherId, const unsigned char* otherData, bool& different) const {
    std::uint32_t number = 0;
    std::uint32_t otherNumber = 0;
    const FieldEntry* entry = FindEntry(id, number);
    const FieldEntry* otherEntry = other.FindEntry(otherId, otherNumber);
    if (entry == nullptr || otherEntry == nullptr) return Status::NotFound;
    if (entry->GetType() != otherEntry->GetType()) return Status::WrongType;
    different = IsDifferentFrom(number, data, other, otherNumber, otherData);
    return Status::Success;
}

// ---- Copy ------------------------------------------------------------------------------------------

StatusCode FieldList::CopyLocatedField(std::uint32_t number, unsigned char* data, const FieldList& source,
                                       std::uint32_t sourceNumber, const unsigned char* sourceData) const {
    // Tested here, not left to CopyFieldByNumber: an unmanaged list would copy the stale bytes of an
    // undefined managed source.
    if (!source.IsFieldDefined(sourceNumber, sourceData)) {
        ClearFieldDefined(number, data);
        return Status::Success;
    }
    return CopyFieldByNumber(number, data, sourceNumber, source, sourceData);
}

StatusCode FieldList::CopyField(std::uint16_t id, unsigned char* data, const FieldList& source,
                                const unsigned char* sourceData) const {
    std::uint32_t number = 0;
    std::uint32_t sourceNumber = 0;
    if (FindEntry(id, number) == nullptr || source.FindEntry(id, sourceNumber) == nullptr) return Status::NotFound;
    return CopyLocatedField(number, data, source, sourceNumber, sourceData);
}

StatusCode FieldList::CopyField(std::uint16_t id, unsigned char* data, const FieldList& source,
                                std::uint16_t sourceId, const unsigned char* sourceData) const {
    std::uint32_t number = 0;
    std::uint32_t sourceNumber = 0;
    const FieldEntry* entry = FindEntry(id, number);
    const FieldEntry* sourceEntry = source.FindEntry(sourceId, sourceNumber);
    if (entry == nullptr || sourceEntry == nullptr) return Status::NotFound;
    if (entry->GetType() != sourceEntry->GetType()) return Status::WrongType;
    return CopyLocatedField(number, data, source, sourceNumber, sourceData);
}

StatusCode FieldList::CopyFields(unsigned char* data, const FieldList& source, const unsigned char* sourceData,
                                 bool strict) const {
    for (std::uint32_t number = 0; number < GetFieldCount(); ++number) {
        std::uint32_t sourceNumber = 0;
        if (source.FindEntry(GetEntry(number).GetId(), sourceNumber) == nullptr) {
            if (strict) return Status::FieldMissing;
            continue;
        }
        const StatusCode status = CopyLocatedField(number, data, source, sourceNumber, sourceData);
        if (status != Status::Success) return status;
    }
    return Status::Success;
}

}  // namespace Tavrin::Database
