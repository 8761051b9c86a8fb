#pragma once
// Helpers of the tests of OpenTable, SaveAs and CopyFiles: the People table with tree and hash
// indexes in a directory, and a snapshot of everything that a reopened table must give back.

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "WriteTestSupport.h"
#include "tavrin/tables/OpenTable.h"

namespace Tavrin::Database::Testing {

// Tree primary on Id, hash unique on Code, the duplicate tree on Group and Score.
inline std::vector<IndexSpecification> MixedIndexes() {
    return {PeopleIndexes()[kById],
            IndexSpecification("ByCode", IndexSpecification::Hash, IndexSpecification::UniqueProperty,
                               {Field(kCode, 0)}),
            PeopleIndexes()[kByGroup]};
}

inline std::unique_ptr<ITable> MakeMixedPeople(const std::string& directory, std::uint32_t cacheSize = kAll) {
    std::unique_ptr<ITable> table = MakeBarePeople(directory, kCreateFile | 2, 8, kHalf, cacheSize);
    std::vector<IndexSpecification> indexes = MixedIndexes();
    table->CreateIndexes(indexes);
    return table;
}

inline std::unique_ptr<ITable> Open(const std::string& fileName) {
    return std::unique_ptr<ITable>(OpenTable(fileName, true, true));
}

// What a table gives back: its description, its indexes in number order, its records by record id
// and the record ids in the order of each tree index's walk.
struct Snapshot {
    std::string specification;
    std::vector<IndexSpecification> indexes;
    std::map<std::uint32_t, Person> records;
    std::vector<std::vector<std::uint32_t>> walks;
    bool operator==(const Snapshot&) const = default;
};

inline Snapshot Take(ITable& table) {
    Snapshot snapshot{table.GetSpecification().ToString(), table.GetIndexSpecificationList(), {}, {}};
    for (const Record& record : StoredRecords(table)) snapshot.records[record.GetRecordId()] = ToPerson(record);
    for (const IndexSpecification& index : snapshot.indexes) {
        if (!index.IsHash()) snapshot.walks.push_back(WalkIndex(table, index.GetNumber()));
    }
    return snapshot;
}

// Every stored record is found through every index by the key built from it.
inline void ExpectEveryIndexFindsTheStore(ITable& table) {
    for (const Record& record : StoredRecords(table)) {
        for (std::uint16_t number = 0; number < table.GetNumberOfIndexes(); ++number) {
            std::uint32_t found = FieldListObject::NoRecordId;
            ASSERT_EQ(IndexOf(table, number).Find(Key(number, record), found), Status::Success) << "index " << number;
            EXPECT_EQ(found, record.GetRecordId()) << "index " << number;
        }
    }
}

}  // namespace Tavrin::Database::Testing
