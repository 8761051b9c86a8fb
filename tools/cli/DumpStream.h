#pragma once
// The stream of tavrin dump --messages, which tavrin load reads. Little-endian, no padding:
//
//   offset 0   8 bytes   "TAVRDUMP"
//   offset 8             frames, each:
//     0        1 byte    kind: 1 table, 2 records, 3 end
//     1        4 bytes   n, the length of the body
//     5        n bytes   the body
//
// The table frame comes first and once: the TableSpecification (version byte 1 first), the number
// of indexes and each IndexSpecification in number order, as ITable::SerializeSpecification writes
// them. Record frames follow, each a records message (ITable::SerializeRecords: a count, then the
// records), the record ids numbering the records from 0 in the order of the stream. The end frame
// has no body and closes the stream; a stream without it was cut short.

#include <cstdint>
#include <iosfwd>
#include <vector>

#include "tavrin/base/Status.h"

namespace Tavrin::Tool {

/// The kinds of frame.
enum class FrameKind : std::uint8_t { Table = 1, Records = 2, End = 3 };

/// The eight bytes that open a stream.
inline constexpr char StreamMagic[8] = {'T', 'A', 'V', 'R', 'D', 'U', 'M', 'P'};

/// Writes the stream's opening bytes; 1 when the stream fails.
StatusCode WriteStreamStart(std::ostream& out);
/// Writes one frame; 1 when the stream fails.
StatusCode WriteFrame(std::ostream& out, FrameKind kind, const unsigned char* body, std::uint32_t length);

/// Reads and checks the opening bytes: 23 when they are not there.
StatusCode ReadStreamStart(std::istream& in);
/// Reads one frame into `kind` and `body`: 22 when the stream ends inside it, 23 for an unknown kind.
/// The body grows as its bytes arrive, so a false length ends at the end of the stream instead of
/// in one huge allocation.
StatusCode ReadFrame(std::istream& in, FrameKind& kind, std::vector<unsigned char>& body);

}  // namespace Tavrin::Tool
