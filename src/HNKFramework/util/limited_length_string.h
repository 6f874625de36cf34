#pragma once
// A short key in a fixed buffer of N bytes (the env registry's key type).
// The value holds at most N-1 characters. The buffer's second byte doubles
// as the marker of an empty value: 1 when the empty string counts as
// specified, 0 when the value is unspecified. A non-empty value is always
// specified.
#include "HNKAssert.h"

#include <cstring>
#include <string>

template <size_t N>
class limited_length_string {
    static_assert(N >= 2, "the buffer needs room for the marker byte");

public:
    // Unspecified.
    limited_length_string() { std::memset(buf_, 0, N); }
    // Null: unspecified. Otherwise at most N-1 characters (asserted) and
    // specified, the empty string included.
    limited_length_string(const char* s) { assign(s); }
    limited_length_string(const std::string& s) { assign(s.c_str()); }
    limited_length_string& operator=(const char* s)
    {
        assign(s);
        return *this;
    }

    // Acts only on an empty value: whether the empty string counts as specified.
    void specify(bool specified)
    {
        if (buf_[0] == '\0')
            buf_[1] = specified ? 1 : 0;
    }
    bool isSpecified() const { return buf_[0] != '\0' || buf_[1] == 1; }

    const char* c_str() const { return buf_; }

    // Unspecified first; two specified values compare byte-wise (strcmp).
    int compare(const limited_length_string& other) const
    {
        bool a = isSpecified(), b = other.isSpecified();
        if (!a || !b)
            return a == b ? 0 : (a ? 1 : -1);
        int c = std::strcmp(buf_, other.buf_);
        return c < 0 ? -1 : (c > 0 ? 1 : 0);
    }
    bool operator<(const limited_length_string& other) const { return compare(other) < 0; }
    bool operator==(const limited_length_string& other) const { return compare(other) == 0; }

private:
    void assign(const char* s)
    {
        std::memset(buf_, 0, N);
        if (!s)
            return;
        size_t length = std::strlen(s);
        HNK_ASSERT(length + 1 < N + 1);
        std::memcpy(buf_, s, length < N ? length : N);
        buf_[N - 1] = '\0'; // cut to N-1 characters if a longer one got here
        specify(true);
    }

    char buf_[N];
};
