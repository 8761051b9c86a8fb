#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "tavrin/base/FieldTypes/Rational.h"
#include "tavrin/base/FieldTypes/SInt.h"
#include "tavrin/base/FieldTypes/TRational.h"
#include "ValueTestSupport.h"

namespace Tavrin {
namespace {

using Testing::BodyOf;
using Testing::Bytes;
using Testing::Order;
using Testing::ReadText;

Rational MakeRational(std::int64_t numerator, std::uint32_t denominator) {
    Rational value;
    EXPECT_EQ(value.Set(numerator, denominator), Status::Success);
    return value;
}

TEST(Rational, BodySizeFollowsTheMagnitudeOfTheNumerator) {
    const std::pair<std::int64_t, std::uint32_t> cases[] = {
        {0, 2}, {255, 2}, {256, 3}, {65535, 3}, {65536, 5}, {4294967295, 5}, {4294967296, 9},
        {std::numeric_limits<std::int64_t>::max(), 9}};
    for (const auto& [numerator, size] : cases) {
        EXPECT_EQ(MakeRational(numerator, 3).GetBodySize(), size) << numerator;
        EXPECT_EQ(MakeRational(-numerator, 3).GetBodySize(), size) << -numerator;
        EXPECT_EQ(BodyOf(MakeRational(-numerator, 3)).size(), size);
    }
}

TEST(Rational, BodyBytesCarryCodeSignAndWidth) {
    EXPECT_EQ(BodyOf(MakeRational(255, 0)), (Bytes{0x00, 0xFF}));
    EXPECT_EQ(BodyOf(MakeRational(-256, 2)), (Bytes{0x62, 0x00, 0x01}));
    EXPECT_EQ(BodyOf(MakeRational(65536, 21)), (Bytes{0x95, 0x00, 0x00, 0x01, 0x00}));
}

TEST(Rational, SetterRefusesWhatHasNoBody) {
    Rational value;
    EXPECT_EQ(value.Set(std::numeric_limits<std::int64_t>::min(), 0), Status::Invalid);
    EXPECT_EQ(value.Set(1, Rational::CodeCount), Status::Invalid);
    EXPECT_FALSE(value.defined);
    ASSERT_EQ(value.Set(42, Rational::PositiveInfinity), Status::Success);
    EXPECT_EQ(value.GetNumerator(), 0);
}

TEST(Rational, AccessorsOfAnUndefinedValueThrow) {
    Rational value;
    try {
        value.GetDenominator();
        FAIL() << "no exception";
    } catch (const StatusCodeException& e) {
        EXPECT_EQ(e.GetCode(), Status::NotUsable);
        EXPECT_EQ(e.GetFunction(), "Tavrin::Rational::GetDenominator");
        EXPECT_NE(e.GetFile().find("FieldTypes/Rational"), std::string::npos);
    }
    EXPECT_THROW(value.GetNumerator(), StatusCodeException);
    value.Set(3, 19);
    EXPECT_EQ(value.GetDenominator(), 19u);
}

TEST(Rational, NonCanonicalBodiesAreRefused) {
    const Bytes refused[] = {
        {},                        // empty
        {0x00},                    // no magnitude
        {0x40, 0x05, 0x00},        // 2 bytes for a magnitude that fits 1
        {0x20, 0x00},              // negative zero
        {0x1C, 0x01},              // an infinity with a numerator
        {0x1E, 0x01},              // code 30
        {0x00, 0x01, 0x02},        // longer than its first byte says
        {0xC0, 0, 0, 0, 0, 0, 0, 0, 0x80},  // magnitude 2^63
    };
    for (const Bytes& body : refused) {
        Rational value;
        EXPECT_EQ(value.DeserializeBody(body.data(), static_cast<std::uint32_t>(body.size())), Status::Invalid);
    }
}

TEST(Rational, TextFormsByDenominatorCode) {
    EXPECT_EQ(MakeRational(-5, 2).ToString(), "-0.05");
    EXPECT_EQ(MakeRational(12340, 3).ToString(), "12.340");
    EXPECT_EQ(MakeRational(7, 0).ToString(), "7");
    EXPECT_EQ(MakeRational(-25, 21).ToString(), "-25/8");
    EXPECT_EQ(MakeRational(0, Rational::NegativeInfinity).ToString(), "-inf");
    EXPECT_EQ(Rational().ToString(), "");

    Rational value;
    for (const char* bad : {"", "-", "1.", "1/3", "1/1024", "1.2.3", "9223372036854775808", "0.1234567890123456789",
                            "92233720368547758.08", "+1", "inf "}) {
        EXPECT_EQ(ReadText(value, bad), Status::Invalid) << bad;
    }
    ASSERT_EQ(ReadText(value, "-922337203685477580.7"), Status::Success);
    EXPECT_EQ(value.GetNumerator(), -std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(value.GetDenominator(), 1u);
}

TEST(Rational, CompareGoesByWorthAcrossForms) {
    int result = 0;
    ASSERT_EQ(MakeRational(1, 19).Compare(MakeRational(5, 1), result), Status::Success);
    EXPECT_EQ(result, 0);
    MakeRational(-1, 27).Compare(MakeRational(-2, 27), result);
    EXPECT_GT(result, 0);
    MakeRational(0, Rational::NegativeInfinity).Compare(MakeRational(-std::numeric_limits<std::int64_t>::max(), 0), result);
    EXPECT_LT(result, 0);
    MakeRational(0, Rational::PositiveInfinity).Compare(MakeRational(std::numeric_limits<std::int64_t>::max(), 0), result);
    EXPECT_GT(result, 0);
    EXPECT_EQ(MakeRational(1, 0).Compare(Rational(), result), Status::NotUsable);
}

// Random values on a grid of eighths, each written in a random one of the forms that can hold it,
// so the expected order is the order of the grid index.
TEST(Rational, RandomValuesRoundTripAndOrderByWorth) {
    std::mt19937_64 random(20261122);
    std::uniform_int_distribution<std::int64_t> eighths(-(std::int64_t{1} << 36), std::int64_t{1} << 36);
    std::uniform_int_distribution<int> form(0, 3);
    auto make = [&](std::int64_t k) {
        switch (form(random)) {
            case 0: return MakeRational(k, 21);                       // k/8
            case 1: return MakeRational(k * 125, 3);                  // k*0.125
            case 2: return MakeRational(k * 64, 27);                  // k*64/512
            default: return MakeRational(k * 12500000, 8);            // 8 decimals
        }
    };
    for (int i = 0; i < 2000; ++i) {
        std::int64_t k = eighths(random) >> (random() % 36);
        std::int64_t j = i % 5 == 0 ? k : eighths(random) >> (random() % 36);
        const Rational a = make(k);
        const Rational b = make(j);
        Testing::ExpectRoundTrips(a, &Rational::Compare);
        // Worth decides; equal worths in different forms order by their bodies, never tie.
        const int byBody = (BodyOf(a) > BodyOf(b)) - (BodyOf(a) < BodyOf(b));
        const int expected = k != j ? (k > j) - (k < j) : byBody;
        EXPECT_EQ(Order(&Rational::Compare, BodyOf(a), BodyOf(b)), expected) << a.ToString() << " " << b.ToString();
        int result = 0;
        ASSERT_EQ(a.Compare(BodyOf(b).data(), b.GetBodySize(), result), Status::Success);
        EXPECT_EQ(Testing::Sign(result), expected);
    }
}

TEST(TRational, BodyIsTheRationalBodyAndATrendByte) {
    TRational value;
    std::uint32_t written = 0;
    unsigned char buffer[TRational::MaxBodySize];
    EXPECT_EQ(value.SerializeBody(buffer, sizeof(buffer), written), Status::NotUsable);

    ASSERT_EQ(value.Set(255, 0), Status::Success);
    ASSERT_EQ(value.SetTrends(TRational::TrendAbove, TRational::TrendBelow, TRational::TrendEqual), Status::Success);
    EXPECT_EQ(BodyOf(value), (Bytes{0x00, 0xFF, 0x09}));
    EXPECT_EQ(value.ToString(), "255 (1,2,0)");
    EXPECT_EQ(value.SetValueTrend(4), Status::Invalid);

    value.Reset();
    EXPECT_FALSE(value.defined);
    EXPECT_FALSE(value.GetRational().defined);
    EXPECT_EQ(value.GetReferenceTrend(), TRational::TrendBelow);
}

TEST(TRational, RandomValuesRoundTripAndTrendsOnlyBreakTies) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 500; ++i) {
        TRational a;
        ASSERT_EQ(a.Set(static_cast<std::int64_t>(random() >> (random() % 64)) * (i % 2 ? -1 : 1),
                        static_cast<std::uint32_t>(random() % Rational::CodeCount)),
                  Status::Success);
        ASSERT_EQ(a.SetTrends(random() % 4, random() % 4, random() % 4), Status::Success);
        Testing::ExpectRoundTrips(a, &TRational::Compare);
        TRational b;
        b.Convert(&a);
        b.SetTrends((a.GetValueTrend() + 1) % 4, 0, 0);
        ASSERT_NE(BodyOf(a), BodyOf(b));
        const int byBody = (BodyOf(a) > BodyOf(b)) - (BodyOf(a) < BodyOf(b));
        EXPECT_EQ(Order(&TRational::Compare, BodyOf(a), BodyOf(b)), byBody);
    }
}

TEST(TRational, ConvertsFromOtherNumbersWithoutTrends) {
    SInt integer;
    integer.Set(-12);
    TRational value;
    value.SetTrends(1, 1, 1);
    ASSERT_EQ(value.Convert(&integer), Status::Success);
    EXPECT_EQ(value.ToString(), "-12 (3,3,3)");
    Rational rational;
    ASSERT_EQ(rational.Convert(&value), Status::Success);
    EXPECT_EQ(rational.ToString(), "-12");
}

}  // namespace
}  // namespace Tavrin
