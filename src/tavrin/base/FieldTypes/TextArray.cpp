#include "tavrin/base/FieldTypes/TextArray.h"

namespace Tavrin {

StatusCode TextArray::DeserializeBody(const void* data, std::uint32_t length) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    while (length > 0 && bytes[length - 1] == 0) --length;
    return TextString::DeserializeBody(data, length);
}

}  // namespace Tavrin
