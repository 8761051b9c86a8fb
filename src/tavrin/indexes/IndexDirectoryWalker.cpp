#include "tavrin/indexes/IndexDirectoryWalker.h"

#include <algorithm>
#include <cstring>

#include <boost/regex.hpp>

namespace Tavrin::Database {

struct IndexDirectoryWalker::Pattern {
    explicit Pattern(const std::string& text) : expression(text) {}
    boost::regex expression;
};

IndexDirectoryWalker::IndexDirectoryWalker(const std::string& pattern, std::vector<IndexSpecification>& specifications)
    : pattern_(std::make_unique<Pattern>(pattern)),
      specifications_(specifications),
      firstAppended_(specifications.size()) {}

IndexDirectoryWalker::~IndexDirectoryWalker() = default;

std::string IndexDirectoryWalker::MakePattern(const std::string& tableName, const std::string& suffixPattern,
                                              bool escape) {
    std::string pattern;
    for (const char c : tableName) {
        if (escape && c != '\0' && std::strchr(".[]{}()\\*+?|^$", c) != nullptr) pattern += '\\';
        pattern += c == ' ' ? '_' : c;
    }
    return pattern + "-" + ".+" + suffixPattern;
}

// The part file of an index file being made ("<name>.<uuid>.part") never matches: the pattern must
// match the whole name, which then ends in ".part".
bool IndexDirectoryWalker::OnFile(const std::string& directory, const std::string& name) {
    if (!boost::regex_match(name, pattern_->expression)) return true;
    try {
        const std::string path = Tavrin::File::MakePath(directory, name);
        std::int64_t size = 0;
        if (Tavrin::File::GetSize(path, size) != Status::Success) return true;
        Tavrin::File file;
        if (file.Open(path, Tavrin::File::ReadAccess, 0) != Status::Success) return true;
        IndexSpecification specification;
        if (ReadSpecification(file, size, specification) != Status::Success) return true;
        specifications_.push_back(specification);
        fileNames_.push_back(name);
    } catch (const std::exception&) {
        // A file that could not be read is passed over.
    }
    return true;
}

StatusCode IndexDirectoryWalker::ReadAt(Tavrin::File& file, std::int64_t offset, std::int64_t count,
                                        std::vector<unsigned char>& bytes) {
    if (count < 0 || count > MaxSpecificationSize) return Status::Invalid;
    bytes.resize(static_cast<std::size_t>(count));
    const StatusCode status = file.SetPosition(offset, Tavrin::File::FromStart);
    return status != Status::Success ? status : file.Read(bytes.data(), static_cast<std::uint32_t>(count));
}

StatusCode IndexDirectoryWalker::Run(const std::string& directory, const std::string& tableName, Scope scope,
                                     FileNameRule rule) {
    const StatusCode status = Walk(directory, "");
    if (status != Status::Success || scope == Scope::Pattern) return status;
    // Another table's file can match the pattern ("a-b-x.rb.idx" for table "a"): it is kept only if
    // this table's name rule gives exactly its name for the index stored inside.
    std::size_t kept = firstAppended_;
    for (std::size_t i = firstAppended_; i < specifications_.size(); ++i) {
        const std::string& fileName = fileNames_[i - firstAppended_];
        if (rule("", tableName, specifications_[i].GetName()) != fileName) continue;
        specifications_[kept] = specifications_[i];
        fileNames_[kept - firstAppended_] = fileName;
        ++kept;
    }
    specifications_.resize(kept);
    fileNames_.resize(kept - firstAppended_);
    return Status::Success;
}

}  // namespace Tavrin::Database
