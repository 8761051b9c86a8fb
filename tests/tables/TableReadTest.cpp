// The read path of a table against a sorted model: walks both ways, prefix walks, batches and their
// limits, lookups of many keys, walks of the store, refused keys, and reads beside a writer.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "RemoteTableTestSupport.h"
#include "TablesTestSupport.h"
#include "records/Key.h"
#include "records/Record.h"
#include "schema/IndexSpecification.h"

namespace Tavrin::Database {
namespace {

using namespace Testing;

constexpr std::uint16_t kById = 0;
constexpr std::uint16_t kByScoreName = 1;  // duplicate: Score, then Name
constexpr std::uint16_t kScore = 3;
constexpr std::uint16_t kName = 2;
constexpr std::uint32_t kWholeField = 0xFFFFFFFF;
constexpr std::uint32_t kMutex = 2;  // property bit 1

struct Row {
    std::uint32_t id = 0;
    std::string name;
    std::int32_t score = 0;
    std::uint32_t recordId = FieldListObject::NoRecordId;
    bool operator==(const Row&) const = default;
};

// The order of the duplicate index: score, name, then the record id as a signed number.
bool ByScoreName(const Row& left, const Row& right) {
    return std::make_tuple(left.score, left.name, static_cast<std::int32_t>(left.recordId)) <
           std::make_tuple(right.score, right.name, static_cast<std::int32_t>(right.recordId));
}

Row RowOf(const Record& record) {
    Row row;
    const FieldList& list = *record.GetFieldList();
    EXPECT_EQ(list.GetField(record.GetData(), 1, row.id), Status::Success);
    EXPECT_EQ(list.GetField(record.GetData(), kName, row.name), Status::Success);
    EXPECT_EQ(list.GetField(record.GetData(), kScore, row.score), Status::Success);
    row.recordId = record.GetRecordId();
    return row;
}

std::vector<Row> RowsOf(const std::vector<Record>& records) {
    std::vector<Row> rows;
    for (const Record& record : records) rows.push_back(RowOf(record));
    return rows;
}

std::vector<Row> Reversed(std::vector<Row> rows) {
    std::reverse(rows.begin(), rows.end());
    return rows;
}

// A People table with a primary unique index on Id and a duplicate index on (Score, Name), filled
// with `count` records of few scores and names from a small alphabet, so that keys repeat and share
// prefixes.
class TableReadTest : public ::testing::Test {
protected:
    void SetUp() override { Make(kCreateFile | kMutex); }

    void Make(std::uint32_t properties) {
        table_.reset(ManagedTableFactory::GetInstance().Create("People", properties, PersonFields(), 16, kHalf, kAll));
        std::vector<IndexSpecification> indexes{
            TreeIndex("ById", IndexSpecification::PrimaryUniqueProperty, {1}, 0),
            TreeIndex("ByScoreName", IndexSpecification::DuplicateProperty, {kScore, kName}, 1)};
        table_->CreateIndexes(indexes);
    }

    Row Write(std::uint32_t id, const std::string& name, std::int32_t score) {
        Record record(table_.get());
        const FieldList& list = *record.GetFieldList();
        EXPECT_EQ(list.SetField(record.GetData(), 1, id), Status::Success);
        EXPECT_EQ(list.SetField(record.GetData(), kName, name), Status::Success);
        EXPECT_EQ(list.SetField(record.GetData(), kScore, score), Status::Success);
        EXPECT_EQ(table_->WriteRecord(record), Status::Success);
        return {id, name, score, record.GetRecordId()};
    }

    void Fill(std::uint32_t count) {
        std::mt19937 random(7);
        for (std::uint32_t id = 0; id < count; ++id) {
            std::string name(10, 'a');
            for (char& letter : name) letter = static_cast<char>('a' + random() % 3);
            model_.push_back(Write(id * 3 + 1, name, static_cast<std::int32_t>(random() % 5) - 2));
        }
        std::sort(model_.begin(), model_.end(), ByScoreName);
    }

    Key ScoreKey(std::int32_t score, const std::string& name = std::string(10, 'a')) {
        Key key(table_.get(), kByScoreName);
        EXPECT_EQ(key.GetFieldList()->SetField(key.GetData(), kScore, score), Status::Success);
        EXPECT_EQ(key.GetFieldList()->SetField(key.GetData(), kName, name), Status::Success);
        return key;
    }

    Key IdKey(std::uint32_t id) {
        Key key(table_.get(), kById);
        EXPECT_EQ(key.GetFieldList()->SetField(key.GetData(), 1, id), Status::Success);
        return key;
    }

