#pragma once
// IndexDirectoryWalker: what the directory walkers of the hash and tree indexes share. A table keeps
// no list of its indexes; each index file carries its IndexSpecification, and a walk of the
// directory finds them by name.
//
// A walk only reads. It opens each matching file read-only, without its lock and without mapping
// it, reads the file's header and the bytes that hold the index description, and never writes a
// byte: not even the clean flag, which would erase the sign that a process died with the file
// open. So a walk takes the index description from any file that holds a readable one, clean or not,
// and may run beside a process that holds the files; the index's own Open decides later whether a
// file can be used, and the table rebuilds an index whose file can't.
//
// A walk stays in its directory: subdirectories (a backup kept below the table's directory, for
// one) are never entered.

#include <cstdint>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "tavrin/base/DirectoryWalker.h"
#include "tavrin/base/File.h"
#include "tavrin/base/Status.h"
#include "tavrin/schema/IndexSpecification.h"

namespace Tavrin::Database {

/// The frame of HashIndexDirectoryWalker and RedBlackTreeIndexDirectoryWalker: matches each file
/// name of one directory as a whole against a regular expression (Boost.Regex in its default
/// syntax) and appends the IndexSpecification that a matching file holds to the caller's vector.
/// How the index description lies in the file is the derived class's part. Not thread-safe.
class IndexDirectoryWalker : public Tavrin::DirectoryWalker {
public:
    /// Which of the files that a walk finds give their specification.
    enum class Scope {
        /// Every file whose name matches the pattern of the table's name, which enters the pattern
        /// unescaped: table "a" also finds the files of table "a-b", and "a.b" those of "axb".
        Pattern,
        /// Only the table's own files: the name must be exactly the one that the index's file name
        /// rule gives for the table and the index name stored inside. What a table opens or copies.
        OwnFiles
    };

    /// The names of a table's index files: directory, table name, index name.
    using FileNameRule = std::string (*)(const std::string&, const std::string&, const std::string&);

    /// Destroys the walker; the vector stays the caller's.
    ~IndexDirectoryWalker() override;

    /// For a name that matches the pattern as a whole, reads the file's specification (see the
    /// derived class) and appends it; a file that can't be read or holds none is passed over.
    /// Always true, so the walk goes on.
    bool OnFile(const std::string& directory, const std::string& name) final;

    /// The names of the files whose specifications this walker appended, in the same order.
    const std::vector<std::string>& GetFileNames() const noexcept { return fileNames_; }

    /// The pattern of a table's index files: the table name with blanks written "_" (with its
    /// characters that mean something to regular expressions escaped when `escape`), "-", ".+",
    /// then `suffixPattern` (such as "\.rb\.idx").
    static std::string MakePattern(const std::string& tableName, const std::string& suffixPattern, bool escape);

protected:
    /// A walker for names that match `pattern` as a whole, appending to `specifications`, which must
    /// outlive the walk. Throws boost::regex_error for a pattern that is no regular expression.
    IndexDirectoryWalker(const std::string& pattern, std::vector<IndexSpecification>& specifications);

    /// Reads the index description of the file open in `file` (read-only, `size` bytes); 0 when one was
    /// read. The file is positioned at its start.
    virtual StatusCode ReadSpecification(Tavrin::File& file, std::int64_t size,
                                         IndexSpecification& specification) = 0;

    /// Reads `count` bytes at file offset `offset` into `bytes`; 23 for a count above
    /// MaxSpecificationSize, else the status of the read (22 at the end of the file).
    static StatusCode ReadAt(Tavrin::File& file, std::int64_t offset, std::int64_t count,
                             std::vector<unsigned char>& bytes);

    /// Walks `directory`; with Scope::OwnFiles then takes back what the walk appended from a file
    /// that is not named exactly as `rule` gives for `tableName` and the stored index name. The
    /// status of the walk (6 for a missing directory).
    StatusCode Run(const std::string& directory, const std::string& tableName, Scope scope, FileNameRule rule);

    /// Makes a `Walker` for the files of `tableName` whose names end as `suffixPattern` says (such
    /// as "\.rb\.idx"; the table name is escaped for Scope::OwnFiles) and runs it (Run). 23 for a
    /// pattern that is no regular expression, 41 when memory runs out.
    template <class Walker>
    static StatusCode FindFiles(const std::string& directory, const std::string& tableName, Scope scope,
                                const std::string& suffixPattern, FileNameRule rule,
                                std::vector<IndexSpecification>& specifications) noexcept {
        try {
            Walker walker(MakePattern(tableName, suffixPattern, scope == Scope::OwnFiles), specifications);
            return walker.Run(directory, tableName, scope, rule);
        } catch (const std::bad_alloc&) {
            return Status::OutOfMemory;
        } catch (const std::exception&) {
            return Status::Invalid;
        }
    }

    /// No specification is longer: a name of at most 65535 bytes, 18 bytes around it, and 8 bytes
    /// for each key field, of which a table has fewer than 65536. A longer area is not read.
    static constexpr std::int64_t MaxSpecificationSize = 1 << 20;

private:
    struct Pattern;

    std::unique_ptr<Pattern> pattern_;
    std::vector<IndexSpecification>& specifications_;
    std::size_t firstAppended_;
    std::vector<std::string> fileNames_;
};

}  // namespace Tavrin::Database
