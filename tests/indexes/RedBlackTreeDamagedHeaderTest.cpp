// Every field of a tree file's store header, and its root and sentinel, damaged in turn in a file
// that was closed in order. Open answers a status and never crashes or hangs. A refused file is left
// as it was, and the index makes a new file of its constructor's size; an accepted file holds the
// whole tree, which then takes more keys.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "../base/ScratchDirectory.h"
#include "../base/ThrownStatus.h"
#include "../storage/HeaderFields.h"
#include "../storage/StoreTestSupport.h"
#include "RedBlackTreeTestSupport.h"
#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/Uuid.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;
using Tavrin::Testing::ThrownStatus;

// The index that opens the damaged file is built for another number of entries than the file has.
constexpr std::uint32_t BuiltEntries = 5;
constexpr std::uint32_t GrowEntries = 3;

IndexSpecification Specification() { return NumberNameSpecification(IndexSpecification::DuplicateProperty, false); }

std::unique_ptr<RedBlackTreeIndex> MakeIndex(const FieldList& table) {
    return std::make_unique<RedBlackTreeIndex>(Specification(), table, FactoryOf(true), BuiltEntries, GrowEntries);
}

void RemoveNumber(RedBlackTreeIndex& index, std::uint32_t number) {
    Key key;
    SetKey(key, index, number, "n", number);
    EXPECT_EQ(index.Remove(key), Status::Success) << number;
}

// Root and sentinel stand behind the index specification in the user data.
std::vector<HeaderField> TreeFileFields() {
    MessageBuilder specification;
    EXPECT_EQ(Specification().Serialize(specification), Status::Success);
    const std::uint32_t root = 17 + 54 + specification.GetLength();
    std::vector<HeaderField> fields = MemoryStoreHeaderFields();
    fields.push_back({"root", root, 4});
    fields.push_back({"sentinel", root + 4, 4});
    return fields;
}

std::vector<std::uint32_t> Sorted(std::vector<std::uint32_t> numbers) {
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

// The tree holds `numbers` (record id = number) and nothing else, in order, and each is found.
void ExpectTree(RedBlackTreeIndex& index, const std::vector<std::uint32_t>& numbers) {
    EXPECT_EQ(index.CheckTree(), Status::Success);
    EXPECT_EQ(index.GetCurrentRecords(), numbers.size());
    EXPECT_EQ(WalkRecords(index, true), Sorted(numbers));
    for (const std::uint32_t number : numbers) {
        Key key;
        SetKey(key, index, number, "n", number);
        std::uint32_t record = 0;
        EXPECT_EQ(index.Find(key, record), Status::Success) << number;
        EXPECT_EQ(record, number);
    }
}

TEST(RedBlackTreeDamagedHeader, EveryFieldGivesAStatusAndLeavesTheIndexUsable) {
    ScratchDirectory directory;
    const Uuid uuid;
    const std::unique_ptr<FieldList> table = MakeTableList(true);
    const std::string path = RedBlackTreeIndex::GetFileName(directory.Path(), "Items", Specification().GetName());
    std::vector<std::uint32_t> numbers;
    {
        TreeHarness harness(Specification(), 2, 3);
        harness.index->Create(directory.Path(), "Items", uuid);
        for (std::uint32_t i = 0; i < 30; ++i) numbers.push_back((i * 7) % 30);
        AddNumbers(*harness.index, numbers);
        for (const std::uint32_t number : {3u, 11u, 20u}) {
            RemoveNumber(*harness.index, number);
            numbers.erase(std::find(numbers.begin(), numbers.end(), number));
        }
        ASSERT_EQ(harness.index->CheckTree(), Status::Success);
        ASSERT_NE(harness.index->GetRoot(), 1u);
    }
    int fresh = 0;
    SweepHeaderDamage(TreeFileFields(), path, [&] {
        std::unique_ptr<RedBlackTreeIndex> index = MakeIndex(*table);
        const StatusCode status = index->Open(directory.Path(), "Items", uuid);
        if (status == Status::Success) {
            ExpectTree(*index, numbers);
            const std::vector<std::uint32_t> added{100, 101, 102, 103, 104, 105, 106, 107, 108, 109};
            AddNumbers(*index, added);  // the store grows
            std::vector<std::uint32_t> more = numbers;
            more.insert(more.end(), added.begin(), added.end());
            ExpectTree(*index, more);
            index.reset();
            index = MakeIndex(*table);
            EXPECT_EQ(index->Open(directory.Path(), "Items", uuid), Status::Success);
            ExpectTree(*index, more);
            return status;
        }
        EXPECT_EQ(index->CheckTree(), Status::NotOpen);
        const std::string tableName = "Fresh" + std::to_string(fresh++);
        EXPECT_EQ(ThrownStatus([&] { index->Create(directory.Path(), tableName, uuid); }), 0u);
        EXPECT_EQ(index->GetStore().GetMaxEntries(), BuiltEntries);
        ExpectTree(*index, {});
        AddNumbers(*index, {5, 1, 4, 2, 3, 9, 8, 7});
        ExpectTree(*index, {1, 2, 3, 4, 5, 7, 8, 9});
        return status;
    });
}

}  // namespace
}  // namespace Tavrin::Database::Testing
