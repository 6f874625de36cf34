#pragma once
// The last error message of the calling thread, set printf-style beside a
// false or -1 result and read by the caller that reports it.
#include <string>

void setErrorMessage(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string getErrorMessage();
