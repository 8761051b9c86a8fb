#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "tavrin/base/FieldTypes/Rational.h"
#include "tavrin/base/FieldTypes/SInt.h"
#include "tavrin/base/FieldTypes/UInt.h"
#include "ValueTestSupport.h"

namespace Tavrin {
namespace {

using Testing::Bytes;
using Testing::ReadText;

TEST(SInt, BodyFillsTheFieldWidthOrRefuses) {
    SInt value;
    value.Set(-2);
    std::uint32_t written = 0;
    unsigned char buffer[8];
    ASSERT_EQ(value.SerializeBody(buffer, 4, written), Status::Success);
    EXPECT_EQ(written, 4u);
    EXPECT_EQ(Bytes(buffer, buffer + 4), (Bytes{0xFE, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(value.SerializeBody(buffer, 3, written), Status::LengthMismatch);
    value.Set(-129);
    EXPECT_EQ(value.SerializeBody(buffer, 1, written), Status::Invalid);
    EXPECT_EQ(value.GetBodySize(), 2u);
    value.Set(-128);
    EXPECT_EQ(value.GetBodySize(), 1u);

    UInt unsignedValue;
    unsignedValue.Set(256);
    EXPECT_EQ(unsignedValue.SerializeBody(buffer, 1, written), Status::Invalid);
    EXPECT_EQ(unsignedValue.GetBodySize(), 2u);
}

TEST(SInt, ReadsAnyWidthExtended) {
    const unsigned char ones[] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    SInt value;
    UInt unsignedValue;
    for (std::uint32_t width : {1u, 2u, 4u, 8u}) {
        ASSERT_EQ(value.DeserializeBody(ones, width), Status::Success);
        EXPECT_EQ(value.Get(), -1);
        ASSERT_EQ(unsignedValue.DeserializeBody(ones, width), Status::Success);
        EXPECT_EQ(unsignedValue.Get(), width == 8 ? std::numeric_limits<std::uint64_t>::max() : (std::uint64_t{1} << (8 * width)) - 1);
    }
    EXPECT_EQ(value.DeserializeBody(ones, 3), Status::LengthMismatch);

    // Equal worth at another width is no difference; a value too wide for the field is one.
    value.Set(-1);
    bool different = true;
    ASSERT_EQ(value.IsDifferent(ones, 2, different), Status::Success);
    EXPECT_FALSE(different);
    value.Set(70000);
    value.IsDifferent(ones, 2, different);
    EXPECT_TRUE(different);
    int result = 0;
    EXPECT_EQ(value.Compare(ones, 3, result), Status::Invalid);
    ASSERT_EQ(value.Compare(ones, 8, result), Status::Success);
    EXPECT_GT(result, 0);
}

TEST(SInt, TextAtTheLimits) {
    SInt value;
    ASSERT_EQ(ReadText(value, "-9223372036854775808"), Status::Success);
    EXPECT_EQ(value.Get(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(value.ToString(), "-9223372036854775808");
    EXPECT_EQ(ReadText(value, "9223372036854775808"), Status::Invalid);
    EXPECT_EQ(ReadText(value, "-"), Status::Invalid);
    UInt unsignedValue;
    ASSERT_EQ(ReadText(unsignedValue, "18446744073709551615"), Status::Success);
    EXPECT_EQ(unsignedValue.Get(), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(ReadText(unsignedValue, "18446744073709551616"), Status::Invalid);
    EXPECT_EQ(ReadText(unsignedValue, "-1"), Status::Invalid);
}

TEST(SInt, ConvertsWithinRange) {
    SInt value;
    UInt unsignedValue;
    unsignedValue.Set(std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(value.Convert(&unsignedValue), Status::Invalid);
    value.Set(-1);
    EXPECT_EQ(unsignedValue.Convert(&value), Status::Invalid);

    Rational rational;
    rational.Set(-2000, 3);  // -2.000
    ASSERT_EQ(value.Convert(&rational), Status::Success);
    EXPECT_EQ(value.Get(), -2);
    rational.Set(5, 19);  // 5/2
    EXPECT_EQ(value.Convert(&rational), Status::Invalid);
    rational.Set(0, Rational::PositiveInfinity);
    EXPECT_EQ(value.Convert(&rational), Status::Invalid);
}

TEST(SInt, RandomValuesRoundTripAtEveryWidthTheyFit) {
    std::mt19937_64 random(17);
    for (int i = 0; i < 1000; ++i) {
        SInt value;
        value.Set(static_cast<std::int64_t>(random()) >> (random() % 64));
        Testing::ExpectRoundTrips(value, nullptr);
        for (std::uint32_t width : {1u, 2u, 4u, 8u}) {
            unsigned char body[8];
            std::uint32_t written = 0;
            if (value.SerializeBody(body, width, written) != Status::Success) {
                EXPECT_LT(width, value.GetBodySize());
                continue;
            }
            SInt back;
            ASSERT_EQ(back.DeserializeBody(body, width), Status::Success);
            EXPECT_EQ(back.Get(), value.Get());
        }
    }
}

}  // namespace
}  // namespace Tavrin
