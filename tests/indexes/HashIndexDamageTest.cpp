// Damaged hash index files. A loop made by hand in a chain or in the free list ends Find, Add and
// Remove with status 23 and is named by the checks. Every field of the three files' headers and
// blocks set to 0, 1, all ones and a random value gives status 1 from Open, or an index whose checks
// either name the damage or find every key and go on working.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "../base/ScratchDirectory.h"
#include "HashIndexTestSupport.h"
#include "tavrin/base/Uuid.h"

namespace Tavrin::Database::Testing {
namespace {

constexpr std::uint32_t kKeys = 700;  // enough for splits past the minimum of 256 buckets

// Keys 0 to kKeys - 1 (record id = number) in files closed in order.
struct Damaged {
    Damaged() {
        index.index->Create(directory.Path(), "T", uuid);
        for (std::uint32_t number = 0; number < kKeys; ++number) EXPECT_EQ(index.Add(number, "n", number), 0);
        index.index.reset();
    }
    StatusCode Open() {
        index.Renew();
        return index.index->Open(directory.Path(), "T", uuid);
    }
    Tavrin::Testing::ScratchDirectory directory;
    Uuid uuid;
    HashHarness index{IndexSpecification::UniqueProperty, 100, 50};
};

TEST(HashIndexDamage, LoopsEndWalksWithAStatusAndTheChecksNameThem) {
    Damaged chain;
    std::vector<unsigned char> entries = ReadFile(chain.index.EntryFile(chain.directory.Path()));
    const std::vector<unsigned char> buckets = ReadFile(chain.index.BucketFile(chain.directory.Path()));
    const auto next = [&](std::uint32_t offset) { return DecodeU32(&entries[kEntryArea + offset + 4]); };
    std::uint32_t bucket = 0;  // the first with two entries or more: its tail goes back to its head
    const auto headOf = [&](std::uint32_t at) { return DecodeU32(&buckets[kBucketArray + 8 * at]); };
    while (headOf(bucket) == NoId || next(headOf(bucket)) == NoId) ++bucket;
    const std::uint32_t head = headOf(bucket);
    EncodeU32(&entries[kEntryArea + DecodeU32(&buckets[kBucketArray + 8 * bucket + 4]) + 4], head);
    WriteFile(chain.index.EntryFile(chain.directory.Path()), entries);
    ASSERT_EQ(chain.Open(), Status::Success);
    std::uint32_t number = kKeys;  // a key that is not there, of that bucket: its search goes round
    for (Key key;; ++number) {
        SetKey(key, *chain.index.index, number, "n");
        if (chain.index.index->GetBucketHandler().GetBucket(key.GetData()) == bucket) break;
    }
    std::uint32_t found = NoId;
    EXPECT_EQ(chain.index.Find(number, "n", found), Status::Invalid);
    EXPECT_EQ(chain.index.Add(number, "n", number), Status::Invalid);
    EXPECT_EQ(chain.index.Remove(number, "n"), Status::Invalid);
    std::string report = chain.index.Report();
    EXPECT_EQ(report.rfind("\nBucket contains a loop\nOffset ............. " + std::to_string(head) + "\n", 0), 0u);
    EXPECT_NE(report.find("Bucket ............. " + std::to_string(bucket) + "\nHead entry ......... "), report.npos);

    Damaged list;  // the free list's tail goes back to its head
    entries = ReadFile(list.index.EntryFile(list.directory.Path()));
    const std::uint32_t freeHead = DecodeU32(&entries[kFreeHead]);
    const std::uint32_t freeTail = DecodeU32(&entries[kFreeTail]);
    EncodeU32(&entries[kEntryArea + freeTail + 4], freeHead);
    WriteFile(list.index.EntryFile(list.directory.Path()), entries);
    ASSERT_EQ(list.Open(), Status::Success);
    report = list.index.Report();
    EXPECT_EQ(report.rfind("\nFree list contains a loop\nOffset ............. " + std::to_string(freeHead) + "\n", 0),
              0u);
    EXPECT_NE(report.find("Start free list .... " + std::to_string(freeHead) + "\nEnd free list ...... " +
                          std::to_string(freeTail) + "\n"),
              report.npos);
    // The free entries go, then the list comes round to an entry in use: no more adds, and no growth.
    StatusCode status = Status::Success;
    for (number = kKeys; status == Status::Success && number < 3 * kKeys; ++number)
        status = list.index.Add(number, "n", number);
    EXPECT_EQ(status, Status::Invalid);
}

struct Field {
    std::string name;
    int file;  // 0 specification, 1 entries, 2 buckets
    std::uint32_t offset, width;
};

TEST(HashIndexDamage, EveryHeaderFieldOpensAsAStatusOrAnIndexThatHoldsUp) {
    Damaged damaged;
    const std::string& directory = damaged.directory.Path();
    const std::vector<std::string> files{HashIndex::GetSpecificationFileName(directory, "T", "ByNumber"),
                                         damaged.index.EntryFile(directory), damaged.index.BucketFile(directory)};
    std::vector<std::vector<unsigned char>> originals;
    for (const std::string& file : files) originals.push_back(ReadFile(file));
    std::vector<Field> fields{{"specification number", 0, 17, 4}, {"specification name length", 0, 21, 2}};
    for (int file = 0; file < 3; ++file)
        fields.insert(fields.end(), {{"clean flag", file, 0, 1}, {"uuid", file, 1, 1}});
    const char* entryFields[] = {"owner", "entries", "maxEntries", "usedEntries", "entrySize", "freeHead", "freeTail"};
    for (std::uint32_t i = 0; i < 7; ++i) fields.push_back({entryFields[i], 1, 17 + 4 * i, 4});
    const char* bucketFields[] = {"owner", "buckets", "capacity", "bucketCount", "splitIndex"};
    for (std::uint32_t i = 0; i < 5; ++i) fields.push_back({bucketFields[i], 2, 17 + 4 * i, 4});

    std::mt19937 random(3);
    for (const Field& field : fields) {
        const std::uint32_t mask = field.width == 4 ? 0xFFFFFFFF : (1u << (8 * field.width)) - 1;
        for (const std::uint32_t value : {0u, 1u, mask, static_cast<std::uint32_t>(random()) & mask}) {
            const std::string what =
                field.name + " of file " + std::to_string(field.file) + " = " + std::to_string(value);
            damaged.index.index.reset();  // files are written only while nothing maps them
            for (int file = 0; file < 3; ++file) {
                std::vector<unsigned char> bytes = originals[file];
                for (std::uint32_t i = 0; file == field.file && i < field.width; ++i)
                    bytes[field.offset + i] = value >> (8 * i);
                WriteFile(files[file], bytes);
            }
            const StatusCode status = damaged.Open();
            HashHarness& index = damaged.index;
            if (status != Status::Success) {
                EXPECT_EQ(status, Status::Failure) << what;
                EXPECT_FALSE(index.index->IsOpen()) << what;
                continue;
            }
            const bool named = !index.Report().empty();
            for (std::uint32_t number = 0; number < kKeys + 300; ++number) {
                std::uint32_t found = NoId;
                const StatusCode find = index.Find(number, "n", found);
                if (named) {
                    EXPECT_TRUE(find == Status::Success || find == Status::NotFound || find == Status::Invalid) << what;
                } else {
                    ASSERT_EQ(find, Status::Success) << what << ", key " << number;
                }
                const StatusCode add = index.Add(number + kKeys, "n", number);
                const StatusCode remove = index.Remove(number, "n");
                if (!named) {
                    ASSERT_EQ(add, Status::Success) << what;
                    ASSERT_EQ(remove, Status::Success) << what;
                }
            }
            if (!named) {
                EXPECT_EQ(index.Report(), "") << what;
            }
        }
    }
}

}  // namespace
}  // namespace Tavrin::Database::Testing
