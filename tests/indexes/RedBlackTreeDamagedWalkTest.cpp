// Walks over a tree file whose nodes were damaged after an orderly close (clean flag still 1): links
// pointed at other nodes, keys swapped, key bytes changed. Every walk, one step at a time, by prefix
// or in a batch, ends within as many steps as the tree has nodes, answers each key strictly after
// (or before) the one it came from, and stops with 6 at an end or 23 where the tree is damaged.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "../base/ScratchDirectory.h"
#include "../storage/StoreTestSupport.h"
#include "RedBlackTreeTestSupport.h"
#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/Uuid.h"
#include "tavrin/indexes/RecordSink.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;

constexpr std::uint32_t Keys = 200;
constexpr std::uint32_t FileHeaderSize = 17;
constexpr std::uint32_t StoreHeaderSize = 54;
constexpr std::uint32_t EntryFrontSize = 8;

IndexSpecification Specification() { return NumberNameSpecification(IndexSpecification::DuplicateProperty, false); }

// The full order of the index, worked out through the field list's general comparison: the
// compared fields, then the record id tail as a signed number.
int FullOrder(const RedBlackTreeIndex& index, const unsigned char* a, const unsigned char* b) {
    const int fields = index.GetFieldList()->CompareKey(a, b, 2);  // Number, Name
    if (fields != 0) return fields;
    const std::uint32_t tail = index.GetFieldList()->GetDataLength();
    const std::int32_t left = DecodeI32(a + tail);
    const std::int32_t right = DecodeI32(b + tail);
    return left < right ? -1 : (left > right ? 1 : 0);
}

struct Collector final : RecordSink {
    void Prefetch(std::uint32_t) noexcept override {}
    bool Take(std::uint32_t recordId) override {
        records.push_back(recordId);
        return true;
    }
    std::vector<std::uint32_t> records;
};

struct WalkResult {
    std::vector<std::uint32_t> records;
    StatusCode status = Status::Success;
};

// A whole walk by steps from the first (last) key, plain or by a prefix that every key matches,
// checked for order at every step; bounded by one step more than the tree has nodes.
WalkResult StepWalk(RedBlackTreeIndex& index, bool forward, bool prefix) {
    WalkResult result;
    Key key;
    std::uint32_t record = 0;
    StatusCode status = prefix ? (forward ? index.GetFirstEqual(key, record, NumberField, 0)
                                          : index.GetLastEqual(key, record, NumberField, 0))
                               : (forward ? index.GetFirst(key, record) : index.GetLast(key, record));
    std::vector<unsigned char> previous;
    while (status == Status::Success && result.records.size() <= Keys) {
        if (!previous.empty()) {
            const int order = FullOrder(index, previous.data(), key.GetData());
            EXPECT_TRUE(forward ? order < 0 : order > 0) << "step " << result.records.size() << " went back";
        }
        previous.assign(key.GetData(), key.GetData() + index.GetKeySize());
        result.records.push_back(record);
        if (prefix) {
            status = forward ? index.GetNextEqual(key, record, NumberField, 0)
                             : index.GetPreviousEqual(key, record, NumberField, 0);
        } else {
            status = forward ? index.GetNext(key, record) : index.GetPrevious(key, record);
        }
    }
    EXPECT_LE(result.records.size(), Keys) << "the walk did not end";
    result.status = status;
    return result;
}

// The same walk in one batch after the first key; it must give what the steps give.
WalkResult BatchWalk(RedBlackTreeIndex& index, bool forward, bool prefix) {
    WalkResult result;
    Key key;
    std::uint32_t record = 0;
    result.status = forward ? index.GetFirst(key, record) : index.GetLast(key, record);
    if (result.status != Status::Success) return result;
    Collector sink;
    sink.records.push_back(record);
    result.status = index.Walk(key, forward, prefix, NumberField, 0, Keys + 1, sink);
    result.records = sink.records;
    return result;
}

// Checks every walk of the opened index; answers how many of them stopped with 23.
int CheckWalks(RedBlackTreeIndex& index) {
    int damaged = 0;
    for (const bool forward : {true, false}) {
        const WalkResult steps = StepWalk(index, forward, false);
        EXPECT_TRUE(steps.status == Status::NotFound || steps.status == Status::Invalid) << steps.status;
        damaged += steps.status == Status::Invalid ? 1 : 0;
        // The first key of a prefix is found by a descent, which may meet other damage than the
        // plain walk's first step; from there on it is checked alike.
        const WalkResult prefixed = StepWalk(index, forward, true);
        EXPECT_TRUE(prefixed.status == Status::NotFound || prefixed.status == Status::Invalid) << prefixed.status;
        for (const bool prefix : {false, true}) {
            const WalkResult batch = BatchWalk(index, forward, prefix);
            EXPECT_EQ(batch.records, steps.records) << "forward " << forward << ", prefix " << prefix;
            EXPECT_EQ(batch.status, steps.status) << "forward " << forward << ", prefix " << prefix;
        }
    }
    return damaged;
}

