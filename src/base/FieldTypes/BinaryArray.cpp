#include "base/FieldTypes/BinaryArray.h"

#include <cstring>

#include "base/FieldTypes/BodyOrder.h"

namespace Tavrin {

StatusCode BinaryArray::Compare(const void* data, std::uint32_t length, int& result) const {
    if (!defined) return Status::NotUsable;
    result = BodyOrder::ComparePadded(GetData(), GetLength(), data, length);
    return Status::Success;
}

StatusCode BinaryArray::SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const {
    std::uint32_t valueLength = 0;
    const StatusCode status = BinaryString::SerializeBody(buffer, size, valueLength);
    if (status != Status::Success) return status;
    std::memset(static_cast<unsigned char*>(buffer) + valueLength, 0, size - valueLength);
    written = size;
    return Status::Success;
}

StatusCode BinaryArray::IsDifferent(const void* data, std::uint32_t length, bool& different) const {
    if (!defined) return Status::NotUsable;
    different = !BodyOrder::IsPaddedEqual(GetData(), GetLength(), data, length);
    return Status::Success;
}

}  // namespace Tavrin
