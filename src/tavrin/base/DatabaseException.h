#pragma once
// The exception of the table library: says what could not be built. Its code indexes a fixed table
// of texts (a number space of its own, not a status); its message names the object concerned.

#include <cstdarg>
#include <cstdint>
#include <string>

#include "tavrin/base/Exception.h"
#include "tavrin/base/Throw.h"

namespace Tavrin::Database {

class DatabaseException : public Tavrin::Exception {
public:
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

    DatabaseException(const char* file, const char* function, std::uint32_t line, std::uint32_t code);
    DatabaseException(const char* file, const char* function, std::uint32_t line, std::uint32_t code,
                      const char* format, ...) __attribute__((format(printf, 6, 7)));
    DatabaseException(const char* file, const char* function, std::uint32_t line, std::uint32_t code,
                      const char* format, std::va_list arguments);
    DatabaseException(const DatabaseException& other) = default;

    ///@{
    /// The code's text, and " - " with the message when there is one.
    std::string ToString() const override;
    std::string ToSiteString() const override;
    const std::string& GetMessage() const noexcept { return message_; }
    ///@}

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
