#include "tavrin/records/ManagedFieldList.h"

#include <cstring>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/Encoding.h"
#include "tavrin/base/FieldTypes/IFieldType.h"

namespace Tavrin::Database {

namespace {

constexpr const char* kConstructor = "Tavrin::Database::ManagedFieldList::ManagedFieldList";

StatusCode ReadPrefix(MessageValidator& validator, std::uint32_t width, std::uint32_t& length) noexcept {
    switch (width) {
        case 1: {
            std::uint8_t value = 0;
            const StatusCode status = validator.ReadUInt8(value);
            length = value;
            return status;
        }
        case 2: {
            std::uint16_t value = 0;
            const StatusCode status = validator.ReadUInt16(value);
            length = value;
            return status;
        }
        default:
            return validator.ReadUInt32(length);
    }
}

StatusCode AppendPrefix(MessageBuilder& builder, std::uint32_t width, std::uint32_t length) {
    switch (width) {
        case 1: return builder.AppendUInt8(static_cast<std::uint8_t>(length));
        case 2: return builder.AppendUInt16(static_cast<std::uint16_t>(length));
        default: return builder.AppendUInt32(length);
    }
}

}  // namespace

ManagedFieldList::ManagedFieldList(const std::vector<FieldSpecification>& specifications)
    : bitmapEntry_(FieldSpecification(0, "Bitmap", FieldSpecification::Bitmap, 0, 0, 0)) {
    RefuseEmptyList(kConstructor, specifications);
    const std::uint32_t bitmapLength = BitmapLengthOf(specifications.size());
    bitmapEntry_.SetMaxLength(bitmapLength);

    // Prefixes follow the bitmap, in field order.
    std::uint64_t running = bitmapLength;
    for (const FieldSpecification& specification : specifications) {
        FieldEntry& entry = AppendEntry(kConstructor, specification);
        if (entry.GetLengthSize() != 0) entry.SetLengthOffset(static_cast<std::uint32_t>(running));
        running += entry.GetLengthSize();
    }
    // Value slots follow the prefixes; any offset the caller gave is overwritten.
    for (std::uint32_t number = 0; number < GetFieldCount(); ++number) {
        FieldEntry& entry = GetMutableEntry(number);
        entry.SetOffset(static_cast<std::uint32_t>(running));
        running += entry.GetMaxLength();
        if (running > 0xFFFFFFFFu) {
            ThrowDatabase(kConstructor, DatabaseException::InvalidParameter, "invalid length <%u> for field <%s>",
                          static_cast<unsigned>(entry.GetMaxLength()), entry.GetName().c_str());
        }
    }
    SetDataLength(static_cast<std::uint32_t>(running));
}

std::uint64_t ManagedFieldList::DataLengthOf(const std::vector<FieldSpecification>& specifications) noexcept {
    std::uint64_t length = BitmapLengthOf(specifications.size());
    for (const FieldSpecification& specification : specifications) {
        length += FieldEntry::LengthSizeOf(specification) + std::uint64_t{specification.GetMaxLength()};
    }
    return length;
}

StatusCode ManagedFieldList::SerializeFields(MessageBuilder& builder, const unsigned char* data) const {
    StatusCode status = builder.AppendBytes(data, GetBitmapLength());
    for (std::uint32_t number = 0; status == Status::Success && number < GetFieldCount(); ++number) {
        if (!IsFieldDefined(number, data)) continue;
        const FieldEntry& entry = GetEntry(number);
        std::uint32_t length = entry.GetMaxLength();
        if (entry.GetLengthSize() != 0) {
            length = ReadValueLength(entry, data);
            status = AppendPrefix(builder, entry.GetLengthSize(), length);
        }
        if (status == Status::Success) status = builder.AppendBytes(data + entry.GetOffset(), length);
    }
    return status;
}

StatusCode ManagedFieldList::DeserializeFields(MessageValidator& validator, unsigned char* data) const {
    StatusCode status = validator.ValidateBytesCopy(GetBitmapLength(), data);
    if (status != Status::Success) return status;
    ClearUnusedBits(data);
    for (std::uint32_t number = 0; status == Status::Success && number < GetFieldCount(); ++number) {
        if (IsFieldDefined(number, data)) status = DeserializeField(validator, GetEntry(number), data);
    }
    return status;
}

StatusCode ManagedFieldList::DeserializeField(MessageValidator& validator, const FieldEntry& entry,
                                              unsigned char* data) const {
    if (entry.GetLengthSize() == 0) return validator.ValidateBytesCopy(entry.GetMaxLength(), data + entry.GetOffset());
    std::uint32_t length = 0;
    StatusCode status = ReadPrefix(validator, entry.GetLengthSize(), length);
    if (status != Status::Success) return status;
    if (!FitsLength(entry, length)) return Status::LengthMismatch;
    status = validator.ValidateBytesCopy(length, data + entry.GetOffset());
    if (status == Status::Success) status = StoreLength(entry, data, length);
    return status;
}

void ManagedFieldList::ClearUnusedBits(unsigned char* data) const noexcept {
    const std::uint32_t usedInLastByte = GetFieldCount() % 8;
    if (usedInLastByte != 0) data[GetBitmapLength() - 1] &= static_cast<unsigned char>(0xFF00u >> usedInLastByte);
}

void ManagedFieldList::ResetData(unsigned char* data) const { std::memset(data, 0, GetBitmapLength()); }

StatusCode ManagedFieldList::SetField(unsigned char* data, std::uint16_t id, bool value) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    const StatusCode status = StoreBoolean(*entry, data, value);
    if (status == Status::Success) SetFieldDefined(number, data);
    return status;
}

