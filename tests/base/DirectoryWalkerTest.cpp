#include "base/DirectoryWalker.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "base/File.h"
#include "base/ScratchDirectory.h"

namespace Tavrin {
namespace {

using Testing::ScratchDirectory;

// Records every call as "f:name" or "d:name"; stops after `limit` calls.
class RecordingWalker : public DirectoryWalker {
public:
    explicit RecordingWalker(std::size_t limit = 1000) : limit_(limit) {}
    bool OnFile(const std::string& directory, const std::string& name) override {
        EXPECT_TRUE(File::IsFound(File::MakePath(directory, name)));
        calls.push_back("f:" + name);
        return calls.size() < limit_;
    }
    bool OnDirectory(const std::string& directory, const std::string& name) override {
        DirectoryWalker::OnDirectory(directory, name);
        calls.push_back("d:" + name);
        return calls.size() < limit_;
    }
    std::vector<std::string> calls;

private:
    std::size_t limit_;
};

void Touch(const std::string& path) {
    File file;
    ASSERT_EQ(file.Create(path, 3, 1), Status::Success);
}

TEST(DirectoryWalker, VisitsOneLevelInNameOrder) {
    ScratchDirectory directory;
    RecordingWalker empty;
    EXPECT_EQ(empty.Walk(directory.Path(), ""), Status::Success);
    EXPECT_TRUE(empty.calls.empty());

    Touch(directory / "b.idx");
    Touch(directory / "a.tab");
    ASSERT_EQ(::mkdir((directory / "sub").c_str(), 0700), 0);
    Touch(directory / "sub/inner");
    ASSERT_EQ(::symlink((directory / "a.tab").c_str(), (directory / "link").c_str()), 0);
    ASSERT_EQ(::symlink((directory / "gone").c_str(), (directory / "dangling").c_str()), 0);

    RecordingWalker walker;
    EXPECT_EQ(walker.Walk(directory.Path(), ""), Status::Success);
    EXPECT_EQ(walker.calls, (std::vector<std::string>{"f:a.tab", "f:b.idx", "f:link", "d:sub"}));

    RecordingWalker one;
    EXPECT_EQ(one.Walk(directory.Path(), "b.idx"), Status::Success);
    EXPECT_EQ(one.calls, (std::vector<std::string>{"f:b.idx"}));

    RecordingWalker stopping(2);
    EXPECT_EQ(stopping.Walk(directory.Path(), ""), Status::Success);
    EXPECT_EQ(stopping.calls.size(), 2u);
}

TEST(DirectoryWalker, MissingDirectoryIsNotFound) {
    ScratchDirectory directory;
    RecordingWalker walker;
    EXPECT_EQ(walker.Walk(directory / "missing", ""), Status::NotFound);
    Touch(directory / "file");
    EXPECT_EQ(walker.Walk(directory / "file", ""), Status::NotFound);
    EXPECT_TRUE(walker.calls.empty());
}

}  // namespace
}  // namespace Tavrin
