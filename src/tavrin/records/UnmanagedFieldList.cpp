#include "tavrin/records/UnmanagedFieldList.h"

#include <algorithm>
#include <cstring>

#include "tavrin/base/DatabaseException.h"

namespace Tavrin::Database {

namespace {

constexpr const char* kConstructor = "Tavrin::Database::UnmanagedFieldList::UnmanagedFieldList";

void RefuseEndBeyond(std::uint64_t highestEnd, std::uint64_t dataLength) {
    if (highestEnd > dataLength) {
        ThrowDatabase(kConstructor, DatabaseException::InvalidParameter,
                      "max offset greater than data length in unmanaged table");
    }
}

}  // namespace

UnmanagedFieldList::UnmanagedFieldList(const std::vector<FieldSpecification>& specifications) {
    const std::uint64_t highestEnd = AppendFields(specifications);
    RefuseEndBeyond(highestEnd, 0xFFFFFFFFu);
    SetDataLength(static_cast<std::uint32_t>(highestEnd));
}

UnmanagedFieldList::UnmanagedFieldList(const std::vector<FieldSpecification>& specifications,
                                       std::uint32_t dataLength) {
    RefuseEndBeyond(AppendFields(specifications), dataLength);
    SetDataLength(dataLength);
}

std::uint64_t UnmanagedFieldList::AppendFields(const std::vector<FieldSpecification>& specifications) {
    RefuseEmptyList(kConstructor, specifications);
    std::uint64_t highestEnd = 0;
    for (const FieldSpecification& specification : specifications) {
        const FieldEntry& entry = AppendEntry(kConstructor, specification);
        if (entry.GetTypeInfo().isVariableLength) {
            ThrowDatabase(kConstructor, DatabaseException::InvalidParameter,
                          "variable length field <%s> in unmanaged table", entry.GetName().c_str());
        }
        highestEnd = std::max(highestEnd, std::uint64_t{entry.GetOffset()} + entry.GetMaxLength());
    }
    return highestEnd;
}

StatusCode UnmanagedFieldList::SerializeFields(MessageBuilder& builder, const unsigned char* data) const {
    StatusCode status = Status::Success;
    for (auto entry = GetEntries().begin(); status == Status::Success && entry != GetEntries().end(); ++entry) {
        status = builder.AppendBytes(data + entry->GetOffset(), entry->GetMaxLength());
    }
    return status;
}

StatusCode UnmanagedFieldList::DeserializeFields(MessageValidator& validator, unsigned char* data) const {
    StatusCode status = Status::Success;
    for (auto entry = GetEntries().begin(); status == Status::Success && entry != GetEntries().end(); ++entry) {
        status = validator.ValidateBytesCopy(entry->GetMaxLength(), data + entry->GetOffset());
    }
    return status;
}

void UnmanagedFieldList::ResetData(unsigned char* data) const { std::memset(data, 0, GetDataLength()); }

StatusCode UnmanagedFieldList::SetField(unsigned char* data, std::uint16_t id, bool value) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    return entry == nullptr ? Status::NotFound : StoreBoolean(*entry, data, value);
}

StatusCode UnmanagedFieldList::SetFieldByNumber(std::uint32_t number, unsigned char* data, const void* value,
                                                std::uint32_t length) const {
    return StoreValue(GetEntry(number), data, value, length);
}

StatusCode UnmanagedFieldList::CopyFieldByNumber(std::uint32_t number, unsigned char* data,
                                                 std::uint32_t sourceNumber, const FieldList& source,
                                                 const unsigned char* sourceData) const {
    return StoreValueFrom(GetEntry(number), data, sourceNumber, source, sourceData);
}

StatusCode UnmanagedFieldList::CompareField(std::uint16_t id, const unsigned char* data, const std::string& value,
                                            int& result) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    return entry == nullptr ? Status::NotFound : CompareStoredString(*entry, data, value, result);
}

StatusCode UnmanagedFieldList::CompareField(std::uint16_t id, const unsigned char* data, const IFieldType& value,
                                            int& result) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    return entry == nullptr ? Status::NotFound : CompareStoredValue(*entry, data, value, result);
}

void UnmanagedFieldList::SetFieldDefined(std::uint32_t, unsigned char*) const {}

void UnmanagedFieldList::ClearFieldDefined(std::uint32_t, unsigned char*) const {}

StatusCode UnmanagedFieldList::SetFieldLength(unsigned char* data, std::uint16_t id, std::uint32_t length) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    return StoreLength(*entry, data, length == FullLength ? entry->GetMaxLength() : length);
}

StatusCode UnmanagedFieldList::ClearField(unsigned char*, std::uint16_t, bool&) const {
    return Status::NotAvailable;
}

StatusCode UnmanagedFieldList::ClearField(unsigned char*, std::uint16_t) const { return Status::NotAvailable; }

bool UnmanagedFieldList::IsFieldDefined(std::uint32_t, const unsigned char*) const { return true; }

StatusCode UnmanagedFieldList::IsFieldDefined(const unsigned char*, std::uint16_t id, bool& isDefined) const {
    std::uint32_t number = 0;
    if (FindEntry(id, number) == nullptr) return Status::NotFound;
    isDefined = true;
    return Status::Success;
}

std::uint32_t UnmanagedFieldList::GetFieldLength(std::uint32_t number, const unsigned char* data) const {
    return ReadValueLength(GetEntry(number), data);
}

bool UnmanagedFieldList::LocateDefinedBit(std::uint32_t, std::uint32_t&, unsigned char&) const noexcept {
    return false;
}

}  // namespace Tavrin::Database
