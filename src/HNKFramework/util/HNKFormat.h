#pragma once
// printf-style formatting into a std::string, shared by the logger and the
// per-thread error message.
#include <cstdarg>
#include <string>

std::string HNKFormatV(const char* format, va_list args);
