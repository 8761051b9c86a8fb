#include "tavrin/base/FieldTypes/TextString.h"

#include <cstring>
#include <new>

#include "tavrin/base/FieldTypes/BodyOrder.h"
#include "tavrin/base/FieldTypes/TextScanner.h"

namespace Tavrin {

StatusCode TextString::Set(std::string_view text) {
    try {
        text_.assign(text);
    } catch (const std::bad_alloc&) {
        return Status::OutOfMemory;
    }
    defined = true;
    return Status::Success;
}

void TextString::Reset() {
    text_.clear();
    defined = false;
}

void TextString::Clear() {
    std::string().swap(text_);
    defined = false;
}

StatusCode TextString::Compare(const void* data, std::uint32_t length, int& result) const {
    if (!defined) return Status::NotUsable;
    result = BodyOrder::CompareBytes(text_.data(), GetTextLength(), data, length);
    return Status::Success;
}

std::string TextString::ToString() const {
    return defined ? text_ : std::string();
}

StatusCode TextString::FromString(MessageValidator& text) {
    return Set(TextScanner::TakeRest(text));
}

StatusCode TextString::SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const {
    if (!defined) return Status::NotUsable;
    if (size < GetTextLength()) return Status::LengthMismatch;
    if (!text_.empty()) std::memcpy(buffer, text_.data(), text_.size());
    written = GetTextLength();
    return Status::Success;
}

StatusCode TextString::DeserializeBody(const void* data, std::uint32_t length) {
    return Set(std::string_view(static_cast<const char*>(data), length));
}

std::uint32_t TextString::GetBodySize() const {
    return defined ? GetTextLength() : 0;
}

StatusCode TextString::IsDifferent(const void* data, std::uint32_t length, bool& different) const {
    if (!defined) return Status::NotUsable;
    different = BodyOrder::CompareBytes(text_.data(), GetTextLength(), data, length) != 0;
    return Status::Success;
}

StatusCode TextString::ConvertFrom(const IFieldType& other) {
    try {
        return Set(other.ToString());
    } catch (const std::bad_alloc&) {
        return Status::OutOfMemory;
    }
}

}  // namespace Tavrin
