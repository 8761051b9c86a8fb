#include "tavrin/database/Database.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "database/DatabaseTestSupport.h"

namespace Tavrin::Database {
namespace {

using namespace Testing;

constexpr std::uint16_t kThreads = 4;
constexpr int kRounds = 25;

// One thread's rounds: attach its own table, write to it while others search it, look it up, find
// its key across the database, describe the database, and detach and destroy the table again.
void Rounds(Database& database, std::uint16_t tableId, std::atomic<int>& failures) {
    auto fail = [&failures](bool failed) {
        if (failed) ++failures;
    };
    for (int round = 0; round < kRounds; ++round) {
        auto owned = MakeTable("T" + std::to_string(tableId), {ById(), ByName()}, kCreateFileAndMutex);
        ITable* const table = owned.get();
        fail(database.AttachTable(tableId, owned.release()) != Status::Success);
        fail(database.AttachTable(100 + tableId, table) != Status::Invalid);  // owned already

        const std::uint32_t id = tableId * 1000u + static_cast<std::uint32_t>(round);
        Write(*table, id, "r" + std::to_string(round));
        ITable* found = nullptr;
        fail(database.GetTable(tableId, found) != Status::Success || found != table);
        Record record;
        fail(database.GetEqual(MakeKey(*table, 0, id), record) != Status::Success || record.GetTable() != table);

        bool described = false;
        const DatabaseSpecification specification = database.GetSpecification();
        for (const auto& entry : specification.GetTables()) described |= entry.GetTableId() == tableId;
        fail(!described);
        MessageBuilder builder;
        fail(database.SerializeSpecification(builder) != Status::Success);
        std::uint32_t walked = 0;
        database.ForEachTable([&walked](std::uint16_t, ITable&) { ++walked; });
        fail(walked == 0 || walked > kThreads);

        ITable* detached = nullptr;
        fail(database.DetachTable(tableId, detached) != Status::Success || detached != table);
        delete detached;
    }
}

TEST(DatabaseThreads, AttachDetachLookupSearchAndDescribeAtOnce) {
    Database database("Shared", DatabaseSpecification::CreateMutexProperty);
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (std::uint16_t tableId = 1; tableId <= kThreads; ++tableId) {
        threads.emplace_back(Rounds, std::ref(database), tableId, std::ref(failures));
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(database.GetNumberOfTables(), 0u);
    EXPECT_TRUE(database.Begin() == database.End());
}

}  // namespace
}  // namespace Tavrin::Database
