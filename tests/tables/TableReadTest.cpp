// The read path of a table against a sorted model: walks both ways, prefix walks, batches and their
// limits, lookups of many keys, walks of the store, and refused keys.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "RemoteTableTestSupport.h"
#include "TablesTestSupport.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/Record.h"

namespace Tavrin::Database {
namespace {

using namespace Testing;

constexpr std::uint16_t kName = 2;
constexpr std::uint16_t kScore = 3;
constexpr std::uint32_t kWholeField = 0xFFFFFFFF;
constexpr std::size_t kLongestWalk = 1000;  // more records than any test writes: a walk that never ends

struct Row {
    std::uint32_t id = 0;
    std::string name;
    std::int32_t score = 0;
    std::uint32_t recordId = FieldListObject::NoRecordId;
    bool operator==(const Row&) const = default;
    // The order of the duplicate index: score, name, then the record id as a signed number.
    bool operator<(const Row& other) const {
        return std::make_tuple(score, name, static_cast<std::int32_t>(recordId)) <
               std::make_tuple(other.score, other.name, static_cast<std::int32_t>(other.recordId));
    }
};

Row RowOf(const Record& record) {
    Row row;
    const FieldList& list = *record.GetFieldList();
    EXPECT_EQ(list.GetField(record.GetData(), 1, row.id), Status::Success);
    EXPECT_EQ(list.GetField(record.GetData(), kName, row.name), Status::Success);
    EXPECT_EQ(list.GetField(record.GetData(), kScore, row.score), Status::Success);
    row.recordId = record.GetRecordId();
    return row;
}

using Single = std::function<StatusCode(Record&)>;
using Batch = std::function<StatusCode(std::vector<Record>&)>;

// `first`, then `next` until status 6, which must come again on the next call.
std::vector<Row> OneByOne(const Single& first, const Single& next) {
    std::vector<Row> rows;
    Record record;
    for (StatusCode status = first(record); status != Status::NotFound; status = next(record)) {
        EXPECT_EQ(status, Status::Success);
        if (status != Status::Success || rows.size() > kLongestWalk) break;
        rows.push_back(RowOf(record));
    }
    EXPECT_EQ(next(record), Status::NotFound);
    return rows;
}

// `first`, then `next`, each into a fresh vector of at most `limit` records, until status 6.
std::vector<Row> InBatches(std::uint32_t limit, const Batch& first, const Batch& next) {
    std::vector<Row> rows;
    std::vector<Record> batch;
    for (StatusCode status = first(batch); status != Status::NotFound; status = next(batch)) {
        EXPECT_EQ(status, Status::Success);
        EXPECT_TRUE(!batch.empty() && (limit == 0 || batch.size() <= limit));
        if (status != Status::Success || batch.empty() || rows.size() > kLongestWalk) break;
        for (const Record& record : batch) rows.push_back(RowOf(record));
        batch.clear();
    }
    EXPECT_TRUE(batch.empty());
    return rows;
}

std::vector<Row> Reversed(std::vector<Row> rows) {
    std::reverse(rows.begin(), rows.end());
    return rows;
}

// A People table with a mutex, holding records of few scores and of names from a three-letter
// alphabet, so that keys repeat and share prefixes; the model is in the duplicate index's order.
class TableRead : public ::testing::Test {
protected:
    void Fill(std::uint32_t count) {
        std::mt19937 random(7);
        for (std::uint32_t n = 0; n < count; ++n) {
            Row row{n * 3 + 1, std::string(10, 'a'), static_cast<std::int32_t>(random() % 5) - 2};
            for (char& letter : row.name) letter = static_cast<char>('a' + random() % 3);
            Record record(table_.get());
            EXPECT_EQ(record.GetFieldList()->SetField(record.GetData(), 1, row.id), Status::Success);
            EXPECT_EQ(record.GetFieldList()->SetField(record.GetData(), kName, row.name), Status::Success);
            EXPECT_EQ(record.GetFieldList()->SetField(record.GetData(), kScore, row.score), Status::Success);
            ASSERT_EQ(table_->WriteRecord(record), Status::Success);
            row.recordId = record.GetRecordId();
            model_.push_back(row);
        }
        std::sort(model_.begin(), model_.end());
    }

