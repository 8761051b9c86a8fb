#pragma once
// The exception of the table library: says what could not be built. Its code indexes a fixed table
// of texts (a number space of its own, not a status); its message names the object concerned.

#include <cstdarg>
#include <cstdint>
#include <string>

#include "tavrin/base/Exception.h"
#include "tavrin/base/Throw.h"

namespace Tavrin::Database {

/// Thrown when a table, store, index or other object of the library can't be built or set up: a
/// code from Code and an optional formatted message that names the object concerned.
class DatabaseException : public Tavrin::Exception {
public:
    /// What could not be done; each code has a fixed text (CodeToString). Not a status.
    enum Code : std::uint32_t {
        AllocateDataStore = 0,
        AllocateDataStoreCache = 1,
        AllocateDatabase = 2,
        AllocateFieldList = 3,
        AllocateIndex = 4,
        AllocateKey = 5,
        AllocateMemoryManager = 6,
        AllocateRecord = 7,
        AllocateTable = 8,
        CreateFile = 9,
        NotCreated = 10,
        NotSupported = 11,
        InvalidParameter = 12,
        AlreadyCreated = 13,
    };

    /// The formatted message is cut to fit a 512-byte buffer.
    static constexpr std::size_t MessageBufferSize = 512;

    /// An exception of `code` thrown at the given site, with no message.
    DatabaseException(const char* file, const char* function, std::uint32_t line, std::uint32_t code);
    /// An exception of `code` thrown at the given site, with a message formatted by printf rules from
    /// `format` and the arguments after it, cut at MessageBufferSize - 1 characters.
    DatabaseException(const char* file, const char* function, std::uint32_t line, std::uint32_t code,
                      const char* format, ...) __attribute__((format(printf, 6, 7)));
    /// As the constructor above, with the arguments of the message already in `arguments` (which
    /// the caller starts and ends).
    DatabaseException(const char* file, const char* function, std::uint32_t line, std::uint32_t code,
                      const char* format, std::va_list arguments);
    /// A copy that shares the chain of `other`.
    DatabaseException(const DatabaseException& other) = default;

    /// The code's text, and " - " with the message when there is one; no throw site.
    std::string ToString() const override;
    /// ToString() followed by " at <function> (<file>:<line>)".
    std::string ToSiteString() const override;
    /// The formatted message; empty when the exception was made without one.
    const std::string& GetMessage() const noexcept { return message_; }

    /// The text of a code; "unknown error" beyond the table.
    static const char* CodeToString(std::uint32_t code) noexcept;

private:
    std::string message_;
};

/// Throws a DatabaseException with `code` and no message.
[[noreturn]] void ThrowDatabase(Tavrin::ThrowSite site, std::uint32_t code);
/// Throws a DatabaseException with `code` and a message formatted from `format` (cut at 511 chars).
[[noreturn]] void ThrowDatabase(Tavrin::ThrowSite site, std::uint32_t code, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/// Allocates a DatabaseException without throwing, for Exception::AddException on the way out of a
/// factory; null if memory is short (AddException accepts null).
DatabaseException* NewDatabaseException(Tavrin::ThrowSite site, std::uint32_t code, const char* format,
                                        ...) noexcept __attribute__((format(printf, 3, 4)));

}  // namespace Tavrin::Database
