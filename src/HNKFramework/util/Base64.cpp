#include "Base64.h"

namespace {

const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

int valueOf(unsigned char c)
{
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (c >= '0' && c <= '9') return c - '0' + 52;
    if (c == '+') return 62;
    if (c == '/') return 63;
    return -1;
}

} // namespace

std::string Base64::encode(const std::string& data)
{
    std::string out;
    out.reserve((data.size() + 2) / 3 * 4);
    size_t i = 0;
    for (; i + 2 < data.size(); i += 3) {
        unsigned v = (static_cast<unsigned char>(data[i]) << 16) |
                     (static_cast<unsigned char>(data[i + 1]) << 8) |
                     static_cast<unsigned char>(data[i + 2]);
        out += kAlphabet[(v >> 18) & 63];
        out += kAlphabet[(v >> 12) & 63];
        out += kAlphabet[(v >> 6) & 63];
        out += kAlphabet[v & 63];
    }
    size_t rest = data.size() - i;
    if (rest == 1) {
        unsigned v = static_cast<unsigned char>(data[i]) << 16;
        out += kAlphabet[(v >> 18) & 63];
        out += kAlphabet[(v >> 12) & 63];
        out += "==";
    } else if (rest == 2) {
        unsigned v = (static_cast<unsigned char>(data[i]) << 16) |
                     (static_cast<unsigned char>(data[i + 1]) << 8);
        out += kAlphabet[(v >> 18) & 63];
        out += kAlphabet[(v >> 12) & 63];
        out += kAlphabet[(v >> 6) & 63];
        out += '=';
    }
    return out;
}

bool Base64::decode(const std::string& text, std::string& out)
{
    if (text.size() % 4 != 0)
        return false;
    std::string result;
    result.reserve(text.size() / 4 * 3);
    for (size_t i = 0; i < text.size(); i += 4) {
        bool last = i + 4 == text.size();
        int a = valueOf(text[i]);
        int b = valueOf(text[i + 1]);
        if (a < 0 || b < 0)
            return false;
        unsigned v = (a << 18) | (b << 12);
        if (last && text[i + 2] == '=') {
            if (text[i + 3] != '=' || (b & 15) != 0)
                return false;
            result += static_cast<char>((v >> 16) & 255);
            break;
        }
        int c = valueOf(text[i + 2]);
        if (c < 0)
            return false;
        v |= c << 6;
        if (last && text[i + 3] == '=') {
            if ((c & 3) != 0)
                return false;
            result += static_cast<char>((v >> 16) & 255);
            result += static_cast<char>((v >> 8) & 255);
            break;
        }
        int d = valueOf(text[i + 3]);
        if (d < 0)
            return false;
        v |= d;
        result += static_cast<char>((v >> 16) & 255);
        result += static_cast<char>((v >> 8) & 255);
        result += static_cast<char>(v & 255);
    }
    out.swap(result);
    return true;
}
