#pragma once
// PaddedBytes<Base>: the fixed-size field form of a byte class (TextArray over TextString,
// BinaryArray over BinaryString).
//
// Body: the value's bytes, padded with zero bytes to the field's size. SerializeBody fills the whole
// buffer it is given (status 22 if the value is longer). Compare and IsDifferent look at the value
// as padded to the length of the bytes they are given. Base supplies ValueData() and
// ValueLength().

#include <cstdint>
#include <cstring>

#include "tavrin/base/FieldTypes/BodyOrder.h"

namespace Tavrin {

template <class Base>
class PaddedBytes : public Base {
public:
    StatusCode Compare(const void* data, std::uint32_t length, int& result) const override {
        if (!this->defined) return Status::NotUsable;
        result = BodyOrder::ComparePadded(this->ValueData(), this->ValueLength(), data, length);
        return Status::Success;
    }

    StatusCode SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const override {
        std::uint32_t valueLength = 0;
        const StatusCode status = Base::SerializeBody(buffer, size, valueLength);
        if (status != Status::Success) return status;
        std::memset(static_cast<unsigned char*>(buffer) + valueLength, 0, size - valueLength);
        written = size;
        return Status::Success;
    }

    StatusCode IsDifferent(const void* data, std::uint32_t length, bool& different) const override {
        if (!this->defined) return Status::NotUsable;
        different = !BodyOrder::IsPaddedEqual(this->ValueData(), this->ValueLength(), data, length);
        return Status::Success;
    }

protected:
    explicit PaddedBytes(std::uint8_t typeNumber) noexcept : Base(typeNumber) {}
};

}  // namespace Tavrin
