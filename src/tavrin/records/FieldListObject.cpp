#include "tavrin/records/FieldListObject.h"

#include <cstring>
#include <new>

#include "tavrin/tables/ITable.h"

namespace Tavrin::Database {

FieldListObject::FieldListObject() noexcept { std::memset(inlineBuffer_, 0, sizeof inlineBuffer_); }

StatusCode FieldListObject::CopyFields(const FieldListObject& source, bool strict) {
    if (!IsInitialized() || !source.IsInitialized()) return Status::NotUsable;
    return fieldList_->CopyFields(data_, *source.fieldList_, source.data_, strict);
}

FieldList::ConstIterator FieldListObject::Begin() const noexcept {
    return IsInitialized() ? fieldList_->Begin() : End();
}

StatusCode FieldListObject::GetMatchingFieldsByName(std::vector<std::uint16_t>& ids, const FieldListObject& other,
                                                    std::vector<std::uint16_t>& otherIds) const {
    if (!IsInitialized() || !other.IsInitialized()) return Status::NotUsable;
    for (auto theirs = other.Begin(); theirs != other.End(); ++theirs) {
        for (auto ours = Begin(); ours != End(); ++ours) {
            if (ours.GetName() == theirs.GetName() && ours.GetType() == theirs.GetType()) {
                otherIds.push_back(theirs.GetId());
                ids.push_back(ours.GetId());
                break;
            }
        }
    }
    return Status::Success;
}

StatusCode FieldListObject::GetMatchingFieldsById(std::vector<std::uint16_t>& ids,
                                                  const FieldListObject& other) const {
    if (!IsInitialized()) return Status::NotUsable;
    FieldSpecification::Type type = FieldSpecification::None;
    for (auto theirs = other.Begin(); theirs != other.End(); ++theirs) {
        if (fieldList_->GetType(theirs.GetId(), type) == Status::Success) ids.push_back(theirs.GetId());
    }
    return Status::Success;
}

std::ostream& operator<<(std::ostream& stream, const FieldListObject& object) {
    if (!object.IsInitialized()) return stream << "Not initialized\n";
    return stream << object.fieldList_->ToString(object.data_);
}

bool FieldListObject::IsBindable(const ITable* table) noexcept {
    return table != nullptr && table->GetIdentityToken().GetValue() != 0;
}

StatusCode FieldListObject::Bind(ITable* table, const FieldList* fieldList, std::uint32_t size) noexcept {
    if (capacity_ < size) {
        unsigned char* array = new (std::nothrow) unsigned char[size];
        if (array == nullptr) return Status::OutOfMemory;
        array_.reset(array);
        data_ = array;
        capacity_ = size;
    }
    initialized_ = true;
    table_ = table;
    // A record read again and again from one table keeps its token: copying it would take and
    // drop a shared reference, two atomic operations on every read.
    const IdentityToken& token = table->GetIdentityToken();
    if (!tableToken_.IsSame(token)) tableToken_ = token;
    fieldList_ = fieldList;
    return Status::Success;
}

void FieldListObject::Clear() noexcept {
    initialized_ = false;
    table_ = nullptr;
    tableToken_.Clear();
    fieldList_ = nullptr;
    array_.reset();
    data_ = inlineBuffer_;
    capacity_ = InlineCapacity;
    recordId_ = NoRecordId;
    std::memset(inlineBuffer_, 0, sizeof inlineBuffer_);
}

void FieldListObject::TakeFrom(FieldListObject& other) noexcept {
    initialized_ = other.initialized_;
    table_ = other.table_;
    tableToken_ = other.tableToken_;
    fieldList_ = other.fieldList_;
    recordId_ = other.recordId_;
    if (other.array_) {
        array_ = std::move(other.array_);
        data_ = array_.get();
        capacity_ = other.capacity_;
    } else {
        // The image is inline on the other side; an array of our own, if any, still serves.
        std::memcpy(data_, other.inlineBuffer_, InlineCapacity);
    }
    other.Clear();
}

}  // namespace Tavrin::Database
