#include "tavrin/records/FieldSpecification.h"

#include <array>
#include <sstream>

#include <boost/format.hpp>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/records/FieldTypeTable.h"

namespace Tavrin::Database {

namespace {

// Base library type numbers run from 0 to 13; 13 has no database type. The reverse direction is
// the baseType column of FieldTypeTable.
constexpr std::uint32_t kBaseTypeCount = 14;
constexpr std::uint32_t kNoDatabaseType = FieldSpecification::TypeCount;

constexpr std::array<std::uint32_t, kBaseTypeCount> kDatabaseTypeByBaseType = {
    FieldSpecification::Date,        FieldSpecification::Time,         FieldSpecification::DateTime,
    FieldSpecification::SInt,        FieldSpecification::UInt,         FieldSpecification::Rational,
    FieldSpecification::TRational,   FieldSpecification::TextString,   FieldSpecification::TextArray,
    FieldSpecification::BinaryString, FieldSpecification::BinaryArray, FieldSpecification::Blob,
    FieldSpecification::CrcBlob,     kNoDatabaseType,
};

// Columns: id, name, type name, maxLength, offset, properties; each cut to its width.
constexpr const char* kFormattedLine = "%|-6.6s| %|-25.25s| %|-12.12s| %|9.9s| %|9.9s| %|9.9s|\n";

}  // namespace

FieldSpecification::FieldSpecification(std::uint16_t id, const std::string& name, Type type,
                                       std::uint32_t maxLength, std::uint32_t offset,
                                       std::uint32_t properties)
    : id_(id), name_(name), type_(type), maxLength_(maxLength), offset_(offset), properties_(properties) {
    Validate();
}

bool FieldSpecification::operator==(const FieldSpecification& other) const noexcept {
    return id_ == other.id_ && type_ == other.type_ && maxLength_ == other.maxLength_ &&
           name_ == other.name_;
}

void FieldSpecification::Validate() const {
    if (type_ >= TypeCount) {
        ThrowDatabase("Tavrin::Database::FieldSpecification::Validate", DatabaseException::InvalidParameter,
                      "invalid field type <%u> for field <%s>", static_cast<unsigned>(type_), name_.c_str());
    }
    GetFieldTypeInfo(type_).validate(*this);
}

StatusCode FieldSpecification::Serialize(MessageBuilder& builder) const {
    StatusCode status = builder.AppendId16(id_);
    if (status == Status::Success) status = builder.AppendString(name_);
    if (status == Status::Success) status = builder.AppendUInt32(type_);
    if (status == Status::Success) status = builder.AppendUInt32(maxLength_);
    if (status == Status::Success) status = builder.AppendUInt32(offset_);
    if (status == Status::Success) status = builder.AppendUInt32(properties_);
    return status;
}

StatusCode FieldSpecification::Deserialize(MessageValidator& validator) {
    StatusCode status = validator.ReadId16(id_);
    if (status == Status::Success) status = validator.ValidateString(&name_, nullptr, nullptr);
    std::uint32_t type = 0;
    if (status == Status::Success) status = validator.ReadUInt32(type);
    if (status == Status::Success) type_ = static_cast<Type>(type);
    if (status == Status::Success) status = validator.ReadUInt32(maxLength_);
    if (status == Status::Success) status = validator.ReadUInt32(offset_);
    if (status == Status::Success) status = validator.ReadUInt32(properties_);
    return status;
}

StatusCode FieldSpecification::GetDatabaseFieldType(unsigned char baseType, Type& type) noexcept {
    if (baseType >= kBaseTypeCount) return Status::WrongType;
    const std::uint32_t databaseType = kDatabaseTypeByBaseType[baseType];
    type = static_cast<Type>(databaseType);
    return databaseType == kNoDatabaseType ? Status::WrongType : Status::Success;
}

StatusCode FieldSpecification::GetTavrinFieldType(Type type, unsigned char& baseType) noexcept {
    if (type >= TypeCount) return Status::WrongType;
    baseType = GetFieldTypeInfo(type).baseType;
    return baseType == NoBaseType ? Status::WrongType : Status::Success;
}

bool FieldSpecification::IsMatch(const FieldSpecification& pattern) const {
    bool anyCriterion = false;
    auto differs = [&anyCriterion](bool isCriterion, bool isEqual) {
        anyCriterion = anyCriterion || isCriterion;
        return isCriterion && !isEqual;
    };
    if (differs(pattern.id_ != NoFieldId, id_ == pattern.id_)) return false;
    if (differs(!pattern.name_.empty(), name_ == pattern.name_)) return false;
    if (differs(pattern.type_ != None, type_ == pattern.type_)) return false;
    if (differs(pattern.maxLength_ != 0, maxLength_ == pattern.maxLength_)) return false;
    if (differs(pattern.offset_ != 0, offset_ == pattern.offset_)) return false;
    if (differs(pattern.properties_ != 0, properties_ == pattern.properties_)) return false;
    return anyCriterion || *this == FieldSpecification();
}

const char* FieldSpecification::GetTypeName(Type type) noexcept {
    return type < TypeCount ? GetFieldTypeInfo(type).name : "Unknown";
}

std::string FieldSpecification::ToString() const {
    std::ostringstream stream;
    stream << "Id ........................... " << id_ << std::endl
           << "Name ......................... " << name_ << std::endl
           << "Type ......................... " << GetTypeName(type_) << std::endl
           << "Max length ................... " << maxLength_ << std::endl
           << "Offset ....................... " << offset_ << std::endl
           << "Properties ................... " << properties_ << std::endl
           << "Order descending ............. " << (IsDescending() ? "true" : "false") << std::endl;
    return stream.str();
}

std::string FieldSpecification::ToFormattedHeaderString() {
    return (boost::format(kFormattedLine) % "Id" % "Name" % "Type" % "MaxLength" % "Offset" % "Property")
        .str();
}

std::string FieldSpecification::ToFormattedString() const {
    return (boost::format(kFormattedLine) % id_ % name_ % GetTypeName(type_) % maxLength_ % offset_ %
            properties_)
        .str();
}

std::ostream& operator<<(std::ostream& stream, const FieldSpecification& specification) {
    return stream << specification.ToString();
}

}  // namespace Tavrin::Database
