#include "tavrin/base/File.h"

#include <gtest/gtest.h>

#include <string>

#include "base/ScratchDirectory.h"

namespace Tavrin {
namespace {

using Testing::ScratchDirectory;

std::string ReadAll(const std::string& path) {
    std::string contents(4096, '\0');
    File file;
    std::uint32_t count = 0;
    if (file.Open(path, File::ReadAccess, 0) != Status::Success) return "<missing>";
    file.Read(contents.data(), 4096, count);
    return contents.substr(0, count);
}

void WriteAll(const std::string& path, const std::string& contents) {
    File file;
    ASSERT_EQ(file.Create(path, 2, 0), Status::Success);
    ASSERT_EQ(file.Write(contents.data(), static_cast<std::uint32_t>(contents.size())), Status::Success);
}

TEST(File, PositionedReadWriteAndTheirFailures) {
    ScratchDirectory directory;
    File file;
    EXPECT_EQ(file.Open(directory / "missing", 3, 1), Status::NotFound);
    ASSERT_EQ(file.Create(directory / "data", 3, 1), Status::Success);
    EXPECT_EQ(file.Create(directory / "data", 3, 1), Status::AlreadyOpen);
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
    // Positional reads and writes leave the position where it was (here at the end, 10).
    ASSERT_EQ(file.WriteAt("XY", 2, 1), Status::Success);
    ASSERT_EQ(file.ReadAt(buffer, 4, 0), Status::Success);
    EXPECT_EQ(std::string(buffer, 4), "0XY3");
    EXPECT_EQ(file.ReadAt(buffer, 4, 8), Status::LengthMismatch);
    ASSERT_EQ(file.Read(buffer, 16, count), Status::Success);
    EXPECT_EQ(count, 0u);

    ASSERT_EQ(file.SetSize(3), Status::Success);
    ASSERT_EQ(file.Close(), Status::Success);
    EXPECT_EQ(ReadAll(directory / "data"), "0XY");
    EXPECT_EQ(file.Read(buffer, 1), Status::NotOpen);
    EXPECT_EQ(file.Create(directory / "x", 0, 0), Status::Invalid);
}

TEST(File, CopyAndRenameReplaceOnlyWhenAllowedAndComplete) {
    ScratchDirectory directory;
    WriteAll(directory / "source", "new");
    WriteAll(directory / "target", "old contents");
    EXPECT_EQ(File::Copy(directory / "source", directory / "target", false), Status::AlreadyCreated);
    EXPECT_EQ(ReadAll(directory / "target"), "old contents");
    ASSERT_EQ(File::Copy(directory / "source", directory / "target", true), Status::Success);
    EXPECT_EQ(ReadAll(directory / "target"), "new");
    // A failed copy leaves the target alone and no partial file behind.
    EXPECT_EQ(File::Copy(directory / "missing", directory / "target", true), Status::NotFound);
    EXPECT_EQ(ReadAll(directory / "target"), "new");
    EXPECT_EQ(directory.Count(), 2u);

    EXPECT_EQ(File::Rename(directory / "source", directory / "target", false), Status::AlreadyCreated);
    WriteAll(directory / "source", "renamed");
    ASSERT_EQ(File::Rename(directory / "source", directory / "target", true), Status::Success);
    EXPECT_FALSE(File::IsFound(directory / "source"));
    EXPECT_EQ(ReadAll(directory / "target"), "renamed");
    EXPECT_TRUE(File::IsSameFile(directory / "target", directory.Path() + "/./target"));
    ASSERT_EQ(File::Remove(directory / "target"), Status::Success);
    EXPECT_EQ(File::Remove(directory / "target"), Status::NotFound);
    EXPECT_EQ(File::MakePath("dir/", "name"), "dir/name");
}

}  // namespace
}  // namespace Tavrin
