#include "Workload.h"

#include <cstring>

#include "tavrin/base/Encoding.h"

namespace Tavrin::Compare {

namespace {
constexpr std::uint32_t CounterOffset = 0;
constexpr std::uint32_t NumberOffset = 4;
constexpr std::uint32_t TextOffset = 12;
}  // namespace

Value ValueOf(std::uint64_t key) noexcept {
    Value value;
    value.number = NumberOf(key);
    // "record " and the key in 16 hex digits, then dots: cheap enough to make inside a timed loop.
    static constexpr char Head[] = "record ";
    static constexpr char Digits[] = "0123456789abcdef";
    value.text.fill('.');
    std::memcpy(value.text.data(), Head, sizeof Head - 1);
    for (std::uint32_t i = 0; i < 16; ++i) value.text[sizeof Head - 1 + i] = Digits[(key >> (60 - 4 * i)) & 0xF];
    return value;
}

void EncodeValue(const Value& value, unsigned char* bytes) noexcept {
    EncodeU32(bytes + CounterOffset, value.counter);
    EncodeI64(bytes + NumberOffset, value.number);
    std::memcpy(bytes + TextOffset, value.text.data(), TextSize);
}

void DecodeValue(const unsigned char* bytes, Value& value) noexcept {
    value.counter = DecodeU32(bytes + CounterOffset);
    value.number = DecodeI64(bytes + NumberOffset);
    std::memcpy(value.text.data(), bytes + TextOffset, TextSize);
}

std::uint32_t DecodeCounter(const unsigned char* bytes) noexcept { return DecodeU32(bytes + CounterOffset); }
void EncodeCounter(unsigned char* bytes, std::uint32_t counter) noexcept { EncodeU32(bytes + CounterOffset, counter); }
std::int64_t DecodeNumber(const unsigned char* bytes) noexcept { return DecodeI64(bytes + NumberOffset); }

KeyBytes EncodeKey(std::uint64_t key) noexcept {
    KeyBytes bytes;
    for (std::uint32_t i = 0; i < KeySize; ++i) bytes[i] = static_cast<unsigned char>(key >> (8 * (KeySize - 1 - i)));
    return bytes;
}

std::uint64_t DecodeKey(const unsigned char* bytes) noexcept {
    std::uint64_t key = 0;
    for (std::uint32_t i = 0; i < KeySize; ++i) key = (key << 8) | bytes[i];
    return key;
}

KeyOrder::KeyOrder(std::uint64_t n) : keys_(n) {
    for (std::uint64_t k = 0; k < n; ++k) keys_[k] = k;
}

const std::vector<std::uint64_t>& KeyOrder::Next() {
    for (std::uint64_t i = keys_.size(); i > 1; --i) {
        const std::uint64_t j = rng_() % i;
        std::swap(keys_[i - 1], keys_[j]);
    }
    return keys_;
}

std::int64_t ExpectedNumberSum(std::uint64_t n) noexcept {
    std::int64_t sum = 0;
    for (std::uint64_t k = 0; k < n; ++k) sum += NumberOf(k);
    return sum;
}

}  // namespace Tavrin::Compare
