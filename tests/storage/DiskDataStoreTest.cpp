#include "tavrin/storage/DiskDataStore.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "base/ScratchDirectory.h"
#include "base/ThrownStatus.h"
#include "tavrin/base/Encoding.h"
#include "tavrin/storage/MemoryDataStore.h"
#include "storage/StoreTestSupport.h"

namespace Tavrin::Database {
namespace {

using Tavrin::Testing::ScratchDirectory;
using Tavrin::Testing::ThrownStatus;
using Testing::MakeRecord;
using Testing::ReadFile;
using Testing::TextOwner;
using Testing::WriteFile;

constexpr std::uint32_t RecordSize = 5;

std::uint32_t AddRecord(DataStore& store, std::uint32_t seed) {
    std::uint32_t id = 0xFFFFFFFF;
    EXPECT_EQ(store.Add(id, MakeRecord(RecordSize, seed).data()), Status::Success);
    return id;
}

StatusCode OpenStatus(const std::string& path, std::uint32_t recordSize = RecordSize, const char* text = "owner") {
    TextOwner owner(text);
    DiskDataStore store(&owner, recordSize, 4, 2, 0);
    return store.Open(path, nullptr);
}

// A closed store of 6 entries with a cache of one record: ids 0 and 2 to 4 used, 1 and 5 free.
void MakeStoreFiles(const std::string& path, const Uuid& uuid) {
    TextOwner owner("owner");
    DiskDataStore store(&owner, RecordSize, 4, 2, 0);
    store.Create(path, uuid);
    for (std::uint32_t seed = 0; seed < 5; ++seed) EXPECT_EQ(AddRecord(store, seed), seed);
    ASSERT_EQ(store.Remove(1), Status::Success);
    ASSERT_EQ(store.Close(), Status::Success);
}

TEST(DiskDataStore, ClosedFilesAreExactlyTheLayoutAndReopenUnchanged) {
    ScratchDirectory directory;
    const std::string path = directory / "t.tab";
    const Uuid uuid;
    MakeStoreFiles(path, uuid);
    const auto control = ReadFile(path);
    const auto records = ReadFile(path + ".data");
    ASSERT_EQ(control.size(), 17u + 70 + 8 * 6);
    EXPECT_EQ(control[0], 1);
    EXPECT_FALSE(Uuid(&control[1], 16) != uuid);
    EXPECT_EQ(control[17], 2);
    const std::uint32_t header[] = {1, 1, 58, 7, RecordSize, 4, 2, 4, 6};
    for (int i = 0; i < 9; ++i) EXPECT_EQ(DecodeU32(&control[18 + 4 * i]), header[i]) << "field " << i;
    EXPECT_EQ(control[54], 2);
    const std::uint32_t extension[] = {65, 70, 0};
    for (int i = 0; i < 3; ++i) EXPECT_EQ(DecodeU32(&control[55 + 4 * i]), extension[i]) << "extension " << i;
    EXPECT_EQ(DecodeI32(&control[67]), 1);  // freeHead
    EXPECT_EQ(DecodeI32(&control[71]), 5);  // freeTail
    EXPECT_EQ(std::string(control.begin() + 77, control.begin() + 82), "owner");
    const unsigned char used[] = {1, 0, 1, 1, 1, 0};
    const std::int32_t next[] = {-1, 5, -1, -1, -1, -1};
    for (std::uint32_t i = 0; i < 6; ++i) {
        const unsigned char* entry = &control[87 + 8 * i];
        EXPECT_EQ(entry[0], used[i]) << i;
        EXPECT_EQ(entry[1] | entry[2] | entry[3], 0) << i;
        EXPECT_EQ(DecodeI32(entry + 4), next[i]) << i;
    }
    ASSERT_EQ(records.size(), 16u + RecordSize * 6);
    EXPECT_FALSE(Uuid(records.data(), 16) != uuid);
    for (const std::uint32_t id : {0u, 2u, 3u, 4u}) {
        EXPECT_EQ(std::memcmp(&records[16 + RecordSize * id], MakeRecord(RecordSize, id).data(), RecordSize), 0) << id;
    }

    // Opening and closing a file closed in order changes nothing in either file.
    {
        TextOwner owner("owner");
        DiskDataStore store(&owner, RecordSize, 4, 2, 0);
        ASSERT_EQ(store.Open(path, &uuid), Status::Success);
        EXPECT_FALSE(store.GetDataUuid() != uuid);
    }
    EXPECT_EQ(ReadFile(path), control);
    EXPECT_EQ(ReadFile(path + ".data"), records);
}

TEST(DiskDataStore, OneSlotCacheWritesBackOnlyWhatTheFileLacks) {
    DiskDataStore store(nullptr, RecordSize, 8, 0, 0);
    store.Create();
    EXPECT_EQ(AddRecord(store, 10), 0u);
    EXPECT_EQ(store.GetRecordWrites(), 0u);
    EXPECT_EQ(AddRecord(store, 11), 1u);  // record 0 leaves the cache for the file
    EXPECT_EQ(store.GetRecordWrites(), 1u);
    ASSERT_EQ(store.Update(1, MakeRecord(RecordSize, 12).data()), Status::Success);
    EXPECT_EQ(store.GetRecordWrites(), 1u);
    std::vector<unsigned char> buffer(RecordSize);
    ASSERT_EQ(store.Read(0, buffer.data()), Status::Success);  // read in; record 1 written back
    EXPECT_EQ(buffer, MakeRecord(RecordSize, 10));
    EXPECT_EQ(store.GetRecordReads(), 1u);
    EXPECT_EQ(store.GetRecordWrites(), 2u);
    ASSERT_EQ(store.Read(0, buffer.data()), Status::Success);
    EXPECT_EQ(store.GetRecordReads(), 1u);
    unsigned char* record = nullptr;
    ASSERT_EQ(store.GetEntry(1, record), Status::Success);  // record 0 is in the file as it is
    EXPECT_EQ(std::memcmp(record, MakeRecord(RecordSize, 12).data(), RecordSize), 0);
    EXPECT_EQ(store.GetRecordReads(), 2u);
    EXPECT_EQ(store.GetRecordWrites(), 2u);
    ASSERT_EQ(store.Remove(1), Status::Success);
    EXPECT_EQ(AddRecord(store, 13), 1u);  // the new record, not the one removed
    ASSERT_EQ(store.Read(1, buffer.data()), Status::Success);
    EXPECT_EQ(buffer, MakeRecord(RecordSize, 13));
}

TEST(DiskDataStore, OpenChecksBothFilesAgainstEachOtherAndTheObject) {
    ScratchDirectory directory;
    const std::string path = directory / "t";
    const Uuid uuid;
    MakeStoreFiles(path, uuid);
    const auto control = ReadFile(path);
    const auto records = ReadFile(path + ".data");
    ASSERT_EQ(OpenStatus(path), Status::Success);
    EXPECT_EQ(OpenStatus(path, RecordSize + 1), Status::DescriptionDiffers);
    EXPECT_EQ(OpenStatus(path, RecordSize, "longer owner"), Status::DescriptionDiffers);
    TextOwner owner("owner");
    MemoryDataStore memory(&owner, RecordSize, 4, 2);
    EXPECT_EQ(memory.Open(path, nullptr), Status::DescriptionDiffers);
    memory.Create(directory / "m", uuid);
    memory.Close();
    DiskDataStore disk(&owner, RecordSize, 4, 2, 0);
    EXPECT_EQ(disk.Open(directory / "m", nullptr), Status::DescriptionDiffers);

    struct Case {
        const char* what;
        std::vector<unsigned char> control;
        std::vector<unsigned char> records;
        StatusCode expected;
    };
    auto patched = [&](std::size_t offset, unsigned char value) {
        auto bytes = control;
        bytes[offset] = value;
        return bytes;
    };
    auto resized = [](std::vector<unsigned char> bytes, std::size_t size) {
        bytes.resize(size);
        return bytes;
    };
    const Case cases[] = {
        {"extension format", patched(54, 3), records, Status::Invalid},
        {"scratch offset", patched(55, 66), records, Status::Invalid},
        {"entry table offset", patched(59, 71), records, Status::Invalid},
        {"header size", patched(26, 57), records, Status::Invalid},
        {"control file one byte longer", resized(control, control.size() + 1), records, Status::Invalid},
        {"record file one byte longer", control, resized(records, records.size() + 1), Status::DescriptionDiffers},
        {"record file one record shorter", control, resized(records, records.size() - RecordSize),
         Status::DescriptionDiffers},
        {"record file without its Uuid", control, resized(records, 15), Status::LengthMismatch},
    };
    for (const Case& damaged : cases) {
        WriteFile(path, damaged.control);
        WriteFile(path + ".data", damaged.records);
        EXPECT_EQ(OpenStatus(path), damaged.expected) << damaged.what;
    }
    WriteFile(path, control);
    ASSERT_EQ(File::Remove(path + ".data"), Status::Success);
    EXPECT_EQ(OpenStatus(path), Status::NotFound);
    auto foreign = records;
    foreign[3] ^= 1;
    WriteFile(path + ".data", foreign);
    DiskDataStore store(&owner, RecordSize, 4, 2, 0);
    EXPECT_EQ(store.Open(path, &uuid), Status::Invalid);  // the record file's Uuid is another
    EXPECT_FALSE(store.IsOpen());
    EXPECT_EQ(store.Open(path, nullptr), Status::Success);
}

TEST(DiskDataStore, BothFilesAreHeldAndAFailedCreateLeavesNoFileItMade) {
    ScratchDirectory directory;
    const std::string path = directory / "t";
    const Uuid uuid;
    {
        File holder;  // another opener of a record file of that name
        ASSERT_EQ(holder.Create(path + ".data", File::WriteAccess, 0), Status::Success);
        ASSERT_EQ(holder.Lock(), Status::Success);
        DiskDataStore store(nullptr, RecordSize, 4, 2, 0);
        EXPECT_EQ(ThrownStatus([&] { store.Create(path, uuid); }), Status::AlreadyOpen);
        EXPECT_FALSE(store.IsOpen());
        EXPECT_FALSE(File::IsFound(path));
        EXPECT_EQ(directory.Count(), 1u);  // the held file alone: no part file stays
    }
    MakeStoreFiles(path, uuid);
    const auto control = ReadFile(path);
    File holder;
    ASSERT_EQ(holder.OpenExclusive(path + ".data", File::ReadAccess), Status::Success);
    EXPECT_EQ(OpenStatus(path), Status::AlreadyOpen);
    DiskDataStore store(nullptr, RecordSize, 4, 2, 0);
    EXPECT_EQ(ThrownStatus([&] { store.Create(path, Uuid()); }), Status::AlreadyOpen);
    EXPECT_EQ(ReadFile(path), control);
    EXPECT_EQ(directory.Count(), 2u);
    holder.Close();
    EXPECT_EQ(OpenStatus(path), Status::Success);
}

TEST(DiskDataStore, SaveWritesTheRecordsBackEvenWhenTheOwnersDataDoesNotFit) {
    ScratchDirectory directory;
    const std::string path = directory / "t";
    TextOwner owner("short");
    {
        DiskDataStore store(&owner, RecordSize, 4, 0, 1);
        store.Create(path, Uuid());
        for (std::uint32_t seed = 0; seed < 4; ++seed) AddRecord(store, seed);
        owner.text = "much longer now";
        EXPECT_EQ(store.Close(), Status::Success);
    }
    const auto records = ReadFile(path + ".data");
    ASSERT_EQ(records.size(), 16u + 4 * RecordSize);
    for (std::uint32_t id = 0; id < 4; ++id) {
        EXPECT_EQ(std::memcmp(&records[16 + RecordSize * id], MakeRecord(RecordSize, id).data(), RecordSize), 0);
    }
    owner.text = "short";
    DiskDataStore store(&owner, RecordSize, 4, 0, 1);
    EXPECT_EQ(store.Open(path, nullptr), Status::Invalid);
}

TEST(DiskDataStore, SizesAreCheckedIn64BitsAndTheCacheSizeIsTheOpeners) {
    EXPECT_EQ(ThrownStatus([] { DiskDataStore(nullptr, 1, 4, 0, 0xFFFFFFFF); }), Status::OutOfMemory);
    EXPECT_EQ(ThrownStatus([] { DiskDataStore(nullptr, 0, 4, 0, 4); }), Status::Invalid);
    EXPECT_EQ(ThrownStatus([] { DiskDataStore(nullptr, 2048, 4, 0, 1); }), Status::Invalid);
    EXPECT_THROW(DiskDataStore(nullptr, 8, 0x40000000, 0, 0), DatabaseException);

    ScratchDirectory directory;
    const std::string path = directory / "t";
    {
        DiskDataStore store(nullptr, RecordSize, 4, 0, 4);
        store.Create(path, Uuid());
    }
    {
        DiskDataStore store(nullptr, RecordSize, 4, 0, 9);
        ASSERT_EQ(store.Open(path, nullptr), Status::Success);
        EXPECT_EQ(store.GetCacheSize(), 9u);
    }
    EXPECT_EQ(DecodeU32(&ReadFile(path)[63]), 9u);
}

TEST(DiskDataStore, TemporaryRecordFileLiesUnderTheTemporaryPathWithoutAName) {
    DiskDataStore store(nullptr, RecordSize, 4, 2, 0);
    store.Create();
    EXPECT_TRUE(store.IsTemporary());
    EXPECT_EQ(store.GetFileName(), "");
    const std::string name = store.GetRecordFileName();
    EXPECT_EQ(name.rfind(File::GetTemporaryPath() + "/", 0), 0u) << name;
    EXPECT_FALSE(File::IsFound(name));
    for (std::uint32_t seed = 0; seed < 9; ++seed) AddRecord(store, seed);
    EXPECT_EQ(store.Sync(), Status::Success);
    EXPECT_EQ(store.Close(), Status::Success);
}

TEST(DiskDataStore, SetUuidWritesBothFiles) {
    ScratchDirectory directory;
    const std::string path = directory / "t";
    DiskDataStore store(nullptr, RecordSize, 4, 2, 0);
    store.Create(path, Uuid());
    const Uuid uuid;
    ASSERT_EQ(store.SetUuid(uuid), Status::Success);
    EXPECT_FALSE(store.GetDataUuid() != uuid);
    ASSERT_EQ(store.Sync(), Status::Success);
    EXPECT_FALSE(Uuid(ReadFile(path + ".data").data(), 16) != uuid);
    EXPECT_FALSE(Uuid(ReadFile(path).data() + 1, 16) != uuid);
    store.Close();
    EXPECT_EQ(ThrownStatus([&] { store.GetDataUuid(); }), Status::NotOpen);
}

TEST(DiskDataStore, AGrowthStepThatItsProcessDidNotFinishIsCompletedAtOpen) {
    ScratchDirectory directory;
    const std::string path = directory / "t";
    MakeStoreFiles(path, Uuid());  // 6 entries
    const auto control = ReadFile(path);
    const auto records = ReadFile(path + ".data");
    auto grown = control;
    grown.resize(control.size() + 2 * 8, 0);
    WriteFile(path, grown);
    for (const std::size_t recordFileEntries : {6u, 7u, 8u}) {
        WriteFile(path, grown);
        auto data = records;
        data.resize(16 + RecordSize * recordFileEntries, 0);
        WriteFile(path + ".data", data);
        TextOwner owner;
        DiskDataStore store(&owner, RecordSize, 4, 2, 0);
        ASSERT_EQ(store.Open(path, nullptr), Status::Success) << recordFileEntries;
        EXPECT_EQ(store.GetMaxEntries(), 8u);
        for (const std::uint32_t expected : {1u, 5u, 6u, 7u}) EXPECT_EQ(AddRecord(store, expected), expected);
        store.Close();
        EXPECT_EQ(ReadFile(path + ".data").size(), 16u + RecordSize * 8);
    }
}

}  // namespace
}  // namespace Tavrin::Database
