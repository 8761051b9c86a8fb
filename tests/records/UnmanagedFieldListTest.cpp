#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "RecordsTestSupport.h"
#include "tavrin/records/UnmanagedFieldList.h"

namespace Tavrin::Database {
namespace {

using Testing::Bytes;
using Testing::ExpectDatabaseException;

constexpr const char* kConstructor = "Tavrin::Database::UnmanagedFieldList::UnmanagedFieldList";
constexpr auto kInvalid = DatabaseException::InvalidParameter;

TEST(UnmanagedFieldListConstruction, RefusesVariableLengthFieldsByName) {
    for (auto [type, length] : {std::pair{FieldSpecification::TextString, 8u}, {FieldSpecification::Rational, 9u}}) {
        const std::vector<FieldSpecification> fields = {
            FieldSpecification(1, "fixed", FieldSpecification::UInt, 4, 0, 0),
            FieldSpecification(2, "loose", type, length, 4, 0)};
        ExpectDatabaseException([&] { UnmanagedFieldList{fields}; }, kInvalid, kConstructor,
                                "variable length field <loose> in unmanaged table");
    }
}

TEST(UnmanagedFieldListConstruction, DataLengthFromTheFieldsOrGiven) {
    const std::vector<FieldSpecification> fields = {FieldSpecification(1, "a", FieldSpecification::UInt, 4, 0, 0),
                                                    FieldSpecification(2, "b", FieldSpecification::SInt, 2, 100, 0)};
    EXPECT_EQ(UnmanagedFieldList(fields).GetDataLength(), 102u);
    EXPECT_EQ(UnmanagedFieldList(fields, 102).GetDataLength(), 102u);
    const char* tooShort = "max offset greater than data length in unmanaged table";
    ExpectDatabaseException([&] { UnmanagedFieldList(fields, 101); }, kInvalid, kConstructor, tooShort);
    // An end beyond 32 bits would wrap around onto other fields.
    const std::vector<FieldSpecification> far = {
        FieldSpecification(1, "far", FieldSpecification::UInt, 4, 0xFFFFFFFEu, 0)};
    ExpectDatabaseException([&] { UnmanagedFieldList{far}; }, kInvalid, kConstructor, tooShort);
}

TEST(UnmanagedFieldListValues, EveryFieldIsAlwaysDefinedAndFieldsMayShareBytes) {
    const UnmanagedFieldList list({FieldSpecification(1, "whole", FieldSpecification::UInt, 4, 2, 0),
                                   FieldSpecification(2, "low", FieldSpecification::UInt, 2, 2, 0)},
                                  8);
    std::vector<unsigned char> image(list.GetDataLength(), 0xAB);
    list.ResetData(image.data());
    EXPECT_EQ(image, std::vector<unsigned char>(8, 0));
    unsigned char buffer[4] = {1, 1, 1, 1};
    std::uint32_t length = 0;
    ASSERT_EQ(list.GetField(image.data(), 1, buffer, 4, length), Status::Success);
    EXPECT_EQ(DecodeU32(buffer), 0u);
    ASSERT_EQ(list.SetField(image.data(), 1, Bytes("\x34\x12\x00\x00"), 4), Status::Success);
    ASSERT_EQ(list.GetField(image.data(), 2, buffer, 4, length), Status::Success);
    EXPECT_EQ(DecodeU16(buffer), 0x1234);

    for (std::uint16_t id : {1, 3}) EXPECT_EQ(list.ClearField(image.data(), id), Status::NotAvailable);
    EXPECT_TRUE(Testing::IsDefined(list, image.data(), 1));
    bool defined = false;
    EXPECT_EQ(list.IsFieldDefined(image.data(), 3, defined), Status::NotFound);
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
}

}  // namespace
}  // namespace Tavrin::Database
