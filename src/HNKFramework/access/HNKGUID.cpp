#include "HNKGUID.h"

#include "HNKMessageIterator.h"

namespace {

// Positions of the dashes in the 36-character canonical form.
bool isDashPosition(size_t i) { return i == 8 || i == 13 || i == 18 || i == 23; }

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

int compareUnsigned(int64_t a, int64_t b) {
    const uint64_t ua = static_cast<uint64_t>(a);
    const uint64_t ub = static_cast<uint64_t>(b);
    return ua < ub ? -1 : (ua > ub ? 1 : 0);
}

} // namespace

int HNKGUID::compare(const HNKGUID& other) const {
    const int c = compareUnsigned(high_, other.high_);
    return c != 0 ? c : compareUnsigned(low_, other.low_);
}

std::string HNKGUID::toString() const {
    static const char digits[] = "0123456789abcdef";
    std::string out;
    out.reserve(36);
    const uint64_t halves[2] = {static_cast<uint64_t>(high_), static_cast<uint64_t>(low_)};
    for (uint64_t half : halves) {
        for (int shift = 60; shift >= 0; shift -= 4) {
            if (isDashPosition(out.size())) out.push_back('-');
            out.push_back(digits[(half >> shift) & 0xF]);
        }
    }
    return out;
}

bool HNKGUID::fromString(const std::string& text) {
    if (text.size() != 36) return false;
    uint64_t halves[2] = {0, 0};
    int nibble = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (isDashPosition(i)) {
            if (text[i] != '-') return false;
            continue;
        }
        const int v = hexValue(text[i]);
        if (v < 0) return false;
        uint64_t& half = halves[nibble / 16];
        half = (half << 4) | static_cast<uint64_t>(v);
        ++nibble;
    }
    high_ = static_cast<int64_t>(halves[0]);
    low_ = static_cast<int64_t>(halves[1]);
    return true;
}

int HNKGUID::Reader::operator()(const HNKMessageIterator& it, HNKGUID& guid) const {
    std::string text;
    if (it.getValue(0, text) != 0) return -1;
    return guid.fromString(text) ? 0 : -1;
}

int HNKGUID::Writer::operator()(HNKMessageIterator& it, const HNKGUID& guid) const {
    return it.putValue(0, guid.toString()) == 0 ? 0 : -1;
}
