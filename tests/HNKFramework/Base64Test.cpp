// User names and passwords travel Base64-encoded in every device: both
// directions against the published vectors, a plain bit-by-bit encoder for
// every byte and length, and every way a text can fail to be Base64.
#include "Base64.h"

#include <string>

#include <gtest/gtest.h>

namespace {

// Six bits at a time, the slow and obvious way.
std::string referenceEncode(const std::string& data)
{
    static const char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bits;
    for (unsigned char c : data)
        for (int b = 7; b >= 0; --b)
            bits += (c >> b) & 1 ? '1' : '0';
    while (bits.size() % 6 != 0)
        bits += '0';
    std::string out;
    for (size_t i = 0; i < bits.size(); i += 6)
        out += alphabet[std::stoi(bits.substr(i, 6), nullptr, 2)];
    while (out.size() % 4 != 0)
        out += '=';
    return out;
}

TEST(Base64Test, PublishedVectors)
{
    const char* const vectors[][2] = {{"", ""},         {"f", "Zg=="},         {"fo", "Zm8="},
                                      {"foo", "Zm9v"}, {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="},
                                      {"foobar", "Zm9vYmFy"}};
    for (const auto& v : vectors) {
        EXPECT_EQ(v[1], Base64::encode(v[0])) << v[0];
        std::string decoded = "left over";
        ASSERT_TRUE(Base64::decode(v[1], decoded)) << v[1];
        EXPECT_EQ(v[0], decoded);
    }
}

TEST(Base64Test, EveryByteAtEveryPlaceAndEveryLengthRoundTrips)
{
    std::string all;
    for (int c = 0; c < 256; ++c)
        all += static_cast<char>(c);
    for (size_t length = 0; length <= 40; ++length) {
        for (size_t at = 0; at + length <= all.size(); at += 7) {
            const std::string data = all.substr(at, length);
            const std::string text = Base64::encode(data);
            ASSERT_EQ(referenceEncode(data), text) << length << " at " << at;
            std::string back;
            ASSERT_TRUE(Base64::decode(text, back)) << text;
            ASSERT_EQ(data, back);
        }
    }
    std::string back;
    ASSERT_TRUE(Base64::decode(Base64::encode(all), back));
    EXPECT_EQ(all, back);
}

TEST(Base64Test, TextThatIsNotBase64IsRefusedAndLeavesTheOutputAlone)
{
    const char* const bad[] = {
        "Zg=",      "Zm9",      "Z",         // not whole groups of four
        "Zm9v!A==", " Zg=",     "Zg\n=",     // bytes outside the alphabet
        "Zm9\xC3\xA9", "Zm9v-_==",           // nor the URL-safe one
        "Zg==Zm9v", "=Zg=",     "Z=g=",      // padding before the end
        "Zg=A",     "Z===",     "====",      // padding that does not end the text
        "Zh==",     "Zm9=",                  // padding over bits that are set
    };
    for (const char* text : bad) {
        std::string out = "untouched";
        EXPECT_FALSE(Base64::decode(text, out)) << text;
        EXPECT_EQ("untouched", out) << text;
    }
}

} // namespace
