#include "tavrin/base/FieldTypes/FieldTypeFactory.h"

#include <new>

#include "tavrin/base/FieldTypes/BinaryArray.h"
#include "tavrin/base/FieldTypes/CrcBlob.h"
#include "tavrin/base/FieldTypes/DateTime.h"
#include "tavrin/base/FieldTypes/SInt.h"
#include "tavrin/base/FieldTypes/TRational.h"
#include "tavrin/base/FieldTypes/TextArray.h"
#include "tavrin/base/FieldTypes/UInt.h"

namespace Tavrin {

IFieldType* FieldTypeFactory::Create(std::uint8_t number) const {
    switch (number) {
        case FieldTypeNumber::Date: return new (std::nothrow) Date;
        case FieldTypeNumber::Time: return new (std::nothrow) Time;
        case FieldTypeNumber::DateTime: return new (std::nothrow) DateTime;
        case FieldTypeNumber::SInt: return new (std::nothrow) SInt;
        case FieldTypeNumber::UInt: return new (std::nothrow) UInt;
        case FieldTypeNumber::Rational: return new (std::nothrow) Rational;
        case FieldTypeNumber::TRational: return new (std::nothrow) TRational;
        case FieldTypeNumber::TextString: return new (std::nothrow) TextString;
        case FieldTypeNumber::TextArray: return new (std::nothrow) TextArray;
        case FieldTypeNumber::BinaryString: return new (std::nothrow) BinaryString;
        case FieldTypeNumber::BinaryArray: return new (std::nothrow) BinaryArray;
        case FieldTypeNumber::Blob: return new (std::nothrow) Blob;
        case FieldTypeNumber::CrcBlob: return new (std::nothrow) CrcBlob;
        default: return nullptr;
    }
}

}  // namespace Tavrin
