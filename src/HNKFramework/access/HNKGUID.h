#pragma once
// The framework's 128-bit globally unique identifier.
#include "HNKWriterBase.h"

#include <cstdint>
#include <string>

class HNKMessageIterator;

class HNKGUID {
public:
    // The null GUID (all bits zero).
    HNKGUID() = default;
    // Built from the high and the low 64 bits, in that order.
    HNKGUID(int64_t high, int64_t low) : high_(high), low_(low) {}

    int64_t getHigh() const { return high_; }
    int64_t getLow() const { return low_; }

    bool isNull() const { return high_ == 0 && low_ == 0; }

    // Three-way: the halves compare as unsigned numbers, high first, so the
    // order is that of the text form.
    int compare(const HNKGUID& other) const;

    // Canonical text: 8-4-4-4-12 lower-case hex digits, high half first.
    std::string toString() const;
    // Accepts the canonical form in either case; false on anything else,
    // with this GUID left unchanged.
    bool fromString(const std::string& text);

    // The element's text in canonical form; -1 (GUID unchanged) when it is
    // missing or malformed.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNKGUID& guid) const;
    };
    // Writes the canonical text as the element's value; stamps no type.
    class Writer : public HNKWriterBase {
    public:
        int operator()(HNKMessageIterator& it, const HNKGUID& guid) const;
    };

private:
    int64_t high_ = 0;
    int64_t low_ = 0;
};

inline bool operator==(const HNKGUID& a, const HNKGUID& b) { return a.compare(b) == 0; }
inline bool operator!=(const HNKGUID& a, const HNKGUID& b) { return a.compare(b) != 0; }
inline bool operator<(const HNKGUID& a, const HNKGUID& b) { return a.compare(b) < 0; }
inline bool operator>(const HNKGUID& a, const HNKGUID& b) { return a.compare(b) > 0; }
inline bool operator<=(const HNKGUID& a, const HNKGUID& b) { return a.compare(b) <= 0; }
inline bool operator>=(const HNKGUID& a, const HNKGUID& b) { return a.compare(b) >= 0; }
