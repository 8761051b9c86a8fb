#pragma once

#include <cstdarg>
#include <cstddef>

namespace Tavrin {

/// Formats like vsnprintf into `buffer`, never writing more than `size` bytes (terminator included;
/// longer output is cut). Returns the length written, without the terminator.
std::size_t Vsnprintf(char* buffer, std::size_t size, const char* format, std::va_list arguments);

}  // namespace Tavrin
