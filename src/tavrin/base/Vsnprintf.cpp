#include "tavrin/base/Vsnprintf.h"

#include <cstdio>

namespace Tavrin {

std::size_t Vsnprintf(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
    if (size == 0) return 0;
    const int written = std::vsnprintf(buffer, size, format, arguments);
    if (written < 0) {
        buffer[0] = '\0';
        return 0;
    }
    const auto length = static_cast<std::size_t>(written);
    return length < size ? length : size - 1;
}

}  // namespace Tavrin
