#include <gtest/gtest.h>

#include <array>
#include <sstream>
#include <string>
#include <vector>

#include "RecordsTestSupport.h"
#include "tavrin/records/FieldTypeTable.h"
#include "tavrin/records/FieldValidators.h"

namespace Tavrin::Database {
namespace {

using Testing::ExpectDatabaseException;
using Testing::MakeUnchecked;
using Type = FieldSpecification::Type;

constexpr auto kInvalid = DatabaseException::InvalidParameter;

TEST(FieldSpecification, EqualityIgnoresOffsetAndProperties) {
    const FieldSpecification a(3, "price", FieldSpecification::UInt, 4, 0, 0);
    EXPECT_EQ(a, FieldSpecification(3, "price", FieldSpecification::UInt, 4, 99, 0x80000000u));
    EXPECT_NE(a, FieldSpecification(3, "price", FieldSpecification::UInt, 8, 0, 0));
}

TEST(FieldSpecificationValidation, TypedLengthRules) {
    struct Rule {
        Type type;
        const char* validator;
        std::vector<std::uint32_t> accepted, refused;
    };
    const std::vector<Rule> rules = {
        {FieldSpecification::Blob, "ValidateBlobSpecification", {5}, {4}},
        {FieldSpecification::CrcBlob, "ValidateCrcBlobSpecification", {9}, {8}},
        {FieldSpecification::Boolean, "ValidateBooleanSpecification", {1}, {0, 2}},
        {FieldSpecification::Date, "ValidateDateSpecification", {3}, {2, 4}},
        {FieldSpecification::DateTime, "ValidateDateTimeSpecification", {6, 7}, {5, 8}},
        {FieldSpecification::Time, "ValidateTimeSpecification", {3, 4}, {2, 5}},
        {FieldSpecification::Rational, "ValidateRationalSpecification", {2, 9}, {4, 10}},
        {FieldSpecification::TRational, "ValidateTRationalSpecification", {3, 10}, {5, 9}},
        {FieldSpecification::SInt, "ValidateSignedIntegralSpecification", {1, 8}, {3}},
        {FieldSpecification::UInt, "ValidateUnsignedIntegralSpecification", {4}, {0, 7}},
    };
    for (const Rule& rule : rules) {
        SCOPED_TRACE(rule.validator);
        for (std::uint32_t length : rule.accepted) {
            EXPECT_NO_THROW(FieldSpecification(1, "f", rule.type, length, 7, 3));
        }
        for (std::uint32_t length : rule.refused) {
            ExpectDatabaseException([&] { FieldSpecification(1, "f", rule.type, length, 0, 0); }, kInvalid,
                                    std::string("Tavrin::Database::") + rule.validator,
                                    "invalid length <" + std::to_string(length) + "> for field <f>");
        }
    }
    // Untyped kinds take any length, 0 included.
    EXPECT_NO_THROW(FieldSpecification(65534, "", FieldSpecification::TextString, 0, 0, 0));
}

TEST(FieldSpecificationValidation, IdAndTypeRules) {
    // The common id rule runs before a typed validator's own checks.
    ExpectDatabaseException([] { FieldSpecification(65535, "n", FieldSpecification::UInt, 3, 0, 0); }, kInvalid,
                            "Tavrin::Database::ValidateSpecification", "invalid field id <65535> for field <n>");
    const FieldSpecification text = MakeUnchecked(1, "t", FieldSpecification::TextString, 5);
    ExpectDatabaseException([&] { ValidateBlobSpecification(text); }, kInvalid,
                            "Tavrin::Database::ValidateBlobSpecification", "invalid field type <11> for field <t>");
    ExpectDatabaseException([] { FieldSpecification(1, "odd", static_cast<Type>(17), 4, 0, 0); }, kInvalid,
                            "Tavrin::Database::FieldSpecification::Validate",
                            "invalid field type <17> for field <odd>");
}

TEST(FieldSpecificationValidation, NoneMustBeEmptyCheckedInOrder) {
    const std::string function = "Tavrin::Database::ValidateNoneSpecification";
    ExpectDatabaseException([] { FieldSpecification(1, "x", FieldSpecification::None, 1, 1, 1); }, kInvalid, function,
                            "invalid field id <1> for field <x>");
    ExpectDatabaseException([] { FieldSpecification(65535, "x", FieldSpecification::None, 2, 1, 1); }, kInvalid,
                            function, "invalid length <2> for field <x>");
    ExpectDatabaseException([] { FieldSpecification(65535, "x", FieldSpecification::None, 0, 3, 1); }, kInvalid,
                            function, "invalid offset <3> for field <x>");
    ExpectDatabaseException([] { FieldSpecification(65535, "x", FieldSpecification::None, 0, 0, 0x80000000u); },
                            kInvalid, function, "invalid field properties <2147483648> for field <x>");
    EXPECT_NO_THROW(FieldSpecification().Validate());
}

TEST(FieldSpecificationWire, ExactBytesRoundTripAndCuts) {
    const FieldSpecification specification(0x0102, "ab", FieldSpecification::TextString, 0x0A0B0C0D, 0x11,
                                           0x80000001u);
    MessageBuilder builder;
    ASSERT_EQ(specification.Serialize(builder), Status::Success);
    const std::array<unsigned char, 24> expected = {0x02, 0x01, 0, 0, 2, 0, 'a', 'b', 11, 0, 0, 0,
                                                    0x0D, 0x0C, 0x0B, 0x0A, 0x11, 0, 0, 0, 1, 0, 0, 0x80};
    ASSERT_EQ(builder.GetLength(), expected.size());
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), builder.GetBuffer()));

    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    FieldSpecification copy;
    ASSERT_EQ(copy.Deserialize(validator), Status::Success);
    EXPECT_EQ(copy, specification);
    EXPECT_EQ(copy.GetOffset(), 0x11u);
    EXPECT_EQ(copy.GetProperties(), 0x80000001u);

    Testing::ExpectEveryCutRefused(builder.GetBuffer(), builder.GetLength(), [](MessageValidator& cut) {
        FieldSpecification read;
        return read.Deserialize(cut);
    });
}

