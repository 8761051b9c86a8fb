#pragma once
// Ordering rules shared by the body compare functions of the value classes.
//
// Every class's static Compare is a strict total order over all byte strings, also those that do not
// decode: an undecodable body orders before every valid one, and undecodable bodies order among
// themselves by length, then by bytes. So a corrupt key in an index sorts first and consistently,
// and never compares equal to a valid key. These functions allocate nothing.

#include <cstdint>
#include <cstring>

#include "tavrin/base/Status.h"

namespace Tavrin::BodyOrder {

template <class T>
constexpr int Sign(T difference) noexcept {
    return difference < T{0} ? -1 : (difference > T{0} ? 1 : 0);
}

template <class T>
constexpr int CompareValues(T a, T b) noexcept {
    return a < b ? -1 : (b < a ? 1 : 0);
}

/// Unsigned bytes over the shorter length; on an equal prefix the shorter value orders first.
inline int CompareBytes(const void* a, std::uint32_t lengthA, const void* b, std::uint32_t lengthB) noexcept {
    const std::uint32_t common = lengthA < lengthB ? lengthA : lengthB;
    const int bytes = common == 0 ? 0 : std::memcmp(a, b, common);
    return bytes != 0 ? Sign(bytes) : CompareValues(lengthA, lengthB);
}

/// Orders two bodies of which at least one did not decode, sets `result` and returns status 23.
inline StatusCode CompareUndecodable(bool validA, const void* a, std::uint32_t lengthA, bool validB,
                                     const void* b, std::uint32_t lengthB, int& result) noexcept {
    if (validA != validB) {
        result = validA ? 1 : -1;
    } else {
        const int byLength = CompareValues(lengthA, lengthB);
        result = byLength != 0 ? byLength : CompareBytes(a, lengthA, b, lengthB);
    }
    return Status::Invalid;
}

/// The frame of every body compare function: decodes both bodies with `decode(body, length, value)`
/// and orders the values with `order(valueA, valueB)`, or, if either does not decode, orders them by
/// CompareUndecodable.
template <class Value, class Decode, class OrderValues>
StatusCode CompareDecoded(const void* a, std::uint32_t lengthA, const void* b, std::uint32_t lengthB, int& result,
                          Decode decode, OrderValues order) {
    Value valueA{};
    Value valueB{};
    const bool validA = decode(a, lengthA, valueA);
    const bool validB = decode(b, lengthB, valueB);
    if (!validA || !validB) return CompareUndecodable(validA, a, lengthA, validB, b, lengthB, result);
    result = order(valueA, valueB);
    return Status::Success;
}

/// Orders a value that a fixed-size field holds padded with zero bytes to `length` (cut if longer)
/// against that field's bytes, as the byte rule orders the padded form.
inline int ComparePadded(const void* value, std::uint32_t valueLength, const void* data,
                         std::uint32_t length) noexcept {
    if (valueLength >= length) return CompareBytes(value, valueLength, data, length);
    const int prefix = valueLength == 0 ? 0 : std::memcmp(value, data, valueLength);
    if (prefix != 0) return Sign(prefix);
    const unsigned char* tail = static_cast<const unsigned char*>(data) + valueLength;
    for (std::uint32_t i = 0; i < length - valueLength; ++i) {
        if (tail[i] != 0) return -1;
    }
    return 0;
}

/// Whether the padded form of a value equals a field's bytes.
inline bool IsPaddedEqual(const void* value, std::uint32_t valueLength, const void* data,
                          std::uint32_t length) noexcept {
    return valueLength <= length && ComparePadded(value, valueLength, data, length) == 0;
}

}  // namespace Tavrin::BodyOrder
