#pragma once
// A fresh directory under the temporary path for one test, removed with all it holds at the end.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "tavrin/base/File.h"

namespace Tavrin::Testing {

class ScratchDirectory {
public:
    ScratchDirectory() {
        std::string pattern = Tavrin::File::MakePath(Tavrin::File::GetTemporaryPath(), "tavrin-test-XXXXXX");
        if (::mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "cannot make a scratch directory";
        path_ = pattern;
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;
    ~ScratchDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::string& Path() const { return path_; }
    std::string operator/(const std::string& name) const { return Tavrin::File::MakePath(path_, name); }

    // Number of entries in the directory.
    std::size_t Count() const {
        std::size_t count = 0;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(path_)) ++count;
        return count;
    }

private:
    std::string path_;
};

}  // namespace Tavrin::Testing
