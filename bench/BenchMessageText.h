#pragma once
// Message texts for the benchmarks: the sample VM configuration of
// tests/data with its eleven devices (one of each class) repeated to the
// wanted count, so every device class is read and written alike.
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace HNRBench {

inline std::string readSample()
{
    std::ifstream in(std::string(HNR_TEST_DATA_DIR) + "/vmconfig_full.xml", std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (text.empty())
        throw std::runtime_error("cannot read vmconfig_full.xml");
    return text;
}

// The sample configuration with `devices` devices.
inline std::string configurationWithDevices(size_t devices)
{
    std::string sample = readSample();
    size_t open = sample.find("<device_list>");
    size_t close = sample.find("</device_list>");
    size_t first = sample.find("<device ", open);
    std::string head = sample.substr(0, first);
    std::string body = sample.substr(first, close - first); // eleven <device> elements
    std::string tail = sample.substr(close);
    // Split the body into its devices, then cycle through them.
    std::vector<std::string> each;
    for (size_t at = 0; at < body.size();) {
        size_t end = body.find("</device>", at);
        if (end == std::string::npos)
            break;
        end += 9;
        each.push_back(body.substr(at, end - at) + "\n    ");
        at = body.find("<device ", end);
        if (at == std::string::npos)
            break;
    }
    std::string text;
    size_t per = 0;
    for (const std::string& d : each)
        per += d.size();
    text.reserve(head.size() + tail.size() + per * (devices / each.size() + 1));
    text += head;
    for (size_t i = 0; i < devices; ++i)
        text += each[i % each.size()];
    text += tail;
    return text;
}

} // namespace HNRBench
