#include <gtest/gtest.h>

#include <array>
#include <string>

#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"

namespace Tavrin {
namespace {

TEST(MessageBuilder, WireFormIsLittleEndianConcatenation) {
    MessageBuilder builder;
    ASSERT_EQ(builder.AppendUInt8(0x01), Status::Success);
    ASSERT_EQ(builder.AppendUInt16(0x0302), Status::Success);
    ASSERT_EQ(builder.AppendUInt32(0x07060504), Status::Success);
    ASSERT_EQ(builder.AppendInt32(-1), Status::Success);
    ASSERT_EQ(builder.AppendString("ab"), Status::Success);
    ASSERT_EQ(builder.AppendId16(0xFFFF), Status::Success);
    const std::array<unsigned char, 19> expected = {1, 2, 3, 4, 5, 6, 7, 0xFF, 0xFF, 0xFF, 0xFF,
                                                    2, 0, 'a', 'b', 0xFF, 0xFF, 0, 0};
    ASSERT_EQ(builder.GetLength(), expected.size());
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), builder.GetBuffer()));
}

TEST(MessageBuilder, FixedBufferStopsWhenFullAndKeepsLength) {
    std::array<unsigned char, 6> buffer{};
    MessageBuilder builder(buffer.data(), buffer.size());
    EXPECT_EQ(builder.AppendUInt32(1), Status::Success);
    EXPECT_EQ(builder.AppendUInt32(2), Status::Invalid);
    EXPECT_EQ(builder.AppendString("abc"), Status::Invalid);
    EXPECT_EQ(builder.GetLength(), 4u);
    EXPECT_EQ(builder.AppendUInt16(2), Status::Success);
    EXPECT_EQ(builder.GetBuffer(), buffer.data());
}

TEST(MessageBuilder, GrowableOnAStackBufferMovesOffItAndBack) {
    std::array<unsigned char, 4> buffer{};
    MessageBuilder builder(buffer.data(), buffer.size(), true);
    ASSERT_EQ(builder.AppendUInt32(7), Status::Success);
    EXPECT_EQ(builder.GetBuffer(), buffer.data());
    ASSERT_EQ(builder.AppendUInt32(8), Status::Success);
    EXPECT_NE(builder.GetBuffer(), buffer.data());
    EXPECT_EQ(DecodeU32(builder.GetBuffer()), 7u);
    EXPECT_EQ(builder.AdjustBufferSize(0), Status::Success);
    EXPECT_EQ(builder.GetBuffer(), buffer.data());

    std::array<unsigned char, 8> other{};
    builder.SetFixedBuffer(other.data(), other.size());
    EXPECT_EQ(builder.AppendUInt64(9), Status::Success);
    EXPECT_EQ(builder.AppendUInt8(9), Status::Invalid);
}

TEST(MessageValidator, RangeCheckedIdRead) {
    MessageBuilder builder;
    builder.AppendUInt32(0x0000FFFF);
    builder.AppendUInt32(0x00010000);
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    std::uint16_t id = 0;
    EXPECT_EQ(validator.ReadId16(id), Status::Success);
    EXPECT_EQ(id, 0xFFFF);
    EXPECT_EQ(validator.ReadId16(id), Status::OutOfRange);
    EXPECT_EQ(validator.GetOffset(), 4u);
    bool flag = false;
    EXPECT_EQ(validator.ReadBool32(flag), Status::Success);
    EXPECT_TRUE(flag);
}

// Every prefix of a valid message is refused with 23 by the read that runs out, never read past.
TEST(MessageValidator, EveryCutOfAMessageIsRefused) {
    MessageBuilder builder;
    builder.AppendUInt8(1);
    builder.AppendString("hello");
    builder.AppendUInt32(42);
    builder.AppendBytes("xyz", 3);
    const std::string whole(reinterpret_cast<const char*>(builder.GetBuffer()), builder.GetLength());
    auto read = [](MessageValidator& v) {
        std::uint8_t version = 0;
        std::string text;
        std::uint32_t number = 0;
        std::array<char, 3> raw{};
        StatusCode s = v.ReadUInt8(version);
        if (s == Status::Success) s = v.ValidateString(&text, nullptr, nullptr);
        if (s == Status::Success) s = v.ReadUInt32(number);
        if (s == Status::Success) s = v.ValidateBytesCopy(3, raw.data());
        return s;
    };
    for (std::size_t cut = 0; cut < whole.size(); ++cut) {
        const std::string part = whole.substr(0, cut);  // own allocation: ASan sees any overread
        MessageValidator validator(part.data(), static_cast<std::uint32_t>(part.size()));
        EXPECT_EQ(read(validator), Status::Invalid) << "cut at " << cut;
    }
    MessageValidator validator(whole.data(), static_cast<std::uint32_t>(whole.size()));
    EXPECT_EQ(read(validator), Status::Success);
}

TEST(MessageValidator, StringLengthRunningPastTheEndGivesNoString) {
    const std::array<unsigned char, 4> bytes = {5, 0, 'a', 'b'};
    MessageValidator validator(bytes.data(), bytes.size());
    std::string text = "unchanged";
    EXPECT_EQ(validator.ValidateString(&text, nullptr, nullptr), Status::Invalid);
    EXPECT_EQ(text, "unchanged");
    EXPECT_EQ(validator.GetOffset(), 0u);
}

}  // namespace
}  // namespace Tavrin
