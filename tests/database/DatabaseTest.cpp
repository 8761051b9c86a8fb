#include "tavrin/database/Database.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "database/DatabaseTestSupport.h"

namespace Tavrin::Database {
namespace {

using namespace Testing;

TEST(Database, GreatestIdGrowsTheListAndItsDetachShrinksItBackToTheNextId) {
    Database database("Db");
    EXPECT_EQ(database.GetName(), "Db");
    ASSERT_EQ(database.AttachTable(3, MakeTable("Three", {}).release()), Status::Success);
    ASSERT_EQ(database.AttachTable(0xFFFF, MakeTable("Last", {}).release()), Status::Success);
    EXPECT_EQ(IdsOf(database), (std::vector<std::uint16_t>{3, 0xFFFF}));

    ITable* table = nullptr;
    ASSERT_EQ(database.DetachTable(0xFFFF, table), Status::Success);
    std::unique_ptr<ITable> last(table);
    EXPECT_EQ(last->GetName(), "Last");
    EXPECT_EQ(database.GetTable(0xFFFF, table), Status::NotFound);
    ASSERT_EQ(database.GetTable(3, table), Status::Success);
    EXPECT_EQ(table->GetName(), "Three");
    EXPECT_EQ(database.GetNumberOfTables(), 1u);

    // The id is free again, as is the table.
    ASSERT_EQ(database.AttachTable(0xFFFF, last.release()), Status::Success);
    EXPECT_EQ(IdsOf(database), (std::vector<std::uint16_t>{3, 0xFFFF}));
}

TEST(Database, DetachInTheMiddleLeavesAGapThatLookupsAnswerAndIteratorsPass) {
    Database database;
    for (std::uint16_t id : {1, 2, 3}) ASSERT_EQ(database.AttachTable(id, MakeTable("T", {}).release()), Status::Success);
    ITable* detached = nullptr;
    ASSERT_EQ(database.DetachTable(2, detached), Status::Success);
    std::unique_ptr<ITable> owned(detached);

    ITable* untouched = owned.get();
    EXPECT_EQ(database.GetTable(2, untouched), Status::NotFound);
    EXPECT_EQ(database.DetachTable(2, untouched), Status::Invalid);
    EXPECT_EQ(database.DetachTable(7, untouched), Status::Invalid);
    EXPECT_EQ(untouched, owned.get());
    EXPECT_EQ(IdsOf(database), (std::vector<std::uint16_t>{1, 3}));
    EXPECT_EQ(database.GetNumberOfTables(), 2u);

    const Database& constant = database;
    std::vector<std::uint16_t> ids;
    for (auto position = constant.Begin(); position != constant.End(); position++) {
        const ITable* table = position.GetTable();
        ASSERT_NE(table, nullptr);
        ids.push_back(position.GetTableId());
    }
    EXPECT_EQ(ids, (std::vector<std::uint16_t>{1, 3}));
}

TEST(Database, RefusesNullTakenIdsAndTablesOwnedAlready) {
    Database database;
    Database other;
    auto owned = MakeTable("Shared", {});
    ITable* table = owned.release();
    EXPECT_EQ(database.AttachTable(1, nullptr), Status::Invalid);
    ASSERT_EQ(database.AttachTable(1, table), Status::Success);

    auto spare = MakeTable("Spare", {});
    EXPECT_EQ(database.AttachTable(1, spare.get()), Status::Invalid);  // id taken
    EXPECT_EQ(database.AttachTable(2, table), Status::Invalid);        // here under another id
    EXPECT_EQ(other.AttachTable(1, table), Status::Invalid);           // in another database
    EXPECT_EQ(IdsOf(database), std::vector<std::uint16_t>{1});
    EXPECT_EQ(other.GetNumberOfTables(), 0u);

    // Detached, the table may move; each database destroys only what it holds at its end.
    ASSERT_EQ(database.DetachTable(1, table), Status::Success);
    EXPECT_EQ(other.AttachTable(1, table), Status::Success);
    EXPECT_EQ(database.AttachTable(1, spare.release()), Status::Success);
}

TEST(Database, DestructorDestroysAttachedTablesButNotDetachedOnes) {
    auto database = std::make_unique<Database>("Db", DatabaseSpecification::CreateMutexProperty);
    auto kept = MakeTable("Kept", {});
    auto gone = MakeTable("Gone", {});
    const Record keptRecord(kept.get());
    const Record goneRecord(gone.get());
    ASSERT_EQ(database->AttachTable(4, kept.release()), Status::Success);
    ASSERT_EQ(database->AttachTable(5, gone.release()), Status::Success);
    ITable* table = nullptr;
    ASSERT_EQ(database->DetachTable(4, table), Status::Success);
    kept.reset(table);

    database.reset();
    EXPECT_TRUE(keptRecord.IsInitialized());
    EXPECT_FALSE(goneRecord.IsInitialized());  // its table is gone, and with it the token
    // The destroyed database no longer claims its tables: a new one may take the detached table.
    Database next;
    EXPECT_EQ(next.AttachTable(4, kept.release()), Status::Success);
}

TEST(Database, IteratorsStayValidAcrossAttachAndStepInIdOrder) {
    Database database;
    for (std::uint16_t id : {5, 2, 9}) ASSERT_EQ(database.AttachTable(id, MakeTable("T", {}).release()), Status::Success);
    Database::Iterator position = database.Begin();
    ++position;
    ASSERT_EQ(position.GetTableId(), 5);
    ASSERT_EQ(database.AttachTable(7, MakeTable("Seven", {}).release()), Status::Success);
    ASSERT_EQ(database.AttachTable(1, MakeTable("One", {}).release()), Status::Success);
    const Database::Iterator former = position++;
    EXPECT_EQ(former.GetTableId(), 5);
    EXPECT_EQ(position.GetTableId(), 7);
    EXPECT_EQ(position.GetTable()->GetName(), "Seven");
    EXPECT_EQ((++position).GetTableId(), 9);
    EXPECT_TRUE(++position == database.End());
}

TEST(Database, ForEachTableWalksUnderTheMutexAndReleasesItOnAnException) {
    Database database("Db", DatabaseSpecification::CreateMutexProperty);
    for (std::uint16_t id : {8, 3}) ASSERT_EQ(database.AttachTable(id, MakeTable("T", {}).release()), Status::Success);
    std::vector<std::uint16_t> ids;
    database.ForEachTable([&ids](std::uint16_t id, ITable& table) {
        EXPECT_EQ(table.GetName(), "T");
        ids.push_back(id);
    });
    EXPECT_EQ(ids, (std::vector<std::uint16_t>{3, 8}));
    EXPECT_THROW(database.ForEachTable([](std::uint16_t, ITable&) { throw std::runtime_error("stop"); }),
                 std::runtime_error);
    ITable* table = nullptr;
    EXPECT_EQ(database.GetTable(3, table), Status::Success);  // would wait forever on a held mutex
}

}  // namespace
}  // namespace Tavrin::Database
