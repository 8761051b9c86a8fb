#include "tavrin/base/FieldTypes/IFieldType.h"

#include "tavrin/base/FieldTypes/TextString.h"

#include <cstring>
#include <memory>
#include <new>

namespace Tavrin {

namespace {

// Runs `use(body, length)` on this value's body, built on the stack when it is small and on the
// heap otherwise (only the message and difference paths of long values get there).
template <class Use>
StatusCode WithBody(const IFieldType& value, Use use) {
    const std::uint32_t size = value.GetBodySize();
    unsigned char small[32];
    std::unique_ptr<unsigned char[]> large;
    unsigned char* buffer = small;
    if (size > sizeof(small)) {
        large.reset(new (std::nothrow) unsigned char[size]);
        if (!large) return Status::OutOfMemory;
        buffer = large.get();
    }
    std::uint32_t written = 0;
    const StatusCode status = value.SerializeBody(buffer, size, written);
    if (status != Status::Success) return status;
    return use(buffer, written);
}

}  // namespace

StatusCode IFieldType::Convert(const IFieldType* other) {
    if (other == nullptr) return Status::Invalid;
    if (!other->defined) {
        Reset();
        return Status::Success;
    }
    const StatusCode status = ConvertFrom(*other);
    if (status != Status::WrongType) return status;
    const auto* text = dynamic_cast<const TextString*>(other);
    if (text == nullptr) return Status::WrongType;
    MessageValidator validator(text->GetText().data(), static_cast<std::uint32_t>(text->GetText().size()));
    return FromString(validator);
}

StatusCode IFieldType::Serialize(MessageBuilder& builder, std::uint32_t options) const {
    const StatusCode status = builder.AppendUInt8(defined ? 1 : 0);
    if (status != Status::Success || !defined) return status;
    return SerializeLengthAndBody(builder, options);
}

StatusCode IFieldType::SerializeLengthAndBody(MessageBuilder& builder, std::uint32_t) const {
    if (!defined) return Status::NotUsable;
    return WithBody(*this, [&](const unsigned char* body, std::uint32_t length) {
        const StatusCode status = builder.AppendUInt32(length);
        return status != Status::Success ? status : builder.AppendBytes(body, length);
    });
}

StatusCode IFieldType::AppendBody(MessageBuilder& builder) const {
    if (!defined) return Status::NotUsable;
    return WithBody(*this, [&](const unsigned char* body, std::uint32_t length) {
        return builder.AppendBytes(body, length);
    });
}

StatusCode IFieldType::Deserialize(MessageValidator& validator, std::uint32_t options) {
    std::uint8_t isDefined = 0;
    const StatusCode status = validator.ReadUInt8(isDefined);
    if (status != Status::Success) return status;
    if (isDefined > 1) return Status::Invalid;
    if (isDefined == 0) {
        Reset();
        return Status::Success;
    }
    return DeserializeLengthAndBody(validator, options);
}

StatusCode IFieldType::DeserializeLengthAndBody(MessageValidator& validator, std::uint32_t) {
    std::uint32_t length = 0;
    const StatusCode status = validator.ReadUInt32(length);
    return status != Status::Success ? status : ReadBody(validator, length);
}

std::uint32_t IFieldType::GetLengthAndBodySize() const {
    return defined ? 4 + GetBodySize() : 0;
}

StatusCode IFieldType::IsDifferent(const void* data, std::uint32_t length, bool& different) const {
    if (!defined) return Status::NotUsable;
    return WithBody(*this, [&](const unsigned char* body, std::uint32_t bodyLength) {
        different = bodyLength != length || (length != 0 && std::memcmp(body, data, length) != 0);
        return Status::Success;
    });
}

StatusCode IFieldType::CompareSmallBody(const void* data, std::uint32_t length, int& result,
                                        BodyCompareFunction compare) const {
    if (!defined) return Status::NotUsable;
    unsigned char body[SmallBodyCapacity];
    std::uint32_t written = 0;
    const StatusCode status = SerializeBody(body, sizeof(body), written);
    if (status != Status::Success) return status;
    return compare(body, written, data, length, result);
}

StatusCode IFieldType::ReadBody(MessageValidator& validator, std::uint32_t bodyLength) {
    const void* body = nullptr;
    const StatusCode status = validator.ValidateBytes(bodyLength, body);
    return status != Status::Success ? status : DeserializeBody(body, bodyLength);
}

}  // namespace Tavrin
