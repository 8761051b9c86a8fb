#include "tavrin/records/Key.h"

#include <cstring>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/indexes/IIndex.h"
#include "tavrin/records/Record.h"
#include "tavrin/tables/ITable.h"

namespace Tavrin::Database {

namespace {
constexpr const char* ConstructorName = "Tavrin::Database::Key::Key";
constexpr const char* AssignmentName = "Tavrin::Database::Key::operator =";

// Constructors and assignment turn any failing status into a DatabaseException without message.
void ThrowOnFailure(StatusCode status, ThrowSite site) {
    if (status != Status::Success) ThrowDatabase(site, DatabaseException::AllocateIndex);
}
}  // namespace

Key::Key(ITable* table, std::uint16_t indexNumber) {
    ThrowOnFailure(Initialize(table, indexNumber), ConstructorName);
}

Key::Key(std::uint16_t indexNumber, const Record& record) {
    ThrowOnFailure(Initialize(indexNumber, record), ConstructorName);
}

Key::Key(const Key& other) : FieldListObject() { ThrowOnFailure(Initialize(other), ConstructorName); }

Key& Key::operator=(const Key& other) {
    if (this != &other) ThrowOnFailure(Initialize(other), AssignmentName);
    return *this;
}

Key::Key(Key&& other) noexcept : index_(other.index_), indexNumber_(other.indexNumber_) {
    TakeFrom(other);
    other.index_ = nullptr;
    other.indexNumber_ = 0;
}

Key& Key::operator=(Key&& other) noexcept {
    if (this == &other) return *this;
    index_ = other.index_;
    indexNumber_ = other.indexNumber_;
    TakeFrom(other);
    other.index_ = nullptr;
    other.indexNumber_ = 0;
    return *this;
}

StatusCode Key::Initialize(ITable* table, std::uint16_t indexNumber) {
    if (!IsBindable(table)) return Status::Invalid;
    IIndex* index = nullptr;
    StatusCode status = table->GetIndex(indexNumber, index);
    if (status != Status::Success) return status;
    status = Bind(table, index->GetFieldList(), index->GetKeySize());
    if (status != Status::Success) return status;
    index_ = index;
    indexNumber_ = indexNumber;
    SetRecordId(NoRecordId);
    index->InitializeKey(*this);
    return Status::Success;
}

StatusCode Key::Initialize(const Key& other) {
    // A key whose table is gone counts as having none: its pointers must not be followed.
    if (!other.IsInitialized()) {
        ClearKey();
        return Status::Success;
    }
    // Binding empties the image, which would wipe the source if it is this object.
    if (this == &other) return Status::Success;
    const StatusCode status = Initialize(other.GetTable(), other.indexNumber_);
    if (status != Status::Success) return status;
    std::memcpy(GetData(), other.GetData(), index_->GetKeySize());
    SetRecordId(other.GetRecordId());
    return Status::Success;
}

StatusCode Key::Initialize(std::uint16_t indexNumber, const Record& record) {
    if (!record.IsInitialized()) return Status::NotUsable;
    const StatusCode status = Initialize(record.GetTable(), indexNumber);
    if (status != Status::Success) return status;
    return index_->BuildKey(*this, record.GetData(), record.GetRecordId());
}

StatusCode Key::BuildKey(const Record& record) {
    if (!IsInitialized()) return Status::NotUsable;
    if (!IsSameTable(record)) return Status::OtherTable;
    return index_->BuildKey(*this, record.GetData(), record.GetRecordId());
}

StatusCode Key::Reset() {
    if (!IsInitialized()) return Status::NotUsable;
    index_->InitializeKey(*this);
    SetRecordId(NoRecordId);
    return Status::Success;
}

StatusCode Key::Serialize(MessageBuilder& builder) const {
    if (!IsInitialized()) return Status::NotUsable;
    StatusCode status = builder.AppendUInt8(Version);
    if (status == Status::Success) status = builder.AppendUInt32(indexNumber_);
    if (status == Status::Success) status = builder.AppendBytes(GetData(), index_->GetKeySize());
    if (status == Status::Success) status = builder.AppendInt32(static_cast<std::int32_t>(GetRecordId()));
    return status;
}

StatusCode Key::Deserialize(ITable* table, MessageValidator& validator) {
    std::uint8_t version = 0;
    StatusCode status = validator.ReadUInt8(version);
    if (status != Status::Success) return status;
    if (version != Version) return Status::WrongVersion;
    std::uint32_t indexNumber = 0;
    status = validator.ReadUInt32(indexNumber);
    if (status != Status::Success) return status;
    if (!IsBindable(table)) return Status::Invalid;
    // With no index the bound wraps around and lets every number through to Initialize, which
    // answers 26.
    if (indexNumber > table->GetNumberOfIndexes() - 1u) return Status::OutOfRange;
    status = Initialize(table, static_cast<std::uint16_t>(indexNumber));
    if (status != Status::Success) return status;
    status = validator.ValidateBytesCopy(index_->GetKeySize(), GetData());
    if (status != Status::Success) return status;
    std::int32_t recordId = 0;
    status = validator.ReadInt32(recordId);
    if (status == Status::Success) SetRecordId(static_cast<std::uint32_t>(recordId));
    return status;
}

StatusCode Key::CopyFields(const Record& source, bool strict) {
    if (!IsInitialized() || !source.IsInitialized()) return Status::NotUsable;
    if (!IsSameTable(source)) return FieldListObject::CopyFields(source, strict);
    return index_->BuildKey(*this, source.GetData(), source.GetRecordId());
}

StatusCode Key::CopyFields(const Key& source, bool strict) {
    if (!IsInitialized() || !source.IsInitialized()) return Status::NotUsable;
    if (index_ == source.index_) return Initialize(source);
    if (!IsSameTable(source)) return FieldListObject::CopyFields(source, strict);
    return index_->BuildKey(*this, source);
}

void Key::ClearKey() noexcept {
    Clear();
    index_ = nullptr;
    indexNumber_ = 0;
}

}  // namespace Tavrin::Database
