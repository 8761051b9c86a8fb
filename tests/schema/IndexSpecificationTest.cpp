#include "tavrin/schema/IndexSpecification.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tavrin/base/DatabaseException.h"
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
using Testing::Read;
using Testing::Serialized;

constexpr const char* kValidate = "Tavrin::Database::IndexSpecification::Validate";

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
    ASSERT_EQ(Read(expected, read), Status::Success);
    EXPECT_EQ(read, ByDate());
    EXPECT_EQ(read.GetNumber(), 3);
}

TEST(IndexSpecification, DefaultTravelsThroughTheWireThoughValidateRefusesIt) {
    const IndexSpecification empty;
    const Bytes expected = {0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                            0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
    EXPECT_EQ(Serialized(empty), expected);

    IndexSpecification read = ByDate();
    ASSERT_EQ(Read(expected, read), Status::Success);
    EXPECT_EQ(read, empty);
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

TEST(IndexSpecification, EqualityIgnoresNumberAndExtrasWhileMatchTestsWhatThePatternSets) {
    const IndexSpecification target = IndexSpecificationTestPeer::Make(
        3, "ByDate", IndexSpecification::RedBlack, 4, {Field(10, Field::DescendingFlag)}, {11});
    EXPECT_EQ(target, ByDate());
    EXPECT_NE(target, IndexSpecification("ByDate", IndexSpecification::RedBlack, 4, {Field(10, 0)}));
    EXPECT_NE(target, IndexSpecification("ByDate", IndexSpecification::RedBlack, 2, {Field(10, 0x80000000u)}));
    EXPECT_TRUE(target.IsMatch(IndexSpecification()));

    IndexSpecification byNumber;
    byNumber.SetNumber(4);
    EXPECT_FALSE(target.IsMatch(byNumber));
    byNumber.SetNumber(3);
    EXPECT_TRUE(target.IsMatch(byNumber));

    const auto matches = [&](IndexSpecification::Type type, std::uint32_t properties, const std::vector<Field>& fields,
                             const std::vector<std::uint16_t>& additional, const char* name = "ByDate") {
        return target.IsMatch(IndexSpecificationTestPeer::Make(0xFFFF, name, type, properties, fields, additional));
    };
    EXPECT_TRUE(matches(IndexSpecification::RedBlack, 4, {Field(10, 0x80000000u)}, {11}));
    EXPECT_FALSE(matches(IndexSpecification::Hash, 4, {}, {}));
    EXPECT_FALSE(matches(IndexSpecification::RedBlack, 2, {}, {}));
    EXPECT_FALSE(matches(IndexSpecification::RedBlack, 4, {Field(10, 0)}, {}));
    EXPECT_FALSE(matches(IndexSpecification::RedBlack, 4, {Field(10, 0x80000000u), Field(10, 0x80000000u)}, {}));
    EXPECT_FALSE(matches(IndexSpecification::RedBlack, 4, {}, {11, 12}));
}

TEST(IndexSpecification, AdditionalFieldsStayOffTheWire) {
    const IndexSpecification withExtras = IndexSpecificationTestPeer::Make(
        3, "ByDate", IndexSpecification::RedBlack, 4, {Field(10, Field::DescendingFlag)}, {11, 12});
    const Bytes bytes = Serialized(withExtras);
    EXPECT_EQ(bytes, Serialized(ByDate()));

    // A reader keeps whatever additional fields the object held before.
    IndexSpecification kept = IndexSpecificationTestPeer::Make(0, "old", IndexSpecification::Hash, 2, {}, {5});
    ASSERT_EQ(Read(bytes, kept), Status::Success);
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

    IndexSpecification specification;
    const auto read = [&](const Bytes& message) { return Read(message, specification); };
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

    // A cut inside the second field keeps exactly the first.
    Bytes two = Serialized(IndexSpecification("Two", IndexSpecification::Hash, 2, {Field(1, 0), Field(2, 0)}));
    two.resize(two.size() - 2);
    EXPECT_EQ(read(two), Status::Invalid);
    EXPECT_EQ(specification.GetFields(), std::vector<Field>{Field(1, 0)});

    // A writer refuses an overlong name after writing the number.
    MessageBuilder builder;
    EXPECT_EQ(IndexSpecification(std::string(0x10000, 'n'), IndexSpecification::Hash, 2, {}).Serialize(builder),
              Status::Invalid);
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
    EXPECT_EQ(lines(2, 0), "Type ......................... RedBlack\nProperties ................... Invalid\n");
}

}  // namespace
}  // namespace Tavrin::Database
