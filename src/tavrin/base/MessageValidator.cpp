#include "tavrin/base/MessageValidator.h"

#include <cstring>

namespace Tavrin {

StatusCode MessageValidator::ValidateString(std::string* string, const void** data, std::uint32_t* length) {
    if (length_ - offset_ < 2) return Status::Invalid;
    const std::uint16_t size = DecodeU16(data_ + offset_);
    if (length_ - offset_ - 2 < size) return Status::Invalid;
    const unsigned char* characters = data_ + offset_ + 2;
    if (string) string->assign(reinterpret_cast<const char*>(characters), size);
    if (data) *data = characters;
    if (length) *length = size;
    offset_ += 2u + size;
    return Status::Success;
}

StatusCode MessageValidator::ValidateBytesCopy(std::uint32_t length, void* destination) noexcept {
    if (length_ - offset_ < length) return Status::Invalid;
    if (length != 0) std::memcpy(destination, data_ + offset_, length);
    offset_ += length;
    return Status::Success;
}

StatusCode MessageValidator::ValidateBytes(std::uint32_t length, const void*& data) noexcept {
    if (length_ - offset_ < length) return Status::Invalid;
    data = data_ + offset_;
    offset_ += length;
    return Status::Success;
}

}  // namespace Tavrin
