#include "tavrin/base/FieldTypes/ValueBytes.h"

#include "tavrin/base/FieldTypes/BinaryString.h"
#include "tavrin/base/FieldTypes/Blob.h"
#include "tavrin/base/FieldTypes/TextString.h"

namespace Tavrin {

bool GetValueBytes(const IFieldType& value, const unsigned char*& data, std::uint32_t& length) {
    if (const auto* binary = dynamic_cast<const BinaryString*>(&value)) {
        data = binary->GetData();
        length = binary->GetLength();
    } else if (const auto* blob = dynamic_cast<const Blob*>(&value)) {
        data = blob->GetData();
        length = blob->GetLength();
    } else if (const auto* text = dynamic_cast<const TextString*>(&value)) {
        data = reinterpret_cast<const unsigned char*>(text->GetText().data());
        length = static_cast<std::uint32_t>(text->GetText().size());
    } else {
        return false;
    }
    return true;
}

}  // namespace Tavrin
