#pragma once
// The one way the library throws. Every throw site names its source file, the full name of the
// operation ("Tavrin::Database::Table::Open") and its line. The caller writes only the operation
// name; file and line come from the call site through std::source_location:
//
//     ThrowStatus("Tavrin::Database::MemoryDataStore::Open", Status::Invalid);
//     ThrowDatabase("Tavrin::Database::ManagedFieldList::ManagedFieldList",
//                   DatabaseException::InvalidParameter, "repeated field id <%u> at field <%s>", id, name);

#include <cstdint>
#include <cstring>
#include <source_location>
#include <string_view>

#include "tavrin/base/Exception.h"
#include "tavrin/base/Status.h"

namespace Tavrin {

class ThrowSite {
public:
    /// Implicit on purpose: a string literal at a call site becomes a ThrowSite there, and the
    /// default argument captures that call site's file and line.
    ThrowSite(const char* function,
              std::source_location location = std::source_location::current()) noexcept
        : function_(function), file_(ShortFile(location.file_name())), line_(location.line()) {}

    const char* GetFunction() const noexcept { return function_; }
    const char* GetFile() const noexcept { return file_; }
    std::uint32_t GetLine() const noexcept { return line_; }

private:
    /// The path below the source root ("records/FieldList.cpp"), not the build machine's path.
    static const char* ShortFile(const char* path) noexcept {
        const std::string_view view(path);
        const auto position = view.rfind("src/");
        return position == std::string_view::npos ? path : path + position + 4;
    }

    const char* function_;
    const char* file_;
    std::uint32_t line_;
};

/// Throws a StatusCodeException carrying `status`.
[[noreturn]] void ThrowStatus(ThrowSite site, StatusCode status);

/// Builds an exception of type E at `site`, for callers that chain it before throwing.
template <class E, class... Args>
E MakeException(ThrowSite site, Args&&... args) {
    return E(site.GetFile(), site.GetFunction(), site.GetLine(), std::forward<Args>(args)...);
}

}  // namespace Tavrin
