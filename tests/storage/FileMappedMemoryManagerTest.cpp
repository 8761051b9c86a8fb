#include "tavrin/storage/FileMappedMemoryManager.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tavrin/base/Exception.h"
#include "tavrin/base/File.h"
#include "tavrin/base/FileMappedMemoryFactory.h"
#include "base/ScratchDirectory.h"
#include "base/ThrownStatus.h"
#include "storage/StoreTestSupport.h"

namespace Tavrin::Database {
namespace {

using Tavrin::Testing::ScratchDirectory;
using Testing::ReadFile;

using Tavrin::Testing::ThrownStatus;

TEST(FileMappedMemoryManager, HeaderCleanFlagAndDataArea) {
    ScratchDirectory directory;
    const std::string path = directory / "f";
    const Uuid uuid;
    unsigned char uuidBytes[16];
    uuid.GetBinary(uuidBytes, 16);
    {
        FileMappedMemoryManager manager;
        unsigned char* data = manager.Create(path, 10, uuid);
        std::memcpy(data, "0123456789", 10);
        EXPECT_FALSE(File::IsFound(path));  // under its name only once published
        manager.Publish();
        // The data area starts at file offset 17, whatever the alignment.
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(data) % 4096, 17u);
        const auto open = ReadFile(path);
        ASSERT_EQ(open.size(), 27u);
        EXPECT_EQ(open[0], 0);  // clean flag while open
        EXPECT_EQ(std::memcmp(open.data() + 1, uuidBytes, 16), 0);
        EXPECT_EQ(std::memcmp(open.data() + 17, "0123456789", 10), 0);
        EXPECT_FALSE(manager.GetUuid() != uuid);
    }
    EXPECT_EQ(ReadFile(path)[0], 1);  // the destructor closes in order

