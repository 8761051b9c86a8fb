#include "tavrin/base/Uuid.h"

#include <algorithm>
#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid.hpp>
#include <boost/uuid/uuid_io.hpp>
#include <cstring>

#include "tavrin/base/Throw.h"

namespace Tavrin {

Uuid::Uuid() {
    try {
        // The generator takes its bits from the system's random source at each call, so values
        // made in forked processes or at once in several threads do not repeat.
        boost::uuids::random_generator generator;
        const boost::uuids::uuid value = generator();
        std::copy(value.begin(), value.end(), bytes_.begin());
    } catch (const std::exception&) {
        ThrowStatus("Tavrin::Uuid::Uuid", Status::Failure);
    }
}

Uuid::Uuid(const unsigned char* data, std::uint32_t size) noexcept {
    std::memcpy(bytes_.data(), data, std::min(size, BinarySize));
}

Uuid Uuid::Nil() noexcept {
    const unsigned char zeros[BinarySize] = {};
    return Uuid(zeros, BinarySize);
}

StatusCode Uuid::GetBinary(unsigned char* buffer, std::uint32_t size) const noexcept {
    if (size < BinarySize) return Status::BufferTooSmall;
    std::memcpy(buffer, bytes_.data(), BinarySize);
    return Status::Success;
}

std::string Uuid::ToString() const {
    boost::uuids::uuid value;
    std::copy(bytes_.begin(), bytes_.end(), value.begin());
    return boost::uuids::to_string(value);
}

}  // namespace Tavrin
