#pragma once
// MatchedFields: the fields of two record layouts paired by name, and the copy of a record's values
// from one layout into the other. CopyRecords and Convert carry records across layouts with it, so
// a field may change its id, its position and, for an integer, its width between the two.

#include <cstdint>
#include <vector>

#include "tavrin/base/Status.h"
#include "tavrin/records/FieldList.h"

namespace Tavrin::Database {

class FieldListObject;

/// The fields of a target layout paired with those of a source layout by name and type
/// (FieldListObject::GetMatchingFieldsByName), and the copy of values along those pairs. An integer
/// field (UInt or SInt) whose width differs between the two converts by value: widened always,
/// narrowed when the value fits. Any other value goes through FieldList::CopyField and its length
/// rule. Not thread-safe; holds no pointer into either table.
class MatchedFields {
public:
    /// Pairs the fields of `target`'s layout with those of `source`'s. Status 14 unless both are
    /// initialized; the pairs found before are replaced.
    StatusCode Match(const FieldListObject& target, const FieldListObject& source);

    /// Copies every paired field of `sourceData` (laid out by `sourceList`) into `targetData` (laid
    /// out by `targetList`), pair by pair; an undefined source value leaves the target field
    /// undefined. With `dropped` null the first value that does not fit its target field ends the
    /// copy with its status (22 for a length, 36 for an integer out of range); otherwise that field
    /// keeps what it held (undefined in a reset image), `*dropped` counts it and the copy goes on.
    StatusCode Copy(const FieldList& targetList, unsigned char* targetData, const FieldList& sourceList,
                    const unsigned char* sourceData, std::uint64_t* dropped) const;

    /// The number of pairs.
    std::size_t GetCount() const noexcept { return pairs_.size(); }

private:
    struct Pair {
        std::uint16_t targetId;
        std::uint16_t sourceId;
        bool convertsInteger;  // an integer field of another width in the target
        bool isSigned;
        std::uint32_t targetWidth;
    };

    static StatusCode CopyInteger(const Pair& pair, const FieldList& targetList, unsigned char* targetData,
                                  const FieldList& sourceList, const unsigned char* sourceData);

    std::vector<Pair> pairs_;
};

}  // namespace Tavrin::Database
