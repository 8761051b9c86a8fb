// Randomised runs of Add and Remove against a std::multimap that orders keys as the tree must: the
// tree's invariants after every step, and its walks, lookups and prefix walks against the model at
// checkpoints. The store starts small and grows in small steps, so the file is re-mapped often.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "RedBlackTreeTestSupport.h"

namespace Tavrin::Database::Testing {
namespace {

struct ModelKey {
    std::uint32_t number;
    std::optional<std::string> name;
    std::uint32_t record;
};

// The order of the index: number ascending, then the name (undefined before defined, bytes, shorter
// first), turned around when the name is descending, then in a Duplicate index the record id as a
// signed number. Without the Duplicate property equal keys keep the order in which they came, as a
// multimap keeps it.
struct ModelOrder {
    bool duplicate;
    bool nameDescending;

    static int CompareNames(const std::optional<std::string>& a, const std::optional<std::string>& b) {
        if (!a.has_value() || !b.has_value()) return a.has_value() == b.has_value() ? 0 : (a.has_value() ? 1 : -1);
        const int result = a->compare(*b);
        return result < 0 ? -1 : (result > 0 ? 1 : 0);
    }
    bool operator()(const ModelKey& a, const ModelKey& b) const {
        if (a.number != b.number) return a.number < b.number;
        const int names = CompareNames(a.name, b.name) * (nameDescending ? -1 : 1);
        if (names != 0) return names < 0;
        return duplicate && static_cast<std::int32_t>(a.record) < static_cast<std::int32_t>(b.record);
    }
};

using Model = std::multimap<ModelKey, std::uint32_t, ModelOrder>;

struct RunConfiguration {
    std::uint32_t properties;
    bool nameDescending;
    std::uint32_t seed;
};

class TreeModelRun {
public:
    explicit TreeModelRun(const RunConfiguration& configuration)
        : harness_(NumberNameSpecification(configuration.properties, configuration.nameDescending), 16, 8),
          tree_(*harness_.index),
          model_(ModelOrder{tree_.IsDuplicate(), configuration.nameDescending}),
          random_(configuration.seed) {
        tree_.Create();
    }

    void Run(std::uint32_t steps) {
        for (std::uint32_t step = 1; step <= steps; ++step) {
            // Adds win a little, so the tree grows to some hundreds of nodes and shrinks again.
            if (Pick(100) < 55 || model_.empty()) {
                AddRandomKey();
            } else {
                RemoveRandomKey();
            }
            ASSERT_EQ(tree_.CheckTree(), Status::Success) << "after step " << step;
            ASSERT_EQ(tree_.GetCurrentRecords(), model_.size());
            if (step % 250 == 0) CompareWithModel();
            if (::testing::Test::HasFailure()) return;
        }
    }

private:
    std::uint32_t Pick(std::uint32_t bound) { return std::uniform_int_distribution<std::uint32_t>(0, bound - 1)(random_); }

    std::string RandomText(std::uint32_t maxLength) {
        std::string text(1 + Pick(maxLength), 'a');
        for (char& c : text) c = static_cast<char>('a' + Pick(3));
        return text;
    }

    ModelKey RandomKey() {
        std::optional<std::string> name;
        if (Pick(10) != 0) name = RandomText(NameLength);
        // Record ids from the top half too, which order below 0 in a Duplicate index.
        const std::uint32_t record = nextRecord_++ | (Pick(4) == 0 ? 0x80000000u : 0);
        return ModelKey{Pick(12), name, record};
    }

    void Fill(Key& key, const ModelKey& model) { SetKey(key, tree_, model.number, model.name, model.record); }

    void AddRandomKey() {
        const ModelKey candidate = RandomKey();
        // Without the Duplicate property the tree's walks need distinct keys, as a table keeps them.
        if (!tree_.IsDuplicate() && model_.count(candidate) != 0) return;
        AddKey(tree_, candidate.number, candidate.name, candidate.record);
        model_.emplace(candidate, candidate.record);
    }

    // Removes a key that the tree holds, found with a cursor that may be stale; now and then one
    // that it does not hold, which changes nothing.
    void RemoveRandomKey() {
        Key key;
        if (Pick(10) == 0) {
            Fill(key, ModelKey{100 + Pick(5), std::nullopt, 7});
            ASSERT_EQ(tree_.Remove(key), Status::Success);
            return;
        }
        const auto victim = std::next(model_.begin(), static_cast<std::ptrdiff_t>(Pick(static_cast<std::uint32_t>(model_.size()))));
        Fill(key, victim->first);
        key.SetCursor(Pick(tree_.GetStore().GetMaxEntries()));
        std::uint32_t record = 0;
        ASSERT_EQ(tree_.Find(key, record), Status::Success);
        ASSERT_EQ(record, victim->second);
        ASSERT_EQ(tree_.Remove(key), Status::Success);
        model_.erase(victim);
    }

    void CompareWithModel() {
        std::vector<std::uint32_t> expected;
        for (const auto& [key, record] : model_) expected.push_back(record);
        ASSERT_EQ(WalkRecords(tree_, true), expected);
        ASSERT_EQ(WalkRecords(tree_, false), std::vector<std::uint32_t>(expected.rbegin(), expected.rend()));
        for (std::uint32_t number = 0; number < 12; ++number) {
            ComparePrefix(number, std::nullopt, 0);
            const std::string name = RandomText(3);
            ComparePrefix(number, name, 1 + Pick(static_cast<std::uint32_t>(name.size())));
        }
    }

