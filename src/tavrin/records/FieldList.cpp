#include "tavrin/records/FieldList.h"

#include <algorithm>
#include <cstring>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/Encoding.h"

namespace Tavrin::Database {

namespace {

// Short values are copied by a byte loop, which beats a library call at these sizes. memmove, not
// memcpy: a caller may write a field from a pointer into the same image.
void CopyBytes(unsigned char* destination, const unsigned char* source, std::uint32_t length) noexcept {
    if (length < 10) {
        if (destination < source) {
            for (std::uint32_t i = 0; i < length; ++i) destination[i] = source[i];
        } else {
            for (std::uint32_t i = length; i > 0; --i) destination[i - 1] = source[i - 1];
        }
    } else {
        std::memmove(destination, source, length);
    }
}

const FieldSpecification& DefaultSpecification() noexcept {
    static const FieldSpecification specification;
    return specification;
}

}  // namespace

// ---- ConstIterator -------------------------------------------------------------------------------

FieldList::ConstIterator& FieldList::ConstIterator::operator++() noexcept {
    if (entries_ == nullptr) return *this;
    if (++position_ >= entries_->size()) *this = ConstIterator();
    return *this;
}

const FieldSpecification& FieldList::ConstIterator::GetSpecification() const noexcept {
    if (entries_ == nullptr || position_ >= entries_->size()) return DefaultSpecification();
    return (*entries_)[position_];
}

// ---- Construction --------------------------------------------------------------------------------

void FieldList::RefuseEmptyList(ThrowSite site, const std::vector<FieldSpecification>& specifications) {
    if (specifications.empty()) {
        ThrowDatabase(site, DatabaseException::InvalidParameter, "empty field specification list");
    }
}

FieldEntry& FieldList::AppendEntry(ThrowSite site, const FieldSpecification& specification) {
    const std::uint16_t id = specification.GetId();
    std::uint32_t number = 0;
    if (FindEntry(id, number) != nullptr) {
        ThrowDatabase(site, DatabaseException::InvalidParameter, "repeated field id <%u> at field <%s>",
                      static_cast<unsigned>(id), specification.GetName().c_str());
    }
    entries_.emplace_back(specification);
    if (id >= fieldNumbers_.size()) fieldNumbers_.resize(static_cast<std::size_t>(id) + 1, NoFieldNumber);
    fieldNumbers_[id] = static_cast<std::uint32_t>(entries_.size() - 1);
    return entries_.back();
}

// ---- Layout helpers ------------------------------------------------------------------------------

bool FieldList::FitsLength(const FieldEntry& entry, std::uint32_t length) noexcept {
    if (entry.GetLengthSize() != 0) return length >= 1 && length <= entry.GetMaxLength();
    const FieldSpecification::Type type = entry.GetType();
    if (type == FieldSpecification::DateTime || type == FieldSpecification::Time) {
        return length <= entry.GetMaxLength();
    }
    return length == entry.GetMaxLength();
}

StatusCode FieldList::StoreLength(const FieldEntry& entry, unsigned char* data, std::uint32_t length) noexcept {
    if (!FitsLength(entry, length)) return Status::LengthMismatch;
    if (entry.GetLengthSize() != 0) EncodeUnsigned(data + entry.GetLengthOffset(), entry.GetLengthSize(), length);
    return Status::Success;
}

StatusCode FieldList::StoreValue(const FieldEntry& entry, unsigned char* data, const void* value,
                                 std::uint32_t length) noexcept {
    const StatusCode status = StoreLength(entry, data, length);
    if (status == Status::Success) {
        CopyBytes(data + entry.GetOffset(), static_cast<const unsigned char*>(value), length);
    }
    return status;
}

StatusCode FieldList::StoreBoolean(const FieldEntry& entry, unsigned char* data, bool value) noexcept {
    if (entry.GetType() != FieldSpecification::Boolean) return Status::WrongType;
    if (entry.GetMaxLength() != 1) return Status::LengthMismatch;
    data[entry.GetOffset()] = value ? 1 : 0;
    return Status::Success;
}

StatusCode FieldList::StoreValueFrom(const FieldEntry& entry, unsigned char* data, std::uint32_t sourceNumber,
                                     const FieldList& source, const unsigned char* sourceData) noexcept {
    const FieldEntry& sourceEntry = source.GetEntry(sourceNumber);
    return StoreValue(entry, data, sourceData + sourceEntry.GetOffset(),
                      source.GetFieldLength(sourceNumber, sourceData));
}

std::uint32_t FieldList::ReadValueLength(const FieldEntry& entry, const unsigned char* data) noexcept {
    const unsigned char* value = data + entry.GetOffset();
    std::uint32_t length = entry.GetMaxLength();
    if (entry.GetLengthSize() != 0) {
        length = static_cast<std::uint32_t>(DecodeUnsigned(data + entry.GetLengthOffset(), entry.GetLengthSize()));
    } else if (entry.GetType() == FieldSpecification::DateTime) {
        length = (value[3] & 0x80) != 0 ? 7 : 6;  // bit 7 of the time part's first byte
    } else if (entry.GetType() == FieldSpecification::Time) {
        length = (value[0] & 0x80) != 0 ? 4 : 3;
    }
    return std::min(length, entry.GetMaxLength());
}

// ---- Raw field access ----------------------------------------------------------------------------

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const void* value,
                               std::uint32_t length) const {
    std::uint32_t number = 0;
    if (FindEntry(id, number) == nullptr) return Status::NotFound;
    return SetFieldByNumber(number, data, value, length);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const void* value, std::uint32_t length,
                               bool& changed) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    if (IsFieldDefined(number, data) && GetFieldLength(number, data) == length &&
        (length == 0 || std::memcmp(data + entry->GetOffset(), value, length) == 0)) {
        changed = false;
        return Status::Success;
    }
    const StatusCode status = SetFieldByNumber(number, data, value, length);
    if (status == Status::Success) changed = true;
    return status;
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, void* buffer,
                               std::uint32_t bufferSize, std::uint32_t& length) const {
    const void* value = nullptr;
    std::uint32_t valueLength = 0;
    const StatusCode status = GetField(data, id, value, valueLength);
    if (status != Status::Success) return status;
    if (bufferSize < valueLength) return Status::BufferTooSmall;
    CopyBytes(static_cast<unsigned char*>(buffer), static_cast<const unsigned char*>(value), valueLength);
    length = valueLength;
    return Status::Success;
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, const void*& value,
                               std::uint32_t& length) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    if (!IsFieldDefined(number, data)) return Status::Undefined;
    value = data + entry->GetOffset();
    length = GetFieldLength(number, data);
    return Status::Success;
}

