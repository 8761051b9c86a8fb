#include "base/FieldTypes/TextArray.h"

#include <cstring>

#include "base/FieldTypes/BodyOrder.h"

namespace Tavrin {

StatusCode TextArray::Compare(const void* data, std::uint32_t length, int& result) const {
    if (!defined) return Status::NotUsable;
    result = BodyOrder::ComparePadded(GetText().data(), GetTextLength(), data, length);
    return Status::Success;
}

StatusCode TextArray::SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const {
    std::uint32_t textLength = 0;
    const StatusCode status = TextString::SerializeBody(buffer, size, textLength);
    if (status != Status::Success) return status;
    std::memset(static_cast<unsigned char*>(buffer) + textLength, 0, size - textLength);
    written = size;
    return Status::Success;
}

StatusCode TextArray::DeserializeBody(const void* data, std::uint32_t length) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    while (length > 0 && bytes[length - 1] == 0) --length;
    return TextString::DeserializeBody(data, length);
}

StatusCode TextArray::IsDifferent(const void* data, std::uint32_t length, bool& different) const {
    if (!defined) return Status::NotUsable;
    different = !BodyOrder::IsPaddedEqual(GetText().data(), GetTextLength(), data, length);
    return Status::Success;
}

}  // namespace Tavrin

