#include "tavrin/base/FieldTypes/Date.h"

#include <cassert>
#include <cstdio>

#include "tavrin/base/FieldTypes/BodyOrder.h"
#include "tavrin/base/FieldTypes/Bytes24.h"
#include "tavrin/base/FieldTypes/DateTime.h"
#include "tavrin/base/FieldTypes/TextScanner.h"

namespace Tavrin {

namespace {

constexpr std::chrono::sys_days FirstDay{std::chrono::year{1} / std::chrono::January / 1};

}  // namespace

bool Date::FromYearMonthDay(std::chrono::year_month_day date, std::uint32_t& dayNumber) noexcept {
    if (!date.ok() || date.year() < std::chrono::year{1} || date.year() > std::chrono::year{9999}) return false;
    dayNumber = static_cast<std::uint32_t>((std::chrono::sys_days{date} - FirstDay).count());
    return true;
}

StatusCode Date::Set(int year, unsigned month, unsigned day) {
    return Set(std::chrono::year_month_day{std::chrono::year{year}, std::chrono::month{month},
                                           std::chrono::day{day}});
}

StatusCode Date::Set(std::chrono::year_month_day date) {
    std::uint32_t dayNumber = 0;
    if (!FromYearMonthDay(date, dayNumber)) return Status::Invalid;
    SetDayNumber(dayNumber);
    return Status::Success;
}

void Date::SetDayNumber(std::uint32_t dayNumber) noexcept {
    assert(dayNumber <= MaxDayNumber);
    dayNumber_ = dayNumber;
    defined = true;
}

std::chrono::year_month_day Date::GetYearMonthDay() const {
    return std::chrono::year_month_day{FirstDay + std::chrono::days{dayNumber_}};
}

bool Date::Decode(const void* data, std::uint32_t length, std::uint32_t& dayNumber) noexcept {
    if (length != BodySize) return false;
    dayNumber = DecodeU24(data);
    return dayNumber <= MaxDayNumber;
}

StatusCode Date::Compare(const void* a, std::uint32_t lengthA, const void* b, std::uint32_t lengthB,
                         int& result) {
    return BodyOrder::CompareDecoded<std::uint32_t>(a, lengthA, b, lengthB, result, &Date::Decode,
                                                    &BodyOrder::CompareValues<std::uint32_t>);
}

StatusCode Date::Compare(const void* data, std::uint32_t length, int& result) const {
    return CompareSmallBody(data, length, result, &Date::Compare);
}

std::string Date::Format(std::uint32_t dayNumber) {
    const std::chrono::year_month_day date{FirstDay + std::chrono::days{dayNumber}};
    char text[40];
    std::snprintf(text, sizeof(text), "%04d-%02u-%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    return text;
}

bool Date::Parse(TextScanner& scanner, std::uint32_t& dayNumber) {
    std::uint32_t year = 0;
    std::uint32_t month = 0;
    std::uint32_t day = 0;
    if (!scanner.ReadFixedDigits(4, year) || !scanner.Consume('-') || !scanner.ReadFixedDigits(2, month) ||
        !scanner.Consume('-') || !scanner.ReadFixedDigits(2, day)) {
        return false;
    }
    return FromYearMonthDay(std::chrono::year_month_day{std::chrono::year{static_cast<int>(year)},
                                                        std::chrono::month{month}, std::chrono::day{day}},
                            dayNumber);
}

std::string Date::ToString() const {
    return defined ? Format(dayNumber_) : std::string();
}

StatusCode Date::FromString(MessageValidator& text) {
    TextScanner scanner(TextScanner::TakeRest(text));
    std::uint32_t dayNumber = 0;
    if (!Parse(scanner, dayNumber) || !scanner.AtEnd()) return Status::Invalid;
    SetDayNumber(dayNumber);
    return Status::Success;
}

StatusCode Date::SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const {
    if (!defined) return Status::NotUsable;
    if (size < BodySize) return Status::LengthMismatch;
    EncodeU24(buffer, dayNumber_);
    written = BodySize;
    return Status::Success;
}

StatusCode Date::DeserializeBody(const void* data, std::uint32_t length) {
    std::uint32_t dayNumber = 0;
    if (!Decode(data, length, dayNumber)) return Status::Invalid;
    SetDayNumber(dayNumber);
    return Status::Success;
}

StatusCode Date::DeserializeLengthAndBody(MessageValidator& validator, std::uint32_t) {
    return ReadBody(validator, BodySize);
}

StatusCode Date::ConvertFrom(const IFieldType& other) {
    if (const auto* dateTime = dynamic_cast<const DateTime*>(&other)) {
        *this = dateTime->GetDate();
        return Status::Success;
    }
    if (const auto* date = dynamic_cast<const Date*>(&other)) {
        *this = *date;
        return Status::Success;
    }
    return Status::WrongType;
}

}  // namespace Tavrin
