#include "tavrin/database/Database.h"

#include <gtest/gtest.h>

#include "database/DatabaseTestSupport.h"

namespace Tavrin::Database {
namespace {

using namespace Testing;

// Attaches `table` under `id` and gives back the pointer, which the database now owns.
ITable* Attach(Database& database, std::uint16_t id, std::unique_ptr<ITable> table) {
    ITable* pointer = table.get();
    EXPECT_EQ(database.AttachTable(id, table.release()), Status::Success);
    return pointer;
}

TEST(DatabaseGetEqual, SearchesTablesInAttachOrderAndListsThemInIdOrder) {
    Database database("Db");
    Record record;
    const auto keyTable = MakeTable("KeyOwner", {ById()});  // not attached: a key may come from anywhere
    const Key key = MakeKey(*keyTable, 0, 42);
    EXPECT_EQ(database.GetEqual(key, record), Status::NotFound);

    for (std::uint16_t id : {5, 2, 9}) {
        ITable* table = Attach(database, id, MakeTable("T" + std::to_string(id), {ById()}));
        Write(*table, 42, "in " + std::to_string(id));
    }
    ASSERT_EQ(database.GetEqual(key, record), Status::Success);
    EXPECT_EQ(NameOf(record), "in 5");
    EXPECT_EQ(record.GetTable()->GetName(), "T5");

    ITable* detached = nullptr;
    ASSERT_EQ(database.DetachTable(5, detached), Status::Success);
    std::unique_ptr<ITable> owned(detached);
    ASSERT_EQ(database.GetEqual(key, record), Status::Success);
    EXPECT_EQ(NameOf(record), "in 2");

    ASSERT_EQ(database.AttachTable(5, owned.release()), Status::Success);  // now the last in the order
    ASSERT_EQ(database.GetEqual(key, record), Status::Success);
    EXPECT_EQ(NameOf(record), "in 2");
    EXPECT_EQ(IdsOf(database), (std::vector<std::uint16_t>{2, 5, 9}));

    const DatabaseSpecification specification = database.GetSpecification();
    ASSERT_EQ(specification.GetTables().size(), 3u);
    EXPECT_EQ(specification.GetTables()[0].GetTable().GetName(), "T2");
    EXPECT_EQ(specification.GetTables()[2].GetTableId(), 9);
}

TEST(DatabaseGetEqual, FindsAKeyThroughTheIndexesBehindThePrimaryOne) {
    Database database;
    // The key is on the Name field, which the primary index (Id) of either table does not take.
    ITable* a = Attach(database, 1, MakeTable("A", {ById(), ByName()}));
    Write(*a, 7, "seven");
    const Key byName = MakeKey(*a, 1, 0, "seven");
    Record record;
    ASSERT_EQ(database.GetEqual(byName, record), Status::Success);
    EXPECT_EQ(record.GetTable(), a);

    // B holds the name in its index 0, its primary index being 1; attached before A, it is found.
    ITable* b = Attach(database, 0, MakeTable("B", {ByName(), ById()}));
    ASSERT_EQ(b->GetPrimaryIndex(), 1);
    Write(*b, 8, "seven");
    ITable* detached = nullptr;
    ASSERT_EQ(database.DetachTable(1, detached), Status::Success);
    ASSERT_EQ(database.AttachTable(1, detached), Status::Success);
    ASSERT_EQ(database.GetEqual(byName, record), Status::Success);
    EXPECT_EQ(record.GetTable(), b);
}

TEST(DatabaseGetEqual, IndexesWhoseFieldsDifferFromTheKeyCountAsNotFound) {
    Database database;
    // Same value stored in tables whose key fields differ in length, in type, or in number.
    Write(*Attach(database, 1, MakeTable("Wide", {ById()}, kCreateFile, FieldSpecification::UInt, 8)), 42, "wide");
    Write(*Attach(database, 2, MakeTable("Signed", {ById()}, kCreateFile, FieldSpecification::SInt, 4)), 42, "signed");
    Write(*Attach(database, 3, MakeTable("Pair", {TreeIndex("Pair", 8, {IdField, NameField})})), 42, "pair");
    const auto keyTable = MakeTable("KeyOwner", {ById()});
    Record record;
    EXPECT_EQ(database.GetEqual(MakeKey(*keyTable, 0, 42), record), Status::NotFound);
    EXPECT_FALSE(record.IsInitialized());

    // A key of more fields than an index takes never matches on the fields it shares.
    const auto pairTable = MakeTable("PairOwner", {TreeIndex("Pair", 8, {IdField, NameField})});
    Write(*Attach(database, 4, MakeTable("Plain", {ById()})), 42, "plain");
    EXPECT_EQ(database.GetEqual(MakeKey(*pairTable, 0, 42, "other"), record), Status::NotFound);
    ASSERT_EQ(database.GetEqual(MakeKey(*pairTable, 0, 42, "pair"), record), Status::Success);
    EXPECT_EQ(NameOf(record), "pair");

    // An uninitialized key finds nothing.
    EXPECT_EQ(database.GetEqual(Key(), record), Status::NotFound);
}

TEST(DatabaseGetEqual, TableWithoutPrimaryIndexEndsTheSearchWith26) {
    Database database;
    Attach(database, 3, MakeTable("NoIndexes", {}));
    Write(*Attach(database, 1, MakeTable("Holder", {ById()})), 42, "held");
    const auto keyTable = MakeTable("KeyOwner", {ById()});
    Record record;
    EXPECT_EQ(database.GetEqual(MakeKey(*keyTable, 0, 42), record), Status::IndexConflict);
    EXPECT_FALSE(record.IsInitialized());
}

TEST(DatabaseDescription, LeavesTemporaryIndexesOutAndRebuildsOnTheReceivingSide) {
    Database database("Db", DatabaseSpecification::CreateMutexProperty);
    ITable* table = Attach(database, 6, MakeTable("People", {ById(), ByName()}));
    Write(*table, 1, "one");
    IndexSpecification temporary = TreeIndex("Scratch", IndexSpecification::DuplicateProperty, {NameField});
    table->CreateTemporaryIndex(temporary);
    ASSERT_EQ(table->GetNumberOfIndexes(), 3u);
    EXPECT_EQ(table->GetNumberOfTemporaryIndexes(), 1u);

    MessageBuilder builder;
    ASSERT_EQ(database.SerializeSpecification(builder), Status::Success);
    DatabaseSpecification received;
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    ASSERT_EQ(received.Deserialize(validator), Status::Success);
    EXPECT_EQ(received.ToString(), database.GetSpecification().ToString());
    const auto& entry = received.GetTables().at(0);
    EXPECT_EQ(entry.GetIndexes(), (std::vector<IndexSpecification>{ById(), ByName()}));

    // The receiver makes working tables from it.
    std::unique_ptr<ITable> rebuilt(entry.GetTable().CreateTable(""));
    std::vector<IndexSpecification> indexes = entry.GetIndexes();
    rebuilt->CreateIndexes(indexes);
    EXPECT_EQ(rebuilt->GetIndexSpecificationList(), entry.GetIndexes());
    EXPECT_EQ(rebuilt->GetNumberOfTemporaryIndexes(), 0u);

    unsigned char small[20];
    MessageBuilder fixed(small, sizeof small);
    EXPECT_EQ(database.SerializeSpecification(fixed), Status::Invalid);
}

}  // namespace
}  // namespace Tavrin::Database
