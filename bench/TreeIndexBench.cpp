// Costs of the red-black tree index on a tree of N = 2^20 (about 1M) keys of two unsigned fields,
// (group, item) with 16 items to a group, in a temporary file: building it, insert and remove,
// exact lookups, a step of an ordered walk and a walk over one group by its prefix.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "tavrin/base/Encoding.h"
#include "tavrin/indexes/RedBlackTreeIndex.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/ManagedFieldListFactory.h"

namespace {

using namespace Tavrin;
using namespace Tavrin::Database;

constexpr std::uint32_t KeyCount = 1u << 20;
constexpr std::uint32_t GroupSize = 16;
constexpr std::uint16_t GroupField = 1;
constexpr std::uint16_t ItemField = 2;

struct Tree {
    Tree() {
        const std::vector<FieldSpecification> fields{
            FieldSpecification(GroupField, "Group", FieldSpecification::UInt, 4, 0, 0),
            FieldSpecification(ItemField, "Item", FieldSpecification::UInt, 4, 4, 0)};
        table.reset(ManagedFieldListFactory::GetInstance().Create(fields));
        const IndexSpecification specification(
            "ByGroup", IndexSpecification::RedBlack, IndexSpecification::UniqueProperty,
            {IndexSpecification::Field(GroupField, 0), IndexSpecification::Field(ItemField, 0)});
        index = std::make_unique<RedBlackTreeIndex>(specification, *table, ManagedFieldListFactory::GetInstance(),
                                                    KeyCount + 1, KeyCount / 4);
        index->Create();
    }

    // Key number n: group n / 16, item n % 16.
    void SetKey(Key& key, std::uint32_t n) const {
        const FieldList& list = *index->GetFieldList();
        list.ResetData(key.GetData());
        unsigned char value[4];
        EncodeU32(value, n / GroupSize);
        list.SetField(key.GetData(), GroupField, value, 4);
        EncodeU32(value, n % GroupSize);
        list.SetField(key.GetData(), ItemField, value, 4);
        key.SetCursor(RedBlackTreeIndex::NoEntry);
    }

    std::unique_ptr<FieldList> table;
    std::unique_ptr<RedBlackTreeIndex> index;
};

std::vector<std::uint32_t> Shuffled(std::uint32_t count, std::uint32_t step) {
    std::vector<std::uint32_t> numbers(count);
    for (std::uint32_t i = 0; i < count; ++i) numbers[i] = i * step;
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(7));
    return numbers;
}

// The numbers of the filled tree's keys, one after the other in a random order, round and round.
class KeyCycle {
public:
    std::uint32_t Next() {
        const std::uint32_t number = numbers_[next_];
        next_ = next_ + 1 == numbers_.size() ? 0 : next_ + 1;
        return number;
    }

private:
    std::vector<std::uint32_t> numbers_ = Shuffled(KeyCount, 2);
    std::size_t next_ = 0;
};

// Even key numbers 0 to 2N - 2, added in random order; odd numbers stay free for inserts.
Tree& FilledTree() {
    static Tree* tree = [] {
        auto* filled = new Tree;
        Key key;
        for (const std::uint32_t n : Shuffled(KeyCount, 2)) {
            filled->SetKey(key, n);
            filled->index->Add(key, n);
        }
        return filled;
    }();
    return *tree;
}

void BM_Build(benchmark::State& state) {
    const std::vector<std::uint32_t> numbers = Shuffled(KeyCount, 1);
    for (auto _ : state) {
        Tree tree;
        Key key;
        for (const std::uint32_t n : numbers) {
            tree.SetKey(key, n);
            tree.index->Add(key, n);
        }
        benchmark::DoNotOptimize(tree.index->GetCurrentRecords());
    }
    state.SetItemsProcessed(state.iterations() * KeyCount);
}
BENCHMARK(BM_Build)->Iterations(1)->Unit(benchmark::kMillisecond);

void BM_InsertRemove(benchmark::State& state) {
    Tree& tree = FilledTree();
    KeyCycle numbers;
    Key key;
    for (auto _ : state) {
        tree.SetKey(key, numbers.Next() + 1);
        tree.index->Add(key, 0);
        tree.index->Remove(key);
    }
}
BENCHMARK(BM_InsertRemove);

void BM_Find(benchmark::State& state) {
    Tree& tree = FilledTree();
    KeyCycle numbers;
    Key key;
    std::uint32_t record = 0;
    for (auto _ : state) {
        tree.SetKey(key, numbers.Next());
        benchmark::DoNotOptimize(tree.index->Find(key, record));
    }
}
BENCHMARK(BM_Find);

// One GetNext per iteration, from the key that the last one left; back to GetFirst at the end.
void BM_Next(benchmark::State& state) {
    Tree& tree = FilledTree();
    Key key;
    std::uint32_t record = 0;
    tree.index->GetFirst(key, record);
    for (auto _ : state) {
        if (tree.index->GetNext(key, record) != Status::Success) tree.index->GetFirst(key, record);
    }
}
BENCHMARK(BM_Next);

// All keys of one random group: GetFirstEqual on the group field, then GetNextEqual to the end.
void BM_PrefixWalk(benchmark::State& state) {
    Tree& tree = FilledTree();
    KeyCycle numbers;
    Key key;
    std::uint32_t record = 0;
    std::int64_t keys = 0;
    for (auto _ : state) {
        tree.SetKey(key, numbers.Next());
        StatusCode status = tree.index->GetFirstEqual(key, record, GroupField, FieldList::FullLength);
        while (status == Status::Success) {
            ++keys;
            status = tree.index->GetNextEqual(key, record, GroupField, FieldList::FullLength);
        }
    }
    state.SetItemsProcessed(keys);
}
BENCHMARK(BM_PrefixWalk);

}  // namespace
