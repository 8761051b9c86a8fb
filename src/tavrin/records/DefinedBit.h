#pragma once
// DefinedBit: where an image keeps the bit that says one field is defined, found once through
// FieldList::LocateDefinedBit, so that a hot loop tests and sets it without a virtual call. A mask
// of 0 stands for a layout without such bits, whose fields are always defined.

#include <cstdint>

#include "tavrin/records/FieldList.h"

namespace Tavrin::Database {

struct DefinedBit {
    std::uint32_t byte = 0;
    unsigned char mask = 0;

    /// The bit of field `number` of `list`.
    static DefinedBit Of(const FieldList& list, std::uint32_t number) noexcept {
        DefinedBit bit;
        if (!list.LocateDefinedBit(number, bit.byte, bit.mask)) bit = DefinedBit{};
        return bit;
    }

    bool IsAlwaysDefined() const noexcept { return mask == 0; }
    bool IsSet(const unsigned char* image) const noexcept { return mask == 0 || (image[byte] & mask) != 0; }
    /// Sets or clears the bit; nothing for a field that is always defined.
    void Set(unsigned char* image, bool defined) const noexcept {
        if (mask == 0) return;
        if (defined) {
            image[byte] |= mask;
        } else {
            image[byte] &= static_cast<unsigned char>(~mask);
        }
    }
};

}  // namespace Tavrin::Database
