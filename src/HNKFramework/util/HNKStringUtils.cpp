#include "HNKStringUtils.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>

std::string toLower(const std::string& s)
{
    std::string out(s);
    for (char& c : out)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

std::string longToStr(long value) { return std::to_string(value); }

bool strToLonglong(const std::string& s, long long& out)
{
    if (s.empty())
        return false;
    const char* begin = s.c_str();
    char* end = nullptr;
    errno = 0;
    long long v = std::strtoll(begin, &end, 10);
    if (end == begin || *end != '\0' || errno == ERANGE)
        return false;
    out = v;
    return true;
}

const std::string& getTempDir()
{
    static const std::string dir = [] {
        const char* env = std::getenv("TMPDIR");
        std::string d = (env && *env) ? env : "/tmp";
        if (d.back() != '/')
            d += '/';
        return d;
    }();
    return dir;
}
