#include "tavrin/schema/DatabaseSpecification.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "records/RecordsTestSupport.h"

namespace Tavrin::Database {
namespace {

using Bytes = std::vector<unsigned char>;
using TableEntry = DatabaseSpecification::DatabaseTableSpecification;
using Testing::ExpectEveryCutRefused;
using Testing::Read;
using Testing::Serialized;

TableSpecification Widget() {
    return TableSpecification("Widget", 1, {FieldSpecification(1, "Age", FieldSpecification::SInt, 4, 0, 0)}, 100,
                              4, 50, TableSpecification::CacheAll);
}

IndexSpecification ByDate() {
    IndexSpecification index("ByDate", IndexSpecification::RedBlack, IndexSpecification::DuplicateProperty,
                             {IndexSpecification::Field(10, IndexSpecification::Field::DescendingFlag)});
    index.SetNumber(3);
    return index;
}

DatabaseSpecification Example() { return DatabaseSpecification("D", 1, {TableEntry(7, Widget(), {ByDate()})}); }

Bytes Concatenated(std::initializer_list<Bytes> parts) {
    Bytes bytes;
    for (const Bytes& part : parts) bytes.insert(bytes.end(), part.begin(), part.end());
    return bytes;
}

const Bytes kHead = {0x01, 0x01, 0x00, 0x44, 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x07, 0x00};
const Bytes kWidget = {
    0x01, 0x06, 0x00, 0x57, 0x69, 0x64, 0x67, 0x65, 0x74, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01,
    0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x03, 0x00, 0x41, 0x67, 0x65, 0x09, 0x00, 0x00, 0x00, 0x04, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x64, 0x00, 0x00, 0x00, 0x04, 0x00, 0x00, 0x00,
    0x32, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF};
const Bytes kIndexCount = {0x01, 0x00, 0x00, 0x00};
const Bytes kByDate = {0x03, 0x00, 0x00, 0x00, 0x06, 0x00, 0x42, 0x79, 0x44, 0x61, 0x74, 0x65, 0x02, 0x00, 0x00, 0x00,
                       0x04, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x0A, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80};
const Bytes kExample = Concatenated({kHead, kWidget, kIndexCount, kByDate});
constexpr std::size_t kTableVersionOffset = 14;

// A database of `count` tables with ids 1, 2, ..., each the Widget with the ByDate index.
DatabaseSpecification Tables(std::uint16_t count) {
    std::vector<TableEntry> tables;
    for (std::uint16_t id = 1; id <= count; ++id) tables.emplace_back(id, Widget(), std::vector{ByDate()});
    return DatabaseSpecification("Many", 0, tables);
}

TEST(DatabaseSpecification, WorkedExampleHasExactBytesAndReadsBackThroughTheGetters) {
    ASSERT_EQ(kExample.size(), 112u);
    EXPECT_EQ(Serialized(Example()), kExample);

    DatabaseSpecification read;
    ASSERT_EQ(Read(kExample, read), Status::Success);
    EXPECT_EQ(read.GetName(), "D");
    EXPECT_EQ(read.GetProperties(), 1u);
    ASSERT_EQ(read.GetTables().size(), 1u);
    const TableEntry& table = read.GetTables()[0];
    EXPECT_EQ(table.GetTableId(), 7);
    EXPECT_EQ(table.GetTable(), Widget());
    ASSERT_EQ(table.GetIndexes().size(), 1u);
    EXPECT_EQ(table.GetIndexes()[0], ByDate());
    EXPECT_EQ(table.GetIndexes()[0].GetNumber(), 3);
    EXPECT_EQ(Serialized(read), kExample);
}

TEST(DatabaseSpecification, EmptySpecificationIsElevenBytes) {
    const Bytes empty = Serialized(DatabaseSpecification());
    EXPECT_EQ(empty, Bytes({0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}));
    DatabaseSpecification read = Example();
    ASSERT_EQ(Read(empty, read), Status::Success);
    EXPECT_EQ(read.GetName(), "");
    EXPECT_TRUE(read.GetTables().empty());
}

TEST(DatabaseSpecification, OnlyVersionOneIsReadWhileATableInsideMayCarryZero) {
    Bytes message = kExample;
    message[kTableVersionOffset] = 0;
    DatabaseSpecification read;
    ASSERT_EQ(Read(message, read), Status::Success);
    EXPECT_EQ(read.GetTables().at(0).GetTable(), Widget());

    for (const unsigned char version : {0x00, 0x02}) {
        message = kExample;
        message[0] = version;
        MessageValidator validator(message.data(), static_cast<std::uint32_t>(message.size()));
        EXPECT_EQ(read.Deserialize(validator), Status::WrongVersion) << "version " << int{version};
        EXPECT_EQ(validator.GetOffset(), 1u);
    }
}

TEST(DatabaseSpecification, EveryCutIsRefusedWithoutReadingPastTheEnd) {
    ExpectEveryCutRefused(kExample.data(), static_cast<std::uint32_t>(kExample.size()),
                          [](MessageValidator& validator) {
                              DatabaseSpecification specification;
                              const StatusCode status = specification.Deserialize(validator);
                              EXPECT_EQ(status, Status::Invalid) << "cut at " << validator.GetLength();
                              return status;
                          });
}

TEST(DatabaseSpecification, CutInTheThirdTableKeepsTheFirstTwo) {
    const Bytes three = Serialized(Tables(3));
    const Bytes cut(three.begin(), three.end() - 40);  // inside the third table's description
    DatabaseSpecification read = Example();
    EXPECT_EQ(Read(cut, read), Status::Invalid);
    ASSERT_EQ(read.GetTables().size(), 2u);
    EXPECT_EQ(read.GetTables()[1].GetTableId(), 2);
    EXPECT_EQ(read.GetTables()[1].GetIndexes().size(), 1u);
}

TEST(DatabaseSpecification, ReadingAgainKeepsOnlyTheSecondMessage) {
    DatabaseSpecification read;
    ASSERT_EQ(Read(Serialized(Tables(3)), read), Status::Success);
    ASSERT_EQ(Read(kExample, read), Status::Success);
    EXPECT_EQ(Serialized(read), kExample);

    // A table read twice keeps only the second message's indexes, also when it has none.
    TableEntry table(1, Widget(), {ByDate(), ByDate()});
    ASSERT_EQ(Read(Serialized(TableEntry(9, Widget(), {})), table), Status::Success);
    EXPECT_EQ(table.GetTableId(), 9);
    EXPECT_TRUE(table.GetIndexes().empty());
}

TEST(DatabaseSpecification, RepeatedTableIdIsRefusedAndTheTablesBeforeItStay) {
    const DatabaseSpecification repeated("R", 0,
                                         {TableEntry(4, Widget(), {}), TableEntry(5, Widget(), {}),
                                          TableEntry(4, Widget(), {ByDate()})});
    DatabaseSpecification read;
    EXPECT_EQ(Read(Serialized(repeated), read), Status::Invalid);
    ASSERT_EQ(read.GetTables().size(), 2u);
    EXPECT_EQ(read.GetTables()[0].GetTableId(), 4);
    EXPECT_EQ(read.GetTables()[1].GetTableId(), 5);
}

TEST(DatabaseSpecification, StatusesOfTheNestedFormsPassThroughAndLongNamesAreRefused) {
    Bytes message = kExample;
    message[kHead.size() + kWidget.size() + kIndexCount.size() + 2] = 0x01;  // index number 0x10003
    DatabaseSpecification read;
    EXPECT_EQ(Read(message, read), Status::OutOfRange);
    ASSERT_EQ(read.GetTables().size(), 0u);

    MessageBuilder builder;
    EXPECT_EQ(DatabaseSpecification(std::string(0x10000, 'd')).Serialize(builder), Status::Invalid);
    EXPECT_EQ(builder.GetLength(), 1u);
}

TEST(DatabaseSpecification, TextFormNamesTheDatabaseThenEachTableAndItsIndexes) {
    const std::string expected = "Name ......................... D\n"
                                 "Properties ................... 1\n"
                                 "Create mutex ................. true\n"
                                 "Table Id:            7\n" +
                                 Widget().ToString() + ByDate().ToString();
    EXPECT_EQ(Example().ToString(), expected);
    std::ostringstream stream;
    stream << Example();
    EXPECT_EQ(stream.str(), expected);
    EXPECT_NE(DatabaseSpecification("D", 2).ToString().find("Create mutex ................. false\n"),
              std::string::npos);
}

}  // namespace
}  // namespace Tavrin::Database