class RedBlackTreeDamagedWalk : public ::testing::Test {
protected:
    void SetUp() override {
        TreeHarness harness(Specification(), Keys + 1, 3);
        harness.index->Create(directory.Path(), "Items", uuid);
        std::vector<std::uint32_t> numbers;
        for (std::uint32_t i = 0; i < Keys; ++i) numbers.push_back((i * 73) % Keys);
        AddNumbers(*harness.index, numbers);
        for (std::uint32_t number = 0; number < Keys; ++number) entries.push_back(EntryOf(*harness.index, number));
        keySize = harness.index->GetKeySize();
        harness.index.reset();
        original = ReadFile(Path());
        MessageBuilder specification;
        ASSERT_EQ(Specification().Serialize(specification), Status::Success);
        // The user data (specification, root, sentinel), then the entries, each behind its front.
        firstEntry = FileHeaderSize + StoreHeaderSize + specification.GetLength() + 8;
    }

    std::string Path() const { return directory / "Items-ByNumber.rb.idx"; }
    // Where the node of the key `number` begins in the file.
    std::size_t NodeOffset(std::uint32_t number) const {
        return firstEntry + entries[number] * (keySize + RedBlackTreeNode::HeaderSize + EntryFrontSize) +
               EntryFrontSize;
    }
    // Writes `damage(bytes)` of the original file, opens it and checks every walk.
    template <class Damage>
    int WalkDamaged(Damage damage) {
        std::vector<unsigned char> bytes = original;
        damage(bytes);
        WriteFile(Path(), bytes);
        TreeHarness harness(Specification(), 2, 3);
        if (harness.index->Open(directory.Path(), "Items", uuid) != Status::Success) return 0;
        return CheckWalks(*harness.index);
    }

    ScratchDirectory directory;
    Uuid uuid;
    std::vector<std::uint32_t> entries;
    std::uint32_t keySize = 0;
    std::size_t firstEntry = 0;
    std::vector<unsigned char> original;
};

TEST_F(RedBlackTreeDamagedWalk, ASuccessorLinkedBackEndsTheWalkThere) {
    EXPECT_EQ(WalkDamaged([](std::vector<unsigned char>&) {}), 0);
    // Key 100's right link names key 10: its successor would be a key at or below 10, and a walk
    // from there would come back to 100 and go round for ever.
    EXPECT_EQ(WalkDamaged([&](std::vector<unsigned char>& bytes) {
                  EncodeU32(bytes.data() + NodeOffset(100) + RedBlackTreeNode::RightOffset, entries[10]);
              }),
              1);
    TreeHarness harness(Specification(), 2, 3);
    ASSERT_EQ(harness.index->Open(directory.Path(), "Items", uuid), Status::Success);
    const WalkResult forward = StepWalk(*harness.index, true, false);
    EXPECT_EQ(forward.status, Status::Invalid);
    ASSERT_EQ(forward.records.size(), 101u);
    EXPECT_EQ(forward.records.back(), 100u);
}

TEST_F(RedBlackTreeDamagedWalk, SwappedKeysEndTheWalkWhereTheOrderBreaks) {
    const auto swapKeys = [&](std::uint32_t a, std::uint32_t b) {
        return [=, this](std::vector<unsigned char>& bytes) {
            const std::size_t keyA = NodeOffset(a) + RedBlackTreeNode::KeyOffset;
            const std::size_t keyB = NodeOffset(b) + RedBlackTreeNode::KeyOffset;
            std::swap_ranges(bytes.begin() + keyA, bytes.begin() + keyA + keySize, bytes.begin() + keyB);
        };
    };
    EXPECT_EQ(WalkDamaged(swapKeys(20, 150)), 2);  // each way, the first of the two is met out of order
    int damaged = 0;
    for (std::uint32_t a = 0; a < Keys; a += 9) damaged += WalkDamaged(swapKeys(a, (a * 37 + 11) % Keys));
    EXPECT_GT(damaged, 0);
}

// Every link of every seventh node pointed at a handful of others, and bytes of the keys changed.
TEST_F(RedBlackTreeDamagedWalk, AnyChangedLinkOrKeyByteGivesAnOrderedWalkThatEnds) {
    int damaged = 0;
    for (std::uint32_t number = 0; number < Keys; number += 7) {
        for (const std::uint32_t link :
             {RedBlackTreeNode::LeftOffset, RedBlackTreeNode::RightOffset, RedBlackTreeNode::ParentOffset}) {
            for (const std::uint32_t target : {entries[0], entries[number], entries[(number * 31 + 5) % Keys],
                                               entries[Keys - 1]}) {
                damaged += WalkDamaged([&](std::vector<unsigned char>& bytes) {
                    EncodeU32(bytes.data() + NodeOffset(number) + link, target);
                });
            }
        }
        for (std::uint32_t at = 0; at < keySize; ++at) {
            for (const unsigned char value : {0x00, 0x7F, 0xFF}) {
                damaged += WalkDamaged([&](std::vector<unsigned char>& bytes) {
                    bytes[NodeOffset(number) + RedBlackTreeNode::KeyOffset + at] = value;
                });
            }
        }
    }
    EXPECT_GT(damaged, 0);
}

}  // namespace
}  // namespace Tavrin::Database::Testing
