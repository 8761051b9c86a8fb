#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "base/ChildProcess.h"
#include "base/Exception.h"
#include "base/File.h"
#include "base/FileMappedMemoryFactory.h"
#include "base/ScratchDirectory.h"
#include "base/ThrownStatus.h"

namespace Tavrin {
namespace {

using Testing::ScratchDirectory;
using Mapping = std::unique_ptr<IFileMappedMemory>;

constexpr std::uint32_t Create = FileMappedMemoryFactory::ModeCreate;
constexpr std::uint32_t Open = FileMappedMemoryFactory::ModeOpen;
constexpr std::uint32_t Temporary = FileMappedMemoryFactory::ModeCreateTemporary;

Mapping Map(const std::string& path, std::uint32_t size, std::uint32_t mode) {
    return Mapping(FileMappedMemoryFactory::GetInstance().Create(path, size, false, mode, 0));
}

using Testing::ThrownStatus;

std::int64_t SizeOf(const std::string& path) {
    std::int64_t size = -1;
    File::GetSize(path, size);
    return size;
}

TEST(MappedMemory, ResizeKeepsContentsWhereverTheMappingMoves) {
    ScratchDirectory directory;
    const std::string path = directory / "m";
    Mapping mapping = Map(path, 17, Create);
    std::vector<Mapping> neighbours;  // mappings made in between keep it from always growing in place
    const void* firstAddress = mapping->GetAddress();
    static_cast<unsigned char*>(mapping->GetAddress())[16] = 0xAB;
    std::uint32_t size = 17;
    for (std::uint32_t step = 1; step <= 40; ++step) {
        neighbours.push_back(Map(directory / std::to_string(step), 4096, Create));
        const std::uint32_t grown = size + 4096 * step + 3;
        auto* bytes = static_cast<unsigned char*>(mapping->Resize(grown));
        ASSERT_EQ(mapping->GetSize(), grown);
        ASSERT_EQ(bytes[16], 0xAB);
        ASSERT_EQ(bytes[grown - 1], 0);
        bytes[grown - 1] = 0xCD;
        size = grown;
    }
    EXPECT_NE(mapping->GetAddress(), firstAddress);
    EXPECT_EQ(SizeOf(path), size);
    EXPECT_EQ(ThrownStatus([&] { mapping->Resize(size - 1); }), Status::Invalid);
    mapping.reset();
    EXPECT_EQ(static_cast<unsigned char*>(Map(path, 0, Open)->GetAddress())[size - 1], 0xCD);
}

TEST(MappedMemory, TemporaryFileIsExclusivePrivateAndLeavesNothing) {
    ScratchDirectory directory;
    const std::string path = directory / "t";
    {
        Mapping mapping = Map(path, 64, Temporary);
        static_cast<char*>(mapping->GetAddress())[0] = 1;
        EXPECT_EQ(directory.Count(), 0u);  // gone from the directory while still mapped
        mapping->Resize(8192);
        EXPECT_EQ(directory.Count(), 0u);
    }
    EXPECT_EQ(directory.Count(), 0u);

    // An existing name is never taken over by a temporary mapping.
    { File existing; ASSERT_EQ(existing.Create(path, 3, 1), Status::Success); }
    EXPECT_EQ(ThrownStatus([&] { Map(path, 64, Temporary); }), Status::AlreadyCreated);
    EXPECT_TRUE(File::IsFound(path));
}

// The permission bits of the open, already unlinked file that was made under `path`.
int ModeOfDeletedFile(const std::string& path) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const std::string target = std::filesystem::read_symlink(entry.path(), error).string();
        if (error || target.rfind(path, 0) != 0) continue;
        struct stat information {};
        if (::stat(entry.path().c_str(), &information) != 0) return -1;
        return static_cast<int>(information.st_mode & 07777);
    }
    return -1;
}

TEST(MappedMemory, FilesAreMadeWithTheirModes) {
    ScratchDirectory directory;
    const mode_t previous = ::umask(0);
    Mapping temporary = Map(directory / "t", 64, Temporary);
    Mapping named = Map(directory / "named", 8, Create);
    ::umask(previous);
    EXPECT_EQ(ModeOfDeletedFile(directory / "t"), 0600);
    struct stat information {};
    ASSERT_EQ(::stat((directory / "named").c_str(), &information), 0);
    EXPECT_EQ(information.st_mode & 0777, 0644u);
}

TEST(MappedMemory, FailuresAreExceptionsAndAnEmptyFileMaps) {
    ScratchDirectory directory;
    EXPECT_EQ(ThrownStatus([&] { Map(directory / "missing", 0, Open); }), Status::NotFound);
    EXPECT_EQ(ThrownStatus([&] { Map(directory / "x", 10, 5); }), Status::Invalid);
    { File empty; ASSERT_EQ(empty.Create(directory / "empty", 3, 1), Status::Success); }
    Mapping mapping = Map(directory / "empty", 0, Open);
    EXPECT_EQ(mapping->GetAddress(), nullptr);
    static_cast<char*>(mapping->Resize(10))[9] = 'z';
    EXPECT_EQ(SizeOf(directory / "empty"), 10);
}

TEST(MappedMemory, NoRoomIsAnExceptionNotACrash) {
    ScratchDirectory directory;
    const std::string path = directory / "m";
    const int code = Testing::RunInChild([&] {
        Testing::LimitFileSize(64 * 1024);
        if (ThrownStatus([&] { Map(directory / "big", 128 * 1024, Create); }) != Status::StoreFull) return 1;
        if (File::IsFound(directory / "big")) return 2;  // a failed create leaves no file
        Mapping mapping = Map(path, 4096, Create);
        static_cast<char*>(mapping->GetAddress())[100] = 'k';
        if (ThrownStatus([&] { mapping->Resize(1024 * 1024); }) != Status::StoreFull) return 3;
        // File and mapping are as they were, and still usable.
        if (mapping->GetSize() != 4096 || SizeOf(path) != 4096) return 4;
        auto* bytes = static_cast<char*>(mapping->Resize(32 * 1024));
        if (bytes[100] != 'k') return 5;
        bytes[32 * 1024 - 1] = 'e';
        return 0;
    });
    EXPECT_EQ(code, 0);
    EXPECT_EQ(SizeOf(path), 32 * 1024);
}

}  // namespace
}  // namespace Tavrin
