#include "base/File.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstring>
#include <string>

#include "base/ScratchDirectory.h"

namespace Tavrin {
namespace {

using Testing::ScratchDirectory;

std::string ReadAll(const std::string& path) {
    std::int64_t size = 0;
    if (File::GetSize(path, size) != Status::Success) return "<missing>";
    std::string contents(static_cast<std::size_t>(size), '\0');
    File file;
    if (file.Open(path, File::ReadAccess, 0) != Status::Success) return "<unreadable>";
    if (file.Read(contents.data(), static_cast<std::uint32_t>(size)) != Status::Success) return "<short>";
    return contents;
}

void WriteAll(const std::string& path, const std::string& contents) {
    File file;
    ASSERT_EQ(file.Create(path, 2, 0), Status::Success);
    ASSERT_EQ(file.Write(contents.data(), static_cast<std::uint32_t>(contents.size())), Status::Success);
}

TEST(File, PositionedReadAndWrite) {
    ScratchDirectory directory;
    const std::string path = directory / "data";
    File file;
    ASSERT_EQ(file.Create(path, 3, 1), Status::Success);
    EXPECT_TRUE(file.IsOpen());
    EXPECT_EQ(file.Create(path, 3, 1), Status::AlreadyOpen);
    ASSERT_EQ(file.Write("0123456789", 10), Status::Success);
    ASSERT_EQ(file.SetPosition(4, File::FromStart), Status::Success);
    ASSERT_EQ(file.Write("ab", 2), Status::Success);

    char buffer[16] = {};
    ASSERT_EQ(file.SetPosition(2, File::FromStart), Status::Success);
    ASSERT_EQ(file.Read(buffer, 6), Status::Success);
    EXPECT_EQ(std::string(buffer, 6), "23ab67");

    // The exact read fails at the end of the file; the counting read tells how much there was.
    EXPECT_EQ(file.Read(buffer, 4), Status::LengthMismatch);
    ASSERT_EQ(file.SetPosition(8, File::FromStart), Status::Success);
    std::uint32_t count = 99;
    ASSERT_EQ(file.Read(buffer, 16, count), Status::Success);
    EXPECT_EQ(count, 2u);
    ASSERT_EQ(file.Read(buffer, 16, count), Status::Success);
    EXPECT_EQ(count, 0u);

    ASSERT_EQ(file.SetSize(3), Status::Success);
    ASSERT_EQ(file.Close(), Status::Success);
    EXPECT_EQ(ReadAll(path), "012");
    EXPECT_EQ(file.Read(buffer, 1), Status::NotOpen);
    EXPECT_EQ(file.Write(buffer, 1), Status::NotOpen);
    EXPECT_EQ(file.Close(), Status::Success);
}

TEST(File, FailuresAreStatuses) {
    ScratchDirectory directory;
    File file;
    EXPECT_EQ(file.Open(directory / "missing", 3, 1), Status::NotFound);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.Create(directory / "x", 0, 0), Status::Invalid);
    EXPECT_EQ(file.Create(directory / "no/such/dir", 3, 1), Status::NotFound);
    std::int64_t size = 7;
    EXPECT_EQ(File::GetSize(directory / "missing", size), Status::NotFound);
    EXPECT_EQ(File::Remove(directory / "missing"), Status::NotFound);

    // A file opened for writing only cannot be read.
    ASSERT_EQ(file.Create(directory / "w", 2, 0), Status::Success);
    char byte = 0;
    EXPECT_NE(file.Read(&byte, 1), Status::Success);
}

TEST(File, CopyReplacesTheTargetOnlyWhenComplete) {
    ScratchDirectory directory;
    WriteAll(directory / "source", "new contents");
    WriteAll(directory / "target", "old contents that are longer");

    EXPECT_EQ(File::Copy(directory / "source", directory / "target", false), Status::AlreadyCreated);
    EXPECT_EQ(ReadAll(directory / "target"), "old contents that are longer");

    ASSERT_EQ(File::Copy(directory / "source", directory / "target", true), Status::Success);
    EXPECT_EQ(ReadAll(directory / "target"), "new contents");
    ASSERT_EQ(File::Copy(directory / "source", directory / "fresh", false), Status::Success);
    EXPECT_EQ(ReadAll(directory / "fresh"), "new contents");

    // A copy from nothing leaves the target alone and no partial file behind.
    EXPECT_EQ(File::Copy(directory / "missing", directory / "target", true), Status::NotFound);
    EXPECT_EQ(ReadAll(directory / "target"), "new contents");
    EXPECT_EQ(directory.Count(), 3u);

    // A copy larger than the copy buffer arrives whole.
    std::string large(200000, '\0');
    for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<char>(i * 7);
    WriteAll(directory / "large", large);
    ASSERT_EQ(File::Copy(directory / "large", directory / "large2", true), Status::Success);
    EXPECT_EQ(ReadAll(directory / "large2"), large);
}

TEST(File, RenameRemoveAndQueries) {
    ScratchDirectory directory;
    WriteAll(directory / "a", "aaa");
    WriteAll(directory / "b", "b");
    EXPECT_TRUE(File::IsFound(directory / "a"));
    std::int64_t size = 0;
    ASSERT_EQ(File::GetSize(directory / "a", size), Status::Success);
    EXPECT_EQ(size, 3);

    EXPECT_EQ(File::Rename(directory / "a", directory / "b", false), Status::AlreadyCreated);
    EXPECT_EQ(ReadAll(directory / "b"), "b");
    ASSERT_EQ(File::Rename(directory / "a", directory / "b", true), Status::Success);
    EXPECT_FALSE(File::IsFound(directory / "a"));
    EXPECT_EQ(ReadAll(directory / "b"), "aaa");

    EXPECT_TRUE(File::IsSameFile(directory / "b", directory.Path() + "/./b"));
    WriteAll(directory / "c", "aaa");
    EXPECT_FALSE(File::IsSameFile(directory / "b", directory / "c"));
    EXPECT_FALSE(File::IsSameFile(directory / "b", directory / "missing"));

    ASSERT_EQ(File::Remove(directory / "b"), Status::Success);
    EXPECT_FALSE(File::IsFound(directory / "b"));

    EXPECT_EQ(File::MakePath("dir", "name"), "dir/name");
    EXPECT_EQ(File::MakePath("dir/", "name"), "dir/name");
    EXPECT_EQ(File::MakePath("", "name"), "name");
    EXPECT_EQ(File::GetEndOfLine(), "\n");
    struct stat information {};
    ASSERT_EQ(::stat(File::GetTemporaryPath().c_str(), &information), 0);
    EXPECT_TRUE(S_ISDIR(information.st_mode));
}

}  // namespace
}  // namespace Tavrin
