#include "tavrin/base/FieldTypes/Time.h"

#include <cstdio>

#include "tavrin/base/FieldTypes/BodyOrder.h"
#include "tavrin/base/FieldTypes/Bytes24.h"
#include "tavrin/base/FieldTypes/DateTime.h"
#include "tavrin/base/FieldTypes/TextScanner.h"

namespace Tavrin {

namespace {

constexpr std::uint32_t MillisecondsPerHour = 3600000;
constexpr std::uint32_t SecondsPerHour = 3600;
constexpr std::uint8_t HourMask = 0x1F;

}  // namespace

StatusCode Time::Set(unsigned hour, unsigned minute, unsigned second, unsigned millisecond) {
    if (hour >= 24 || minute >= 60 || second >= 60 || millisecond >= 1000) return Status::Invalid;
    SetSinceMidnight(((hour * 60 + minute) * 60 + second) * 1000 + millisecond);
    return Status::Success;
}

StatusCode Time::Set(std::chrono::milliseconds sinceMidnight) {
    const auto count = sinceMidnight.count();
    if (count < 0 || count >= MillisecondsPerDay) return Status::Invalid;
    SetSinceMidnight(static_cast<std::uint32_t>(count));
    return Status::Success;
}

void Time::SetSinceMidnight(std::uint32_t sinceMidnight) noexcept {
    millisecond_ = static_cast<std::uint16_t>(sinceMidnight % 1000);
    const std::uint32_t seconds = sinceMidnight / 1000;
    second_ = static_cast<std::uint8_t>(seconds % 60);
    minute_ = static_cast<std::uint8_t>(seconds / 60 % 60);
    hour_ = static_cast<std::uint8_t>(seconds / 3600);
    defined = true;
}

std::chrono::milliseconds Time::GetSinceMidnight() const noexcept {
    return std::chrono::milliseconds{((hour_ * 60 + minute_) * 60 + second_) * 1000 + millisecond_};
}

std::uint32_t Time::GetBodySize() const {
    if (!defined) return 0;
    return millisecond_ != 0 ? LongBodySize : ShortBodySize;
}

bool Time::Decode(const void* data, std::uint32_t length, std::uint32_t& sinceMidnight) noexcept {
    if (length == 0) return false;
    const auto* bytes = static_cast<const unsigned char*>(data);
    const std::uint32_t hour = bytes[0] & HourMask;
    if ((bytes[0] & ~(LongFormBit | HourMask)) != 0 || hour >= 24 || length != BodyLength(bytes[0])) {
        return false;
    }
    std::uint32_t withinHour = 0;
    if (length == LongBodySize) {
        withinHour = DecodeU24(bytes + 1);
        if (withinHour >= MillisecondsPerHour || withinHour % 1000 == 0) return false;
    } else {
        const std::uint32_t seconds = DecodeU16(bytes + 1);
        if (seconds >= SecondsPerHour) return false;
        withinHour = seconds * 1000;
    }
    sinceMidnight = hour * MillisecondsPerHour + withinHour;
    return true;
}

StatusCode Time::Compare(const void* a, std::uint32_t lengthA, const void* b, std::uint32_t lengthB,
                         int& result) {
    return BodyOrder::CompareDecoded<std::uint32_t>(a, lengthA, b, lengthB, result, &Time::Decode,
                                                    &BodyOrder::CompareValues<std::uint32_t>);
}

StatusCode Time::Compare(const void* data, std::uint32_t length, int& result) const {
    return CompareSmallBody(data, length, result, &Time::Compare);
}

std::string Time::Format(std::uint32_t sinceMidnight) {
    const std::uint32_t seconds = sinceMidnight / 1000;
    const std::uint32_t millisecond = sinceMidnight % 1000;
    char text[48];
    const int length = std::snprintf(text, sizeof(text), "%02u:%02u:%02u", seconds / 3600, seconds / 60 % 60,
                                     seconds % 60);
    if (millisecond != 0) std::snprintf(text + length, sizeof(text) - length, ".%03u", millisecond);
    return text;
}

bool Time::Parse(TextScanner& scanner, std::uint32_t& sinceMidnight) {
    std::uint32_t hour = 0;
    std::uint32_t minute = 0;
    std::uint32_t second = 0;
    std::uint32_t millisecond = 0;
    if (!scanner.ReadFixedDigits(2, hour) || !scanner.Consume(':') || !scanner.ReadFixedDigits(2, minute) ||
        !scanner.Consume(':') || !scanner.ReadFixedDigits(2, second)) {
        return false;
    }
    if (scanner.Consume('.') && !scanner.ReadFixedDigits(3, millisecond)) return false;
    if (hour >= 24 || minute >= 60 || second >= 60) return false;
    sinceMidnight = ((hour * 60 + minute) * 60 + second) * 1000 + millisecond;
    return true;
}

std::string Time::ToString() const {
    return defined ? Format(static_cast<std::uint32_t>(GetSinceMidnight().count())) : std::string();
}

StatusCode Time::FromString(MessageValidator& text) {
    TextScanner scanner(TextScanner::TakeRest(text));
    std::uint32_t sinceMidnight = 0;
    if (!Parse(scanner, sinceMidnight) || !scanner.AtEnd()) return Status::Invalid;
    SetSinceMidnight(sinceMidnight);
    return Status::Success;
}

StatusCode Time::SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const {
    if (!defined) return Status::NotUsable;
    const std::uint32_t bodySize = GetBodySize();
    if (size < bodySize) return Status::LengthMismatch;
    auto* bytes = static_cast<unsigned char*>(buffer);
    const std::uint32_t secondOfHour = minute_ * 60u + second_;
    if (bodySize == LongBodySize) {
        bytes[0] = static_cast<unsigned char>(hour_ | LongFormBit);
        EncodeU24(bytes + 1, secondOfHour * 1000 + millisecond_);
    } else {
        bytes[0] = hour_;
        EncodeU16(bytes + 1, static_cast<std::uint16_t>(secondOfHour));
    }
    written = bodySize;
    return Status::Success;
}

StatusCode Time::DeserializeBody(const void* data, std::uint32_t length) {
    std::uint32_t sinceMidnight = 0;
    if (!Decode(data, length, sinceMidnight)) return Status::Invalid;
    SetSinceMidnight(sinceMidnight);
    return Status::Success;
}

StatusCode Time::DeserializeLengthAndBody(MessageValidator& validator, std::uint32_t) {
    if (validator.GetRemaining() == 0) return Status::Invalid;
    return ReadBody(validator, BodyLength(validator.GetData()[validator.GetOffset()]));
}

StatusCode Time::ConvertFrom(const IFieldType& other) {
    if (const auto* dateTime = dynamic_cast<const DateTime*>(&other)) {
        *this = dateTime->GetTime();
        return Status::Success;
    }
    if (const auto* time = dynamic_cast<const Time*>(&other)) {
        *this = *time;
        return Status::Success;
    }
    return Status::WrongType;
}

}  // namespace Tavrin