    // The records that match (number, the first `length` bytes of name) in model order.
    std::vector<std::uint32_t> ModelMatches(std::uint32_t number, const std::optional<std::string>& name,
                                            std::uint32_t length) const {
        std::vector<std::uint32_t> matches;
        for (const auto& [key, record] : model_) {
            const bool nameMatches = length == 0 || (key.name.has_value() && key.name->size() >= length &&
                                                     key.name->compare(0, length, *name, 0, length) == 0);
            if (key.number == number && nameMatches) matches.push_back(record);
        }
        return matches;
    }

    // Walks the matches from GetFirstEqual with GetNextEqual and from GetLastEqual with
    // GetPreviousEqual. A length of 0 matches on the number alone.
    void ComparePrefix(std::uint32_t number, const std::optional<std::string>& name, std::uint32_t length) {
        const std::vector<std::uint32_t> expected = ModelMatches(number, name, length);
        const std::uint16_t field = length == 0 ? NumberField : NameField;
        const std::uint32_t fieldLength = length == 0 ? FieldList::FullLength : length;
        for (const bool forward : {true, false}) {
            Key key;
            Fill(key, ModelKey{number, name, 0});
            std::vector<std::uint32_t> found;
            std::uint32_t record = 0;
            StatusCode status = forward ? tree_.GetFirstEqual(key, record, field, fieldLength)
                                        : tree_.GetLastEqual(key, record, field, fieldLength);
            while (status == Status::Success && found.size() <= expected.size()) {
                found.push_back(record);
                status = forward ? tree_.GetNextEqual(key, record, field, fieldLength)
                                 : tree_.GetPreviousEqual(key, record, field, fieldLength);
            }
            EXPECT_EQ(status, Status::NotFound);
            if (!forward) std::reverse(found.begin(), found.end());
            ASSERT_EQ(found, expected) << (forward ? "forward" : "backward") << ", number " << number << ", " << length << " bytes of " << name.value_or("");
        }
    }

    TreeHarness harness_;
    RedBlackTreeIndex& tree_;
    Model model_;
    std::mt19937 random_;
    std::uint32_t nextRecord_ = 1;
};

class RedBlackTreeModel : public ::testing::TestWithParam<RunConfiguration> {};

TEST_P(RedBlackTreeModel, MatchesTheModelThroughMixedAddsAndRemoves) {
    TreeModelRun run(GetParam());
    run.Run(4000);
}

INSTANTIATE_TEST_SUITE_P(
    Indexes, RedBlackTreeModel,
    ::testing::Values(RunConfiguration{IndexSpecification::DuplicateProperty, true, 7},
                      RunConfiguration{IndexSpecification::DuplicateProperty, false, 11},
                      RunConfiguration{IndexSpecification::UniqueProperty, true, 13},
                      RunConfiguration{IndexSpecification::PrimaryUniqueProperty, false, 17}));

// Long runs of equal numbers and names, in an index that keeps equal keys (in the order they came)
// and in a Duplicate one: the first and last match of every prefix, against a linear pass over the
// model, also for prefixes that fall between the keys or beyond them.
TEST(RedBlackTreePrefix, EndsOfLongRunsMatchALinearModel) {
    for (const std::uint32_t properties : {0u, static_cast<std::uint32_t>(IndexSpecification::DuplicateProperty)}) {
        TreeHarness harness(NumberNameSpecification(properties, false), 64, 64);
        RedBlackTreeIndex& tree = *harness.index;
        tree.Create();
        Model model(ModelOrder{tree.IsDuplicate(), false});
        std::mt19937 random(23);
        const char* names[] = {"aa", "ab", "b", "ba"};
        for (std::uint32_t record = 1; record <= 3000; ++record) {
            const ModelKey key{1 + static_cast<std::uint32_t>(random() % 3) * 2, names[random() % 4], record};
            AddKey(tree, key.number, key.name, key.record);
            model.emplace(key, record);
        }
        // Numbers 0 to 7: runs of about a thousand keys at 1, 3 and 5, none elsewhere.
        for (std::uint32_t number = 0; number < 8; ++number) {
            for (const auto& [name, length] : std::vector<std::pair<std::string, std::uint32_t>>{
                     {"c", 0}, {"a", 1}, {"b", 1}, {"c", 1}, {"ab", 2}, {"bb", 2}}) {
                std::vector<std::uint32_t> matches;
                for (const auto& [key, record] : model) {
                    if (key.number == number && key.name->compare(0, length, name, 0, length) == 0) {
                        matches.push_back(record);
                    }
                }
                const std::uint16_t field = length == 0 ? NumberField : NameField;
                const std::uint32_t fieldLength = length == 0 ? FieldList::FullLength : length;
                for (const bool first : {true, false}) {
                    Key key;
                    SetKey(key, tree, number, name, 0);
                    std::uint32_t record = 0;
                    const StatusCode status = first ? tree.GetFirstEqual(key, record, field, fieldLength)
                                                    : tree.GetLastEqual(key, record, field, fieldLength);
                    if (matches.empty()) {
                        EXPECT_EQ(status, Status::NotFound) << number << " " << name;
                        continue;
                    }
                    ASSERT_EQ(status, Status::Success) << number << " " << name;
                    EXPECT_EQ(record, first ? matches.front() : matches.back())
                        << "properties " << properties << ", number " << number << ", prefix " << name;
                    EXPECT_EQ(NumberOf(tree, key), number);
                }
            }
        }
    }
}

}  // namespace
}  // namespace Tavrin::Database::Testing
