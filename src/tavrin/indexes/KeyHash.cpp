#include "tavrin/indexes/KeyHash.h"

#include "tavrin/base/Encoding.h"

namespace Tavrin::Database {

namespace {

constexpr std::uint32_t GoldenRatio = 0x9E3779B9;
constexpr std::uint32_t DuplicateTailSize = 4;
// What an undefined field hashes as: no value of a defined field is told apart by it, but every
// undefined field hashes alike whatever its slot holds, as CompareKey finds them all equal.
constexpr unsigned char UndefinedBytes[4] = {0xFF, 0xFF, 0xFF, 0xFF};

void Mix(std::uint32_t& a, std::uint32_t& b, std::uint32_t& c) noexcept {
    a -= b; a -= c; a ^= c >> 13;
    b -= c; b -= a; b ^= a << 8;
    c -= a; c -= b; c ^= b >> 13;
    a -= b; a -= c; a ^= c >> 12;
    b -= c; b -= a; b ^= a << 16;
    c -= a; c -= b; c ^= b >> 5;
    a -= b; a -= c; a ^= c >> 3;
    b -= c; b -= a; b ^= a << 10;
    c -= a; c -= b; c ^= b >> 15;
}

// Bytes `from` to `to` - 1 of `k` as a little-endian number, lowest byte first; at most 4 bytes.
// Four whole bytes are read as one word, the same number in fewer instructions.
std::uint32_t Word(const unsigned char* k, std::uint32_t from, std::uint32_t to) noexcept {
    if (to - from == 4) return DecodeU32(k + from);
    std::uint32_t word = 0;
    for (std::uint32_t i = from; i < to; ++i) word |= static_cast<std::uint32_t>(k[i]) << (8 * (i - from));
    return word;
}

}  // namespace

std::uint32_t HashBytes(const unsigned char* k, std::uint32_t length, std::uint32_t seed) noexcept {
    std::uint32_t a = GoldenRatio;
    std::uint32_t b = GoldenRatio;
    std::uint32_t c = seed;
    std::uint32_t left = length;
    while (left >= 12) {
        a += Word(k, 0, 4);
        b += Word(k, 4, 8);
        c += Word(k, 8, 12);
        Mix(a, b, c);
        k += 12;
        left -= 12;
    }
    // The lowest byte of c holds the length; the last bytes fill a, b and the upper bytes of c.
    c += length;
    a += Word(k, 0, left < 4 ? left : 4);
    if (left > 4) b += Word(k, 4, left < 8 ? left : 8);
    if (left > 8) c += Word(k, 8, left) << 8;
    Mix(a, b, c);
    return c;
}

KeyHash::KeyHash(const FieldList& list, std::uint32_t comparedFields, std::uint32_t duplicateTail)
    : list_(&list), duplicateTail_(duplicateTail) {
    const KeyOrder order(list, comparedFields);
    if (order.IsInline()) integers_ = order.GetIntegerFields();
    for (auto field = list.Begin(); field != list.End() && field.GetNumber() < comparedFields; ++field) {
        fields_.push_back(field);
    }
}

std::uint32_t KeyHash::operator()(const unsigned char* key) const noexcept {
    std::uint32_t hash = integers_.empty() ? HashFields(key) : HashInline(key);
    if (duplicateTail_ != 0) hash = HashBytes(key + duplicateTail_, DuplicateTailSize, hash);
    return hash;
}

// A defined integer field's value bytes are its whole fixed width at its offset.
std::uint32_t KeyHash::HashInline(const unsigned char* key) const noexcept {
    std::uint32_t hash = 0;
    for (const KeyOrder::IntegerField& field : integers_) {
        hash = field.defined.IsSet(key) ? HashBytes(key + field.offset, field.width, hash)
                                        : HashBytes(UndefinedBytes, sizeof(UndefinedBytes), hash);
    }
    return hash;
}

std::uint32_t KeyHash::HashFields(const unsigned char* key) const noexcept {
    std::uint32_t hash = 0;
    for (const FieldList::ConstIterator& field : fields_) {
        const void* value = nullptr;
        std::uint32_t length = 0;
        if (list_->GetField(key, field, value, length) == Status::Success) {
            hash = HashBytes(static_cast<const unsigned char*>(value), length, hash);
        } else {
            hash = HashBytes(UndefinedBytes, sizeof(UndefinedBytes), hash);
        }
    }
    return hash;
}

}  // namespace Tavrin::Database