    std::vector<Row> Matching(std::int32_t score, std::size_t nameBytes = 0, char first = 'a') const {
        std::vector<Row> rows;
        for (const Row& row : model_) {
            if (row.score == score && (nameBytes == 0 || row.name[0] == first)) rows.push_back(row);
        }
        return rows;
    }

    // One-record walk: `first`, then `next` until status 6, which must then repeat.
    template <class First, class Next>
    std::vector<Row> WalkOneByOne(Key& key, First first, Next next) {
        std::vector<Row> rows;
        Record record;
        StatusCode status = first(key, record);
        while (status == Status::Success) {
            rows.push_back(RowOf(record));
            status = next(key, record);
        }
        EXPECT_EQ(status, Status::NotFound);
        EXPECT_EQ(next(key, record), Status::NotFound);
        return rows;
    }

    // Batch walk in batches of `limit`, each into a fresh vector that must hold `limit` records
    // except the last.
    template <class First, class Next>
    std::vector<Row> WalkInBatches(Key& key, std::uint32_t limit, First first, Next next) {
        std::vector<Row> rows;
        std::vector<Record> batch;
        StatusCode status = first(key, batch, limit);
        while (status == Status::Success) {
            EXPECT_LE(batch.size(), limit);
            EXPECT_FALSE(batch.empty());
            for (const Row& row : RowsOf(batch)) rows.push_back(row);
            batch.clear();
            status = next(key, batch, limit);
        }
        EXPECT_EQ(status, Status::NotFound);
        EXPECT_TRUE(batch.empty());
        return rows;
    }

