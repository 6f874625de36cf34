#include "HNKAssert.h"

#include "Logger.h"

#include <string>

void HNKAssertFailed(const char* expression, const char* file, int line)
{
    Logger::put(1, "[HNK_ASSERT] %s at %s:%d", expression, file, line);
    throw HNKAssertionFailure(std::string("assertion failed: ") + expression + " at " + file + ":" +
                              std::to_string(line));
}
