#include "tavrin/base/FieldTypes/DateTime.h"

#include "tavrin/base/FieldTypes/BodyOrder.h"
#include "tavrin/base/FieldTypes/TextScanner.h"

namespace Tavrin {

namespace {

// Decodes a body into milliseconds since 0001-01-01 00:00:00; false if either part does not decode.
bool Decode(const void* data, std::uint32_t length, std::uint64_t& instant) noexcept {
    if (length <= DateTime::TimeOffset) return false;
    const auto* bytes = static_cast<const unsigned char*>(data);
    std::uint32_t dayNumber = 0;
    std::uint32_t sinceMidnight = 0;
    if (!Date::Decode(bytes, Date::BodySize, dayNumber) ||
        !Time::Decode(bytes + DateTime::TimeOffset, length - DateTime::TimeOffset, sinceMidnight)) {
        return false;
    }
    instant = std::uint64_t{dayNumber} * Time::MillisecondsPerDay + sinceMidnight;
    return true;
}

// 1970-01-01 as a Date day number.
constexpr std::int64_t UnixEpochDayNumber =
    (std::chrono::sys_days{} - std::chrono::sys_days{std::chrono::year{1} / std::chrono::January / 1}).count();

}  // namespace

StatusCode DateTime::Set(const Date& date, const Time& time) {
    if (!date.defined || !time.defined) return Status::NotUsable;
    date_ = date;
    time_ = time;
    defined = true;
    return Status::Success;
}

StatusCode DateTime::Set(std::chrono::sys_time<std::chrono::milliseconds> instant) {
    const auto day = std::chrono::floor<std::chrono::days>(instant);
    const std::int64_t dayNumber = day.time_since_epoch().count() + UnixEpochDayNumber;
    if (dayNumber < 0 || dayNumber > Date::MaxDayNumber) return Status::Invalid;
    date_.SetDayNumber(static_cast<std::uint32_t>(dayNumber));
    const StatusCode status = time_.Set(instant - day);
    defined = status == Status::Success;
    return status;
}

std::chrono::sys_time<std::chrono::milliseconds> DateTime::GetSysTime() const {
    const std::chrono::sys_days day{std::chrono::days{std::int64_t{date_.GetDayNumber()} - UnixEpochDayNumber}};
    return day + time_.GetSinceMidnight();
}

void DateTime::Reset() {
    date_.Reset();
    time_.Reset();
    defined = false;
}

void DateTime::Clear() {
    date_.Clear();
    time_.Clear();
    defined = false;
}

std::uint32_t DateTime::GetBodySize() const {
    return date_.GetBodySize() + time_.GetBodySize();
}

std::uint32_t DateTime::GetLengthAndBodySize() const {
    return date_.GetLengthAndBodySize() + time_.GetLengthAndBodySize();
}

StatusCode DateTime::Compare(const void* a, std::uint32_t lengthA, const void* b, std::uint32_t lengthB,
                             int& result) {
    return BodyOrder::CompareDecoded<std::uint64_t>(a, lengthA, b, lengthB, result, &Decode,
                                                    &BodyOrder::CompareValues<std::uint64_t>);
}

StatusCode DateTime::Compare(const void* data, std::uint32_t length, int& result) const {
    return CompareSmallBody(data, length, result, &DateTime::Compare);
}

std::string DateTime::ToString() const {
    if (!defined) return std::string();
    return date_.ToString() + ' ' + time_.ToString();
}

StatusCode DateTime::FromString(MessageValidator& text) {
    TextScanner scanner(TextScanner::TakeRest(text));
    std::uint32_t dayNumber = 0;
    std::uint32_t sinceMidnight = 0;
    if (!Date::Parse(scanner, dayNumber) || !(scanner.Consume(' ') || scanner.Consume('T')) ||
        !Time::Parse(scanner, sinceMidnight) || !scanner.AtEnd()) {
        return Status::Invalid;
    }
    date_.SetDayNumber(dayNumber);
    time_.Set(std::chrono::milliseconds{sinceMidnight});
    defined = true;
    return Status::Success;
}

StatusCode DateTime::SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const {
    if (!defined) return Status::NotUsable;
    if (size < GetBodySize()) return Status::LengthMismatch;
    auto* bytes = static_cast<unsigned char*>(buffer);
    std::uint32_t dateWritten = 0;
    std::uint32_t timeWritten = 0;
    date_.SerializeBody(bytes, Date::BodySize, dateWritten);
    time_.SerializeBody(bytes + dateWritten, size - dateWritten, timeWritten);
    written = dateWritten + timeWritten;
    return Status::Success;
}

StatusCode DateTime::DeserializeBody(const void* data, std::uint32_t length) {
    if (length <= TimeOffset) return Status::Invalid;
    const auto* bytes = static_cast<const unsigned char*>(data);
    StatusCode status = date_.DeserializeBody(bytes, Date::BodySize);
    if (status == Status::Success) status = time_.DeserializeBody(bytes + TimeOffset, length - TimeOffset);
    defined = status == Status::Success;
    return status;
}

StatusCode DateTime::DeserializeLengthAndBody(MessageValidator& validator, std::uint32_t) {
    if (validator.GetRemaining() <= TimeOffset) return Status::Invalid;
    const std::uint8_t timeMarker = validator.GetData()[validator.GetOffset() + TimeOffset];
    return ReadBody(validator, TimeOffset + Time::BodyLength(timeMarker));
}

StatusCode DateTime::ConvertFrom(const IFieldType& other) {
    if (const auto* dateTime = dynamic_cast<const DateTime*>(&other)) {
        *this = *dateTime;
        return Status::Success;
    }
    if (const auto* date = dynamic_cast<const Date*>(&other)) {
        Time midnight;
        midnight.Set(0, 0, 0);
        return Set(*date, midnight);
    }
    return Status::WrongType;
}

}  // namespace Tavrin
