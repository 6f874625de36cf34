#pragma once
// The framework's three-way comparisons: negative, 0 or positive (always
// -1, 0 or 1 here). Containers compare lexicographically, element by
// element, a shorter prefix first. Records compare through their own
// `compare(other)` member, which is virtual for polymorphic records.
#include "HNKOptionalProperty.h"

#include <boost/shared_ptr.hpp>

#include <set>
#include <string>
#include <vector>

inline int compare(int a, int b) { return a < b ? -1 : (b < a ? 1 : 0); }
inline int compare(unsigned a, unsigned b) { return a < b ? -1 : (b < a ? 1 : 0); }
inline int compare(long a, long b) { return a < b ? -1 : (b < a ? 1 : 0); }
inline int compare(unsigned long a, unsigned long b) { return a < b ? -1 : (b < a ? 1 : 0); }
inline int compare(long long a, long long b) { return a < b ? -1 : (b < a ? 1 : 0); }
inline int compare(unsigned long long a, unsigned long long b) { return a < b ? -1 : (b < a ? 1 : 0); }
inline int compare(bool a, bool b) { return compare(static_cast<int>(a), static_cast<int>(b)); }
inline int compare(const std::string& a, const std::string& b)
{
    int c = a.compare(b);
    return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

// A record: a.compare(b), normalised to -1, 0, 1.
template <class T>
auto compare(const T& a, const T& b) -> decltype(static_cast<int>(a.compare(b)))
{
    int c = a.compare(b);
    return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

template <class T>
int compare(const std::set<T>& a, const std::set<T>& b);
template <class T>
int compare(const std::vector<T>& a, const std::vector<T>& b);
template <class T>
int compare(const boost::shared_ptr<T>& a, const boost::shared_ptr<T>& b);
template <class T>
int compare(const HNKOptionalProperty<T>& a, const HNKOptionalProperty<T>& b);

namespace hnk_detail {
template <class It>
int compareRanges(It a, It aEnd, It b, It bEnd)
{
    for (; a != aEnd && b != bEnd; ++a, ++b) {
        int c = compare(*a, *b);
        if (c != 0)
            return c;
    }
    if (a == aEnd)
        return b == bEnd ? 0 : -1;
    return 1;
}
} // namespace hnk_detail

template <class T>
int compare(const std::set<T>& a, const std::set<T>& b)
{
    return hnk_detail::compareRanges(a.begin(), a.end(), b.begin(), b.end());
}

template <class T>
int compare(const std::vector<T>& a, const std::vector<T>& b)
{
    return hnk_detail::compareRanges(a.begin(), a.end(), b.begin(), b.end());
}

// The pointees through their (virtual) compare; a null pointer sorts first.
template <class T>
int compare(const boost::shared_ptr<T>& a, const boost::shared_ptr<T>& b)
{
    if (!a || !b)
        return a ? 1 : (b ? -1 : 0);
    return compare(*a, *b);
}

// Unspecified sorts before specified; two unspecified values are equal
// whatever they hold.
template <class T>
int compare(const HNKOptionalProperty<T>& a, const HNKOptionalProperty<T>& b)
{
    if (!a.isSpecified())
        return b.isSpecified() ? -1 : 0;
    if (!b.isSpecified())
        return 1;
    return compare(a.get(), b.get());
}
