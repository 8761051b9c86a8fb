#include "tavrin/indexes/HashIndexDirectoryWalker.h"

#include <exception>

#include <boost/regex.hpp>

#include "tavrin/base/File.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/storage/FileMappedMemoryManager.h"

namespace Tavrin::Database {

namespace {

// No specification is longer: a name of at most 65535 bytes, 18 bytes around it, and 8 bytes for
// each key field, of which a table has fewer than 65536. A longer file is not read into memory.
constexpr std::int64_t MaxSpecificationSize = 1 << 20;

}  // namespace

struct HashIndexDirectoryWalker::Pattern {
    explicit Pattern(const std::string& text) : expression(text) {}
    boost::regex expression;
};

HashIndexDirectoryWalker::HashIndexDirectoryWalker(const std::string& pattern,
                                                   std::vector<IndexSpecification>& specifications)
    : pattern_(std::make_unique<Pattern>(pattern)), specifications_(specifications) {}

HashIndexDirectoryWalker::~HashIndexDirectoryWalker() = default;

// The part file of a description file being made ("<name>.<uuid>.part") never matches: the
// pattern must match the whole name, which then ends in ".part".
bool HashIndexDirectoryWalker::OnFile(const std::string& directory, const std::string& name) {
    if (!boost::regex_match(name, pattern_->expression)) return true;
    try {
        const std::string path = File::MakePath(directory, name);
        std::int64_t size = 0;
        if (File::GetSize(path, size) != Status::Success) return true;
        const std::int64_t dataSize = size - FileMappedMemoryManager::HeaderSize;
        if (dataSize <= 0 || dataSize > MaxSpecificationSize) return true;
        File file;
        if (file.Open(path, File::ReadAccess, 0) != Status::Success) return true;
        std::vector<unsigned char> bytes(static_cast<std::size_t>(size));
        if (file.Read(bytes.data(), static_cast<std::uint32_t>(size)) != Status::Success) return true;
        MessageValidator validator(bytes.data() + FileMappedMemoryManager::HeaderSize,
                                   static_cast<std::uint32_t>(dataSize));
        IndexSpecification specification;
        if (specification.Deserialize(validator) == Status::Success) specifications_.push_back(specification);
    } catch (const std::exception&) {
        // A file that could not be read is passed over.
    }
    return true;
}

}  // namespace Tavrin::Database
