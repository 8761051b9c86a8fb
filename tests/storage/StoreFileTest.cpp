// Opening store files that are damaged, foreign, left open by a dead process, or that ran out of room.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "base/ChildProcess.h"
#include "tavrin/base/Encoding.h"
#include "tavrin/base/File.h"
#include "base/ScratchDirectory.h"
#include "tavrin/storage/DataStore.h"
#include "tavrin/storage/MemoryDataStore.h"
#include "storage/StoreTestSupport.h"

namespace Tavrin::Database {
namespace {

using Tavrin::Testing::ScratchDirectory;
using Testing::ReadFile;
using Testing::TextOwner;
using Testing::WriteFile;

constexpr std::uint32_t RecordSize = 12;

// A record that carries its own check: a seed and bytes derived from it.
std::vector<unsigned char> CheckedRecord(std::uint32_t seed) {
    std::vector<unsigned char> record(RecordSize);
    EncodeU32(record.data(), seed);
    for (std::uint32_t i = 4; i < RecordSize; ++i) record[i] = static_cast<unsigned char>(seed * 13 + i);
    return record;
}

bool IsIntact(const unsigned char* record) {
    return std::memcmp(record, CheckedRecord(DecodeU32(record)).data(), RecordSize) == 0;
}

// A closed store file with some records added and removed: 7 added, ids 2 and 5 removed.
std::vector<unsigned char> MakeStoreFile(const std::string& path) {
    TextOwner owner;
    MemoryDataStore store(&owner, RecordSize, 3, 2);
    store.Create(path, Uuid());
    std::uint32_t id = 0;
    for (std::uint32_t seed = 0; seed < 7; ++seed) store.Add(id, CheckedRecord(seed).data());
    store.Remove(2);
    store.Remove(5);
    store.Close();
    return ReadFile(path);
}

StatusCode OpenStatus(const std::string& path, std::uint32_t recordSize = RecordSize, const char* text = "owner") {
    TextOwner owner(text);
    MemoryDataStore store(&owner, recordSize, 3, 2);
    return store.Open(path, nullptr);
}

// Every operation on an opened (possibly damaged) store stays inside the mapping.
void Exercise(MemoryDataStore& store) {
    std::uint32_t id = 0;
    unsigned char* record = nullptr;
    int steps = 0;
    for (StatusCode status = store.GetFirst(id, record); status == Status::Success && steps < 100;
         status = store.GetNext(id, record), ++steps) {
        record[0] ^= 0;
    }
    const auto bytes = CheckedRecord(99);
    for (int i = 0; i < 6; ++i) store.Add(id, bytes.data());
    for (std::uint32_t candidate = 0; candidate < store.GetMaxEntries() + 2; ++candidate) store.Remove(candidate);
    for (int i = 0; i < 3; ++i) store.Add(id, bytes.data());
    store.Clear();
    store.Add(id, bytes.data());
}

TEST(StoreFile, ForeignOrMismatchedFilesGiveTheirStatus) {
    ScratchDirectory directory;
    const std::string path = directory / "s";
    const auto original = MakeStoreFile(path);
    ASSERT_EQ(OpenStatus(path), Status::Success);
    EXPECT_EQ(OpenStatus(directory / "missing"), Status::NotFound);
    EXPECT_EQ(OpenStatus(path, RecordSize + 1), Status::DescriptionDiffers);
    EXPECT_EQ(OpenStatus(path, RecordSize, "longer owner"), Status::DescriptionDiffers);

    struct Patch {
        std::size_t offset;
        unsigned char value;
        StatusCode expected;
    };
    const Patch patches[] = {
        {17, 3, Status::Invalid},              // format of the common header
        {18, 1, Status::DescriptionDiffers},   // store type: a disk store
        {22, 0, Status::Invalid},              // valid
        {54, 1, Status::WrongVersion},         // format of the extension
        {59, RecordSize + 9, Status::Invalid}, // entry stride
        {63, 40, Status::Invalid},             // free list head beyond the entries
    };
    for (const Patch& patch : patches) {
        auto bytes = original;
        bytes[patch.offset] = patch.value;
        WriteFile(path, bytes);
        EXPECT_EQ(OpenStatus(path), patch.expected) << "offset " << patch.offset;
    }

    WriteFile(path, original);
    TextOwner refusing;
    refusing.openStatus = Status::DescriptionDiffers;
    MemoryDataStore store(&refusing, RecordSize, 3, 2);
    EXPECT_EQ(store.Open(path, nullptr), Status::DescriptionDiffers);
    EXPECT_FALSE(store.IsOpen());
    EXPECT_EQ(store.Open(path, nullptr), Status::DescriptionDiffers);  // the failed open left the file clean
    const Uuid stranger;
    EXPECT_EQ(store.Open(path, &stranger), Status::Invalid);
}

TEST(StoreFile, EveryTruncationAndByteDamageIsRefusedOrHarmless) {
    ScratchDirectory directory;
    const std::string path = directory / "s";
    const auto original = MakeStoreFile(path);
    for (std::size_t length = 0; length < original.size(); ++length) {
        WriteFile(path, std::vector<unsigned char>(original.begin(), original.begin() + length));
        EXPECT_EQ(OpenStatus(path), length < 17 ? Status::LengthMismatch : Status::Invalid) << length;
        // The plain store needs only the common header and the user data (17 + 54 + 7 bytes).
        DataStore plain;
        EXPECT_EQ(plain.Open(path, nullptr) == Status::Success, length >= 78) << length;
    }
    for (std::size_t offset = 0; offset < original.size(); ++offset) {
        for (const unsigned char value : {0x00, 0x80, 0xFF}) {
            auto bytes = original;
            bytes[offset] = value;
            WriteFile(path, bytes);
            TextOwner owner;
            MemoryDataStore store(&owner, RecordSize, 3, 2);
            if (store.Open(path, nullptr) == Status::Success) Exercise(store);
            DataStore plain;
            if (plain.Open(path, nullptr) == Status::Success) {
                unsigned char* userData = nullptr;
                std::uint32_t size = 0;
                plain.GetUserData(userData, size);
                MessageValidator validator(userData, size);
                std::string text;
                validator.ValidateString(&text, nullptr, nullptr);
            }
        }
    }
}

TEST(StoreFile, PlainStoreReadsAnyStoreFilesUserData) {
    ScratchDirectory directory;
    const std::string path = directory / "s";
    MakeStoreFile(path);
    DataStore plain;
    unsigned char* address = nullptr;
    std::uint32_t size = 99;
    plain.GetUserData(address, size);
    EXPECT_EQ(size, 0u);
    ASSERT_EQ(plain.Open(path, nullptr), Status::Success);
    EXPECT_EQ(plain.Open(path, nullptr), Status::AlreadyOpen);
    plain.GetUserData(address, size);
    ASSERT_EQ(size, 7u);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(address) + 2, 5), "owner");

