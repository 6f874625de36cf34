#pragma once
// The framework's list of path patterns a backup leaves out, in order.
#include "HNKWriterBase.h"

#include <string>
#include <vector>

class HNKMessageIterator;

class HNKExcludeList {
public:
    const std::vector<std::string>& getPatterns() const { return patterns_; }
    std::vector<std::string>& getPatterns() { return patterns_; }
    void addPattern(const std::string& pattern) { patterns_.push_back(pattern); }

    // Replaces the patterns by the element's pattern children (none is an
    // empty list); -1 when one cannot be read.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNKExcludeList& list) const;
    };
    // One pattern child per pattern; -1 when one cannot be written.
    class Writer : public HNKWriterBase {
    public:
        int operator()(HNKMessageIterator& it, const HNKExcludeList& list) const;
    };

private:
    std::vector<std::string> patterns_;
};
