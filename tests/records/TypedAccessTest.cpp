// Typed SetField and GetField: widths, types, the changed flag, value objects and TRational trends.

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "RecordsTestSupport.h"
#include "tavrin/base/FieldTypes/Blob.h"
#include "tavrin/base/FieldTypes/Date.h"
#include "tavrin/base/FieldTypes/Rational.h"
#include "tavrin/base/FieldTypes/SInt.h"
#include "tavrin/base/FieldTypes/TRational.h"
#include "tavrin/base/FieldTypes/TextString.h"
#include "tavrin/records/ManagedFieldList.h"
#include "tavrin/records/UnmanagedFieldList.h"

namespace Tavrin::Database {
namespace {

// ---- Which argument types compile -----------------------------------------------------------------

template <class T>
concept Writable = requires(const FieldList& list, unsigned char* data, T value) {
    list.SetField(data, std::uint16_t{1}, value);
};
template <class T>
concept WritableWithChanged = requires(const FieldList& list, unsigned char* data, T value, bool& changed) {
    list.SetField(data, std::uint16_t{1}, value, changed);
};
template <class T>
concept Readable = requires(const FieldList& list, const unsigned char* data, T& value) {
    list.GetField(data, std::uint16_t{1}, value);
};

// int and long reach the member of their own width; spellings that would be narrowed or converted
// to bool do not compile.
static_assert(Writable<int> && Writable<long> && Writable<unsigned long> && Writable<short> && Writable<char>);
static_assert(!Writable<long long> && !Writable<unsigned long long> && !Writable<double> && !Writable<const char*>);
static_assert(WritableWithChanged<long> && !WritableWithChanged<long long> && !WritableWithChanged<const char*>);
static_assert(Writable<bool> && !WritableWithChanged<bool>);
static_assert(Readable<long> && Readable<std::string> && Readable<std::unique_ptr<IFieldType>>);
static_assert(!Readable<long long> && !Readable<bool> && !Readable<double>);

enum : std::uint16_t {
    S1 = 1, S2, S4, U1, U4, U8, Char, Text, Bytes3, Ratio, Trend, Day, Flag, Data, Ratio2, Unused = 40
};

std::vector<FieldSpecification> TypedFields() {
    return Testing::PackedSpecifications({
        {S1, "s1", FieldSpecification::SInt, 1},
        {S2, "s2", FieldSpecification::SInt, 2},
        {S4, "s4", FieldSpecification::SInt, 4},
        {U1, "u1", FieldSpecification::UInt, 1},
        {U4, "u4", FieldSpecification::UInt, 4},
        {U8, "u8", FieldSpecification::UInt, 8},
        {Char, "char", FieldSpecification::TextArray, 1},
        {Text, "text", FieldSpecification::TextString, 10},
        {Bytes3, "bytes", FieldSpecification::BinaryArray, 3},
        {Ratio, "ratio", FieldSpecification::Rational, 9},
        {Trend, "trend", FieldSpecification::TRational, 10},
        {Day, "day", FieldSpecification::Date, 3},
        {Flag, "flag", FieldSpecification::Boolean, 1},
        {Data, "data", FieldSpecification::Blob, 8},
        {Ratio2, "ratio2", FieldSpecification::TRational, 10},
    });
}

class TypedAccess : public ::testing::Test {
protected:
    TypedAccess() : list_(TypedFields()), image_(list_.GetDataLength()) { list_.ResetData(data()); }

    unsigned char* data() { return image_.data(); }
    bool IsDefined(std::uint16_t id) { return Testing::IsDefined(list_, data(), id); }
    std::vector<unsigned char> Stored(std::uint16_t id) {
        const void* value = nullptr;
        std::uint32_t length = 0;
        EXPECT_EQ(list_.GetField(static_cast<const unsigned char*>(data()), id, value, length), Status::Success);
        const auto* bytes = static_cast<const unsigned char*>(value);
        return std::vector<unsigned char>(bytes, bytes + length);
    }

