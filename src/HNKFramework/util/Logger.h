#pragma once
// Framework logger. Level 1 is an error, 3 information; a message is written
// when its level is at or below the current level (default 1).
#include <functional>
#include <string>

class Logger {
public:
    using Sink = std::function<void(int level, const std::string& line)>;

    static void put(int level, const char* format, ...) __attribute__((format(printf, 2, 3)));

    static void setLevel(int level);
    static int level();

    // Replaces standard error as the destination; an empty sink restores it.
    // Every message reaches the sink whatever the level, so tests can read it.
    static void setSink(Sink sink);
};