StatusCode ManagedFieldList::SetFieldByNumber(std::uint32_t number, unsigned char* data, const void* value,
                                              std::uint32_t length) const {
    const StatusCode status = StoreValue(GetEntry(number), data, value, length);
    if (status == Status::Success) SetFieldDefined(number, data);
    return status;
}

StatusCode ManagedFieldList::CopyFieldByNumber(std::uint32_t number, unsigned char* data,
                                               std::uint32_t sourceNumber, const FieldList& source,
                                               const unsigned char* sourceData) const {
    if (!source.IsFieldDefined(sourceNumber, sourceData)) {
        ClearFieldDefined(number, data);
        return Status::Success;
    }
    const StatusCode status = StoreValueFrom(GetEntry(number), data, sourceNumber, source, sourceData);
    if (status == Status::Success) SetFieldDefined(number, data);
    return status;
}

StatusCode ManagedFieldList::CompareField(std::uint16_t id, const unsigned char* data, const std::string& value,
                                          int& result) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    if (value.empty()) return Status::LengthMismatch;
    if (!IsFieldDefined(number, data)) {
        result = -1;
        return Status::Success;
    }
    return CompareStoredString(*entry, data, value, result);
}

StatusCode ManagedFieldList::CompareField(std::uint16_t id, const unsigned char* data, const IFieldType& value,
                                          int& result) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    const bool defined = IsFieldDefined(number, data);
    if (!value.defined || !defined) {
        result = !value.defined ? (defined ? 1 : 0) : -1;
        return Status::Success;
    }
    return CompareStoredValue(*entry, data, value, result);
}

void ManagedFieldList::SetFieldDefined(std::uint32_t number, unsigned char* data) const {
    data[number / 8] |= BitOf(number);
}

void ManagedFieldList::ClearFieldDefined(std::uint32_t number, unsigned char* data) const {
    data[number / 8] &= static_cast<unsigned char>(~BitOf(number));
}

bool ManagedFieldList::IsFieldDefined(std::uint32_t number, const unsigned char* data) const {
    return (data[number / 8] & BitOf(number)) != 0;
}

StatusCode ManagedFieldList::SetFieldLength(unsigned char* data, std::uint16_t id, std::uint32_t length) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    const StatusCode status = StoreLength(*entry, data, length == FullLength ? entry->GetMaxLength() : length);
    if (status == Status::Success) SetFieldDefined(number, data);
    return status;
}

StatusCode ManagedFieldList::ClearField(unsigned char* data, std::uint16_t id, bool& changed) const {
    std::uint32_t number = 0;
    if (FindEntry(id, number) == nullptr) return Status::NotFound;
    changed = IsFieldDefined(number, data);
    ClearFieldDefined(number, data);
    return Status::Success;
}

StatusCode ManagedFieldList::ClearField(unsigned char* data, std::uint16_t id) const {
    bool changed = false;
    return ClearField(data, id, changed);
}

StatusCode ManagedFieldList::IsFieldDefined(const unsigned char* data, std::uint16_t id, bool& isDefined) const {
    std::uint32_t number = 0;
    if (FindEntry(id, number) == nullptr) return Status::NotFound;
    isDefined = IsFieldDefined(number, data);
    return Status::Success;
}

std::uint32_t ManagedFieldList::GetFieldLength(std::uint32_t number, const unsigned char* data) const {
    return IsFieldDefined(number, data) ? ReadValueLength(GetEntry(number), data) : 0;
}

bool ManagedFieldList::LocateDefinedBit(std::uint32_t number, std::uint32_t& byte, unsigned char& mask) const noexcept {
    byte = number / 8;
    mask = BitOf(number);
    return true;
}

}  // namespace Tavrin::Database
