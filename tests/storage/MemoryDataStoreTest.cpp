#include "tavrin/storage/MemoryDataStore.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tavrin/base/Encoding.h"
#include "tavrin/base/File.h"
#include "tavrin/base/FileMappedMemoryFactory.h"
#include "base/ScratchDirectory.h"
#include "storage/StoreTestSupport.h"

namespace Tavrin::Database {
namespace {

using Tavrin::Testing::ScratchDirectory;
using Testing::MakeRecord;
using Testing::ReadFile;
using Testing::TextOwner;

std::uint32_t AddRecord(DataStore& store, std::uint32_t recordSize, std::uint32_t seed) {
    std::uint32_t id = 0xFFFFFFFF;
    const auto record = MakeRecord(recordSize, seed);
    EXPECT_EQ(store.Add(id, record.data()), Status::Success);
    return id;
}

bool Holds(DataStore& store, std::uint32_t id, std::uint32_t recordSize, std::uint32_t seed) {
    unsigned char* record = nullptr;
    return store.GetEntry(id, record) == Status::Success &&
           std::memcmp(record, MakeRecord(recordSize, seed).data(), recordSize) == 0;
}

TEST(MemoryDataStore, ClosedFileIsExactlyTheLayout) {
    ScratchDirectory directory;
    const std::string path = directory / "t.tab";
    TextOwner owner("owner");
    const Uuid uuid;
    MemoryDataStore store(&owner, 5, 4, 2);
    store.Create(path, uuid);
    for (std::uint32_t seed = 0; seed < 5; ++seed) EXPECT_EQ(AddRecord(store, 5, seed), seed);
    ASSERT_EQ(store.Remove(1), Status::Success);

    // Between saves the bookkeeping in the file is already up to date.
    auto bytes = ReadFile(path);
    ASSERT_EQ(bytes.size(), 17u + 61 + 6 * 13);
    EXPECT_EQ(bytes[0], 0);
    EXPECT_EQ(DecodeU32(&bytes[46]), 4u);  // currentEntries
    EXPECT_EQ(DecodeU32(&bytes[50]), 6u);  // maxEntries
    EXPECT_EQ(DecodeI32(&bytes[63]), 1);   // freeHead
    EXPECT_EQ(DecodeI32(&bytes[67]), 5);   // freeTail

    ASSERT_EQ(store.Close(), Status::Success);
    EXPECT_FALSE(store.IsOpen());
    bytes = ReadFile(path);
    ASSERT_EQ(bytes.size(), 17u + 61 + 6 * 13);
    EXPECT_EQ(bytes[0], 1);
    EXPECT_FALSE(Uuid(&bytes[1], 16) != uuid);
    const std::uint32_t header[] = {0, 1, 54, 7, 5, 4, 2, 4, 6};
    EXPECT_EQ(bytes[17], 2);
    for (int i = 0; i < 9; ++i) EXPECT_EQ(DecodeU32(&bytes[18 + 4 * i]), header[i]) << "field " << i;
    EXPECT_EQ(bytes[54], 2);
    EXPECT_EQ(DecodeU32(&bytes[55]), 61u);
    EXPECT_EQ(DecodeU32(&bytes[59]), 13u);
    EXPECT_EQ(DecodeI32(&bytes[63]), 1);
    EXPECT_EQ(DecodeI32(&bytes[67]), 5);
    EXPECT_EQ(DecodeU16(&bytes[71]), 5);
    EXPECT_EQ(std::string(bytes.begin() + 73, bytes.begin() + 78), "owner");

    const std::int32_t next[] = {-1, 5, -1, -1, -1, -1};
    const unsigned char used[] = {1, 0, 1, 1, 1, 0};
    for (std::uint32_t i = 0; i < 6; ++i) {
        const unsigned char* entry = &bytes[78 + 13 * i];
        EXPECT_EQ(entry[0], used[i]) << "entry " << i;
        EXPECT_EQ(entry[1] | entry[2] | entry[3], 0) << "entry " << i;
        EXPECT_EQ(DecodeI32(entry + 4), next[i]) << "entry " << i;
        if (i != 5) {
            EXPECT_EQ(std::memcmp(entry + 8, MakeRecord(5, i).data(), 5), 0) << "entry " << i;
        }
    }
}

TEST(MemoryDataStore, ClearStartsIdsAgainAndKeepsTheFileSize) {
    ScratchDirectory directory;
    MemoryDataStore store(nullptr, 3, 2, 3);
    store.Create(directory / "s", Uuid());
    for (std::uint32_t seed = 0; seed < 7; ++seed) AddRecord(store, 3, seed);
    const std::uint32_t max = store.GetMaxEntries();
    EXPECT_EQ(max, 8u);
    store.Clear();
    std::uint32_t id = 0;
    unsigned char* record = nullptr;
    EXPECT_EQ(store.GetFirst(id, record), Status::NotFound);
    EXPECT_EQ(store.GetCurrentEntries(), 0u);
    EXPECT_EQ(store.GetMaxEntries(), max);
    for (std::uint32_t expected = 0; expected < max; ++expected) EXPECT_EQ(AddRecord(store, 3, expected), expected);
    store.Clear();
    store.Clear();
    EXPECT_EQ(AddRecord(store, 3, 9), 0u);
    ASSERT_EQ(store.Close(), Status::Success);
    EXPECT_EQ(ReadFile(directory / "s").size(), 17u + 54 + 8 * 11);
}

TEST(MemoryDataStore, GrowthByStepsKeepsEveryIdValidWhileTheMappingMoves) {
    ScratchDirectory directory;
    MemoryDataStore store(nullptr, 4, 4, 2);
    store.Create(directory / "s", Uuid());
    for (std::uint32_t seed = 0; seed < 4; ++seed) AddRecord(store, 4, seed);
    EXPECT_EQ(store.GetMaxEntries(), 4u);
    AddRecord(store, 4, 4);
    EXPECT_EQ(store.GetMaxEntries(), 6u);
    EXPECT_EQ(ReadFile(directory / "s").size(), 17u + 54 + 6 * 12);

    // Many growth steps, with other mappings made in between so that the mapping has to move.
    std::vector<std::unique_ptr<IFileMappedMemory>> neighbours;
    unsigned char* first = nullptr;
    store.GetEntry(0, first);
    for (std::uint32_t seed = 5; seed < 3000; ++seed) {
        ASSERT_EQ(AddRecord(store, 4, seed), seed);
        if (seed % 100 == 0) {
            neighbours.emplace_back(FileMappedMemoryFactory::GetInstance().Create(
                directory / std::to_string(seed), 4096, false, FileMappedMemoryFactory::ModeCreate, 0));
        }
    }
    unsigned char* moved = nullptr;
    store.GetEntry(0, moved);
    EXPECT_NE(moved, first);
    EXPECT_EQ(store.GetMaxEntries(), 3000u);
    for (std::uint32_t seed = 0; seed < 3000; ++seed) ASSERT_TRUE(Holds(store, seed, 4, seed)) << seed;
}

TEST(MemoryDataStore, TemporaryStoreLeavesNothingAndSavesACompleteCopy) {
    TextOwner owner("first");
    MemoryDataStore store(&owner, 4, 2, 2);
    store.Create();
    EXPECT_TRUE(store.IsTemporary());
    EXPECT_EQ(store.GetFileName(), "");
    const std::string name = File::MakePath(File::GetTemporaryPath(), store.GetUuid().ToString());
    EXPECT_FALSE(File::IsFound(name));
    for (std::uint32_t seed = 1; seed <= 3; ++seed) AddRecord(store, 4, seed);
    owner.text = "later";  // same length: it fits the area sized at construction

    ScratchDirectory directory;
    ASSERT_EQ(store.SaveAs(directory / "copy"), Status::Success);
    AddRecord(store, 4, 4);
    TextOwner reader;
    MemoryDataStore copy(&reader, 4, 2, 2);
    const Uuid uuid = store.GetUuid();
    ASSERT_EQ(copy.Open(directory / "copy", &uuid), Status::Success);
    EXPECT_EQ(reader.readBack, "later");
    EXPECT_EQ(copy.GetCurrentEntries(), 3u);
    EXPECT_TRUE(Holds(copy, 2, 4, 3));
    EXPECT_EQ(copy.SaveAs(directory / "copy"), Status::Invalid);  // never over its own file
    EXPECT_EQ(store.Close(), Status::Success);
    EXPECT_FALSE(File::IsFound(name));
}

TEST(MemoryDataStore, OwnerDataThatNoLongerFitsMakesTheFileUnreadable) {
    ScratchDirectory directory;
    TextOwner owner("short");
    {
        MemoryDataStore store(&owner, 4, 4, 4);
        store.Create(directory / "s", Uuid());
        owner.text = "much longer now";
        EXPECT_EQ(store.Close(), Status::Success);
    }
    MemoryDataStore store(&owner, 4, 4, 4);
    EXPECT_EQ(store.Open(directory / "s", nullptr), Status::Invalid);
}

TEST(MemoryDataStore, ConstructionRefusesWhatCannotBeMeasuredOrMapped) {
    TextOwner failing;
    failing.failSave = true;
    EXPECT_THROW(MemoryDataStore(&failing, 4, 4, 4), DatabaseException);
    EXPECT_THROW(MemoryDataStore(nullptr, 1024, 8 * 1024 * 1024, 0), DatabaseException);
}

}  // namespace
}  // namespace Tavrin::Database
