#pragma once
// DateTime: a Date and a Time of day, in that order.
//
// Body, 6 or 7 bytes: the Date body (bytes 0-2), then the Time body (bytes 3-5, or 3-6 when bit 7
// of byte 3 is set, that is when the millisecond is not 0). Bodies order by date, then by time.
//
// Text form: YYYY-MM-DD HH:MM:SS[.mmm], such as 2026-11-22 13:45:07.123; FromString also takes a
// "T" between date and time. The length-and-body form is the body.
// Converts from Date (at 00:00:00). No locks.

#include <chrono>
#include <cstdint>
#include <string>

#include "tavrin/base/FieldTypes/Date.h"
#include "tavrin/base/FieldTypes/Time.h"

namespace Tavrin {

/// A Date and a Time of day, to the millisecond (see the file comment above).
class DateTime : public IFieldType {
public:
    /// Offset of the Time body within a DateTime body.
    static constexpr std::uint32_t TimeOffset = Date::BodySize;
    /// Bytes of the longest body (a time with milliseconds).
    static constexpr std::uint32_t MaxBodySize = Date::BodySize + Time::LongBodySize;

    /// An undefined value.
    DateTime() noexcept : IFieldType(FieldTypeNumber::DateTime) {}

    /// Copies both parts and marks the value defined. Status 14 unless both parts are defined; the
    /// value is then unchanged.
    StatusCode Set(const Date& date, const Time& time);
    /// Sets the date and time of a UTC instant and marks the value defined. Status 23 outside years
    /// 1 to 9999; the value is then unchanged.
    StatusCode Set(std::chrono::sys_time<std::chrono::milliseconds> instant);
    /// The date part; undefined while this value is.
    const Date& GetDate() const noexcept { return date_; }
    /// The time part; undefined while this value is.
    const Time& GetTime() const noexcept { return time_; }
    /// The value as a UTC instant. REQUIRES: defined.
    std::chrono::sys_time<std::chrono::milliseconds> GetSysTime() const;

    /// Orders two DateTime bodies by date, then time. Status 23 when either does not decode; `result`
    /// is set all the same (an undecodable body orders before every valid one).
    static StatusCode Compare(const void* a, std::uint32_t lengthA, const void* b, std::uint32_t lengthB,
                              int& result);

    void Reset() override;
    void Clear() override;
    StatusCode Compare(const void* data, std::uint32_t length, int& result) const override;
    std::string ToString() const override;
    StatusCode FromString(MessageValidator& text) override;
    std::string GetFromStringFormat() const override { return "YYYY-MM-DD HH:MM:SS[.mmm]"; }
    StatusCode SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const override;
    StatusCode SerializeLengthAndBody(MessageBuilder& builder, std::uint32_t) const override {
        return AppendBody(builder);
    }
    StatusCode DeserializeBody(const void* data, std::uint32_t length) override;
    StatusCode DeserializeLengthAndBody(MessageValidator& validator, std::uint32_t options) override;
    std::uint32_t GetLengthAndBodySize() const override;
    std::uint32_t GetBodySize() const override;

protected:
    StatusCode ConvertFrom(const IFieldType& other) override;

private:
    Date date_;
    Time time_;
};

}  // namespace Tavrin
