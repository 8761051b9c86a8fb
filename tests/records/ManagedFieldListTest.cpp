#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "RecordsTestSupport.h"
#include "tavrin/records/ManagedFieldList.h"

namespace Tavrin::Database {
namespace {

using Testing::Bytes;
using Testing::ExpectDatabaseException;

constexpr const char* kConstructor = "Tavrin::Database::ManagedFieldList::ManagedFieldList";

// UInt(4), TextString(10), Blob(300), DateTime(7); the Blob's offset is ignored.
ManagedFieldList ExampleList() {
    return ManagedFieldList({FieldSpecification(1, "number", FieldSpecification::UInt, 4, 0, 0),
                             FieldSpecification(2, "text", FieldSpecification::TextString, 10, 0, 0),
                             FieldSpecification(3, "blob", FieldSpecification::Blob, 300, 999, 0),
                             FieldSpecification(4, "when", FieldSpecification::DateTime, 7, 0, 0)});
}

TEST(ManagedFieldListLayout, ExampleOffsetsPrefixesAndLength) {
    const ManagedFieldList list = ExampleList();
    EXPECT_EQ(list.GetDataLength(), 325u);
    std::vector<std::uint32_t> offsets;
    for (const FieldSpecification& field : list.GetFieldSpecificationList()) offsets.push_back(field.GetOffset());
    EXPECT_EQ(offsets, (std::vector<std::uint32_t>{4, 8, 18, 318}));

    std::vector<unsigned char> image(list.GetDataLength(), 0);
    ASSERT_EQ(list.SetField(image.data(), 2, Bytes("abc"), 3), Status::Success);
    const std::string blob(260, 'b');
    ASSERT_EQ(list.SetField(image.data(), 3, blob.data(), 260), Status::Success);
    EXPECT_EQ(image[0], 0x60);  // fields 1 and 2 of byte 0
    EXPECT_EQ(image[1], 3);     // 1-byte prefix of the text
    EXPECT_EQ(DecodeU16(&image[2]), 260);
    EXPECT_EQ(std::string(image.begin() + 8, image.begin() + 11), "abc");
}

TEST(ManagedFieldListLayout, PrefixWidthsChangeAt255And65535) {
    for (auto [maxLength, width] : {std::pair{254u, 1u}, {255u, 2u}, {65535u, 4u}}) {
        const ManagedFieldList list({FieldSpecification(0, "t", FieldSpecification::BinaryString, maxLength, 0, 0)});
        EXPECT_EQ(list.GetDataLength(), 1 + width + maxLength) << maxLength;
    }
    const ManagedFieldList list({FieldSpecification(0, "t", FieldSpecification::TextString, 70000, 0, 0)});
    std::vector<unsigned char> image(list.GetDataLength(), 0);
    const std::string value(66000, 'v');
    ASSERT_EQ(list.SetField(image.data(), 0, value.data(), 66000), Status::Success);
    EXPECT_EQ(DecodeU32(&image[1]), 66000u);
}

TEST(ManagedFieldListLayout, BitmapGrowsByteByByteAndCountsFromTheHighBit) {
    std::vector<FieldSpecification> fields;
    for (std::uint16_t id = 0; id < 9; ++id) fields.emplace_back(id, "f", FieldSpecification::UInt, 1, 0, 0);
    const ManagedFieldList list(fields);
    ASSERT_EQ(list.GetBitmapLength(), 2u);
    fields.pop_back();
    EXPECT_EQ(ManagedFieldList(fields).GetBitmapLength(), 1u);
    std::vector<unsigned char> image(list.GetDataLength(), 0);
    for (std::uint16_t id : {0, 7, 8}) ASSERT_EQ(list.SetField(image.data(), id, Bytes("x"), 1), Status::Success);
    EXPECT_EQ(image[0], 0x81);
    EXPECT_EQ(image[1], 0x80);
}

TEST(ManagedFieldListConstruction, RefusesBadListsNamingTheField) {
    const auto invalid = DatabaseException::InvalidParameter;
    ExpectDatabaseException([] { ManagedFieldList({}); }, invalid, kConstructor, "empty field specification list");
    ExpectDatabaseException(
        [] {
            ManagedFieldList({FieldSpecification(4, "first", FieldSpecification::UInt, 4, 0, 0),
                              FieldSpecification(4, "second", FieldSpecification::SInt, 4, 0, 0)});
        },
        invalid, kConstructor, "repeated field id <4> at field <second>");
    // A specification that was never validated is refused when the list makes its entry.
    const FieldSpecification bad = Testing::MakeUnchecked(3, "bad", FieldSpecification::Blob, 4);
    ExpectDatabaseException([&] { ManagedFieldList({bad}); }, invalid, "Tavrin::Database::ValidateBlobSpecification",
                            "invalid length <4> for field <bad>");
    ExpectDatabaseException(
        [] {
            ManagedFieldList({FieldSpecification(1, "a", FieldSpecification::BinaryArray, 0xF0000000u, 0, 0),
                              FieldSpecification(2, "b", FieldSpecification::BinaryArray, 0x10000000u, 0, 0)});
        },
        invalid, kConstructor, "invalid length <268435456> for field <b>");
}

TEST(ManagedFieldListValues, LengthsReadFromTheImageNeverPassTheSlot) {
    const ManagedFieldList list({FieldSpecification(1, "text", FieldSpecification::TextString, 10, 0, 0),
                                 FieldSpecification(2, "when", FieldSpecification::DateTime, 6, 0, 0)});
    std::vector<unsigned char> image(list.GetDataLength(), 0xFF);  // every bit set, prefix 255
    EXPECT_EQ(list.GetFieldLength(0, image.data()), 10u);
    EXPECT_EQ(list.GetFieldLength(1, image.data()), 6u);  // marker bit says 7
    MessageBuilder builder;
    ASSERT_EQ(list.SerializeFields(builder, image.data()), Status::Success);
    EXPECT_EQ(builder.GetLength(), 1u + 1 + 10 + 6);
}

TEST(ManagedFieldListValues, UndefinedFieldsAfterResetClearAndCopy) {
    const ManagedFieldList list = ExampleList();
    std::vector<unsigned char> image(list.GetDataLength(), 0);
    ASSERT_EQ(list.SetField(image.data(), 2, Bytes("abc"), 3), Status::Success);
    list.ResetData(image.data());
    EXPECT_EQ(list.GetFieldLength(1, image.data()), 0u);
    const void* value = nullptr;
    void* slot = nullptr;
    std::uint32_t length = 9;
    EXPECT_EQ(list.GetField(static_cast<const unsigned char*>(image.data()), 2, value, length), Status::Undefined);
    ASSERT_EQ(list.GetField(image.data(), 2, slot, length), Status::Success);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(list.SetFieldLength(image.data(), 2, 0), Status::LengthMismatch);  // values are never empty

    bool changed = true;
    ASSERT_EQ(list.ClearField(image.data(), 2, changed), Status::Success);
    EXPECT_FALSE(changed);
    ASSERT_EQ(list.SetField(image.data(), 1, Bytes("\1\0\0\0"), 4), Status::Success);
    ASSERT_EQ(list.ClearField(image.data(), 1, changed), Status::Success);
    EXPECT_TRUE(changed);
    EXPECT_FALSE(list.IsFieldDefined(0, image.data()));

    std::vector<unsigned char> target(list.GetDataLength(), 0);
    ASSERT_EQ(list.SetField(target.data(), 2, Bytes("xyz"), 3), Status::Success);
    ASSERT_EQ(list.CopyFieldByNumber(1, target.data(), 1, list, image.data()), Status::Success);
    EXPECT_FALSE(list.IsFieldDefined(1, target.data()));
}

TEST(ManagedFieldListWire, ExactImageMessageAndEveryCut) {
    const ManagedFieldList list = ExampleList();
    std::vector<unsigned char> image(list.GetDataLength(), 0);
    MessageBuilder empty;
    ASSERT_EQ(list.SerializeFields(empty, image.data()), Status::Success);
    EXPECT_EQ(empty.GetLength(), 1u);

    ASSERT_EQ(list.SetField(image.data(), 1, Bytes("\1\2\3\4"), 4), Status::Success);
    ASSERT_EQ(list.SetField(image.data(), 2, Bytes("ab"), 2), Status::Success);
    ASSERT_EQ(list.SetField(image.data(), 4, Bytes("\1\2\3\4\5\6"), 6), Status::Success);
    MessageBuilder builder;
    ASSERT_EQ(list.SerializeFields(builder, image.data()), Status::Success);
    // Bitmap; UInt slot; text prefix and value; DateTime at maxLength whatever its value says.
    const std::array<unsigned char, 15> expected = {0xD0, 1, 2, 3, 4, 2, 'a', 'b', 1, 2, 3, 4, 5, 6, 0};
    ASSERT_EQ(builder.GetLength(), expected.size());
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), builder.GetBuffer()));

    const std::string blob(300, 'q');
    ASSERT_EQ(list.SetField(image.data(), 3, blob.data(), 300), Status::Success);
    builder.Reset(0);
    ASSERT_EQ(list.SerializeFields(builder, image.data()), Status::Success);
    Testing::ExpectEveryCutRefused(builder.GetBuffer(), builder.GetLength(), [&](MessageValidator& cut) {
        std::vector<unsigned char> target(list.GetDataLength(), 0);
        return list.DeserializeFields(cut, target.data());
    });
}

