#pragma once
// Small string and environment services of the framework.
#include <string>

std::string toLower(const std::string& s);
std::string longToStr(long value);
// Parses a whole decimal number (leading blanks and sign allowed); false on
// anything else or on overflow, out untouched.
bool strToLonglong(const std::string& s, long long& out);
// $TMPDIR (default /tmp) with a trailing '/', read once per process.
const std::string& getTempDir();
