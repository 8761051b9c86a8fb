#pragma once
// Date: a calendar date of the proleptic Gregorian calendar, years 1 to 9999.
//
// Body, 3 bytes:
//   bytes 0-2  day number, little-endian: days since 0001-01-01 (0 to 3652058 for 9999-12-31)
// Every day number in that range is a valid body and no other is, so bodies and dates map one to
// one, and the order of day numbers is the order of dates.
//
// Text form: YYYY-MM-DD, such as 2026-11-22. The length-and-body form is the body.
// Converts from DateTime (its date part). No locks.

#include <chrono>
#include <cstdint>
#include <string>

#include "tavrin/base/FieldTypes/IFieldType.h"

namespace Tavrin {

class TextScanner;

/// A calendar date of years 1 to 9999, held as a day number since 0001-01-01 (see the file comment
/// above).
class Date : public IFieldType {
public:
    /// Bytes of a body.
    static constexpr std::uint32_t BodySize = 3;
    /// The day number of 9999-12-31, the last date.
    static constexpr std::uint32_t MaxDayNumber = 3652058;

    /// An undefined value.
    Date() noexcept : IFieldType(FieldTypeNumber::Date) {}

    ///@{
    /// Sets the date and marks the value defined. Status 23 unless the arguments form a date of years
    /// 1 to 9999; the value is then unchanged.
    StatusCode Set(int year, unsigned month, unsigned day);
    StatusCode Set(std::chrono::year_month_day date);
    ///@}
    /// The date as year, month and day. REQUIRES: defined.
    std::chrono::year_month_day GetYearMonthDay() const;
    /// Days since 0001-01-01. REQUIRES: defined.
    std::uint32_t GetDayNumber() const noexcept { return dayNumber_; }

    /// Orders two Date bodies by date. Status 23 when either does not decode; `result` is set all the
    /// same (an undecodable body orders before every valid one).
    static StatusCode Compare(const void* a, std::uint32_t lengthA, const void* b, std::uint32_t lengthB,
                              int& result);
    /// Decodes a body into its day number; false if it is not one (wrong length, or a day number
    /// beyond MaxDayNumber, which may then be left in `dayNumber`).
    static bool Decode(const void* data, std::uint32_t length, std::uint32_t& dayNumber) noexcept;
    /// The text form YYYY-MM-DD of a day number (at most MaxDayNumber).
    static std::string Format(std::uint32_t dayNumber);
    /// Reads YYYY-MM-DD from `scanner`, for use inside longer text forms; false unless it is a date
    /// of years 1 to 9999. `dayNumber` is untouched on failure; the scanner may have moved.
    static bool Parse(TextScanner& scanner, std::uint32_t& dayNumber);
    /// The day number of `date`; false (and `dayNumber` untouched) unless it is a valid date of years
    /// 1 to 9999.
    static bool FromYearMonthDay(std::chrono::year_month_day date, std::uint32_t& dayNumber) noexcept;

    void Reset() override { defined = false; }
    void Clear() override { defined = false; }
    StatusCode Compare(const void* data, std::uint32_t length, int& result) const override;
    std::string ToString() const override;
    StatusCode FromString(MessageValidator& text) override;
    std::string GetFromStringFormat() const override { return "YYYY-MM-DD"; }
    StatusCode SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const override;
    StatusCode SerializeLengthAndBody(MessageBuilder& builder, std::uint32_t) const override {
        return AppendBody(builder);
    }
    StatusCode DeserializeBody(const void* data, std::uint32_t length) override;
    StatusCode DeserializeLengthAndBody(MessageValidator& validator, std::uint32_t options) override;
    std::uint32_t GetLengthAndBodySize() const override { return GetBodySize(); }
    std::uint32_t GetBodySize() const override { return defined ? BodySize : 0; }

    /// Sets the day number directly; REQUIRES: dayNumber <= MaxDayNumber.
    void SetDayNumber(std::uint32_t dayNumber) noexcept;

protected:
    StatusCode ConvertFrom(const IFieldType& other) override;

private:
    std::uint32_t dayNumber_ = 0;
};

}  // namespace Tavrin