    std::uint32_t id = 0;
    unsigned char* record = nullptr;
    EXPECT_THROW(plain.Add(id, address), StatusCodeException);
    EXPECT_THROW(plain.Create(), StatusCodeException);
    EXPECT_EQ(plain.GetEntry(0, record), Status::NotAvailable);
    EXPECT_EQ(plain.SaveAs(directory / "copy"), Status::NotAvailable);
    const Uuid uuid;
    ASSERT_EQ(plain.SetUuid(uuid), Status::Success);
    EXPECT_EQ(plain.Close(), Status::Success);
    EXPECT_EQ(plain.SetUuid(uuid), Status::NotOpen);

    // The store opens with the Uuid that the plain store wrote, and not with another.
    TextOwner owner;
    MemoryDataStore store(&owner, RecordSize, 3, 2);
    const Uuid other;
    EXPECT_EQ(store.Open(path, &other), Status::Invalid);
    ASSERT_EQ(store.Open(path, &uuid), Status::Success);
    EXPECT_FALSE(store.GetUuid() != uuid);
}

TEST(StoreFile, ZeroEntriesLeftByAnInterruptedGrowthBecomeFree) {
    ScratchDirectory directory;
    const std::string path = directory / "s";
    auto bytes = MakeStoreFile(path);  // 7 entries, 2 and 5 free
    const std::size_t stride = RecordSize + 8;
    bytes.resize(bytes.size() + 2 * stride, 0);
    WriteFile(path, bytes);
    {
        TextOwner owner;
        MemoryDataStore store(&owner, RecordSize, 3, 10);  // another growth step than the file's: it applies
        ASSERT_EQ(store.Open(path, nullptr), Status::Success);
        EXPECT_EQ(store.GetMaxEntries(), 9u);
        std::uint32_t id = 0;
        const auto record = CheckedRecord(60);
        for (const std::uint32_t expected : {5u, 2u, 7u, 8u, 9u}) {
            ASSERT_EQ(store.Add(id, record.data()), Status::Success);
            EXPECT_EQ(id, expected);
        }
        EXPECT_EQ(store.GetMaxEntries(), 19u);
    }
    EXPECT_EQ(OpenStatus(path), Status::Success);

    // Anything but whole entries of zeros is a damaged file.
    bytes.back() = 1;
    WriteFile(path, bytes);
    EXPECT_EQ(OpenStatus(path), Status::Invalid);
    bytes.resize(bytes.size() - 1);
    WriteFile(path, bytes);
    EXPECT_EQ(OpenStatus(path), Status::Invalid);
}

// What a file left by a killed process holds, read straight from its bytes.
struct Bookkeeping {
    std::uint32_t used = 0;
    std::uint32_t free = 0;
    std::uint32_t max = 0;
    bool sound = true;
};