    FileMappedMemoryManager manager;
    unsigned char* data = manager.Open(path, uuid);
    EXPECT_EQ(std::memcmp(data, "0123456789", 10), 0);
    EXPECT_EQ(ReadFile(path)[0], 0);
    data = manager.ResizeDataArea(5000);
    EXPECT_EQ(std::memcmp(data, "0123456789", 10), 0);
    EXPECT_EQ(ReadFile(path).size(), 5017u);
    const Uuid other;
    manager.SetUuid(other);
    manager.Close();
    EXPECT_FALSE(manager.IsMapped());
    const auto closed = ReadFile(path);
    EXPECT_EQ(closed[0], 1);
    EXPECT_FALSE(Uuid(closed.data() + 1, 16) != other);
}

TEST(FileMappedMemoryManager, RefusesWhatIsNotItsToOpen) {
    ScratchDirectory directory;
    const std::string path = directory / "f";
    const Uuid uuid;
    { FileMappedMemoryManager manager; manager.Create(path, 4, uuid); manager.Publish(); }

    FileMappedMemoryManager manager;
    EXPECT_EQ(ThrownStatus([&] { manager.Open(path, Uuid()); }), Status::Invalid);
    EXPECT_FALSE(manager.IsMapped());
    EXPECT_EQ(ReadFile(path)[0], 1);  // a refused Uuid leaves the file clean

    unsigned char* data = manager.Open(path);
    data[0] = 'x';
    EXPECT_EQ(ThrownStatus([&] { manager.Open(path); }), Status::AlreadyOpen);
    EXPECT_EQ(ThrownStatus([&] { manager.Create(4); }), Status::AlreadyCreated);
    EXPECT_EQ(ThrownStatus([&] { manager.Create(directory / "g", 4, uuid); }), Status::AlreadyCreated);
    EXPECT_FALSE(File::IsFound(directory / "g"));
    ASSERT_TRUE(manager.IsMapped());  // the failed calls left the mapping alone
    EXPECT_EQ(manager.GetDataArea()[0], 'x');

    // A second manager on a file in use is refused by its lock and writes nothing into it, nor does
    // a create of the same name.
    FileMappedMemoryManager second;
    EXPECT_EQ(ThrownStatus([&] { second.Open(path); }), Status::AlreadyOpen);
    second.Create(path, 4, uuid);
    EXPECT_EQ(ThrownStatus([&] { second.Publish(); }), Status::AlreadyOpen);
    second.Close();
    EXPECT_EQ(ReadFile(path)[0], 0);
    EXPECT_EQ(manager.GetDataArea()[0], 'x');
    EXPECT_EQ(directory.Count(), 1u);

    // A file whose opener died unclean is refused once, and that refusal marks it clean.
    manager.Close();
    std::vector<unsigned char> crashed = ReadFile(path);
    crashed[0] = 0;
    Testing::WriteFile(path, crashed);
    EXPECT_EQ(ThrownStatus([&] { second.Open(path); }), Status::Invalid);
    EXPECT_EQ(second.Open(path)[0], 'x');
    second.Close();

    // Files too short for the header are refused and not written.
    std::vector<unsigned char> shortFile(16, 0);
    for (const std::size_t size : {std::size_t{0}, std::size_t{16}}) {
        shortFile.resize(size);
        Testing::WriteFile(directory / "short", shortFile);
        EXPECT_EQ(ThrownStatus([&] { second.Open(directory / "short"); }), Status::LengthMismatch);
        EXPECT_EQ(ReadFile(directory / "short"), shortFile);
    }
    EXPECT_EQ(ThrownStatus([&] { second.Open(directory / "missing"); }), Status::NotFound);
    EXPECT_FALSE(second.IsMapped());
}

TEST(FileMappedMemoryManager, SaveAsWritesACleanCopyOfAnOpenFile) {
    ScratchDirectory directory;
    FileMappedMemoryManager manager;
    EXPECT_EQ(manager.SaveAs(directory / "copy"), Status::NotOpen);
    const Uuid uuid;
    std::memcpy(manager.Create(directory / "f", 6, uuid), "abcdef", 6);
    manager.Publish();
    ASSERT_EQ(manager.SaveAs(directory / "copy"), Status::Success);
    EXPECT_EQ(manager.SaveAs(directory / "f"), Status::Invalid);  // never over the mapped file itself
    FileMappedMemoryManager copy;
    EXPECT_EQ(std::memcmp(copy.Open(directory / "copy", uuid), "abcdef", 6), 0);
    EXPECT_EQ(ReadFile(directory / "f")[0], 0);
}

// What the flush hook saw: the size of each write-back and the clean flag at that moment.
struct FlushCall {
    std::uint32_t size;
    unsigned char cleanFlag;
};
std::vector<FlushCall> flushCalls;
bool failWholeFileFlush = false;

bool RecordFlush(const void* address, std::uint32_t size) {
    flushCalls.push_back({size, *static_cast<const unsigned char*>(address)});
    return !(failWholeFileFlush && size > FileMappedMemoryManager::HeaderSize);
}

TEST(FileMappedMemoryManager, TheCleanFlagNeverReachesTheDiskBeforeTheData) {
    ScratchDirectory directory;
    const std::string path = directory / "f";
    constexpr std::uint32_t size = 3 * 4096;
    FileMappedMemoryFactory::SetFlushHook(&RecordFlush);
    FileMappedMemoryManager manager;
    manager.Create(path, size, Uuid());
    manager.Publish();
    manager.GetDataArea()[size - 1] = 'd';
    flushCalls.clear();
    manager.Close();
    ASSERT_EQ(flushCalls.size(), 2u);
    EXPECT_EQ(flushCalls[0].size, size + FileMappedMemoryManager::HeaderSize);
    EXPECT_EQ(flushCalls[0].cleanFlag, 0);
    EXPECT_EQ(flushCalls[1].size, FileMappedMemoryManager::HeaderSize);
    EXPECT_EQ(flushCalls[1].cleanFlag, 1);

    // Data that can't be written back leaves the file unclean, so the next open refuses it once.
    manager.Open(path);
    failWholeFileFlush = true;
    EXPECT_EQ(ThrownStatus([&] { manager.Sync(); }), Status::Failure);
    manager.Close();
    failWholeFileFlush = false;
    FileMappedMemoryFactory::SetFlushHook(nullptr);
    EXPECT_EQ(ReadFile(path)[0], 0);
    EXPECT_EQ(ReadFile(path)[size + FileMappedMemoryManager::HeaderSize - 1], 'd');
}

}  // namespace
}  // namespace Tavrin::Database