TEST(ManagedFieldListWire, ReaderRefusesLengthsThatDoNotFitTheSlot) {
    const ManagedFieldList list = ExampleList();
    const std::string payload(255, 'p');
    for (std::uint8_t badLength : {0, 11, 255}) {
        MessageBuilder builder;
        ASSERT_EQ(builder.AppendUInt8(0x40), Status::Success);  // only the text is defined
        ASSERT_EQ(builder.AppendUInt8(badLength), Status::Success);
        ASSERT_EQ(builder.AppendBytes(payload.data(), badLength), Status::Success);
        std::vector<unsigned char> image(list.GetDataLength(), 0x11);
        MessageValidator validator(builder.GetBuffer(), builder.GetLength());
        EXPECT_EQ(list.DeserializeFields(validator, image.data()), Status::LengthMismatch);
        EXPECT_EQ(image[1], 0x11);  // prefix untouched
        EXPECT_EQ(image[18], 0x11);  // nothing written behind the slot
    }
}

TEST(ManagedFieldListWire, ReaderClearsBitsBeyondTheLastField) {
    const ManagedFieldList list({FieldSpecification(1, "a", FieldSpecification::UInt, 1, 0, 0),
                                 FieldSpecification(2, "b", FieldSpecification::UInt, 1, 0, 0)});
    const std::array<unsigned char, 2> message = {0xBF, 7};  // field a plus stray bits
    std::vector<unsigned char> image(list.GetDataLength(), 0);
    MessageValidator validator(message.data(), message.size());
    ASSERT_EQ(list.DeserializeFields(validator, image.data()), Status::Success);
    EXPECT_EQ(image[0], 0x80);
    EXPECT_EQ(image[1], 7);
}

}  // namespace
}  // namespace Tavrin::Database
