#pragma once
// The last error message of the calling thread, set printf-style beside a
// false or -1 result and read by the caller that reports it.
#include <string>

// Cold: it is called on the way out of a failure, so the compiler lays the
// paths that lead to it apart from the ones that succeed.
void setErrorMessage(const char* format, ...) __attribute__((format(printf, 1, 2), cold));
std::string getErrorMessage();