    ManagedFieldList list_;
    std::vector<unsigned char> image_;
};

using Raw = std::vector<unsigned char>;

// ---- Integers -------------------------------------------------------------------------------------

TEST_F(TypedAccess, IntegersGoOnlyIntoFieldsAtLeastAsWideAsTheirType) {
    EXPECT_EQ(list_.SetField(data(), S2, std::int32_t{5}), Status::Invalid);
    EXPECT_EQ(list_.SetField(data(), S4, 5L), Status::Invalid);  // long is the 64-bit member here
    EXPECT_EQ(list_.SetField(data(), S2, static_cast<signed char>(5)), Status::Invalid);  // 8-bit types are strict
    EXPECT_EQ(list_.SetField(data(), Char, 'x'), Status::Success);
    EXPECT_EQ(list_.SetField(data(), Text, 'x'), Status::WrongType);
    EXPECT_EQ(list_.SetField(data(), S4, std::uint32_t{5}), Status::WrongType);
    EXPECT_EQ(list_.SetField(data(), Unused, std::int32_t{5}), Status::NotFound);
}

TEST_F(TypedAccess, NarrowIntegersAreExtendedToTheFieldWidth) {
    ASSERT_EQ(list_.SetField(data(), S4, std::int16_t{-2}), Status::Success);
    EXPECT_EQ(Stored(S4), (Raw{0xFE, 0xFF, 0xFF, 0xFF}));
    ASSERT_EQ(list_.SetField(data(), U8, std::uint16_t{65535}), Status::Success);
    EXPECT_EQ(Stored(U8), (Raw{0xFF, 0xFF, 0, 0, 0, 0, 0, 0}));

    std::uint64_t wide = 0;
    EXPECT_EQ(list_.GetField(data(), U8, wide), Status::Success);
    EXPECT_EQ(wide, 65535u);
}

TEST_F(TypedAccess, ReadsNeedATypeAtLeastAsWideAsTheField) {
    ASSERT_EQ(list_.SetField(data(), S1, static_cast<signed char>(-1)), Status::Success);
    ASSERT_EQ(list_.SetField(data(), S4, std::int32_t{7}), Status::Success);
    ASSERT_EQ(list_.SetField(data(), U1, static_cast<unsigned char>(200)), Status::Success);

    std::int16_t small = 0;
    std::int32_t medium = 0;
    std::uint16_t unsignedSmall = 0;
    EXPECT_EQ(list_.GetField(data(), S4, small), Status::LengthMismatch);  // even though 7 would fit
    EXPECT_EQ(list_.GetField(data(), S1, medium), Status::Success);
    EXPECT_EQ(medium, -1);  // sign-extended
    EXPECT_EQ(list_.GetField(data(), U1, unsignedSmall), Status::Success);
    EXPECT_EQ(unsignedSmall, 200);  // zero-extended
    EXPECT_EQ(list_.GetField(data(), U1, small), Status::WrongType);

    char character = 0;
    EXPECT_EQ(list_.GetField(data(), Char, character), Status::Undefined);
    EXPECT_EQ(list_.GetField(data(), S1, character), Status::WrongType);
}

TEST_F(TypedAccess, IntegerChangedFlag) {
    bool changed = false;
    EXPECT_EQ(list_.SetField(data(), S4, std::int32_t{9}, changed), Status::Success);
    EXPECT_TRUE(changed);
    EXPECT_EQ(list_.SetField(data(), S4, std::int16_t{9}, changed), Status::Success);
    EXPECT_FALSE(changed);  // the same value at the field's width

    // An undefined field reports a change even when the write then fails.
    changed = false;
    EXPECT_EQ(list_.SetField(data(), S2, std::int32_t{1}, changed), Status::Invalid);
    EXPECT_TRUE(changed);
    EXPECT_FALSE(IsDefined(S2));
    // On a defined field a refused type or width leaves the flag alone.
    changed = false;
    EXPECT_EQ(list_.SetField(data(), S4, std::int64_t{1}, changed), Status::Invalid);
    EXPECT_EQ(list_.SetField(data(), S4, std::uint32_t{1}, changed), Status::WrongType);
    EXPECT_FALSE(changed);
}

TEST(TypedAccessUnmanaged, ChangedComparesTheAlwaysDefinedField) {
    const UnmanagedFieldList list(Testing::PackedSpecifications({{1, "n", FieldSpecification::UInt, 4}}));
    std::vector<unsigned char> image(list.GetDataLength());
    list.ResetData(image.data());
    bool changed = true;
    EXPECT_EQ(list.SetField(image.data(), 1, std::uint32_t{0}, changed), Status::Success);
    EXPECT_FALSE(changed);
    EXPECT_EQ(list.SetField(image.data(), 1, std::uint16_t{513}, changed), Status::Success);
    EXPECT_TRUE(changed);
    EXPECT_EQ(image, (Raw{0x01, 0x02, 0, 0}));
}

// ---- Strings and value objects ------------------------------------------------------------------------

TEST_F(TypedAccess, StringsUseTheRawWriteOnStringCompatibleFields) {
    EXPECT_EQ(list_.SetField(data(), Text, std::string()), Status::LengthMismatch);
    EXPECT_EQ(list_.SetField(data(), Bytes3, std::string("ab")), Status::LengthMismatch);
    EXPECT_EQ(list_.SetField(data(), U4, std::string("abcd")), Status::WrongType);
    EXPECT_FALSE(IsDefined(Text));

    bool changed = false;
    EXPECT_EQ(list_.SetField(data(), Text, std::string("hello"), changed), Status::Success);
    EXPECT_TRUE(changed);
    EXPECT_EQ(list_.SetField(data(), Text, std::string("hello"), changed), Status::Success);
    EXPECT_FALSE(changed);
    ASSERT_EQ(list_.SetField(data(), Text, std::string("hell")), Status::Success);
    // A different value that the field refuses still reports the change.
    changed = false;
    EXPECT_EQ(list_.SetField(data(), Text, std::string(11, 'x'), changed), Status::LengthMismatch);
    EXPECT_TRUE(changed);

    ASSERT_EQ(list_.SetField(data(), Bytes3, std::string("\x01\x00\x02", 3)), Status::Success);
    std::string text;
    EXPECT_EQ(list_.GetField(data(), Bytes3, text), Status::Success);
    EXPECT_EQ(text, std::string("\x01\x00\x02", 3));
    EXPECT_EQ(list_.GetField(data(), Text, text), Status::Success);
    EXPECT_EQ(text, "hell");
    ASSERT_EQ(list_.SetField(data(), U4, std::uint32_t{1}), Status::Success);
    EXPECT_EQ(list_.GetField(data(), U4, text), Status::WrongType);
}

TEST_F(TypedAccess, ValueObjectsNeedTheirOwnFieldType) {
    Date date;
    ASSERT_EQ(date.Set(2026, 11, 22), Status::Success);
    EXPECT_EQ(list_.SetField(data(), Text, date), Status::WrongType);
    EXPECT_EQ(list_.SetField(data(), Day, date), Status::Success);
    Date read;
    EXPECT_EQ(list_.GetField(data(), Day, read), Status::Success);
    EXPECT_EQ(read.GetDayNumber(), date.GetDayNumber());

    // Through the interface the object's base type number picks the field type.
    const IFieldType& asInterface = date;
    EXPECT_EQ(list_.SetField(data(), Ratio, asInterface), Status::WrongType);
    EXPECT_EQ(list_.SetField(data(), Day, asInterface), Status::Success);
    TextString text;
    IFieldType& textInterface = text;
    EXPECT_EQ(list_.GetField(data(), Day, textInterface), Status::WrongType);

    // The object's own failures come back unchanged, and the field stays as it was.
    Date undefinedDate;
    EXPECT_EQ(list_.SetField(data(), Day, undefinedDate), Status::NotUsable);
    EXPECT_TRUE(IsDefined(Day));
    Blob blob;
    ASSERT_EQ(blob.Set("12345", 5), Status::Success);  // 9 bytes of body for an 8-byte field
    EXPECT_EQ(list_.SetField(data(), Data, blob), Status::LengthMismatch);
    EXPECT_FALSE(IsDefined(Data));
}

TEST_F(TypedAccess, ValueObjectChangedFlagAsksTheObject) {
    SInt value;
    value.Set(-4);
    bool changed = false;
    EXPECT_EQ(list_.SetField(data(), S2, value, changed), Status::Success);
    EXPECT_TRUE(changed);
    EXPECT_EQ(list_.SetField(data(), S2, value, changed), Status::Success);
    EXPECT_FALSE(changed);
    EXPECT_EQ(Stored(S2), (Raw{0xFC, 0xFF}));
    changed = false;
    EXPECT_EQ(list_.SetField(data(), S2, static_cast<const IFieldType&>(Date()), changed), Status::WrongType);
    EXPECT_FALSE(changed);
}

TEST_F(TypedAccess, NewObjectOfTheFieldsType) {
    ASSERT_EQ(list_.SetField(data(), Text, std::string("abc")), Status::Success);
    ASSERT_EQ(list_.SetField(data(), Flag, true), Status::Success);
    std::unique_ptr<IFieldType> object = std::make_unique<Date>();
    EXPECT_EQ(list_.GetField(data(), Text, object), Status::Success);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(object->number, FieldTypeNumber::TextString);
    EXPECT_EQ(object->ToString(), "abc");
    EXPECT_EQ(list_.GetField(data(), Flag, object), Status::WrongType);  // Boolean has no value class
    EXPECT_EQ(list_.GetField(data(), Day, object), Status::Undefined);
}

// ---- Rational and TRational -----------------------------------------------------------------------

TRational MakeTrending(std::int64_t numerator, std::uint32_t code) {
    TRational value;
    EXPECT_EQ(value.Set(numerator, code), Status::Success);
    return value;
}

TEST_F(TypedAccess, RationalAndTRationalFieldsReadEachOther) {
    TRational stored = MakeTrending(125, 2);
    ASSERT_EQ(stored.SetTrends(1, 2, 0), Status::Success);
    ASSERT_EQ(list_.SetField(data(), Trend, stored), Status::Success);
    Rational plain;
    EXPECT_EQ(list_.GetField(data(), Trend, plain), Status::Success);
    EXPECT_EQ(plain.GetNumerator(), 125);
    EXPECT_EQ(plain.GetDenominator(), 2u);

    Rational half;
    ASSERT_EQ(half.Set(-1, 19), Status::Success);  // -1/2
    ASSERT_EQ(list_.SetField(data(), Ratio, half), Status::Success);
    TRational trending = MakeTrending(0, 0);
    ASSERT_EQ(trending.SetTrends(0, 1, 2), Status::Success);
    EXPECT_EQ(list_.GetField(data(), Ratio, trending), Status::Success);
    EXPECT_EQ(trending.GetRational().GetNumerator(), -1);
    EXPECT_EQ(trending.GetRational().GetDenominator(), 19u);
    EXPECT_EQ(trending.GetValueTrend(), TRational::TrendNone);
    EXPECT_EQ(trending.GetCustomTrend(), TRational::TrendNone);
}

TEST_F(TypedAccess, ValueTrendFollowsTheStoredValue) {
    TRational value = MakeTrending(10, 0);
    ASSERT_EQ(list_.SetField(data(), Trend, FieldSpecification::NoFieldId, value), Status::Success);
    EXPECT_EQ(value.GetValueTrend(), TRational::TrendNone);  // nothing stored before

    value = MakeTrending(11, 0);
    ASSERT_EQ(value.SetReferenceTrend(TRational::TrendEqual), Status::Success);
    ASSERT_EQ(list_.SetField(data(), Trend, FieldSpecification::NoFieldId, value), Status::Success);
    EXPECT_EQ(value.GetValueTrend(), TRational::TrendAbove);
    EXPECT_EQ(value.GetReferenceTrend(), TRational::TrendEqual);  // no reference: left alone

    value = MakeTrending(110, 1);  // 11.0, equal worth: keeps the stored trend
    bool changed = false;
    ASSERT_EQ(list_.SetField(data(), Trend, FieldSpecification::NoFieldId, value, changed), Status::Success);
    EXPECT_EQ(value.GetValueTrend(), TRational::TrendAbove);
    EXPECT_TRUE(changed);  // another body of the same worth

    value = MakeTrending(-3, 0);
    ASSERT_EQ(list_.SetField(data(), Trend, FieldSpecification::NoFieldId, value), Status::Success);
    TRational stored;
    ASSERT_EQ(list_.GetField(data(), Trend, stored), Status::Success);
    EXPECT_EQ(stored.GetValueTrend(), TRational::TrendBelow);  // the trend is written with the value
}

TEST_F(TypedAccess, ReferenceTrendComparesWithTheReferenceField) {
    Rational reference;
    ASSERT_EQ(reference.Set(5, 0), Status::Success);
    TRational value = MakeTrending(5, 0);
    ASSERT_EQ(list_.SetField(data(), Trend, Ratio, value), Status::Success);
    EXPECT_EQ(value.GetReferenceTrend(), TRational::TrendNone);  // reference undefined
    ASSERT_EQ(list_.SetField(data(), Ratio, reference), Status::Success);
    ASSERT_EQ(list_.SetField(data(), Trend, Ratio, value), Status::Success);
    EXPECT_EQ(value.GetReferenceTrend(), TRational::TrendEqual);

    // A TRational reference is read without its trend byte.
    TRational other = MakeTrending(1, 0);
    ASSERT_EQ(list_.SetField(data(), Ratio2, other), Status::Success);
    value = MakeTrending(2, 0);
    ASSERT_EQ(list_.SetField(data(), Trend, Ratio2, value), Status::Success);
    EXPECT_EQ(value.GetReferenceTrend(), TRational::TrendAbove);
    EXPECT_EQ(value.GetValueTrend(), TRational::TrendBelow);

    ASSERT_EQ(list_.SetField(data(), U4, std::uint32_t{1}), Status::Success);
    EXPECT_EQ(list_.SetField(data(), Trend, U4, value), Status::WrongType);
}

TEST_F(TypedAccess, TrendFailures) {
    TRational undefined;
    EXPECT_EQ(list_.SetField(data(), Trend, FieldSpecification::NoFieldId, undefined), Status::NotUsable);

    // The value trend is set before the reference id is found missing, and nothing is written.
    TRational value = MakeTrending(1, 0);
    ASSERT_EQ(value.SetValueTrend(TRational::TrendEqual), Status::Success);
    EXPECT_EQ(list_.SetField(data(), Trend, Unused, value), Status::NotFound);
    EXPECT_EQ(value.GetValueTrend(), TRational::TrendNone);
    EXPECT_FALSE(IsDefined(Trend));

    // A TRational goes only into a TRational field.
    EXPECT_EQ(list_.SetField(data(), Ratio, FieldSpecification::NoFieldId, value), Status::WrongType);
}

}  // namespace
}  // namespace Tavrin::Database
