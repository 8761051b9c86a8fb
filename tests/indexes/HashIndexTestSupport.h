#pragma once
// Helpers of the hash index tests: an index over the tree tests' table layout (keys of a number and
// a text that may be undefined), short forms of its key operations, and the report of its checks.

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "../storage/StoreTestSupport.h"
#include "RedBlackTreeTestSupport.h"
#include "tavrin/base/DatabaseException.h"
#include "tavrin/indexes/HashIndex.h"
#include "tavrin/indexes/HashIndexBucketHandler.h"
#include "tavrin/indexes/HashIndexEntryHandler.h"

namespace Tavrin::Database::Testing {

constexpr std::uint32_t NoId = 0xFFFFFFFF;
using Name = std::optional<std::string>;

// File offsets of the block fields of the entry file and the bucket file.
constexpr std::uint32_t kEntryMax = 25, kEntryUsed = 29, kEntrySize = 33, kFreeHead = 37, kFreeTail = 41;
constexpr std::uint32_t kEntryArea = 45;
constexpr std::uint32_t kCapacity = 25, kBucketCount = 29, kSplitIndex = 33, kBucketArray = 37;

// A hash index over (Number, Name) of a managed table layout; it opens no file until told.
struct HashHarness {
    explicit HashHarness(std::uint32_t properties, std::uint32_t initialEntries = 64, std::uint32_t growEntries = 64)
        : specification("ByNumber", IndexSpecification::Hash, properties,
                        {IndexSpecification::Field(NumberField, 0), IndexSpecification::Field(NameField, 0)}),
          table(MakeTableList(true)),
          initial(initialEntries),
          grow(growEntries) {
        Renew();
    }
    // The index made anew, as a table that opens the files later makes it.
    void Renew() {
        index.reset();
        index = std::make_unique<HashIndex>(specification, *table, FactoryOf(true), initial, grow);
    }
    StatusCode Add(std::uint32_t number, const Name& name, std::uint32_t id, std::uint32_t tail = NoId) {
        Key key;
        SetKey(key, *index, number, name, tail);
        return index->Add(key, id);
    }
    StatusCode Find(std::uint32_t number, const Name& name, std::uint32_t& id, std::uint32_t tail = NoId) {
        Key key;
        SetKey(key, *index, number, name, tail);
        return index->Find(key, id);
    }
    StatusCode Remove(std::uint32_t number, const Name& name, std::uint32_t tail = NoId) {
        Key key;
        SetKey(key, *index, number, name, tail);
        return index->Remove(key);
    }
    // The message of the DatabaseException that CheckIntegrity throws; empty when it throws none.
    std::string Report() {
        try {
            index->CheckIntegrity();
        } catch (const DatabaseException& exception) {
            EXPECT_EQ(exception.GetCode(), DatabaseException::InvalidParameter);
            return exception.GetMessage();
        }
        return std::string();
    }
    std::string EntryFile(const std::string& directory) const {
        return HashIndex::GetEntryFileName(directory, "T", "ByNumber");
    }
    std::string BucketFile(const std::string& directory) const {
        return HashIndex::GetBucketFileName(directory, "T", "ByNumber");
    }

    IndexSpecification specification;
    std::unique_ptr<FieldList> table;
    std::uint32_t initial;
    std::uint32_t grow;
    std::unique_ptr<HashIndex> index;
};

}  // namespace Tavrin::Database::Testing
