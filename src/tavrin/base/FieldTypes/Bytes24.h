#pragma once
// Three-byte little-endian integers, used by the Date and Time bodies. Built on the two-byte helper
// of base/Encoding.h: bytes 0 and 1 are the low 16 bits, byte 2 the high 8.

#include <cstdint>

#include "tavrin/base/Encoding.h"

namespace Tavrin {

inline constexpr std::uint32_t MaxU24 = 0xFFFFFF;

inline void EncodeU24(void* destination, std::uint32_t value) noexcept {
    auto* bytes = static_cast<unsigned char*>(destination);
    EncodeU16(bytes, static_cast<std::uint16_t>(value & 0xFFFF));
    bytes[2] = static_cast<unsigned char>(value >> 16);
}

inline std::uint32_t DecodeU24(const void* source) noexcept {
    const auto* bytes = static_cast<const unsigned char*>(source);
    return DecodeU16(bytes) | (static_cast<std::uint32_t>(bytes[2]) << 16);
}

}  // namespace Tavrin
