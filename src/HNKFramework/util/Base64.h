#pragma once
// Standard-alphabet Base64 with padding.
#include <string>

class Base64 {
public:
    static std::string encode(const std::string& data);
    // False (out untouched) when the text is not valid padded Base64.
    static bool decode(const std::string& text, std::string& out);
};
