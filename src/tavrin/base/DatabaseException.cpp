#include "tavrin/base/DatabaseException.h"

#include <array>
#include <new>

#include "tavrin/base/Vsnprintf.h"

namespace Tavrin::Database {

namespace {
constexpr std::array<const char*, 14> kCodeTexts = {
    "failed to allocate data store",
    "failed to allocate data store cache",
    "failed to allocate database",
    "failed to allocate field list",
    "failed to allocate index",
    "failed to allocate key",
    "failed to allocate memory manager",
    "failed to allocate record",
    "failed to allocate table",
    "failed to create file",
    "not created",
    "not supported",
    "invalid parameter",
    "already created",
};
}  // namespace

DatabaseException::DatabaseException(const char* file, const char* function, std::uint32_t line,
                                     std::uint32_t code)
    : Exception(file, function, line, code) {}

DatabaseException::DatabaseException(const char* file, const char* function, std::uint32_t line,
                                     std::uint32_t code, const char* format, ...)
    : Exception(file, function, line, code) {
    std::va_list arguments;
    va_start(arguments, format);
    char buffer[MessageBufferSize];
    const std::size_t length = Vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    message_.assign(buffer, length);
}

DatabaseException::DatabaseException(const char* file, const char* function, std::uint32_t line,
                                     std::uint32_t code, const char* format, std::va_list arguments)
    : Exception(file, function, line, code) {
    char buffer[MessageBufferSize];
    const std::size_t length = Vsnprintf(buffer, sizeof buffer, format, arguments);
    message_.assign(buffer, length);
}

const char* DatabaseException::CodeToString(std::uint32_t code) noexcept {
    return code < kCodeTexts.size() ? kCodeTexts[code] : "unknown error";
}

std::string DatabaseException::ToString() const {
    std::string text = CodeToString(GetCode());
    if (!message_.empty()) {
        text += " - ";
        text += message_;
    }
    return text;
}

std::string DatabaseException::ToSiteString() const { return ToString() + SiteSuffix(); }

void ThrowDatabase(Tavrin::ThrowSite site, std::uint32_t code) {
    throw DatabaseException(site.GetFile(), site.GetFunction(), site.GetLine(), code);
}

void ThrowDatabase(Tavrin::ThrowSite site, std::uint32_t code, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    DatabaseException exception(site.GetFile(), site.GetFunction(), site.GetLine(), code, format,
                                arguments);
    va_end(arguments);
    throw exception;
}

DatabaseException* NewDatabaseException(Tavrin::ThrowSite site, std::uint32_t code, const char* format,
                                        ...) noexcept {
    std::va_list arguments;
    va_start(arguments, format);
    DatabaseException* exception = nullptr;
    try {
        exception = new (std::nothrow) DatabaseException(site.GetFile(), site.GetFunction(),
                                                         site.GetLine(), code, format, arguments);
    } catch (...) {
        exception = nullptr;  // the message string could not be allocated
    }
    va_end(arguments);
    return exception;
}

}  // namespace Tavrin::Database
