#pragma once
// Status codes: what every operation on records, keys and fields returns. 0 is success.

#include <string>

namespace Tavrin {

using StatusCode = unsigned char;

namespace Status {
inline constexpr StatusCode Success = 0;
inline constexpr StatusCode Failure = 1;              // an exception of no particular kind
inline constexpr StatusCode NotFound = 6;             // key, record, table, field, file; end of a walk
inline constexpr StatusCode BufferTooSmall = 11;
inline constexpr StatusCode NotAvailable = 13;        // not implemented by this class or layout
inline constexpr StatusCode NotUsable = 14;           // not initialized, undefined, iterator at end
inline constexpr StatusCode NotOpen = 16;
inline constexpr StatusCode AlreadyOpen = 17;
inline constexpr StatusCode WrongVersion = 21;
inline constexpr StatusCode LengthMismatch = 22;      // a length does not fit
inline constexpr StatusCode Invalid = 23;             // invalid parameter or malformed data
inline constexpr StatusCode DescriptionDiffers = 25;
inline constexpr StatusCode IndexConflict = 26;       // index out of range, or unique key taken
inline constexpr StatusCode KeyInvalid = 27;
inline constexpr StatusCode WrongType = 28;
inline constexpr StatusCode FieldMissing = 29;
inline constexpr StatusCode OtherTable = 30;
inline constexpr StatusCode Undefined = 33;
inline constexpr StatusCode NoPrimaryIndex = 34;
inline constexpr StatusCode OutOfRange = 36;
inline constexpr StatusCode StoreFull = 40;
inline constexpr StatusCode OutOfMemory = 41;
inline constexpr StatusCode AlreadyCreated = 47;
}  // namespace Status

/// The text of a status code; a constant, so it may be used from any thread.
const std::string& StatusCodeToString(StatusCode status);

}  // namespace Tavrin