TEST(FieldSpecificationWire, LongNamesAreRefused) {
    MessageBuilder builder;
    const FieldSpecification longName(1, std::string(65536, 'n'), FieldSpecification::TextString, 4, 0, 0);
    EXPECT_EQ(longName.Serialize(builder), Status::Invalid);
}

TEST(FieldSpecificationTypes, BaseNumbersMapBothWays) {
    for (std::uint32_t number = 0; number < FieldSpecification::TypeCount; ++number) {
        unsigned char base = 0;
        if (FieldSpecification::GetTavrinFieldType(static_cast<Type>(number), base) != Status::Success) {
            EXPECT_EQ(base, 255);
            continue;
        }
        Type back = FieldSpecification::None;
        ASSERT_EQ(FieldSpecification::GetDatabaseFieldType(base, back), Status::Success);
        EXPECT_EQ(back, number);
    }
    unsigned char base = 0;
    EXPECT_EQ(FieldSpecification::GetTavrinFieldType(FieldSpecification::Boolean, base), Status::WrongType);
    EXPECT_EQ(FieldSpecification::GetTavrinFieldType(static_cast<Type>(17), base), Status::WrongType);
    Type type = FieldSpecification::None;
    EXPECT_EQ(FieldSpecification::GetDatabaseFieldType(13, type), Status::WrongType);
    EXPECT_EQ(static_cast<std::uint32_t>(type), 17u);
}

TEST(FieldSpecificationMatch, PatternMembersAreCriteria) {
    const FieldSpecification field(4, "amount", FieldSpecification::SInt, 8, 16, 0x80000000u);
    const FieldSpecification byName = MakeUnchecked(65535, "amount", 0, 0);
    EXPECT_TRUE(field.IsMatch(byName));
    EXPECT_TRUE(field.IsMatch(MakeUnchecked(4, "", FieldSpecification::SInt, 0, 16, 0x80000000u)));
    EXPECT_FALSE(field.IsMatch(MakeUnchecked(4, "", 0, 0, 17)));
    EXPECT_FALSE(field.IsMatch(MakeUnchecked(65535, "", 0, 0, 0, 1)));
    EXPECT_FALSE(field.IsMatch(FieldSpecification()));
}

TEST(FieldSpecificationText, LabelledAndFormattedForms) {
    std::ostringstream stream;
    stream << FieldSpecification(12, "when", FieldSpecification::DateTime, 7, 40, 0x80000002u);
    EXPECT_EQ(stream.str(),
              "Id ........................... 12\n"
              "Name ......................... when\n"
              "Type ......................... DateTime\n"
              "Max length ................... 7\n"
              "Offset ....................... 40\n"
              "Properties ................... 2147483650\n"
              "Order descending ............. true\n");
    EXPECT_EQ(FieldSpecification::ToFormattedHeaderString(),
              "Id     Name                      Type         MaxLength    Offset  Property\n");
    const FieldSpecification field(65534, std::string(30, 'n'), FieldSpecification::TRational, 10, 0, 0x80000000u);
    EXPECT_EQ(field.ToFormattedString(),
              "65534  " + std::string(25, 'n') + " TRational           10         0 214748364\n");
    EXPECT_EQ(MakeUnchecked(1, "x", 17, 3).ToFormattedString(),
              "1      x                         Unknown              3         0         0\n");
}

TEST(FieldTypeTable, CompareColumnForRawTypes) {
    const auto compare = [](Type type, const std::string& a, const std::string& b) {
        return GetFieldTypeInfo(type).compare(Testing::Bytes(a.c_str()), static_cast<std::uint32_t>(a.size()),
                                              Testing::Bytes(b.c_str()), static_cast<std::uint32_t>(b.size()));
    };
    EXPECT_GT(compare(FieldSpecification::Pointer, "\xC8", "a"), 0);  // bytes are unsigned
    // Integers: each side at its own width, little-endian.
    EXPECT_LT(compare(FieldSpecification::SInt, std::string("\xFF", 1), std::string("\x01\0\0\0\0\0\0\0", 8)), 0);
    EXPECT_EQ(compare(FieldSpecification::UInt, std::string("\xFF", 1), std::string("\xFF\0\0\0", 4)), 0);
    EXPECT_GT(compare(FieldSpecification::Boolean, std::string("\0\0\0\0\0\0\0\x80", 8),
                      std::string("\xFF\xFF\xFF\x7F", 4)),
              0);
}

}  // namespace
}  // namespace Tavrin::Database
