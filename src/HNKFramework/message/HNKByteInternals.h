#pragma once
// Byte helpers shared by the message units (not installed). The names,
// values and end tags the message path compares and copies are a few to a
// few dozen bytes long: done inline in words, that costs less than a call to
// memcmp or memcpy, whose set-up is made for long runs.
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace hnk_message_detail __attribute__((visibility("hidden"))) {

// Whether the `n` bytes at `a` and at `b` are the same; reads no byte
// outside either range.
inline bool sameBytes(const char* a, const char* b, size_t n)
{
    if (n >= 8) {
        uint64_t x, y;
        for (; n > 8; n -= 8, a += 8, b += 8) {
            std::memcpy(&x, a, 8);
            std::memcpy(&y, b, 8);
            if (x != y)
                return false;
        }
        // The last (up to) eight bytes, overlapping the ones compared.
        std::memcpy(&x, a + n - 8, 8);
        std::memcpy(&y, b + n - 8, 8);
        return x == y;
    }
    if (n >= 4) {
        uint32_t x1, y1, x2, y2;
        std::memcpy(&x1, a, 4);
        std::memcpy(&y1, b, 4);
        std::memcpy(&x2, a + n - 4, 4);
        std::memcpy(&y2, b + n - 4, 4);
        return x1 == y1 && x2 == y2;
    }
    for (size_t i = 0; i < n; ++i)
        if (a[i] != b[i])
            return false;
    return true;
}

// Copies `n` bytes; up to sixteen in one or two (overlapping) words,
// without a call.
inline void copyBytes(char* to, const char* from, size_t n)
{
    if (n >= 8 && n <= 16) {
        uint64_t a, b;
        std::memcpy(&a, from, 8);
        std::memcpy(&b, from + n - 8, 8);
        std::memcpy(to, &a, 8);
        std::memcpy(to + n - 8, &b, 8);
    } else if (n >= 4 && n < 8) {
        uint32_t a, b;
        std::memcpy(&a, from, 4);
        std::memcpy(&b, from + n - 4, 4);
        std::memcpy(to, &a, 4);
        std::memcpy(to + n - 4, &b, 4);
    } else if (n < 4) {
        for (size_t i = 0; i < n; ++i)
            to[i] = from[i];
    } else {
        std::memcpy(to, from, n);
    }
}

// Length of a NUL-terminated string, eight bytes at a time: names and
// values are short, and a call to strlen costs more than the scan. The loads
// are aligned, so none reaches into a page the string does not; the bytes
// around the string that they also read are never used. The sanitizers
// would report those bytes, so they do not look here.
__attribute__((no_sanitize("address", "thread"))) inline size_t stringLength(const char* s)
{
    const uintptr_t at = reinterpret_cast<uintptr_t>(s);
    const unsigned skip = static_cast<unsigned>(at & 7);
    const char* p = s - skip;
    uint64_t w;
    std::memcpy(&w, p, 8);
    w |= (uint64_t(1) << (8 * skip)) - 1; // the bytes before the string: not its end
    for (;;) {
        const uint64_t zero = (w - 0x0101010101010101ull) & ~w & 0x8080808080808080ull;
        if (zero != 0)
            return static_cast<size_t>(p - s) + static_cast<size_t>(__builtin_ctzll(zero) >> 3);
        p += 8;
        std::memcpy(&w, p, 8);
    }
}

} // namespace hnk_message_detail
