#include <gtest/gtest.h>

#include <array>
#include <sstream>
#include <string>
#include <vector>

#include "RecordsTestSupport.h"
#include "records/FieldSpecification.h"
#include "records/FieldTypeTable.h"
#include "records/FieldValidators.h"

namespace Tavrin::Database {
namespace {

using Testing::ExpectDatabaseException;
using Testing::MakeUnchecked;
using Type = FieldSpecification::Type;

constexpr auto kInvalid = DatabaseException::InvalidParameter;

TEST(FieldSpecification, DefaultIsTheEmptyNoneField) {
    const FieldSpecification specification;
    EXPECT_EQ(specification.GetId(), 65535);
    EXPECT_EQ(specification.GetType(), FieldSpecification::None);
    EXPECT_NO_THROW(specification.Validate());
}

TEST(FieldSpecification, EqualityIgnoresOffsetAndPropertiesAndOrderIsById) {
    const FieldSpecification a(3, "price", FieldSpecification::UInt, 4, 0, 0);
    const FieldSpecification b(3, "price", FieldSpecification::UInt, 4, 99, 0x80000000u);
    EXPECT_EQ(a, b);
    EXPECT_NE(a, FieldSpecification(3, "Price", FieldSpecification::UInt, 4, 0, 0));
    EXPECT_NE(a, FieldSpecification(3, "price", FieldSpecification::SInt, 4, 0, 0));
    EXPECT_NE(a, FieldSpecification(3, "price", FieldSpecification::UInt, 8, 0, 0));
    EXPECT_TRUE(a < FieldSpecification(4, "a", FieldSpecification::UInt, 4, 0, 0));
    EXPECT_FALSE(a < b);
}

// Each typed validator: lengths it accepts, its neighbours it refuses, and its name on the exception.
struct LengthRule {
    Type type;
    const char* validator;
    std::vector<std::uint32_t> accepted;
    std::vector<std::uint32_t> refused;
};

TEST(FieldSpecificationValidation, TypedLengthRules) {
    const std::vector<LengthRule> rules = {
        {FieldSpecification::Blob, "ValidateBlobSpecification", {5, 6, 100000}, {0, 4}},
        {FieldSpecification::CrcBlob, "ValidateCrcBlobSpecification", {9, 10}, {0, 8}},
        {FieldSpecification::Boolean, "ValidateBooleanSpecification", {1}, {0, 2}},
        {FieldSpecification::Date, "ValidateDateSpecification", {3}, {2, 4}},
        {FieldSpecification::DateTime, "ValidateDateTimeSpecification", {6, 7}, {5, 8}},
        {FieldSpecification::Time, "ValidateTimeSpecification", {3, 4}, {2, 5}},
        {FieldSpecification::Rational, "ValidateRationalSpecification", {2, 3, 5, 9}, {1, 4, 6, 8, 10}},
        {FieldSpecification::TRational, "ValidateTRationalSpecification", {3, 4, 6, 10}, {2, 5, 7, 9, 11}},
        {FieldSpecification::SInt, "ValidateSignedIntegralSpecification", {1, 2, 4, 8}, {0, 3, 5, 16}},
        {FieldSpecification::UInt, "ValidateUnsignedIntegralSpecification", {1, 2, 4, 8}, {0, 3, 7, 9}},
    };
    for (const LengthRule& rule : rules) {
        SCOPED_TRACE(rule.validator);
        for (std::uint32_t length : rule.accepted) {
            EXPECT_NO_THROW(FieldSpecification(1, "f", rule.type, length, 7, 0x1234));
        }
        for (std::uint32_t length : rule.refused) {
            ExpectDatabaseException([&] { FieldSpecification(1, "f", rule.type, length, 0, 0); }, kInvalid,
                                    std::string("Tavrin::Database::") + rule.validator,
                                    "invalid length <" + std::to_string(length) + "> for field <f>");
        }
    }
}

TEST(FieldSpecificationValidation, UntypedKindsAcceptAnyLengthAndOnlyCheckTheId) {
    for (Type type : {FieldSpecification::BinaryArray, FieldSpecification::BinaryString,
                      FieldSpecification::Bitmap, FieldSpecification::Pointer, FieldSpecification::TextArray,
                      FieldSpecification::TextString}) {
        EXPECT_NO_THROW(FieldSpecification(0, "", type, 0, 0, 0));
        EXPECT_NO_THROW(FieldSpecification(65534, "", type, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu));
    }
    ExpectDatabaseException([] { FieldSpecification(65535, "name", FieldSpecification::TextString, 5, 0, 0); },
                            kInvalid, "Tavrin::Database::ValidateSpecification",
                            "invalid field id <65535> for field <name>");
    // A typed validator runs the common rule first, so the id is refused before the bad length.
    ExpectDatabaseException([] { FieldSpecification(65535, "n", FieldSpecification::UInt, 3, 0, 0); }, kInvalid,
                            "Tavrin::Database::ValidateSpecification", "invalid field id <65535> for field <n>");
}

TEST(FieldSpecificationValidation, TypedValidatorRefusesAnotherType) {
    const FieldSpecification text = MakeUnchecked(1, "t", FieldSpecification::TextString, 5);
    ExpectDatabaseException([&] { ValidateBlobSpecification(text); }, kInvalid,
                            "Tavrin::Database::ValidateBlobSpecification", "invalid field type <11> for field <t>");
    ExpectDatabaseException([&] { ValidateUnsignedIntegralSpecification(text); }, kInvalid,
                            "Tavrin::Database::ValidateUnsignedIntegralSpecification",
                            "invalid field type <11> for field <t>");
}

TEST(FieldSpecificationValidation, NoneMustBeEmptyInOrder) {
    const std::string function = "Tavrin::Database::ValidateNoneSpecification";
    ExpectDatabaseException([] { FieldSpecification(1, "x", FieldSpecification::None, 1, 1, 1); }, kInvalid,
                            function, "invalid field id <1> for field <x>");
    ExpectDatabaseException([] { FieldSpecification(65535, "x", FieldSpecification::None, 2, 1, 1); },
                            kInvalid, function, "invalid length <2> for field <x>");
    ExpectDatabaseException([] { FieldSpecification(65535, "x", FieldSpecification::None, 0, 3, 1); },
                            kInvalid, function, "invalid offset <3> for field <x>");
    ExpectDatabaseException(
        [] { FieldSpecification(65535, "x", FieldSpecification::None, 0, 0, 0x80000000u); }, kInvalid,
        function, "invalid field properties <2147483648> for field <x>");
    EXPECT_NO_THROW(FieldSpecification(65535, "x", FieldSpecification::None, 0, 0, 0));
    const FieldSpecification uint = MakeUnchecked(1, "u", FieldSpecification::UInt, 4);
    ExpectDatabaseException([&] { ValidateNoneSpecification(uint); }, kInvalid, function,
                            "invalid field type <14> for field <u>");
}

TEST(FieldSpecificationValidation, UnknownTypeIsRefusedByValidateItself) {
    ExpectDatabaseException([] { FieldSpecification(1, "odd", static_cast<Type>(17), 4, 0, 0); }, kInvalid,
                            "Tavrin::Database::FieldSpecification::Validate",
                            "invalid field type <17> for field <odd>");
    const FieldSpecification huge = MakeUnchecked(1, "odd", 0xFFFFFFFFu, 4);
    ExpectDatabaseException([&] { huge.Validate(); }, kInvalid, "Tavrin::Database::FieldSpecification::Validate",
                            "invalid field type <4294967295> for field <odd>");
}

TEST(FieldSpecificationWire, ExactBytesAndRoundTrip) {
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
    EXPECT_EQ(validator.GetRemaining(), 0u);
}

TEST(FieldSpecificationWire, EmptyNameHasLengthZero) {
    MessageBuilder builder;
    ASSERT_EQ(FieldSpecification(7, "", FieldSpecification::Boolean, 1, 0, 0).Serialize(builder), Status::Success);
    ASSERT_EQ(builder.GetLength(), 22u);
    EXPECT_EQ(DecodeU16(builder.GetBuffer() + 4), 0);
}

TEST(FieldSpecificationWire, ReaderRefusesWideIdsAndKeepsWhatItRead) {
    MessageBuilder builder;
    ASSERT_EQ(builder.AppendUInt32(65536), Status::Success);
    ASSERT_EQ(builder.AppendString("x"), Status::Success);
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    FieldSpecification specification;
    EXPECT_EQ(specification.Deserialize(validator), Status::OutOfRange);

    // Stops at the type: id and name are already in the object.
    MessageBuilder cut;
    ASSERT_EQ(cut.AppendUInt32(9), Status::Success);
    ASSERT_EQ(cut.AppendString("partial"), Status::Success);
    MessageValidator cutValidator(cut.GetBuffer(), cut.GetLength());
    EXPECT_EQ(specification.Deserialize(cutValidator), Status::Invalid);
    EXPECT_EQ(specification.GetId(), 9);
    EXPECT_EQ(specification.GetName(), "partial");
}

TEST(FieldSpecificationWire, EveryCutIsRefused) {
    MessageBuilder builder;
    ASSERT_EQ(FieldSpecification(5, "name", FieldSpecification::UInt, 4, 0, 0).Serialize(builder), Status::Success);
    Testing::ExpectEveryCutRefused(builder.GetBuffer(), builder.GetLength(), [](MessageValidator& validator) {
        FieldSpecification specification;
        return specification.Deserialize(validator);
    });
}

TEST(FieldSpecificationWire, NameLongerThanTheWireAllowsIsRefused) {
    const FieldSpecification specification(1, std::string(65536, 'n'), FieldSpecification::TextString, 4, 0, 0);
    MessageBuilder builder;
    EXPECT_EQ(specification.Serialize(builder), Status::Invalid);
}

TEST(FieldSpecificationTypes, BaseNumbersMapBothWays) {
    for (std::uint32_t number = 0; number < FieldSpecification::TypeCount; ++number) {
        const auto type = static_cast<Type>(number);
        unsigned char base = 0;
        const StatusCode status = FieldSpecification::GetTavrinFieldType(type, base);
        if (status != Status::Success) {
            EXPECT_EQ(base, 255);
            continue;
        }
        Type back = FieldSpecification::None;
        ASSERT_EQ(FieldSpecification::GetDatabaseFieldType(base, back), Status::Success);
        EXPECT_EQ(back, type);
    }
    unsigned char base = 0;
    EXPECT_EQ(FieldSpecification::GetTavrinFieldType(FieldSpecification::Boolean, base), Status::WrongType);
    EXPECT_EQ(base, 255);
    EXPECT_EQ(FieldSpecification::GetTavrinFieldType(static_cast<Type>(17), base), Status::WrongType);
    EXPECT_EQ(FieldSpecification::GetTavrinFieldType(FieldSpecification::Date, base), Status::Success);
    EXPECT_EQ(base, 0);

    Type type = FieldSpecification::None;
    EXPECT_EQ(FieldSpecification::GetDatabaseFieldType(13, type), Status::WrongType);
    EXPECT_EQ(static_cast<std::uint32_t>(type), 17u);
    EXPECT_EQ(FieldSpecification::GetDatabaseFieldType(14, type), Status::WrongType);
    EXPECT_EQ(FieldSpecification::GetDatabaseFieldType(255, type), Status::WrongType);
    EXPECT_EQ(FieldSpecification::GetDatabaseFieldType(12, type), Status::Success);
    EXPECT_EQ(type, FieldSpecification::CrcBlob);
}

TEST(FieldSpecificationMatch, PatternMembersAreCriteria) {
    const FieldSpecification field(4, "amount", FieldSpecification::SInt, 8, 16, 0x80000000u);
    FieldSpecification byName = MakeUnchecked(65535, "amount", 0, 0);
    EXPECT_TRUE(field.IsMatch(byName));
    EXPECT_FALSE(FieldSpecification(4, "other", FieldSpecification::SInt, 8, 16, 0).IsMatch(byName));
    EXPECT_TRUE(field.IsMatch(MakeUnchecked(4, "", FieldSpecification::SInt, 0, 16, 0x80000000u)));
    EXPECT_FALSE(field.IsMatch(MakeUnchecked(4, "", 0, 0, 17)));
    EXPECT_FALSE(field.IsMatch(MakeUnchecked(65535, "", 0, 0, 0, 1)));
    EXPECT_FALSE(field.IsMatch(MakeUnchecked(65535, "", 0, 4)));

    const FieldSpecification empty;
    EXPECT_TRUE(empty.IsMatch(empty));
    EXPECT_FALSE(field.IsMatch(empty));
}

TEST(FieldSpecificationText, ToStringHasSevenLabelledLines) {
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
}

TEST(FieldSpecificationText, FormattedColumnsAreCutToWidth) {
    EXPECT_EQ(FieldSpecification::ToFormattedHeaderString(),
              "Id     Name                      Type         MaxLength    Offset  Property\n");
    const FieldSpecification field(65534, std::string(30, 'n'), FieldSpecification::TRational, 10, 0,
                                   0x80000000u);
    EXPECT_EQ(field.ToFormattedString(),
              "65534  " + std::string(25, 'n') + " TRational           10         0 214748364\n");
    const FieldSpecification odd = MakeUnchecked(1, "x", 17, 3);
    EXPECT_EQ(odd.ToFormattedString(), "1      x                         Unknown              3         0         0\n");
}

TEST(FieldTypeTable, CompareColumnForRawTypes) {
    const auto compare = [](Type type, const std::string& a, const std::string& b) {
        return GetFieldTypeInfo(type).compare(reinterpret_cast<const unsigned char*>(a.data()),
                                              static_cast<std::uint32_t>(a.size()),
                                              reinterpret_cast<const unsigned char*>(b.data()),
                                              static_cast<std::uint32_t>(b.size()));
    };
    EXPECT_LT(compare(FieldSpecification::TextString, "ab", "abc"), 0);
    EXPECT_GT(compare(FieldSpecification::TextString, "abd", "abc"), 0);
    EXPECT_EQ(compare(FieldSpecification::BinaryArray, "abc", "abc"), 0);
    EXPECT_GT(compare(FieldSpecification::Pointer, "\xC8", "a"), 0);  // bytes are unsigned
    EXPECT_LT(compare(FieldSpecification::TextArray, "B", "a"), 0);    // no case folding

    // Integers: each side at its own width, little-endian.
    EXPECT_LT(compare(FieldSpecification::SInt, std::string("\xFF", 1), std::string("\x01\0\0\0\0\0\0\0", 8)), 0);
    EXPECT_GT(compare(FieldSpecification::SInt, std::string("\x00\x01", 2), std::string("\xFF", 1)), 0);
    EXPECT_EQ(compare(FieldSpecification::UInt, std::string("\xFF", 1), std::string("\xFF\0\0\0", 4)), 0);
    EXPECT_GT(compare(FieldSpecification::UInt, std::string("\xFF", 1), std::string("\x01\0", 2)), 0);
    EXPECT_EQ(compare(FieldSpecification::UInt, std::string("\x05\x05\x05", 3), std::string("", 0)), 0);
    EXPECT_LT(compare(FieldSpecification::Boolean, std::string("\0", 1), std::string("\x01", 1)), 0);
    EXPECT_GT(compare(FieldSpecification::UInt, std::string("\0\0\0\0\0\0\0\x80", 8),
                      std::string("\xFF\xFF\xFF\x7F\0\0\0\0", 8)),
              0);
}

}  // namespace
}  // namespace Tavrin::Database
