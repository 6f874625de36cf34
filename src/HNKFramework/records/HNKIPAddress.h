#pragma once
// The framework's IP address value: an address in text form and its prefix
// length. A plain value: its Writer stamps no type, so a list of addresses
// reads as plain children.
#include "HNKWriterBase.h"

#include <string>

class HNKMessageIterator;

class HNKIPAddress {
public:
    HNKIPAddress() = default;
    HNKIPAddress(const std::string& address, int prefixLength) : address_(address), prefixLength_(prefixLength) {}

    const std::string& getAddress() const { return address_; }
    void setAddress(const std::string& address) { address_ = address; }
    int getPrefixLength() const { return prefixLength_; }
    void setPrefixLength(int prefixLength) { prefixLength_ = prefixLength; }

    // Three-way: address text first (byte-wise), then prefix length.
    int compare(const HNKIPAddress& other) const;

    // Both children "address" and "prefix_length" are required.
    struct Reader {
        int operator()(const HNKMessageIterator& it, HNKIPAddress& ip) const;
    };
    struct Writer : HNKWriterBase {
        int operator()(HNKMessageIterator& it, const HNKIPAddress& ip) const;
    };

private:
    std::string address_;
    int prefixLength_ = 0;
};
