#include "tavrin/base/FieldTypes/BinaryString.h"

#include <cstring>
#include <new>

#include "tavrin/base/FieldTypes/BodyOrder.h"
#include "tavrin/base/FieldTypes/TextScanner.h"
#include "tavrin/base/FieldTypes/ValueBytes.h"

namespace Tavrin {

namespace {

constexpr std::uint32_t MaxMessageLength = 0xFF;

}  // namespace

StatusCode BinaryString::Set(const void* data, std::uint32_t length) {
    if (length > GetCapacity()) {
        std::unique_ptr<unsigned char[]> larger(new (std::nothrow) unsigned char[length]);
        if (!larger) return Status::OutOfMemory;
        std::memcpy(larger.get(), data, length);
        heap_ = std::move(larger);
        heapCapacity_ = length;
    } else if (length != 0) {
        std::memmove(heap_ ? heap_.get() : inline_, data, length);
    }
    length_ = length;
    defined = true;
    return Status::Success;
}

void BinaryString::Reset() {
    length_ = 0;
    defined = false;
}

void BinaryString::Clear() {
    heap_.reset();
    heapCapacity_ = 0;
    Reset();
}

StatusCode BinaryString::Compare(const void* data, std::uint32_t length, int& result) const {
    if (!defined) return Status::NotUsable;
    result = BodyOrder::CompareBytes(GetData(), length_, data, length);
    return Status::Success;
}

std::string BinaryString::ToString() const {
    return ToString(false);
}

std::string BinaryString::ToString(bool printable) const {
    return defined ? TextForms::BytesToText(GetData(), length_, printable) : std::string();
}

StatusCode BinaryString::FromString(MessageValidator& text) {
    std::string bytes;
    if (!TextForms::FromHex(TextScanner::TakeRest(text), bytes)) return Status::Invalid;
    return Set(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

StatusCode BinaryString::SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const {
    if (!defined) return Status::NotUsable;
    if (size < length_) return Status::LengthMismatch;
    if (length_ != 0) std::memcpy(buffer, GetData(), length_);
    written = length_;
    return Status::Success;
}

StatusCode BinaryString::SerializeLengthAndBody(MessageBuilder& builder, std::uint32_t) const {
    if (!defined) return Status::NotUsable;
    if (length_ > MaxMessageLength) return Status::LengthMismatch;
    const StatusCode status = builder.AppendUInt8(static_cast<std::uint8_t>(length_));
    return status != Status::Success ? status : builder.AppendBytes(GetData(), length_);
}

StatusCode BinaryString::DeserializeBody(const void* data, std::uint32_t length) {
    return Set(data, length);
}

StatusCode BinaryString::DeserializeLengthAndBody(MessageValidator& validator, std::uint32_t) {
    std::uint8_t length = 0;
    const StatusCode status = validator.ReadUInt8(length);
    return status != Status::Success ? status : ReadBody(validator, length);
}

StatusCode BinaryString::IsDifferent(const void* data, std::uint32_t length, bool& different) const {
    if (!defined) return Status::NotUsable;
    different = BodyOrder::CompareBytes(GetData(), length_, data, length) != 0;
    return Status::Success;
}

StatusCode BinaryString::ConvertFrom(const IFieldType& other) {
    const unsigned char* data = nullptr;
    std::uint32_t length = 0;
    return GetValueBytes(other, data, length) ? Set(data, length) : Status::WrongType;
}

}  // namespace Tavrin
