// The public typed SetField and GetField overloads: each forwards to its family in
// FieldListTyped.cpp.

#include "tavrin/records/FieldList.h"

namespace Tavrin::Database {

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, char value) const {
    return SetFieldV(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, signed char value) const {
    return SetFieldV(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, unsigned char value) const {
    return SetFieldV(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, std::int16_t value) const {
    return SetFieldV(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, std::uint16_t value) const {
    return SetFieldV(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, std::int32_t value) const {
    return SetFieldV(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, std::uint32_t value) const {
    return SetFieldV(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, std::int64_t value) const {
    return SetFieldV(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, std::uint64_t value) const {
    return SetFieldV(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, char value, bool& changed) const {
    return SetFieldV(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, signed char value, bool& changed) const {
    return SetFieldV(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, unsigned char value, bool& changed) const {
    return SetFieldV(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, std::int16_t value, bool& changed) const {
    return SetFieldV(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, std::uint16_t value, bool& changed) const {
    return SetFieldV(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, std::int32_t value, bool& changed) const {
    return SetFieldV(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, std::uint32_t value, bool& changed) const {
    return SetFieldV(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, std::int64_t value, bool& changed) const {
    return SetFieldV(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, std::uint64_t value, bool& changed) const {
    return SetFieldV(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const std::string& value) const {
    return SetFieldR(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const IFieldType& value) const {
    return SetFieldR(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const BinaryArray& value) const {
    return SetFieldR(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const BinaryString& value) const {
    return SetFieldR(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const Blob& value) const {
    return SetFieldR(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const CrcBlob& value) const {
    return SetFieldR(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const Date& value) const {
    return SetFieldR(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const DateTime& value) const {
    return SetFieldR(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const Rational& value) const {
    return SetFieldR(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const SInt& value) const {
    return SetFieldR(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const TextArray& value) const {
    return SetFieldR(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const TextString& value) const {
    return SetFieldR(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const Time& value) const {
    return SetFieldR(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const TRational& value) const {
    return SetFieldR(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const UInt& value) const {
    return SetFieldR(data, id, value);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const std::string& value, bool& changed) const {
    return SetFieldR(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const IFieldType& value, bool& changed) const {
    return SetFieldR(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const BinaryArray& value, bool& changed) const {
    return SetFieldR(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const BinaryString& value, bool& changed) const {
    return SetFieldR(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const Blob& value, bool& changed) const {
    return SetFieldR(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const CrcBlob& value, bool& changed) const {
    return SetFieldR(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const Date& value, bool& changed) const {
    return SetFieldR(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const DateTime& value, bool& changed) const {
    return SetFieldR(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const Rational& value, bool& changed) const {
    return SetFieldR(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const SInt& value, bool& changed) const {
    return SetFieldR(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const TextArray& value, bool& changed) const {
    return SetFieldR(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const TextString& value, bool& changed) const {
    return SetFieldR(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const Time& value, bool& changed) const {
    return SetFieldR(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const TRational& value, bool& changed) const {
    return SetFieldR(data, id, value, changed);
}

StatusCode FieldList::SetField(unsigned char* data, std::uint16_t id, const UInt& value, bool& changed) const {
    return SetFieldR(data, id, value, changed);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, char& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, signed char& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, unsigned char& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, std::int16_t& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, std::uint16_t& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, std::int32_t& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, std::uint32_t& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, std::int64_t& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, std::uint64_t& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, std::string& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, IFieldType& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, BinaryArray& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, BinaryString& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, Blob& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, CrcBlob& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, Date& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, DateTime& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, Rational& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, SInt& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, TextArray& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, TextString& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, Time& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, TRational& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, UInt& value) const {
    return GetFieldT(data, id, value);
}

StatusCode FieldList::GetField(const unsigned char* data, std::uint16_t id, std::unique_ptr<IFieldType>& value) const {
    return GetFieldT(data, id, value);
}

}  // namespace Tavrin::Database
