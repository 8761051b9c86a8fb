#pragma once
// KeyHash: the 32-bit hash of a key image by which a hash index places a key in its buckets.
//
// HashBytes is Bob Jenkins's public-domain lookup2 function in its byte-wise form, so the result is
// the same on every platform whatever the alignment of the bytes. A key image is hashed field by
// field, each hash seeding the next: a defined field by its value bytes at its current length (the
// length prefix takes no part), an undefined field as four 0xFF bytes, and in a Duplicate index the
// trailing record id as its 4 bytes. Additional fields take no part.
//
// Two images that FieldList::CompareKey calls equal hash alike: every field type orders its values by
// the bytes at the current length or by a decoding of them that has one byte form per value (numbers
// of fixed width, dates and times in their canonical forms, rationals tie-broken by their bytes), and
// undefined fields are equal whatever their slots hold. The hash tests hold every type to this.
//
// Holds the key FieldList unowned (it must outlive this object, as an index's own list does).
// Immutable after construction and allocation-free, so shared freely.

#include <cstdint>
#include <vector>

#include "tavrin/indexes/KeyOrder.h"
#include "tavrin/records/FieldList.h"

namespace Tavrin::Database {

/// lookup2 of `length` bytes at `bytes`, seeded with `seed`.
std::uint32_t HashBytes(const unsigned char* bytes, std::uint32_t length, std::uint32_t seed) noexcept;

class KeyHash {
public:
    /// The hash of the first `comparedFields` fields of `list`; `duplicateTail` is the offset of
    /// the record id behind the fields in a Duplicate index, 0 in any other.
    KeyHash(const FieldList& list, std::uint32_t comparedFields, std::uint32_t duplicateTail);

    /// The hash of key image `key`.
    std::uint32_t operator()(const unsigned char* key) const noexcept;

private:
    std::uint32_t HashInline(const unsigned char* key) const noexcept;
    std::uint32_t HashFields(const unsigned char* key) const noexcept;

    const FieldList* list_;
    /// When every compared field is a fixed-width integer: where each lies, so that its bytes are
    /// hashed straight from the image; empty otherwise.
    std::vector<KeyOrder::IntegerField> integers_;
    /// One iterator per compared field, so that a field's bytes are found without a lookup by id.
    std::vector<FieldList::ConstIterator> fields_;
    std::uint32_t duplicateTail_;
};

}  // namespace Tavrin::Database