Bookkeeping Inspect(const std::vector<unsigned char>& bytes) {
    constexpr std::size_t dataArea = 17;
    Bookkeeping result;
    result.max = DecodeU32(&bytes[dataArea + 33]);
    const std::uint32_t first = DecodeU32(&bytes[dataArea + 38]);
    const std::uint32_t stride = DecodeU32(&bytes[dataArea + 42]);
    auto entry = [&](std::uint32_t id) { return &bytes[dataArea + first + static_cast<std::size_t>(id) * stride]; };
    for (std::uint32_t id = 0; id < result.max; ++id) {
        if (entry(id)[0] & 1) {
            ++result.used;
            result.sound = result.sound && IsIntact(entry(id) + 8);
        }
    }
    std::set<std::int32_t> seen;
    for (std::int32_t id = DecodeI32(&bytes[dataArea + 46]); id != -1; id = DecodeI32(entry(id) + 4)) {
        if (id < 0 || static_cast<std::uint32_t>(id) >= result.max || !seen.insert(id).second || (entry(id)[0] & 1)) {
            result.sound = false;  // out of range, a cycle, or an entry both used and free
            break;
        }
        ++result.free;
    }
    return result;
}

TEST(StoreFile, KillAtAnyMomentLeavesAConsistentStore) {
    ScratchDirectory directory;
    std::mt19937 random(12345);
    for (int round = 0; round < 12; ++round) {
        const std::string path = directory / ("s" + std::to_string(round));
        const std::uint32_t grow = round % 2 == 0 ? 0 : 5;
        int ready[2];
        ASSERT_EQ(::pipe(ready), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            TextOwner owner;
            auto* store = new MemoryDataStore(&owner, RecordSize, 64, grow);
            store->Create(path, Uuid());
            if (::write(ready[1], "r", 1) != 1) ::_exit(1);
            std::mt19937 steps(round);
            for (std::uint32_t seed = 0;; ++seed) {
                std::uint32_t id = 0;
                if (steps() % 3 != 0) {
                    store->Add(id, CheckedRecord(seed).data());
                } else {
                    store->Remove(steps() % (store->GetMaxEntries() + 1));
                }
                if (grow != 0 && store->GetMaxEntries() > 4000) store->Clear();
            }
        }
        ASSERT_GT(child, 0);
        char byte = 0;
        ASSERT_EQ(::read(ready[0], &byte, 1), 1);
        ::close(ready[0]);
        ::close(ready[1]);
        ::usleep(2000 + random() % 20000);
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);

        const auto bytes = ReadFile(path);
        ASSERT_GT(bytes.size(), 17u);
        const Bookkeeping found = Inspect(bytes);
        EXPECT_TRUE(found.sound) << "round " << round;
        if (grow == 0) {
            EXPECT_GE(found.used + found.free + 1, found.max) << "round " << round;  // one leak at most
        }

        TextOwner owner;
        MemoryDataStore store(&owner, RecordSize, 64, grow);
        EXPECT_EQ(store.Open(path, nullptr), Status::Invalid);
        ASSERT_EQ(store.Open(path, nullptr), Status::Success) << "round " << round;
        EXPECT_LE(found.used, store.GetCurrentEntries() + 1);
        EXPECT_GE(found.used + 1, store.GetCurrentEntries());
        Exercise(store);
    }
}

TEST(StoreFile, FullDiskMakesAddAnswer40AndLosesNothing) {
    ScratchDirectory directory;
    const std::string path = directory / "s";
    const int code = Tavrin::Testing::RunInChild([&]() -> int {
        Tavrin::Testing::LimitFileSize(32 * 1024);
        MemoryDataStore tooBig(nullptr, 1024, 64, 0);
        try {
            tooBig.Create(directory / "big", Uuid());
            return 1;
        } catch (const StatusCodeException& e) {
            if (e.GetCode() != Status::StoreFull) return 2;
        }
        TextOwner owner;
        MemoryDataStore store(&owner, RecordSize, 16, 16);
        store.Create(path, Uuid());
        std::uint32_t id = 0;
        std::uint32_t added = 0;
        StatusCode status = Status::Success;
        while ((status = store.Add(id, CheckedRecord(added).data())) == Status::Success) ++added;
        if (status != Status::StoreFull || added < 100) return 3;
        if (store.Add(id, CheckedRecord(0).data()) != Status::StoreFull) return 4;  // tries again, still no room
        if (store.Remove(7) != Status::Success || store.Add(id, CheckedRecord(7).data()) != Status::Success) return 5;
        return store.Close() == Status::Success ? 0 : 6;
    });
    ASSERT_EQ(code, 0);
    EXPECT_FALSE(File::IsFound(directory / "big"));
    TextOwner owner;
    MemoryDataStore store(&owner, RecordSize, 16, 16);
    ASSERT_EQ(store.Open(path, nullptr), Status::Success);
    EXPECT_GE(store.GetCurrentEntries(), 100u);
    EXPECT_EQ(store.GetCurrentEntries(), store.GetMaxEntries());
    for (std::uint32_t id = 0; id < store.GetMaxEntries(); ++id) {
        unsigned char* record = nullptr;
        ASSERT_EQ(store.GetEntry(id, record), Status::Success);
        EXPECT_EQ(DecodeU32(record), id);
        EXPECT_TRUE(IsIntact(record));
    }
}

}  // namespace
}  // namespace Tavrin::Database
