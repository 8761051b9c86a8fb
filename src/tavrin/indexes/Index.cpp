#include "tavrin/indexes/Index.h"

#include <cassert>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/Encoding.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/Record.h"

namespace Tavrin::Database {

namespace {
constexpr const char* ConstructorName = "Tavrin::Database::Index::Index";
constexpr std::uint32_t DuplicateTailSize = 4;
}  // namespace

Index::Index(const IndexSpecification& specification, const FieldList& tableFieldList,
             const IFieldListFactory& factory)
    : number_(specification.GetNumber()),
      name_(specification.GetName()),
      type_(specification.GetType()),
      properties_(specification.GetProperties()),
      tableFieldList_(&tableFieldList),
      comparedFields_(static_cast<std::uint32_t>(specification.GetFields().size())) {
    std::vector<FieldSpecification> keyFields;
    std::uint32_t offset = 0;
    for (const IndexSpecification::Field& field : specification.GetFields()) {
        offset += AppendKeyField(keyFields, field.GetId(), offset, field.GetFlags());
    }
    for (std::uint16_t id : specification.GetAdditionalFieldIds()) {
        offset += AppendKeyField(keyFields, id, offset, 0);
    }
    keyFieldList_.reset(factory.Create(keyFields));
    if (!keyFieldList_) ThrowDatabase(ConstructorName, DatabaseException::AllocateIndex);
    keySize_ = keyFieldList_->GetDataLength() + (IsDuplicate() ? DuplicateTailSize : 0);
    keyCopy_.emplace(*keyFieldList_, tableFieldList, fieldNumbers_);
}

Index::~Index() = default;

std::uint32_t Index::AppendKeyField(std::vector<FieldSpecification>& keyFields, std::uint16_t id,
                                    std::uint32_t offset, std::uint32_t properties) {
    std::uint32_t number = FieldList::NoFieldNumber;
    const FieldSpecification* field = nullptr;
    if (tableFieldList_->GetFieldSpecification(id, number, field) != Status::Success) {
        ThrowDatabase(ConstructorName, DatabaseException::InvalidParameter);
    }
    keyFields.emplace_back(field->GetId(), field->GetName(), field->GetType(), field->GetMaxLength(), offset,
                           properties);
    fieldNumbers_.push_back(number);
    return field->GetMaxLength();
}

bool Index::IsOwnKey(const Key& key) const noexcept { return key.GetFieldList() == keyFieldList_.get(); }

void Index::InitializeKey(Key& key) const {
    assert(IsOwnKey(key));
    if (!IsOwnKey(key)) return;
    keyFieldList_->ResetData(key.GetData());
    if (IsDuplicate()) EncodeI32(key.GetData() + keyFieldList_->GetDataLength(), -1);
}

StatusCode Index::BuildKey(Key& key, const Key& source) const {
    if (!source.IsInitialized() || source.GetIndex() == nullptr) return Status::NotUsable;
    if (!IsOwnKey(key)) return Status::NotUsable;
    const FieldList& sourceList = *source.GetFieldList();
    std::uint32_t number = FieldList::NoFieldNumber;
    const FieldSpecification* field = nullptr;
    for (auto sourceField = sourceList.Begin(); sourceField != sourceList.End(); ++sourceField) {
        if (keyFieldList_->GetFieldSpecification(sourceField.GetId(), number, field) != Status::Success) continue;
        const StatusCode status = keyFieldList_->CopyFieldByNumber(number, key.GetData(), sourceField.GetNumber(),
                                                                  sourceList, source.GetData());
        if (status != Status::Success) return status;
    }
    if (IsDuplicate() && source.GetIndex()->IsDuplicate()) {
        EncodeU32(key.GetData() + keyFieldList_->GetDataLength(),
                  DecodeU32(source.GetData() + sourceList.GetDataLength()));
    }
    return Status::Success;
}

StatusCode Index::BuildKey(Key& key, const unsigned char* recordData, std::uint32_t recordId) const {
    if (!IsOwnKey(key)) return Status::NotUsable;
    const StatusCode status = keyCopy_->Build(key.GetData(), recordData);
    if (status != Status::Success) return status;
    if (IsDuplicate()) EncodeU32(key.GetData() + keyFieldList_->GetDataLength(), recordId);
    return Status::Success;
}

StatusCode Index::BuildKey(Key& key, const KeyValueList& values) const {
    if (!IsOwnKey(key)) return Status::NotUsable;
    if (values.size() > keyFieldList_->GetFieldCount()) return Status::Invalid;
    for (std::uint32_t i = 0; i < values.size(); ++i) {
        const StatusCode status =
            keyFieldList_->SetFieldByNumber(i, key.GetData(), values[i].first, values[i].second);
        if (status != Status::Success) return status;
    }
    return Status::Success;
}

StatusCode Index::BuildRecord(Record& record, const KeyValueList& values) const {
    if (record.GetFieldList() != tableFieldList_) return Status::NotUsable;
    if (values.size() > keyFieldList_->GetFieldCount()) return Status::Invalid;
    for (std::uint32_t i = 0; i < values.size(); ++i) {
        const StatusCode status =
            tableFieldList_->SetFieldByNumber(fieldNumbers_[i], record.GetData(), values[i].first, values[i].second);
        if (status != Status::Success) return status;
    }
    return Status::Success;
}

int Index::CompareKeys(const Key& left, const Key& right) const {
    assert(IsOwnKey(left) && IsOwnKey(right));
    const int result = keyFieldList_->CompareKey(left.GetData(), right.GetData(), comparedFields_);
    if (result != 0 || !IsDuplicate()) return result;
    const std::uint32_t tail = keyFieldList_->GetDataLength();
    const std::int32_t leftId = DecodeI32(left.GetData() + tail);
    const std::int32_t rightId = DecodeI32(right.GetData() + tail);
    return leftId < rightId ? -1 : (leftId > rightId ? 1 : 0);
}

std::vector<FieldSpecification> Index::GetFieldSpecificationList() const {
    return keyFieldList_->GetFieldSpecificationList();
}

std::vector<std::uint16_t> Index::GetFieldIdList() const { return keyFieldList_->GetFieldIdList(); }

IndexSpecification Index::GetSpecification() const {
    std::vector<IndexSpecification::Field> fields;
    std::vector<std::uint16_t> additionalFieldIds;
    for (auto field = keyFieldList_->Begin(); field != keyFieldList_->End(); ++field) {
        if (field.GetNumber() < comparedFields_) {
            fields.emplace_back(field.GetId(), field.GetSpecification().GetProperties());
        } else {
            additionalFieldIds.push_back(field.GetId());
        }
    }
    return IndexSpecification(number_, name_, type_, properties_, fields, additionalFieldIds);
}

std::uint32_t Index::GetCurrentRecords() {
    ThrowStatus("Tavrin::Database::Index::GetCurrentRecords", Status::NotAvailable);
}

void Index::CheckIntegrity() {}

void Index::Create(const std::string&, const std::string&, const Tavrin::Uuid&) {
    ThrowStatus("Tavrin::Database::Index::Create", Status::NotAvailable);
}

void Index::Create() { ThrowStatus("Tavrin::Database::Index::Create", Status::NotAvailable); }

StatusCode Index::Open(const std::string&, const std::string&, const Tavrin::Uuid&) {
    ThrowStatus("Tavrin::Database::Index::Open", Status::NotAvailable);
}

StatusCode Index::SetUuid(const Tavrin::Uuid&) {
    ThrowStatus("Tavrin::Database::Index::SetUuid", Status::NotAvailable);
}

StatusCode Index::SaveAs(const std::string&, const std::string&) { return Status::NotAvailable; }
StatusCode Index::Clear() { return Status::NotAvailable; }

StatusCode Index::Sync() { return Status::Success; }

void Index::Discard() noexcept {}
StatusCode Index::Add(const Key&, std::uint32_t) { return Status::NotAvailable; }
StatusCode Index::Remove(const Key&) { return Status::NotAvailable; }
StatusCode Index::Find(const Key&, std::uint32_t&) { return Status::NotAvailable; }
StatusCode Index::GetFirst(Key&, std::uint32_t&) { return Status::NotAvailable; }
StatusCode Index::GetLast(Key&, std::uint32_t&) { return Status::NotAvailable; }
StatusCode Index::GetNext(Key&, std::uint32_t&) { return Status::NotAvailable; }
StatusCode Index::GetPrevious(Key&, std::uint32_t&) { return Status::NotAvailable; }
StatusCode Index::GetFirstEqual(Key&, std::uint32_t&, std::uint16_t, std::uint32_t) { return Status::NotAvailable; }
StatusCode Index::GetLastEqual(Key&, std::uint32_t&, std::uint16_t, std::uint32_t) { return Status::NotAvailable; }
StatusCode Index::GetNextEqual(Key&, std::uint32_t&, std::uint16_t, std::uint32_t) { return Status::NotAvailable; }
StatusCode Index::GetPreviousEqual(Key&, std::uint32_t&, std::uint16_t, std::uint32_t) {
    return Status::NotAvailable;
}

}  // namespace Tavrin::Database
