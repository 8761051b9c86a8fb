#include "tavrin/schema/TableSpecification.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "records/RecordsTestSupport.h"

namespace Tavrin::Database {
namespace {

using Bytes = std::vector<unsigned char>;
using Testing::ExpectEveryCutRefused;
using Testing::Read;
using Testing::Serialized;

// An unmanaged table of one 4-byte signed field.
TableSpecification Widget(std::uint32_t cacheSize = TableSpecification::CacheAll) {
    return TableSpecification("Widget", 1, {FieldSpecification(1, "Age", FieldSpecification::SInt, 4, 0, 0)}, 100,
                              4, 50, cacheSize);
}

const Bytes kWidgetBytes = {
    0x01, 0x06, 0x00, 0x57, 0x69, 0x64, 0x67, 0x65, 0x74, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00,
    0x00, 0x01, 0x00, 0x00, 0x00,
    // the field
    0x01, 0x00, 0x00, 0x00, 0x03, 0x00, 0x41, 0x67, 0x65, 0x09, 0x00, 0x00, 0x00, 0x04, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    // the sizes
    0x64, 0x00, 0x00, 0x00, 0x04, 0x00, 0x00, 0x00, 0x32, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF};

TEST(TableSpecification, WorkedExampleHasExactBytesAndReadsBack) {
    ASSERT_EQ(kWidgetBytes.size(), 62u);
    EXPECT_EQ(Serialized(Widget(), 1), kWidgetBytes);

    TableSpecification read;
    ASSERT_EQ(Read(kWidgetBytes, read), Status::Success);
    EXPECT_EQ(read, Widget());
    EXPECT_EQ(Serialized(read, 1), kWidgetBytes);  // the members that equality ignores came back too
}

TEST(TableSpecification, VersionZeroReadsLikeOneAndLaterVersionsAreRefused) {
    Bytes message = kWidgetBytes;
    message[0] = 0;
    EXPECT_EQ(Serialized(Widget(), 0), message);
    TableSpecification read;
    ASSERT_EQ(Read(message, read), Status::Success);
    EXPECT_EQ(read, Widget());

    message[0] = 2;
    MessageValidator validator(message.data(), static_cast<std::uint32_t>(message.size()));
    validator.SetVersion(0x33);
    EXPECT_EQ(read.Deserialize(validator), Status::WrongVersion);
    EXPECT_EQ(validator.GetOffset(), 1u);
    EXPECT_EQ(validator.GetVersion(), 0x33);
}

TEST(TableSpecification, EveryCutIsRefusedAndTheValidatorKeepsItsVersion) {
    ExpectEveryCutRefused(kWidgetBytes.data(), static_cast<std::uint32_t>(kWidgetBytes.size()),
                          [](MessageValidator& validator) {
                              validator.SetVersion(0x44);
                              TableSpecification specification;
                              const StatusCode status = specification.Deserialize(validator);
                              EXPECT_EQ(status, Status::Invalid) << "cut at " << validator.GetLength();
                              EXPECT_EQ(validator.GetVersion(), 0x44);
                              return status;
                          });

    // Cut inside the sizes: the fields are already in the object.
    const Bytes cut(kWidgetBytes.begin(), kWidgetBytes.end() - 6);
    TableSpecification partial;
    EXPECT_EQ(Read(cut, partial), Status::Invalid);
    EXPECT_EQ(partial.GetFields(), Widget().GetFields());
    EXPECT_EQ(partial.GetInitialMaximumRecords(), 100u);
}

TEST(TableSpecification, ReaderPassesFieldStatusesOnAndWriterRefusesLongNames) {
    Bytes badField = kWidgetBytes;
    badField[23] = 0x01;  // field id 0x10001
    TableSpecification read;
    EXPECT_EQ(Read(badField, read), Status::OutOfRange);

    // A huge count of fields with nothing behind it is refused, not allocated for.
    Bytes hugeCount(kWidgetBytes.begin(), kWidgetBytes.begin() + 21);
    hugeCount[17] = hugeCount[18] = hugeCount[19] = hugeCount[20] = 0xFF;
    EXPECT_EQ(Read(hugeCount, read), Status::Invalid);

    MessageBuilder builder;
    EXPECT_EQ(TableSpecification(std::string(0x10000, 't'), 0, {}, 1, 1, 1).Serialize(builder, 1), Status::Invalid);
    EXPECT_EQ(builder.GetLength(), 1u);
    MessageBuilder empty;
    EXPECT_EQ(SerializeTableSpecificationMessage(empty), Status::Success);
    EXPECT_EQ(empty.GetLength(), 0u);
}

TEST(TableSpecification, AnyNonZeroManagedValueReadsTrueAndIsWrittenAsOne) {
    Bytes message = kWidgetBytes;
    message[9] = 2;
    TableSpecification read;
    ASSERT_EQ(Read(message, read), Status::Success);
    EXPECT_TRUE(read.IsManaged());
    const Bytes written = Serialized(read, 1);
    EXPECT_EQ(written[9], 1);
    EXPECT_EQ(Bytes(written.begin() + 10, written.end()), Bytes(message.begin() + 10, message.end()));
}

TEST(TableSpecification, EqualityIgnoresPropertiesAndSizing) {
    const std::vector<FieldSpecification> fields = {FieldSpecification(1, "Age", FieldSpecification::SInt, 4, 0, 0)};
    const TableSpecification base = Widget();
    EXPECT_EQ(base, TableSpecification("Widget", false, 6, fields, 1, 4, 2, 0));
    // Offsets and properties of fields take no part either.
    EXPECT_EQ(base, TableSpecification("Widget", 1, {FieldSpecification(1, "Age", FieldSpecification::SInt, 4, 9, 7)},
                                       100, 4, 50, 0));

    EXPECT_NE(base, TableSpecification("Widget", false, 1, fields, 100, 8, 50, 0));
    EXPECT_NE(base, TableSpecification("Widget", true, 1, fields, 100, 4, 50, 0));
    EXPECT_NE(base, TableSpecification("Widget", false, 1,
                                       {FieldSpecification(1, "Age", FieldSpecification::SInt, 8, 0, 0)}, 100, 4, 50,
                                       0));
    // The short constructor makes a managed table of record length 0.
    EXPECT_EQ(TableSpecification("Widget", 0, fields, 1, 1, 1),
              TableSpecification("Widget", true, 0, fields, 7, 0, 7, 7));
}

TEST(TableSpecification, TextFormListsMembersThenTheFieldTable) {
    const std::string fieldTable = FieldSpecification::ToFormattedHeaderString() +
                                   FieldSpecification(1, "Age", FieldSpecification::SInt, 4, 0, 0).ToFormattedString();
    std::ostringstream stream;
    stream << Widget();
    EXPECT_EQ(stream.str(),
              "Name ......................... Widget\n"
              "Type ......................... Unmanaged\n"
              "Properties ................... 1\n"
              "Create record file ........... true\n"
              "Create mutex ................. false\n"
              "Convert ...................... false\n"
              "\n"
              "Initial maximum records ...... 100\n"
              "Grow records ................. 50\n"
              "Cache size (k) ............... all\n"
              "Record length ................ 4\n"
              "\n" +
                  fieldTable);

    const std::string managed = TableSpecification("M", 6, {}, 1, 2, 0).ToString();
    EXPECT_NE(managed.find("Type ......................... Managed\n"), std::string::npos);
    EXPECT_NE(managed.find("Create mutex ................. true\nConvert ...................... true\n"),
              std::string::npos);
}

}  // namespace
}  // namespace Tavrin::Database
