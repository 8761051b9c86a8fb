// The text forms of a record image: ToString, one line per field for people, and ToLogString, one
// line of values for logs.

#include <memory>

#include "tavrin/base/FieldTypes/FieldTypeFactory.h"
#include "tavrin/records/FieldList.h"

namespace Tavrin::Database {

namespace {

constexpr std::size_t NameWidth = 30;
constexpr std::size_t NameColumn = 32;
// 32 + 47 = 79 characters at most per line.
constexpr std::size_t ValueWidth = 47;

// The value's text by the object that its value class makes of it; empty where there is none.
std::string LogTextOf(const FieldSpecification& field, const unsigned char* value, std::uint32_t length) {
    unsigned char baseType = 0;
    if (FieldSpecification::GetTavrinFieldType(field.GetType(), baseType) != Status::Success) return std::string();
    const std::unique_ptr<IFieldType> object(FieldTypeFactory::GetInstance().Create(baseType));
    if (object == nullptr || object->DeserializeBody(value, length) != Status::Success) return std::string();
    return object->ToString();
}

}  // namespace

std::string FieldList::ToString(const unsigned char* data) const {
    std::string text;
    for (std::uint32_t number = 0; number < GetFieldCount(); ++number) {
        const FieldEntry& entry = GetEntry(number);
        std::string line = entry.GetName().substr(0, NameWidth);
        line.resize(NameColumn, ' ');
        if (IsFieldDefined(number, data)) {
            const std::string value = entry.GetTypeInfo().text(data + entry.GetOffset(), ReadValueLength(entry, data));
            line.append(value, 0, ValueWidth);
        } else {
            line += "Undefined";
        }
        text += line;
        text += '\n';
    }
    return text;
}

std::string FieldList::ToLogString(const unsigned char* data) const {
    std::string text;
    for (std::uint32_t number = 0; number < GetFieldCount(); ++number) {
        if (number != 0) text += ',';
        const FieldEntry& entry = GetEntry(number);
        if (IsFieldDefined(number, data)) {
            text += LogTextOf(entry, data + entry.GetOffset(), ReadValueLength(entry, data));
        }
    }
    return text;
}

}  // namespace Tavrin::Database
