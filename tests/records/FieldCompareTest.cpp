// Ordering, difference and copy between images.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "RecordsTestSupport.h"
#include "tavrin/base/FieldTypes/Rational.h"
#include "tavrin/base/FieldTypes/SInt.h"
#include "tavrin/base/FieldTypes/TextString.h"
#include "tavrin/records/ManagedFieldList.h"
#include "tavrin/records/UnmanagedFieldList.h"

namespace Tavrin::Database {
namespace {

constexpr std::uint32_t Descending = FieldSpecification::DescendingProperty;

using Testing::Image;

// A text field, a descending signed integer and an unsigned one.
ManagedFieldList KeyList() {
    return ManagedFieldList({FieldSpecification(1, "name", FieldSpecification::TextString, 10, 0, 0),
                             FieldSpecification(2, "rank", FieldSpecification::SInt, 4, 0, Descending),
                             FieldSpecification(3, "count", FieldSpecification::UInt, 2, 0, 0)});
}

TEST(FieldCompare, UndefinedOrdersFirstAscendingAndLastDescending) {
    const ManagedFieldList list = KeyList();
    Image empty(list);
    Image ranked(list);
    ranked.Number(2, std::int32_t{-7});
    EXPECT_LT(list.Compare(empty.data(), ranked.data()), 0);
    EXPECT_GT(list.Compare(ranked.data(), empty.data()), 0);
    EXPECT_GT(list.CompareKey(empty.data(), ranked.data()), 0);
    EXPECT_LT(list.CompareKey(ranked.data(), empty.data()), 0);
}

TEST(FieldCompare, FieldsDecideInListOrderEachInItsDirection) {
    const ManagedFieldList list = KeyList();
    Image a(list);
    Image b(list);
    a.Text(1, "abc").Number(2, std::int32_t{1}).Number(3, std::uint16_t{9});
    b.Text(1, "abd").Number(2, std::int32_t{2}).Number(3, std::uint16_t{1});
    EXPECT_LT(list.Compare(a.data(), b.data()), 0);  // the first field decides
    EXPECT_LT(list.CompareKey(a.data(), b.data()), 0);
    b.Text(1, "abc");
    EXPECT_LT(list.Compare(a.data(), b.data()), 0);
    EXPECT_GT(list.CompareKey(a.data(), b.data()), 0);  // rank is descending
    EXPECT_EQ(list.Compare(a.data(), b.data(), 1), 0);
    EXPECT_EQ(list.Compare(a.data(), b.data(), 0), 0);
    EXPECT_GT(list.Compare(2, a.data(), b.data()), 0);
    b.Number(2, std::int32_t{1});
    EXPECT_GT(list.Compare(a.data(), b.data()), 0);
    EXPECT_GT(list.CompareKey(a.data(), b.data()), 0);
}

TEST(FieldCompare, PartialLengthCutsTheLastField) {
    const ManagedFieldList list = KeyList();
    Image a(list);
    Image b(list);
    a.Text(1, "abcd").Number(2, std::int32_t{5});
    b.Text(1, "abxy").Number(2, std::int32_t{5});
    EXPECT_EQ(list.Compare(a.data(), b.data(), 0, 2), 0);
    EXPECT_LT(list.Compare(a.data(), b.data(), 0, 3), 0);
    EXPECT_EQ(list.Compare(a.data(), b.data(), 0, 0), 0);  // the field is left out

    b.Text(1, "ab");
    EXPECT_GT(list.Compare(a.data(), b.data(), 0, 3), 0);  // 3 bytes against 2: the shorter first
    EXPECT_EQ(list.Compare(a.data(), b.data(), 0, 2), 0);

    // After equal leading fields the cut field is looked at, undefined sides too.
    b.Text(1, "abcd");
    EXPECT_EQ(list.CompareKey(a.data(), b.data(), 1, 0), 0);
    b.Number(3, std::uint16_t{4});
    EXPECT_LT(list.Compare(a.data(), b.data(), 2, 1), 0);
    EXPECT_LT(list.CompareKey(a.data(), b.data(), 2, 1), 0);
    ASSERT_EQ(list.ClearField(b.data(), 3), Status::Success);
    ASSERT_EQ(list.ClearField(b.data(), 2), Status::Success);
    EXPECT_GT(list.Compare(a.data(), b.data(), 1, 4), 0);
    EXPECT_LT(list.CompareKey(a.data(), b.data(), 1, 4), 0);  // descending: undefined last
}

TEST(FieldCompare, ValueClassesOrderByTheirClass) {
    const ManagedFieldList list({FieldSpecification(1, "ratio", FieldSpecification::Rational, 9, 0, 0)});
    Image a(list);
    Image b(list);
    Rational nineTenths;
    Rational half;
    ASSERT_EQ(nineTenths.Set(9, 1), Status::Success);  // 0.9, first body byte 0x01
    ASSERT_EQ(half.Set(1, 19), Status::Success);       // 1/2, first body byte 0x13
    ASSERT_EQ(list.SetField(a.data(), 1, nineTenths), Status::Success);
    ASSERT_EQ(list.SetField(b.data(), 1, half), Status::Success);
    EXPECT_GT(list.Compare(a.data(), b.data()), 0);

    Rational twoQuarters;
    ASSERT_EQ(twoQuarters.Set(2, 20), Status::Success);
    ASSERT_EQ(list.SetField(a.data(), 1, twoQuarters), Status::Success);
    bool different = false;
    EXPECT_EQ(list.IsFieldDifferent(1, a.data(), list, b.data(), different), Status::Success);
    EXPECT_TRUE(different);  // equal worth, other bytes
}

// ---- CompareField ------------------------------------------------------------------------------

TEST(FieldCompare, CompareFieldAcrossListsAndWidths) {
    const UnmanagedFieldList narrow(Testing::PackedSpecifications(
        {{1, "s", FieldSpecification::SInt, 1}, {2, "u", FieldSpecification::UInt, 1}}));
    const ManagedFieldList wide({FieldSpecification(5, "s", FieldSpecification::SInt, 8, 0, 0),
                                 FieldSpecification(6, "u", FieldSpecification::UInt, 4, 0, 0)});
    Image small(narrow);
    Image large(wide);
    small.Number(1, static_cast<signed char>(-1)).Number(2, static_cast<unsigned char>(255));
    int result = 99;
    EXPECT_EQ(narrow.CompareField(1, small.data(), wide, 5, large.data(), result), Status::Success);
    EXPECT_EQ(result, 1);  // defined against undefined
    EXPECT_EQ(wide.CompareField(5, large.data(), narrow, 1, small.data(), result), Status::Success);
    EXPECT_EQ(result, -1);
    large.Number(5, std::int64_t{1}).Number(6, std::uint32_t{255});
    EXPECT_EQ(narrow.CompareField(1, small.data(), wide, 5, large.data(), result), Status::Success);
    EXPECT_EQ(result, -1);
    EXPECT_EQ(narrow.CompareField(2, small.data(), wide, 6, large.data(), result), Status::Success);
    EXPECT_EQ(result, 0);

    result = 99;
    EXPECT_EQ(narrow.CompareField(1, small.data(), wide, 6, large.data(), result), Status::WrongType);
    EXPECT_EQ(narrow.CompareField(1, small.data(), wide, 1, large.data(), result), Status::NotFound);
    EXPECT_EQ(result, 99);
}

TEST(FieldCompare, CompareFieldWithAString) {
    const ManagedFieldList managed({FieldSpecification(1, "name", FieldSpecification::TextString, 10, 0, 0),
                                    FieldSpecification(2, "code", FieldSpecification::TextArray, 3, 0, 0),
                                    FieldSpecification(3, "n", FieldSpecification::UInt, 4, 0, 0)});
    Image image(managed);
    int result = 99;
    EXPECT_EQ(managed.CompareField(1, image.data(), std::string(), result), Status::LengthMismatch);
    EXPECT_EQ(managed.CompareField(1, image.data(), std::string("a"), result), Status::Success);
    EXPECT_EQ(result, -1);
    image.Text(1, "abc").Text(2, "xyz").Number(3, std::uint32_t{1});
    EXPECT_EQ(managed.CompareField(1, image.data(), std::string("abd"), result), Status::Success);
    EXPECT_LT(result, 0);
    EXPECT_EQ(managed.CompareField(1, image.data(), std::string("ab"), result), Status::Success);
    EXPECT_GT(result, 0);
    EXPECT_EQ(managed.CompareField(2, image.data(), std::string("xy"), result), Status::LengthMismatch);
    EXPECT_EQ(managed.CompareField(3, image.data(), std::string("abcd"), result), Status::WrongType);
    EXPECT_EQ(managed.CompareField(9, image.data(), std::string("abc"), result), Status::NotFound);
}

TEST(FieldCompare, CompareFieldWithAValueObjectSpeaksOfTheField) {
    const ManagedFieldList list({FieldSpecification(1, "n", FieldSpecification::SInt, 2, 0, 0)});
    Image image(list);
    SInt value;
    int result = 99;
    EXPECT_EQ(list.CompareField(1, image.data(), value, result), Status::Success);
    EXPECT_EQ(result, 0);  // both undefined
    value.Set(7);
    EXPECT_EQ(list.CompareField(1, image.data(), value, result), Status::Success);
    EXPECT_EQ(result, -1);
    image.Number(1, std::int16_t{5});
    EXPECT_EQ(list.CompareField(1, image.data(), value, result), Status::Success);
    EXPECT_LT(result, 0);
    EXPECT_EQ(list.CompareField(1, image.data(), SInt(), result), Status::Success);
    EXPECT_EQ(result, 1);
    TextString text;
    ASSERT_EQ(text.Set("5"), Status::Success);
    EXPECT_EQ(list.CompareField(1, image.data(), text, result), Status::WrongType);
}

// ---- IsFieldDifferent ------------------------------------------------------------------------------

TEST(FieldDifference, BytesStringsAndValueObjects) {
    const ManagedFieldList list({FieldSpecification(1, "name", FieldSpecification::TextString, 10, 0, 0),
                                 FieldSpecification(2, "n", FieldSpecification::SInt, 4, 0, 0)});
    Image image(list);
    bool different = false;
    EXPECT_EQ(list.IsFieldDifferent(1, image.data(), "abc", 0, different), Status::LengthMismatch);
    EXPECT_EQ(list.IsFieldDifferent(1, image.data(), std::string(), different), Status::LengthMismatch);
    EXPECT_EQ(list.IsFieldDifferent(2, image.data(), std::string("abcd"), different), Status::Success);
    EXPECT_TRUE(different);  // an undefined field differs before its type is looked at
    EXPECT_EQ(list.IsFieldDifferent(7, image.data(), "abc", 3, different), Status::NotFound);

    image.Text(1, "abc").Number(2, std::int32_t{3});
    different = true;
    EXPECT_EQ(list.IsFieldDifferent(1, image.data(), "abc", 3, different), Status::Success);
    EXPECT_FALSE(different);
    EXPECT_EQ(list.IsFieldDifferent(2, image.data(), std::string("abcd"), different), Status::WrongType);

    SInt value;
    EXPECT_EQ(list.IsFieldDifferent(2, image.data(), value, different), Status::Success);
    EXPECT_TRUE(different);  // only the field is defined
    value.Set(3);
    EXPECT_EQ(list.IsFieldDifferent(2, image.data(), value, different), Status::Success);
    EXPECT_FALSE(different);
    EXPECT_EQ(list.IsFieldDifferent(1, image.data(), value, different), Status::WrongType);
    ASSERT_EQ(list.ClearField(image.data(), 2), Status::Success);
    EXPECT_EQ(list.IsFieldDifferent(2, image.data(), SInt(), different), Status::Success);
    EXPECT_FALSE(different);  // neither is defined
}

TEST(FieldDifference, BetweenTwoImages) {
    const ManagedFieldList list({FieldSpecification(1, "a", FieldSpecification::TextString, 10, 0, 0),
                                 FieldSpecification(2, "b", FieldSpecification::BinaryString, 10, 0, 0)});
    Image left(list);
    Image right(list);
    bool different = true;
    EXPECT_EQ(list.IsFieldDifferent(1, left.data(), list, right.data(), different), Status::Success);
    EXPECT_FALSE(different);
    left.Text(1, "same");
    EXPECT_EQ(list.IsFieldDifferent(1, left.data(), list, right.data(), different), Status::Success);
    EXPECT_TRUE(different);
    right.Text(2, "same");
    EXPECT_EQ(list.IsFieldDifferent(1, left.data(), list, 2, right.data(), different), Status::WrongType);
    right.Text(1, "same");
    EXPECT_EQ(list.IsFieldDifferent(1, left.data(), list, right.data(), different), Status::Success);
    EXPECT_FALSE(different);
    EXPECT_EQ(list.IsFieldDifferent(3, left.data(), list, right.data(), different), Status::NotFound);
}

// ---- Copy ------------------------------------------------------------------------------------------

TEST(FieldCopy, CopyFieldsStopsAtAMissingFieldOnlyWhenStrict) {
    const ManagedFieldList target({FieldSpecification(1, "a", FieldSpecification::UInt, 4, 0, 0),
                                   FieldSpecification(2, "b", FieldSpecification::UInt, 4, 0, 0),
                                   FieldSpecification(3, "c", FieldSpecification::TextString, 10, 0, 0)});
    const ManagedFieldList source({FieldSpecification(3, "c", FieldSpecification::TextString, 8, 0, 0),
                                   FieldSpecification(1, "a", FieldSpecification::UInt, 4, 0, 0),
                                   FieldSpecification(9, "z", FieldSpecification::UInt, 4, 0, 0)});
    Image from(source);
    from.Number(1, std::uint32_t{11}).Text(3, "copied");
    Image strict(target);
    strict.Number(2, std::uint32_t{22}).Text(3, "old");
    EXPECT_EQ(target.CopyFields(strict.data(), source, from.data(), true), Status::FieldMissing);
    std::uint32_t number = 0;
    EXPECT_EQ(target.GetField(strict.data(), 1, number), Status::Success);
    EXPECT_EQ(number, 11u);
    std::string text;
    EXPECT_EQ(target.GetField(strict.data(), 3, text), Status::Success);
    EXPECT_EQ(text, "old");  // behind the stop

    Image lenient(target);
    lenient.Number(2, std::uint32_t{22});
    EXPECT_EQ(target.CopyFields(lenient.data(), source, from.data(), false), Status::Success);
    EXPECT_EQ(target.GetField(lenient.data(), 2, number), Status::Success);
    EXPECT_EQ(number, 22u);
    EXPECT_EQ(target.GetField(lenient.data(), 3, text), Status::Success);
    EXPECT_EQ(text, "copied");

    // A source value too long for this field stops the walk.
    EXPECT_EQ(source.CopyFields(from.data(), target, lenient.data(), false), Status::Success);
    lenient.Text(3, "0123456789");
    EXPECT_EQ(source.CopyFields(from.data(), target, lenient.data(), false), Status::LengthMismatch);
}

TEST(FieldCopy, UndefinedSourceClearsAManagedTargetOnly) {
    const ManagedFieldList managed({FieldSpecification(1, "n", FieldSpecification::UInt, 4, 0, 0),
                                    FieldSpecification(2, "s", FieldSpecification::SInt, 4, 0, 0)});
    const UnmanagedFieldList unmanaged(Testing::PackedSpecifications({{1, "n", FieldSpecification::UInt, 4}}));
    Image undefinedSource(managed);
    Image managedTarget(managed);
    Image unmanagedTarget(unmanaged);
    managedTarget.Number(1, std::uint32_t{5});
    unmanagedTarget.Number(1, std::uint32_t{5});
    EXPECT_EQ(managed.CopyField(1, managedTarget.data(), managed, undefinedSource.data()), Status::Success);
    EXPECT_EQ(unmanaged.CopyField(1, unmanagedTarget.data(), managed, undefinedSource.data()), Status::Success);
    std::uint32_t number = 0;
    EXPECT_EQ(managed.GetField(managedTarget.data(), 1, number), Status::Undefined);
    EXPECT_EQ(unmanaged.GetField(unmanagedTarget.data(), 1, number), Status::Success);
    EXPECT_EQ(number, 5u);

    // Copies from another id need equal types; from the same id the bytes go across as they are.
    EXPECT_EQ(unmanaged.CopyField(1, unmanagedTarget.data(), managed, 2, managedTarget.data()), Status::WrongType);
    managedTarget.Number(2, std::int32_t{-1});
    EXPECT_EQ(managed.CopyField(1, managedTarget.data(), managed, 2, managedTarget.data()), Status::WrongType);
    EXPECT_EQ(managed.CopyField(1, managedTarget.data(), unmanaged, 3, unmanagedTarget.data()), Status::NotFound);
    EXPECT_EQ(managed.CopyField(1, managedTarget.data(), unmanaged, unmanagedTarget.data()), Status::Success);
    EXPECT_EQ(managed.GetField(managedTarget.data(), 1, number), Status::Success);
    EXPECT_EQ(number, 5u);
}

}  // namespace
}  // namespace Tavrin::Database
