#pragma once
// Framework assertion for programming errors (empty IDs, duplicate type
// registrations, over-long keys). Data errors are status codes, never this.
#include <stdexcept>

class HNKAssertionFailure : public std::logic_error {
public:
    explicit HNKAssertionFailure(const std::string& what) : std::logic_error(what) {}
};

// Logs the failed expression at level 1, then throws HNKAssertionFailure.
[[noreturn]] void HNKAssertFailed(const char* expression, const char* file, int line);

#define HNK_ASSERT(condition) \
    ((condition) ? static_cast<void>(0) : HNKAssertFailed(#condition, __FILE__, __LINE__))
