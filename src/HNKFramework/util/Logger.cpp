#include "Logger.h"

#include "HNKFormat.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <vector>

namespace {

std::atomic<int> g_level{1};

std::mutex& sinkMutex()
{
    static std::mutex m;
    return m;
}

Logger::Sink& sink()
{
    static Logger::Sink s;
    return s;
}

} // namespace

void Logger::put(int level, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const std::string line = HNKFormatV(format, args);
    va_end(args);

    std::lock_guard<std::mutex> lock(sinkMutex());
    if (sink()) {
        sink()(level, line);
        return;
    }
    if (level <= g_level.load())
        std::fprintf(stderr, "%s\n", line.c_str());
}

void Logger::setLevel(int level) { g_level.store(level); }

int Logger::level() { return g_level.load(); }

void Logger::setSink(Sink s)
{
    std::lock_guard<std::mutex> lock(sinkMutex());
    sink() = std::move(s);
}
