#pragma once
// ConversionReport: what the last conversion of a table's record file did (ITable::Convert).

#include <cstdint>

namespace Tavrin::Database {

/// What the last conversion of a table's record file into the table's layout did, as
/// ITable::GetLastConversionReport gives it. A plain value.
struct ConversionReport {
    /// Whether a conversion ran to its end and the converted file is the table's record file now.
    bool converted = false;
    /// The records carried into the new file, each under a new id, in the order of the old ids.
    std::uint32_t records = 0;
    /// The values that were defined in the old file and did not fit their field of the new layout
    /// (a text longer than the new field, an integer out of the new field's range, another fixed
    /// length): each of these fields stays undefined (reset, in an unmanaged layout) in its record.
    /// Fields that the new layout lacks, or has with another type, are not counted.
    std::uint64_t droppedValues = 0;
};

}  // namespace Tavrin::Database
