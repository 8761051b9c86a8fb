#pragma once
// KeyOrder: the order of an index's key images, FieldList::CompareKey over the compared fields,
// chosen once per index so that a descent pays a few instructions per node instead of the general
// field machinery.
//
// When every compared field is a fixed-width integer (UInt, SInt, Boolean), Compare reads the
// definedness bits and the little-endian values straight from both images, inline and without a
// virtual call; any other key goes to FieldList::CompareKey. Both give the same result for every
// pair of images: an undefined field orders before a defined one, two undefined fields are equal,
// values order as numbers, and a descending field turns its result around.
//
// Owns a copy of the compared fields' positions; holds the key FieldList unowned (it must outlive
// this object, as an index's own list does). Immutable after construction, so shared freely.

#include <cstdint>
#include <vector>

#include "tavrin/base/Encoding.h"
#include "tavrin/records/DefinedBit.h"
#include "tavrin/records/FieldList.h"

namespace Tavrin::Database {

class KeyOrder {
public:
    /// The order of the first `comparedFields` fields of `list`.
    KeyOrder(const FieldList& list, std::uint32_t comparedFields);

    /// Below 0, 0 or above 0 as image `a` orders before, with or after image `b`.
    int Compare(const unsigned char* a, const unsigned char* b) const noexcept {
        if (!integersOnly_) return list_->CompareKey(a, b, comparedFields_);
        for (const IntegerField& field : fields_) {
            const int order = field.Compare(a, b);
            if (order != 0) return order;
        }
        return 0;
    }

    /// True when Compare takes the inline path.
    bool IsInline() const noexcept { return integersOnly_; }

    /// Where the inline path finds one compared integer field in an image.
    struct IntegerField {
        std::uint32_t offset;
        std::uint32_t width;
        DefinedBit defined;
        bool isSigned;
        int direction;

        int Compare(const unsigned char* a, const unsigned char* b) const noexcept {
            const bool definedA = defined.IsSet(a);
            const bool definedB = defined.IsSet(b);
            int order = 0;
            if (!definedA || !definedB) {
                order = static_cast<int>(definedA) - static_cast<int>(definedB);
            } else if (isSigned) {
                order = ThreeWay(DecodeSigned(a + offset, width), DecodeSigned(b + offset, width));
            } else {
                order = ThreeWay(DecodeUnsigned(a + offset, width), DecodeUnsigned(b + offset, width));
            }
            return order * direction;
        }
    };

    /// The compared fields in order when IsInline(), else none.
    const std::vector<IntegerField>& GetIntegerFields() const noexcept { return fields_; }

private:
    template <class T>
    static int ThreeWay(T a, T b) noexcept {
        return a < b ? -1 : (a > b ? 1 : 0);
    }

    const FieldList* list_;
    std::uint32_t comparedFields_;
    bool integersOnly_ = true;
    std::vector<IntegerField> fields_;
};

}  // namespace Tavrin::Database
