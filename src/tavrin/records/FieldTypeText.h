#pragma once
// The text forms of field values, one function per kind of type, for the text column of
// FieldTypeTable. Each takes a value's bytes and current length and gives its text, or an empty
// text for a value that cannot be shown; none fails.

#include <cstdint>
#include <string>

namespace Tavrin::Database {

/// Bytes as text, every byte below 32 or from 127 up shown as ".".
std::string TextOfCharacters(const unsigned char* value, std::uint32_t length);
///@{
/// Little-endian integers in decimal: signed of 2, 4 or 8 bytes (a single byte is taken as the
/// character it codes), unsigned of 1, 2, 4 or 8 bytes. Other lengths give an empty text.
std::string TextOfSignedInteger(const unsigned char* value, std::uint32_t length);
std::string TextOfUnsignedInteger(const unsigned char* value, std::uint32_t length);
///@}
/// "true" for a non-zero integer of 1, 2, 4 or 8 bytes, else "false".
std::string TextOfBoolean(const unsigned char* value, std::uint32_t length);
/// The ToString() of a value object of class `Value` filled from the bytes by DeserializeBody.
template <class Value>
std::string TextOfBody(const unsigned char* value, std::uint32_t length);

}  // namespace Tavrin::Database
