// The tree keeps two hints, the node found last and where the last failed search ended. They must
// never change an answer. Random runs on a unique integer key (the inline key order) drive the
// tree as a table does, and as a careless caller might: a lookup that fails and then an Add of
// another key, removals by fresh keys, walks both ways that remove what they pass. A std::map is
// the model; the invariants are checked all along.

#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <map>
#include <random>
#include <vector>

#include "RedBlackTreeTestSupport.h"

namespace Tavrin::Database::Testing {
namespace {

class HintRun {
public:
    explicit HintRun(std::uint32_t seed)
        : harness_(IndexSpecification("ByNumber", IndexSpecification::RedBlack, IndexSpecification::UniqueProperty,
                                      {IndexSpecification::Field(NumberField, 0)}),
                   8, 8),
          tree_(*harness_.index),
          random_(seed) {
        tree_.Create();
    }

    void Run(std::uint32_t steps) {
        for (std::uint32_t step = 1; step <= steps && !::testing::Test::HasFailure(); ++step) {
            switch (Pick(7)) {
                case 0: InsertAsATableDoes(); break;
                case 1: LookUpRemoveThenAdd(); break;
                case 2: LookUpThenAddAnother(); break;
                case 3: RemoveByAFreshKey(); break;
                case 4: WalkAndRemoveEveryThird(Pick(2) == 0); break;
                default: StepFromAnyKey(); break;
            }
            ASSERT_EQ(tree_.CheckTree(), Status::Success) << "step " << step;
            ASSERT_EQ(tree_.GetCurrentRecords(), model_.size()) << "step " << step;
        }
    }

private:
    std::uint32_t Pick(std::uint32_t bound) { return std::uniform_int_distribution<std::uint32_t>(0, bound - 1)(random_); }
    std::uint32_t RandomNumber() { return Pick(400); }

    void Fill(Key& key, std::uint32_t number) { SetKey(key, tree_, number, std::nullopt); }

    StatusCode Find(std::uint32_t number, std::uint32_t& record) {
        Key key;
        Fill(key, number);
        return tree_.Find(key, record);
    }

    // A lookup that fails, then an Add of the same key from another Key object.
    void InsertAsATableDoes() {
        const std::uint32_t number = RandomNumber();
        std::uint32_t record = 0;
        const StatusCode found = Find(number, record);
        ASSERT_EQ(found, model_.count(number) != 0 ? Status::Success : Status::NotFound);
        if (found == Status::Success) return;
        AddKey(tree_, number, std::nullopt, number + 1000);
        model_[number] = number + 1000;
    }

    // A removal between the failed lookup and the Add may reshape the tree under the insertion point.
    void LookUpRemoveThenAdd() {
        const std::uint32_t number = RandomNumber();
        std::uint32_t record = 0;
        if (Find(number, record) == Status::Success) return;
        RemoveByAFreshKey();
        AddKey(tree_, number, std::nullopt, number + 1000);
        model_[number] = number + 1000;
    }

    // The failed lookup's insertion point must not serve an Add of another key.
    void LookUpThenAddAnother() {
        std::uint32_t record = 0;
        Find(RandomNumber(), record);
        const std::uint32_t number = RandomNumber();
        if (model_.count(number) != 0) return;
        AddKey(tree_, number, std::nullopt, number + 1000);
        model_[number] = number + 1000;
    }

    void RemoveByAFreshKey() {
        if (model_.empty()) return;
        const auto victim = std::next(model_.begin(), static_cast<std::ptrdiff_t>(Pick(static_cast<std::uint32_t>(model_.size()))));
        std::uint32_t record = 0;
        ASSERT_EQ(Find(victim->first, record), Status::Success);
        ASSERT_EQ(record, victim->second);
        Key fresh;
        Fill(fresh, victim->first);
        ASSERT_EQ(tree_.Remove(fresh), Status::Success);
        model_.erase(victim);
    }

    // A whole walk that removes every third key it passes, by a fresh key, and must still meet
    // every key in order.
    void WalkAndRemoveEveryThird(bool forward) {
        std::vector<std::uint32_t> expected;
        for (const auto& [number, record] : model_) expected.push_back(record);
        if (!forward) expected = std::vector<std::uint32_t>(expected.rbegin(), expected.rend());
        std::vector<std::uint32_t> met;
        Key key;
        std::uint32_t record = 0;
        StatusCode status = forward ? tree_.GetFirst(key, record) : tree_.GetLast(key, record);
        while (status == Status::Success && met.size() <= expected.size()) {
            met.push_back(record);
            if (met.size() % 3 == 0) {
                Key fresh;
                Fill(fresh, NumberOf(tree_, key));
                ASSERT_EQ(tree_.Remove(fresh), Status::Success);
                model_.erase(NumberOf(tree_, key));
            }
            status = forward ? tree_.GetNext(key, record) : tree_.GetPrevious(key, record);
        }
        EXPECT_EQ(status, Status::NotFound);
        ASSERT_EQ(met, expected) << (forward ? "forward" : "backward");
    }

    // GetNext and GetPrevious from a key that may or may not be in the tree.
    void StepFromAnyKey() {
        const std::uint32_t number = RandomNumber();
        const bool forward = Pick(2) == 0;
        Key key;
        Fill(key, number);
        std::uint32_t record = 0;
        const StatusCode status = forward ? tree_.GetNext(key, record) : tree_.GetPrevious(key, record);
        const auto next = forward ? model_.upper_bound(number) : model_.lower_bound(number);
        if (forward ? next == model_.end() : next == model_.begin()) {
            ASSERT_EQ(status, Status::NotFound) << number;
            return;
        }
        const auto expected = forward ? next : std::prev(next);
        ASSERT_EQ(status, Status::Success) << number;
        ASSERT_EQ(record, expected->second) << number << (forward ? " forward" : " backward");
    }

    TreeHarness harness_;
    RedBlackTreeIndex& tree_;
    std::map<std::uint32_t, std::uint32_t> model_;
    std::mt19937 random_;
};

TEST(RedBlackTreeHints, NeverChangeAnAnswer) {
    for (const std::uint32_t seed : {3u, 4u}) {
        SCOPED_TRACE(seed);
        HintRun run(seed);
        run.Run(3000);
    }
}

}  // namespace
}  // namespace Tavrin::Database::Testing
