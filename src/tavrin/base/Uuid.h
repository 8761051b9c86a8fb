#pragma once
// A 16-byte universally unique identifier. It ties a table's files together (its binary form lies in
// every mapped file's header) and names temporary files (its text form).
//
// A value class: copy it freely. The default constructor draws a new random (version 4) value.

#include <array>
#include <cstdint>
#include <string>

#include "tavrin/base/Status.h"

namespace Tavrin {

/// A 16-byte universally unique identifier, a value class: random when default-made, or taken from
/// its binary form.
class Uuid {
public:
    /// The size of the binary form in bytes.
    static constexpr std::uint32_t BinarySize = 16;
    /// The length of the text form (ToString) in characters.
    static constexpr std::uint32_t TextSize = 36;

    /// A new random value; throws StatusCodeException 1 if the system has no randomness to give.
    Uuid();
    /// From the binary form at `data`, which must hold `size` bytes. Bytes beyond `size` (when it is
    /// below 16) are 0, bytes beyond 16 ignored.
    Uuid(const unsigned char* data, std::uint32_t size) noexcept;

    /// The value of all zero bytes, which Uuid() never gives.
    static Uuid Nil() noexcept;

    /// Writes the 16 bytes of the binary form; status 11 when `size` is below 16, and then `buffer`
    /// is untouched.
    StatusCode GetBinary(unsigned char* buffer, std::uint32_t size) const noexcept;
    /// The canonical text form, 36 characters of lowercase hex digits and dashes
    /// ("0f1e2d3c-4b5a-4978-8796-a5b4c3d2e1f0"), safe as a file name.
    std::string ToString() const;

    /// Whether both hold the same 16 bytes.
    bool operator==(const Uuid& other) const noexcept { return bytes_ == other.bytes_; }
    /// Whether the 16 bytes differ.
    bool operator!=(const Uuid& other) const noexcept { return bytes_ != other.bytes_; }

private:
    std::array<unsigned char, BinarySize> bytes_{};
};

}  // namespace Tavrin
