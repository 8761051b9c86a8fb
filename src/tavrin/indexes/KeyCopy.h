#pragma once
// KeyCopy: how an index builds a key image from a record image, planned once per index so that a
// write pays a few instructions per key field instead of the general field copy.
//
// When every key field has a fixed length that its value always fills (any type without a length
// prefix but DateTime and Time, whose values tell their own length), Build copies each value's
// bytes and its definedness bit directly; otherwise it goes field by field through
// FieldList::CopyFieldByNumber. Both leave the same bytes in the key: a defined field's value and
// bit, an undefined field's bit cleared and its old slot left alone.
//
// Holds both lists unowned (the index's own key list and its table's list, which outlive it).
// Immutable after construction.

#include <cstdint>
#include <vector>

#include "tavrin/base/Status.h"
#include "tavrin/records/DefinedBit.h"
#include "tavrin/records/FieldList.h"

namespace Tavrin::Database {

class KeyCopy {
public:
    /// The plan for `keyList`, whose field i is field `tableNumbers[i]` of `tableList`.
    KeyCopy(const FieldList& keyList, const FieldList& tableList, const std::vector<std::uint32_t>& tableNumbers);

    /// Copies the key fields of `record` into `key`: status 0, or the field list's status.
    StatusCode Build(unsigned char* key, const unsigned char* record) const;

    /// True when Build copies bytes directly.
    bool IsDirect() const noexcept { return direct_; }

private:
    struct Field {
        std::uint32_t from;
        std::uint32_t to;
        std::uint32_t length;
        DefinedBit source;
        DefinedBit target;
    };

    static bool IsFixedFilled(const FieldSpecification& field) noexcept;

    const FieldList* keyList_;
    const FieldList* tableList_;
    const std::vector<std::uint32_t>* tableNumbers_;
    bool direct_ = true;
    std::vector<Field> fields_;
};

}  // namespace Tavrin::Database
