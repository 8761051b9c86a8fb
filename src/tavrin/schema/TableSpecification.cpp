#include "tavrin/schema/TableSpecification.h"

#include <sstream>

namespace Tavrin::Database {

namespace {

// Gives the validator the version of the message being read and puts its former version back
// when the read ends, whichever way it ends.
class ValidatorVersionScope {
public:
    ValidatorVersionScope(MessageValidator& validator, std::uint8_t version) noexcept
        : validator_(validator), formerVersion_(validator.GetVersion()) {
        validator_.SetVersion(version);
    }
    ~ValidatorVersionScope() { validator_.SetVersion(formerVersion_); }
    ValidatorVersionScope(const ValidatorVersionScope&) = delete;
    ValidatorVersionScope& operator=(const ValidatorVersionScope&) = delete;

private:
    MessageValidator& validator_;
    std::uint8_t formerVersion_;
};

const char* BoolText(bool value) noexcept { return value ? "true" : "false"; }

}  // namespace

TableSpecification::TableSpecification(const std::string& name, std::uint32_t properties,
                                       const std::vector<FieldSpecification>& fields,
                                       std::uint32_t initialMaximumRecords, std::uint32_t growRecords,
                                       std::uint32_t cacheSize)
    : TableSpecification(name, true, properties, fields, initialMaximumRecords, 0, growRecords, cacheSize) {}

TableSpecification::TableSpecification(const std::string& name, std::uint32_t properties,
                                       const std::vector<FieldSpecification>& fields,
                                       std::uint32_t initialMaximumRecords, std::uint32_t recordLength,
                                       std::uint32_t growRecords, std::uint32_t cacheSize)
    : TableSpecification(name, false, properties, fields, initialMaximumRecords, recordLength, growRecords,
                         cacheSize) {}

TableSpecification::TableSpecification(const std::string& name, bool managed, std::uint32_t properties,
                                       const std::vector<FieldSpecification>& fields,
                                       std::uint32_t initialMaximumRecords, std::uint32_t recordLength,
                                       std::uint32_t growRecords, std::uint32_t cacheSize)
    : name_(name),
      managed_(managed),
      properties_(properties),
      fields_(fields),
      initialMaximumRecords_(initialMaximumRecords),
      recordLength_(recordLength),
      growRecords_(growRecords),
      cacheSize_(cacheSize) {}

bool TableSpecification::operator==(const TableSpecification& other) const noexcept {
    return managed_ == other.managed_ && recordLength_ == other.recordLength_ && name_ == other.name_ &&
           fields_ == other.fields_;
}

StatusCode TableSpecification::Serialize(MessageBuilder& builder, std::uint8_t version) const {
    StatusCode status = builder.AppendUInt8(version);
    if (status == Status::Success) status = builder.AppendString(name_);
    if (status == Status::Success) status = builder.AppendBool32(managed_);
    if (status == Status::Success) status = builder.AppendUInt32(properties_);
    if (status == Status::Success) status = builder.AppendUInt32(static_cast<std::uint32_t>(fields_.size()));
    for (auto field = fields_.begin(); status == Status::Success && field != fields_.end(); ++field) {
        status = field->Serialize(builder);
    }
    for (std::uint32_t size : {initialMaximumRecords_, recordLength_, growRecords_, cacheSize_}) {
        if (status == Status::Success) status = builder.AppendUInt32(size);
    }
    return status;
}

StatusCode TableSpecification::Deserialize(MessageValidator& validator) {
    std::uint8_t version = 0;
    const StatusCode status = validator.ReadUInt8(version);
    if (status != Status::Success) return status;
    if (version > CurrentVersion) return Status::WrongVersion;
    ValidatorVersionScope scope(validator, version);
    return DeserializeMembers(validator);
}

// Everything behind the version byte.
StatusCode TableSpecification::DeserializeMembers(MessageValidator& validator) {
    StatusCode status = validator.ValidateString(&name_, nullptr, nullptr);
    if (status == Status::Success) status = validator.ReadBool32(managed_);
    if (status == Status::Success) status = validator.ReadUInt32(properties_);
    if (status != Status::Success) return status;

    fields_.clear();
    std::uint32_t count = 0;
    status = validator.ReadUInt32(count);
    if (status != Status::Success) return status;
    // The count comes from the message: grow the list as fields arrive rather than trusting it.
    for (std::uint32_t i = 0; i < count; ++i) {
        FieldSpecification field;
        status = field.Deserialize(validator);
        if (status != Status::Success) return status;
        fields_.push_back(field);
    }
    for (std::uint32_t* size : {&initialMaximumRecords_, &recordLength_, &growRecords_, &cacheSize_}) {
        status = validator.ReadUInt32(*size);
        if (status != Status::Success) return status;
    }
    return Status::Success;
}

std::string TableSpecification::ToString() const {
    std::ostringstream stream;
    stream << "Name ......................... " << name_ << std::endl
           << "Type ......................... " << (managed_ ? "Managed" : "Unmanaged") << std::endl
           << "Properties ................... " << properties_ << std::endl
           << "Create record file ........... " << BoolText(ShouldCreateRecordFile(properties_)) << std::endl
           << "Create mutex ................. " << BoolText(ShouldCreateMutex(properties_)) << std::endl
           << "Convert ...................... " << BoolText(ShouldConvert(properties_)) << std::endl
           << std::endl
           << "Initial maximum records ...... " << initialMaximumRecords_ << std::endl
           << "Grow records ................. " << growRecords_ << std::endl
           << "Cache size (k) ............... ";
    if (cacheSize_ == CacheAll) {
        stream << "all";
    } else {
        stream << cacheSize_;
    }
    stream << std::endl
           << "Record length ................ " << recordLength_ << std::endl
           << std::endl
           << FieldSpecification::ToFormattedHeaderString();
    for (const FieldSpecification& field : fields_) stream << field.ToFormattedString();
    return stream.str();
}

std::ostream& operator<<(std::ostream& stream, const TableSpecification& specification) {
    return stream << specification.ToString();
}

StatusCode SerializeTableSpecificationMessage(MessageBuilder&) { return Status::Success; }

}  // namespace Tavrin::Database
