#include "tavrin/base/FieldTypes/Blob.h"

#include <cstring>
#include <new>
#include <utility>

#include "tavrin/base/Encoding.h"
#include "tavrin/base/FieldTypes/BodyOrder.h"
#include "tavrin/base/FieldTypes/TextScanner.h"
#include "tavrin/base/FieldTypes/ValueBytes.h"

namespace Tavrin {

StatusCode Blob::Set(const void* data, std::uint32_t length) {
    if (length > spareCapacity_ || !spare_) {
        // At least one byte, so that a defined value always has an array to point at.
        const std::uint32_t capacity = length == 0 ? 1 : length;
        std::unique_ptr<unsigned char[]> larger(new (std::nothrow) unsigned char[capacity]);
        if (!larger) return Status::OutOfMemory;
        spare_ = std::move(larger);
        spareCapacity_ = capacity;
    }
    if (length != 0) std::memcpy(spare_.get(), data, length);
    std::swap(data_, spare_);
    std::swap(dataCapacity_, spareCapacity_);
    length_ = length;
    defined = true;
    OnDataChanged();
    return Status::Success;
}

void Blob::Reset() {
    length_ = 0;
    defined = false;
}

void Blob::Clear() {
    data_.reset();
    spare_.reset();
    dataCapacity_ = 0;
    spareCapacity_ = 0;
    Reset();
}

bool Blob::Decode(const void* body, std::uint32_t length, const unsigned char*& data,
                  std::uint32_t& dataLength) noexcept {
    if (length < HeaderSize || DecodeU32(body) != length - HeaderSize) return false;
    data = static_cast<const unsigned char*>(body) + HeaderSize;
    dataLength = length - HeaderSize;
    return true;
}

StatusCode Blob::CompareBodies(DecodeFunction decode, const void* a, std::uint32_t lengthA, const void* b,
                               std::uint32_t lengthB, int& result) {
    using Data = std::pair<const unsigned char*, std::uint32_t>;
    return BodyOrder::CompareDecoded<Data>(
        a, lengthA, b, lengthB, result,
        [decode](const void* body, std::uint32_t length, Data& data) { return decode(body, length, data.first, data.second); },
        [](const Data& dataA, const Data& dataB) {
            return BodyOrder::CompareBytes(dataA.first, dataA.second, dataB.first, dataB.second);
        });
}

StatusCode Blob::Compare(const void* a, std::uint32_t lengthA, const void* b, std::uint32_t lengthB,
                         int& result) {
    return CompareBodies(&Blob::Decode, a, lengthA, b, lengthB, result);
}

StatusCode Blob::Compare(const void* data, std::uint32_t length, int& result) const {
    if (!defined) return Status::NotUsable;
    const unsigned char* otherData = nullptr;
    std::uint32_t otherLength = 0;
    if (!GetDecoder()(data, length, otherData, otherLength)) {
        result = 1;
        return Status::Invalid;
    }
    result = BodyOrder::CompareBytes(GetData(), length_, otherData, otherLength);
    return Status::Success;
}

std::string Blob::ToString() const {
    return ToString(false);
}

std::string Blob::ToString(bool printable) const {
    return defined ? TextForms::BytesToText(GetData(), length_, printable) : std::string();
}

StatusCode Blob::FromString(MessageValidator& text) {
    std::string bytes;
    if (!TextForms::FromHex(TextScanner::TakeRest(text), bytes)) return Status::Invalid;
    return Set(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

void Blob::EncodeHeader(unsigned char* header) const noexcept {
    EncodeU32(header, length_);
}

StatusCode Blob::SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const {
    if (!defined) return Status::NotUsable;
    const std::uint32_t bodySize = GetBodySize();
    if (size < bodySize) return Status::LengthMismatch;
    auto* bytes = static_cast<unsigned char*>(buffer);
    EncodeHeader(bytes);
    if (length_ != 0) std::memcpy(bytes + GetHeaderSize(), GetData(), length_);
    written = bodySize;
    return Status::Success;
}

StatusCode Blob::DeserializeBody(const void* data, std::uint32_t length) {
    const unsigned char* bodyData = nullptr;
    std::uint32_t bodyDataLength = 0;
    if (!GetDecoder()(data, length, bodyData, bodyDataLength)) return Status::Invalid;
    return Set(bodyData, bodyDataLength);
}

StatusCode Blob::IsDifferent(const void* data, std::uint32_t length, bool& different) const {
    if (!defined) return Status::NotUsable;
    const std::uint32_t headerSize = GetHeaderSize();
    unsigned char header[16];
    EncodeHeader(header);
    different = length != GetBodySize() || std::memcmp(header, data, headerSize) != 0 ||
                (length_ != 0 && std::memcmp(GetData(), static_cast<const unsigned char*>(data) + headerSize, length_) != 0);
    return Status::Success;
}

StatusCode Blob::ConvertFrom(const IFieldType& other) {
    const unsigned char* data = nullptr;
    std::uint32_t length = 0;
    return GetValueBytes(other, data, length) ? Set(data, length) : Status::WrongType;
}

}  // namespace Tavrin
