#include "tavrin/base/DirectoryWalker.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "tavrin/base/File.h"
#include "base/ScratchDirectory.h"

namespace Tavrin {
namespace {

// Records every call as "f:name" or "d:name"; stops after `limit` calls.
class RecordingWalker : public DirectoryWalker {
public:
    explicit RecordingWalker(std::size_t limit = 1000) : limit_(limit) {}
    bool OnFile(const std::string&, const std::string& name) override { return Record("f:" + name); }
    bool OnDirectory(const std::string&, const std::string& name) override { return Record("d:" + name); }
    std::vector<std::string> calls;

private:
    bool Record(const std::string& call) {
        calls.push_back(call);
        return calls.size() < limit_;
    }
    std::size_t limit_;
};

TEST(DirectoryWalker, VisitsOneLevelInNameOrder) {
    Testing::ScratchDirectory directory;
    RecordingWalker empty;
    EXPECT_EQ(empty.Walk(directory.Path(), ""), Status::Success);
    EXPECT_TRUE(empty.calls.empty());

    for (const char* name : {"b.idx", "a.tab"}) {
        File file;
        ASSERT_EQ(file.Create(directory / name, 3, 1), Status::Success);
    }
    ASSERT_EQ(::mkdir((directory / "sub").c_str(), 0700), 0);
    ASSERT_EQ(::symlink((directory / "sub").c_str(), (directory / "sub/loop").c_str()), 0);
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
    EXPECT_EQ(stopping.Walk(directory / "missing", ""), Status::NotFound);
}

}  // namespace
}  // namespace Tavrin
