#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "base/ChildProcess.h"
#include "tavrin/base/Exception.h"
#include "tavrin/base/File.h"
#include "tavrin/base/FileMappedMemoryFactory.h"
#include "base/ScratchDirectory.h"
#include "base/ThrownStatus.h"
#include "tavrin/base/Uuid.h"

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

// A new named file, put in place under its name.
Mapping MapNew(const std::string& path, std::uint32_t size) {
    Mapping mapping = Map(path, size, Create);
    mapping->Commit();
    return mapping;
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
    Mapping mapping = MapNew(path, 17);
    std::vector<Mapping> neighbours;  // mappings made in between keep it from always growing in place
    const void* firstAddress = mapping->GetAddress();
    static_cast<unsigned char*>(mapping->GetAddress())[16] = 0xAB;
    std::uint32_t size = 17;
    for (std::uint32_t step = 1; step <= 40; ++step) {
        neighbours.push_back(MapNew(directory / std::to_string(step), 4096));
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
        const char* grown = static_cast<const char*>(mapping->Resize(8192));
        EXPECT_EQ(directory.Count(), 0u);
        // Growth keeps what was written and adds zero bytes, as a file's growth does.
        EXPECT_EQ(grown[0], 1);
        EXPECT_EQ(std::count(grown + 1, grown + 8192, 0), 8191);
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
    Mapping named = MapNew(directory / "named", 8);
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
        Mapping mapping = MapNew(path, 4096);
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

std::string Contents(const std::string& path) {
    Mapping mapping = Map(path, 0, Open);
    return std::string(static_cast<const char*>(mapping->GetAddress()), mapping->GetSize());
}

void Fill(const Mapping& mapping, const std::string& text) {
    text.copy(static_cast<char*>(mapping->GetAddress()), mapping->GetSize());
}

TEST(MappedMemory, ANamedFileHasOneOpenerAtATime) {
    ScratchDirectory directory;
    const std::string path = directory / "held";
    Mapping holder = MapNew(path, 4);
    Fill(holder, "live");
    // A second open or a replacement, in this process or another, is refused and changes nothing.
    EXPECT_EQ(ThrownStatus([&] { Map(path, 0, Open); }), Status::AlreadyOpen);
    Mapping replacement = Map(path, 4, Create);
    EXPECT_EQ(ThrownStatus([&] { replacement->Commit(); }), Status::AlreadyOpen);
    replacement.reset();
    EXPECT_EQ(Testing::RunInChild([&] { return ThrownStatus([&] { Map(path, 0, Open); }); }), Status::AlreadyOpen);
    { File other; ASSERT_EQ(other.Create(directory / "other", File::WriteAccess, 0), Status::Success); }
    EXPECT_EQ(File::Copy(directory / "other", path, true), Status::AlreadyOpen);
    EXPECT_EQ(directory.Count(), 2u);  // the held file and the copy's source: no part file is left
    EXPECT_EQ(std::string(static_cast<const char*>(holder->GetAddress()), 4), "live");
    holder.reset();
    EXPECT_EQ(Contents(path), "live");
}

TEST(MappedMemory, ANewFileTakesItsNameOnlyWhenComplete) {
    ScratchDirectory directory;
    const std::string path = directory / "f";
    Fill(MapNew(path, 3), "old");
    {
        Mapping abandoned = Map(path, 3, Create);
        Fill(abandoned, "bad");
        EXPECT_EQ(Contents(path), "old");
        EXPECT_EQ(directory.Count(), 2u);  // the name and a part file
    }
    EXPECT_EQ(directory.Count(), 1u);  // never committed: the part file went with the mapping
    EXPECT_EQ(Contents(path), "old");

    // Part files that killed creations left go with the next successful one, unless a live creation
    // still holds its own.
    const std::string leftover = path + "." + Uuid().ToString() + ".part";
    { File file; ASSERT_EQ(file.Create(leftover, File::WriteAccess, 0), Status::Success); }
    Mapping pending = Map(path, 3, Create);
    Mapping replacement = Map(path, 3, Create);
    Fill(replacement, "new");
    replacement->Commit();
    EXPECT_FALSE(File::IsFound(leftover));
    EXPECT_EQ(directory.Count(), 2u);  // the name and the pending creation's part file
    replacement.reset();
    EXPECT_EQ(Contents(path), "new");
    EXPECT_TRUE(File::IsPartFileOf(leftover.substr(directory.Path().size() + 1), "f"));
    EXPECT_FALSE(File::IsPartFileOf("f.part", "f"));
    EXPECT_FALSE(File::IsPartFileOf("g." + Uuid().ToString() + ".part", "f"));
}

}  // namespace
}  // namespace Tavrin
