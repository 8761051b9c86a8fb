#include "schema/IndexSpecification.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "base/DatabaseException.h"
#include "records/RecordsTestSupport.h"

namespace Tavrin::Database {

// Reaches the constructor that indexes use, which also sets the number and the additional fields.
class IndexSpecificationTestPeer {
public:
    static IndexSpecification Make(std::uint16_t number, const std::string& name, IndexSpecification::Type type,
                                   std::uint32_t properties, const std::vector<IndexSpecification::Field>& fields,
                                   const std::vector<std::uint16_t>& additionalFieldIds) {
        return IndexSpecification(number, name, type, properties, fields, additionalFieldIds);
    }
};

namespace {

using Field = IndexSpecification::Field;
using Bytes = std::vector<unsigned char>;
using Testing::ExpectDatabaseException;
using Testing::ExpectEveryCutRefused;

constexpr const char* kValidate = "Tavrin::Database::IndexSpecification::Validate";

Bytes Serialized(const IndexSpecification& specification) {
    MessageBuilder builder;
    EXPECT_EQ(specification.Serialize(builder), Status::Success);
    return Bytes(builder.GetBuffer(), builder.GetBuffer() + builder.GetLength());
}

IndexSpecification ByDate() {
    IndexSpecification specification("ByDate", IndexSpecification::RedBlack, IndexSpecification::DuplicateProperty,
                                      {Field(10, Field::DescendingFlag)});
    specification.SetNumber(3);
    return specification;
}

TEST(IndexSpecification, WorkedExampleHasExactBytesAndReadsBack) {
    const Bytes expected = {0x03, 0x00, 0x00, 0x00, 0x06, 0x00, 0x42, 0x79, 0x44, 0x61, 0x74,
                            0x65, 0x02, 0x00, 0x00, 0x00, 0x04, 0x00, 0x00, 0x00, 0x01, 0x00,
                            0x00, 0x00, 0x0A, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80};
    EXPECT_EQ(Serialized(ByDate()), expected);

    IndexSpecification read;
    MessageValidator validator(expected.data(), static_cast<std::uint32_t>(expected.size()));
    ASSERT_EQ(read.Deserialize(validator), Status::Success);
    EXPECT_EQ(validator.GetOffset(), expected.size());
    EXPECT_EQ(read, ByDate());
    EXPECT_EQ(read.GetNumber(), 3);
    EXPECT_TRUE(read.IsTree());
    EXPECT_TRUE(Field::IsDescending(read.GetFields().at(0).GetFlags()));
}

TEST(IndexSpecification, DefaultTravelsThroughTheWireThoughValidateRefusesIt) {
    const IndexSpecification empty;
    const Bytes expected = {0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                            0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
    EXPECT_EQ(Serialized(empty), expected);

    IndexSpecification read = ByDate();
    MessageValidator validator(expected.data(), static_cast<std::uint32_t>(expected.size()));
    ASSERT_EQ(read.Deserialize(validator), Status::Success);
    EXPECT_EQ(read, empty);
    EXPECT_TRUE(read.GetFields().empty());
    ExpectDatabaseException([&] { read.Validate(); }, DatabaseException::InvalidParameter, kValidate,
                            "empty name in index specification <65535>");
}

TEST(IndexSpecification, ValidateChecksNameThenTypeThenPropertiesOnly) {
    const auto make = [](std::uint16_t number, const char* name, std::uint32_t type, std::uint32_t properties) {
        return [=] {
            IndexSpecificationTestPeer::Make(number, name, static_cast<IndexSpecification::Type>(type), properties, {},
                                             {});
        };
    };
    constexpr auto kInvalid = DatabaseException::InvalidParameter;
    ExpectDatabaseException(make(7, "", 0, 1), kInvalid, kValidate, "empty name in index specification <7>");
    ExpectDatabaseException(make(7, "x", 0, 1), kInvalid, kValidate, "invalid type <0> in index specification <x>");
    ExpectDatabaseException(make(7, "x", 1, 3), kInvalid, kValidate, "invalid index properties <3> for index <x>");
    // A type above 2, properties of 0 or of several bits and an empty key are left to the table.
    EXPECT_NO_THROW(make(7, "x", 9, 0)());
    EXPECT_NO_THROW(make(7, "x", 2, 6)());
    EXPECT_NO_THROW(IndexSpecification("x", IndexSpecification::Hash, 0xFFFFFFFE, {}));
}

TEST(IndexSpecification, EqualityIgnoresNumberAndAdditionalFields) {
    const IndexSpecification base = ByDate();
    const IndexSpecification other = IndexSpecificationTestPeer::Make(
        9, "ByDate", IndexSpecification::RedBlack, 4, {Field(10, Field::DescendingFlag)}, {11, 12});
    EXPECT_EQ(base, other);

    const std::vector<IndexSpecification> different = {
        IndexSpecification("ByDay", IndexSpecification::RedBlack, 4, {Field(10, Field::DescendingFlag)}),
        IndexSpecification("ByDate", IndexSpecification::Hash, 4, {Field(10, Field::DescendingFlag)}),
        IndexSpecification("ByDate", IndexSpecification::RedBlack, 2, {Field(10, Field::DescendingFlag)}),
        IndexSpecification("ByDate", IndexSpecification::RedBlack, 4, {Field(11, Field::DescendingFlag)}),
        IndexSpecification("ByDate", IndexSpecification::RedBlack, 4, {Field(10, 0)}),
        IndexSpecification("ByDate", IndexSpecification::RedBlack, 4,
                           {Field(10, Field::DescendingFlag), Field(1, 0)}),
    };
    for (const IndexSpecification& specification : different) {
        EXPECT_NE(base, specification) << specification;
    }
}

TEST(IndexSpecification, MatchTestsOnlyWhatThePatternSets) {
    const IndexSpecification target = IndexSpecificationTestPeer::Make(
        3, "ByDate", IndexSpecification::RedBlack, 4, {Field(10, Field::DescendingFlag)}, {11});
    EXPECT_TRUE(target.IsMatch(IndexSpecification()));
    EXPECT_TRUE(IndexSpecification().IsMatch(IndexSpecification()));

    IndexSpecification byNumber;
    byNumber.SetNumber(3);
    EXPECT_TRUE(target.IsMatch(byNumber));
    byNumber.SetNumber(4);
    EXPECT_FALSE(target.IsMatch(byNumber));
    // Equal by operator== yet told apart by a pattern with a number.
    EXPECT_EQ(target, ByDate());

    const auto pattern = [](const std::string& name, IndexSpecification::Type type, std::uint32_t properties,
                            const std::vector<Field>& fields, const std::vector<std::uint16_t>& additional) {
        return IndexSpecificationTestPeer::Make(0xFFFF, name, type, properties, fields, additional);
    };
    EXPECT_TRUE(target.IsMatch(pattern("ByDate", IndexSpecification::RedBlack, 4, {}, {})));
    EXPECT_FALSE(target.IsMatch(pattern("ByDay", IndexSpecification::RedBlack, 4, {}, {})));
    EXPECT_FALSE(target.IsMatch(pattern("ByDate", IndexSpecification::Hash, 4, {}, {})));
    EXPECT_FALSE(target.IsMatch(pattern("ByDate", IndexSpecification::RedBlack, 2, {}, {})));
    EXPECT_TRUE(target.IsMatch(pattern("ByDate", IndexSpecification::RedBlack, 4, {Field(10, 0x80000000u)}, {11})));
    EXPECT_FALSE(target.IsMatch(pattern("ByDate", IndexSpecification::RedBlack, 4, {Field(10, 0)}, {})));
    EXPECT_FALSE(target.IsMatch(
        pattern("ByDate", IndexSpecification::RedBlack, 4, {Field(10, 0x80000000u), Field(10, 0x80000000u)}, {})));
    EXPECT_FALSE(target.IsMatch(pattern("ByDate", IndexSpecification::RedBlack, 4, {}, {11, 12})));
    EXPECT_FALSE(target.IsMatch(pattern("ByDate", IndexSpecification::RedBlack, 4, {}, {12})));
}

TEST(IndexSpecification, AdditionalFieldsStayOffTheWire) {
    const IndexSpecification withExtras = IndexSpecificationTestPeer::Make(
        3, "ByDate", IndexSpecification::RedBlack, 4, {Field(10, Field::DescendingFlag)}, {11, 12});
    const Bytes bytes = Serialized(withExtras);
    EXPECT_EQ(bytes, Serialized(ByDate()));

    IndexSpecification fresh;
    MessageValidator validator(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    ASSERT_EQ(fresh.Deserialize(validator), Status::Success);
    EXPECT_TRUE(fresh.GetAdditionalFieldIds().empty());

    // A reader keeps whatever additional fields the object held before.
    IndexSpecification kept = IndexSpecificationTestPeer::Make(0, "old", IndexSpecification::Hash, 2, {}, {5});
    MessageValidator again(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    ASSERT_EQ(kept.Deserialize(again), Status::Success);
    EXPECT_EQ(kept.GetAdditionalFieldIds(), std::vector<std::uint16_t>{5});
}

TEST(IndexSpecification, ReaderRefusesOutOfRangeIdsAndEveryCut) {
    Bytes bytes = Serialized(ByDate());
    ExpectEveryCutRefused(bytes.data(), static_cast<std::uint32_t>(bytes.size()), [](MessageValidator& validator) {
        IndexSpecification specification;
        const StatusCode status = specification.Deserialize(validator);
        EXPECT_EQ(status, Status::Invalid) << "cut at " << validator.GetLength();
        return status;
    });

    const auto read = [](const Bytes& message) {
        IndexSpecification specification;
        MessageValidator validator(message.data(), static_cast<std::uint32_t>(message.size()));
        return specification.Deserialize(validator);
    };
    Bytes bigNumber = bytes;
    bigNumber[2] = 0x01;  // number 0x10003
    EXPECT_EQ(read(bigNumber), Status::OutOfRange);
    Bytes bigFieldId = bytes;
    bigFieldId[26] = 0x01;  // field id 0x1000A
    EXPECT_EQ(read(bigFieldId), Status::OutOfRange);

    // A huge count of fields with nothing behind it is refused, not allocated for.
    Bytes hugeCount = bytes;
    hugeCount.resize(24);
    hugeCount[20] = hugeCount[21] = hugeCount[22] = hugeCount[23] = 0xFF;
    EXPECT_EQ(read(hugeCount), Status::Invalid);
}

TEST(IndexSpecification, OverlongNameStopsAfterTheNumber) {
    IndexSpecification specification(std::string(0x10000, 'n'), IndexSpecification::Hash, 2, {Field(1, 0)});
    MessageBuilder builder;
    EXPECT_EQ(specification.Serialize(builder), Status::Invalid);
    EXPECT_EQ(builder.GetLength(), 4u);
}

TEST(IndexSpecification, TextFormNamesTypeAndSinglePropertyBits) {
    IndexSpecification specification("ByDate", IndexSpecification::RedBlack, IndexSpecification::DuplicateProperty,
                                     {Field(10, Field::DescendingFlag), Field(2, 0x7FFFFFFF)});
    specification.SetNumber(3);
    std::ostringstream stream;
    stream << specification;
    EXPECT_EQ(stream.str(),
              "Number ....................... 3\n"
              "Name ......................... ByDate\n"
              "Type ......................... RedBlack\n"
              "Properties ................... Duplicate\n"
              "Field id ..................... 10, Descending\n"
              "Field id ..................... 2, Ascending\n");

    const auto lines = [](std::uint32_t type, std::uint32_t properties) {
        const std::string text =
            IndexSpecificationTestPeer::Make(0, "i", static_cast<IndexSpecification::Type>(type), properties, {}, {})
                .ToString();
        return text.substr(text.find("Type"));
    };
    EXPECT_EQ(lines(1, 2), "Type ......................... Hash\nProperties ................... Unique\n");
    EXPECT_EQ(lines(3, 8), "Type ......................... Unknown\nProperties ................... PrimaryUnqiue\n");
    EXPECT_EQ(lines(2, 6), "Type ......................... RedBlack\nProperties ................... Invalid\n");
    EXPECT_EQ(lines(2, 0), "Type ......................... RedBlack\nProperties ................... Invalid\n");
}

TEST(IndexSpecification, PropertyTestsReadSingleBits) {
    const auto make = [](std::uint32_t properties) {
        return IndexSpecification("i", IndexSpecification::Hash, properties, {});
    };
    EXPECT_TRUE(make(6).IsUnique());
    EXPECT_TRUE(make(6).IsDuplicate());
    EXPECT_FALSE(make(6).IsPrimaryUnique());
    EXPECT_FALSE(make(2).IsPrimaryUnique());
    EXPECT_TRUE(make(8).IsPrimaryUnique());
    EXPECT_FALSE(make(8).IsUnique());
    EXPECT_TRUE(make(8).IsHash());
    EXPECT_FALSE(make(8).IsTree());
    EXPECT_TRUE(Field::IsAscending(0x7FFFFFFF));
    EXPECT_TRUE(Field::IsDescending(0x80000000u));
}

}  // namespace
}  // namespace Tavrin::Database