    std::unique_ptr<ITable> table_;
    std::vector<Row> model_;  // in the order of the duplicate index
};

TEST_F(TableReadTest, WalksAgreeWithTheModelInBothDirectionsOneByOneAndInBatches) {
    Fill(200);
    Key key = ScoreKey(0);
    auto first = [this](Key& k, Record& r) { return table_->GetFirst(k, r); };
    auto next = [this](Key& k, Record& r) { return table_->GetNext(k, r); };
    auto last = [this](Key& k, Record& r) { return table_->GetLast(k, r); };
    auto previous = [this](Key& k, Record& r) { return table_->GetPrevious(k, r); };
    EXPECT_EQ(WalkOneByOne(key, first, next), model_);
    EXPECT_EQ(WalkOneByOne(key, last, previous), Reversed(model_));

    auto firstBatch = [this](Key& k, std::vector<Record>& r, std::uint32_t m) { return table_->GetFirst(k, r, m); };
    auto nextBatch = [this](Key& k, std::vector<Record>& r, std::uint32_t m) { return table_->GetNext(k, r, m); };
    auto lastBatch = [this](Key& k, std::vector<Record>& r, std::uint32_t m) { return table_->GetLast(k, r, m); };
    auto previousBatch = [this](Key& k, std::vector<Record>& r, std::uint32_t m) {
        return table_->GetPrevious(k, r, m);
    };
    for (std::uint32_t limit : {1u, 7u, 200u}) {
        EXPECT_EQ(WalkInBatches(key, limit, firstBatch, nextBatch), model_) << "limit " << limit;
        EXPECT_EQ(WalkInBatches(key, limit, lastBatch, previousBatch), Reversed(model_)) << "limit " << limit;
    }

    // Limit 0 takes everything; the records bound to this table carry their ids.
    std::vector<Record> all;
    ASSERT_EQ(table_->GetFirst(key, all, 0), Status::Success);
    EXPECT_EQ(RowsOf(all), model_);
    EXPECT_EQ(all[0].GetTable(), table_.get());

    // The primary index walks in id order.
    Key byId(table_.get(), kById);
    std::vector<Row> byIdModel = model_;
    std::sort(byIdModel.begin(), byIdModel.end(), [](const Row& l, const Row& r) { return l.id < r.id; });
    EXPECT_EQ(WalkOneByOne(byId, first, next), byIdModel);
}

TEST_F(TableReadTest, BatchLimitCountsWhatTheVectorHeldAndTheWalkGoesOnFromTheKey) {
    Fill(20);
    Key key = ScoreKey(0);
    std::vector<Record> records;
    ASSERT_EQ(table_->GetFirst(key, records, 1), Status::Success);
    ASSERT_EQ(records.size(), 1u);
    ASSERT_EQ(table_->GetNext(key, records, 4), Status::Success);
    ASSERT_EQ(records.size(), 4u);  // three more, as the vector held one
    EXPECT_EQ(RowsOf(records), std::vector<Row>(model_.begin(), model_.begin() + 4));

    // A record removed between two steps still leads to its successor.
    ASSERT_EQ(table_->RemoveRecord(key), Status::Success);
    Record record;
    ASSERT_EQ(table_->GetNext(key, record), Status::Success);
    EXPECT_EQ(RowOf(record), model_[4]);
}

TEST_F(TableReadTest, PrefixWalksStopAtTheEndOfTheMatchingRange) {
    Fill(150);
    for (std::int32_t score = -2; score <= 2; ++score) {
        for (std::size_t nameBytes : {std::size_t{0}, std::size_t{1}}) {
            const char letter = static_cast<char>('a' + (score + 2) % 3);
            const std::uint16_t field = nameBytes == 0 ? kScore : kName;
            const std::uint32_t length = nameBytes == 0 ? kWholeField : 1;
            const std::vector<Row> expected = Matching(score, nameBytes, letter);
            ASSERT_FALSE(expected.empty());
            const std::string probe = std::string(1, letter) + std::string(9, 'z');
            Key key = ScoreKey(score, probe);

            auto one = [&](auto operation) {
                return [&, operation](Key& k, Record& r) { return (table_.get()->*operation)(k, r, field, length); };
            };
            using Single = StatusCode (ITable::*)(Key&, Record&, std::uint16_t, std::uint32_t);
            EXPECT_EQ(WalkOneByOne(key, one(static_cast<Single>(&ITable::GetFirstEqual)),
                                   one(static_cast<Single>(&ITable::GetNextEqual))),
                      expected);
            EXPECT_EQ(WalkOneByOne(key, one(static_cast<Single>(&ITable::GetLastEqual)),
                                   one(static_cast<Single>(&ITable::GetPreviousEqual))),
                      Reversed(expected));

            auto batch = [&](auto operation) {
                return [&, operation](Key& k, std::vector<Record>& r, std::uint32_t m) {
                    return (table_.get()->*operation)(k, r, field, length, m);
                };
            };
            using Batch = StatusCode (ITable::*)(Key&, std::vector<Record>&, std::uint16_t, std::uint32_t,
                                                 std::uint32_t);
            EXPECT_EQ(WalkInBatches(key, 3, batch(static_cast<Batch>(&ITable::GetFirstEqual)),
                                    batch(static_cast<Batch>(&ITable::GetNextEqual))),
                      expected);
            EXPECT_EQ(WalkInBatches(key, 3, batch(static_cast<Batch>(&ITable::GetLastEqual)),
                                    batch(static_cast<Batch>(&ITable::GetPreviousEqual))),
                      Reversed(expected));
        }
    }

    // No match leaves the vector alone; a field outside the compared key is the index's 29.
    Key none = ScoreKey(9);
    std::vector<Record> records;
    EXPECT_EQ(table_->GetFirstEqual(none, records, kScore, kWholeField, 0), Status::NotFound);
    EXPECT_TRUE(records.empty());
    Record record;
    EXPECT_EQ(table_->GetFirstEqual(none, record, 1, kWholeField), Status::FieldMissing);
}

TEST_F(TableReadTest, GetEqualAnswersEveryKeyInPlace) {
    Fill(10);
    const Row& present = model_[3];
    Record record;
    Key key = IdKey(present.id);
    ASSERT_EQ(table_->GetEqual(key, record), Status::Success);
    EXPECT_EQ(RowOf(record), present);
    Key missing = IdKey(2);  // ids are 1, 4, 7, ...
    EXPECT_EQ(table_->GetEqual(missing, record), Status::NotFound);

    std::vector<Key> keys{IdKey(present.id), IdKey(2), Key(), IdKey(1)};
    std::vector<unsigned char> statuses;
    std::vector<Record> records{Record(table_.get())};
    ASSERT_EQ(table_->GetEqual(keys, statuses, records), Status::Success);
    EXPECT_EQ(statuses, (std::vector<unsigned char>{0, Status::NotFound, Status::KeyInvalid, 0}));
    ASSERT_EQ(records.size(), 5u);
    EXPECT_EQ(RowOf(records[1]), present);
    for (std::size_t blank : {2u, 3u}) {
        EXPECT_EQ(records[blank], Record(table_.get()));
        EXPECT_EQ(records[blank].GetRecordId(), FieldListObject::NoRecordId);
    }
    EXPECT_EQ(RowOf(records[4]).id, 1u);
}

TEST_F(TableReadTest, KeysThatAreNotThisTablesAreRefusedByEveryRead) {
    Fill(3);
    auto other = std::unique_ptr<ITable>(
        ManagedTableFactory::GetInstance().Create("Other", kCreateFile, PersonFields(), 4, kHalf, kAll));
    std::vector<IndexSpecification> otherIndexes{TreeIndex("ById", IndexSpecification::UniqueProperty, {1}, 0)};
    other->CreateIndexes(otherIndexes);
    const auto remote = MakeRemotePeople();
    std::vector<Key> keys;
    keys.emplace_back();
    keys.emplace_back(other.get(), 0);
    keys.emplace_back(remote.get(), 0);
    for (Key& bad : keys) {
        Record record;
        std::vector<Record> records;
        EXPECT_EQ(table_->GetEqual(bad, record), Status::KeyInvalid);
        EXPECT_EQ(table_->GetFirst(bad, record), Status::KeyInvalid);
        EXPECT_EQ(table_->GetPrevious(bad, records, 0), Status::KeyInvalid);
        EXPECT_EQ(table_->GetNextEqual(bad, records, kScore, kWholeField, 0), Status::KeyInvalid);
        EXPECT_TRUE(records.empty());
        EXPECT_FALSE(record.IsInitialized());
    }
}

TEST_F(TableReadTest, StoreWalksVisitEveryRecordInIdOrder) {
    std::uint32_t recordId = 0;
    Record record;
    std::vector<Record> records;
    EXPECT_EQ(table_->GetFirstRecord(recordId, record), Status::NotFound);
    EXPECT_EQ(table_->GetFirstRecord(recordId, records, 0), Status::NotFound);
    EXPECT_TRUE(records.empty());

    Fill(40);  // beyond the first 16 entries: the store grows under the walk's feet once
    Key third = IdKey(7);
    ASSERT_EQ(table_->RemoveRecord(third), Status::Success);
    std::vector<Row> inIdOrder;
    for (const Row& row : model_) {
        if (row.id != 7) inIdOrder.push_back(row);
    }
    std::sort(inIdOrder.begin(), inIdOrder.end(), [](const Row& l, const Row& r) { return l.recordId < r.recordId; });

    std::vector<Row> walked;
    StatusCode status = table_->GetFirstRecord(recordId, record);
    while (status == Status::Success) {
        EXPECT_EQ(record.GetRecordId(), recordId);
        walked.push_back(RowOf(record));
        status = table_->GetNextRecord(recordId, record);
    }
    EXPECT_EQ(status, Status::NotFound);
    EXPECT_EQ(walked, inIdOrder);

    walked.clear();
    status = table_->GetFirstRecord(recordId, records, 6);
    while (status == Status::Success) {
        EXPECT_LE(records.size(), 6u);
        for (const Row& row : RowsOf(records)) walked.push_back(row);
        records.clear();
        status = table_->GetNextRecord(recordId, records, 6);
    }
    EXPECT_EQ(status, Status::NotFound);
    EXPECT_EQ(walked, inIdOrder);

    recordId = FieldListObject::NoRecordId;
    EXPECT_EQ(table_->GetNextRecord(recordId, record), Status::OtherTable);
    EXPECT_EQ(table_->GetNextRecord(recordId, records, 0), Status::OtherTable);

    // A table made without its record file has no open store.
    auto closed = std::unique_ptr<ITable>(
        ManagedTableFactory::GetInstance().Create("Closed", 0, PersonFields(), 4, kHalf, kAll));
    EXPECT_EQ(closed->GetFirstRecord(recordId, record), Status::NotOpen);
    recordId = 0;
    EXPECT_EQ(closed->GetNextRecord(recordId, records, 0), Status::NotOpen);
    EXPECT_TRUE(records.empty());
}

// Readers in batches beside a writer on a table with a mutex: each batch sees the index in order,
// and nothing deadlocks (a mutex taken twice by one thread would).
TEST_F(TableReadTest, BatchesReadInOrderBesideAWriter) {
    Fill(50);
    std::atomic<bool> writing{true};
    std::thread writer([this, &writing] {
        for (std::uint32_t id = 1000; id < 1300; ++id) {
            Write(id, std::string(10, 'b'), static_cast<std::int32_t>(id % 5) - 2);
            if (id % 3 == 0) {
                Key key = IdKey(id);
                EXPECT_EQ(table_->RemoveRecord(key), Status::Success);
            }
        }
        writing = false;
    });
    std::uint32_t batches = 0;
    while (writing || batches == 0) {
        Key key = ScoreKey(0);
        std::vector<Record> records;
        ASSERT_EQ(table_->GetFirst(key, records, 0), Status::Success);
        const std::vector<Row> rows = RowsOf(records);
        EXPECT_TRUE(std::is_sorted(rows.begin(), rows.end(), ByScoreName));
        std::vector<unsigned char> statuses;
        std::vector<Key> keys{IdKey(1), IdKey(4)};
        ASSERT_EQ(table_->GetEqual(keys, statuses, records), Status::Success);
        EXPECT_EQ(statuses, (std::vector<unsigned char>{0, 0}));
        ++batches;
    }
    writer.join();
}

}  // namespace
}  // namespace Tavrin::Database
