#pragma once
// Little-endian, unaligned encoding of fixed-width integers.
//
// Every file and wire format of the project is little-endian with no alignment: a 4-byte value may
// stand at an odd offset of a mapping or a message. All reads and writes of such bytes go through
// these helpers, which use memcpy (never a cast of a struct onto the bytes) and swap on big-endian
// hosts, so the formats are the same on every platform.

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>

namespace Tavrin {

namespace Detail {
template <std::integral T>
constexpr T ToLittleEndian(T value) noexcept {
    if constexpr (std::endian::native == std::endian::little || sizeof(T) == 1) {
        return value;
    } else {
        using U = std::make_unsigned_t<T>;
        U u = static_cast<U>(value);
        U swapped = 0;
        for (std::size_t i = 0; i < sizeof(T); ++i) {
            swapped = static_cast<U>((swapped << 8) | (u & 0xFF));
            u = static_cast<U>(u >> 8);
        }
        return static_cast<T>(swapped);
    }
}
}  // namespace Detail

/// Writes `value` as sizeof(T) little-endian bytes at `destination`.
template <std::integral T>
inline void EncodeLE(void* destination, T value) noexcept {
    const T le = Detail::ToLittleEndian(value);
    std::memcpy(destination, &le, sizeof(T));
}

/// Reads sizeof(T) little-endian bytes at `source`.
template <std::integral T>
inline T DecodeLE(const void* source) noexcept {
    T le;
    std::memcpy(&le, source, sizeof(T));
    return Detail::ToLittleEndian(le);
}

inline void EncodeU16(void* d, std::uint16_t v) noexcept { EncodeLE(d, v); }
inline void EncodeU32(void* d, std::uint32_t v) noexcept { EncodeLE(d, v); }
inline void EncodeU64(void* d, std::uint64_t v) noexcept { EncodeLE(d, v); }
inline void EncodeI32(void* d, std::int32_t v) noexcept { EncodeLE(d, v); }
inline void EncodeI64(void* d, std::int64_t v) noexcept { EncodeLE(d, v); }
inline std::uint16_t DecodeU16(const void* s) noexcept { return DecodeLE<std::uint16_t>(s); }
inline std::uint32_t DecodeU32(const void* s) noexcept { return DecodeLE<std::uint32_t>(s); }
inline std::uint64_t DecodeU64(const void* s) noexcept { return DecodeLE<std::uint64_t>(s); }
inline std::int32_t DecodeI32(const void* s) noexcept { return DecodeLE<std::int32_t>(s); }
inline std::int64_t DecodeI64(const void* s) noexcept { return DecodeLE<std::int64_t>(s); }

/// Variable-width forms for integer fields of 1, 2, 4 or 8 bytes (record images keep integers in
/// exactly the width of their field). Any other width reads as 0 and writes nothing.
inline std::uint64_t DecodeUnsigned(const void* source, std::uint32_t width) noexcept {
    switch (width) {
        case 1: return *static_cast<const std::uint8_t*>(source);
        case 2: return DecodeLE<std::uint16_t>(source);
        case 4: return DecodeLE<std::uint32_t>(source);
        case 8: return DecodeLE<std::uint64_t>(source);
        default: return 0;
    }
}

inline std::int64_t DecodeSigned(const void* source, std::uint32_t width) noexcept {
    switch (width) {
        case 1: return static_cast<std::int8_t>(*static_cast<const std::uint8_t*>(source));
        case 2: return DecodeLE<std::int16_t>(source);
        case 4: return DecodeLE<std::int32_t>(source);
        case 8: return DecodeLE<std::int64_t>(source);
        default: return 0;
    }
}

inline void EncodeUnsigned(void* destination, std::uint32_t width, std::uint64_t value) noexcept {
    switch (width) {
        case 1: *static_cast<std::uint8_t*>(destination) = static_cast<std::uint8_t>(value); break;
        case 2: EncodeLE(destination, static_cast<std::uint16_t>(value)); break;
        case 4: EncodeLE(destination, static_cast<std::uint32_t>(value)); break;
        case 8: EncodeLE(destination, value); break;
        default: break;
    }
}

}  // namespace Tavrin
