#pragma once
// The target host, target path and operation flags that the migration and
// the backup options both carry, under the same element IDs, read and
// written the same way.
#include "HNKMessageIterator.h"

#include <string>

namespace HNR {

struct HNRTargetValues {
    std::string host;  // element ID 1687
    std::string path;  // element ID 1962
    int flags = 0;     // element ID 1704

    // Path, host, flags, in that order; -1 at the first missing one, with
    // those before it read.
    int read(const HNKMessageIterator& it)
    {
        return it.getValue(kPath, path) != 0 || it.getValue(kHost, host) != 0 || it.getValue(kFlags, flags) != 0
                   ? -1
                   : 0;
    }
    // Path, host, flags; outcomes ignored on purpose: the records' writers
    // never fail on them, only the framework part decides.
    void write(HNKMessageIterator& it) const
    {
        it.putValue(kPath, path);
        it.putValue(kHost, host);
        it.putValue(kFlags, flags);
    }

private:
    enum : int { kHost = 1687, kFlags = 1704, kPath = 1962 };
};

} // namespace HNR

// The records' accessors of their HNRTargetValues `member`.
#define HNR_TARGET_VALUES_ACCESSORS(member)                                     \
    const std::string& getTargetHost() const { return member.host; }         \
    void setTargetHost(const std::string& host) { member.host = host; }      \
    const std::string& getTargetPath() const { return member.path; }         \
    void setTargetPath(const std::string& path) { member.path = path; }      \
    int getOperationFlags() const { return member.flags; }                   \
    void setOperationFlags(int flags) { member.flags = flags; }
