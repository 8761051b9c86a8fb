// tavrin stat: the figures of a table's store and indexes, against what the test knows of the table.

#include <cmath>
#include <regex>

#include "ToolTestSupport.h"

namespace Tavrin::Tool::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;

// The number after `"key": ` in the first JSON object that follows `after`.
double JsonNumber(const std::string& json, const std::string& after, const std::string& key) {
    const std::size_t start = json.find(after);
    EXPECT_NE(start, std::string::npos) << after;
    std::smatch match;
    const std::string rest = json.substr(start == std::string::npos ? 0 : start);
    EXPECT_TRUE(std::regex_search(rest, match, std::regex("\"" + key + "\": ([0-9.]+)"))) << key;
    return match.empty() ? -1 : std::stod(match[1].str());
}

std::vector<std::uint64_t> ChainLengths(const std::string& json) {
    std::smatch match;
    EXPECT_TRUE(std::regex_search(json, match, std::regex("\"chainLengths\": \\[([0-9,]*)\\]")));
    std::vector<std::uint64_t> lengths;
    std::istringstream text(match.empty() ? "" : match[1].str());
    for (std::string each; std::getline(text, each, ',');) lengths.push_back(std::stoull(each));
    return lengths;
}

TEST(ToolStat, GivesTheFiguresOfTheStoreAndOfEveryIndex) {
    ScratchDirectory scratch;
    constexpr std::uint32_t records = 1000;
    MakeCustomers(scratch.Path(), records, 1500).reset();
    const std::string path = scratch / "Customers.tab";
    const ToolResult result = RunTool(scratch, "stat --json " + path);
    ASSERT_EQ(result.status, 0) << result.err;
    const std::string& json = result.out;
    EXPECT_EQ(JsonNumber(json, "\"store\"", "usedEntries"), records);
    EXPECT_EQ(JsonNumber(json, "\"store\"", "freeEntries"), 1500 - records);
    std::int64_t size = 0;
    ASSERT_EQ(File::GetSize(path, size), Status::Success);
    EXPECT_EQ(JsonNumber(json, "\"store\"", "fileBytes"), static_cast<double>(size));

    // A red-black tree of n nodes is at least log2(n + 1) and at most 2 log2(n + 1) high.
    const double bound = std::log2(records + 1.0);
    for (const char* tree : {"\"ById\"", "\"ByCity\""}) {
        EXPECT_EQ(JsonNumber(json, tree, "nodeCount"), records) << tree;
        const double height = JsonNumber(json, tree, "height");
        EXPECT_GE(height, std::ceil(bound)) << tree;
        EXPECT_LE(height, 2 * bound) << tree;
        const double depth = JsonNumber(json, tree, "averageDepth");
        EXPECT_GE(depth, 1.0);
        EXPECT_LE(depth, height);
    }

    EXPECT_EQ(JsonNumber(json, "\"IdHash\"", "entries"), records);
    const std::vector<std::uint64_t> lengths = ChainLengths(json);
    ASSERT_FALSE(lengths.empty());
    std::uint64_t buckets = 0;
    std::uint64_t entries = 0;
    for (std::size_t length = 0; length < lengths.size(); ++length) {
        buckets += lengths[length];
        entries += length * lengths[length];
    }
    EXPECT_EQ(buckets, JsonNumber(json, "\"IdHash\"", "bucketsInUse"));
    EXPECT_EQ(entries, records);
    EXPECT_EQ(lengths.size() - 1, JsonNumber(json, "\"IdHash\"", "longestChain"));
    EXPECT_EQ(JsonNumber(json, "\"IdHash\"", "bucketsInUse"),
              JsonNumber(json, "\"IdHash\"", "bucketCount") + JsonNumber(json, "\"IdHash\"", "splitIndex"));

    const ToolResult aligned = RunTool(scratch, "stat " + path);
    EXPECT_EQ(aligned.status, 0);
    EXPECT_NE(aligned.out.find("Index 0 ById\n  number                    0\n  name                      ById\n"
                               "  kind                      tree\n"
                               "  nodes                     1000\n"),
              std::string::npos)
        << aligned.out;
}

TEST(ToolStat, CountsTheHitsOfADiskTablesCacheSinceItsOpen) {
    ScratchDirectory scratch;
    std::unique_ptr<ITable> table = MakeCustomers(scratch.Path(), 200, 300, 1);
    auto* concrete = dynamic_cast<Table*>(table.get());
    ASSERT_NE(concrete, nullptr);
    const StoreStatistics before = concrete->GetStoreStatistics();
    EXPECT_TRUE(before.disk);
    EXPECT_EQ(before.usedEntries, 200u);
    EXPECT_EQ(before.freeEntries, 100u);
    // The same record read again and again: every lookup after the first is a hit.
    Record record(table.get());
    Key key(table.get(), 0);
    key.GetFieldList()->SetField(key.GetData(), IdField, std::uint32_t{17});
    for (int i = 0; i < 10; ++i) ASSERT_EQ(table->GetEqual(key, record), Status::Success);
    const StoreStatistics after = concrete->GetStoreStatistics();
    EXPECT_GE(after.cacheLookups - before.cacheLookups, 10u);
    EXPECT_GE(after.cacheHits - before.cacheHits, 9u);
    EXPECT_GT(after.GetHitRate(), 0.0);
    EXPECT_LE(after.GetHitRate(), 1.0);
}

}  // namespace
}  // namespace Tavrin::Tool::Testing
