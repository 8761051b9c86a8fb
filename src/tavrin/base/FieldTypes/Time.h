#pragma once
// Time: a time of day to the millisecond, 00:00:00 to 23:59:59.999.
//
// Body, 3 bytes for a whole second, 4 bytes when the millisecond is not 0:
//   byte 0     bit 7: set in the 4-byte form; bits 5-6: 0; bits 0-4: hour (0-23)
//   3 bytes:   bytes 1-2  second of the hour, little-endian: minute * 60 + second (0-3599)
//   4 bytes:   bytes 1-3  millisecond of the hour, little-endian:
//              (minute * 60 + second) * 1000 + millisecond (1-3599999, never a whole second)
// A field therefore tells the body's length by bit 7 of its first byte. Each time of day has
// exactly one body, and bodies order as the times they hold.
//
// Text form: HH:MM:SS, or HH:MM:SS.mmm when the millisecond is not 0, such as 13:45:07.123.
// FromString also takes HH:MM:SS.000. The length-and-body form is the body.
// Converts from DateTime (its time part). No locks.

#include <chrono>
#include <cstdint>
#include <string>

#include "tavrin/base/FieldTypes/IFieldType.h"

namespace Tavrin {

class TextScanner;

/// A time of day to the millisecond, 00:00:00 to 23:59:59.999 (see the file comment above).
class Time : public IFieldType {
public:
    /// Bytes of the body of a whole second.
    static constexpr std::uint32_t ShortBodySize = 3;
    /// Bytes of the body of a time whose millisecond is not 0.
    static constexpr std::uint32_t LongBodySize = 4;
    /// The bit of a body's first byte that marks the 4-byte form.
    static constexpr std::uint8_t LongFormBit = 0x80;
    /// Milliseconds in a day: the bound of a time since midnight.
    static constexpr std::uint32_t MillisecondsPerDay = 86400000;

    /// An undefined value.
    Time() noexcept : IFieldType(FieldTypeNumber::Time) {}

    /// Sets the time and marks the value defined. Status 23 unless hour < 24, minute < 60,
    /// second < 60 and millisecond < 1000; the value is then unchanged.
    StatusCode Set(unsigned hour, unsigned minute, unsigned second, unsigned millisecond = 0);
    /// Sets the time and marks the value defined. Status 23 unless 0 <= sinceMidnight < 24 hours;
    /// the value is then unchanged.
    StatusCode Set(std::chrono::milliseconds sinceMidnight);
    /// The hour, 0 to 23. REQUIRES: defined.
    unsigned GetHour() const noexcept { return hour_; }
    /// The minute, 0 to 59. REQUIRES: defined.
    unsigned GetMinute() const noexcept { return minute_; }
    /// The second, 0 to 59. REQUIRES: defined.
    unsigned GetSecond() const noexcept { return second_; }
    /// The millisecond, 0 to 999. REQUIRES: defined.
    unsigned GetMillisecond() const noexcept { return millisecond_; }
    /// The time as milliseconds since midnight. REQUIRES: defined.
    std::chrono::milliseconds GetSinceMidnight() const noexcept;

    /// Orders two Time bodies by time of day. Status 23 when either does not decode; `result` is set
    /// all the same (an undecodable body orders before every valid one).
    static StatusCode Compare(const void* a, std::uint32_t lengthA, const void* b, std::uint32_t lengthB,
                              int& result);
    /// Decodes a body into milliseconds since midnight; false (and `sinceMidnight` untouched) if it is
    /// not one.
    static bool Decode(const void* data, std::uint32_t length, std::uint32_t& sinceMidnight) noexcept;
    /// The body length that a body's first byte announces.
    static std::uint32_t BodyLength(std::uint8_t firstByte) noexcept {
        return (firstByte & LongFormBit) != 0 ? LongBodySize : ShortBodySize;
    }
    /// The text form HH:MM:SS[.mmm] of milliseconds since midnight (below MillisecondsPerDay).
    static std::string Format(std::uint32_t sinceMidnight);
    /// Reads HH:MM:SS[.mmm] from `scanner`, for use inside longer text forms; false unless it is a
    /// valid time of day. `sinceMidnight` is untouched on failure; the scanner may have moved.
    static bool Parse(TextScanner& scanner, std::uint32_t& sinceMidnight);

    void Reset() override { defined = false; }
    void Clear() override { defined = false; }
    StatusCode Compare(const void* data, std::uint32_t length, int& result) const override;
    std::string ToString() const override;
    StatusCode FromString(MessageValidator& text) override;
    std::string GetFromStringFormat() const override { return "HH:MM:SS[.mmm]"; }
    StatusCode SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const override;
    StatusCode SerializeLengthAndBody(MessageBuilder& builder, std::uint32_t) const override {
        return AppendBody(builder);
    }
    StatusCode DeserializeBody(const void* data, std::uint32_t length) override;
    StatusCode DeserializeLengthAndBody(MessageValidator& validator, std::uint32_t options) override;
    std::uint32_t GetLengthAndBodySize() const override { return GetBodySize(); }
    std::uint32_t GetBodySize() const override;

protected:
    StatusCode ConvertFrom(const IFieldType& other) override;

private:
    void SetSinceMidnight(std::uint32_t sinceMidnight) noexcept;

    std::uint8_t hour_ = 0;
    std::uint8_t minute_ = 0;
    std::uint8_t second_ = 0;
    std::uint16_t millisecond_ = 0;  // not 0: the body takes its 4-byte form
};

}  // namespace Tavrin
