#include "HNKFormat.h"

#include <cstdio>
#include <vector>

std::string HNKFormatV(const char* format, va_list args)
{
    va_list copy;
    va_copy(copy, args);
    int n = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (n <= 0)
        return std::string();
    std::vector<char> buf(static_cast<size_t>(n) + 1);
    std::vsnprintf(buf.data(), buf.size(), format, args);
    return std::string(buf.data(), static_cast<size_t>(n));
}