    Key ScoreKey(std::int32_t score, const std::string& name) {
        Key key(table_.get(), 1);
        EXPECT_EQ(key.GetFieldList()->SetField(key.GetData(), kScore, score), Status::Success);
        EXPECT_EQ(key.GetFieldList()->SetField(key.GetData(), kName, name), Status::Success);
        return key;
    }

    Key IdKey(std::uint32_t id) { return Testing::IdKey(*table_, id); }

    std::unique_ptr<ITable> table_ = MakePeople(kCreateFile | 2, 16);  // bit 1: a mutex
    std::vector<Row> model_;
};

TEST_F(TableRead, WalksAgreeWithTheModelBothWaysOneByOneAndInBatches) {
    Key key(table_.get(), 1);
    std::vector<Record> records;
    EXPECT_EQ(table_->GetFirst(key, records, 0), Status::NotFound);
    EXPECT_TRUE(records.empty());
    Fill(200);

    ITable& t = *table_;
    EXPECT_EQ(OneByOne([&](Record& r) { return t.GetFirst(key, r); }, [&](Record& r) { return t.GetNext(key, r); }),
              model_);
    EXPECT_EQ(OneByOne([&](Record& r) { return t.GetLast(key, r); }, [&](Record& r) { return t.GetPrevious(key, r); }),
              Reversed(model_));
    for (std::uint32_t limit : {0u, 1u, 7u}) {
        auto first = [&](std::vector<Record>& r) { return t.GetFirst(key, r, limit); };
        auto next = [&](std::vector<Record>& r) { return t.GetNext(key, r, limit); };
        auto last = [&](std::vector<Record>& r) { return t.GetLast(key, r, limit); };
        auto previous = [&](std::vector<Record>& r) { return t.GetPrevious(key, r, limit); };
        EXPECT_EQ(InBatches(limit, first, next), model_) << "limit " << limit;
        EXPECT_EQ(InBatches(limit, last, previous), Reversed(model_)) << "limit " << limit;
    }

    // The limit counts what the vector held before.
    ASSERT_EQ(t.GetFirst(key, records, 1), Status::Success);
    ASSERT_EQ(t.GetNext(key, records, 4), Status::Success);
    ASSERT_EQ(records.size(), 4u);
    EXPECT_EQ(RowOf(records[3]), model_[3]);
    // A record removed between two steps still leads to its successor.
    ASSERT_EQ(t.RemoveRecord(key), Status::Success);
    Record record;
    ASSERT_EQ(t.GetNext(key, record), Status::Success);
    EXPECT_EQ(RowOf(record), model_[4]);
}

TEST_F(TableRead, PrefixWalksStayInTheMatchingRange) {
    Fill(150);
    ITable& t = *table_;
    for (std::int32_t score = -2; score <= 2; ++score) {
        const char letter = static_cast<char>('a' + (score + 2) % 3);
        // Up to the whole Score field, then up to the first byte of Name.
        for (const auto& [field, length] : {std::pair{kScore, kWholeField}, std::pair{kName, 1u}}) {
            std::vector<Row> expected;
            std::copy_if(model_.begin(), model_.end(), std::back_inserter(expected), [&](const Row& row) {
                return row.score == score && (field == kScore || row.name[0] == letter);
            });
            ASSERT_FALSE(expected.empty());
            Key key = ScoreKey(score, letter + std::string(9, 'z'));
            const std::uint16_t f = field;
            const std::uint32_t l = length;
            EXPECT_EQ(OneByOne([&](Record& r) { return t.GetFirstEqual(key, r, f, l); },
                               [&](Record& r) { return t.GetNextEqual(key, r, f, l); }),
                      expected);
            EXPECT_EQ(OneByOne([&](Record& r) { return t.GetLastEqual(key, r, f, l); },
                               [&](Record& r) { return t.GetPreviousEqual(key, r, f, l); }),
                      Reversed(expected));
            EXPECT_EQ(InBatches(3, [&](std::vector<Record>& r) { return t.GetFirstEqual(key, r, f, l, 3); },
                                [&](std::vector<Record>& r) { return t.GetNextEqual(key, r, f, l, 3); }),
                      expected);
            EXPECT_EQ(InBatches(3, [&](std::vector<Record>& r) { return t.GetLastEqual(key, r, f, l, 3); },
                                [&](std::vector<Record>& r) { return t.GetPreviousEqual(key, r, f, l, 3); }),
                      Reversed(expected));
        }
    }
    Key key = ScoreKey(0, std::string(10, 'a'));
    Record record;
    EXPECT_EQ(t.GetFirstEqual(key, record, 1, kWholeField), Status::FieldMissing);  // Id is not in this key
}

TEST_F(TableRead, GetEqualAnswersEachKeyInItsPlaceAndRefusesForeignKeys) {
    Fill(10);
    Record record;
    Key present = IdKey(model_[3].id);
    ASSERT_EQ(table_->GetEqual(present, record), Status::Success);
    EXPECT_EQ(RowOf(record), model_[3]);

    const auto other = MakePeople(kCreateFile);
    std::vector<Key> keys{IdKey(model_[3].id), IdKey(2), Key(), Key(other.get(), 0), IdKey(1)};
    std::vector<unsigned char> statuses;
    std::vector<Record> records{Record(table_.get())};
    ASSERT_EQ(table_->GetEqual(keys, statuses, records), Status::Success);
    EXPECT_EQ(statuses, (std::vector<unsigned char>{0, Status::NotFound, Status::KeyInvalid, Status::KeyInvalid, 0}));
    ASSERT_EQ(records.size(), 6u);
    EXPECT_EQ(RowOf(records[1]), model_[3]);
    for (std::size_t blank : {2u, 3u, 4u}) EXPECT_EQ(records[blank], Record(table_.get()));
    EXPECT_EQ(RowOf(records[5]).id, 1u);

    std::vector<Record> none;
    EXPECT_EQ(table_->GetEqual(keys[3], record), Status::KeyInvalid);
    EXPECT_EQ(table_->GetLast(keys[3], none, 0), Status::KeyInvalid);
    EXPECT_EQ(table_->GetNextEqual(keys[2], none, kScore, kWholeField, 0), Status::KeyInvalid);
    EXPECT_TRUE(none.empty());
}

TEST_F(TableRead, StoreWalksVisitEveryRecordInIdOrder) {
    std::uint32_t recordId = 0;
    Record record;
    EXPECT_EQ(table_->GetFirstRecord(recordId, record), Status::NotFound);
    Fill(40);  // more than the 16 records the store started with
    Key removed = IdKey(7);
    ASSERT_EQ(table_->RemoveRecord(removed), Status::Success);
    std::vector<Row> expected;
    std::copy_if(model_.begin(), model_.end(), std::back_inserter(expected), [](const Row& row) { return row.id != 7; });
    std::sort(expected.begin(), expected.end(), [](const Row& l, const Row& r) { return l.recordId < r.recordId; });

    ITable& t = *table_;
    EXPECT_EQ(OneByOne([&](Record& r) { return t.GetFirstRecord(recordId, r); },
                       [&](Record& r) { return t.GetNextRecord(recordId, r); }),
              expected);
    EXPECT_EQ(InBatches(6, [&](std::vector<Record>& r) { return t.GetFirstRecord(recordId, r, 6); },
                        [&](std::vector<Record>& r) { return t.GetNextRecord(recordId, r, 6); }),
              expected);

    std::vector<Record> records;
    recordId = FieldListObject::NoRecordId;
    EXPECT_EQ(t.GetNextRecord(recordId, records, 0), Status::OtherTable);
    const auto closed = std::unique_ptr<ITable>(
        ManagedTableFactory::GetInstance().Create("Closed", 0, PersonFields(), 4, kHalf, kAll));
    EXPECT_EQ(closed->GetFirstRecord(recordId, records, 0), Status::NotOpen);
    EXPECT_TRUE(records.empty());
}

}  // namespace
}  // namespace Tavrin::Database
