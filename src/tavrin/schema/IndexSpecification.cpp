#include "tavrin/schema/IndexSpecification.h"

#include <sstream>

#include "tavrin/base/DatabaseException.h"

namespace Tavrin::Database {

namespace {

const char* TypeText(IndexSpecification::Type type) noexcept {
    switch (type) {
        case IndexSpecification::None: return "None";
        case IndexSpecification::Hash: return "Hash";
        case IndexSpecification::RedBlack: return "RedBlack";
    }
    return "Unknown";
}

// Only a single known bit has a text; combinations such as Unique|Duplicate are "Invalid".
const char* PropertiesText(std::uint32_t properties) noexcept {
    switch (properties) {
        case IndexSpecification::NoProperty: return "None";
        case IndexSpecification::UniqueProperty: return "Unique";
        case IndexSpecification::DuplicateProperty: return "Duplicate";
        case IndexSpecification::PrimaryUniqueProperty: return "PrimaryUnqiue";
        default: return "Invalid";
    }
}

}  // namespace

StatusCode IndexSpecification::Field::Serialize(MessageBuilder& builder) const {
    StatusCode status = builder.AppendId16(id_);
    if (status == Status::Success) status = builder.AppendUInt32(flags_);
    return status;
}

StatusCode IndexSpecification::Field::Deserialize(MessageValidator& validator) {
    StatusCode status = validator.ReadId16(id_);
    if (status == Status::Success) status = validator.ReadUInt32(flags_);
    return status;
}

IndexSpecification::IndexSpecification(const std::string& name, Type type, std::uint32_t properties,
                                       const std::vector<Field>& fields)
    : name_(name), type_(type), properties_(properties), fields_(fields) {
    Validate();
}

IndexSpecification::IndexSpecification(std::uint16_t number, const std::string& name, Type type,
                                       std::uint32_t properties, const std::vector<Field>& fields,
                                       const std::vector<std::uint16_t>& additionalFieldIds)
    : number_(number),
      name_(name),
      type_(type),
      properties_(properties),
      fields_(fields),
      additionalFieldIds_(additionalFieldIds) {
    Validate();
}

bool IndexSpecification::operator==(const IndexSpecification& other) const noexcept {
    return type_ == other.type_ && properties_ == other.properties_ && name_ == other.name_ &&
           fields_ == other.fields_;
}

void IndexSpecification::Validate() const {
    constexpr const char* kFunction = "Tavrin::Database::IndexSpecification::Validate";
    if (name_.empty()) {
        ThrowDatabase(kFunction, DatabaseException::InvalidParameter, "empty name in index specification <%u>",
                      static_cast<unsigned>(number_));
    }
    if (type_ == None) {
        ThrowDatabase(kFunction, DatabaseException::InvalidParameter, "invalid type <%u> in index specification <%s>",
                      static_cast<unsigned>(type_), name_.c_str());
    }
    if ((properties_ & NoProperty) != 0) {
        ThrowDatabase(kFunction, DatabaseException::InvalidParameter, "invalid index properties <%u> for index <%s>",
                      static_cast<unsigned>(properties_), name_.c_str());
    }
}

StatusCode IndexSpecification::Serialize(MessageBuilder& builder) const {
    StatusCode status = builder.AppendId16(number_);
    if (status == Status::Success) status = builder.AppendString(name_);
    if (status == Status::Success) status = builder.AppendUInt32(type_);
    if (status == Status::Success) status = builder.AppendUInt32(properties_);
    if (status == Status::Success) status = builder.AppendUInt32(static_cast<std::uint32_t>(fields_.size()));
    for (auto field = fields_.begin(); status == Status::Success && field != fields_.end(); ++field) {
        status = field->Serialize(builder);
    }
    return status;
}

StatusCode IndexSpecification::Deserialize(MessageValidator& validator) {
    StatusCode status = validator.ReadId16(number_);
    if (status == Status::Success) status = validator.ValidateString(&name_, nullptr, nullptr);
    std::uint32_t type = None;
    if (status == Status::Success) status = validator.ReadUInt32(type);
    if (status == Status::Success) type_ = static_cast<Type>(type);
    if (status == Status::Success) status = validator.ReadUInt32(properties_);
    std::uint32_t count = 0;
    if (status == Status::Success) status = validator.ReadUInt32(count);
    if (status != Status::Success) return status;

    // The count comes from the message: grow the list as fields arrive rather than trusting it.
    fields_.clear();
    for (std::uint32_t i = 0; i < count; ++i) {
        Field field;
        status = field.Deserialize(validator);
        if (status != Status::Success) return status;
        fields_.push_back(field);
    }
    return Status::Success;
}

bool IndexSpecification::IsMatch(const IndexSpecification& pattern) const {
    if (pattern.number_ != NoNumber && pattern.number_ != number_) return false;
    if (!pattern.name_.empty() && pattern.name_ != name_) return false;
    if (pattern.type_ != None && pattern.type_ != type_) return false;
    if (pattern.properties_ != NoProperty && pattern.properties_ != properties_) return false;
    if (!pattern.fields_.empty() && pattern.fields_ != fields_) return false;
    if (!pattern.additionalFieldIds_.empty() && pattern.additionalFieldIds_ != additionalFieldIds_) return false;
    return true;
}

std::string IndexSpecification::ToString() const {
    std::ostringstream stream;
    stream << "Number ....................... " << number_ << std::endl
           << "Name ......................... " << name_ << std::endl
           << "Type ......................... " << TypeText(type_) << std::endl
           << "Properties ................... " << PropertiesText(properties_) << std::endl;
    for (const Field& field : fields_) {
        stream << "Field id ..................... " << field.GetId() << ", "
               << (Field::IsDescending(field.GetFlags()) ? "Descending" : "Ascending") << std::endl;
    }
    return stream.str();
}

std::ostream& operator<<(std::ostream& stream, const IndexSpecification& specification) {
    return stream << specification.ToString();
}

}  // namespace Tavrin::Database
