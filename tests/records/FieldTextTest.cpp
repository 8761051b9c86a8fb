// Text forms of record images and of single values.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "RecordsTestSupport.h"
#include "tavrin/base/FieldTypes/Date.h"
#include "tavrin/records/FieldTypeTable.h"
#include "tavrin/records/ManagedFieldList.h"

namespace Tavrin::Database {
namespace {

std::string TextOf(FieldSpecification::Type type, std::vector<unsigned char> bytes) {
    return GetFieldTypeInfo(type).text(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

TEST(FieldText, TextColumnPerType) {
    EXPECT_EQ(TextOf(FieldSpecification::TextString, {'a', '\t', 200, 127, '~'}), "a...~");
    EXPECT_EQ(TextOf(FieldSpecification::SInt, {65}), "A");  // one byte goes out as a character
    EXPECT_EQ(TextOf(FieldSpecification::SInt, {0xFB, 0xFF}), "-5");
    EXPECT_EQ(TextOf(FieldSpecification::UInt, {0xFF, 0xFF, 0xFF, 0xFF}), "4294967295");
    EXPECT_EQ(TextOf(FieldSpecification::UInt, {1, 2, 3}), "");
    EXPECT_EQ(TextOf(FieldSpecification::Boolean, {0, 1}), "true");
    EXPECT_EQ(TextOf(FieldSpecification::BinaryArray, {0x00, 0xAB}), "00ab");

    Date date;
    ASSERT_EQ(date.Set(2026, 11, 22), Status::Success);
    std::vector<unsigned char> body(3);
    std::uint32_t written = 0;
    ASSERT_EQ(date.SerializeBody(body.data(), 3, written), Status::Success);
    EXPECT_EQ(TextOf(FieldSpecification::Date, body), "2026-11-22");
    EXPECT_EQ(TextOf(FieldSpecification::Date, {0xFF, 0xFF, 0xFF}), "");  // does not decode
}

// A field of each kind that the two record forms treat differently.
ManagedFieldList TextList() {
    return ManagedFieldList({FieldSpecification(1, std::string(40, 'n'), FieldSpecification::TextString, 80, 0, 0),
                             FieldSpecification(2, "letter", FieldSpecification::SInt, 1, 0, 0),
                             FieldSpecification(3, "flag", FieldSpecification::Boolean, 1, 0, 0),
                             FieldSpecification(4, "count", FieldSpecification::UInt, 4, 0, 0)});
}

TEST(FieldText, ToStringCutsAndPads) {
    const ManagedFieldList list = TextList();
    Testing::Image image(list);
    image.Text(1, std::string(60, 'v')).Number(2, static_cast<signed char>(66)).Number(3, true);

    const std::string expected = std::string(30, 'n') + "  " + std::string(47, 'v') + "\n" +
                                 "letter" + std::string(26, ' ') + "B\n" +
                                 "flag" + std::string(28, ' ') + "true\n" +
                                 "count" + std::string(27, ' ') + "Undefined\n";
    EXPECT_EQ(list.ToString(image.data()), expected);
}

TEST(FieldText, ToLogStringKeepsPositionsCountable) {
    const ManagedFieldList list = TextList();
    Testing::Image image(list);
    EXPECT_EQ(list.ToLogString(image.data()), ",,,");
    // The flag has no value class: its column stays empty.
    image.Text(1, "a,b").Number(2, static_cast<signed char>(66)).Number(3, true).Number(4, std::uint32_t{7});
    EXPECT_EQ(list.ToLogString(image.data()), "a,b,66,,7");
    ASSERT_EQ(list.ClearField(image.data(), 2), Status::Success);
    EXPECT_EQ(list.ToLogString(image.data()), "a,b,,,7");
}

}  // namespace
}  // namespace Tavrin::Database
