#include "Base64.h"

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Each byte's value in the alphabet, -1 for a byte outside it ('=' included).
struct DecodeTable {
    signed char v[256];
    constexpr DecodeTable() : v()
    {
        for (int c = 0; c < 256; ++c)
            v[c] = -1;
        for (int k = 0; k < 64; ++k)
            v[static_cast<unsigned char>(kAlphabet[k])] = static_cast<signed char>(k);
    }
};
constexpr DecodeTable kDecode;

} // namespace

// Both directions size their output once and fill it in place: user names
// and passwords are encoded in every device a message carries.
std::string Base64::encode(const std::string& data)
{
    const size_t n = data.size();
    std::string out((n + 2) / 3 * 4, '=');
    if (n == 0)
        return out;
    const unsigned char* s = reinterpret_cast<const unsigned char*>(data.data());
    char* o = &out[0];
    size_t i = 0;
    for (; i + 2 < n; i += 3, o += 4) {
        const unsigned v = static_cast<unsigned>(s[i]) << 16 | static_cast<unsigned>(s[i + 1]) << 8 | s[i + 2];
        o[0] = kAlphabet[v >> 18];
        o[1] = kAlphabet[(v >> 12) & 63];
        o[2] = kAlphabet[(v >> 6) & 63];
        o[3] = kAlphabet[v & 63];
    }
    if (n - i == 1) { // two characters and "=="
        const unsigned v = static_cast<unsigned>(s[i]) << 16;
        o[0] = kAlphabet[v >> 18];
        o[1] = kAlphabet[(v >> 12) & 63];
    } else if (n - i == 2) { // three characters and "="
        const unsigned v = static_cast<unsigned>(s[i]) << 16 | static_cast<unsigned>(s[i + 1]) << 8;
        o[0] = kAlphabet[v >> 18];
        o[1] = kAlphabet[(v >> 12) & 63];
        o[2] = kAlphabet[(v >> 6) & 63];
    }
    return out;
}

bool Base64::decode(const std::string& text, std::string& out)
{
    const size_t n = text.size();
    if (n % 4 != 0)
        return false;
    std::string result(n / 4 * 3, '\0');
    if (n == 0) {
        out.swap(result);
        return true;
    }
    const unsigned char* t = reinterpret_cast<const unsigned char*>(text.data());
    char* r = &result[0];
    size_t written = 0;
    for (size_t i = 0; i < n; i += 4) {
        const bool last = i + 4 == n;
        const int a = kDecode.v[t[i]];
        const int b = kDecode.v[t[i + 1]];
        if (a < 0 || b < 0)
            return false;
        unsigned v = static_cast<unsigned>(a) << 18 | static_cast<unsigned>(b) << 12;
        if (last && t[i + 2] == '=') {
            if (t[i + 3] != '=' || (b & 15) != 0)
                return false;
            r[written++] = static_cast<char>((v >> 16) & 255);
            break;
        }
        const int c = kDecode.v[t[i + 2]];
        if (c < 0)
            return false;
        v |= static_cast<unsigned>(c) << 6;
        if (last && t[i + 3] == '=') {
            if ((c & 3) != 0)
                return false;
            r[written++] = static_cast<char>((v >> 16) & 255);
            r[written++] = static_cast<char>((v >> 8) & 255);
            break;
        }
        const int d = kDecode.v[t[i + 3]];
        if (d < 0)
            return false;
        v |= static_cast<unsigned>(d);
        r[written] = static_cast<char>((v >> 16) & 255);
        r[written + 1] = static_cast<char>((v >> 8) & 255);
        r[written + 2] = static_cast<char>(v & 255);
        written += 3;
    }
    result.resize(written);
    out.swap(result);
    return true;
}
