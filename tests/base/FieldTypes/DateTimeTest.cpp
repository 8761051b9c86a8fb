#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "tavrin/base/FieldTypes/DateTime.h"
#include "ValueTestSupport.h"

namespace Tavrin {
namespace {

using namespace std::chrono;
using Testing::BodyOf;
using Testing::Bytes;
using Testing::Order;
using Testing::ReadText;

TEST(Date, CalendarEdgesAndText) {
    Date date;
    ASSERT_EQ(date.Set(1, 1, 1), Status::Success);
    EXPECT_EQ(BodyOf(date), (Bytes{0, 0, 0}));
    EXPECT_EQ(date.ToString(), "0001-01-01");
    ASSERT_EQ(date.Set(9999, 12, 31), Status::Success);
    EXPECT_EQ(date.GetDayNumber(), Date::MaxDayNumber);

    EXPECT_EQ(date.Set(2026, 2, 29), Status::Invalid);
    EXPECT_EQ(date.Set(0, 1, 1), Status::Invalid);
    EXPECT_EQ(date.Set(10000, 1, 1), Status::Invalid);
    for (const char* bad : {"2024-2-29", "2023-02-29", "0000-01-01", "2024-02-29 ", "2024/02/29", ""}) {
        EXPECT_EQ(ReadText(date, bad), Status::Invalid) << bad;
    }
    ASSERT_EQ(ReadText(date, "2024-02-29"), Status::Success);

    const unsigned char pastTheEnd[] = {0xDB, 0xB9, 0x37};  // MaxDayNumber + 1
    EXPECT_EQ(date.DeserializeBody(pastTheEnd, 3), Status::Invalid);
}

TEST(Time, MillisecondsTakeTheLongFormMarkedByBit7) {
    Time time;
    ASSERT_EQ(time.Set(13, 45, 7), Status::Success);
    EXPECT_EQ(time.GetBodySize(), 3u);
    EXPECT_EQ(BodyOf(time), (Bytes{13, 0x93, 0x0A}));  // 45 * 60 + 7 = 2707
    EXPECT_EQ(time.ToString(), "13:45:07");

    ASSERT_EQ(time.Set(13, 45, 7, 123), Status::Success);
    const Bytes body = BodyOf(time);
    ASSERT_EQ(body.size(), 4u);
    EXPECT_EQ(body[0], 13 | Time::LongFormBit);
    EXPECT_EQ(time.ToString(), "13:45:07.123");

    EXPECT_EQ(time.Set(24, 0, 0), Status::Invalid);
    EXPECT_EQ(time.Set(0, 0, 0, 1000), Status::Invalid);
    ASSERT_EQ(ReadText(time, "23:59:59.000"), Status::Success);
    EXPECT_EQ(time.GetBodySize(), 3u);
    for (const char* bad : {"24:00:00", "1:00:00", "12:60:00", "12:00:00.5", "12:00:00."}) {
        EXPECT_EQ(ReadText(time, bad), Status::Invalid) << bad;
    }
}

TEST(Time, BodiesThatDoNotMatchTheirMarkerAreRefused) {
    const Bytes refused[] = {
        {13, 0, 0, 0},            // 4 bytes without bit 7
        {0x8D, 0, 0},             // bit 7 with 3 bytes
        {0x8D, 0xE8, 0x03, 0},    // long form of a whole second
        {24, 0, 0},               // hour 24
        {0x2D, 0, 0},             // a reserved bit
        {0, 0x10, 0x0E},          // second 3600 of the hour
    };
    for (const Bytes& body : refused) {
        Time time;
        EXPECT_EQ(time.DeserializeBody(body.data(), static_cast<std::uint32_t>(body.size())), Status::Invalid);
    }
}

TEST(DateTime, BodyIsDateThenTimeAndPartsResetTogether) {
    DateTime value;
    ASSERT_EQ(value.Set(sys_days{2026y / November / 22} + 13h + 45min + 7s + 123ms), Status::Success);
    EXPECT_EQ(value.ToString(), "2026-11-22 13:45:07.123");
    const Bytes body = BodyOf(value);
    ASSERT_EQ(body.size(), 7u);
    EXPECT_NE(body[3] & Time::LongFormBit, 0);
    EXPECT_EQ(value.GetLengthAndBodySize(), 7u);

    ASSERT_EQ(ReadText(value, "1970-01-01T00:00:00"), Status::Success);
    EXPECT_EQ(value.GetSysTime(), sys_time<milliseconds>{});
    EXPECT_EQ(value.GetBodySize(), 6u);

    value.Reset();
    EXPECT_FALSE(value.defined || value.GetDate().defined || value.GetTime().defined);
    EXPECT_EQ(value.GetBodySize(), 0u);
    EXPECT_EQ(value.Set(Date(), Time()), Status::NotUsable);
    EXPECT_EQ(value.Set(sys_days{0y / January / 1}), Status::Invalid);
}

TEST(DateTime, ConvertsBetweenItsParts) {
    Date date;
    date.Set(2026, 11, 22);
    DateTime value;
    ASSERT_EQ(value.Convert(&date), Status::Success);
    EXPECT_EQ(value.ToString(), "2026-11-22 00:00:00");
    Time time;
    ASSERT_EQ(time.Convert(&value), Status::Success);
    EXPECT_EQ(time.ToString(), "00:00:00");
    Date undefined;
    ASSERT_EQ(value.Convert(&undefined), Status::Success);
    EXPECT_FALSE(value.defined);
}

// Random instants from year 1 to 9999: bodies and texts survive, and the bodies of the three classes
// order as the instants do.
TEST(DateTime, RandomInstantsRoundTripAndOrderInTime) {
    std::mt19937_64 random(11);
    const auto first = sys_days{1y / January / 1}.time_since_epoch();
    const auto last = (sys_days{9999y / December / 31} + 24h).time_since_epoch();
    std::uniform_int_distribution<std::int64_t> instants(duration_cast<milliseconds>(first).count(),
                                                         duration_cast<milliseconds>(last).count() - 1);
    auto draw = [&] {
        sys_time<milliseconds> instant{milliseconds{instants(random)}};
        if (random() % 2) instant = floor<seconds>(instant);
        return instant;
    };
    for (int i = 0; i < 2000; ++i) {
        const auto a = draw();
        const auto b = i % 7 == 0 ? a : draw();
        DateTime dateTimeA, dateTimeB;
        ASSERT_EQ(dateTimeA.Set(a), Status::Success);
        ASSERT_EQ(dateTimeB.Set(b), Status::Success);
        EXPECT_EQ(dateTimeA.GetSysTime(), a);
        Testing::ExpectRoundTrips(dateTimeA, &DateTime::Compare);
        Testing::ExpectRoundTrips(dateTimeA.GetDate(), &Date::Compare);
        Testing::ExpectRoundTrips(dateTimeA.GetTime(), &Time::Compare);
        EXPECT_EQ(Order(&DateTime::Compare, BodyOf(dateTimeA), BodyOf(dateTimeB)), (a > b) - (a < b));

        const auto dayA = floor<days>(a), dayB = floor<days>(b);
        EXPECT_EQ(Order(&Date::Compare, BodyOf(dateTimeA.GetDate()), BodyOf(dateTimeB.GetDate())),
                  (dayA > dayB) - (dayA < dayB));
        const auto timeA = a - dayA, timeB = b - dayB;
        EXPECT_EQ(Order(&Time::Compare, BodyOf(dateTimeA.GetTime()), BodyOf(dateTimeB.GetTime())),
                  (timeA > timeB) - (timeA < timeB));
    }
}

}  // namespace
}  // namespace Tavrin
