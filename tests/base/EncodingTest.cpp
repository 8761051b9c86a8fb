#include "tavrin/base/Encoding.h"

#include <gtest/gtest.h>

#include <array>

namespace Tavrin {
namespace {

TEST(Encoding, WritesLittleEndianAtOddOffsets) {
    std::array<unsigned char, 16> bytes{};
    EncodeU32(bytes.data() + 1, 0x11223344u);
    EXPECT_EQ(bytes[1], 0x44);
    EXPECT_EQ(bytes[2], 0x33);
    EXPECT_EQ(bytes[3], 0x22);
    EXPECT_EQ(bytes[4], 0x11);
    EXPECT_EQ(DecodeU32(bytes.data() + 1), 0x11223344u);

    EncodeU16(bytes.data() + 7, 0xABCD);
    EXPECT_EQ(bytes[7], 0xCD);
    EXPECT_EQ(bytes[8], 0xAB);
    EncodeI64(bytes.data() + 3, -2);
    EXPECT_EQ(bytes[3], 0xFE);
    for (int i = 4; i < 11; ++i) EXPECT_EQ(bytes[i], 0xFF);
    EXPECT_EQ(DecodeI64(bytes.data() + 3), -2);
}

TEST(Encoding, VariableWidthIntegersKeepTheirSign) {
    std::array<unsigned char, 8> bytes{};
    for (std::uint32_t width : {1u, 2u, 4u, 8u}) {
        EncodeUnsigned(bytes.data(), width, static_cast<std::uint64_t>(-5));
        EXPECT_EQ(DecodeSigned(bytes.data(), width), -5) << width;
        EncodeUnsigned(bytes.data(), width, 0x7F);
        EXPECT_EQ(DecodeUnsigned(bytes.data(), width), 0x7Fu) << width;
    }
    EXPECT_EQ(DecodeUnsigned(bytes.data(), 3), 0u);
}

}  // namespace
}  // namespace Tavrin