StatusCode FieldList::GetField(unsigned char* data, std::uint16_t id, void*& value, std::uint32_t& length) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    value = data + entry->GetOffset();
    length = GetFieldLength(number, data);
    return Status::Success;
}

const FieldEntry* FieldList::EntryAt(const ConstIterator& iterator) const noexcept {
    if (iterator.entries_ != &entries_ || iterator.position_ >= entries_.size()) return nullptr;
    return &entries_[iterator.position_];
}

StatusCode FieldList::GetField(const unsigned char* data, const ConstIterator& iterator, const void*& value,
                               std::uint32_t& length) const {
    FieldSpecification::Type type = FieldSpecification::None;
    std::uint16_t id = FieldSpecification::NoFieldId;
    return GetField(data, iterator, id, type, value, length);
}

StatusCode FieldList::GetField(const unsigned char* data, const ConstIterator& iterator, std::uint16_t& id,
                               FieldSpecification::Type& type, const void*& value, std::uint32_t& length) const {
    const FieldEntry* entry = EntryAt(iterator);
    if (entry == nullptr) return Status::NotUsable;
    id = entry->GetId();
    type = entry->GetType();
    if (!IsFieldDefined(iterator.position_, data)) return Status::Undefined;
    value = data + entry->GetOffset();
    length = GetFieldLength(iterator.position_, data);
    return Status::Success;
}

// ---- The fields ----------------------------------------------------------------------------------

StatusCode FieldList::GetType(std::uint16_t id, FieldSpecification::Type& type) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    type = entry->GetType();
    return Status::Success;
}

StatusCode FieldList::GetFieldSpecification(std::uint16_t id, FieldSpecification& specification) const {
    std::uint32_t number = 0;
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    specification = *entry;
    return Status::Success;
}

StatusCode FieldList::GetFieldSpecification(std::uint16_t id, std::uint32_t& number,
                                            const FieldSpecification*& specification) const {
    const FieldEntry* entry = FindEntry(id, number);
    if (entry == nullptr) return Status::NotFound;
    specification = entry;
    return Status::Success;
}

bool FieldList::GetFieldNumber(const FieldSpecification& specification, std::uint32_t& number) const {
    const FieldEntry* entry = FindEntry(specification.GetId(), number);
    return entry != nullptr && *entry == specification;
}

std::vector<FieldSpecification> FieldList::GetFieldSpecificationList() const {
    return std::vector<FieldSpecification>(entries_.begin(), entries_.end());
}

std::vector<std::uint16_t> FieldList::GetFieldIdList() const {
    std::vector<std::uint16_t> ids;
    ids.reserve(entries_.size());
    for (const FieldEntry& entry : entries_) ids.push_back(entry.GetId());
    return ids;
}

void FieldList::GetFirstFieldSpecification(FieldSpecification& specification) const {
    specification = entries_.front();
}

void FieldList::GetFirstFieldId(std::uint16_t& id) const { id = entries_.front().GetId(); }

StatusCode FieldList::GetNextFieldSpecification(FieldSpecification& specification) const {
    std::uint32_t number = 0;
    if (FindEntry(specification.GetId(), number) == nullptr) return Status::Invalid;
    if (number + 1 >= entries_.size()) return Status::NotFound;
    specification = entries_[number + 1];
    return Status::Success;
}

StatusCode FieldList::GetNextFieldId(std::uint16_t& id) const {
    std::uint32_t number = 0;
    if (FindEntry(id, number) == nullptr) return Status::Invalid;
    if (number + 1 >= entries_.size()) return Status::NotFound;
    id = entries_[number + 1].GetId();
    return Status::Success;
}

// ---- The list's specification on the wire ----------------------------------------------------

StatusCode FieldList::SerializeSpecification(MessageBuilder& builder) const {
    StatusCode status = builder.AppendUInt32(GetFieldCount());
    for (auto entry = entries_.begin(); status == Status::Success && entry != entries_.end(); ++entry) {
        status = entry->Serialize(builder);
    }
    return status;
}

StatusCode FieldList::DeserializeSpecification(MessageValidator& validator,
                                               std::vector<FieldSpecification>& specifications) {
    specifications.clear();
    std::uint32_t count = 0;
    StatusCode status = validator.ReadUInt32(count);
    // No reserve by the count: it comes from the message. Every specification takes at least 22
    // bytes of it, so a false count ends at the message's end.
    for (std::uint32_t i = 0; status == Status::Success && i < count; ++i) {
        FieldSpecification specification;
        status = specification.Deserialize(validator);
        if (status == Status::Success) specifications.push_back(std::move(specification));
    }
    return status;
}

}  // namespace Tavrin::Database
