#include "HNKErrorMessage.h"

#include "HNKFormat.h"

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
    t_message = HNKFormatV(format, args);
    va_end(args);
}

std::string getErrorMessage() { return t_message; }
