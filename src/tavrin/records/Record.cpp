#include "tavrin/records/Record.h"

#include <cstring>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/tables/ITable.h"

namespace Tavrin::Database {

namespace {
constexpr const char* ConstructorName = "Tavrin::Database::Record::Record";
constexpr const char* AssignmentName = "Tavrin::Database::Record::operator =";

// Constructors and assignment turn any failing status into a DatabaseException without message.
void ThrowOnFailure(StatusCode status, ThrowSite site) {
    if (status != Status::Success) ThrowDatabase(site, DatabaseException::AllocateRecord);
}
}  // namespace

Record::Record(ITable* table) { ThrowOnFailure(BindTo(table), ConstructorName); }

Record::Record(const Key& key) { ThrowOnFailure(Initialize(key), ConstructorName); }

Record::Record(const Record& other) : FieldListObject() { ThrowOnFailure(Initialize(other), ConstructorName); }

Record& Record::operator=(const Record& other) {
    if (this != &other) ThrowOnFailure(Initialize(other), AssignmentName);
    return *this;
}

Record::Record(Record&& other) noexcept { TakeFrom(other); }

Record& Record::operator=(Record&& other) noexcept {
    if (this != &other) TakeFrom(other);
    return *this;
}

// A table fills records of a batch this way, one per record: the image is written whole, so the
// 1 KiB buffer is not zeroed first.
Record::Record(ITable* table, const unsigned char* data, std::uint32_t recordId) : FieldListObject(ImageFollows{}) {
    ThrowOnFailure(Initialize(table, data, recordId), ConstructorName);
}

StatusCode Record::Initialize(const Key& key) {
    if (!key.IsInitialized()) return Status::NotUsable;
    const StatusCode status = BindTo(key.GetTable());
    if (status != Status::Success) return status;
    return FieldListObject::CopyFields(key, false);
}

StatusCode Record::Initialize(const Record& other) {
    if (!other.IsInitialized()) {
        Clear();
        return Status::Success;
    }
    // Binding resets the image, which would wipe the source if it is this object.
    if (this == &other) return Status::Success;
    return Initialize(other.GetTable(), other.GetData(), other.GetRecordId());
}

StatusCode Record::Initialize(ITable* table, const unsigned char* data, std::uint32_t recordId) {
    // The whole image is copied over, so it needs no reset first.
    const StatusCode status = BindWithoutReset(table);
    if (status != Status::Success) return status;
    std::memcpy(GetData(), data, GetFieldList()->GetDataLength());
    SetRecordId(recordId);
    return Status::Success;
}

bool Record::operator==(const Record& other) const {
    const bool initialized = IsInitialized();
    if (initialized != other.IsInitialized()) return false;
    if (!initialized) return true;
    if (!IsSameTable(other)) return false;
    const FieldList& list = *GetFieldList();
    for (auto field = list.Begin(); field != list.End(); ++field) {
        bool different = true;
        const StatusCode status =
            list.IsFieldDifferent(field.GetId(), GetData(), *other.GetFieldList(), other.GetData(), different);
        if (status != Status::Success || different) return false;
    }
    return true;
}

StatusCode Record::Reset() {
    if (!IsInitialized()) return Status::NotUsable;
    GetFieldList()->ResetData(GetData());
    SetRecordId(NoRecordId);
    return Status::Success;
}

StatusCode Record::Serialize(MessageBuilder& builder) const {
    if (!IsInitialized()) return Status::NotUsable;
    StatusCode status = builder.AppendUInt8(Version);
    if (status != Status::Success) return status;
    const FieldList& list = *GetFieldList();
    const std::uint32_t length = list.GetDataLength();
    status = length <= CompactFormThreshold ? builder.AppendBytes(GetData(), length)
                                            : list.SerializeFields(builder, GetData());
    if (status != Status::Success) return status;
    return builder.AppendInt32(static_cast<std::int32_t>(GetRecordId()));
}

StatusCode Record::Deserialize(ITable* table, MessageValidator& validator) {
    std::uint8_t version = 0;
    StatusCode status = validator.ReadUInt8(version);
    if (status != Status::Success) return status;
    if (version != Version) return Status::WrongVersion;
    status = BindTo(table);
    if (status != Status::Success) return status;
    const FieldList& list = *GetFieldList();
    const std::uint32_t length = list.GetDataLength();
    status = length <= CompactFormThreshold ? validator.ValidateBytesCopy(length, GetData())
                                            : list.DeserializeFields(validator, GetData());
    if (status != Status::Success) return status;
    std::int32_t recordId = 0;
    status = validator.ReadInt32(recordId);
    if (status == Status::Success) SetRecordId(static_cast<std::uint32_t>(recordId));
    return status;
}

Key Record::GetKey(std::uint16_t indexNumber) const { return Key(indexNumber, *this); }

Key Record::GetPrimaryKey() const {
    if (!IsInitialized()) ThrowDatabase("Tavrin::Database::Record::GetPrimaryKey", DatabaseException::AllocateKey);
    return Key(GetTable()->GetPrimaryIndex(), *this);
}

StatusCode Record::BindTo(ITable* table) {
    const StatusCode status = BindWithoutReset(table);
    return status == Status::Success ? table->ResetRecord(*this) : status;
}

StatusCode Record::BindWithoutReset(ITable* table) {
    if (!IsBindable(table)) return Status::Invalid;
    return Bind(table, table->GetFieldList(), table->GetRecordLength());
}

}  // namespace Tavrin::Database
