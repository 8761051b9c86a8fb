#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "RecordsTestSupport.h"
#include "records/UnmanagedFieldList.h"

namespace Tavrin::Database {
namespace {

using Testing::Bytes;
using Testing::ExpectDatabaseException;

constexpr const char* kConstructor = "Tavrin::Database::UnmanagedFieldList::UnmanagedFieldList";

TEST(UnmanagedFieldListConstruction, RefusesVariableLengthFieldsByName) {
    for (auto [type, maxLength] : {std::pair{FieldSpecification::TextString, 8u},
                                   std::pair{FieldSpecification::Rational, 9u}, std::pair{FieldSpecification::Blob, 20u}}) {
        ExpectDatabaseException(
            [&] {
                UnmanagedFieldList({FieldSpecification(1, "fixed", FieldSpecification::UInt, 4, 0, 0),
                                    FieldSpecification(2, "loose", type, maxLength, 4, 0)});
            },
            DatabaseException::InvalidParameter, kConstructor, "variable length field <loose> in unmanaged table");
    }
    ExpectDatabaseException(
        [] {
            UnmanagedFieldList({FieldSpecification(3, "a", FieldSpecification::UInt, 4, 0, 0),
                                FieldSpecification(3, "b", FieldSpecification::UInt, 4, 4, 0)});
        },
        DatabaseException::InvalidParameter, kConstructor, "repeated field id <3> at field <b>");
}

TEST(UnmanagedFieldListConstruction, DataLengthFromTheFieldsOrGiven) {
    const std::vector<FieldSpecification> fields = {FieldSpecification(1, "a", FieldSpecification::UInt, 4, 0, 0),
                                                    FieldSpecification(2, "b", FieldSpecification::SInt, 2, 100, 0)};
    EXPECT_EQ(UnmanagedFieldList(fields).GetDataLength(), 102u);
    EXPECT_EQ(UnmanagedFieldList(fields, 102).GetDataLength(), 102u);
    EXPECT_EQ(UnmanagedFieldList(fields, 200).GetDataLength(), 200u);
    ExpectDatabaseException([&] { UnmanagedFieldList(fields, 101); }, DatabaseException::InvalidParameter,
                            kConstructor, "max offset greater than data length in unmanaged table");
    // An end beyond 32 bits would wrap around: refused rather than laid out over other fields.
    const std::vector<FieldSpecification> wrapping = {
        FieldSpecification(1, "far", FieldSpecification::UInt, 4, 0xFFFFFFFEu, 0)};
    ExpectDatabaseException([&] { UnmanagedFieldList{wrapping}; }, DatabaseException::InvalidParameter,
                            kConstructor, "max offset greater than data length in unmanaged table");
    ExpectDatabaseException([&] { UnmanagedFieldList(wrapping, 0xFFFFFFFFu); }, DatabaseException::InvalidParameter,
                            kConstructor, "max offset greater than data length in unmanaged table");
}

TEST(UnmanagedFieldListValues, FieldsAtOneOffsetShareTheirBytes) {
    const UnmanagedFieldList list({FieldSpecification(1, "whole", FieldSpecification::UInt, 4, 2, 0),
                                   FieldSpecification(2, "low", FieldSpecification::UInt, 2, 2, 0)});
    EXPECT_EQ(list.GetDataLength(), 6u);
    std::vector<unsigned char> image(list.GetDataLength(), 0);
    ASSERT_EQ(list.SetField(image.data(), 1, Bytes("\x34\x12\x00\x00"), 4), Status::Success);
    const void* value = nullptr;
    std::uint32_t length = 0;
    ASSERT_EQ(list.GetField(static_cast<const unsigned char*>(image.data()), 2, value, length), Status::Success);
    EXPECT_EQ(DecodeU16(value), 0x1234);
}

TEST(UnmanagedFieldListValues, EveryFieldIsAlwaysDefined) {
    const UnmanagedFieldList list({FieldSpecification(1, "n", FieldSpecification::UInt, 4, 0, 0)}, 8);
    std::vector<unsigned char> image(list.GetDataLength(), 0xAB);
    list.ResetData(image.data());
    EXPECT_EQ(image, std::vector<unsigned char>(8, 0));
    const void* value = nullptr;
    std::uint32_t length = 0;
    ASSERT_EQ(list.GetField(static_cast<const unsigned char*>(image.data()), 1, value, length), Status::Success);
    EXPECT_EQ(DecodeU32(value), 0u);

    for (std::uint16_t id : {1, 2, 65535}) EXPECT_EQ(list.ClearField(image.data(), id), Status::NotAvailable);
    bool changed = false;
    EXPECT_EQ(list.ClearField(image.data(), 1, changed), Status::NotAvailable);
    bool defined = false;
    ASSERT_EQ(list.IsFieldDefined(image.data(), 1, defined), Status::Success);
    EXPECT_TRUE(defined);
    EXPECT_EQ(list.IsFieldDefined(image.data(), 2, defined), Status::NotFound);
    list.ClearFieldDefined(0, image.data());
    EXPECT_TRUE(list.IsFieldDefined(0, image.data()));
}

TEST(UnmanagedFieldListWire, SendsEachSlotAndNothingBetween) {
    const UnmanagedFieldList list({FieldSpecification(1, "b", FieldSpecification::UInt, 2, 6, 0),
                                   FieldSpecification(2, "a", FieldSpecification::TextArray, 3, 0, 0)},
                                  10);
    std::vector<unsigned char> image(list.GetDataLength(), 0x77);  // 3..5 and 8..9 belong to no field
    ASSERT_EQ(list.SetField(image.data(), 1, Bytes("\x01\x02"), 2), Status::Success);
    ASSERT_EQ(list.SetField(image.data(), 2, Bytes("xyz"), 3), Status::Success);
    MessageBuilder builder;
    ASSERT_EQ(list.SerializeFields(builder, image.data()), Status::Success);
    const std::array<unsigned char, 5> expected = {1, 2, 'x', 'y', 'z'};
    ASSERT_EQ(builder.GetLength(), expected.size());
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), builder.GetBuffer()));

    std::vector<unsigned char> copy(list.GetDataLength(), 0);
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    ASSERT_EQ(list.DeserializeFields(validator, copy.data()), Status::Success);
    EXPECT_EQ(copy, (std::vector<unsigned char>{'x', 'y', 'z', 0, 0, 0, 1, 2, 0, 0}));
}

}  // namespace
}  // namespace Tavrin::Database
