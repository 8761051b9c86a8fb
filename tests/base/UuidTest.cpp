#include "tavrin/base/Uuid.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace Tavrin {
namespace {

TEST(Uuid, NewValuesDifferAndSurviveTheBinaryForm) {
    std::set<std::string> seen;
    for (int i = 0; i < 1000; ++i) ASSERT_TRUE(seen.insert(Uuid().ToString()).second);
    const Uuid original;
    unsigned char bytes[16] = {};
    ASSERT_EQ(original.GetBinary(bytes, 16), Status::Success);
    EXPECT_FALSE(Uuid(bytes, 16) != original);
    bytes[15] ^= 1;
    EXPECT_TRUE(Uuid(bytes, 16) != original);
    EXPECT_EQ(original.GetBinary(bytes, 15), Status::BufferTooSmall);
}

TEST(Uuid, TextFormIsASafeFileName) {
    const unsigned char bytes[16] = {0x0f, 0x1e, 0x2d, 0x3c, 0x4b, 0x5a, 0x49, 0x78,
                                     0x87, 0x96, 0xa5, 0xb4, 0xc3, 0xd2, 0xe1, 0xf0};
    EXPECT_EQ(Uuid(bytes, 16).ToString(), "0f1e2d3c-4b5a-4978-8796-a5b4c3d2e1f0");
    EXPECT_EQ(Uuid().ToString().find_first_not_of("0123456789abcdef-"), std::string::npos);
}

}  // namespace
}  // namespace Tavrin
