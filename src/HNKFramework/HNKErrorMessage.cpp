#include "HNKErrorMessage.h"

#include <cstdarg>
#include <cstdio>
#include <vector>

namespace {
thread_local std::string t_message;
}

void setErrorMessage(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    int n = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    std::string text;
    if (n > 0) {
        std::vector<char> buf(static_cast<size_t>(n) + 1);
        std::vsnprintf(buf.data(), buf.size(), format, args);
        text.assign(buf.data(), static_cast<size_t>(n));
    }
    va_end(args);
    t_message = std::move(text);
}

std::string getErrorMessage() { return t_message; }
