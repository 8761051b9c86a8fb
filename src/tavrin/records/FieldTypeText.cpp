#include "tavrin/records/FieldTypeText.h"

#include "tavrin/base/Encoding.h"
#include "tavrin/base/FieldTypes/BinaryString.h"
#include "tavrin/base/FieldTypes/Blob.h"
#include "tavrin/base/FieldTypes/CrcBlob.h"
#include "tavrin/base/FieldTypes/Date.h"
#include "tavrin/base/FieldTypes/DateTime.h"
#include "tavrin/base/FieldTypes/Rational.h"
#include "tavrin/base/FieldTypes/TRational.h"
#include "tavrin/base/FieldTypes/Time.h"

namespace Tavrin::Database {

namespace {
bool IsIntegerWidth(std::uint32_t length) noexcept { return length == 1 || length == 2 || length == 4 || length == 8; }
}  // namespace

std::string TextOfCharacters(const unsigned char* value, std::uint32_t length) {
    std::string text(reinterpret_cast<const char*>(value), length);
    for (char& character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 32 || byte >= 127) character = '.';
    }
    return text;
}

std::string TextOfSignedInteger(const unsigned char* value, std::uint32_t length) {
    if (length == 1) return std::string(1, static_cast<char>(value[0]));
    if (!IsIntegerWidth(length)) return std::string();
    return std::to_string(DecodeSigned(value, length));
}

std::string TextOfUnsignedInteger(const unsigned char* value, std::uint32_t length) {
    if (!IsIntegerWidth(length)) return std::string();
    return std::to_string(DecodeUnsigned(value, length));
}

std::string TextOfBoolean(const unsigned char* value, std::uint32_t length) {
    return DecodeUnsigned(value, length) != 0 ? "true" : "false";
}

template <class Value>
std::string TextOfBody(const unsigned char* value, std::uint32_t length) {
    Value object;
    return object.DeserializeBody(value, length) == Status::Success ? object.ToString() : std::string();
}

template std::string TextOfBody<BinaryString>(const unsigned char*, std::uint32_t);
template std::string TextOfBody<Blob>(const unsigned char*, std::uint32_t);
template std::string TextOfBody<CrcBlob>(const unsigned char*, std::uint32_t);
template std::string TextOfBody<Date>(const unsigned char*, std::uint32_t);
template std::string TextOfBody<DateTime>(const unsigned char*, std::uint32_t);
template std::string TextOfBody<Rational>(const unsigned char*, std::uint32_t);
template std::string TextOfBody<Time>(const unsigned char*, std::uint32_t);
template std::string TextOfBody<TRational>(const unsigned char*, std::uint32_t);

}  // namespace Tavrin::Database
